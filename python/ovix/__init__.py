"""Measurements from thermal-camera image data, as NumPy arrays.

    import ovix

    with ovix.open("run.krt") as rec:
        print(rec.info, rec.units)
        celsius = rec[0].temperature()                      # float32, (height, width)
        bearing = rec.series(roi=(100, 80, 64, 48))         # mean, min, max over time

docs/python.md tells the rest.
"""

from .archive import open_archive
from .calibration import Calibration, Fit, PresetFit, calibrate
from .errors import FormatError
from .facts import STATUS_FLAGS, Finding, Info, Parameter
from .files import Explanation, Repaired, Step, Verdict, explain, record, repair, verify
from .frame import Frame, Measured
from .recording import Recording, open
from .references import index
from .series import Figures, Frames, Series

__all__ = [
    "STATUS_FLAGS",
    "Calibration",
    "Explanation",
    "Figures",
    "Finding",
    "Fit",
    "FormatError",
    "Frame",
    "Frames",
    "Info",
    "Measured",
    "Parameter",
    "PresetFit",
    "Recording",
    "Repaired",
    "Series",
    "Step",
    "Verdict",
    "calibrate",
    "explain",
    "index",
    "open",
    "open_archive",
    "record",
    "repair",
    "verify",
]
