#!/bin/sh
# Compares the names that a library exports with a checked-in list.
#   check_exports.sh LIBRARY LIST
#
# After a deliberate change of the public headers, make the list anew:
#   check_exports.sh LIBRARY --print > LIST
set -eu
export LC_ALL=C

exported() {
  nm --dynamic --defined-only --format=posix "$1" | cut -d ' ' -f 1 | c++filt | sort -u
}

if [ "$2" = --print ]; then
  exported "$1"
else
  exported "$1" | diff -u "$2" -
fi
