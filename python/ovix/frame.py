"""One frame: as it lies in its source, and measured."""

from __future__ import annotations

from typing import Any

import numpy as np
import numpy.typing as npt

from . import _core
from .facts import Parameter, parameters_of, time_of
from .opened import Opened

Floats = npt.NDArray[np.float32]
Bytes = npt.NDArray[np.uint8]

#: Under- and overflow, excluded, no data. A value outside of the calibrated range is kept.
MASKED_FLAGS = 2 | 4 | 8 | 16 | 32


def masked(values: Floats, status: Bytes, flags: int) -> np.ma.MaskedArray[Any, np.dtype[np.float32]]:
    return np.ma.MaskedArray(values, mask=(status & flags) != 0)  # type: ignore[no-untyped-call]


class Measured:
    """A frame that was measured: NumPy takes it for its `values`.

    `values` are float32 of shape (height, width) in `unit`; `status` one byte a pixel, of `ovix.STATUS_FLAGS`. Both are
    the caller's to keep and to write to.
    """

    def __init__(self, values: Floats, status: Bytes, facts: _core.Facts, unit: str) -> None:
        self.values = values
        self.status = status
        self.unit = unit
        self._facts = facts

    @property
    def number(self) -> int:
        """In its source, from 0."""
        return self._facts.number

    @property
    def quantity(self) -> str:
        """What was measured, and by which calibration: "temperature (factory)"."""
        return self._facts.unit

    @property
    def time(self) -> np.datetime64 | None:
        """When it was taken, in UTC; None where the frame does not say it."""
        return time_of(self._facts.ticks)

    @property
    def year_assumed(self) -> bool:
        """The frame names day and time of day alone; the year is that of this machine's clock."""
        return self._facts.year_assumed

    @property
    def counter(self) -> int | None:
        """The camera's frame counter; None where the frame does not say it."""
        return self._facts.counter

    @property
    def preset(self) -> int | None:
        """The camera's preset; None where the frame does not say it, and that of preset 0 serves then."""
        return self._facts.preset

    @property
    def merged(self) -> list[int]:
        """The frames of which this one is made, where they were merged."""
        return self._facts.merged

    @property
    def parameters(self) -> dict[str, Parameter]:
        """The scene values that were used, by key, each with its unit and who said it; none where none are."""
        return parameters_of(self._facts.parameters)

    def masked(self, flags: int = MASKED_FLAGS) -> np.ma.MaskedArray[Any, np.dtype[np.float32]]:
        """The values, without those whose status has one of the flags."""
        return masked(self.values, self.status, flags)

    def __array__(self, dtype: npt.DTypeLike = None) -> npt.NDArray[Any]:
        return np.asarray(self.values, dtype)

    def __repr__(self) -> str:
        height, width = self.values.shape
        return f"<ovix.Measured frame {self.number}: {self.quantity} in {self.unit}, {width} x {height}>"


class Frame:
    """One frame of a source by its number: nothing is read before it is asked for, and pixels are not kept.

    NumPy takes it for its `counts`.
    """

    def __init__(self, opened: Opened, number: int) -> None:
        self._opened = opened
        self._facts: _core.Facts | None = None
        self.number = number

    @property
    def counts(self) -> npt.NDArray[Any]:
        """The pixels as recorded, before any correction: a new uint16 array of shape (height, width), or uint8 of
        shape (height, width, 3) for colours.

        Raises `FormatError` for a frame that would not do.
        """
        out = self._opened.room()
        self._opened.source.counts(np.array([self.number], np.uint64), out, 1)
        return out

    @property
    def raw(self) -> bytes:
        """All bytes of the frame as they lie in the file."""
        return self._opened.source.raw(self.number)

    def measure(self, quantity: str | None = None, scale: str = "C") -> Measured:
        """Measures the frame.

        `quantity` is "counts" (corrected, where there are tables), "signal", "radiance", "temperature", or a channel of
        colours ("red", "green", "blue", "average"); None is temperature where the source gives it, else what it stores.
        `scale` of temperatures is "C", "F", "K" or "R".

        Raises `ValueError` for a quantity that the source cannot give, `FormatError` for a frame that would not do.
        """
        measurement = self._opened.measurement(quantity, scale)
        shape = (self._opened.source.height, self._opened.source.width)
        values, status = np.empty(shape, np.float32), np.empty(shape, np.uint8)
        self._facts = measurement.measure(self.number, values, status)
        return Measured(values, status, self._facts, measurement.symbol or "")

    def _into(self, quantity: str, scale: str, out: Floats | None, status: Bytes | None) -> Floats:
        measurement = self._opened.measurement(quantity, scale)
        if out is None:
            out = np.empty((self._opened.source.height, self._opened.source.width), np.float32)
        self._facts = measurement.measure(self.number, out, status)
        return out

    def temperature(self, scale: str = "C", out: Floats | None = None, status: Bytes | None = None) -> Floats:
        """Temperatures, float32 of shape (height, width), in °C, °F, K or °R by `scale` "C", "F", "K" or "R".

        With `out`, they go there and nothing is allocated; with `status`, the status bytes go there. Both are arrays in
        C order of just this shape. Source: docs/radiometry.md. Errors as of `measure`.
        """
        return self._into("temperature", scale, out, status)

    def radiance(self, out: Floats | None = None, status: Bytes | None = None) -> Floats:
        """Radiances in W/(cm² sr), in the band of the calibration; else as `temperature`."""
        return self._into("radiance", "C", out, status)

    @property
    def status(self) -> Bytes:
        """The status bytes of the frame as `measure()` gives them: a sum of `ovix.STATUS_FLAGS` for each pixel."""
        status = np.empty((self._opened.source.height, self._opened.source.width), np.uint8)
        self._facts = self._opened.measurement(None, "C").measure(self.number, None, status)
        return status

    def masked(
        self, quantity: str | None = None, scale: str = "C", flags: int = MASKED_FLAGS
    ) -> np.ma.MaskedArray[Any, np.dtype[np.float32]]:
        """The values of `measure`, without those whose status has one of the flags."""
        return self.measure(quantity, scale).masked(flags)

    def _says(self) -> tuple[int, int, int]:
        if self._facts is not None:
            counter, preset = self._facts.counter, self._facts.preset
            return self._facts.ticks, -1 if counter is None else counter, -1 if preset is None else preset
        ticks, counters, presets = self._opened.source.facts(np.array([self.number], np.uint64), 1)
        return int(ticks[0]), int(counters[0]), int(presets[0])

    @property
    def time(self) -> np.datetime64 | None:
        """When it was taken, in UTC; None where the frame does not say it."""
        return time_of(self._says()[0])

    @property
    def counter(self) -> int | None:
        """The camera's frame counter; None where the frame does not say it."""
        counter = self._says()[1]
        return None if counter < 0 else counter

    @property
    def preset(self) -> int | None:
        """The camera's preset; None where the frame does not say it."""
        preset = self._says()[2]
        return None if preset < 0 else preset

    @property
    def parameters(self) -> dict[str, Parameter]:
        """The scene values of the measurement that was made last, or else of `measure()`."""
        if self._facts is None:
            self._facts = self._opened.measurement(None, "C").measure(self.number, None, None)
        return parameters_of(self._facts.parameters)

    def __array__(self, dtype: npt.DTypeLike = None) -> npt.NDArray[Any]:
        return np.asarray(self.counts, dtype)

    def __reduce__(self) -> tuple[Any, ...]:
        return frame_again, (*self._opened.again(), self.number)

    def __repr__(self) -> str:
        return f"<ovix.Frame {self.number} of {self._opened.path}>"


def frame_again(path: str, source: dict[str, Any], measuring: dict[str, Any], number: int) -> Frame:
    return Frame(Opened(path, source, measuring), number)
