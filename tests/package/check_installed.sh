#!/bin/sh
# Installs the build to a prefix of its own, builds the example client against it in both ways that
# clients have, and runs each against the simulated device.
#   check_installed.sh SOURCE_DIRECTORY BUILD_DIRECTORY WORK_DIRECTORY COMPILER
set -eu

source=$1 build=$2 work=$3 compiler=$4
prefix=$work/prefix

rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$prefix" > "$work/install.log"

# As those who read it need it, whatever the rights in the sources.
wrong=$(find "$prefix" -type f \( ! -perm -444 -o -perm /022 \))
[ -z "$wrong" ] || { echo "not 0644 or 0755:" "$wrong" >&2; exit 1; }

pc=$(find "$prefix" -name orb-gnss.pc)
PKG_CONFIG_PATH=$(dirname "$pc")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046  # the flags are words
"$compiler" -std=c++17 "$source/examples/identify.cpp" -o "$work/identify-pkg-config" \
  $(pkg-config --cflags --libs orb-gnss) \
  -Wl,-rpath,"$(pkg-config --variable=libdir orb-gnss)"

cmake -S "$source/examples" -B "$work/find-package" -G Ninja \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" > "$work/find-package.log"
cmake --build "$work/find-package" --target identify >> "$work/find-package.log"

for client in "$work/identify-pkg-config" "$work/find-package/identify"; do
  # The client loads the library of the prefix, and names it alone or with the platform library.
  ldd "$client" | grep -q "$prefix/.*liborb-gnss.so.0" ||
    { echo "$client does not load the installed library" >&2; exit 1; }
  "$prefix/bin/orb-sim" run -- "$client" > "$client.out"
  diff -u "$source/tests/package/identify.expected" "$client.out"
done
# The supervised library, as pkg-config names it, starts the installed worker.
# shellcheck disable=SC2046
"$compiler" -std=c++17 "$source/examples/deadline.cpp" -o "$work/deadline" \
  $(pkg-config --cflags --libs orb-gnss-supervised) \
  -Wl,-rpath,"$(pkg-config --variable=libdir orb-gnss)"
[ "$("$prefix/bin/orb-sim" run -- "$work/deadline")" = \
  "KernelVersion 1.0.12: ODMVersion 1.2.0: Revision 2024.3.15" ]
[ "$("$prefix/bin/orb-sim" run --silent -- "$work/deadline" || true)" = \
  "getInfo did not return in time; no byte arrives on the line" ]
[ "$("$prefix/bin/orbctl" --simulate get elevation-limit)" = "5 degrees" ]
echo "clients of the installed package run"
