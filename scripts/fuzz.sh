#!/usr/bin/env bash
# Runs every fuzz target for some seconds, from the seeds, the cases of fuzz/cases and what earlier runs found. With 0
# seconds, the seeds and cases once.
#   fuzz.sh BUILD_DIR SECONDS
set -euo pipefail
build=$(cd "$1" && pwd)/fuzz
duration=$2
cd "$(dirname "$0")/.."

memory_limit_mb=2048
call_limit_s=60
max_input_bytes=40960
# A few bytes of an image file can stand for a picture of a gigabyte: kept small here, so that more of them are read.
export OPENCV_IO_MAX_IMAGE_PIXELS=4194304

"$build/make_seeds" "$build/seeds"

failures=0
for program in "$build"/fuzz_*; do
  target=$(basename "$program" | sed s/^fuzz_//)
  corpus=("$build/seeds/$target")
  [ -d "fuzz/cases/$target" ] && corpus+=("fuzz/cases/$target")
  options=(-rss_limit_mb=$memory_limit_mb -timeout=$call_limit_s -artifact_prefix="$build/$target-" -print_final_stats=1)
  if [ "$duration" -eq 0 ]; then
    options+=(-runs=0)
  else
    mkdir -p "$build/corpus/$target"
    corpus=("$build/corpus/$target" "${corpus[@]}")
    options+=(-max_total_time="$duration" -max_len=$max_input_bytes -len_control=0)
    dictionary=fuzz/dictionaries/$target.dict
    [ -f "$dictionary" ] && options+=(-dict="$dictionary")
  fi
  if "$program" "${options[@]}" "${corpus[@]}" >"$build/$target.log" 2>&1; then
    echo "$target: $(awk '/executed_units/ { print $2 }' "$build/$target.log") executions, no finding"
  else
    tail -n 40 "$build/$target.log"
    echo "$target: FAILED; the whole log: $build/$target.log"
    failures=$((failures + 1))
  fi
done
exit $((failures > 0))
