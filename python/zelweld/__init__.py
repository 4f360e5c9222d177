"""Finds weld seams in images of a laser stripe.

    tracker = zelweld.Tracker("gap", min_gap_px=12)
    seam = tracker.track(frame)          # uint8, (H, W), (H, W, 3) or (H, W, 4)
    if seam.state is zelweld.SeamState.FOUND:
        x, y = seam.pos                  # px

    table = zelweld.track("frames", zelweld.Job.load("gap.json"))   # one row a frame
"""

from collections.abc import Iterator

import numpy as np
import numpy.typing as npt

from ._core import (
    Check,
    Contour,
    Exposure,
    FeaturePoint,
    Job,
    Line,
    Measurement,
    Params,
    Seam,
    Trace,
    Tracker,
    detect,
    draw_frame,
    exposure_advice,
    find_seam_by_contrast,
    joints,
    measure,
    recognise,
)
from ._enums import Feature, Polarity, SeamState, WeldType
from ._runs import Advice, Sweep, advise, sweep, track

__all__ = [
    "Advice",
    "Check",
    "Contour",
    "Exposure",
    "Feature",
    "FeaturePoint",
    "Job",
    "Line",
    "Measurement",
    "Params",
    "Polarity",
    "Seam",
    "SeamState",
    "Sweep",
    "Trace",
    "Tracker",
    "WeldType",
    "advise",
    "detect",
    "draw_frame",
    "exposure_advice",
    "find_seam_by_contrast",
    "joints",
    "measure",
    "recognise",
    "simulate",
    "sweep",
    "track",
]


def simulate(
    joint: str | int, level: str = "clean", seed: int = 1, frames: int = 60
) -> Iterator[tuple[npt.NDArray[np.uint8], tuple[float, float] | None]]:
    """Draws a sequence of frames: each a picture and its true seam point, None where there is none.

    The same seed gives the same frames on every machine.
    """
    for n in range(frames):
        yield draw_frame(joint, level, seed, n)
