"""A progress bar on a terminal: tqdm's where it is there."""

import sys
from typing import Any


class Progress:
    """Counts frames; `total` None: it is not known."""

    def __init__(self, total: int | None, is_wanted: bool) -> None:
        self._bar: Any = None
        self._plain = False
        self._done = 0
        self._total = total
        if not is_wanted or not sys.stderr.isatty():
            return
        try:
            from tqdm import tqdm  # type: ignore[import]

            self._bar = tqdm(total=total, unit=" frames")
        except ImportError:
            self._plain = True

    def add(self, frames: int) -> None:
        self._done += frames
        if self._bar is not None:
            self._bar.update(frames)
        elif self._plain:
            sys.stderr.write(f"\r{self._done}" + (f"/{self._total}" if self._total else "") + " frames")
            sys.stderr.flush()

    def close(self) -> None:
        if self._bar is not None:
            self._bar.close()
        elif self._plain:
            sys.stderr.write("\n")
