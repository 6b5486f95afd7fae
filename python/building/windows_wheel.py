"""Puts the wheel for Windows together, of the one for Linux and of the libraries that MinGW has built. It has not been run by
Python on Windows here: what is checked is that the module asks for nothing but the stable interface, the library and the system.

    windows_wheel.py WHEEL_FOR_LINUX PREFIX_FOR_WINDOWS SCRATCH FOLDER
"""
from __future__ import annotations

import re
import shutil
import subprocess
import sys
import sysconfig
from pathlib import Path

import library
import module

COMPILER, DLLTOOL = "x86_64-w64-mingw32-gcc", "x86_64-w64-mingw32-dlltool"
OBJDUMP, NM = "x86_64-w64-mingw32-objdump", "x86_64-w64-mingw32-nm"
HERE = Path(__file__).resolve().parent
PACKAGE = HERE.parent
TAG = "cp39-abi3-win_amd64"
EXPECTED = re.compile(r"^(python3|ksv|kernel32|msvcrt|ucrtbase|api-ms-win-[\w-]+)\.dll$", re.IGNORECASE)


def output_of(*command: object) -> str:
    return subprocess.run(list(map(str, command)), stdout=subprocess.PIPE, text=True, check=True).stdout


def compile_module(sources: Path, scratch: Path) -> list[Path]:
    headers, native = sources / "include", PACKAGE / "native"
    module.write_source(headers, native, scratch)
    objects = []
    for source in [scratch / "_native.c", *(native / f"{part}.c" for part in module.PARTS)]:
        objects.append(scratch / f"{source.stem}.o")
        output_of(COMPILER, "-O2", "-c", "-DPy_LIMITED_API=0x03090000", "-include", HERE / "windows_config.h",
                  f"-I{sysconfig.get_path('include')}", f"-I{headers}", f"-I{native}", source, "-o", objects[-1])
    return objects


def import_library(objects: list[Path], scratch: Path) -> Path:
    """Of python3.dll, which has the stable interface, as far as the module asks for it."""
    undefined = re.findall(r"^ +U (?:__imp_)?(_?Py\w+)$", output_of(NM, "--undefined-only", *objects), re.MULTILINE)
    wanted = set(undefined)
    data = {name for name in wanted if name.startswith("PyExc_") or name.endswith(("_Type", "Struct"))}
    listed = [f"  {name}{' DATA' if name in data else ''}\n" for name in sorted(wanted)]
    definitions, made = scratch / "python3.def", scratch / "libpython3.a"
    definitions.write_text("LIBRARY python3.dll\nEXPORTS\n" + "".join(listed), encoding="ascii")
    output_of(DLLTOOL, "-d", definitions, "-l", made)
    return made


def link(objects: list[Path], prefix: Path, scratch: Path) -> Path:
    linked = scratch / "_native.pyd"
    output_of(COMPILER, "-shared", "-s", "-static-libgcc", "-o", linked, *objects, prefix / "bin" / "ksv.dll",
              import_library(objects, scratch))
    needed = re.findall(r"DLL Name: (\S+)", output_of(OBJDUMP, "-p", linked))
    strange = [name for name in needed if not EXPECTED.match(name)]
    if strange:
        raise SystemExit(f"{linked.name} needs {', '.join(strange)}")
    print(f"{linked.name} needs {', '.join(sorted(needed))}")
    return linked


def unpacked(wheel: Path, scratch: Path) -> Path:
    shutil.rmtree(scratch / "wheel", ignore_errors=True)
    output_of(sys.executable, "-m", "wheel", "unpack", "--dest", scratch / "wheel", wheel)
    (folder,) = (scratch / "wheel").iterdir()
    return folder


def main() -> None:
    wheel, prefix, scratch, target = (Path(name).resolve() for name in sys.argv[1:])
    scratch.mkdir(parents=True, exist_ok=True)
    linked = link(compile_module(library.sources_beside(PACKAGE), scratch), prefix, scratch)
    folder = unpacked(wheel, scratch)
    for shared in (folder / "ksv").glob("*.so*"):
        shared.unlink()
    shutil.copyfile(linked, folder / "ksv" / linked.name)
    library.copy_runtime(prefix, folder / "ksv")
    (described,) = folder.glob("*.dist-info/WHEEL")
    text = re.sub(r"^Tag: .*\n", "", described.read_text(encoding="utf-8"), flags=re.MULTILINE)
    described.write_text(text.rstrip("\n") + f"\nTag: {TAG}\n", encoding="utf-8")
    print(output_of(sys.executable, "-m", "wheel", "pack", "--dest-dir", target, folder), end="")


if __name__ == "__main__":
    main()
