"""What goes wrong with files and frames. All else is an exception of Python's own."""

from __future__ import annotations

from typing import Any


class FormatError(ValueError):
    """Bytes that are not what they should be, or a calibration that is not there: what, and where.

    Attributes: `kind`, a word that stays from version to version ("FrameCut", "PixelsDamaged", "NoCalibration", ...);
    `file` as the caller named it; `frame`, its number from 0; `block` of a recording; `offset` in bytes, in the frame
    where there is one, else in the file; `problem`, `expected`, `found`, `advice` in words. What does not apply is None.
    `str()` is one line of all of them.

    A missing file is `FileNotFoundError`, other trouble with files and the system `OSError`; a wrong argument, and a
    unit that a source cannot give, `ValueError`; a frame beyond the last `IndexError`.
    """

    def __init__(
        self,
        message: str,
        kind: str = "Other",
        file: str | None = None,
        frame: int | None = None,
        block: str | None = None,
        offset: int | None = None,
        problem: str | None = None,
        expected: str | None = None,
        found: str | None = None,
        advice: str | None = None,
    ) -> None:
        super().__init__(message)
        self.kind = kind
        self.file = file
        self.frame = frame
        self.block = block
        self.offset = offset
        self.problem = problem
        self.expected = expected
        self.found = found
        self.advice = advice

    def __reduce__(self) -> tuple[Any, ...]:
        facts = (self.kind, self.file, self.frame, self.block, self.offset)
        return type(self), (*self.args, *facts, self.problem, self.expected, self.found, self.advice)
