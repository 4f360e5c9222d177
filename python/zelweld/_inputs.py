"""What a run reads: files, folders, patterns, URLs or arrays, as items that travel to a worker."""

import hashlib
import os
from collections.abc import Iterable, Iterator
from typing import Any, TypeAlias

import numpy as np
import numpy.typing as npt

from . import _core

# (name, source, starts_sequence, is_video). The source is None where the worker reads the name itself, an array, or a
# text that says why there is no image.
Item: TypeAlias = tuple[str, Any, bool, bool]
Frames: TypeAlias = str | os.PathLike[str] | Iterable[str | os.PathLike[str] | npt.NDArray[np.uint8]]


def is_url(name: str) -> bool:
    return "://" in name


def items_of(frames: Frames) -> list[Item]:
    """Raises ValueError where there is nothing to read."""
    given: list[Any] = [frames] if isinstance(frames, (str, os.PathLike)) else list(frames)
    if not given:
        raise ValueError("frames: there are none")
    if all(isinstance(frame, (str, os.PathLike)) for frame in given):
        return _named([os.fspath(name) for name in given])
    if not all(isinstance(frame, np.ndarray) for frame in given):
        raise TypeError("frames: must be names of files and folders, or arrays")
    return [(f"frame {n}", frame, n == 0, False) for n, frame in enumerate(given)]


def _named(names: list[str]) -> list[Item]:
    if not any(is_url(name) for name in names):
        return list(_core.list_inputs(names))
    urls = [found for name in names for found in _expanded(name)]
    return [(url, None, n == 0, False) for n, url in enumerate(urls)]


def _expanded(url: str) -> list[str]:
    """A URL, or those that fit a pattern with a star."""
    if "*" not in url:
        return [url]
    files, paths = _fsspec().core.url_to_fs(url)
    found = [files.unstrip_protocol(path) for path in files.glob(paths)]
    if not found:
        raise ValueError(f"{url}: no file fits this pattern")
    return _core.sort_names(found)


def _fsspec() -> Any:
    try:
        import fsspec  # type: ignore[import]
    except ImportError:
        raise ValueError("frames: URLs need the package fsspec (Debian: python3-fsspec)") from None
    return fsspec


def fetched(items: Iterable[Item]) -> Iterator[Item]:
    """The items with what is behind a URL in place of it."""
    for name, source, starts, is_video in items:
        if source is None and is_url(name):
            try:
                with _fsspec().open(name, "rb") as file:
                    source = file.read()
            except OSError as error:
                source = " ".join(f"{name}: cannot be read: {error}".split())
        yield name, source, starts, is_video


def fingerprint(items: Iterable[Item]) -> str:
    """Another one where other frames would be read: names, sizes and times of files, pixels of arrays."""
    digest = hashlib.sha256()
    for name, source, starts, _ in items:
        digest.update(f"{name}\0{starts}\0".encode())
        if isinstance(source, np.ndarray):
            digest.update(f"{source.shape}".encode() + np.ascontiguousarray(source).tobytes())
        elif source is None and not is_url(name):
            about = os.stat(name)
            digest.update(f"{about.st_size} {about.st_mtime_ns}".encode())
    return digest.hexdigest()
