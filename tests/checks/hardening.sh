#!/usr/bin/env bash
# Fails when a library or program lacks one of the hardening measures of cmake/ProjectOptions.cmake.
#   hardening.sh optimised|unoptimised LIBRARY PROGRAM
set -euo pipefail
build=$1 library=$2 program=$3
faults=0

# Says what is missing where the text on standard input lacks the pattern.
needs() {
  if ! grep -qE "$1"; then
    echo "$file: $2"
    faults=$((faults + 1))
  fi
}

for file in "$library" "$program"; do
  headers=$(readelf --wide --file-header --program-headers --dynamic "$file")
  imports=$(nm --dynamic --undefined-only "$file")
  needs 'GNU_RELRO' 'import tables stay writable (-z relro)' <<<"$headers"
  needs 'BIND_NOW|Flags:.* NOW' 'imports are bound late (-z now)' <<<"$headers"
  needs 'GNU_STACK.* RW ' 'executable stack (-z noexecstack)' <<<"$headers"
  needs '__stack_chk_fail' 'no stack canaries (-fstack-protector-strong)' <<<"$imports"
done
needs 'Flags:.* PIE' 'runs at a fixed address (-pie)' <<<"$headers"
# Only optimised code is checked, and only the program makes calls that can be.
if [ "$build" = optimised ]; then
  needs '__[a-z]+_chk(@|$)' 'C library calls are not checked (-D_FORTIFY_SOURCE=2)' <<<"$imports"
fi
echo "$faults faults"
[ "$faults" -eq 0 ]
