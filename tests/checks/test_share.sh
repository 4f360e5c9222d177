#!/usr/bin/env bash
# Prints the code lines under tests/ as a share of all other code lines of the checkout, in percent; fails above the
# limit. Code lines are those that are neither blank nor comment alone.
#   test_share.sh CHECKOUT LIMIT
set -euo pipefail
checkout=$1
limit=$2

# Of the C++ sources, the pages of the report and the scripts below the given folders.
count_lines() {
  local folders=()
  for folder in "$@"; do [[ -d $checkout/$folder ]] && folders+=("$checkout/$folder"); done
  {
    find "${folders[@]}" \( -name '*.cpp' -o -name '*.h' \) -exec sed -E '/^\s*(\/\/|$)/d' {} +
    find "${folders[@]}" \( -name '*.py' -o -name '*.sh' -o -name '*.cmake' -o -name CMakeLists.txt \) \
      -exec sed -E '/^\s*(#|$)/d' {} +
    find "${folders[@]}" \( -name '*.js' -o -name '*.html' -o -name '*.css' \) \
      -exec sed -E '/^\s*(\/\/|\/\*|$)/d' {} +
  } | wc -l
}

tests=$(count_lines tests)
others=$(count_lines src include scenes tools benchmarks examples fuzz scripts cmake python)
awk -v tests="$tests" -v others="$others" -v limit="$limit" 'BEGIN {
  share = 100 * tests / others
  printf "%d code lines of tests, %d others: %.1f %%, limit %s %%\n", tests, others, share, limit
  exit !(share <= limit)
}'
