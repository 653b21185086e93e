"""Many frames one after the other: measured, or as figures of regions over time."""

from __future__ import annotations

from dataclasses import dataclass
from typing import TYPE_CHECKING, Any, Callable, Mapping, Sequence

import numpy as np
import numpy.typing as npt

from . import _core
from .facts import times_of
from .frame import Measured

if TYPE_CHECKING:
    import xarray

Regions = tuple[int, int, int, int] | Mapping[str, tuple[int, int, int, int]] | None
Progress = Callable[[int, int | None], object] | bool | None


class Showing:
    """Calls the function that is given; for True shows a bar of tqdm, where it is there."""

    def __init__(self, progress: Progress) -> None:
        self._call = progress if callable(progress) else None
        self._bar: Any = None
        if progress is True:
            try:
                from tqdm.auto import tqdm
            except ImportError:
                return
            self._bar, self._call = tqdm(unit=" frames"), self._update

    @property
    def call(self) -> Callable[[int, int | None], object] | None:
        return self._call

    def _update(self, done: int, total: int | None) -> None:
        self._bar.total = total
        self._bar.update(done - self._bar.n)

    def close(self) -> None:
        if self._bar is not None:
            self._bar.close()


class Frames:
    """Measured frames in order, for one pass. Leaving a `for` loop early, or `close`, ends the threads."""

    def __init__(
        self,
        measurement: _core.Measurement,
        runs: Sequence[tuple[int, int, int]] | None,
        numbers: range | None,
        threads: int,
        on_fault: str,
        merge_presets: bool,
        progress: Progress,
    ) -> None:
        self._series = _core.Series(measurement, runs, threads, on_fault, merge_presets)
        self._total = None if numbers is None or merge_presets else len(numbers)
        self._showing = Showing(progress)
        self._done = 0

    def __iter__(self) -> Frames:
        return self

    def __next__(self) -> Measured:
        try:
            values, status, facts, unit = next(self._series)
        except BaseException:  # the end is one
            self._showing.close()
            raise
        self._done += 1
        if self._showing.call is not None:
            self._showing.call(self._done, self._total)
        return Measured(values, status, facts, unit)

    def close(self) -> None:
        """Ends the threads, and the pass."""
        self._showing.close()
        self._series.close()

    @property
    def faults(self) -> list[tuple[int | None, str]]:
        """The first thousand errors of frames that were skipped or filled so far, as (number, text)."""
        return self._series.faults

    @property
    def fault_count(self) -> int:
        """How many frames were skipped or filled so far."""
        return self._series.fault_count


@dataclass(frozen=True)
class Figures:
    """The figures of one region, one for each frame, in the unit of the series; `std` in that of a difference.

    `count` is the number of pixels that count, `good` that of pixels without any flag.
    """

    mean: npt.NDArray[np.float64]
    std: npt.NDArray[np.float64]
    min: npt.NDArray[np.float64]
    max: npt.NDArray[np.float64]
    count: npt.NDArray[np.uint32]
    good: npt.NDArray[np.uint32]


@dataclass(frozen=True)
class Series:
    """Figures of regions over time.

    `frame` are the numbers of the frames, `time` when they were taken (UTC; NaT for none), `unit` and `quantity` those
    of the figures. Those of the only or first region stand in the series itself.
    """

    frame: npt.NDArray[np.uint64]
    time: npt.NDArray[np.datetime64]
    unit: str
    quantity: str
    regions: dict[str, Figures]
    faults: list[tuple[int | None, str]]
    fault_count: int

    @property
    def _first(self) -> Figures:
        return next(iter(self.regions.values()))

    @property
    def mean(self) -> npt.NDArray[np.float64]:
        """Of the only or first region, float64 of shape (frames,) in `unit`; NaN where no pixel counts."""
        return self._first.mean

    @property
    def std(self) -> npt.NDArray[np.float64]:
        """The standard deviation of the same, in the unit of a difference."""
        return self._first.std

    @property
    def min(self) -> npt.NDArray[np.float64]:
        """The least value of the same."""
        return self._first.min

    @property
    def max(self) -> npt.NDArray[np.float64]:
        """The largest value of the same."""
        return self._first.max

    def __len__(self) -> int:
        return len(self.frame)

    def to_xarray(self) -> xarray.Dataset:
        """A data set of dimensions region and frame, with the figures as variables; needs xarray."""
        import xarray

        dims = ("region", "frame")
        names = ("mean", "std", "min", "max", "count", "good")
        columns = {name: np.array([getattr(one, name) for one in self.regions.values()]) for name in names}
        data: dict[str, Any] = {name: (dims, column) for name, column in columns.items()}
        for name in ("mean", "min", "max"):
            data[name] = (dims, columns[name], {"units": self.unit, "long_name": f"{name} of {self.quantity}"})
        coords = {"region": list(self.regions), "frame": self.frame, "time": ("frame", self.time)}
        return xarray.Dataset(data, coords)


def measure_series(
    measurement: _core.Measurement,
    runs: Sequence[tuple[int, int, int]] | None,
    roi: Regions,
    threads: int,
    on_fault: str,
    progress: Progress,
) -> Series:
    named = roi if isinstance(roi, Mapping) else {"frame" if roi is None else "region": roi or (0, 0, 0, 0)}
    if not named:
        raise ValueError("roi: expected a region, found none")
    for box in named.values() if roi is not None else ():
        if len(box) != 4 or min(box) < 0 or max(box) > 65535 or box[2] == 0 or box[3] == 0:
            raise ValueError(f"roi: expected x, y, width, height of at least a pixel, found {tuple(box)}")
    boxes = list(named.values())
    showing = Showing(progress)
    try:
        found = _core.statistics(measurement, runs, boxes, threads, on_fault, showing.call)
    finally:
        showing.close()
    regions = {name: Figures(**columns) for name, columns in zip(named, found["regions"])}
    faults = (found["faults"], found["fault_count"])
    return Series(found["frame"], times_of(found["ticks"]), found["symbol"], found["unit"], regions, *faults)
