"""Many recordings as one data set, larger than the machine's memory."""

from __future__ import annotations

import os
from collections import OrderedDict
from typing import TYPE_CHECKING, Any

import numpy as np
import numpy.typing as npt

from .headers import Headers, Paths, has_times, read_all
from .recording import Recording, open

if TYPE_CHECKING:
    import xarray


#: What this process opened last, by path, graph and process: a forked child opens its own.
_recent: OrderedDict[tuple[str, str, int], Recording] = OrderedDict()
_MOST_OPEN = 64


def _opened(path: str, token: str, how: dict[str, Any]) -> Recording:
    key = (path, token, os.getpid())
    recording = _recent.pop(key, None)
    if recording is None:
        recording = open(path, **how)
    _recent[key] = recording
    while len(_recent) > _MOST_OPEN:
        _recent.popitem(last=False)
    return recording


def read_block(
    path: str, token: str, start: int, stop: int, kind: str, scale: str, how: dict[str, Any]
) -> npt.NDArray[Any]:
    """What one task of the graph does: it depends on no other, and may run in any process."""
    from .xarray_engine import read

    return read(_opened(path, token, how)[start:stop], kind, scale)


def gaps_of(headers: list[Headers]) -> list[str]:
    """Where the time from one frame to the next is more than half again as long as it mostly is, or runs back."""
    time = np.concatenate([one.time for one in headers])
    if len(time) < 3 or not has_times(headers):
        return []
    steps = np.diff(time).astype("m8[ns]").astype(np.int64) / 1e9
    usual = float(np.median(steps))
    first = np.cumsum([0] + [one.frames for one in headers])
    gaps = []
    for at in np.flatnonzero((steps > 1.5 * usual) | (steps < 0)) + 1:
        which = int(np.searchsorted(first, at, "right")) - 1
        where = f"{headers[which].path}, frame {at - first[which]}"
        gaps.append(f"{where}: {steps[at - 1]:.6g} s behind the frame before, mostly {usual:.6g} s")
    return gaps


def open_archive(
    paths: Paths, *, scale: str = "C", chunk: int = 64, threads: int = 0, **how: Any
) -> xarray.Dataset:
    """Opens many recordings, by names or patterns, as one data set of dask arrays; needs xarray and dask.

    Dimensions, variables and coordinates are those of the engine `ovix`, and beside them `recording`, the number of the
    file in the attribute `files`. Recordings come in the order of their times, else of their names. Headers of frames
    are read once, on that many threads (0: all); where frames are missing stands in the attribute `gaps`. Chunks are of
    `chunk` frames and of one recording each. Each task opens its file by itself, so that a worker that is lost costs
    its tasks alone. Other arguments are those of `ovix.open`; temperatures are in `scale`.

    Raises `FileNotFoundError` for a name that is none, `ValueError` for recordings that differ in size or pixel type.
    """
    import xarray

    from .xarray_engine import DTYPES, coordinates, file_attributes, kinds_of, variable_of

    headers = read_all(paths, threads, how)
    kinds = kinds_of(headers[0].units)
    for one in headers:
        if kinds_of(one.units) != kinds:
            raise ValueError(f"{one.path}: can give {', '.join(one.units)}; expected {', '.join(headers[0].units)}")
    data = {
        kind: variable_of(kind, scale, _dask_array(headers, kind, scale, chunk, how, DTYPES[kind])) for kind in kinds
    }
    join = np.concatenate
    coords = coordinates(
        join([one.time for one in headers]), join([one.counter for one in headers]), join([one.preset for one in headers])
    )
    number = np.repeat(np.arange(len(headers)), [one.frames for one in headers])
    coords["recording"] = ("time", number, {"long_name": "number of the file"})
    with open(headers[0].path, **how) as first:
        attrs = file_attributes(first, kinds)
    attrs["files"] = [one.path for one in headers]
    attrs["gaps"] = gaps_of(headers)
    return xarray.Dataset(data, coords, attrs)


def _dask_array(
    headers: list[Headers], kind: str, scale: str, chunk: int, how: dict[str, Any], dtype: npt.DTypeLike
) -> Any:
    """A graph of tasks that depend on nothing: dask's own way from an array, inlined, would put the list of all files
    into each of them."""
    from dask.array.core import Array
    from dask.base import tokenize
    from dask.highlevelgraph import HighLevelGraph

    if chunk < 1:
        raise ValueError(f"chunk: expected at least 1, found {chunk}")
    stamps = [(one.path, one.frames, os.stat(one.path).st_mtime_ns) for one in headers]
    token = tokenize(stamps, kind, scale, chunk, sorted(how.items(), key=str))  # type: ignore[no-untyped-call]
    name = f"ovix-{kind}-{token}"
    layer: dict[Any, Any] = {}
    lengths: list[int] = []
    for one in headers:
        path = os.path.abspath(one.path)
        for start in range(0, one.frames, chunk):
            stop = min(start + chunk, one.frames)
            layer[name, len(lengths), 0, 0] = (read_block, path, token, start, stop, kind, scale, how)
            lengths.append(stop - start)
    graph = HighLevelGraph({name: layer}, {name: set()})
    chunks = (tuple(lengths), (headers[0].height,), (headers[0].width,))
    return Array(graph, name, chunks, dtype=np.dtype(dtype))  # type: ignore[no-untyped-call]
