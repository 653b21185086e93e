"""What many recordings say without their pixels, read once and in parallel."""

from __future__ import annotations

import glob
import os
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from typing import Any, Iterable

import numpy as np
import numpy.typing as npt

from .recording import open

Paths = str | os.PathLike[str] | Iterable[str | os.PathLike[str]]


@dataclass(frozen=True)
class Headers:
    """One recording of an archive."""

    path: str
    frames: int
    width: int
    height: int
    pixel_type: str
    units: tuple[str, ...]
    time: npt.NDArray[np.datetime64]
    preset: npt.NDArray[np.int16]
    counter: npt.NDArray[np.int64]


def expand(paths: Paths) -> list[str]:
    """Files by name or by pattern, each once, in the order of their names. Raises `FileNotFoundError`."""
    given = [paths] if isinstance(paths, (str, os.PathLike)) else list(paths)
    found: set[str] = set()
    for one in given:
        text = os.fspath(one)
        files = glob.glob(text) if glob.has_magic(text) and not os.path.exists(text) else [text]
        if not files:
            raise FileNotFoundError(2, "no file is named so", text)
        found.update(files)
    if not found:
        raise FileNotFoundError(2, "no files are given")
    return sorted(found)


def read_one(path: str, how: dict[str, Any]) -> Headers:
    with open(path, **how) as recording:
        time, counter, preset = recording.facts(threads=1)
        info = recording.info
        return Headers(
            path=path,
            frames=len(recording),
            width=info.width,
            height=info.height,
            pixel_type=info.pixel_type,
            units=tuple(recording.units),
            time=time,
            preset=preset,
            counter=counter,
        )


def read_all(paths: Paths, threads: int, how: dict[str, Any]) -> list[Headers]:
    """In the order of time where all frames carry one, else of names. Raises `ValueError` for one that differs from the
    first in size or pixel type."""
    with ThreadPoolExecutor(threads or os.cpu_count() or 1) as pool:
        read = list(pool.map(lambda path: read_one(path, how), expand(paths)))
    first = read[0]
    for one in read:
        if (one.width, one.height, one.pixel_type) != (first.width, first.height, first.pixel_type):
            raise ValueError(
                f"{one.path}: {one.width} x {one.height}, {one.pixel_type}; expected {first.width} x {first.height}, "
                f"{first.pixel_type}, as in {first.path}"
            )
    if has_times(read):
        read.sort(key=lambda one: (one.time[0], one.path))
    return read


def has_times(headers: list[Headers]) -> bool:
    return not any(np.any(np.isnat(one.time)) for one in headers)
