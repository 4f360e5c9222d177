#!/usr/bin/env bash
# Runs tests under valgrind's memcheck. Fails on any invalid or uninitialised read or write and on any lost block.
# Memory that a library keeps for good and still points to is no leak, nor are the stacks of OpenCV's worker threads.
#
#   scripts/test-valgrind.sh TESTS    TESTS is the folder of the built test programs
set -euo pipefail
tests=$1

# memcheck PROGRAM FILTER: a program with a heap of its own (tests/support/heap.h) gets valgrind's all the same.
memcheck() {
  echo "valgrind: $1 $2"
  valgrind --quiet --error-exitcode=1 --leak-check=full --errors-for-leak-kinds=definite,indirect \
    --show-leak-kinds=definite,indirect --soname-synonyms=somalloc=NONE \
    "$tests/$1" --gtest_brief=1 --gtest_filter="$2"
}

# What draws or compares many large frames would take minutes here and runs under the sanitizers anyway.
# Dispatch.colourImages... compares records with the gaps between their fields, which nobody sets.
memcheck test_api '-Robustness.*:Dispatch.colourImagesAndViews*'
memcheck test_detectors '-Groove*'
memcheck test_geometry '-*RaggedStripes'
memcheck test_support '-RobustFit.HoldsTheMainFlank*:RansacCircle.*'
memcheck test_profile 'ProfileEngine.MeasuresAGroove*'
memcheck test_trace '*'
memcheck test_lighting '-*HugeFrames:*EverySizeOfImageAndKernel'
memcheck test_stripe '-*RandomFrames:*MeetsTheAccuracyOfItsKind:*RandomScenes_*'
memcheck test_scenarios 'GoldenBits.*:Limits.*'
