"""parts.py WHOLE PART...: each part of a store, as a killed writer left it, holds the first frames of the whole one."""

import os
import sys

import h5py
import numpy
import zarr


def read(store, finished=False):
    """Values, status and numbers of the frames; nothing where the writer had not begun."""
    if os.path.isdir(store):
        if not os.path.exists(os.path.join(store, ".zmetadata")):
            return None
        group = zarr.open_consolidated(store, mode="r")
    else:
        group = h5py.File(store, "r", swmr=not finished)["entry/data"]
    return [group[name][:] for name in ("counts", "status", "frame")]


whole, *parts = sys.argv[1:]
expected = read(whole, finished=True)
frames = []
for part in parts:
    found = read(part)
    if found is None:
        frames.append(0)
        continue
    whole_frames = min(map(len, found))  # one may be ahead by the frame that was being written
    for one, all_of_it in zip(found, expected):
        assert len(one) <= whole_frames + 1 and numpy.array_equal(one[:whole_frames], all_of_it[:whole_frames]), part
    frames.append(whole_frames)
print(len(frames), "parts with", sum(frames), "frames read")
