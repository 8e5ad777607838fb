#!/bin/sh
# Compiles every public header alone, as C++17, with every warning an error.
#   check_headers.sh COMPILER INCLUDE_DIRECTORY...
set -eu

compiler=$1
shift

includes=
for directory in "$@"; do
  includes="$includes -I$directory"
done

# Included twice, since a header that lacks its guard shows only then.
check='printf "#include \"%s\"\n#include \"%s\"\n" "$1" "$1" |
  $0 -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -x c++ -'

headers=$(find "$@" -name '*.h')
[ -n "$headers" ] || { echo "no headers in $*" >&2; exit 1; }
echo "$headers" | xargs -P 2 -n 1 sh -c "$check" "$compiler$includes"
echo "$(echo "$headers" | wc -l) headers compile alone with $compiler"
