"""A wheel of the package with the libraries and the program that decodes: CMake builds, or built already, and installs
them into it. OVIX_BUILD_DIR names a build tree that is there."""

import os
import re
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = Path(__file__).resolve().parent.parent


class CMakeBuild(build_ext):
    def run(self) -> None:
        tree = os.environ.get("OVIX_BUILD_DIR") or self.configured()
        install = ["cmake", "--install", tree, "--component", "python", "--prefix", str(Path(self.build_lib).resolve())]
        subprocess.run(install, check=True)

    def configured(self) -> str:
        tree = str(Path(self.build_temp).resolve())
        options = ["-DCMAKE_BUILD_TYPE=Release", "-DOVIX_PYTHON=ON", f"-DPython_EXECUTABLE={sys.executable}"]
        options += [f"-DOVIX_{part}=OFF" for part in ("TOOL", "TESTS", "BENCH")]
        subprocess.run(["cmake", "-S", str(ROOT), "-B", tree, "-G", "Ninja", *options], check=True)
        subprocess.run(["cmake", "--build", tree, "--target", "ovix_python", "ovix_decode"], check=True)
        return tree


version = re.search(r"project\(ovix VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text())
assert version
setup(version=version[1], ext_modules=[Extension("ovix._core", [])], cmdclass={"build_ext": CMakeBuild})
