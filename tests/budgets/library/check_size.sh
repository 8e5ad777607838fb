#!/bin/sh
# Fails when a library is larger than so many KiB once it is stripped.
#   check_size.sh STRIP LIBRARY KIBIBYTES
set -eu
strip=$1 library=$2 kibibytes=$3

stripped=$(mktemp)
trap 'rm -f "$stripped"' EXIT
"$strip" -o "$stripped" "$library"
size=$(stat --format=%s "$stripped")

echo "$size bytes of $((kibibytes * 1024))"
[ "$size" -gt 0 ] && [ "$size" -le $((kibibytes * 1024)) ]
