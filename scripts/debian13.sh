#!/bin/sh
# Runs ./demo in a clean Debian 13: the root of one is made in a temporary folder, and these sources
# are unpacked into it.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
. scripts/clean_root.sh

can_make_roots
work=$(mktemp -d)
trap 'rm -rf --one-file-system "$work"' EXIT
trap 'exit 1' HUP INT TERM

echo "Making the root in $work"
make_root trixie "$work/root"
mkdir "$work/root/src"
tar -c --exclude=./build --exclude=./.git . | tar -x --no-same-owner -C "$work/root/src"

in_root "$work/root" /src/demo > "$work/demo.out"
diff -u tests/package/identify.expected "$work/demo.out"
echo "./demo passes in a clean $(sed -n 's/^PRETTY_NAME="\(.*\)"/\1/p' "$work/root/etc/os-release")"
