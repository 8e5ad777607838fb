#!/bin/sh
# Builds what the emulated machine runs, and the receivers that its ports lead to, and runs the
# checks: all, or those that the regular expression CHECKS chooses.
#   tests/target/test.sh [CHECKS]
set -eu
cd "$(dirname "$0")/../.."
. scripts/packages.sh

# shellcheck disable=SC2086  # the packages are words
install_packages $ORB_BUILD_PACKAGES $ORB_TEST_PACKAGES $ORB_TARGET_PACKAGES
scripts/aarch64_sysroot.sh

# build PRESET TARGET...
build() {
  preset=$1
  shift
  mkdir -p build
  { cmake --preset "$preset" -DORB_WERROR=ON && cmake --build --preset "$preset" --target "$@"; } \
    > "build/$preset.log" 2>&1 || { tail -n 60 "build/$preset.log"; return 1; }
}
build release orb-sim
build aarch64 orb-gnss orb-platform orb-gnss-supervised orb-gnss-worker orbctl orb-inventoryd \
  orb-sim orb-sim-preload target-client manual-pages orbctl-generated

tests/target/make_root.sh
tests/target/run.py build/release/bin/orb-sim build/target "$@"
