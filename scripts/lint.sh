#!/bin/sh
# Checks the sources with one tool; only version 14 of it counts.
#   lint.sh clang-format|clang-tidy BUILD_DIRECTORY
set -eu
cd "$(dirname "$0")/.."

tool=$1 build=$2

command -v "$tool" > /dev/null || { echo "$tool is not installed" >&2; exit 1; }

if ! "$tool" --version | grep -q 'version 14\.'; then
  echo "skipped: this is not $tool 14 but $("$tool" --version | grep -o 'version.*')"
  exit 0
fi

product="base board commands controller platform protocol simulator transport examples"
case $tool in
  clang-format)
    # shellcheck disable=SC2086  # the folders are words
    find $product include tests benchmarks \( -name '*.h' -o -name '*.cpp' \) -print0 |
      xargs -0 clang-format --dry-run -Werror
    ;;
  clang-tidy)
    # shellcheck disable=SC2086
    find $product -name '*.cpp' -print0 |
      xargs -0 -P "$(nproc)" -n 4 clang-tidy -p "$build" --quiet
    ;;
esac
echo "$tool has nothing to say"
