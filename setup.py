"""Builds the extension module krvalueutils._krvalueutils with CMake, the
C++ libraries linked into it statically, so that the installed package needs
nothing else of this tree. The metadata is in pyproject.toml.

CMake configures only the libraries and the Python package (no tests, tool,
benchmarks or sanitizers), in Release unless KRVALUEUTILS_BUILD_TYPE says
otherwise, with Ninja when it is there; CMAKE_ARGS adds options.
"""

import os
import shlex
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = Path(__file__).resolve().parent


class CMakeExtension(Extension):
    def __init__(self, name: str) -> None:
        super().__init__(name, sources=[])


class CMakeBuild(build_ext):
    def build_extension(self, ext: Extension) -> None:
        build_dir = Path(self.build_temp).resolve() / "cmake"
        configure = [
            "cmake", "-S", str(ROOT), "-B", str(build_dir),
            f"-DCMAKE_BUILD_TYPE={os.environ.get('KRVALUEUTILS_BUILD_TYPE', 'Release')}",
            f"-DPython3_EXECUTABLE={sys.executable}",
            "-DBUILD_SHARED_LIBS=OFF",
            "-DKRVALUEUTILS_PYTHON=ON",
            "-DKRVALUEUTILS_BUILD_TESTS=OFF",
            "-DKRVALUEUTILS_BUILD_TOOLS=OFF",
            "-DKRVALUEUTILS_BUILD_BENCH=OFF",
            "-DKRVALUEUTILS_BUILD_FUZZ=OFF",
            "-DKRVALUEUTILS_INSTALL=OFF",
        ]
        if shutil.which("ninja"):
            configure += ["-G", "Ninja"]
        try:
            import pybind11  # a pybind11 from pip, in an isolated build
            configure.append(f"-Dpybind11_DIR={pybind11.get_cmake_dir()}")
        except ImportError:
            pass  # the system's pybind11-dev
        configure += shlex.split(os.environ.get("CMAKE_ARGS", ""))
        subprocess.run(configure, check=True)
        subprocess.run(["cmake", "--build", str(build_dir), "--target", "krvalueutils_python",
                        "--parallel", str(os.cpu_count() or 1)], check=True)
        built = build_dir / "python" / "krvalueutils" / Path(self.get_ext_filename(ext.name)).name
        if not built.exists():
            sys.exit(f"the CMake build did not make {built}")
        target = Path(self.get_ext_fullpath(ext.name))
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(built, target)


setup(ext_modules=[CMakeExtension("krvalueutils._krvalueutils")],
      cmdclass={"build_ext": CMakeBuild})
