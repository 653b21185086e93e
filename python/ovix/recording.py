"""Recordings, dumps, plain counts and pipes: `ovix.open`, and what it gives."""

from __future__ import annotations

import os
from types import TracebackType
from typing import Any, Iterator, Mapping, overload

import numpy as np
import numpy.typing as npt

from .calibration import Calibration
from .facts import Finding, Info, time_of, times_of
from .frame import Bytes, Floats, Frame
from .opened import Opened
from .series import Frames, Progress, Regions, Series, measure_series

#: The stem of correction tables, or stems by preset.
Correction = str | os.PathLike[str] | Mapping[int, str | os.PathLike[str]]


class Recording:
    """Frames in their order, as an array of shape (frames, height, width) that is read when it is asked for.

    An integer gives a `Frame`, a slice a view that shares the file. NumPy takes it for its `counts`. Any thread may
    read it; pickled, it is what opens it again in another process.
    """

    def __init__(self, opened: Opened, numbers: range | None) -> None:
        self._opened = opened
        self._numbers = numbers

    # As a file.

    def close(self) -> None:
        """Gives the file up, for all views too; arrays live on. Whoever asks then gets `ValueError`."""
        self._opened.close()

    @property
    def closed(self) -> bool:
        """Whether the file was given up."""
        return self._opened.closed

    def __enter__(self) -> Recording:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        self.close()

    @property
    def info(self) -> Info:
        """What the source says of itself. No pixel is touched."""
        source = self._opened.source
        said = source.recorded()
        return Info(
            path=source.name,
            kind=source.kind,
            camera=said["camera"],
            texts=tuple(said["texts"]),
            recorded=time_of(said["ticks"]),
            pixel_type=source.pixel_type,
            decoder=source.decoder,
            width=source.width,
            height=source.height,
            frames=source.count,
            frame_size=source.frame_size,
            compressed=source.compressed,
        )

    @property
    def findings(self) -> list[Finding]:
        """What the file is worth, in the order in which it was found: at opening, and since."""
        return [Finding(**one) for one in self._opened.source.findings()]

    @property
    def units(self) -> list[str]:
        """What the source can give: "counts", "temperature (factory)", ..."""
        return self._opened.measurement("counts" if self._is_counts() else None, "C").offered

    def _is_counts(self) -> bool:
        return self._opened.source.element == "uint16"

    # As a sequence.

    @property
    def numbers(self) -> range:
        """The numbers of the frames in the source. Raises `TypeError` for a stream, which has none."""
        if self._numbers is None:
            raise TypeError(f"{self._opened.path}: frames of a stream come one after the other, by frames()")
        return self._numbers

    def _array(self) -> npt.NDArray[np.uint64]:
        return np.arange(self.numbers.start, self.numbers.stop, self.numbers.step).astype(np.uint64)

    def __len__(self) -> int:
        return len(self.numbers)

    @overload
    def __getitem__(self, key: int) -> Frame: ...
    @overload
    def __getitem__(self, key: slice) -> Recording: ...
    def __getitem__(self, key: int | slice) -> Frame | Recording:
        if isinstance(key, slice):
            return Recording(self._opened, self.numbers[key])
        try:
            return Frame(self._opened, self.numbers[key])
        except IndexError:
            raise IndexError(f"{self._opened.path}: frame {key}, expected one of {len(self)}") from None

    def __iter__(self) -> Iterator[Frame]:
        opened = self._opened
        return (Frame(opened, number) for number in self.numbers)

    @property
    def shape(self) -> tuple[int, ...]:
        """Of `counts`: (frames, height, width), and 3 behind it for colours."""
        return len(self), *self._opened.room().shape

    @property
    def ndim(self) -> int:
        """Of `counts`: 3, and 4 for colours."""
        return len(self.shape)

    @property
    def dtype(self) -> np.dtype[Any]:
        """Of `counts`."""
        return np.dtype(np.uint16 if self._is_counts() else np.uint8)

    def __array__(self, dtype: npt.DTypeLike = None) -> npt.NDArray[Any]:
        return np.asarray(self.counts, dtype)

    # As pixels of all of its frames.

    @property
    def counts(self) -> npt.NDArray[Any]:
        """The pixels of all frames as recorded, of `shape` and `dtype`: a copy."""
        out = self._opened.room(len(self))
        self._opened.source.counts(self._array(), out, 0)
        return out

    def map(self) -> npt.NDArray[np.uint16]:
        """The counts of all frames in the file itself, to be read: nothing is copied.

        A file that becomes shorter while it is mapped ends the process, so this is for files that nobody changes.
        Raises `ValueError` where pixels are compressed, turned or packed, and where frames are not equally far apart.
        """
        place = self._opened.source.pixels()
        if place is None:
            raise ValueError(f"{self._opened.path}: its pixels are no plain counts and cannot be mapped")
        offset, big = place
        extents = self._opened.source.extents(self._array())[:, 0].astype(np.int64)
        if not len(extents):
            return np.empty(self.shape, np.uint16)
        step = int(extents[1] - extents[0]) if len(extents) > 1 else 0
        if np.any(np.diff(extents) != step):
            raise ValueError(f"{self._opened.path}: its frames are not equally far apart and cannot be mapped as one")
        file = np.memmap(self._opened.source.name, np.uint8, "r")
        pixels: npt.NDArray[np.uint16] = np.ndarray(self.shape[1:], ">u2" if big else "<u2", file, int(extents[0]) + offset)
        strides = (step, *pixels.strides)
        mapped: npt.NDArray[np.uint16] = np.lib.stride_tricks.as_strided(pixels, self.shape, strides, writeable=False)
        return mapped

    def measure(
        self,
        quantity: str | None = None,
        scale: str = "C",
        out: Floats | None = None,
        status: Bytes | None = None,
        threads: int = 0,
    ) -> Floats:
        """The values of all frames, float32 of shape (frames, height, width), on that many threads (0: all).

        For more frames than fit into memory there are slices, `frames` and `series`. Arguments and errors are those of
        `Frame.measure`; `out` and `status` take what else would be allocated.
        """
        measurement = self._opened.measurement(quantity, scale)
        if out is None:
            out = np.empty((len(self), self._opened.source.height, self._opened.source.width), np.float32)
        measurement.measure_many(self._array(), out, status, threads)
        return out

    def temperature(
        self, scale: str = "C", out: Floats | None = None, status: Bytes | None = None, threads: int = 0
    ) -> Floats:
        """Temperatures of all frames; see `measure`."""
        return self.measure("temperature", scale, out, status, threads)

    def radiance(self, out: Floats | None = None, status: Bytes | None = None, threads: int = 0) -> Floats:
        """Radiances of all frames in W/(cm² sr); see `measure`."""
        return self.measure("radiance", "C", out, status, threads)

    # What the frames say.

    def facts(
        self, threads: int = 0
    ) -> tuple[npt.NDArray[np.datetime64], npt.NDArray[np.int64], npt.NDArray[np.int16]]:
        """Time (UTC; NaT for none), camera counter and preset (-1 for none) of each frame.

        Pixels are not read where the frames of the family keep them apart.
        """
        ticks, counters, presets = self._opened.source.facts(self._array(), threads)
        return times_of(ticks), counters, presets

    @property
    def time(self) -> npt.NDArray[np.datetime64]:
        """When each frame was taken, in UTC; NaT where it does not say it."""
        return self.facts()[0]

    # One after the other.

    def frames(
        self,
        quantity: str | None = None,
        scale: str = "C",
        threads: int = 0,
        on_fault: str = "stop",
        merge_presets: bool = False,
        progress: Progress = None,
    ) -> Frames:
        """Measured frames in order, on that many threads (0: all), in bounded memory; of a stream as they come.

        `on_fault` is "stop", "skip" or "fill" (with NaN and the status "no data") for frames that would not do;
        `merge_presets` makes one frame of each cycle of presets; `progress` is called with the frames done and their
        number (None where it is not known), and True shows a bar of tqdm where it is there. Ctrl-C ends it between
        two frames. Quantity, scale and errors are those of `Frame.measure`.
        """
        runs = None if self._numbers is None else runs_of(self._numbers)
        measurement = self._opened.measurement(quantity, scale)
        return Frames(measurement, runs, self._numbers, threads, on_fault, merge_presets, progress)

    def series(
        self,
        roi: Regions = None,
        quantity: str | None = None,
        scale: str = "C",
        threads: int = 0,
        on_fault: str = "stop",
        progress: Progress = None,
    ) -> Series:
        """The figures of regions over time.

        `roi` is (x, y, width, height) in pixels, several by name, or None for the whole frame. The rest is that of
        `frames`. Pixels whose status excludes them do not count; a region without any that counts has NaN.
        """
        runs = None if self._numbers is None else runs_of(self._numbers)
        measurement = self._opened.measurement(quantity, scale)
        return measure_series(measurement, runs, roi, threads, on_fault, progress)

    def __reduce__(self) -> tuple[Any, ...]:
        return recording_again, (*self._opened.again(), self.numbers)

    def __repr__(self) -> str:
        if self.closed:
            return f"<ovix.Recording {self._opened.path}, closed>"
        source = self._opened.source
        frames = "a stream" if self._numbers is None else f"{len(self)} frames"
        return f"<ovix.Recording {source.name}: {frames} of {source.width} x {source.height}, {source.pixel_type}>"


def runs_of(numbers: range) -> list[tuple[int, int, int]]:
    """First, last, step: rising."""
    if numbers.step > 0 and len(numbers):
        return [(numbers[0], numbers[-1], numbers.step)]
    return [(number, number, 1) for number in numbers]


def recording_again(path: str, source: dict[str, Any], measuring: dict[str, Any], numbers: range) -> Recording:
    return Recording(Opened(path, source, measuring), numbers)


def open(
    path: str | os.PathLike[str] | int,
    pixel_type: str = "",
    size: tuple[int, int] | None = None,
    *,
    frame_size: int = 0,
    follow: bool = False,
    patience: float = 10.0,
    accept_damage: bool = False,
    calibration: str | None = None,
    user_calibration: Calibration | str | os.PathLike[str] | None = None,
    correction: Correction | None = None,
    correct: bool = True,
    clip: tuple[float, float] | bool | None = None,
    emissivity: float | None = None,
    distance: float | None = None,
    reflected_temp: float | None = None,
    atmosphere_temp: float | None = None,
    atmosphere_trans: float | None = None,
    relative_humidity: float | None = None,
    ext_optics_temp: float | None = None,
    ext_optics_trans: float | None = None,
) -> Recording:
    """Opens a recording by its name alone, a dump of raw frames or a pipe with `pixel_type` and `size` (width, height).

    `path` may be a file, "-" for the standard input, or a descriptor. "counts" and "counts-be" are plain 16-bit pixels,
    "auto" is what the bytes of a dump speak for. `frame_size` is the bytes from one frame to the next, 0 as found. With
    `follow` the file grows: frames come one after the other until nothing came for `patience` seconds.

    What is measured: `calibration` "factory" or "user"; `user_calibration`, or a file of one, in place of the source's;
    `correction`, the stem of correction tables, or stems by preset; `correct=False` leaves counts as recorded; `clip`
    limits corrected counts. Values of the scene take the place of those recorded: temperatures in kelvin, the distance
    in metres, emissivity, transmissions and humidity as shares of 1.

    Raises `FileNotFoundError` and other `OSError`s, `FormatError` for a file that would not do, `ValueError` for
    arguments that go nowhere. Nothing of the frames is read but a few at the ends.
    """
    if isinstance(user_calibration, (str, os.PathLike)):
        user_calibration = Calibration.load(user_calibration)
    stems: list[tuple[int | None, str]] = []
    if isinstance(correction, Mapping):
        stems = [(preset, os.fspath(stem)) for preset, stem in correction.items()]
    elif correction is not None:
        stems = [(None, os.fspath(correction))]
    scene = {
        "emissivity": emissivity,
        "distance": distance,
        "reflected_temp": reflected_temp,
        "atmosphere_temp": atmosphere_temp,
        "atmosphere_trans": atmosphere_trans,
        "relative_humidity": relative_humidity,
        "ext_optics_temp": ext_optics_temp,
        "ext_optics_trans": ext_optics_trans,
    }
    source = {
        "pixel_type": pixel_type,
        "size": size,
        "frame_size": frame_size,
        "follow": follow,
        "patience": patience,
        "accept_damage": accept_damage,
    }
    measuring: dict[str, Any] = {key: value for key, value in scene.items() if value is not None}
    measuring.update(calibration=calibration, user_calibration=user_calibration, clip=clip, correct=correct)
    if stems:
        measuring["correction"] = stems
    opened = Opened(path if isinstance(path, int) else os.fspath(path), source, measuring)
    return Recording(opened, range(opened.source.count or 0) if opened.source.numbered else None)
