#!/usr/bin/env bash
# Inside the root: the tool, its manual, and programs that know the packages alone.
set -euo pipefail
step() { echo "package-test: $*" >&2; }
cd "$(mktemp -d)"
trap 'rm -rf "$PWD"' EXIT

step "ovix demo"
ovix demo --size 320x240 >demo.txt
grep -q "°C" demo.txt
[ -s ovix-demo/scene.png ] || [ -n "$(find ovix-demo -name '*.png')" ]
ovix synth --pixel-type "R7X IR (MJLS)" --size 64x48 -o compressed.raw
ovix stats compressed.raw --pixel-type "R7X IR (MJLS)" --size 64x48 --json | grep -q '"mean"'  # by the helper
ovix convert compressed.raw --pixel-type "R7X IR (MJLS)" --size 64x48 -o scene.nxs  # by a library of its own
[ -s scene.nxs ]

step "man ovix-convert"
man ovix-convert | grep -q -- --emissivity
[ -e /usr/share/bash-completion/completions/ovix ]

step "a CMake consumer"
cmake -S /tmp/consumer -B build -D CMAKE_BUILD_TYPE=Release >cmake.txt || { cat cmake.txt >&2; exit 1; }
cmake --build build >cmake.txt || { cat cmake.txt >&2; exit 1; }
head -c 12288 /dev/zero >counts.raw
build/measuring counts.raw counts | grep -qx "frame 1 mean 0.0"

step "pkg-config consumers"
g++ -std=c++20 /tmp/consumer/main.cpp -o by_pkg_config $(pkg-config --cflags --libs ovix)
./by_pkg_config counts.raw counts | grep -qx "frame 1 mean 0.0"
gcc -std=c99 /tmp/consumer/version.c -o in_c $(pkg-config --cflags --libs ovix-c)
./in_c | grep -qx "$(ovix --version | cut -d' ' -f2)"

step "python3: import ovix, with xarray and without"
python3 - <<'END'
import ovix

with ovix.open("counts.raw", "counts", (64, 48)) as counts:
    assert counts.counts.shape == (2, 48, 64)
with ovix.open("compressed.raw", "R7X IR (MJLS)", (64, 48)) as compressed:
    assert compressed[0].temperature().mean() > -100

import xarray

assert xarray.open_dataset("counts.raw", engine="ovix", pixel_type="counts", size=(64, 48)).counts.shape == (2, 48, 64)
END
