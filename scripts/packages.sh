#!/usr/bin/env bash
# Makes the Debian packages of a compiled build; fails on lintian's errors.
#
#   scripts/packages.sh BUILD PACKAGES
set -euo pipefail
build=$1
packages=$2

rm -rf "$packages"
# The same files from the same commit.
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null || date +%s)
export SOURCE_DATE_EPOCH
cpack --config "$build/CPackConfig.cmake" -B "$packages"
rm -r "$packages/_CPack_Packages"
lintian --fail-on error "$packages"/*.deb
ls -l "$packages"
