"""Frames of every family, as the tool's cameras send them."""

import json
import os
import subprocess
from dataclasses import dataclass
from pathlib import Path

import pytest

TOOL = os.environ["OVIX_TOOL"]
WIDTH, HEIGHT, FRAMES = 64, 48, 3
GIGE = "K410 IR (GigE)"


SIZE = f"{WIDTH}x{HEIGHT}"
CAMERA = ("--pixel-type", GIGE, "--size", SIZE)


def run(*command: object, **how: object) -> str:
    done = subprocess.run([*map(str, command)], capture_output=True, text=True, **how)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


def tool(*arguments: object) -> str:
    return run(TOOL, *arguments)


@dataclass(frozen=True)
class Form:
    pixel_type: str
    form: str

    @property
    def compressed(self) -> bool:
        return self.pixel_type == "R7X IR (MJLS)"

    def make(self, path: Path, frames: int = FRAMES, *more: object) -> Path:
        camera = ("--pixel-type", self.pixel_type, "--form", self.form, "--size", SIZE)
        tool("synth", *camera, "--count", frames, *more, "-o", path)
        return path

    @property
    def how(self) -> dict[str, object]:
        return {"pixel_type": self.pixel_type, "size": (WIDTH, HEIGHT)}

    def __str__(self) -> str:
        return f"{self.pixel_type}-{self.form}"


FORMS = [Form(one["pixelType"], one["form"]) for one in json.loads(tool("formats", "--json"))["synthesis"]]
PLAIN = Form(GIGE, "plain")
COMPRESSED = next(form for form in FORMS if form.compressed)


@pytest.fixture(params=FORMS, ids=str)
def form(request: pytest.FixtureRequest) -> Form:
    return request.param


@pytest.fixture(scope="session")
def recording(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """Eight frames that carry their time."""
    folder = tmp_path_factory.mktemp("recording")
    dump = PLAIN.make(folder / "dump.raw", 8)
    tool("record", dump, *CAMERA, "-o", folder / "run.krt")
    return folder / "run.krt"
