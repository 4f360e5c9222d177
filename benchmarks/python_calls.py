"""What a call from Python adds to the tracker's own time, and how many frames a second processes follow.

    PYTHONPATH=build/python python3 benchmarks/python_calls.py
"""

import resource
import subprocess
import sys
import tempfile
import time

import numpy as np
import zelweld
from zelweld import _core

CALLS = 200
FRAMES = 400


def overhead() -> None:
    frames = [frame for frame, _ in zelweld.simulate("gap", "noisy", seed=7, frames=CALLS)]
    tracker = zelweld.Tracker("gap", keep_trace=True)
    assert sum(tracker.track(frame).state is zelweld.SeamState.FOUND for frame in frames) > 0.9 * CALLS
    called, inside = [], []
    for frame in frames:
        begun = time.perf_counter()
        seam = tracker.track(frame)
        seam.state, seam.pos, seam.stripe
        called.append(1e6 * (time.perf_counter() - begun))
        inside.append(seam.trace.total_us)
    added = np.array(called) - inside
    print("| call | median, us | in the tracker, us | added, us | added, 95 % below, us |")
    print("|---|---|---|---|---|")
    print(f"| `tracker.track(frame)`, state, pos, stripe | {np.median(called):.0f} | {np.median(inside):.0f} | "
          f"{np.median(added):.1f} | {np.percentile(added, 95):.1f} |\n")


def throughput(folder: str) -> None:
    words = ["--type", "gap", "--level", "noisy", "--drift", "0.3,0.1", "--frames", str(FRAMES), "--out", folder]
    subprocess.run([sys.executable, "-m", "zelweld", "simulate", *words], check=True, capture_output=True)

    def cpu() -> float:
        return sum(sum(resource.getrusage(who)[:2]) for who in (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN))

    def row(name: str, call) -> None:
        begun, used = time.perf_counter(), cpu()
        call()
        print(f"| {name} | {FRAMES / (time.perf_counter() - begun):.0f} | {1e3 * (cpu() - used) / FRAMES:.1f} |")

    tables = []
    print("| | frames a second | processor ms a frame |")
    print("|---|---|---|")
    for workers in (1, 2):
        how = {"workers": workers, "shard_frames": 200, "progress": False}
        row(f"{workers} worker{'s'[: workers - 1]}", lambda: tables.append(zelweld.track(folder, "gap", **how)))
    assert all(np.array_equal(tables[0][c], tables[1][c], equal_nan=True) for c in ("x", "y", "gap_px"))
    row("decoding alone", lambda: [_core.read_items([item])[0][2] for item in _core.list_inputs([folder])])


if __name__ == "__main__":
    overhead()
    with tempfile.TemporaryDirectory() as scratch:
        throughput(f"{scratch}/frames")
