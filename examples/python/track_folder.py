"""Tracks a folder of frames, prints a table and draws where the seam goes.

    python3 examples/python/track_folder.py [FOLDER [JOINT [PLOT]]]

Without a folder it draws frames of its own; the plot is seam.png. After `make python` it finds the module in build/.
"""

import sys
from collections.abc import Sequence
from pathlib import Path

import numpy as np
import numpy.typing as npt

sys.path.append(str(Path(__file__).resolve().parents[2] / "build" / "python"))

import zelweld  # noqa: E402


def print_table(table: npt.NDArray[np.void], rows: int = 12) -> None:
    names = ["frame", "x", "y", "confidence", "gap_px", "width_px"]
    print(f"{'state':>6}" + "".join(f"{name:>12}" for name in names))
    for row in table[:rows]:
        state = zelweld.SeamState(row["state"]).name.lower()
        print(f"{state:>6}" + "".join(f"{row[name]:12.2f}" for name in names))
    found = np.mean(table["state"] == zelweld.SeamState.FOUND)
    print(f"{len(table)} frames, {100 * found:.1f} % found, {np.median(table['ms']):.2f} ms a frame")


def draw(table: npt.NDArray[np.void], plot: str) -> None:
    try:
        from matplotlib.figure import Figure  # type: ignore[import]
    except ImportError:
        print("no plot: matplotlib is not installed (Debian: python3-matplotlib)")
        return
    figure = Figure(figsize=(8, 5), layout="constrained")
    where, gap = figure.subplots(2, sharex=True)
    for name in ("x", "y"):
        where.plot(table["frame"], table[name], label=f"{name}, px")
    gap.plot(table["frame"], table["gap_px"], label="gap, px")
    for axes in (where, gap):
        axes.legend()
    gap.set_xlabel("frame")
    figure.savefig(plot)
    print(f"plot: {plot}")


def main(words: Sequence[str]) -> None:
    folder, joint, plot = [*words, *["", "gap", "seam.png"][len(words) :]]
    frames = folder or [frame for frame, _ in zelweld.simulate(joint, "noisy", seed=7, frames=120)]
    table = zelweld.track(frames, zelweld.Job(joint))
    print_table(table)
    draw(table, plot)


if __name__ == "__main__":
    main(sys.argv[1:4])
