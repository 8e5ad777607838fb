#!/bin/sh
# Makes what the preset `aarch64` builds with: installs the cross compiler and the emulator, and
# unpacks the AArch64 libraries of this Debian release into build/aarch64-sysroot. Apt keeps its
# lists apart for that, so that the machine's own packages and architectures stay as they are.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh

sysroot=$PWD/build/aarch64-sysroot

. /etc/os-release
if [ "$ID" != debian ]; then
  echo "The sysroot is made of Debian's packages, by the Debian release that it is for; this is $ID" >&2
  exit 1
fi

# shellcheck disable=SC2086  # the packages are words
install_packages $ORB_BUILD_PACKAGES $ORB_AARCH64_PACKAGES

if [ -e "$sysroot" ]; then
  echo "$sysroot is there; remove it to make it anew"
  exit
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p build
use_own_apt "$work"
# shellcheck disable=SC2086  # the packages are words
apt-get install -qq -y --download-only $ORB_AARCH64_SYSROOT_PACKAGES > /dev/null

# As on an installed system, /lib is /usr/lib.
mkdir -p "$work/root/usr/lib"
ln -s usr/lib "$work/root/lib"
for package in "$work"/cache/archives/*.deb; do
  dpkg-deb --fsys-tarfile "$package" | tar -x --keep-directory-symlink -C "$work/root"
done

# Links name their targets from the root, which is not the sysroot's.
find "$work/root" -type l -lname '/*' | while read -r link; do
  ln --symbolic --relative --force --no-target-directory "$work/root$(readlink "$link")" "$link"
done

# An emulated program finds the sysroot's files before the machine's: nothing stays but what
# compiling, linking and loading take.
find "$work/root" -mindepth 1 -maxdepth 1 ! -name lib ! -name usr -exec rm -rf {} +
find "$work/root/usr" -mindepth 1 -maxdepth 1 ! -name include ! -name lib ! -name share \
  -exec rm -rf {} +
find "$work/root/usr/share" -mindepth 1 -maxdepth 1 ! -name cmake ! -name eigen3 \
  ! -name pkgconfig -exec rm -rf {} +

mv "$work/root" "$sysroot"
echo "$sysroot is made of $(find "$work/cache/archives" -name '*.deb' | wc -l) packages"
