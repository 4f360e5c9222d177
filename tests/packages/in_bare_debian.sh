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

# Some 50,000 files for two minutes: in memory, where there is room and programs may run.
room=$(df --output=avail --block-size=1G /dev/shm 2>/dev/null | tail -1)
if [ "${room:-0}" -ge 6 ] && ! findmnt -no OPTIONS /dev/shm | grep -q noexec; then export TMPDIR=/dev/shm; fi

mmdebstrap --quiet --variant=apt --aptopt="$settings" --dpkgopt=force-unsafe-io \
  --customize-hook="mkdir \"\$1/packages\"" \
  --customize-hook="copy-in ${packages[*]} $here/use.sh $here/../install/consumer /packages" \
  --customize-hook="chroot \"\$1\" bash /packages/use.sh" \
  bookworm /dev/null
