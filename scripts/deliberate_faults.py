#!/usr/bin/env python3
"""Tries deliberate faults: which tests catch them?

Applies the faults of tests/deliberate_faults.txt one at a time to a copy of the checkout. Rebuilds and runs the unit
tests of the fault's folder, those of the others, the scenarios and the short run of the accuracy tables, until one
fails. Prints a line per fault: caught by which test, survived, or stale when its text is no longer found. Fails when a
fault is stale or does not compile.

Faults of a file in the list:

    in src/folder/file.cpp
    @ name
    < the text as it stands
    > the text with the fault

Blanks and line breaks of the old text match any others. It must occur once in its file or, when the file has moved,
once in src/.
"""

import argparse
import pathlib
import re
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD_OPTIONS = ["-DZELWELD_BUILD_BENCHMARKS=OFF", "-DZELWELD_BUILD_EXAMPLES=OFF",
                 "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST"]
LEAST_TIMEOUT_S = 300
SLOWEST = 20  # times the duration without a fault: then a test hangs


class Fault:
    def __init__(self, name, path):
        self.name, self.path, self.old, self.new = name, path, [], []

    def pattern(self):
        return re.compile(r"\s+".join(re.escape(token) for token in " ".join(self.old).split()))

    def folder(self):
        return self.path.split("/")[1]


def read_faults(path):
    faults, file = [], None
    for number, line in enumerate(path.read_text().splitlines(), 1):
        mark, text = line[:1], line[2:].strip()
        if mark == "@":
            faults.append(Fault(text, file))
        elif line.startswith("in "):
            file = line[3:].strip()
        elif mark == "<":
            faults[-1].old.append(text)
        elif mark == ">":
            faults[-1].new.append(text)
        elif mark not in ("", "#"):
            sys.exit(f"{path}:{number}: not understood: {line}")
    names = [fault.name for fault in faults]
    for fault in faults:
        if not (fault.path and fault.old) or names.count(fault.name) > 1:
            sys.exit(f"{path}: {fault.name}: needs a name of its own, a path and the old text")
    return faults


def copy_checkout(source, target):
    """Copies what git knows or would take, and touches nothing that has not changed, so that builds stay short."""
    listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard"], cwd=source, check=True,
                            capture_output=True, text=True).stdout.splitlines()
    wanted = {name for name in listed if (source / name).is_file()}
    present = {str(path.relative_to(target)) for path in target.rglob("*") if path.is_file()}
    for name in present - wanted:
        (target / name).unlink()
    for name in wanted:
        content = (source / name).read_bytes()
        if name not in present or (target / name).read_bytes() != content:
            (target / name).parent.mkdir(parents=True, exist_ok=True)
            (target / name).write_bytes(content)
            shutil.copymode(source / name, target / name)


class DoesNotCompile(Exception):
    pass


class Tests:
    """The unit tests, a program for each folder of src/, the scenarios and the short run of the accuracy tables."""

    ACCURACY = "seam_accuracy"

    def __init__(self, scratch, jobs):
        self.source, self.build, self.jobs = scratch / "source", scratch / "build", jobs
        folders = sorted(path.name for path in (self.source / "tests" / "unit").iterdir() if any(path.glob("*.cpp")))
        self.programs = [f"test_{folder}" for folder in folders] + ["test_scenarios", self.ACCURACY]
        self.seconds = {}

    def configure(self):
        subprocess.run(["cmake", "-S", self.source, "-B", self.build, *BUILD_OPTIONS], check=True,
                       stdout=subprocess.DEVNULL)

    def compile(self, program):
        done = subprocess.run(["cmake", "--build", self.build, "-j", str(self.jobs), "--target", program],
                              capture_output=True, text=True)
        if done.returncode != 0:
            raise DoesNotCompile(done.stdout + done.stderr)

    def command(self, program, stops_early):
        if program == self.ACCURACY:
            return [self.build / "benchmarks" / "accuracy" / program, "--short"]
        return [self.build / "tests" / program] + (["--gtest_fail_fast"] if stops_early else [])

    def run(self, program, stops_early):
        """The tests of a program that fail; of the accuracy tables the rows."""
        command = self.command(program, stops_early)
        known = self.seconds.get(program)
        timeout = None if known is None else max(LEAST_TIMEOUT_S, SLOWEST * known)
        try:
            done = subprocess.run(command, cwd=self.build / "tests", timeout=timeout, stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL)
            if done.returncode == 0:
                return []
            output, end = done.stdout, "crashes"
        except subprocess.TimeoutExpired as expired:
            output, end = expired.stdout or b"", "does not end"
        output = output.decode(errors="replace")
        if program == self.ACCURACY:
            rows = re.findall(r"^\| ([^!\n]*?) \| [-\d.]+[^\n]*!", output, re.MULTILINE)
            return [f"{program} {row.replace(' | ', ' ')}" for row in rows] or [f"{program} ({end})"]
        failed = re.findall(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)", output, re.MULTILINE)
        begun = re.findall(r"^\[ RUN      \] (\S+)", output, re.MULTILINE)
        names = list(dict.fromkeys(failed)) or [f"{begun[-1] if begun else ''} ({end})"]
        return [f"{program} {name}" for name in names]

    def catch(self, folder, finds_all):
        """The first test that fails, or all of them."""
        failed = []
        for program in sorted(self.programs, key=lambda name: name != f"test_{folder}"):
            self.compile(program)
            failed += self.run(program, not finds_all)
            if failed and not finds_all:
                return failed[:1]
        return failed

    def require_success(self):
        print("building and running the tests without a fault", flush=True)
        for program in self.programs:
            self.compile(program)
            begin = time.monotonic()
            failed = self.run(program, True)
            if failed:
                sys.exit(f"fails without a fault: {failed[0]}")
            self.seconds[program] = time.monotonic() - begin


def locate(fault, source):
    """The file that holds the old text just once and its content with the fault; nothing when there is none."""
    hinted = source / fault.path
    files = [path for path in sorted((source / "src").rglob("*")) if path.is_file()]
    for candidates in ([hinted] if hinted.is_file() else [], files):
        hits = [(path, match) for path in candidates for match in fault.pattern().finditer(path.read_text())]
        if len(hits) == 1:
            path, match = hits[0]
            text = path.read_text()
            return path, text[:match.start()] + "\n".join(fault.new) + text[match.end():]
    return None


class Trial:
    """One fault after the other. A file stays faulty until the next fault, so that it is compiled once for each."""

    def __init__(self, tests, finds_all):
        self.tests, self.finds_all, self.changed = tests, finds_all, {}

    def restore(self):
        for path, content in self.changed.items():
            path.write_text(content)
        self.changed = {}

    def run(self, fault):
        self.restore()
        place = locate(fault, self.tests.source)
        if place is None:
            return "stale", ""
        path, faulty = place
        self.changed = {path: path.read_text()}
        path.write_text(faulty)
        try:
            caught = self.tests.catch(path.relative_to(self.tests.source).parts[1], self.finds_all)
        except DoesNotCompile as error:
            return "error", " ".join(re.findall(r"error: .*", str(error))[:1])
        return ("caught", ", ".join(caught)) if caught else ("survived", "")


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--only", metavar="NAME", action="append", help="this fault; may be repeated")
    parser.add_argument("--folder", metavar="NAME", help="the faults of this folder of src/")
    parser.add_argument("--check", action="store_true", help="only look for stale faults; fails when there are any")
    parser.add_argument("--all", action="store_true", help="name every test that catches a fault, not the first only")
    parser.add_argument("--checkout", type=pathlib.Path, default=ROOT, help="whose sources and tests to try")
    parser.add_argument("--list", type=pathlib.Path, default=ROOT / "tests" / "deliberate_faults.txt")
    parser.add_argument("--scratch", type=pathlib.Path, default=ROOT / "build-faults", help="folder for the copy")
    parser.add_argument("--jobs", type=int, default=2)
    return parser.parse_args()


def main():
    options = parse_arguments()
    faults = [fault for fault in read_faults(options.list)
              if (not options.only or fault.name in options.only)
              and (not options.folder or fault.folder() == options.folder)]
    if not faults:
        sys.exit("no such fault")
    if options.check:
        stale = [fault.name for fault in faults if locate(fault, options.checkout) is None]
        return f"{options.list}: text no longer found: {', '.join(stale)}" if stale else 0
    scratch = options.scratch.resolve()
    (scratch / "source").mkdir(parents=True, exist_ok=True)
    copy_checkout(options.checkout.resolve(), scratch / "source")
    tests = Tests(scratch, options.jobs)
    tests.configure()
    try:
        tests.require_success()
    except DoesNotCompile as error:
        sys.exit(str(error))
    trial = Trial(tests, options.all)
    counts = dict.fromkeys(("caught", "survived", "stale", "error"), 0)
    try:
        for fault in faults:
            verdict, detail = trial.run(fault)
            counts[verdict] += 1
            print(f"{verdict:<8}  {fault.folder() + '/' + fault.name:<44}  {detail}".rstrip(), flush=True)
    finally:
        trial.restore()
    print(f"{len(faults)} faults: " + ", ".join(f"{count} {verdict}" for verdict, count in counts.items()))
    return 1 if counts["stale"] or counts["error"] else 0


if __name__ == "__main__":
    sys.exit(main())
