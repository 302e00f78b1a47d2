"""Builds the native module of the Python package through the project's
CMake and puts it, with the libraries it loads, beside the package's Python
files. pyproject.toml holds everything else.

    /usr/bin/python3 -m venv --system-site-packages DIR   # Debian 12: README
    DIR/bin/python -m pip install . --no-build-isolation --no-index
"""
import glob
import os
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = os.path.dirname(os.path.abspath(__file__))


class CMakeExtension(Extension):
    def __init__(self, name):
        super().__init__(name, sources=[])


class CMakeBuild(build_ext):
    def build_extension(self, ext):
        target = os.path.dirname(os.path.abspath(self.get_ext_fullpath(ext.name)))
        build = os.path.abspath(os.path.join(self.build_temp, "cmake"))
        configure = ["cmake", "-S", HERE, "-B", build, "-DCMAKE_BUILD_TYPE=Release",
                     "-DQUARL_BUILD_TESTS=OFF", "-DQUARL_BUILD_APPS=OFF",
                     "-DQUARL_BUILD_EXAMPLES=OFF", "-DQUARL_INSTALL=OFF", "-DQUARL_PYTHON=ON",
                     f"-DPython3_EXECUTABLE={sys.executable}",
                     # The module and the libraries it loads sit in one folder.
                     "-DCMAKE_BUILD_WITH_INSTALL_RPATH=ON", "-DCMAKE_INSTALL_RPATH=$ORIGIN"]
        if shutil.which("ninja"):
            configure += ["-G", "Ninja"]
        # The module links the catalog library (catalog/, when SQLite is
        # found) without the programs; only the module and what it needs
        # are built.
        subprocess.run(configure, check=True)
        subprocess.run(["cmake", "--build", build, "--target", "_quarl"], check=True)
        os.makedirs(target, exist_ok=True)
        built = glob.glob(os.path.join(build, "python", "quarl", "_quarl*.so"))
        # The libraries by the names the module asks for (their sonames),
        # as CMake lists them.
        with open(os.path.join(build, "python", "libraries.txt"), encoding="utf-8") as listing:
            libraries = listing.read().split()
        if len(built) != 1:
            raise RuntimeError(f"the native module was not built in {build}")
        shutil.copy2(built[0], self.get_ext_fullpath(ext.name))
        for library in libraries:
            shutil.copy2(library, os.path.join(target, os.path.basename(library)))


setup(ext_modules=[CMakeExtension("quarl._quarl")], cmdclass={"build_ext": CMakeBuild})
