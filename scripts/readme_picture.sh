#!/usr/bin/env bash
# Draws the pictures of README.md, docs/lost-seam.md and docs/contrast.md anew: the report's viewer on a simulated corner
# that is found, and, beside that picture, on a simulated lap that is lost (report_lost.png), and seams of bare plates
# (bare_plates.png). Needs the package chromium.
#   readme_picture.sh ZELWELD OUT.png
set -euo pipefail
zelweld=$(realpath "$1") found=$(realpath -m "$2")
lost=$(dirname "$found")/report_lost.png plates=$(dirname "$found")/bare_plates.png
command -v chromium >/dev/null || {
  echo "readme_picture.sh: needs chromium: apt-get install chromium" >&2
  exit 1
}

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"

# Takes a picture of a page.
photograph() {
  local page=$1 picture=$2 size=$3
  mkdir -p "$(dirname "$picture")"
  timeout 120 chromium --headless=new --no-sandbox --disable-gpu --disable-dev-shm-usage --hide-scrollbars \
    --force-device-scale-factor=1 --user-data-dir="$dir/browser" --window-size="$size" \
    --virtual-time-budget=5000 --screenshot="$picture" "file://$dir/$page" >/dev/null 2>&1
  echo "$picture: $(stat -c %s "$picture") bytes"
}

# Takes a picture of report.html with frame number $2 opened in the viewer.
photograph_frame() {
  local picture=$1 frame=$2
  {
    cat report.html
    echo "<script>addEventListener('load', () => {
      document.querySelectorAll('.thumb')[$frame].click();
      document.activeElement.blur();
    });</script>"
  } >opened.html
  photograph opened.html "$picture" 1200,520
}

"$zelweld" simulate --type corner --frames 3 --seed 4 --size 800x480 --drift 1,0.5 --out corner
"$zelweld" report --params corner/params.json --out report.html corner
photograph_frame "$found" 2
"$zelweld" simulate --type lap --frames 3 --seed 3 --size 800x480 --out lap
"$zelweld" report --params lap/params.json --set dPara7=60 --out report.html lap
photograph_frame "$lost" 2

echo '<body style="margin: 0; display: flex; gap: 8px; background: #fff">' >plates.html
for seam in "tight dark" "step edge"; do
  read -r plate polarity <<<"$seam"
  "$zelweld" simulate --plate "$plate" --level noisy --frames 1 --size 320x240 --seed 4 --out "$plate"
  "$zelweld" seam "$plate" --polarity "$polarity" --out "$plate-found" >/dev/null
  echo "<img src='$plate/frame_0000.png'><img src='$plate-found/seam_0000.png'>" >>plates.html
done
photograph plates.html "$plates" 1304,240
