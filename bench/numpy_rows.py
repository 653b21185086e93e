#!/usr/bin/env python3
"""What NumPy takes for the rows of `ovix_bench` that it has calls for, beside a plain copy of as many bytes.

    bench/numpy_rows.py [640x512]

Medians of calls that take turns with the copy, one thread. The copy is what both programs have in common: a row's
share of it stands beside the kernel's of the same name.
"""
import sys
import time

import numpy as np

width, height = map(int, (sys.argv[1] if len(sys.argv) > 1 else "640x512").split("x"))
pixels = width * height
random = np.random.default_rng(1)
x, y = np.meshgrid(np.arange(width) / 200, np.arange(height) / 150)
counts = (6000 + 3000 * np.sin(x) * np.cos(y) + random.integers(0, 41, x.shape)).astype(np.uint16).ravel()
floats = np.sqrt(counts.astype(np.float32))
mask = (np.arange(pixels) % 7 < 5) | (np.arange(pixels) % width < 100)
table = (np.sqrt(np.arange(65536, dtype=np.float32)) * 0.7 - 20).astype(np.float32)
flags = np.where(np.arange(65536) < 500, 2, np.where(np.arange(65536) > 12000, 4, 0)).astype(np.uint8)
gain = (0.9 + 0.0001 * random.integers(0, 2000, pixels)).astype(np.float32)
offset = random.integers(-200, 201, pixels).astype(np.int16)
moved = np.where(random.integers(0, 256, pixels) == 0, np.maximum(np.arange(pixels) - 1, 0), np.arange(pixels))
out, status, whole = np.empty_like(floats), np.empty(pixels, np.uint8), np.empty_like(counts)


def figures(frame):
    """Least and greatest with their places, sum and sum of squares."""
    low, high = frame.argmin(), frame.argmax()
    doubles = frame.astype(np.float64)
    return frame[low], frame[high], doubles.sum(), np.dot(doubles, doubles)


def look_up():
    np.take(table, counts, out=out, mode="clip")


def look_up_both():
    look_up()
    np.take(flags, counts, out=status, mode="clip")


def correct():
    np.multiply(counts[moved], gain[moved], out=out)
    np.add(out, offset[moved], out=out)
    np.clip(out, 0, 16383, out=out)


rows = {  # name: (bytes that the row moves for each pixel, call)
    "GetStats UInt16": (4, lambda: figures(counts)),
    "GetStats UInt16, mask": (6, lambda: figures(counts[mask])),
    "GetStats Flt32": (8, lambda: figures(floats)),
    "GetStats Flt32, mask": (10, lambda: figures(floats[mask])),
    "ApplyLUT UInt16->Flt32": (6, look_up),
    "ApplyLUT UInt16->Flt32, status": (7, look_up_both),
    "ApplyNUC UInt16->Flt32, all, clip": (16, correct),
    "ConvertArray UInt16->Flt32": (6, lambda: np.copyto(out, counts)),
    "ConvertArray Flt32->UInt16": (6, lambda: np.copyto(whole, floats, casting="unsafe")),
}


def seconds(call):
    start = time.perf_counter()
    call()
    return time.perf_counter() - start


print(f"NumPy {np.__version__}, {width}x{height}")
print(f"{'row':36} {'ns/pixel':>9} {'share of copy':>14}")
for name, (size, call) in rows.items():
    source, target = np.ones(size * pixels // 2, np.uint8), np.empty(size * pixels // 2, np.uint8)
    call()
    times = [(seconds(call), seconds(lambda: np.copyto(target, source))) for _ in range(150)]
    own, copy = (float(np.median(column)) for column in zip(*times))
    print(f"{name:36} {own * 1e9 / pixels:9.3f} {copy / own:14.3f}")
