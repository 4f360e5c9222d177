#!/usr/bin/env bash
# Gets axe-core, by which the pages are tested for accessibility, from the npm registry. Without npm, or without the
# registry, it says so: the test then leaves that part out.
#
#   scripts/fetch-axe.sh FILE    FILE becomes axe.min.js
set -euo pipefail

file=$1
[ -s "$file" ] && exit 0
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
if ! command -v npm >/dev/null ||
  ! (cd "$folder" && npm pack --silent --fetch-retries=1 --fetch-timeout=20000 axe-core@4 >name) 2>"$folder/log"; then
  echo "No axe-core from npm: the pages are not tested for accessibility."
  exit 0
fi
mkdir -p "$(dirname "$file")"
tar -xOf "$folder/$(cat "$folder/name")" package/axe.min.js >"$folder/axe.min.js"
mv "$folder/axe.min.js" "$file"
