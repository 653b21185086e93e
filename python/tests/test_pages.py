"""The Python of the pages runs; the types say what is there; a wheel stands by itself."""

import os
import re
import shutil
import subprocess
import sys
import zipfile
from pathlib import Path

import numpy as np
import pytest
from conftest import COMPRESSED, GIGE, tool

import ovix

ROOT = Path(__file__).resolve().parent.parent.parent


@pytest.fixture(scope="module")
def folder(tmp_path_factory):
    """What the pages speak of."""
    here = tmp_path_factory.mktemp("pages")
    tool("synth", "--form", "plain", "--count", 12, "-o", here / "dump.raw")
    camera = ("--pixel-type", GIGE, "--size", "640x480")
    tool("record", here / "dump.raw", *camera, "-o", here / "run.krt")
    (here / "archive").mkdir()
    for i in range(3):
        frames = f"{4 * i}-{4 * i + 3}"
        tool("record", here / "dump.raw", *camera, "--frames", frames, "-o", here / "archive" / f"run{i}.krt")
    np.full((2, 480, 640), 5000, "<u2").tofile(here / "counts.raw")
    (here / "picture.txt").write_text("no frames")
    return here


@pytest.mark.parametrize("page", ["README.md", "docs/python.md", "docs/archives.md"])
def test_a_page_runs(folder, page):
    blocks = re.findall(r"```python\n(.*?)```", (ROOT / page).read_text(), re.S)
    assert blocks
    code = "\n".join(blocks)
    done = subprocess.run([sys.executable, "-W", "error", "-c", code], cwd=folder, capture_output=True, text=True)
    assert done.returncode == 0, done.stderr


def test_the_example_draws_its_plot(folder):
    pytest.importorskip("matplotlib")
    command = [sys.executable, ROOT / "examples/python/bearing.py", folder / "run.krt", folder / "plot.png"]
    done = subprocess.run(command, capture_output=True, text=True)
    assert done.returncode == 0 and "12 frames" in done.stdout, done.stderr
    assert (folder / "plot.png").read_bytes().startswith(b"\x89PNG")


ALONE = """
import sys, numpy, ovix
got = ovix.open(sys.argv[1], sys.argv[2], (64, 48)).temperature()
assert numpy.array_equal(got, numpy.load(sys.argv[3]))
places = {line.split()[-1] for line in open("/proc/self/maps") if "/ovix" in line or "_core" in line}
assert places and all(place.startswith(sys.argv[4]) for place in places if place.endswith(".so")), places
"""


@pytest.mark.skipif("OVIX_BUILD_DIR" not in os.environ, reason="there is no build tree")
def test_a_wheel_runs_without_the_tree_that_built_it(tmp_path):
    pytest.importorskip("build")
    source = tmp_path / "tree" / "python"
    shutil.copytree(ROOT / "python", source, ignore=shutil.ignore_patterns("build", "*.egg-info", "__pycache__"))
    shutil.copy(ROOT / "CMakeLists.txt", tmp_path / "tree")
    command = [sys.executable, "-m", "build", "--wheel", "--no-isolation", "--outdir", tmp_path, source]
    done = subprocess.run(command, capture_output=True, text=True)
    assert done.returncode == 0, done.stdout + done.stderr
    (wheel,) = tmp_path.glob("ovix-*.whl")
    venv = tmp_path / "venv"
    subprocess.run([sys.executable, "-m", "venv", "--system-site-packages", venv], check=True)
    environment = {key: value for key, value in os.environ.items() if key != "PYTHONPATH"}
    subprocess.run([venv / "bin/pip", "install", "-q", "--no-index", "--no-deps", wheel], check=True, env=environment)
    dump = COMPRESSED.make(tmp_path / "dump.raw")
    np.save(tmp_path / "expected.npy", ovix.open(dump, **COMPRESSED.how).temperature())
    given = (dump, COMPRESSED.pixel_type, tmp_path / "expected.npy", venv)
    command = [venv / "bin/python", "-c", ALONE, *map(str, given)]
    done = subprocess.run(command, env=environment, cwd=tmp_path, capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    needed = subprocess.run(["readelf", "-d", *venv.rglob("*.so")], capture_output=True, text=True).stdout
    assert not re.search(r"R(UN)?PATH.*\[/", needed), "a path of the tree that built it"


def test_types_are_clean(tmp_path):
    pytest.importorskip("mypy")
    config, package = str(ROOT / "python/pyproject.toml"), str(Path(ovix.__file__).parent)
    commands = (
        ["mypy", "--config-file", config, "--cache-dir", str(tmp_path), package],
        ["mypy.stubtest", "--mypy-config-file", config, "ovix._core"],
    )
    for command in commands:
        environment = {**os.environ, "MYPY_CACHE_DIR": str(tmp_path)}
        done = subprocess.run([sys.executable, "-m", *command], env=environment, capture_output=True, text=True)
        assert done.returncode == 0, done.stdout + done.stderr
