#!/bin/sh
# Compares a library's ABI, as its debug information tells it, with the record of its soname.
#   check_abi.sh LIBRARY BUILD INCLUDE...
# BUILD is the architecture, the compiler and its major version, as x86_64.GNU-12: they tell the same
# types in different ways.
#
# Functions that came are no change that breaks clients; anything else that differs has to be looked
# at. Where old clients can bear it, or with a new soname, make the record anew, with each compiler
# and for each architecture:
#   check_abi.sh --record LIBRARY BUILD INCLUDE...
set -eu

records=$(cd "$(dirname "$0")" && pwd)
isRecording=false
[ "$1" != --record ] || { isRecording=true; shift; }
library=$1 build=$2
shift 2

soname=$(objdump -p "$library" | sed -n 's/^ *SONAME *//p')
record=$records/$soname.$build.abi.xz
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

# Without private types, places in sources and numbers of types: they change with anything.
for folder in "$@"; do
  set -- "$@" --headers-dir "$folder"
  shift
done
abidw "$@" --drop-private-types --exported-interfaces-only --no-corpus-path --no-comp-dir-path \
  --no-show-locs --type-id-style hash "$library" > "$work/now.abi"
grep -q '<class-decl' "$work/now.abi" || { echo "$library has no debug information" >&2; exit 1; }

if $isRecording; then
  xz -9 < "$work/now.abi" > "$record"
elif [ -e "$record" ]; then
  xz -dc "$record" > "$work/record.abi"
  abidiff --no-added-syms "$work/record.abi" "$work/now.abi"
elif [ -n "$(find "$records" -name "$soname.*")" ]; then
  echo "skipped: there is no record of the ABI as $build tells it"
  exit 77
else
  echo "there is no record of $soname: see check_abi.sh" >&2
  exit 1
fi
