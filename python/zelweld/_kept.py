"""A file that takes results as they come, so that a stopped run goes on where it was."""

import json
import os
from base64 import b64decode, b64encode
from collections.abc import Callable
from hashlib import sha256
from typing import Any, TypeAlias

import numpy as np

Result: TypeAlias = dict[str, Any]  # what the runs of _core give


def _plain(value: Any) -> Any:
    return value.tolist() if isinstance(value, np.ndarray) else value


class Kept:
    """JSON lines, one a shard, of several runs perhaps; without a path nothing is kept.

    run  what tells a run from others
    """

    def __init__(self, path: str | os.PathLike[str] | None, run: Callable[[], str]) -> None:
        self.known: dict[int, Result] = {}  # by the first item of the shard
        self._file = None
        if path is None:
            return
        self._run = sha256(run().encode()).hexdigest()
        self._file = open(path, "a+b")
        self._file.seek(0)
        whole = 0
        for line in self._file:
            if not line.endswith(b"\n"):
                break  # stopped while it was written
            whole += len(line)
            self._take(line, os.fspath(path))
        self._file.truncate(whole)

    def _take(self, line: bytes, path: str) -> None:
        try:
            entry = json.loads(line)
            if entry["run"] != self._run:
                return
            result = entry["result"]
            result["after"] = [b64decode(memory) for memory in result["after"]]
            for name, column in result["columns"].items():
                if column and isinstance(column[0], float):
                    result["columns"][name] = np.asarray(column)
            self.known[entry["begin"]] = result
        except (ValueError, KeyError, TypeError):
            raise ValueError(f"out: {path} holds no results of zelweld; choose another file") from None

    def add(self, begin: int, result: Result) -> None:
        if self._file is None:
            return
        columns = {name: _plain(column) for name, column in result["columns"].items()}
        after = [b64encode(memory).decode() for memory in result["after"]]
        kept = {"count": result["count"], "problems": result["problems"], "columns": columns, "after": after}
        entry = {"run": self._run, "begin": begin, "result": kept}
        self._file.write(json.dumps(entry, separators=(",", ":")).encode() + b"\n")
        self._file.flush()

    def close(self) -> None:
        if self._file is not None:
            self._file.close()
