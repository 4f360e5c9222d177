#!/usr/bin/env bash
# Fails when a source file includes a folder that it must not lean on.
#   layering.sh PROJECT_DIR
set -euo pipefail
cd "$1"

# Folder, and the project folders that its files may include besides their own. The first row that is a
# prefix of the file's path counts.
rules() {
  cat <<'TABLE'
include                   -
src/support               include
src/trace                 include src/support
src/stripe                include src/support src/trace
src/geometry              include src/support src/trace
src/profile               include src/support src/trace src/stripe
src/lighting              include src/support src/trace
src/contrast              include src/support src/trace
src/job                   include src/support
src/detectors             include src/support src/trace src/stripe src/geometry src/profile
src/api                   include src/support src/trace src/stripe src/geometry src/profile src/lighting src/contrast src/detectors
scenes                    include
examples                  include scenes
tests/install             include
tools                     include scenes
fuzz                      include scenes tools
tests/support             include scenes
tests/scenarios           include scenes tests/support
tests/tools               include scenes tools tests/support
tests                     include scenes tests/support src/support src/trace src/stripe src/geometry src/profile src/detectors src/api src/lighting src/contrast src/job
benchmarks                include scenes tools tests src/support src/trace src/stripe src/geometry src/profile src/detectors src/api src/lighting src/contrast
TABLE
}

# OpenCV modules that the library's own folders may use.
opencv_rules() {
  cat <<'TABLE'
include  core
src      core imgproc
TABLE
}

# The table of joints in src/api includes every detector.
detectors=$(sed -n 's/^#include "\(detectors\/.*\)"$/\1/p' src/api/joints.cpp 2>/dev/null | sort -u | tr '\n' ' ') || true

{ find include src scenes examples tests tools benchmarks fuzz \( -name '*.h' -o -name '*.cpp' \) 2>/dev/null || true; } |
  sort |
  awk -v rules="$(rules)" -v opencv_rules="$(opencv_rules)" -v detectors="$detectors" '
    function starts_with(text, prefix) { return index(text "/", prefix "/") == 1 }

    function is_listed(word, words) { return index(" " words " ", " " word " ") > 0 }

    function fail(file, line, why) { print file ": " line ": " why; failures++ }

    function exists(file,    line, result) { result = (getline line < file) >= 0; close(file); return result }

    # The row that holds for a file; 0 for none.
    function row_of(file,    r) {
      for (r = 1; r <= count; r++) if (starts_with(file, folder[r])) return r
      return 0
    }

    # The folder of the project that an include names, from the path as written; "" for a system header.
    function folder_of(path, own,    top) {
      top = path
      if (!sub("/.*", "", top)) return path ~ /^zel[A-Z]/ ? "include" : own
      if (starts_with(own, "tests") && exists("tests/" path)) return folder[row_of("tests/" path)]
      if (is_listed(top, "support trace stripe geometry profile lighting contrast detectors api job")) return "src/" top
      return is_listed(top, "scenes tools tests examples benchmarks fuzz") ? top : ""
    }

    function check_project_include(file, line, path, row,    target, own_header) {
      target = folder_of(path, folder[row])
      if (path ~ /\.\./) fail(file, line, "write includes from src, without ..")
      else if (target == "") fail(file, line, "no such project folder; system headers go in <>")
      else if (target != folder[row] && !is_listed(target, allowed[row]))
        fail(file, line, folder[row] " must not include " target)
      else if (target == "src/detectors" && folder[row] == target) {
        # A detector may use its own header and what detectors share, never another detector.
        own_header = file; sub(/^src\//, "", own_header); sub(/\.[a-z]+$/, ".h", own_header)
        if (path != own_header && is_listed(path, detectors))
          fail(file, line, "a detector must not include another detector")
      }
    }

    function check_opencv_include(file, line, path,    module, r) {
      module = path
      sub(/^opencv2\//, "", module); sub(/[\/.].*/, "", module)
      for (r = 1; r <= opencv_count; r++)
        if (starts_with(file, opencv_folder[r]) && !is_listed(module, opencv_allowed[r]))
          fail(file, line, opencv_folder[r] " must not use OpenCV " module)
    }

    BEGIN {
      count = split(rules, rows, "\n")
      for (r = 1; r <= count; r++) {
        folder[r] = rows[r]; sub(/ .*/, "", folder[r])
        allowed[r] = rows[r]; sub(/^[^ ]+ +/, "", allowed[r])
      }
      opencv_count = split(opencv_rules, rows, "\n")
      for (r = 1; r <= opencv_count; r++) {
        opencv_folder[r] = rows[r]; sub(/ .*/, "", opencv_folder[r])
        opencv_allowed[r] = rows[r]; sub(/^[^ ]+ +/, "", opencv_allowed[r])
      }
    }

    {
      file = $0
      row = row_of(file)
      if (!row) next
      files++
      while ((getline line < file) > 0) {
        if (line !~ /^[ \t]*#[ \t]*include/) continue
        path = line
        sub(/^[^<"]*[<"]/, "", path); sub(/[>"].*/, "", path)
        if (path ~ /^opencv2\//) check_opencv_include(file, line, path)
        else if (line ~ /"/ || path ~ /^zel[A-Z]/) check_project_include(file, line, path, row)
      }
      close(file)
    }

    END {
      if (!files) { print "no source files found"; exit 1 }
      print files " files, " failures + 0 " wrong includes"
      exit failures > 0
    }'
