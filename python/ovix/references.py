"""Virtual Zarr: where the counts of recordings stand, for readers that have no `ovix`."""

from __future__ import annotations

import json
import os
import warnings
from typing import Any

from . import _core
from .headers import Paths, expand
from .opened import source_arguments


def index(
    paths: Paths,
    out: str | os.PathLike[str] | None = None,
    *,
    base_url: str | None = None,
    frames_per_reference: int = 1,
    overwrite: bool = False,
    threads: int = 0,
    **how: Any,
) -> dict[str, Any]:
    """Makes a list of references with which zarr, fsspec and xarray open the raw counts of recordings as one array.

    The group has `counts` (time, y, x), uint16 as recorded, and the coordinates time (UTC, or the frame's number where
    frames carry no time), frame and preset. Each frame is one reference of file, offset and length; all are written
    out. With `frames_per_reference` above 1 the array is `frames`, of a structured type whose field "pixels" is the
    counts; it must divide the frames of each recording, which must stand one behind the other.

    The list names files by their full paths, or with `base_url` by their names behind it, for HTTP. `out` is a JSON file
    that is written whole or not at all. `pixel_type`, `size`, `frame_size` and `accept_damage` are those of `ovix.open`.

    Raises `FormatError` for pixels that cannot be stated so: compressed ones, and those that a decoder turns, masks or
    colours; and for files that differ. Warns of doubts and damages that a file shows.
    """
    if out is not None and not overwrite and os.path.exists(out):
        raise FileExistsError(17, "exists", os.fspath(out))
    options = source_arguments(**how)
    url = (base_url or "").rstrip("/")
    text, findings = _core.zarr_references(expand(paths), *options, url, frames_per_reference, threads)
    for file, one in findings:
        if one["weight"] != "note":
            warnings.warn(f"{file}: {one['weight']}: {one['what']}", stacklevel=2)
    if out is not None:
        _write(os.fspath(out), text)
    refs: dict[str, Any] = json.loads(text)
    return refs


def _write(path: str, text: str) -> None:
    part = f"{path}.{os.getpid()}.part"
    try:
        with open(part, "x", encoding="utf-8") as file:
            file.write(text)
            file.flush()
            os.fsync(file.fileno())
        os.replace(part, path)
    except BaseException:
        if os.path.exists(part):
            os.unlink(part)
        raise
