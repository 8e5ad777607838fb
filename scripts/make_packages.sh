#!/bin/sh
# Makes the Debian packages of a commit: see usage().
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
. scripts/clean_root.sh

usage() {
  cat << 'END_OF_USAGE'
Usage: scripts/make_packages.sh [OPTION]...

Makes the Debian packages of the commit that is checked out, or of an unpacked archive.

  --arch ARCH      for machines of this architecture, such as arm64; default: this machine's
  --root SUITE     in a clean Debian, such as trixie, not on this one; as root only. An --arch that
                   is not this machine's always takes a clean Debian, by default of this release
  --output FOLDER  where the packages go; default: build/packages
END_OF_USAGE
}

own_arch=$(dpkg --print-architecture)
arch=$own_arch root_suite='' output=build/packages
while [ $# -gt 0 ]; do
  case $1 in
    -h | --help) usage; exit ;;
    --arch | --root | --output)
      [ $# -gt 1 ] || { usage >&2; exit 2; }
      case $1 in
        --arch) arch=$2 ;;
        --root) root_suite=$2 ;;
        --output) output=$2 ;;
      esac
      shift 2
      ;;
    *)
      echo "scripts/make_packages.sh: unknown option: $1" >&2
      usage >&2
      exit 2
      ;;
  esac
done
if [ "$arch" != "$own_arch" ] && [ -z "$root_suite" ]; then
  root_suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
fi

# copy_sources FOLDER: those of the commit; where there is no git, all but what was built.
copy_sources() {
  mkdir -p "$1"
  if [ -e .git ]; then
    git archive HEAD | tar -x -C "$1"
  else
    tar -c --exclude=./build --exclude=./debian . | tar -x --no-same-owner -C "$1"
  fi
  cp -r "$1/packaging/debian" "$1/debian"
}

# An archive's files have the time of its commit.
epoch() {
  if [ -e .git ]; then
    git log -1 --format=%ct
  else
    stat --format=%Y CHANGELOG.md
  fi
}

# package_version: that of CMakeLists.txt, followed by the commit's time as long as CHANGELOG.md has
# something that is not released.
package_version() {
  version=$(sed -n '/^project(/,/)/s/^ *VERSION //p' "$1/CMakeLists.txt")
  if sed -n '/^## \[Unreleased\]/,/^## \[[0-9]/p' "$1/CHANGELOG.md" | grep -q '^- '; then
    version=$version+$(date --utc --date="@$SOURCE_DATE_EPOCH" +%Y%m%d%H%M%S)
  fi
  echo "$version-1"
}

mkdir -p "$output"
work=$(cd "$output" && pwd)/work.$arch
rm -rf --one-file-system "$work"
trap 'rm -rf --one-file-system "$work"' EXIT
trap 'exit 1' HUP INT TERM

sources=$work/orb-gnss
if [ -n "$root_suite" ]; then
  can_make_roots
  mkdir -p "$work"
  echo "Making a clean $root_suite in $work/root"
  make_root "$root_suite" "$work/root" --include=build-essential \
    --architectures="$own_arch$([ "$arch" = "$own_arch" ] || echo ",$arch")"
  sources=$work/root/build/orb-gnss
else
  # shellcheck disable=SC2086  # the packages are words
  install_packages $ORB_BUILD_PACKAGES $ORB_PACKAGING_PACKAGES
fi

copy_sources "$sources"
SOURCE_DATE_EPOCH=$(epoch)
export SOURCE_DATE_EPOCH
cat > "$sources/debian/changelog" << END_OF_CHANGELOG
orb-gnss ($(package_version "$sources")) unstable; urgency=medium

  * What has changed is in changelog.gz.

 -- $(sed -n 's/^Maintainer: //p' "$sources/debian/control")  $(
  LC_ALL=C date --utc --rfc-email --date="@$SOURCE_DATE_EPOCH")
END_OF_CHANGELOG

log=$output/$arch.log
echo "Building for $arch (the output goes to $log)"
if [ -n "$root_suite" ]; then
  in_root "$work/root" sh -euc '
    export SOURCE_DATE_EPOCH=$2
    cd /build/orb-gnss
    apt-get -q update
    if [ "$1" != "$(dpkg --print-architecture)" ]; then
      apt-get -q -y install "crossbuild-essential-$1"
      export DEB_BUILD_PROFILES=cross
    fi
    apt-get -y --no-install-recommends --host-architecture "$1" build-dep .
    dpkg-buildpackage -us -uc -b -a "$1"' sh "$arch" "$SOURCE_DATE_EPOCH"
else
  (cd "$sources" && dpkg-buildpackage -us -uc -b)
fi > "$log" 2>&1 || { tail -n 60 "$log" >&2; exit 1; }

mv "$sources"/../*.deb "$sources"/../*.buildinfo "$sources"/../*.changes "$output"
ls -l "$output"/*_"$arch".deb "$output"/*_all.deb
