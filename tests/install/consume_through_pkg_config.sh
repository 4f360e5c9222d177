#!/usr/bin/env bash
# Builds and runs the foreign program with what pkg-config answers.
#   consume_through_pkg_config.sh CXX PKG_CONFIG LIBDIR SOURCE OUT_DIR
set -euo pipefail
cxx=$1 pkg_config=$2 libdir=$3 source=$4 out=$5

export PKG_CONFIG_PATH=$libdir/pkgconfig
read -ra flags < <("$pkg_config" --cflags --libs zelWeldDetect)
echo "flags: ${flags[*]}"
mkdir -p "$out"
"$cxx" -std=c++17 "$source" "${flags[@]}" -o "$out/consumer"
LD_LIBRARY_PATH=$libdir "$out/consumer"
