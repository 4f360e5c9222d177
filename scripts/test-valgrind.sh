#!/usr/bin/env bash
# Runs tests under valgrind's memcheck. Fails on any invalid or uninitialised read or write and on any lost block.
# Memory that a library keeps for good and still points to is no leak.
#
#   scripts/test-valgrind.sh TESTS    TESTS is the folder of the built test programs
set -euo pipefail
tests=$1

# memcheck PROGRAM FILTER: a program with a heap of its own (tests/support/heap.h) gets valgrind's all the same.
memcheck() {
  echo "valgrind: $1 $2"
  valgrind --quiet --error-exitcode=1 --leak-check=full --errors-for-leak-kinds=definite,indirect,possible \
    --show-leak-kinds=definite,indirect,possible --soname-synonyms=somalloc=NONE \
    "$tests/$1" --gtest_brief=1 --gtest_filter="$2"
}
