"""Reads a header of the library as the declarations that cffi wants: without comments, directives of the
preprocessor, and the marks of exported functions."""
from __future__ import annotations

import re
from pathlib import Path

COMMENT = re.compile(r"/\*.*?\*/|//[^\n]*", re.DOTALL)
CONTINUED = re.compile(r"\\\n")
CONSTANT = re.compile(r"^#define (KSV_\w+) (?:UINT32_C\(|UINT(?:32|64)_MAX|[0-9(])", re.MULTILINE)
DIRECTIVE = re.compile(r"^[ \t]*#.*$", re.MULTILINE)
MARKS = re.compile(r"^KSV_EXTERN_C_(?:BEGIN|END)$|\bKSV_API\b *", re.MULTILINE)


def declarations(header: Path) -> str:
    """Values of constants are left to the compiler."""
    text = CONTINUED.sub(" ", COMMENT.sub("", header.read_text(encoding="utf-8")))
    constants = [f"#define {name} ..." for name in CONSTANT.findall(text)]
    body = MARKS.sub("", DIRECTIVE.sub("", text))
    lines = [line.rstrip() for line in body.splitlines() if line.strip()]
    return "\n".join([*constants, *lines]) + "\n"
