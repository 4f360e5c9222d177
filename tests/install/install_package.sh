#!/usr/bin/env bash
# Installs into a fresh prefix, then moves it, so that nothing may lean on where it was built or installed.
#   install_package.sh CMAKE BUILD_DIR SOURCE_DIR PREFIX
set -euo pipefail
cmake=$1 build=$2 source=$3 prefix=$4

rm -rf "$prefix" "$prefix.first"
"$cmake" --install "$build" --prefix "$prefix.first" >/dev/null
mv "$prefix.first" "$prefix"

headers=("$source"/include/*.h)
for file in "${headers[@]/#"$source/"/}" include/zelWeldDetectExport.h bin/zelweld; do
  if [ ! -e "$prefix/$file" ]; then
    echo "not installed: $file"
    exit 1
  fi
done

if grep -rlF -e "$build" -e "$source" "$prefix"; then
  echo "the installed files above hold a path of the build"
  exit 1
fi

"$prefix/bin/zelweld" --version
