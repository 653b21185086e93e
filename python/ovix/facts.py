"""What is said of sources, frames and measurements, as plain values."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any

import numpy as np
import numpy.typing as npt

#: The bits of the status byte that stands beside each converted pixel. A good one has none. The bits 8 and 16 mean one
#: thing: the pixel does not count in statistics.
STATUS_FLAGS = {
    "outside_calibration": 1,
    "underflow": 2,
    "overflow": 4,
    "excluded_8": 8,
    "excluded_16": 16,
    "no_data": 32,
}

_NO_TIME = np.iinfo(np.int64).min
_NANOSECONDS = np.iinfo(np.int64).max // 100


def times_of(ticks: npt.NDArray[np.int64]) -> npt.NDArray[np.datetime64]:
    """Times of units of 100 ns since 1970 (UTC); NaT for frames that carry none.

    In nanoseconds, as everybody has them, where all are within the years 1678 to 2262; else in microseconds.
    """
    there = ticks != _NO_TIME
    fine = bool(np.all(np.abs(ticks[there]) < _NANOSECONDS))
    whole = np.where(there, ticks, 0)
    times = (whole * 100).view("M8[ns]") if fine else (whole // 10).view("M8[us]")
    times[~there] = np.datetime64("NaT")
    return times


def time_of(ticks: int) -> np.datetime64 | None:
    """The same for one time; None for none."""
    if ticks == _NO_TIME:
        return None
    time: np.datetime64 = times_of(np.array([ticks]))[0]
    return time


@dataclass(frozen=True)
class Finding:
    """Something that a file is worth knowing for: a "note", a "doubt" or a "damage"."""

    weight: str
    what: str
    frame: int | None
    block: str | None
    offset: int | None
    expected: str
    found: str


@dataclass(frozen=True)
class Parameter:
    """A value that went into a measurement.

    `unit` is empty for a share of 1; `origin` is who said it: "frame", "file", "default", "caller" or "computed".
    """

    key: str
    name: str
    unit: str
    value: float
    origin: str


def parameters_of(dicts: list[dict[str, Any]]) -> dict[str, Parameter]:
    return {one["key"]: Parameter(**one) for one in dicts}


@dataclass(frozen=True)
class Info:
    """What a source says of itself, without a look at its pixels.

    `kind` is "recording", "dump" or "counts"; `frames` is None, and `frame_size` in bytes 0, where they are not known
    or differ; `recorded` is the time that a recording names (UTC).
    """

    path: str
    kind: str
    camera: str | None
    texts: tuple[str, ...]
    recorded: np.datetime64 | None
    pixel_type: str
    decoder: str
    width: int
    height: int
    frames: int | None
    frame_size: int
    compressed: bool
