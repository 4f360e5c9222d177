#!/usr/bin/env bash
# Shows that hardening.sh and exported_symbols.sh pass a good binary and catch each kind of bad one.
#   binary_checks_selftest.sh COMPILER
set -euo pipefail
compiler=$1
here=$(cd "$(dirname "$0")" && pwd)
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
failures=0

# expect right|wrong WHAT COMMAND...
expect() {
  local expected=$1 what=$2 actual=right
  shift 2
  "$@" >/dev/null || actual=wrong
  if [ "$actual" != "$expected" ]; then
    echo "$what: $actual, expected $expected"
    failures=$((failures + 1))
  fi
}

cat >"$dir/code.cpp" <<'CODE'
#include <cstdio>
#include <cstring>
extern "C" int wanted(const char* text) {
  char copy[64] = {};
  std::memcpy(copy, text, std::strlen(text));
  return std::puts(copy);
}
int main(int, char** words) { return wanted(words[0]); }
CODE
hardened='-O2 -fPIE -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -pie -Wl,-z,relro,-z,now,-z,noexecstack'

# verdict EXPECTED FLAG: a program built with the flags of the project and this one after them.
verdict() {
  # shellcheck disable=SC2086
  "$compiler" -w $hardened $2 "$dir/code.cpp" -o "$dir/program"
  expect "$1" "program with ${2:-no further flag}" "$here/hardening.sh" optimised "$dir/program" "$dir/program"
}
verdict right ''
verdict wrong -fno-stack-protector
verdict wrong -U_FORTIFY_SOURCE
verdict wrong -Wl,-z,norelro
verdict wrong -Wl,-z,lazy
verdict wrong -Wl,-z,execstack
verdict wrong '-fno-pie -no-pie'

"$compiler" -shared -fPIC -w "$dir/code.cpp" -o "$dir/library.so" -Wl,-Bsymbolic
bash "$here/exported_symbols.sh" "$dir/library.so" "$dir/list" --update
expect right 'the list as it is' "$here/exported_symbols.sh" "$dir/library.so" "$dir/list"
grep -v wanted "$dir/list" >"$dir/short"
expect wrong 'an export that is not listed' "$here/exported_symbols.sh" "$dir/library.so" "$dir/short"
{ cat "$dir/list"; echo zzz_missing; } >"$dir/long"
expect wrong 'a listed symbol that is missing' "$here/exported_symbols.sh" "$dir/library.so" "$dir/long"

exit $((failures > 0))
