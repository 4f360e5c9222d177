#!/usr/bin/env bash
# Runs inside the bare Debian, with the packages and the foreign program beside it.
set -euo pipefail
cd "$(dirname "$0")"
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
unset PYTHONDONTWRITEBYTECODE  # what Python writes has to go again, too

begin() { echo "=== $* (${SECONDS} s)"; }

# All that a program may leave behind, without what apt and dpkg keep themselves and the caches of the system.
list_files() {
  find / \( -path /dev -o -path /proc -o -path /sys -o -path /tmp -o -path /packages -o -path /var/log -o -path /var/cache \
    -o -path /var/lib/apt -o -path /var/lib/dpkg \) -prune -o -print | sort
}

install_packages() {
  apt-get install -y -qq --no-install-recommends -o Dpkg::Use-Pty=0 "$@" >/tmp/apt.log 2>&1 || {
    cat /tmp/apt.log
    exit 1
  }
}

begin "what the packages and this test need"
mapfile -t needed < <(apt-get install -s --no-install-recommends ./*.deb | awk '/^Inst/ && !/zelweld/ { print $2 }')
install_packages "${needed[@]}" g++ make cmake pkg-config man-db bash-completion
list_files >/tmp/before

begin "install"
install_packages ./*.deb
ldconfig -p | grep libzelWeldDetect

begin "the foreign program, through pkg-config and through CMake"
g++ -std=c++17 consumer/consumer.cpp $(pkg-config --cflags --libs zelWeldDetect) -o /tmp/consumer
/tmp/consumer
cmake -S consumer -B /tmp/through-cmake >/dev/null
cmake --build /tmp/through-cmake >/dev/null
/tmp/through-cmake/consumer

begin "the program"
zelweld --version
zelweld simulate --type gap --frames 5 --seed 7 --out /tmp/frames
zelweld track /tmp/frames --type gap
man -w zelweld
bash -c 'source /usr/share/bash-completion/bash_completion
  _completion_loader zelweld || [ $? = 124 ]
  complete -p zelweld'

begin "the module"
python3 - <<'PYTHON'
import zelweld

tracker = zelweld.Tracker("gap", min_gap_px=8)
frame, truth = next(zelweld.simulate("gap"))
seam = tracker.track(frame)
print(seam.state, seam.pos, truth)
assert seam.state is zelweld.SeamState.FOUND
assert max(abs(a - b) for a, b in zip(seam.pos, truth)) < 2
PYTHON

begin "remove"
apt-get purge -y -qq -o Dpkg::Use-Pty=0 libzelwelddetect0 libzelwelddetect-dev zelweld python3-zelweld >/dev/null
list_files >/tmp/after
diff /tmp/before /tmp/after || { echo "these files are left or gone"; exit 1; }
if ldconfig -p | grep zelWeld; then exit 1; fi
echo "installed, used and removed in ${SECONDS} s"
