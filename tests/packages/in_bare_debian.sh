#!/usr/bin/env bash
# Installs, uses and removes the packages in a Debian 12 that holds nothing but apt. Nothing of it is kept.
#   in_bare_debian.sh PACKAGES
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
packages=("$1"/*.deb)

# As this machine reaches the archive.
settings=$(mktemp)
trap 'rm -f "$settings"' EXIT
apt-config dump Acquire --format '%f "%v";%n' | grep -E '::(Proxy|Check-|Retries)' >"$settings" || true

mmdebstrap --quiet --variant=apt --aptopt="$settings" \
  --customize-hook="mkdir \"\$1/packages\"" \
  --customize-hook="copy-in ${packages[*]} $here/use.sh $here/../install/consumer /packages" \
  --customize-hook="chroot \"\$1\" bash /packages/use.sh" \
  bookworm /dev/null
