"""The library that the package stands on: where its sources are, how it is built, and what of it goes into a wheel."""
from __future__ import annotations

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

SOURCES_IN_ARCHIVE = "library"
# What the library is built of, as seen from the top of the project.
FOLDERS = ("cconv", "charsets", "cmake", "common", "detect", "include", "kit", "ole", "LICENSES",
           "docs/reference")
FILES = ("CMakeLists.txt", "CMakePresets.json", "LICENSE", "docs/licences.md", "docs/notices.txt")
SHARED = re.compile(r"^(lib)?ksv(_comm)?(\.so\.\d+|\.dll)$")
# Text is normalized by the archive of utf8proc where there is one, so that a wheel needs no other library.
UTF8PROC_ARCHIVES = ("/usr/lib/*/libutf8proc.a", "/usr/lib*/libutf8proc.a",
                     "/usr/local/lib/libutf8proc.a")


class LibraryError(Exception):
    """The library cannot be built or is not where it is said to be."""


def sources_beside(package: Path) -> Path:
    """In an archive they lie below the package, in the repository around it."""
    inside = package / SOURCES_IN_ARCHIVE
    return inside if inside.is_dir() else package.parent


def version(sources: Path) -> str:
    text = (sources / "CMakeLists.txt").read_text(encoding="utf-8")
    found = re.search(r"^project\(ksv_comm VERSION ([0-9.]+)", text, re.MULTILINE)
    if found is None:
        raise LibraryError(f"{sources / 'CMakeLists.txt'} names no version")
    return found[1]


def copy_sources(sources: Path, target: Path, folders: tuple[str, ...] = FOLDERS) -> None:
    """Those of the repository only, whatever else lies in its folders. Elsewhere there is nothing else."""
    if (sources / ".git").exists():
        names = subprocess.run(["git", "-C", str(sources), "ls-files", "--", *folders, *FILES],
                               stdout=subprocess.PIPE, text=True, check=True).stdout.splitlines()
    else:
        names = [str(path.relative_to(sources)) for folder in folders
                 for path in (sources / folder).rglob("*") if path.is_file()]
        names += FILES
    if len(names) <= len(FILES):
        raise LibraryError(f"{sources} has no sources of the library")
    for name in names:
        place = target / name
        place.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(sources / name, place)


def copy_package(sources: Path, target: Path) -> None:
    """The package and all that it is built of, as they lie in the repository."""
    copy_sources(sources, target, (*FOLDERS, "python"))


def _utf8proc_archive() -> list[str]:
    for pattern in UTF8PROC_ARCHIVES:
        for found in Path("/").glob(pattern.lstrip("/")):
            return [f"-DKSV_UTF8PROC={found}"]
    return []


def build(sources: Path, scratch: Path) -> Path:
    """Builds and installs it below `scratch`, and gives the prefix."""
    tree, prefix = scratch / "library", scratch / "prefix"
    options = os.environ.get("KSV_CMAKE_OPTIONS", "").split()
    subprocess.run(["cmake", "-S", str(sources), "-B", str(tree), "-DCMAKE_BUILD_TYPE=Release",
                    "-DKSV_BUILD_COMMAND=OFF", "-DKSV_BUILD_STATIC=OFF", "-DKSV_INSTALL=ON",
                    # A loader that unpacks relocations is newer than most that a wheel meets.
                    "-DKSV_LOADER_UNPACKS_RELOCATIONS=OFF", f"-DCMAKE_INSTALL_PREFIX={prefix}",
                    "-DCMAKE_INSTALL_LIBDIR=lib", *_utf8proc_archive(), *options], check=True)
    subprocess.run(["cmake", "--build", str(tree), "--parallel", str(os.cpu_count() or 1),
                    "--target", "libksv", "ksv_charset"], check=True)
    for component in ("runtime", "data", "licences"):
        subprocess.run(["cmake", "--install", str(tree), "--strip", "--component", component],
                       check=True)
    return prefix


def _runtime_files(prefix: Path) -> dict[str, Path]:
    """By the names that the loader looks for."""
    found = {}
    for folder in ("lib", "bin"):
        for path in sorted((prefix / folder).glob("*ksv*")):
            if SHARED.match(path.name):
                found[path.name] = path
    if len(found) != 2:
        raise LibraryError(f"{prefix} has not the two libraries, but {sorted(found)}")
    return found


def copy_runtime(prefix: Path, package: Path) -> None:
    """The library finds its charset directory beside itself."""
    charsets = package / "charset"
    charsets.mkdir(parents=True, exist_ok=True)
    for name, path in _runtime_files(prefix).items():
        shutil.copyfile(path, package / name)
    packed = prefix / "share" / "ksv_comm" / "charset" / "charsets.pack"
    shutil.copyfile(packed, charsets / packed.name)
    for path in (prefix / "share" / "doc").rglob("*"):
        if path.is_file():
            licences = package / "licences"
            licences.mkdir(exist_ok=True)
            shutil.copyfile(path, licences / path.name)


def link_directory(prefix: Path, scratch: Path) -> Path:
    """A folder in which `-lksv` finds the library; the component that has such a link is not needed."""
    directory = scratch / "link"
    directory.mkdir(parents=True, exist_ok=True)
    for name, path in _runtime_files(prefix).items():
        link = directory / (name.split(".so")[0] + ".so" if ".so" in name else name)
        link.unlink(missing_ok=True)
        link.symlink_to(path.resolve())
    return directory


if __name__ == "__main__":
    build(Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve())
