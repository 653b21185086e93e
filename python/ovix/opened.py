"""An opened source, which its views and frames share, and how it is opened again."""

from __future__ import annotations

import os
from typing import Any

import numpy as np
import numpy.typing as npt

from . import _core


def source_arguments(
    pixel_type: str = "",
    size: tuple[int, int] | None = None,
    frame_size: int = 0,
    follow: bool = False,
    patience: float = 10.0,
    accept_damage: bool = False,
) -> tuple[str, int, int, int, bool, float, bool]:
    """How the bytes of a source are taken, as the module below has it."""
    width, height = size or (0, 0)
    return pixel_type, width, height, frame_size, follow, patience, accept_damage


class Opened:
    """The one owner of the source. Measurements are made when they are first asked for, and kept."""

    def __init__(self, path: str | int, source: dict[str, Any], measuring: dict[str, Any]) -> None:
        self.path = path
        self.source_options = source
        self.measuring = measuring
        self._measurements: dict[tuple[str | None, str], _core.Measurement] = {}
        self._source: _core.Source | None
        arguments = source_arguments(**source)
        if isinstance(path, int):
            self._source = _core.Source.from_descriptor(path, f"descriptor {path}", *arguments[:4])
        else:
            self._source = _core.Source(path, *arguments)

    @property
    def source(self) -> _core.Source:
        if self._source is None:
            raise ValueError(f"{self.path}: is closed")
        return self._source

    @property
    def closed(self) -> bool:
        return self._source is None

    def close(self) -> None:
        self._source = None
        self._measurements.clear()

    def measurement(self, quantity: str | None, scale: str) -> _core.Measurement:
        source = self.source
        key = (quantity, scale)
        made = self._measurements.get(key)
        if made is None:
            made = _core.Measurement(source, {**self.measuring, "quantity": quantity, "scale": scale})
            self._measurements[key] = made
        return made

    def room(self, *frames: int) -> npt.NDArray[Any]:
        """A new array for counts as recorded."""
        shape = (*frames, self.source.height, self.source.width)
        if self.source.element == "uint16":
            return np.empty(shape, np.uint16)
        return np.empty((*shape, 3), np.uint8)

    def again(self) -> tuple[str, dict[str, Any], dict[str, Any]]:
        """The arguments of the same source in another process."""
        if isinstance(self.path, int) or not self.source.numbered:
            raise TypeError(f"{self.path}: the frames of a stream cannot go to another process")
        return os.path.abspath(self.path), self.source_options, self.measuring
