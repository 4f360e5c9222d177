#!/usr/bin/env bash
# Shows that layering.sh accepts right includes and catches each kind of wrong one.
set -euo pipefail
check=$(cd "$(dirname "$0")" && pwd)/layering.sh
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT

# verdict FILE INCLUDE: runs the check on a project that holds two detectors, a helper of the tests and this include.
verdict() {
  rm -rf "${dir:?}"/*
  mkdir -p "$dir/$(dirname "$1")"
  mkdir -p "$dir/src/api"
  printf '#include "detectors/%s.h"\n' gap presence >"$dir/src/api/joints.cpp"
  mkdir -p "$dir/tests/support"
  touch "$dir/tests/support/seed.h"
  echo "#include $2" >"$dir/$1"
  if bash "$check" "$dir" >/dev/null; then echo right; else echo wrong; fi
}

failures=0
while read -r expected file include; do
  actual=$(verdict "$file" "$include")
  if [ "$actual" != "$expected" ]; then
    echo "$file including $include: $actual, expected $expected"
    failures=$((failures + 1))
  fi
done <<'TABLE'
right  src/stripe/regions.cpp           "stripe/regions.h"
right  src/stripe/regions.cpp           "support/line_math.h"
wrong  src/stripe/regions.cpp           "geometry/line_fitting.h"
wrong  src/stripe/regions.cpp           "../geometry/line_fitting.h"
wrong  src/support/line_fit.cpp         "stripe/regions.h"
right  src/detectors/gap.cpp            "detectors/gap.h"
right  src/detectors/gap.cpp            "detectors/piece_end.h"     
wrong  src/detectors/gap.cpp            "detectors/presence.h"
wrong  src/detectors/gap.cpp            "api/joints.h"
right  src/api/tracking.cpp             "detectors/gap.h"
wrong  src/support/line_fit.cpp         "trace/frame.h"
wrong  src/profile/solver.cpp           "geometry/line_fitting.h"
wrong  src/api/tracking.cpp             "scenes/scene.h"
right  include/zelWeldDetect.h          <opencv2/core.hpp>
wrong  include/zelWeldDetect.h          <opencv2/imgproc.hpp>
wrong  include/zelWeldDetect.h          "support/line_fit.h"
right  src/stripe/fused.cpp           <opencv2/imgproc.hpp>
wrong  src/stripe/fused.cpp           <opencv2/imgcodecs.hpp>
right  scenes/scene.cpp                 <zelWeldDetect.h>
wrong  scenes/scene.cpp                 "stripe/fused.h"
wrong  examples/01_first_frame.cpp      "tools/text.h"
right  tools/track.cpp                  "scenes/scene.h"
wrong  tools/track.cpp                  "stripe/fused.h"
right  tests/unit/stripe/centres.cpp    "stripe/fused.h"
wrong  tests/scenarios/gap.cpp          "stripe/fused.h"
right  tests/scenarios/gap.cpp          "support/seed.h"
wrong  tests/scenarios/gap.cpp          "support/line_math.h"
right  benchmarks/stripe.cpp            "tests/unit/stripe/plain.h"
wrong  src/stripe/regions.cpp           "tests/unit/stripe/plain.h"
wrong  src/api/tracking.cpp             "unknown/thing.h"
TABLE
exit $((failures > 0))
