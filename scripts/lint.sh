#!/usr/bin/env bash
# Runs cppcheck and clang-tidy over the sources of some folders. Any finding is an error: what does not count is
# listed with its reason in .clang-tidy and scripts/cppcheck.txt, or silenced where it stands.
#
#   scripts/lint.sh BUILD JOBS FOLDER...    BUILD holds compile_commands.json
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
jobs=$2
shift 2

cppcheck --enable=warning,style,performance,portability --std=c++17 --language=c++ --quiet --inline-suppr \
  --suppressions-list=scripts/cppcheck.txt --error-exitcode=1 -j "$jobs" -I include -I src -I . -I "$build/include" \
  "$@"
echo "cppcheck: nothing found in $*"

# clang-tidy reads no headers that another compiler has precompiled.
commands=$(mktemp -d)
trap 'rm -rf "$commands"' EXIT
sed -E 's/ -Winvalid-pch//; s/ -include [^ ]*cmake_pch\.hxx//' "$build/compile_commands.json" >"$commands/compile_commands.json"

git ls-files -z "${@/%/\/*.cpp}" | xargs -0 -P "$jobs" -n 2 clang-tidy -p "$commands" --quiet 2>"$build/clang-tidy.log" || {
  grep -v 'warnings generated' "$build/clang-tidy.log" >&2 || true
  exit 1
}
echo "clang-tidy: nothing found in $*"
