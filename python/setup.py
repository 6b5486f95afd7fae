"""Builds the package `ksv`: the library it stands on, the module that calls it, and both in one wheel.

What is not said here stands in pyproject.toml. KSV_PREFIX names an installation of the library (components
runtime and data) that is taken as it is; without it the library is built by CMake.
"""
from __future__ import annotations

import os
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext
from setuptools.command.sdist import sdist

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE / "building"))
import library  # noqa: E402
import module  # noqa: E402

SOURCES = library.sources_beside(HERE)


class BuildWithLibrary(build_ext):
    """Puts the shared libraries and the packed charsets beside the module."""

    def run(self) -> None:
        scratch = Path(self.build_temp).resolve()
        prefix = os.environ.get("KSV_PREFIX")
        installed = Path(prefix) if prefix else library.build(SOURCES, scratch)
        place = Path(self.build_lib) / "ksv"
        if self.inplace:
            place = HERE / "src" / "ksv"
        library.copy_runtime(installed, place)
        (extension,) = self.extensions
        extension.sources = [module.write_source(SOURCES / "include", HERE / "native", scratch),
                             *(f"native/{part}.c" for part in module.PARTS)]
        extension.include_dirs = [str(SOURCES / "include"), str(HERE / "native")]
        extension.library_dirs = [str(library.link_directory(installed, scratch))]
        super().run()


class SourcesOfLibrary(sdist):
    """An archive from which everything can be built: it has the sources of the library as well."""

    def make_release_tree(self, base_dir: str, files: list[str]) -> None:
        super().make_release_tree(base_dir, files)
        library.copy_sources(SOURCES, Path(base_dir) / library.SOURCES_IN_ARCHIVE)


extension = Extension("ksv._native", sources=["native/column.c"], libraries=["ksv"],
                      runtime_library_dirs=[] if sys.platform == "win32" else ["$ORIGIN"],
                      define_macros=[("Py_LIMITED_API", "0x03090000")], py_limited_api=True)
setup(version=library.version(SOURCES), ext_modules=[extension],
      cmdclass={"build_ext": BuildWithLibrary, "sdist": SourcesOfLibrary},
      options={"bdist_wheel": {"py_limited_api": "cp39"}})
