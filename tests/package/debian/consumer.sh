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

if dpkg-query -W python3-ovix >/dev/null 2>&1; then
    step "python3 -c 'import ovix'"
    python3 -c "import ovix; print(ovix.__name__)" | grep -qx ovix
else
    step "there is no python3-ovix to be tried"
fi
