"""A user calibration, from black bodies that the camera saw, and its file."""

from __future__ import annotations

import json
import os
from dataclasses import dataclass
from typing import Any, Iterable, Sequence

from . import _core

_PRESETS = 8


class Calibration(_core.Calibration):
    """How counts become radiance, and radiance temperature, for each of eight presets.

    Made by `ovix.calibrate` or read from a file (docs/formats/user_calibration.md); for `ovix.open(user_calibration=)`
    and `ovix.record`. `band` is in micrometres.
    """

    def document(self) -> dict[str, Any]:
        """As the file has it."""
        presets = []
        for number in range(_PRESETS):
            values = self.preset(number)
            if values is None:
                continue
            preset = {"preset": number, "order": values["order"], "coefficients": values["coefficients"]}
            if "background" in values:
                preset["backgroundCounts"] = values["background"]
            if "table" in values:
                radiances, celsius = values["table"]
                preset["temperatureTable"] = {"radiances": radiances, "celsius": celsius}
            if "temperature_coefficients" in values:
                preset["temperatureCoefficients"] = values["temperature_coefficients"]
            presets.append(preset)
        return {
            "schema": 1,
            "kind": "user calibration",
            "radianceUnit": "W/(cm² sr)",
            "bandMicrometres": list(self.band),
            "presets": presets,
        }

    @classmethod
    def of_document(cls, document: dict[str, Any]) -> Calibration:
        """Raises `ValueError` for a document that is no calibration."""
        if document.get("kind") != "user calibration" or document.get("schema") != 1:
            raise ValueError("expected a user calibration of schema 1")
        calibration = cls()
        low, high = document["bandMicrometres"]
        calibration.band = (low, high)
        for preset in document["presets"]:
            values: dict[str, Any] = {"order": preset["order"], "coefficients": preset["coefficients"]}
            if "backgroundCounts" in preset:
                values["background"] = preset["backgroundCounts"]
            if "temperatureTable" in preset:
                table = preset["temperatureTable"]
                values["table"] = (table["radiances"], table["celsius"])
            if "temperatureCoefficients" in preset:
                values["temperature_coefficients"] = preset["temperatureCoefficients"]
            calibration.set_preset(preset["preset"], values)
        return calibration

    @classmethod
    def load(cls, path: str | os.PathLike[str]) -> Calibration:
        """Reads a file of `ovix calibrate`. Raises `OSError`, and `ValueError` for a file that is none."""
        with open(path, encoding="utf-8") as file:
            try:
                return cls.of_document(json.load(file))
            except (KeyError, TypeError, RuntimeError, ValueError) as error:
                raise ValueError(f"{os.fspath(path)}: no user calibration: {error}") from error

    def save(self, path: str | os.PathLike[str], overwrite: bool = False) -> None:
        """Writes a file that `ovix` takes as `--user-cal`. Raises `FileExistsError` unless it may be replaced."""
        with open(path, "w" if overwrite else "x", encoding="utf-8") as file:
            json.dump(self.document(), file, ensure_ascii=False, indent=2)

    def __reduce__(self) -> tuple[Any, ...]:
        return Calibration.of_document, (self.document(),)

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Calibration) and self.document() == other.document()

    __hash__ = None  # type: ignore[assignment]  # it can be changed


@dataclass(frozen=True)
class PresetFit:
    """How well one preset is fitted: root mean square and largest of the residuals in kelvin, whether the fitted
    radiance rises or falls all over the measured counts, and each point as (counts, °C, °C as fitted)."""

    preset: int
    rms: float
    largest: float
    steady: bool
    points: list[tuple[float, float, float]]


@dataclass(frozen=True)
class Fit:
    """A fitted user calibration, and how well each preset of it is fitted."""

    calibration: Calibration
    presets: list[PresetFit]


def calibrate(
    points: Iterable[Sequence[float]],
    band: tuple[float, float],
    order: int = 2,
    model: str = "table",
    temperature_order: int = 5,
) -> Fit:
    """Fits a user calibration to black bodies: points of (counts, °C) or (counts, °C, preset).

    `band` is what the camera sees, in micrometres; `order` of the polynomial from counts to radiance is 1 to 9. `model`
    is how radiance becomes temperature: by a "table" of Planck's law over the band, a "polynomial" of
    `temperature_order` near it, or by "planck" at the band's middle. Source: docs/radiometry.md.

    Raises `FormatError` where the points do not determine a fit, `ValueError` for arguments that make none.
    """
    given = [(float(point[0]), float(point[1]), int(point[2]) if len(point) > 2 else 0) for point in points]
    fitted, presets = _core.fit_calibration(given, band, order, model, temperature_order)
    calibration = Calibration()
    calibration.band = fitted.band
    for number in range(_PRESETS):
        values = fitted.preset(number)
        if values is not None:
            calibration.set_preset(number, values)
    return Fit(calibration, [PresetFit(*one) for one in presets])
