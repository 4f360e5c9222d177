#!/usr/bin/env bash
# Builds the tests that hold results to the bit for 64-bit ARM, and runs them under qemu: the fast scan against the
# plain one, fits and whole calls against pinned bits, and the rest of the unit tests.
#   test-arm.sh BUILD_DIR JOBS [CMAKE_FLAG ...]
set -euo pipefail
build=$1 jobs=$2
shift 2
sysroot=$build/sysroot
unit_tests=(test_support test_stripe test_geometry test_detectors test_api test_lighting)

"$(dirname "$0")"/arm_sysroot.sh "$sysroot"
cmake -S . -B "$build" -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/aarch64-linux-gnu.cmake \
  -DZELWELD_ARM_SYSROOT="$(realpath "$sysroot")" -DZELWELD_BUILD_TOOLS=OFF -DZELWELD_BUILD_EXAMPLES=OFF \
  -DZELWELD_BUILD_BENCHMARKS=OFF "$@"
cmake --build "$build" -j "$jobs" --target "${unit_tests[@]}" test_scenarios

# Whole programs, not single tests by ctest: under qemu starting one takes longer than most of its tests.
failed=()
for test in "${unit_tests[@]}"; do
  echo "=== $test on 64-bit ARM"
  qemu-aarch64 -L "$sysroot" "$build/tests/$test" --gtest_brief=1 || failed+=("$test")
done
echo "=== Whole calls on 64-bit ARM"
ctest --test-dir "$build" -R '^GoldenBits\.' --no-tests=error --output-on-failure || failed+=(test_scenarios)

if [ ${#failed[@]} -gt 0 ]; then
  echo "test-arm.sh: failed: ${failed[*]}" >&2
  exit 1
fi
