#!/usr/bin/env python3
"""Shows Doxygen the comments of the public headers, which are written for readers of C.

The first comment of a header belongs to the file, one that begins with "----" to the
section that it opens, any other that begins a line to the declarations below it up to
an empty line, one behind a field or an enumerator to that. Inside a comment, indented
lines of a name, blanks and a text describe parameters; a paragraph that is indented
further is code. Every line stays where it is, so that warnings name the right one.
"""

from __future__ import annotations

import re
import sys
from collections.abc import Iterator
from pathlib import Path

EXPORT = "KSV_API "
END_OF_DECLARATIONS = "KSV_EXTERN_C_END"
PARAMETER = re.compile(r" {2}([A-Za-z_]\w*) {2,}(\S.*)")
SECTION = re.compile(r"---- (.*?)\.? ----")
FUNCTION = re.compile(r"(\w+)\(")
TRAILING = re.compile(r"(.*\S)\s+/\* (.*) \*/")


def escaped(text: str) -> str:
    """Text in which Doxygen finds no commands; between quotation marks it looks for none."""
    return re.sub(r'("[^"]*")|([\\@%#<>&$~])',
                  lambda match: match[1] or f"\\{match[2]}", text)


def body_of(comment: list[str]) -> list[str]:
    """The lines of a comment without its signs, indented by what they have beyond one blank."""
    text = "\n".join(comment).removeprefix("/*").removesuffix("*/")
    first, *rest = text.split("\n")
    return [first.strip()] + [re.sub(r"^ \* ?", "", line).rstrip() for line in rest]


def with_commands(lines: list[str]) -> Iterator[str]:
    """The lines of a comment with Doxygen's commands in them."""
    in_code = False
    previous = ""
    for line in lines:
        was_code = in_code
        in_code = line.startswith("    ") and (was_code or not previous)
        if in_code:
            yield line if was_code else f"@code{{.c}}{line}"
        else:
            parameter = PARAMETER.fullmatch(line)
            text = f"@param {parameter[1]} {escaped(parameter[2])}" if parameter else escaped(line)
            yield f"@endcode {text}" if was_code else text
        previous = line


def wrapped(lines: list[str], opening: str = "", closing: str = "") -> list[str]:
    """Lines as a comment for Doxygen."""
    result = list(lines)
    result[0] = f"/** {opening}{result[0]}"
    result[-1] += f" */{closing}"
    return result


class Filter:
    """Goes through the lines of one header."""

    def __init__(self, lines: list[str]) -> None:
        self._lines = lines
        self._at = 0
        self._section_open = False
        self._comment_seen = False
        self._described = ""  # the first function below a comment, until an empty line

    def filtered(self) -> Iterator[str]:
        """The header for Doxygen."""
        while self._at < len(self._lines):
            if self._lines[self._at].startswith("/*"):
                yield from self._comment()
            else:
                yield self._code(self._lines[self._at])
                self._at += 1

    def _comment(self) -> list[str]:
        start = self._at
        while not self._lines[self._at].endswith("*/"):
            self._at += 1
        self._at += 1
        self._described = ""
        body = body_of(self._lines[start:self._at])
        if not self._comment_seen:
            self._comment_seen = True
            return wrapped([re.sub(r"^\w+\.h : ", "", line) for line in with_commands(body)],
                           "@file ")
        section = SECTION.match(body[0])
        if section:
            end = "/** @} */ " if self._section_open else ""
            self._section_open = True
            lines = wrapped([f"@name {section[1]}"] + list(with_commands(body[1:])), "",
                            " /** @{ */")
            return [end + lines[0]] + lines[1:]
        return wrapped(list(with_commands(body)))

    def _code(self, line: str) -> str:
        if line == END_OF_DECLARATIONS:
            return "/** @} */" if self._section_open else ""
        if line.startswith(("#", "KSV_EXTERN_C")):
            return ""
        if not line:
            self._described = ""
        trailing = TRAILING.fullmatch(line)
        if trailing:
            line = f"{trailing[1]} /**< {escaped(trailing[2])} */"
        if not line.startswith(EXPORT):
            return line
        line = line.removeprefix(EXPORT)
        function = FUNCTION.search(line)
        if not self._described and function:
            self._described = function[1]
            return line
        return f"/** @copydoc {self._described} */ {line}"


def main() -> None:
    """Filters the header named on the command line."""
    path = Path(sys.argv[1])
    lines = path.read_text(encoding="utf-8").splitlines()
    print("\n".join(Filter(lines).filtered()))


if __name__ == "__main__":
    main()
