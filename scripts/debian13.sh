#!/bin/sh
# Runs ./demo in a clean Debian 13: the root of one is made in a temporary folder, with nothing but
# the essential packages and apt, and these sources are unpacked into it.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh

fail() {
  echo "scripts/debian13.sh: $1" >&2
  exit 1
}

[ "$(id -u)" = 0 ] || fail "making the root of another system takes root"
unshare --mount true 2> /dev/null ||
  fail "mounting /proc in the root takes CAP_SYS_ADMIN: run it on a machine or in a privileged container"
install_packages debian-archive-keyring mmdebstrap

work=$(mktemp -d)
# What is mounted in the root is mounted there alone, and gone with the process that sees it.
trap 'rm -rf --one-file-system "$work"' EXIT
trap 'exit 1' HUP INT TERM

# Inside, apt goes the same way to the packages as outside.
apt-config dump --format '%f "%v";%n' Acquire::http Acquire::https > "$work/apt.conf"
echo "Making the root in $work"
mmdebstrap --variant=minbase --aptopt="$work/apt.conf" trixie "$work/root" "$(debian_mirror)" \
  > "$work/root.log" 2>&1 || { cat "$work/root.log" >&2; exit 1; }

mkdir "$work/root/src"
tar -c --exclude=./build --exclude=./.git . | tar -x --no-same-owner -C "$work/root/src"

cat > "$work/inside.sh" << 'END'
set -eu
root=$1
mount -t proc proc "$root/proc"
mount -t devpts -o newinstance,ptmxmode=0666 devpts "$root/dev/pts"
mount -t tmpfs tmpfs "$root/dev/shm"
ln -sf pts/ptmx "$root/dev/ptmx"
exec env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM=dumb \
  ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
  chroot "$root" /src/demo
END
unshare --mount --fork --pid --kill-child sh "$work/inside.sh" "$work/root" > "$work/demo.out"
diff -u tests/package/identify.expected "$work/demo.out"
echo "./demo passes in a clean $(sed -n 's/^PRETTY_NAME="\(.*\)"/\1/p' "$work/root/etc/os-release")"
