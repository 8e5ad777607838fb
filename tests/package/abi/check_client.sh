#!/bin/sh
# Compiles the client of the first release with that release's headers, and runs it with the library
# that was built.
#   check_client.sh BUILD_DIRECTORY WORK_DIRECTORY COMPILER
set -eu

here=$(cd "$(dirname "$0")" && pwd)
build=$1 work=$2 compiler=$3
rm -rf "$work"
mkdir -p "$work/include"
tar -xJf "$here/headers-0.1.0.tar.xz" -C "$work/include"
"$compiler" -std=c++17 -I "$work/include" "$here/client.cpp" -o "$work/client" \
  -L "$build/lib" -lorb-gnss -lorb-platform -Wl,-rpath,"$build/lib"
"$build/bin/orb-sim" run -- "$work/client"
