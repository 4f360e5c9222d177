"""What the module adds to the library: arrays in and out, names, errors, lifetimes, threads."""

import gc
import json
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pytest
import zelweld


def drawn(joint="gap", level="noisy", seed=7, frames=6):
    return [frame for frame, _ in zelweld.simulate(joint, level, seed, frames)]


def test_names_and_numbers_are_those_of_the_library():
    joints = {joint["name"].upper(): joint["type"] for joint in zelweld.joints()}
    assert {**joints, "NONE": 3} == {member.name: member.value for member in zelweld.WeldType}
    for joint in zelweld.joints():
        params = zelweld.Params(joint["name"], **{p["name"]: p["default"] for p in joint["parameters"]})
        assert params.as_dict() == {p["name"]: p["default"] for p in joint["parameters"]}
    features = {point.feature for name in ("v", "lap", "corner", "plate", "gap")
                for point in zelweld.Tracker(name).track(drawn(name, "clean")[0]).measurement.points}
    assert features >= {zelweld.Feature.LEFT_SHOULDER, zelweld.Feature.CORNER, zelweld.Feature.LEFT_EDGE,
                        zelweld.Feature.UPPER_CORNER, zelweld.Feature.RIGHT_END}


def test_gives_the_bits_of_the_program(tmp_path):
    folder = tmp_path / "frames"
    zelweld_program = [sys.executable, "-m", "zelweld"]
    simulate = ["simulate", "--type", "gap", "--level", "noisy", "--seed", "7", "--frames", "6", "--out", folder]
    subprocess.run([*zelweld_program, *simulate], check=True)
    track = ["track", folder, "--params", folder / "params.json", "--format", "jsonl"]
    output = subprocess.run([*zelweld_program, *track], check=True, capture_output=True).stdout
    rows = [json.loads(line) for line in output.splitlines()]
    params = json.loads((folder / "params.json").read_text())
    joint, position = params.pop("weldType"), params.pop("weldPosType")
    tracker = zelweld.Tracker(joint, position, **params)
    seams = [tracker.track(frame) for frame in drawn()]
    assert [seam.state is zelweld.SeamState.FOUND for seam in seams] == [row["found"] for row in rows]
    assert [[round(c, 3) for c in seam.pos] for seam in seams] == [[row["x"], row["y"]] for row in rows]


def test_reads_frames_where_they_lie():
    frame = drawn()[0]
    params = zelweld.Params("gap")
    expected = zelweld.detect(frame, params)
    assert expected.is_found
    rows = zelweld.detect(np.vstack([frame, frame])[: len(frame)], params)
    columns = zelweld.detect(np.hstack([frame, frame])[:, : frame.shape[1]], params)
    colour = zelweld.detect(np.repeat(frame[:, :, None], 3, axis=2), params)
    for line in (rows, columns, colour, zelweld.detect(frame[:, :, None], params)):
        assert line.pos == expected.pos and np.array_equal(line.stripe, expected.stripe)
    assert not zelweld.detect(frame[:0], params).is_found


@pytest.mark.parametrize(
    ("change", "error", "says"),
    [
        (lambda f: f.astype(np.float32), ValueError, "float32 array of shape"),
        (lambda f: f[::-1], ValueError, "flipped"),
        (lambda f: f[:, ::2], ValueError, "strided"),
        (lambda f: f.T, ValueError, "ascontiguousarray"),
        (lambda f: np.broadcast_to(f[0], f.shape), ValueError, "strided"),
        (lambda f: np.stack([f, f], axis=2), ValueError, "(H, W, 3)"),
        (lambda f: f.tolist(), TypeError, "a list; expected uint8"),
    ],
)
def test_refuses_other_frames_in_one_line(change, error, says):
    with pytest.raises(error, match="^frame: ") as raised:
        zelweld.Tracker("gap").track(change(drawn()[0]))
    assert says in str(raised.value) and "\n" not in str(raised.value)


@pytest.mark.parametrize(
    ("settings", "error", "says"),
    [
        ({"joint": "seam"}, ValueError, "joint: 'seam' is none; there are gap, lap"),
        ({"joint": "gap", "position": "upper"}, ValueError, "buttGap knows no position 'upper': use centre, left, right"),
        ({"joint": "gap", "min_gap_px": 0}, ValueError, "min_gap_px: minGapPx (dPara8) must be 2 to 100000, not 0"),
        ({"joint": "gap", "min_gap_px": "wide"}, ValueError, "minGapPx (dPara8) must be 2 to 100000, not wide"),
        ({"joint": "gap", "min_step_px": 3}, TypeError, "min_step_px: no setting of a gap; there are line_tol"),
        ({"joint": "gap", "hold_frames": "long"}, ValueError, "tracker.holdFrames must be a whole number from 0 upwards"),
        ({"joint": "gap", "extraction": "best"}, ValueError, "tracker.extraction must be one of edgePairs, ridge, automatic"),
    ],
)
def test_names_the_setting_that_is_wrong(settings, error, says):
    with pytest.raises(error) as raised:
        zelweld.Tracker(**settings)
    assert says in str(raised.value)


def test_takes_settings_by_either_name_and_ranges_as_pairs():
    params = zelweld.Params("corner", dPara2=7, left_flank_deg=(5, 30), right_flank_deg_min=-60, allows_gap=False)
    values = params.as_dict()
    assert (values["flank_tolerance_px"], values["left_flank_deg_min"], values["left_flank_deg_max"]) == (7, 5, 30)
    assert (values["right_flank_deg_min"], values["allows_gap"]) == (-60, 0)


def test_arrays_outlive_tracker_and_frame():
    tracker = zelweld.Tracker("gap", keep_trace=True)
    seam = tracker.track(drawn()[0])
    stripe, trace, points = seam.stripe, seam.trace, seam.measurement.points
    before = stripe.copy()
    del tracker, seam
    gc.collect()
    drawn("lap")
    assert np.array_equal(stripe, before) and not stripe.flags.writeable
    assert trace.sentence.startswith("seam at") and trace.checks[0].name and points[0].sigma_px >= 0


def test_threads_share_the_interpreter_and_even_a_tracker():
    frames = drawn(frames=12)

    def follow(_):
        tracker = zelweld.Tracker("gap")
        return [tracker.track(frame).pos for frame in frames]

    with ThreadPoolExecutor(4) as pool:
        alone, *others = pool.map(follow, range(4))
        assert all(other == alone for other in others)
        shared = zelweld.Tracker("gap")
        assert all(seam.state is zelweld.SeamState.FOUND for seam in pool.map(shared.track, frames))


def test_recognises_and_measures():
    frame, truth = next(zelweld.simulate("v_groove"))
    assert zelweld.recognise(frame)[0][0] is zelweld.WeldType.V_GROOVE
    assert zelweld.recognise(np.zeros((480, 640), np.uint8)) == []
    params = zelweld.Params(zelweld.WeldType.V_GROOVE)
    line = zelweld.detect(frame, params)
    measured = zelweld.measure(line, params)
    assert measured.is_valid and measured.weld_type is zelweld.WeldType.V_GROOVE
    assert np.hypot(line.pos[0] - truth[0], line.pos[1] - truth[1]) < 1
    assert measured.width_px > measured.gap_px >= 0 and np.isnan(measured.left_radius_px)
