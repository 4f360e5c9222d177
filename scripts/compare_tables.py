#!/usr/bin/env python3
"""Sets the tables of a benchmark beside those of another commit.

    compare_tables.py COMMIT ITS_OUTPUT... -- OUTPUT_HERE...

Rows are joined by heading and first column. The second column is the figure; where both sides have a column of us or ms,
its first value is the time, which does not depend on what either side calls a copy. The middle one of the runs counts.
"""

import re
import statistics
import sys
from pathlib import Path


def read_rows(path):
    """(heading, first column) -> (name of the figure, figure, time or None), in the order of the file."""
    rows, heading, head = {}, "", None
    for line in path.read_text().splitlines():
        if line.startswith("## "):
            heading, head = line, None
        if not line.startswith("| "):
            continue
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if head is None:
            head = cells
            continue
        time = next((i for i, name in enumerate(head) if re.match(r"(\S+, )?(us|ms)(,|$)", name)), None)
        rows[heading, cells[0]] = (head[1], cells[1], None if time is None else cells[time])
    return rows


def middle(runs, key, column):
    """None where a run lacks it."""
    texts = [run[key][column] for run in runs if key in run]
    values = [float(found[0]) for text in texts if text and (found := re.match(r"[-+]?[\d.]+", text))]
    return statistics.median(values) if len(values) == len(runs) else None


def text_of(value):
    return "-" if value is None else f"{value:.2f}"


def main(commit, files):
    cut = files.index("--")
    other, own = ([read_rows(Path(file)) for file in part] for part in (files[:cut], files[cut + 1 :]))
    last = ""
    for key, (figure, _, _) in own[0].items():
        if key[0] != last:
            last = key[0]
            print(f"\n{last}\n\n| | {figure} at {commit} | here | us or ms at {commit} | here | here/{commit} |")
            print("|---|---|---|---|---|---|")
        cells = [middle(runs, key, column) for column in (1, 2) for runs in (other, own)]
        ratio = cells[3] / cells[2] if cells[2] and cells[3] is not None else None
        print(f"| {key[1]} | " + " | ".join(text_of(value) for value in [*cells, ratio]) + " |")


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2:])
