#!/usr/bin/env bash
# Sets the figures of the whole-frame benchmark beside those of another commit, built and run on this machine.
#
#   scripts/bench-compare.sh COMMIT BENCHMARK
#
# COMMIT gets a git worktree and a build of its own, which go away again. BENCHMARK is bench_whole_frame of this tree.
set -euo pipefail

if [ $# -ne 2 ] || [ -z "$1" ]; then
  echo "bench-compare.sh: which commit? For example: make bench-compare REV=HEAD~1" >&2
  exit 2
fi
revision=$1
benchmark=$2

if ! commit=$(git rev-parse --verify --quiet "$revision^{commit}"); then
  echo "bench-compare.sh: '$revision' is no commit of this repository; git log lists them" >&2
  exit 2
fi
if ! git cat-file -e "$commit:benchmarks/whole_frame" 2>/dev/null; then
  echo "bench-compare.sh: '$revision' has no benchmarks/whole_frame; choose a later commit" >&2
  exit 2
fi

folder=$(mktemp -d)
trap 'git worktree remove --force "$folder/tree" 2>/dev/null || true; rm -rf "$folder"' EXIT
git worktree add --quiet --detach "$folder/tree" "$commit"
{
  cmake -S "$folder/tree" -B "$folder/build" -DZELWELD_BUILD_TESTS=OFF -DZELWELD_BUILD_TOOLS=OFF \
    -DZELWELD_BUILD_EXAMPLES=OFF -DZELWELD_BUILD_BENCHMARKS=ON
  cmake --build "$folder/build" -j "$(nproc)" --target bench_whole_frame
} >"$folder/log" 2>&1 || {
  cat "$folder/log" >&2
  echo "bench-compare.sh: '$revision' does not build" >&2
  exit 1
}

# In turn, so that a machine that warms up or has other work does so for both.
for run in 1 2 3; do
  "$folder/build/benchmarks/bench_whole_frame" >"$folder/other.$run"
  "$benchmark" >"$folder/own.$run"
done

python3 "$(dirname "$0")/compare_tables.py" "$(git rev-parse --short "$commit")" "$folder"/other.? -- "$folder"/own.?
