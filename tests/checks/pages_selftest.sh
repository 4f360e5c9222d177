#!/usr/bin/env bash
# What the checks of the API pages have to let pass and to find.
set -euo pipefail
scripts=$(cd "$(dirname "$0")/../../scripts/pages" && pwd)
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"

# expect TEXT COMMAND...: the command fails and says so.
expect() {
  local text=$1
  shift
  if "$@" >out 2>&1 || ! grep -qF -e "$text" out; then
    echo "not found: $text"
    cat out
    exit 1
  fi
}

printf '# A\n\n## B, c `d`\n\n```\n[x](nowhere)\n```\n[1](a.md#b-c-d) [2](#b-c-d) [3](https://a.b) [4](a.html#i)\n' >a.md
printf '<h2 id="i"><a href="#i">1</a> <a href="a.md">2</a></h2>' >a.html
"$scripts/check_links.py" a.md a.html
for link in a.md#b a.html#j b.md '#c'; do
  echo "[x]($link)" >bad.md
  expect "bad.md: no $link" "$scripts/check_links.py" bad.md a.md
done

cat >a.h <<'HEADER'
// The file.
#pragma once

// Lines.
//   k  slope of the line
// Nothing else.
double lineAt(double k, double b,
              int c);
double pointAt(double k);
int number;

struct TA {
  int x = 0;   // first,
               // column
  TA();
};
HEADER
diff - <("$scripts/header_comments.py" a.h) <<'EXPECTED'
/**
@file

The file.
*/
#pragma once

/**
Lines.
@param k  slope of the line

Nothing else.
*/
double lineAt(double k, double b,
              int c);
/**
Lines.
@param k  slope of the line

Nothing else.
*/
double pointAt(double k);
int number;

struct TA {
  int x = 0;   ///< first,
               ///< column
/// @cond
  TA();
/// @endcond
};
EXPECTED

mkdir xml
# member KIND TYPE NAME COMMENT
member() {
  echo "<doxygen><compounddef><compoundname>A</compoundname><location file='a.h'/>
    <briefdescription>A.</briefdescription><memberdef kind='$1' prot='public'><type>$2</type><name>$3</name>
    <param><type>int</type><declname>count</declname></param><briefdescription>$4</briefdescription></memberdef>
    </compounddef></doxygen>" >xml/a.xml
}
member function double widthPx 'Of points, NaN for none.'
"$scripts/check_comments.py" xml
member variable double width 'How wide it is.'
expect 'A::width says no unit of width' "$scripts/check_comments.py" xml
member function bool isWide 'Whether it is, in px.'
expect 'A::isWide does not say what an argument without sense gives' "$scripts/check_comments.py" xml
member variable bool isWide ''
expect 'A::isWide has no comment' "$scripts/check_comments.py" xml
