"""Runs over many frames: tracked, swept over a parameter, asked for advice."""

import os
import warnings
from collections.abc import Callable, Iterator, Sequence
from concurrent.futures import Executor
from dataclasses import dataclass
from functools import partial
from typing import Any, TypeAlias

import numpy as np
import numpy.typing as npt

from . import _core
from ._core import Job
from ._inputs import Frames, Item, fetched, items_of
from ._kept import Result
from ._shards import SHARD_FRAMES, WARM_UP, How, Memory, Tick, run

Path: TypeAlias = str | os.PathLike[str]


def _job_of(job: Job | str) -> Job:
    if isinstance(job, str):
        return Job(job)
    if not isinstance(job, Job):
        raise TypeError(f"job: must be a zelweld.Job or the name of a joint, not a {type(job).__name__}")
    return job


def _track(job: Job, items: Iterator[Item], warm_up: int, memory: Memory, tick: Tick) -> Result:
    return _core.track_run(job, items, warm_up, memory, tick)


@dataclass(frozen=True)
class _Swept:
    parameter: str
    values: list[float]
    objective: str


def _sweep(job: Job, swept: _Swept, items: Iterator[Item], warm_up: int, memory: Memory, tick: Tick) -> Result:
    return _core.sweep_run(job, swept.parameter, swept.values, swept.objective, items, warm_up, memory, tick)


def _try(jobs: list[Job], items: Iterator[Item], warm_up: int, memory: Memory, tick: Tick) -> Result:
    return _core.trial_run(jobs, items, warm_up, memory, tick)


def _joined(results: list[Result], name: str) -> Any:
    parts = [result["columns"][name] for result in results]
    if isinstance(parts[0], np.ndarray):
        return np.concatenate(parts)
    return [value for part in parts for value in part]


def _tell_problems(results: list[Result]) -> None:
    """Frames that cannot be read show no seam; a run without any other is an error."""
    problems = [problem for result in results for problem in result["problems"]]
    frames = sum(result["count"] for result in results)
    if problems and len(problems) == frames:
        raise ValueError(problems[0])
    if problems:
        text = f"{len(problems)} of {frames} frames cannot be read; the first one: {problems[0]}"
        warnings.warn(text, stacklevel=3)


def track(
    frames: Frames,
    job: Job | str,
    progress: bool = True,
    *,
    executor: Executor | None = None,
    workers: int | None = None,
    out: Path | None = None,
    shard_frames: int = SHARD_FRAMES,
    warm_up: int = WARM_UP,
) -> npt.NDArray[np.void]:
    """Follows the seam through all frames: a structured array with one row a frame.

    frames    files, folders, patterns (frame_%03d.png), videos, URLs that fsspec knows, or uint8 arrays
    job       a Job, or the name of a joint
    executor  any concurrent.futures.Executor; None: processes of this machine, as many as `workers`
    out       a file that takes the results as they come; a stopped run goes on with what it holds

    Columns are those of `zelweld track --format jsonl` in snake_case, not rounded: frame, file, state (SeamState),
    x and y in the prepared image, stored_x and stored_y in the stored one (px, nan without a seam), ... and what is
    measured of the joint; ms is the time of the detection. Results do not depend on executor, shard_frames and
    warm_up: docs/scale.md.
    """
    job = _job_of(job)
    how = How(executor, workers, out, progress, shard_frames, warm_up)
    results = run(partial(_track, job), f"track {job.text}", items_of(frames), how)
    _tell_problems(results)
    columns = {name: _joined(results, name) for name, _, _ in _core.track_columns(job)}
    columns["frame"] = np.arange(len(columns["file"]))
    longest = max(map(len, columns["file"]))
    types = [(name, f"U{longest}" if kind == "U" else kind) for name, _, kind in _core.track_columns(job)]
    table = np.empty(len(columns["file"]), types)
    for name, column in columns.items():
        table[name] = column
    return table


@dataclass(frozen=True)
class Sweep:
    """A parameter over its values, as `zelweld sweep` judges them."""

    parameter: str
    frames: int
    rows: npt.NDArray[np.void]  # one a value: value, found_share, jitter_px, confidence, ... is_good, reason
    suggestion: float | None  # the middle of the widest good range
    good: tuple[float, float] | None  # its ends
    objection: str  # why nothing is suggested


_SWEEP_TYPES = [
    ("value", "f8"), ("found_share", "f8"), ("jitter_px", "f8"), ("confidence", "f8"), ("stripe_end_share", "f8"),
    ("apart_px", "f8"), ("judged", "i8"), ("wrong", "i8"), ("error_px", "f8"), ("longest_loss", "i8"),
    ("is_good", "?"), ("reason", "U64"),
]  # fmt: skip


def sweep(
    frames: Frames,
    job: Job | str,
    parameter: str,
    values: Sequence[float] | npt.NDArray[Any],
    *,
    objective: str = "",
    truth: Path = "",
    point: str = "",
    progress: bool = True,
    executor: Executor | None = None,
    workers: int | None = None,
    out: Path | None = None,
    shard_frames: int = SHARD_FRAMES,
    warm_up: int = WARM_UP,
) -> Sweep:
    """Tracks the same frames with one parameter at each of the values, and judges them as `zelweld sweep` does.

    objective  a measure that is to be steady, in place of the seam point
    truth      CSV table of true seams: file, x, y, ...; point: the labelled point that is the seam
    The rest as for track.
    """
    job = _job_of(job)
    swept = _Swept(parameter, [float(value) for value in values], objective)
    how = How(executor, workers, out, progress, shard_frames, warm_up)
    results = run(partial(_sweep, job, swept), f"{swept} {job.text}", items_of(frames), how)
    _tell_problems(results)
    columns = {name: _joined(results, name) for name in results[0]["columns"]}
    names = [(name, starts) for name, starts in columns.pop("frames")]
    result = _core.sweep_result(job, parameter, swept.values, names, columns, os.fspath(truth), point)
    rows = [tuple(np.nan if row[name] is None else row[name] for name, _ in _SWEEP_TYPES) for row in result.pop("rows")]
    return Sweep(rows=np.array(rows, _SWEEP_TYPES), **result)


@dataclass(frozen=True)
class Advice:
    """The smallest change of setting that finds the lost frames, as `zelweld advise` knows it."""

    frames: int
    tried: int  # settings; 0: every frame is found, there is nothing to advise
    before: dict[str, float | None]  # found, losses, wrong, jitter_px, error_px
    after: dict[str, float | None] | None
    job: Job | None  # with the change; None: no setting does
    changes: list[str]  # as options of the program
    refused: list[str]  # the best of those that do not
    objection: str  # to these
    reasons: list[tuple[str, int, int, str]]  # for losses: reason, frames, the first one, its sentence


def advise(
    frames: Frames,
    job: Job | str,
    *,
    truth: Path = "",
    point: str = "",
    progress: bool = True,
    executor: Executor | None = None,
    workers: int | None = None,
    out: Path | None = None,
    shard_frames: int = SHARD_FRAMES,
    warm_up: int = WARM_UP,
) -> Advice:
    """Tries which change of setting finds the lost frames, on the frames themselves. Arguments as for sweep."""
    job = _job_of(job)
    how = How(executor, workers, out, progress, shard_frames, warm_up)
    items = items_of(frames)
    if any(is_video for *_, is_video in items):
        items = _core.read_items(items)
    readable = _Problems()

    def follow(stretches: list[tuple[int, int]], jobs: list[Job]) -> dict[str, Any]:
        chosen = [
            (*items[n][:2], items[n][2] or n == first, False) for first, last in stretches for n in range(first, last + 1)
        ]
        about = f"try {[each.text for each in jobs]}"
        results = run(partial(_try, jobs), about, chosen, how)
        readable.tell(results)
        return {name: _joined(results, name) for name in results[0]["columns"]}

    def read(place: int) -> Iterator[Item]:
        return fetched([items[place]])

    names = [(name, starts) for name, _, starts, _ in items]
    return Advice(**_core.advice_result(job, names, follow, read, os.fspath(truth), point))


class _Problems:
    """Told once, of the first look at all frames."""

    def __init__(self) -> None:
        self._is_told = False

    def tell(self, results: list[Result]) -> None:
        if not self._is_told:
            _tell_problems(results)
        self._is_told = True
