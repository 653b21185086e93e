"""The Python of the pages runs; the types say what is there; a wheel stands by itself."""

import os
import re
import shutil
import sys
import zipfile
from pathlib import Path

import numpy as np
import pytest
from conftest import COMPRESSED, GIGE, run, tool

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
    run(sys.executable, "-W", "error", "-c", "\n".join(blocks), cwd=folder)


def test_the_example_draws_its_plot(folder):
    pytest.importorskip("matplotlib")
    example = ROOT / "examples/python/bearing.py"
    assert "12 frames" in run(sys.executable, example, folder / "run.krt", folder / "plot.png")
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
    run(sys.executable, "-m", "build", "--wheel", "--no-isolation", "--outdir", tmp_path, source)
    (wheel,) = tmp_path.glob("ovix-*.whl")
    venv = tmp_path / "venv"
    run(sys.executable, "-m", "venv", "--system-site-packages", venv)
    environment = {key: value for key, value in os.environ.items() if key != "PYTHONPATH"}
    run(venv / "bin/pip", "install", "-q", "--no-index", "--no-deps", wheel, env=environment)
    dump = COMPRESSED.make(tmp_path / "dump.raw")
    np.save(tmp_path / "expected.npy", ovix.open(dump, **COMPRESSED.how).temperature())
    given = (dump, COMPRESSED.pixel_type, tmp_path / "expected.npy", venv)
    run(venv / "bin/python", "-c", ALONE, *given, env=environment, cwd=tmp_path)
    needed = run("readelf", "-d", *venv.rglob("*.so"))
    assert not re.search(r"R(UN)?PATH.*\[/", needed), "a path of the tree that built it"


def test_types_are_clean(tmp_path):
    pytest.importorskip("mypy")
    config, package = str(ROOT / "python/pyproject.toml"), str(Path(ovix.__file__).parent)
    environment = {**os.environ, "MYPY_CACHE_DIR": str(tmp_path)}
    run(sys.executable, "-m", "mypy", "--config-file", config, "--cache-dir", tmp_path, package, env=environment)
    run(sys.executable, "-m", "mypy.stubtest", "--mypy-config-file", config, "ovix._core", env=environment)
