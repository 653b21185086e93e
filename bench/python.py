"""How fast Python measures, beside NumPy's look-up in a table; dask beside the direct loop; a long list of references.

    PYTHONPATH=build/release/python /usr/bin/python3 bench/python.py build/release/bin/ovix

Frames of 640 x 480. Everything that is compared takes turns, and of each the best turn counts: ratios within one run.
"""

import os
import subprocess
import sys
import tempfile
import time

import fsspec
import numpy as np
import xarray

import ovix

FRAMES, TURNS = 64, 15
TOOL = os.path.abspath(sys.argv[1])


def best(ways):
    """Milliseconds of each, by name: the least of so many turns."""
    least = dict.fromkeys(ways, float("inf"))
    for _ in range(TURNS):
        for name, way in ways.items():
            begin = time.perf_counter()
            way()
            least[name] = min(least[name], 1e3 * (time.perf_counter() - begin))
    return least


def measuring():
    out, status = np.empty((480, 640), np.float32), np.empty((480, 640), np.uint8)
    lut = np.arange(65536, dtype=np.float32)
    with ovix.open("run.krt") as rec:
        raw = rec.counts
        each = {
            "rec[i].temperature(out=out)": lambda i: rec[i].temperature(out=out),
            "rec[i].temperature(out=out, status=status)": lambda i: rec[i].temperature(out=out, status=status),
            "rec[i].temperature()": lambda i: rec[i].temperature(),
            "lut[raw], raw in memory": lambda i: lut[raw[i]],
            "np.take(lut, raw, out=out), likewise": lambda i: np.take(lut, raw[i], out=out, mode="clip"),
            "rec[i].counts": lambda i: rec[i].counts,
        }
        ways = {name: lambda one=one: [one(i) for i in range(FRAMES)] for name, one in each.items()}
        for name, spent in best(ways).items():
            print(f"{name:45} {spent / FRAMES:.3f} ms a frame")


def distributing():
    for i in range(8):
        os.link("run.krt", f"run{i}.krt")
    paths = [f"run{i}.krt" for i in range(8)]
    data = ovix.open_archive(paths).temperature.data
    # Axes that stay: dask copies blocks whose axes go.
    means = data.map_blocks(lambda block: block.mean((1, 2), keepdims=True), chunks=(data.chunks[0], 1, 1))

    def direct():
        found = []
        for path in paths:
            with ovix.open(path) as rec:
                found.append(rec.temperature(threads=1).mean((1, 2)))
        return np.concatenate(found)

    def through_dask():
        return means.compute(scheduler="threads", num_workers=1)[:, 0, 0]

    assert np.array_equal(direct(), through_dask())
    spent = best({"the loop": direct, "dask": through_dask})
    print(f"{'dask, one thread, 64 frames a chunk':45} {spent['dask'] / spent['the loop']:.2f} of the direct loop")


def opening():
    np.zeros((12_000, 8, 8), "<u2").tofile("long.raw")
    how = {"pixel_type": "counts", "size": (8, 8)}

    def read():
        mapper = fsspec.get_mapper("reference://", fo="long.json", skip_instance_cache=True)
        xarray.open_dataset(mapper, engine="zarr", consolidated=False)

    write = lambda: ovix.index("long.raw", "long.json", overwrite=True, **how)
    for name, spent in best({"12,000 references written": write, "the same opened by xarray": read}).items():
        print(f"{name:45} {spent:.0f} ms")


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    camera = ("--pixel-type", "K410 IR (GigE)", "--size", "640x480")
    quiet = {"check": True, "stderr": subprocess.DEVNULL}
    subprocess.run([TOOL, "synth", *camera, "--form", "plain", "--count", str(FRAMES), "-o", "dump.raw"], **quiet)
    subprocess.run([TOOL, "record", "dump.raw", *camera, "-o", "run.krt"], **quiet)
    measuring()
    distributing()
    opening()
