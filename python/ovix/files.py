"""Recordings as files: written, checked, brought back; and one pixel explained."""

from __future__ import annotations

import os
from dataclasses import dataclass
from typing import Any

from . import _core
from .facts import Finding, Parameter, parameters_of
from .recording import Recording, open, runs_of

Path = str | os.PathLike[str]


@dataclass(frozen=True)
class Verdict:
    """What `verify` found; `good` when nothing of it is damage."""

    good: bool
    findings: list[Finding]


@dataclass(frozen=True)
class Repaired:
    """How many frames are in the new file, and how many frames and blocks would not do."""

    frames: int
    left_out: int
    findings: list[Finding]


@dataclass(frozen=True)
class Step:
    """One pixel's value at a step of its way, with its unit and status byte."""

    name: str
    value: float
    unit: str
    status: int


@dataclass(frozen=True)
class Explanation:
    """The way of one pixel from its count to the last unit that the source can give."""

    preset: int
    steps: list[Step]
    parameters: dict[str, Parameter]
    calibration: str | None
    calibration_values: list[Parameter]


def record(
    source: Recording | Path,
    path: Path,
    *,
    overwrite: bool = False,
    unpacked: bool = False,
    keep_part: bool = False,
    checksums: bool = False,
    **how: Any,
) -> int:
    """Writes the frames of a recording, view or dump to a recording, and answers how many they are.

    `how` is for `ovix.open`: how a path is opened, and scene, correction and calibration that are stored for all
    frames. A `Recording` was opened with them already. `unpacked` says that frames are stored as the camera delivers
    them; `checksums` writes a CRC of each frame to a file beside, against which every reader holds them; `keep_part`
    leaves PATH.part where it does not come to its end. The file appears whole or not at all.

    Raises `FileExistsError` unless `overwrite`, other `OSError`s, `FormatError` for a frame that would not do.
    """
    if not isinstance(source, Recording):
        with open(source, **how) as opened:
            return record(
                opened, path, overwrite=overwrite, unpacked=unpacked, keep_part=keep_part, checksums=checksums
            )
    if how:
        raise TypeError(f"{', '.join(how)}: the recording is open already")
    return _core.record(
        source._opened.source,
        os.fspath(path),
        runs_of(source.numbers),
        source._opened.measuring,
        overwrite,
        unpacked,
        keep_part,
        checksums,
    )


def verify(path: Path) -> Verdict:
    """Holds CRCs, sizes, counts and frames of a recording against each other; reads all of it."""
    good, findings = _core.verify(os.fspath(path))
    return Verdict(good, [Finding(**one) for one in findings])


def repair(source: Path, target: Path, *, overwrite: bool = False, checksums: bool = False) -> Repaired:
    """Writes a whole recording of what is whole in a broken one, bit for bit; says what is left out or made anew.

    Raises `FormatError` when not one frame is to be had.
    """
    frames, left_out, findings = _core.repair(os.fspath(source), os.fspath(target), overwrite, checksums)
    return Repaired(frames, left_out, [Finding(**one) for one in findings])


def explain(source: Recording | Path, frame: int, x: int, y: int, scale: str = "C", **how: Any) -> Explanation:
    """Follows the pixel at column `x` and row `y` of a frame from its count to a temperature.

    `how` is for `ovix.open` where a path is given. Raises `ValueError` for a pixel outside of the frame.
    """
    if not isinstance(source, Recording):
        with open(source, **how) as opened:
            return explain(opened, frame, x, y, scale)
    if how:
        raise TypeError(f"{', '.join(how)}: the recording is open already")
    measuring = {**source._opened.measuring, "scale": scale}
    found = _core.explain(source._opened.source, measuring, source[frame].number, x, y)
    calibration = found["calibration"]
    return Explanation(
        preset=found["preset"],
        steps=[Step(*one) for one in found["steps"]],
        parameters=parameters_of(found["parameters"]),
        calibration=calibration and calibration["model"],
        calibration_values=[Parameter(**one) for one in calibration["values"]] if calibration else [],
    )
