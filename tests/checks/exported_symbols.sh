#!/usr/bin/env bash
# Fails when the shared library exports anything else than docs/exported-symbols.txt lists.
#   exported_symbols.sh LIBRARY LIST            compares
#   exported_symbols.sh LIBRARY LIST --update   writes the list anew, for a change that is meant
set -euo pipefail
library=$1 list=$2

exported() { nm --dynamic --defined-only --demangle "$library" | cut -d ' ' -f 3- | LC_ALL=C sort -u; }

if [ "${3:-}" = --update ]; then
  exported >"$list"
elif ! diff --label listed --label exported -u "$list" <(exported); then
  echo "Hide what was exported by accident; where the change is meant, run this with --update."
  exit 1
fi
