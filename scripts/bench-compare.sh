#!/usr/bin/env bash
# Times whole calls of this tree and of another commit, frame by frame in turn.
#
#   scripts/bench-compare.sh COMMIT BENCHMARK
#
# COMMIT gets a git worktree and a build of its own, which go away again. BENCHMARK is bench_paired of this tree.
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

folder=$(mktemp -d)
trap 'git worktree remove --force "$folder/tree" 2>/dev/null || true; rm -rf "$folder"' EXIT
git worktree add --quiet --detach "$folder/tree" "$commit"
{
  cmake -S "$folder/tree" -B "$folder/build" -DZELWELD_BUILD_TESTS=OFF -DZELWELD_BUILD_TOOLS=OFF \
    -DZELWELD_BUILD_EXAMPLES=OFF -DZELWELD_BUILD_BENCHMARKS=OFF -DCMAKE_SHARED_LINKER_FLAGS=-Wl,-Bsymbolic
  cmake --build "$folder/build" -j "$(nproc)" --target zelWeldDetect
} >"$folder/log" 2>&1 || {
  cat "$folder/log" >&2
  echo "bench-compare.sh: '$revision' does not build" >&2
  exit 1
}

"$benchmark" "$folder/build/src/libzelWeldDetect.so" "$(git rev-parse --short "$commit")"
