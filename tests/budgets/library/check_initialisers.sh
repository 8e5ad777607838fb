#!/bin/sh
# Fails when an object other than one is initialised by code when the library is loaded.
#   check_initialisers.sh ALLOWED OBJECT...     ALLOWED is the end of an object's path
set -eu
allowed=$1
shift
[ $# -gt 1 ] || { echo "no objects to look at" >&2; exit 2; }

failed=0
for object in "$@"; do
  sections=$(readelf --section-headers --wide "$object")
  case $sections in
    *.init_array* | *.ctors*)
      case $object in
        *"$allowed") ;;
        *) echo "$object is initialised by code"; failed=1 ;;
      esac
      ;;
  esac
done
exit $failed
