#!/usr/bin/env bash
# Draws docs/images/seam.png anew: a simulated corner, tracked, with the overlay of `zelweld track --out`.
#   readme_picture.sh ZELWELD OUT.png
set -euo pipefail
zelweld=$1 picture=$2

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
"$zelweld" simulate --type corner --frames 2 --seed 4 --size 800x360 --drift 1,0.5 --out "$dir/frames"
"$zelweld" track --params "$dir/frames/params.json" --out "$dir/annotated" "$dir/frames"
mkdir -p "$(dirname "$picture")"
cp "$dir"/annotated/*frame_0001.png "$picture"
