"""Runs over many frames: the program's tables, and the same ones however the frames are spread."""

import json
import pickle
import re
import subprocess
import sys
from concurrent.futures import Future, ThreadPoolExecutor
from pathlib import Path

import numpy as np
import pytest
import zelweld


FRAMES = 36


def program(*words):
    run = subprocess.run([sys.executable, "-m", "zelweld", *map(str, words)], capture_output=True, text=True)
    assert run.returncode in (0, 3), run.stderr
    return run.stdout


def frames_in(folder, joint, frames=FRAMES, level="noisy"):
    program("simulate", "--type", joint, "--level", level, "--seed", 5, "--frames", frames, "--drift", "1,0.3", "--size", "640x480", "--out", folder)
    return folder


@pytest.fixture(scope="module")
def gap(tmp_path_factory):
    """Frames of a gap; it is too narrow for the job at the end."""
    return frames_in(tmp_path_factory.mktemp("frames") / "gap", "gap")


@pytest.fixture(scope="module")
def groove(tmp_path_factory):
    return frames_in(tmp_path_factory.mktemp("frames") / "groove", "v-groove")


def same(a, b):
    assert a.dtype.names == b.dtype.names
    return all(np.array_equal(a[c], b[c], equal_nan=a[c].dtype.kind == "f") for c in a.dtype.names if c != "ms")


class Counting(ThreadPoolExecutor):
    """Counts shards, and breaks after so many."""

    def __init__(self, most=10**9):
        super().__init__(2)
        self.most, self.shards = most, 0

    def submit(self, fn, /, *args, **kwargs):
        self.shards += 1
        if self.shards <= self.most:
            return super().submit(fn, *args, **kwargs)
        broken = Future()
        broken.set_exception(RuntimeError("the machine is gone"))
        return broken


def test_a_table_has_the_values_of_the_program(groove, tmp_path):
    broken = tmp_path / "frames"
    broken.mkdir()
    for n, path in enumerate(sorted(groove.glob("*.png"))[:12]):
        (broken / path.name).write_bytes(b"no image" if n == 7 else path.read_bytes())
    job = zelweld.Job("v_groove", hold_frames=2, region=(6, 4, 620, 470))
    job.save(tmp_path / "job.json")
    assert zelweld.Job.load(tmp_path / "job.json") == job == pickle.loads(pickle.dumps(job))
    rows = [json.loads(line) for line in program("track", broken, "--job", tmp_path / "job.json", "--format", "jsonl").splitlines()]
    with pytest.warns(UserWarning, match="1 of 12 frames cannot be read; the first one: .*frame_0007"):
        table = zelweld.track(broken, job)
    snake = lambda name: re.sub(r"([A-Z])", lambda m: "_" + m[1].lower(), name.replace(".", "_"))  # noqa: E731
    assert [zelweld.SeamState(state).name.lower() for state in table["state"]] == [row["state"] for row in rows]
    for n, row in enumerate(rows):
        values = {snake(name): value for name, value in {**row, **row["measured"]}.items()}
        for name in set(table.dtype.names) - {"state", "ms", "file"}:
            value = table[n][name]
            assert values[name] == (None if np.isnan(value) else pytest.approx(value, abs=6e-4)), (n, name)
    assert list(table["file"]) == [row["file"] for row in rows] and np.isfinite(table["width_px"]).sum() > 6


@pytest.mark.parametrize("joint", ["gap", "groove"])
@pytest.mark.parametrize("warm_up", [0, 8])
def test_shards_give_what_one_run_gives(joint, warm_up, request):
    """Warm-ups of a gap do; those of a groove, and none at all, are too short."""
    folder = request.getfixturevalue(joint)
    job = {"gap": "gap", "groove": "v_groove"}[joint]
    inputs = [folder, folder]  # two sequences
    whole = zelweld.track(inputs, job, workers=1)
    with Counting() as pool:
        assert same(zelweld.track(inputs, job, executor=pool, shard_frames=12, warm_up=warm_up), whole)
        assert pool.shards > 6 if warm_up == 0 or joint == "groove" else pool.shards == 6


def test_arrays_are_spread_like_files():
    arrays = [frame for frame, _ in zelweld.simulate("gap", "noisy", 5, 12)]
    with Counting() as pool:
        spread = zelweld.track(arrays, "gap", executor=pool, shard_frames=5)
    assert pool.shards == 3 and same(spread, zelweld.track(iter(arrays), "gap"))


def test_processes_give_what_one_gives(gap):
    assert same(zelweld.track(gap, "gap", workers=2, shard_frames=18), zelweld.track(gap, "gap", workers=1))


def test_a_stopped_run_goes_on(gap, tmp_path):
    whole, out = zelweld.track(gap, "gap"), tmp_path / "results"
    how = {"out": out, "shard_frames": 6}
    with Counting(most=3) as pool, pytest.raises(RuntimeError, match="gone"):
        zelweld.track(gap, "gap", executor=pool, **how)
    lines = out.read_bytes().splitlines(keepends=True)
    out.write_bytes(b"".join(lines) + b'{"run": "torn')
    with Counting() as pool:
        assert same(zelweld.track(gap, "gap", executor=pool, **how), whole)
        assert pool.shards == 6 - len(lines) > 2
    with Counting() as pool:
        assert same(zelweld.track(gap, "gap", executor=pool, **how), whole) and pool.shards == 0
        other = zelweld.track(gap, zelweld.Job("gap", min_gap_px=70), executor=pool, **how)
        assert pool.shards == 6 and not same(other, whole)
    out.write_text("a letter\n")
    with pytest.raises(ValueError, match="holds no results of zelweld"):
        zelweld.track(gap, "gap", **how)


def test_a_sweep_and_its_advice_are_those_of_the_program(gap):
    """Spread or not; the program's own words are the oracle."""
    text = program("sweep", gap, "--type", "gap", "--set", "minGapPx=10:70:15")
    swept = zelweld.sweep(gap, "gap", "min_gap_px", range(10, 71, 15), workers=1)
    with Counting() as pool:
        spread = zelweld.sweep(gap, "gap", "dPara8", range(10, 71, 15), executor=pool, shard_frames=15)
    assert same(spread.rows, swept.rows) and (spread.suggestion, spread.good) == (swept.suggestion, swept.good)
    shares = [float(share) for share in re.findall(r"[#.]{20} ([\d.]+) %", text)]
    assert shares == [round(100 * share, 1) for share in swept.rows["found_share"]] and len(set(shares)) > 1
    found = re.search(r"Suggestion: minGapPx=(\S+), .* good range (\S+) to (\S+)\.", text)
    assert found and [float(word) for word in found.groups()] == [swept.suggestion, *swept.good]

    lost = zelweld.Job("gap", min_gap_px=70)
    words = program("advise", gap, "--type", "gap", "--set", "minGapPx=70")
    advice = zelweld.advise(gap, lost, workers=1)
    with Counting() as pool:
        assert zelweld.advise(gap, lost, executor=pool, shard_frames=15) == advice
    assert f"Advice: {' '.join(advice.changes)}\n" in words and f"tried {advice.tried} settings" in words
    assert f"{advice.before['found']} of {FRAMES}" in words and f"{advice.after['found']} of {FRAMES}" in words
    after = zelweld.track(gap, advice.job)
    assert (after["state"] == zelweld.SeamState.FOUND).sum() == advice.after["found"]


def test_reads_urls(gap):
    pytest.importorskip("fsspec")
    table = zelweld.track(f"file://{gap}/*.png", "gap", workers=1)
    assert same(table[["x", "y", "frame"]], zelweld.track(gap, "gap", workers=1)[["x", "y", "frame"]])
    assert table["file"][0].startswith("file://")
    with pytest.warns(UserWarning, match="1 of 2 frames cannot be read; the first one: file:///nowhere.png"):
        zelweld.track([f"file://{gap}/frame_0000.png", "file:///nowhere.png"], "gap")


@pytest.mark.parametrize(
    ("call", "error", "says"),
    [
        (lambda: zelweld.track("nowhere", "gap"), ValueError, "nowhere: no such file"),
        (lambda: zelweld.track([], "gap"), ValueError, "frames: there are none"),
        (lambda: zelweld.track([1], "gap"), TypeError, "frames: must be names of files and folders, or arrays"),
        (lambda: zelweld.track([np.zeros((9, 9))], "gap"), ValueError, "frame: float64 array"),
        (lambda: zelweld.track([np.zeros((9, 9), np.uint8)], 3), TypeError, "job: must be a zelweld.Job"),
        (lambda: zelweld.track("x", "gap", warm_up=-1), ValueError, "warm_up: 0 or more"),
        (lambda: zelweld.Job.load("nowhere"), ValueError, "nowhere: no such file"),
        (lambda: zelweld.Job.from_text("{"), ValueError, "line 1"),
        (lambda: zelweld.Job("gap", region=(1, 2)), ValueError, r"region: must be \(x, y, width, height\), not \(1, 2\)"),
        (lambda: zelweld.Job("gap", rotation_deg=45), ValueError, "image.rotationDeg"),
        (lambda: zelweld.Job("gap", contrast={"band": 3}), TypeError, "contrast: no setting 'band'"),
        (lambda: zelweld.sweep([np.zeros((9, 9), np.uint8)], "gap", "min_gap_px", [3, 2]), ValueError, "ascending order"),
        (lambda: zelweld.sweep([np.zeros((9, 9), np.uint8)], "gap", "gap_px", [2, 3]), ValueError, "gap_px"),
        (lambda: zelweld.advise([np.zeros((9, 9), np.uint8)], "presence"), ValueError, "no seam point"),
        (lambda: zelweld.find_seam_by_contrast(np.zeros((9, 9), np.uint8), polarity="grey"), ValueError, "polarity"),
        (lambda: zelweld.exposure_advice(np.zeros((0, 9), np.uint8)), ValueError, "frame: has no pixels"),
    ],
)
def test_says_in_one_line_what_is_wrong(call, error, says):
    with pytest.raises(error, match=says) as raised:
        call()
    assert "\n" not in str(raised.value)


def test_light_of_a_frame():
    dark = np.full((480, 640), 120, np.uint8)
    dark[:, 318:323] = 40
    seam = zelweld.find_seam_by_contrast(dark, polarity=zelweld.Polarity.DARK, rough_pos=(320, 240))
    pts, widths = seam.pts, seam.widths_px
    assert seam.polarity is zelweld.Polarity.DARK and abs(seam.width_px - 5) < 1 and seam.contrast < 0
    del seam
    assert np.abs(pts[:, 0] - 320).max() < 1 and len(widths) == len(pts) and not pts.flags.writeable
    bright = zelweld.exposure_advice(np.full((480, 640, 4), 255, np.uint8))
    assert bright.factor <= 0.5 and not bright.has_stripe
    frame, _ = next(zelweld.simulate("gap"))
    assert zelweld.exposure_advice(frame).has_stripe


def test_a_job_makes_a_tracker_and_prepares_frames():
    frame, _ = next(zelweld.simulate("gap"))
    job = zelweld.Job("gap", rotation_deg=180, keep_trace=True, max_jump_px=float("inf"))
    turned = job.prepare(frame)
    assert np.array_equal(turned, frame[::-1, ::-1])
    seam = zelweld.Tracker(job).track(turned)
    assert seam.state is zelweld.SeamState.FOUND and seam.trace is not None and job.params.joint == "butt_gap"
    assert seam.pos == tuple(zelweld.track([frame], job)[["x", "y"]][0])
