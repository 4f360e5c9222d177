#!/usr/bin/env bash
# Runs what a document shows, in the order in which it shows it and in one fresh directory:
#   ```cpp      a full program; compiled against the installed package and run
#   ```python   a program; run with the module of PYTHONPATH
#   ```console  lines "$ zelweld ..." are run, of lines "$ make ..." the target must exist
#
#   docs_snippets.sh DOCUMENT PROJECT_DIR PREFIX LIBDIR CXX PKG_CONFIG
set -euo pipefail
document=$1 project=$2 prefix=$3 libdir=$4 cxx=$5 pkg_config=$6

export PATH=$prefix/bin:$PATH PKG_CONFIG_PATH=$libdir/pkgconfig LD_LIBRARY_PATH=$libdir
read -ra flags < <("$pkg_config" --cflags --libs zelWeldDetect)

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir "$dir/blocks" "$dir/work"
cd "$dir/work"

# One file per block, named after its line in the document.
awk -v out="$dir/blocks" '
  inside && /^```/ { close(path); inside = 0; next }
  inside { print > path; next }
  /^```(cpp|python|console)$/ { path = sprintf("%s/%05d.%s", out, NR, substr($0, 4)); printf "" > path; inside = 1 }
' "$document"

run_program() {
  "$cxx" -std=c++17 -Wall -Wextra -Werror "$1" "${flags[@]}" -lopencv_imgcodecs -lopencv_imgproc -o "$dir/program" &&
    "$dir/program"
}

run_python() {
  if [ -z "${PYTHONPATH:-}" ]; then
    echo "SKIPPED: the Python module was not built"
  else
    /usr/bin/python3 "$1"
  fi
}

run_console() {
  local line
  while read line; do  # without -r: joins lines that end in a backslash
    case "$line" in
      '$ zelweld '*) bash -c "${line#\$ }" </dev/null || return ;;
      '$ make'*) bash -c "make --directory '$project' --dry-run ${line#\$ make}" >/dev/null || return ;;
    esac
  done <"$1"
}

for block in "$dir"/blocks/*; do
  [ -e "$block" ] || continue
  name=$(basename "$block")
  echo "--- line $((10#${name%%.*})) of $(basename "$document")"
  case "$name" in
    *.cpp) run_program "$block" ;;
    *.python) run_python "$block" ;;
    *.console) run_console "$block" ;;
  esac || {
    echo "this block fails with exit code $?"
    exit 1
  }
done
