#!/usr/bin/env bash
# Writes the API pages and checks them: comments, links.
#
#   scripts/pages/make.sh BUILD PAGES
set -euo pipefail
cd "$(dirname "$0")/../.."
build=$1
pages=$2

rm -rf "$pages"
mkdir -p "$pages"
PROJECT_VERSION=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt") \
  BUILD=$build PAGES=$pages doxygen scripts/pages/Doxyfile
scripts/pages/check_comments.py "$pages/xml"
rm -r "$pages/xml"

# What the documents link to and is no page.
mkdir "$pages/docs"
cp -r docs/images docs/exported-symbols.txt "$pages/docs"
cp -r examples "$pages"
(cd examples && find . -name '*.cpp' -o -name '*.py') | sort |
  sed 's,^\./\(.*\),<p><a href="\1">\1</a></p>,' >"$pages/examples/index.html"
scripts/pages/check_links.py "$pages"/*.html "$pages/examples/index.html"
echo "Look at $pages/index.html"
