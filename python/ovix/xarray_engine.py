"""`xarray.open_dataset("run.krt", engine="ovix")`."""

from __future__ import annotations

import os
import threading
from typing import Any, Iterable

import numpy as np
import numpy.typing as npt
import xarray
from xarray.backends import BackendArray, BackendEntrypoint
from xarray.core import indexing

from .facts import STATUS_FLAGS
from .files import explain
from .recording import Recording, open

#: Frames of one chunk.
CHUNK = 64

#: What CF conventions, and UDUNITS, call the symbols.
_CF_UNITS = {"°C": "degree_Celsius", "°F": "degree_Fahrenheit", "K": "K", "°R": "degree_Rankine"}

_SCALE_SYMBOLS = {"C": "°C", "F": "°F", "K": "K", "R": "°R"}


def read(recording: Recording, kind: str, scale: str) -> npt.NDArray[Any]:
    """The pixels of a view. On a thread of a pool, which others keep busy, by this thread alone."""
    threads = 0 if threading.current_thread() is threading.main_thread() else 1
    if kind == "temperature":
        return recording.temperature(scale, threads=threads)
    if kind == "counts":
        out = recording._opened.room(len(recording))
        recording._opened.source.counts(recording._array(), out, threads)
        return out
    status = np.empty(recording.shape[:3], np.uint8)
    recording._opened.measurement(None, "C").measure_many(recording._array(), None, status, threads)
    return status


class FrameArray(BackendArray):
    """Pixels of one kind, which are read for the frames that are indexed."""

    def __init__(self, recording: Recording, kind: str, scale: str) -> None:
        self.recording, self.kind, self.scale = recording, kind, scale
        self.shape = recording.shape[:3]
        self.dtype = np.dtype(DTYPES[kind])

    def __getitem__(self, key: indexing.ExplicitIndexer) -> npt.NDArray[Any]:
        support = indexing.IndexingSupport.BASIC
        found: npt.NDArray[Any] = indexing.explicit_indexing_adapter(key, self.shape, support, self._get)
        return found

    def _get(self, key: tuple[int | slice, ...]) -> npt.NDArray[Any]:
        frames, *within = key
        if isinstance(frames, slice):
            return read(self.recording[frames], self.kind, self.scale)[(slice(None), *within)]
        view = self.recording[int(frames) : int(frames) + 1]
        return read(view, self.kind, self.scale)[(0, *within)]


DTYPES: dict[str, npt.DTypeLike] = {"counts": np.uint16, "temperature": np.float32, "status": np.uint8}


def kinds_of(units: Iterable[str]) -> list[str]:
    """The variables that a source of such units has."""
    offered = list(units)
    if "counts" not in offered:
        raise ValueError("expected frames of counts; the source can give " + ", ".join(offered))
    return ["counts", "temperature", "status"] if any(map(is_temperature, offered)) else ["counts"]


def is_temperature(unit: str) -> bool:
    return unit.startswith("temperature")


def attributes(kind: str, scale: str) -> dict[str, Any]:
    """As the CF conventions have them."""
    if kind == "counts":
        return {"units": "1", "long_name": "counts as recorded"}
    if kind == "temperature":
        return {
            "units": _CF_UNITS[_SCALE_SYMBOLS[scale]],
            "long_name": "temperature",
            "ancillary_variables": "status",
        }
    return {
        "long_name": "status of the temperature",
        "flag_masks": np.array(list(STATUS_FLAGS.values()), np.uint8),
        "flag_meanings": " ".join(STATUS_FLAGS),
    }


def variable_of(kind: str, scale: str, data: Any, encoding: dict[str, Any] | None = None) -> xarray.Variable:
    """Pixels of that kind under their dimensions."""
    dims = ("time", "y", "x")
    return xarray.Variable(dims, data, attributes(kind, scale), encoding)  # type: ignore[no-untyped-call]


def coordinates(
    time: npt.NDArray[np.datetime64], counter: npt.NDArray[np.int64], preset: npt.NDArray[np.int16]
) -> dict[str, Any]:
    frame = np.arange(len(time))
    timed = len(time) > 0 and not np.any(np.isnat(time))
    coords: dict[str, Any] = {"frame": ("time", frame, {"long_name": "number of the frame"})}
    if timed:
        coords["time"] = ("time", time.astype("M8[ns]"), {"standard_name": "time", "long_name": "time in UTC"})
    else:
        coords["time"] = ("time", frame, {"long_name": "number of the frame; frames carry no time"})
    coords["preset"] = ("time", preset, {"long_name": "preset of the camera; -1 where the frame names none"})
    coords["counter"] = ("time", counter, {"long_name": "frame counter of the camera; -1 for none"})
    return coords


def scene_of(recording: Recording) -> dict[str, Any]:
    """Scene and calibration of the first frame, by which it is measured, with who said them."""
    explained = explain(recording, 0, 0, 0)
    attrs: dict[str, Any] = {}
    if explained.calibration:
        attrs["calibration"] = explained.calibration
    for key, value in explained.parameters.items():
        name = "scene_" + key.replace("-", "_")
        attrs[name] = value.value
        if value.unit:
            attrs[name + "_units"] = value.unit
        attrs[name + "_origin"] = value.origin
    return attrs


def file_attributes(recording: Recording, kinds: list[str]) -> dict[str, Any]:
    info = recording.info
    attrs: dict[str, Any] = {"Conventions": "CF-1.8", "source": info.pixel_type}
    if info.camera:
        attrs["camera"] = info.camera
    if "temperature" in kinds:
        attrs.update(scene_of(recording))
    return attrs


class OvixBackend(BackendEntrypoint):
    """Dimensions time, y and x; variables counts, temperature and status; coordinates time, frame, preset and counter.

    Lazy; in chunks of 64 frames with `chunks={}`. Other arguments are those of `ovix.open`, and `scale`.
    """

    description = "Recordings of thermal cameras (.krt), and dumps of their raw frames"
    open_dataset_parameters = ("filename_or_obj", "drop_variables", "scale")

    def open_dataset(
        self,
        filename_or_obj: Any,
        drop_variables: str | Iterable[str] | None = None,
        *,
        scale: str = "C",
        **how: Any,
    ) -> xarray.Dataset:
        recording = open(os.fspath(filename_or_obj), **how)
        kinds = kinds_of(recording.units)
        variables = {}
        for kind in kinds:
            lazy = indexing.LazilyIndexedArray(FrameArray(recording, kind, scale))  # type: ignore[no-untyped-call]
            encoding = {"preferred_chunks": {"time": CHUNK}}
            variables[kind] = variable_of(kind, scale, lazy, encoding)
        dropped = {drop_variables} if isinstance(drop_variables, str) else set(drop_variables or ())
        data = {kind: variable for kind, variable in variables.items() if kind not in dropped}
        dataset = xarray.Dataset(data, coordinates(*recording.facts()), file_attributes(recording, kinds))
        dataset.set_close(recording.close)
        return dataset

    def guess_can_open(self, filename_or_obj: Any) -> bool:
        try:
            return str(os.fspath(filename_or_obj)).lower().endswith(".krt")
        except TypeError:
            return False
