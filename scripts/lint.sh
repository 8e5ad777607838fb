#!/bin/sh
# Checks all sources with clang-format and clang-tidy. Only version 14 of them counts: others have
# other opinions.
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

# tidy_all [OPTION...]: clang-tidy over the files that standard input names.
tidy_all() {
  xargs -P "$(nproc)" -n 1 clang-tidy -p build/lint --quiet "$@" 2> build/lint.log ||
    { grep -v ' warnings generated' build/lint.log; exit 1; }
}

if is_version_14 clang-tidy; then
  mkdir -p build
  cmake --preset lint > build/lint.log || { cat build/lint.log; exit 1; }
  # What is compiled: sources, and groups of the product's, which take longest.
  sed -n 's/^ *"file": "\(.*\)".*/\1/p' build/lint/compile_commands.json | sort -u > build/lint/files
  grep -v -E "^$PWD/(build/lint/)?(tests|benchmarks)/" build/lint/files | tidy_all
  grep -E "^$PWD/(tests|benchmarks)/" build/lint/files | tidy_all --config-file=tests/.clang-tidy
  echo "clang-tidy has nothing to say"
fi
