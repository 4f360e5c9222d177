"""Runs of frames on many workers, with the results of one.

A tracker remembers, so a shard begins with frames of the one before: its warm-up. What it remembers behind them must be,
to the byte, what the shard before ended with; else the shard is done again with that memory. So the results are those of
one run whatever the frames show. Where warm-ups seldom do, as with grooves, whose fits begin with those of the frame
before, shards wait for the one before, and only sequences run side by side.
"""

import os
from collections.abc import Callable, Iterator
from concurrent.futures import FIRST_COMPLETED, Executor, Future, ProcessPoolExecutor, wait
from dataclasses import dataclass
from multiprocessing import get_context
from typing import Any, TypeAlias

from ._inputs import Item, fetched, fingerprint
from ._kept import Kept, Result
from ._progress import Progress

Memory: TypeAlias = list[bytes]  # one a tracker; empty: none yet
Tick: TypeAlias = Callable[[int], None] | None
# Follows items, of which the first few are a warm-up, from a memory; told how many frames it has seen.
Task: TypeAlias = Callable[[Iterator[Item], int, Memory, Tick], Result]

SHARD_FRAMES = 500
WARM_UP = 32  # frames
IN_FLIGHT = 256  # shards at once, of an executor that others made


@dataclass(frozen=True)
class How:
    """How a run is spread, shown and kept."""

    executor: Executor | None = None
    workers: int | None = None
    out: str | os.PathLike[str] | None = None
    progress: bool = True
    shard_frames: int = SHARD_FRAMES
    warm_up: int = WARM_UP

    def __post_init__(self) -> None:
        if self.shard_frames < 1 or self.warm_up < 0:
            raise ValueError("shard_frames: must be 1 or more; warm_up: 0 or more")
        if self.workers is not None and self.workers < 1:
            raise ValueError("workers: must be 1 or more")


@dataclass(frozen=True)
class Shard:
    """Items from begin to before end, all of the sequence that begins with the item start."""

    start: int
    begin: int
    end: int

    @property
    def begins_sequence(self) -> bool:
        return self.start == self.begin


def plan(items: list[Item], most: int) -> list[Shard]:
    """Videos stay whole."""
    starts = [n for n, item in enumerate(items) if n == 0 or item[2] or item[3]] + [len(items)]
    return [
        Shard(start, begin, min(begin + most, end))
        for start, end in zip(starts, starts[1:])
        for begin in range(start, end, most)
    ]


def work(task: Task, items: list[Item], warm_up: int, memory: Memory, tick: Tick = None) -> Result:
    """What a worker does."""
    return task(fetched(items), warm_up, memory, tick)


class Here(Executor):
    """Works in this thread, at once."""

    def submit(self, fn: Callable[..., Any], /, *args: Any, **kwargs: Any) -> Future[Any]:
        future: Future[Any] = Future()
        future.set_result(fn(*args, **kwargs))
        return future


class Run:
    """The shards of one run: given out, taken in, compared with the ones before."""

    def __init__(self, task: Task, items: list[Item], shards: list[Shard], warm_up: int) -> None:
        self._task, self._items, self._shards, self._warm_up = task, items, shards, warm_up
        self._results: dict[int, Result] = {}
        self._final: set[int] = set()
        self._pending: dict[Future[Result], int] = {}
        self._waiting = list(range(len(shards)))
        self._compared = 0
        self._missed = 0  # of these, done again

    def spread(self, executor: Executor, most: int, kept: Kept, bar: Progress) -> list[Result]:
        for n in [n for n in self._waiting if self._shards[n].begin in kept.known]:
            self._results[n] = kept.known[self._shards[n].begin]
            self._waiting.remove(n)
            self._final.add(n)
            bar.add(self._results[n]["count"])
        tick = (lambda _: bar.add(1)) if isinstance(executor, Here) else None
        try:
            while len(self._final) < len(self._shards):
                while len(self._pending) < most and (ready := self._next()) is not None:
                    self._waiting.remove(ready)
                    self._submit(executor, ready, tick)
                for n in self._take_in():
                    kept.add(self._shards[n].begin, self._results[n])
                    self._forget(n)
                    if tick is None:
                        bar.add(self._results[n]["count"])
        except BaseException:
            for future in self._pending:
                future.cancel()
            raise
        return [self._results[n] for n in range(len(self._shards))]

    def _goes_on(self, n: int) -> bool:
        """Whether what the shard begins with is known for sure."""
        return self._shards[n].begins_sequence or n - 1 in self._final

    def _next(self) -> int | None:
        waits = 2 * self._missed > max(self._compared, 3)
        return next((n for n in self._waiting if not waits or self._goes_on(n)), None)

    def _submit(self, executor: Executor, n: int, tick: Tick) -> None:
        shard = self._shards[n]
        warm_up = 0 if self._goes_on(n) else min(self._warm_up, shard.begin - shard.start)
        memory = [] if shard.begins_sequence or not self._goes_on(n) else self._results[n - 1]["after"]
        items = self._items[shard.begin - warm_up : shard.end]
        self._pending[executor.submit(work, self._task, items, warm_up, memory, *([tick] if tick else []))] = n

    def _forget(self, n: int) -> None:
        """What trackers remembered where both sides are final: the most of a run's memory."""
        self._results[n].pop("before", None)
        if n - 1 in self._final:
            self._results[n - 1].pop("after", None)

    def _take_in(self) -> list[int]:
        """The shards that became final."""
        final = []
        for future in wait(self._pending, return_when=FIRST_COMPLETED).done:
            n = self._pending.pop(future)
            self._results[n] = future.result()
            while n in self._results and n not in self._final and self._goes_on(n) and self._fits(n):
                self._final.add(n)
                final.append(n)
                n += 1
        return final

    def _fits(self, n: int) -> bool:
        """Compares a shard with the one before, and has it done again where they differ."""
        if self._shards[n].begins_sequence:
            return True
        fits = bool(self._results[n]["before"] == self._results[n - 1]["after"])
        self._compared += 1
        if not fits:
            self._missed += 1
            del self._results[n]
            self._waiting.insert(0, n)
        return fits


def run(task: Task, about: str, items: list[Item], how: How) -> list[Result]:
    """The results of a run's shards, in order; `about` tells tasks apart."""
    workers = how.workers or os.cpu_count() or 1
    shards = plan(items, how.shard_frames)
    is_spread = how.executor is not None or (workers > 1 and len(shards) > 1)
    if not is_spread and how.out is None:
        shards = plan(items, len(items))
    bar = Progress(None if any(item[3] for item in items) else len(items), how.progress)
    kept = Kept(how.out, lambda: f"{about} {how.shard_frames} {fingerprint(items)}")
    whole = Run(task, items, shards, how.warm_up)
    try:
        if how.executor is not None:
            return whole.spread(how.executor, IN_FLIGHT, kept, bar)
        if not is_spread:
            return whole.spread(Here(), 1, kept, bar)
        # Spawned, not forked: a fork of a program with threads may hang.
        with ProcessPoolExecutor(min(workers, len(shards)), mp_context=get_context("spawn")) as pool:
            return whole.spread(pool, 2 * workers, kept, bar)
    finally:
        kept.close()
        bar.close()
