#!/usr/bin/env bash
# Unpacks the 64-bit ARM packages of this Debian release that the tests link into a folder. apt works in a state
# and cache of its own there: nothing is installed, and this machine's package lists stay as they are.
#   arm_sysroot.sh DIR
set -euo pipefail
packages=(libopencv-core-dev libopencv-imgproc-dev nlohmann-json3-dev libgtest-dev libstdc++6)

sysroot=$1
stamp=$sysroot/unpacked
[ -e "$stamp" ] && [ "$(<"$stamp")" = "${packages[*]}" ] && exit 0

echo "Unpacking 64-bit ARM packages into $sysroot: ${packages[*]} and what they need"
rm -rf "$sysroot"
apt=$(realpath -m "$sysroot")/apt
mkdir -p "$apt"/state/lists/partial "$apt"/cache/archives/partial
: >"$apt/status"
private=(-qq -o APT::Architecture=arm64 -o APT::Architectures=arm64 -o Dir::Cache="$apt/cache"
  -o Dir::State="$apt/state" -o Dir::State::status="$apt/status" -o APT::Sandbox::User=root)
apt-get "${private[@]}" update
apt-get "${private[@]}" install -y --no-install-recommends --download-only "${packages[@]}"

for archive in "$apt"/cache/archives/*.deb; do dpkg-deb -x "$archive" "$sysroot"; done
rm -r "$apt"

# Links that the packages set up when they are installed.
libraries=$sysroot/usr/lib/aarch64-linux-gnu
ln -s blas/libblas.so.3 lapack/liblapack.so.3 "$libraries"
echo "${packages[*]}" >"$stamp"
