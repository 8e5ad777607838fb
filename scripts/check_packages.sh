#!/bin/sh
# Makes the packages, some of them twice, and checks them: lintian, the same bytes in other
# circumstances, and what they do in clean Debians. The step `packages` of ./test.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
. scripts/clean_root.sh

fail() {
  echo "FAILED: $1" >&2
  exit 1
}

# Nothing of one build reaches another.
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER

# shellcheck disable=SC2086  # the packages are words
install_packages $ORB_PACKAGING_PACKAGES $ORB_PACKAGING_TEST_PACKAGES
can_make_roots
own_suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
folder=$PWD/build/packages
other=$(mktemp -d)
trap 'rm -rf --one-file-system "$other"' EXIT
trap 'exit 1' HUP INT TERM
rm -rf --one-file-system "$folder"
mkdir -p "$folder"

# same_packages FOLDER OTHER PATTERN: those of one folder are, byte for byte, those of the other.
same_packages() {
  for package in "$1"/$3; do
    cmp -s "$package" "$2/$(basename "$package")" && continue
    diffoscope "$package" "$2/$(basename "$package")" | head -n 200
    fail "$(basename "$package") differs between two builds"
  done
  echo "ok: two builds make the same $3: $(find "$1" -name "$3" | wc -l) packages"
}

# check_with_lintian FOLDER: a package for Debian's own archive would close a bug there.
check_with_lintian() {
  lintian --allow-root --fail-on error,warning --suppress-tags initial-upload-closes-no-bugs \
    "$1"/*.changes || fail "lintian has something to say"
  echo "ok: lintian has nothing to say of $1"
}

# check_run_paths FOLDER: no program and no library looks for libraries in places of its own.
check_run_paths() {
  for package in "$1"/*.deb; do
    dpkg-deb --extract "$package" "$other/tree"
  done
  # It fails on what is no program.
  find "$other/tree" -type f -exec readelf --wide --dynamic {} + > "$other/dynamic" 2> /dev/null || :
  rm -r "$other/tree"
  [ "$(grep -c NEEDED "$other/dynamic")" -gt 20 ] || fail "readelf found no programs"
  ! grep -E 'R(UN)?PATH' "$other/dynamic" || fail "a RUNPATH is in $1"
  echo "ok: no RUNPATH in $1"
}

# make_lower_version FOLDER OUTPUT: the packages of FOLDER as version 0.0.1, to upgrade from.
make_lower_version() {
  mkdir -p "$2"
  for package in "$1"/*.deb; do
    version=$(dpkg-deb --field "$package" Version)
    dpkg-deb --raw-extract "$package" "$2/tree"
    sed -i "s/${version%-*}/0.0.1/g" "$2/tree/DEBIAN/control"
    dpkg-deb --root-owner-group --build "$2/tree" "$2/$(dpkg-deb --field "$package" Package).deb" \
      > /dev/null
    rm -r "$2/tree"
  done
}

# check_in SUITE FOLDER: what the packages of FOLDER do in a clean Debian.
check_in() {
  root=$other/$1
  echo "Making a clean $1 in $root"
  make_root "$1" "$root"
  mkdir -p "$root/check/new" "$root/check/source"
  find "$2" -name '*.deb' ! -name '*-dbgsym_*' -exec cp -t "$root/check/new" {} +
  make_lower_version "$root/check/new" "$root/check/old"
  tar -c packaging tests/package | tar -x --no-same-owner -C "$root/check/source"
  cp -r packaging/debian "$root/check/source/debian"
  in_root "$root" sh /check/source/packaging/tests/check_in_root.sh || fail "$1"
  rm -rf --one-file-system "$root"
}

/usr/bin/python3 -B packaging/tests/check_buildroot.py packaging/buildroot "$other"

scripts/make_packages.sh --output "$folder/$own_suite"
check_with_lintian "$folder/$own_suite"
check_run_paths "$folder/$own_suite"

# In other circumstances: another folder, a machine with nothing but the packages that it takes,
# another time, zone, language and mask.
(umask 077 && LC_ALL=POSIX TZ=Asia/Kathmandu scripts/make_packages.sh --root "$own_suite" \
  --output "$other/again")
same_packages "$folder/$own_suite" "$other/again" '*.deb'

check_in "$own_suite" "$folder/$own_suite"

if [ "$own_suite" != trixie ]; then
  scripts/make_packages.sh --root trixie --output "$folder/trixie"
  check_in trixie "$folder/trixie"
fi

scripts/make_packages.sh --arch arm64 --output "$folder/arm64"
check_with_lintian "$folder/arm64"
same_packages "$folder/$own_suite" "$folder/arm64" '*_all.deb'
