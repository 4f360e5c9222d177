#!/usr/bin/env bash
# Makes the package of a build, installs it into an empty folder and uses it from there.
#   wheel.sh PYTHON PROJECT_DIR BUILD_DIR
set -euo pipefail
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export ZELWELD_BUILD=$3 PIP_ROOT_USER_ACTION=ignore PIP_DISABLE_PIP_VERSION_CHECK=1
"$1" -m pip wheel -q "$2" --no-build-isolation --no-deps -w "$scratch/wheel"
"$1" -m pip install -q --no-deps --target "$scratch/site" "$scratch"/wheel/zelweld-*.whl
cd "$scratch"
export PYTHONPATH=$scratch/site
"$1" -m zelweld simulate --type gap --frames 3 --out frames
"$1" -c 'import sys, zelweld
assert zelweld.__file__.startswith(sys.argv[1]) and len(zelweld.track("frames", "gap")) == 3' "$scratch"
! ldd site/zelweld/_core.*.so site/zelweld/bin/zelweld | grep "$3"
