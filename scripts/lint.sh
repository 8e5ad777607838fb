#!/bin/sh
# Checks all sources with clang-format and clang-tidy, and the product's with cppcheck. Only versions
# 14 and 2.10 of them count: others have other opinions. gcc 12's -fanalyzer does not know C++.
set -eu
cd "$(dirname "$0")/.."

# is_version VERSION TOOL: otherwise says which version it is.
is_version() {
  "$2" --version | grep -q -i "\(version\|cppcheck\) $1\b" && return
  echo "skipped: this is not $2 $1 but $("$2" --version | grep -o -i '\(version\|cppcheck\) .*')"
  return 1
}

product="base board commands controller examples operation_table orbctl platform protocol simulator
  supervised transport"

# shellcheck disable=SC2086  # the folders are words
if is_version 14 clang-format; then
  find $product include tests benchmarks \( -name '*.h' -o -name '*.cpp' \) -print0 |
    xargs -0 clang-format --dry-run -Werror
  echo "clang-format has nothing to say"
fi

# shellcheck disable=SC2086  # the folders are words
if is_version 2.10 cppcheck; then
  cppcheck -q --error-exitcode=1 --enable=warning,portability --std=c++20 --language=c++ \
    --suppressions-list=scripts/cppcheck_suppressions.txt \
    -I . -I include -I platform/include -I simulator -I simulator/include $product
  echo "cppcheck has nothing to say"
fi

# tidy_all [OPTION...]: clang-tidy over the files that standard input names.
tidy_all() {
  xargs -P "$(nproc)" -n 1 clang-tidy -p build/lint --quiet "$@" 2> build/lint.log ||
    { grep -v ' warnings generated' build/lint.log; exit 1; }
}

if is_version 14 clang-tidy; then
  mkdir -p build
  cmake --preset lint > build/lint.log || { cat build/lint.log; exit 1; }
  # What is compiled: sources, and groups of the product's, which take longest.
  sed -n 's/^ *"file": "\(.*\)".*/\1/p' build/lint/compile_commands.json | sort -u > build/lint/files
  grep -v -E "^$PWD/(build/lint/)?(tests|benchmarks)/" build/lint/files | tidy_all
  grep -E "^$PWD/(tests|benchmarks)/" build/lint/files | tidy_all --config-file=tests/.clang-tidy
  echo "clang-tidy has nothing to say"
fi
