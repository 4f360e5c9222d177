#!/usr/bin/env bash
# Shows that test_share.sh counts code lines alone and fails above its limit.
set -euo pipefail
check=$(cd "$(dirname "$0")" && pwd)/test_share.sh
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir -p "$dir/tests/unit" "$dir/src/api"
printf '// comment\n\nint a;\n' >"$dir/tests/unit/a_test.cpp"
printf '# comment\ntrue\n' >"$dir/tests/check.sh"
printf 'int b;  // not comment alone\n  // comment\n#include <vector>\n' >"$dir/src/api/b.cpp"
printf 'add_library(b)\n  # comment\nlink(b)\n' >"$dir/src/CMakeLists.txt"

bash "$check" "$dir" 50 | grep -q '^2 code lines of tests, 4 others: 50.0 %'
if bash "$check" "$dir" 49.9 >/dev/null; then
  echo "a share above the limit passes"
  exit 1
fi
