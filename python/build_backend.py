"""The build backend of the Python package: setuptools', asking for CMake,
Ninja and pybind11 only where the machine does not already have them.

A machine with the distribution's packages (cmake, ninja-build,
pybind11-dev) builds without a package index, also with
`pip install --no-build-isolation .` and `python3 -m build --no-isolation`,
which check the requirements this returns; elsewhere pip fetches them into
the isolated build environment.
"""

import os
import shutil
import subprocess
import sys

from setuptools import build_meta as _setuptools
from setuptools.build_meta import *  # noqa: F401,F403

# The oldest CMake the tree's CMakeLists.txt accepts.
CMAKE_MINIMUM = (3, 22)


def _cmake_is_recent_enough() -> bool:
    cmake = shutil.which("cmake")
    if cmake is None:
        return False
    try:
        first_line = subprocess.run([cmake, "--version"], capture_output=True, text=True,
                                    check=True).stdout.splitlines()[0]
        version = tuple(int(part) for part in first_line.split()[-1].split(".")[:2])
    except (OSError, subprocess.CalledProcessError, ValueError, IndexError):
        return False
    return version >= CMAKE_MINIMUM


def _pybind11_is_installed() -> bool:
    """pybind11's CMake package, from Python or where CMake looks for it."""
    try:
        import pybind11  # noqa: F401
        return True
    except ImportError:
        pass
    prefixes = os.environ.get("CMAKE_PREFIX_PATH", "").split(os.pathsep)
    prefixes += [sys.prefix, "/usr/local", "/usr"]
    return any(
        os.path.exists(os.path.join(prefix, where, "pybind11", "pybind11Config.cmake"))
        for prefix in prefixes if prefix
        for where in ("lib/cmake", "lib64/cmake", "share/cmake"))


def _missing_tools() -> "list[str]":
    missing = []
    if not _cmake_is_recent_enough():
        missing.append("cmake>=%d.%d" % CMAKE_MINIMUM)
    if shutil.which("ninja") is None:
        missing.append("ninja")
    if not _pybind11_is_installed():
        missing.append("pybind11>=2.6")
    return missing


def get_requires_for_build_wheel(config_settings=None):  # type: ignore[no-untyped-def]
    return _setuptools.get_requires_for_build_wheel(config_settings) + _missing_tools()


def get_requires_for_build_editable(config_settings=None):  # type: ignore[no-untyped-def]
    return _setuptools.get_requires_for_build_editable(config_settings) + _missing_tools()
