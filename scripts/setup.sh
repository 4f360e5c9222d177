#!/usr/bin/env bash
# Installs what the named steps need and this machine lacks, through apt-get. Says so first; prints nothing
# and does nothing when all is there.
#
#   scripts/setup.sh build|python|test|arm|bench|clang|fuzz|format|valgrind|lint|coverage|packages|bare|pages ...
set -euo pipefail

# Prints "package probe" lines for a step; the probe is a command, with a slash or dot a header, with a slash in front
# a pattern of files.
requirements() {
  case "$1" in
    build)
      cat <<'LIST'
g++                      g++
cmake                    cmake
make                     make
libopencv-core-dev       opencv2/core.hpp
libopencv-imgproc-dev    opencv2/imgproc.hpp
libopencv-imgcodecs-dev  opencv2/imgcodecs.hpp
libopencv-videoio-dev    opencv2/videoio.hpp
libcli11-dev             CLI/CLI.hpp
nlohmann-json3-dev       nlohmann/json.hpp
libjs-dygraphs           /usr/share/javascript/dygraphs/dygraph.min.js
LIST
      ;;
    test)
      cat <<'LIST'
libgtest-dev             gtest/gtest.h
pkg-config               pkg-config
binutils                 nm
man-db                   man
chromium                 chromium
chromium-driver          chromedriver
python3-selenium         /usr/lib/python3/dist-packages/selenium
LIST
      ;;
    python)
      cat <<'LIST'
pybind11-dev             pybind11/pybind11.h
python3-dev              /usr/include/python3*/Python.h
python3-numpy            /usr/lib/python3/dist-packages/numpy
python3-tqdm             /usr/lib/python3/dist-packages/tqdm
python3-fsspec           /usr/lib/python3/dist-packages/fsspec
python3-matplotlib       /usr/lib/python3/dist-packages/matplotlib
python3-distributed      /usr/lib/python3/dist-packages/distributed
python3-pip              /usr/lib/python3/dist-packages/pip
python3-wheel            /usr/lib/python3/dist-packages/wheel
python3-pytest           /usr/lib/python3/dist-packages/pytest
mypy                     mypy
LIST
      ;;
    arm)
      cat <<'LIST'
g++-aarch64-linux-gnu  aarch64-linux-gnu-g++
qemu-user              qemu-aarch64
cmake                  cmake
make                   make
LIST
      ;;
    bench) printf "%s\n" "libbenchmark-dev benchmark/benchmark.h" "python3 python3" ;;
    clang) echo "clang clang++" ;;
    fuzz)
      cat <<'LIST'
clang               clang++
libclang-rt-14-dev  /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-*.a
LIST
      ;;
    format) echo "clang-format clang-format" ;;
    valgrind) echo "valgrind valgrind" ;;
    lint)
      cat <<'LIST'
clang-tidy               clang-tidy
cppcheck                 cppcheck
LIST
      ;;
    coverage) echo "gcovr gcovr" ;;
    packages)
      cat <<'LIST'
dpkg-dev  dpkg-shlibdeps
file      file
lintian   lintian
LIST
      ;;
    bare) echo "mmdebstrap mmdebstrap" ;;
    pages)
      cat <<'LIST'
doxygen  doxygen
python3  python3
LIST
      ;;
    *)
      echo "setup.sh: unknown step '$1'; the first lines of this file name them" >&2
      exit 2
      ;;
  esac
}

is_there() {
  case "$1" in
    /*) compgen -G "$1" >/dev/null ;;
    *[/.]*)
      local root
      for root in /usr/include /usr/include/opencv4 /usr/local/include /usr/local/include/opencv4; do
        [ -e "$root/$1" ] && return 0
      done
      return 1
      ;;
    *) command -v "$1" >/dev/null ;;
  esac
}

missing=()
for step in "$@"; do
  list=$(requirements "$step")
  while read -r package probe; do
    is_there "$probe" || missing+=("$package")
  done <<<"$list"
done
[ ${#missing[@]} -eq 0 ] && exit 0

if ! command -v apt-get >/dev/null; then
  echo "setup.sh: this machine has no apt-get; what these Debian packages hold is missing: ${missing[*]}" >&2
  exit 1
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "setup.sh: not root and no sudo; as root: apt-get install --no-install-recommends ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi

echo "Installing through ${as_root[*]:+sudo }apt-get: ${missing[*]}"
"${as_root[@]}" apt-get update -qq || echo "Going on with the package lists that are there."
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install -y -qq --no-install-recommends -o Dpkg::Use-Pty=0 "${missing[@]}"
