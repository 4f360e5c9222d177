#!/usr/bin/env bash
# Runs the tests of a build with ZELWELD_COVERAGE and reports which lines of src/ they reached. Fails below the
# share that docs/reliability.md promises.
#
#   scripts/coverage.sh BUILD JOBS
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
jobs=$2
min_line_percent=95

find "$build" -name '*.gcda' -delete
find "$build/tests" -maxdepth 1 -type f -executable -name 'test_*' -print0 |
  xargs -0 -P "$jobs" -I{} sh -c '{} --gtest_brief=1 || { echo "{} failed" >&2; exit 255; }'

mkdir -p "$build/coverage"
gcovr --root . --object-directory "$build" --filter src/ --exclude-throw-branches -j "$jobs" \
  --txt "$build/coverage/lines.txt" --html-details "$build/coverage/index.html" --print-summary \
  --fail-under-line "$min_line_percent" "$build"
echo "Uncovered lines by file: $build/coverage/lines.txt; line by line: $build/coverage/index.html"
