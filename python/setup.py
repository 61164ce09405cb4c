"""Builds the wheel of the package; CMake builds its compiled part.

VORN_BUILD names a build folder with VORN_PYTHON to take it from, absolute or from the root of the sources; without it
one is made in build/wheel.
"""

import os
import re
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent
PARTS = ROOT / "build" / "wheel-parts"  # nothing is left in the sources


class CMakeBuild(build_ext):
    """The one extension module, from the targets of CMake."""

    def build_extension(self, ext: Extension) -> None:
        build = ROOT / os.environ.get("VORN_BUILD", "build/wheel")
        if not (build / "CMakeCache.txt").exists():
            subprocess.run(
                ["cmake", "-S", ROOT, "-B", build, "-DCMAKE_BUILD_TYPE=Release", "-DBUILD_TESTING=OFF",
                 "-DVORN_PYTHON=ON", "-DVORN_PROGRAM=OFF", "-DVORN_SHARED=OFF", f"-DPython_EXECUTABLE={sys.executable}"],
                check=True,
            )  # fmt: skip
        subprocess.run(["cmake", "--build", build, "--target", "vorn-python", "-j2"], check=True)
        target = Path(self.get_ext_fullpath(ext.name))
        target.parent.mkdir(parents=True, exist_ok=True)
        self.copy_file(str(build / "python" / "vorn" / target.name), str(target))


version = re.search(r"^project\(vorn VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text(), re.MULTILINE)
assert version
PARTS.mkdir(parents=True, exist_ok=True)
setup(
    name="vorn",
    version=version.group(1),
    description="Adjustment of survey and industrial-metrology networks",
    license="MIT",
    packages=["vorn"],
    package_data={"vorn": ["py.typed", "*.pyi"]},
    ext_modules=[Extension("vorn._vorn", [])],
    cmdclass={"build_ext": CMakeBuild},
    python_requires=">=3.9",
    install_requires=["numpy"],
    zip_safe=False,
    options={"build": {"build_base": str(PARTS)}, "egg_info": {"egg_base": str(PARTS)}},
)
