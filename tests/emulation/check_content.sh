#!/bin/sh
# Fails when a library takes more than so many KiB of memory, code and data together.
#   check_content.sh LIBRARY KIBIBYTES
set -eu
library=$1 kibibytes=$2

content=$(size "$library" | awk 'NR == 2 { print $4 }')
echo "$content bytes of $((kibibytes * 1024))"
[ "$content" -gt 0 ] && [ "$content" -le $((kibibytes * 1024)) ]
