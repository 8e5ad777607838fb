#!/bin/sh
# Checks all sources with clang-format and the product's with clang-tidy. Only version 14 of them
# counts: others have other opinions.
set -eu
cd "$(dirname "$0")/.."

# is_version_14 TOOL: otherwise says which version it is.
is_version_14() {
  "$1" --version | grep -q 'version 14\.' && return
  echo "skipped: this is not $1 14 but $("$1" --version | grep -o 'version.*')"
  return 1
}

product="base board commands controller examples operation_table orbctl platform protocol simulator
  supervised transport"

# shellcheck disable=SC2086  # the folders are words
if is_version_14 clang-format; then
  find $product include tests benchmarks \( -name '*.h' -o -name '*.cpp' \) -print0 |
    xargs -0 clang-format --dry-run -Werror
  echo "clang-format has nothing to say"
fi

# shellcheck disable=SC2086
if is_version_14 clang-tidy; then
  mkdir -p build
  cmake --preset lint > build/lint.log || { cat build/lint.log; exit 1; }
  find $product -name '*.cpp' -print0 |
    xargs -0 -P "$(nproc)" -n 4 clang-tidy -p build/lint --quiet
  echo "clang-tidy has nothing to say"
fi
