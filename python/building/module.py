"""Writes the C source of the module `ksv._native`."""
from __future__ import annotations

from pathlib import Path

from cffi import FFI

from declarations import declarations

# What the package itself has in C: each a header and a source.
PARTS = ("column", "room")
# What the library asks while it converts, answered by ksv._ask.
CALLBACK = """
extern "Python" int32_t ksv_python_ask(void* context, const ksv_problem* problem,
                                       const char** text, size_t* length);
"""


def write_source(headers: Path, native: Path, scratch: Path) -> str:
    builder = FFI()
    parts = [native / f"{part}.h" for part in PARTS]
    builder.cdef("".join(map(declarations, [headers / "ksv.h", *parts])) + CALLBACK)
    builder.set_source("ksv._native", "".join(f'#include "{part.name}"\n' for part in parts),
                       py_limited_api=True)
    scratch.mkdir(parents=True, exist_ok=True)
    path = scratch / "_native.c"
    builder.emit_c_code(str(path))
    return str(path)
