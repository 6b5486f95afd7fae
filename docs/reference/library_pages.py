#!/usr/bin/env python3
"""Makes the manual pages of the library: one of all, and one of each header, from the comments
of the headers themselves.

The examples are the programs of docs/examples/.

    library_pages.py PROJECT VERSION DIRECTORY
"""

from __future__ import annotations

import re
import sys
from collections.abc import Iterator
from dataclasses import dataclass, field
from pathlib import Path

import roff
from command_pages import Texts
from header_filter import PARAMETER, SECTION, body_of

EXPORT = "KSV_API "
CONVENTIONS = "ksv_api"
FUNCTION = re.compile(r"(\w+)\(")
FILE_COMMENT = re.compile(r"(\w+)\.h : (.*)")
# Lines of a header that tell a reader nothing.
LAYOUT = ("#include", "#ifndef KSV_", "#define KSV_API_H", "#endif", "#pragma", "KSV_EXTERN_C")
EXAMPLES = {"ksv_cconv": "conversion", "ksv_cut": "cutting", "ksv_detect": "detection",
            "ksv_file": "files", "ksv_log": "log", "ksv_memory": "memory", "ksv_ole": "documents",
            "ksv_path": "paths", "ksv_sjis": "mapping", "ksv_ucs2": "strings",
            "ksv_comm": "conversion", "ksv": "libksv"}
# Headers of another library than most.
LIBRARIES = {"ksv": "ksv"}
ITEM = re.compile(r" *(?:-|\d+\.) ")


@dataclass
class Entry:
    """Declarations that stand together, and the comment above them. Without declarations: what
    opens a section."""
    comment: list[str]
    code: list[str] = field(default_factory=list)
    section: str = ""

    def functions(self) -> list[str]:
        text = "\n".join(self.code)
        return [FUNCTION.search(part)[1] for part in text.split(EXPORT)[1:]]


class Header:
    """What a header tells its readers."""

    def __init__(self, file: Path) -> None:
        self.name = file.stem
        self._guard = f"#define {file.stem.upper()}_H"
        self._lines = file.read_text(encoding="utf-8").splitlines()
        entries = list(self._entries())
        first = entries.pop(0)
        opening, *self.description = first.comment
        self.summary = FILE_COMMENT.fullmatch(opening)[2]
        # The summary may take several lines, up to an empty one.
        while self.description and self.description[0]:
            self.summary += " " + self.description.pop(0)
        self.summary = self.summary.rstrip(".")
        self.entries = [entry for entry in [Entry([], first.code), *entries]
                        if entry.code or entry.section]

    def functions(self) -> list[str]:
        return [name for entry in self.entries for name in entry.functions()]

    def _entries(self) -> Iterator[Entry]:
        entry = None
        at = 0
        while at < len(self._lines):
            line = self._lines[at]
            if line.startswith("/*"):
                if entry:
                    yield entry
                end = at
                while not self._lines[end].endswith("*/"):
                    end += 1
                entry = self._commented(body_of(self._lines[at:end + 1]))
                at = end
            elif line and not self._is_layout(line):
                entry = entry or Entry([])
                entry.code.append(line)
            elif not line and entry and entry.code:
                # What stands further below has a comment of its own, or none.
                if self._continues(at):
                    entry.code.append("")
                else:
                    yield entry
                    entry = None
            at += 1
        if entry:
            yield entry

    def _is_layout(self, line: str) -> bool:
        return line.startswith(LAYOUT) or line == self._guard

    def _continues(self, at: int) -> bool:
        following = next((line for line in self._lines[at:] if line), "")
        return bool(following) and following[0] in " }"

    @staticmethod
    def _commented(body: list[str]) -> Entry:
        # The first comment of a file begins with an empty line.
        while body and not body[0]:
            body.pop(0)
        section = SECTION.match(body[0])
        if section:
            return Entry(body[1:], section=section[1])
        return Entry(body)


def trimmed(lines: list[str]) -> list[str]:
    while lines and not lines[-1].strip():
        lines = lines[:-1]
    return lines


def add_comment(page: roff.Page, lines: list[str]) -> None:
    """Prose, "  name   meaning" of parameters, "  - items" and anything else that is set in, which
    is shown as it stands."""
    for block in roff.blocks(lines):
        if PARAMETER.fullmatch(block[0]):
            add_parameters(page, block)
        elif ITEM.match(block[0]):
            add_items(page, block)
        elif block[0].startswith("  "):
            indent = min(len(line) - len(line.lstrip()) for line in block if line)
            page.verbatim(line[indent:] for line in block)
        else:
            page.paragraph(shown("\n".join(block)))


def shown(text: str) -> str:
    """Functions, constants and files of the interface stand out."""
    result, at = "", 0
    for found in re.finditer(r"\b(?:KSV_\w+(?:\.\.\.)?|ksv_\w+(?:\.h)?|cconv\w+)\b", text):
        result += roff.escaped(text[at:found.start()]) + roff.bold(found[0])
        at = found.end()
    return result + roff.escaped(text[at:])


def add_parameters(page: roff.Page, block: list[str]) -> None:
    name, meaning = "", []
    for line in [*block, ""]:
        parameter = PARAMETER.fullmatch(line)
        if parameter or not line:
            if name:
                page.tagged(roff.italic(name), shown("\n".join(meaning)))
            if parameter:
                name, meaning = parameter[1], [parameter[2]]
        else:
            meaning.append(line.strip())


def add_items(page: roff.Page, block: list[str]) -> None:
    items: list[list[str]] = []
    for line in block:
        if ITEM.match(line):
            items.append([ITEM.sub("", line, count=1)])
        else:
            items[-1].append(line.strip())
    for item in items:
        page.bullet(shown("\n".join(item)))


def declaration(code: list[str]) -> list[str]:
    return [line.removeprefix(EXPORT) for line in trimmed(code)]


class Manual:
    """All pages of the library."""

    def __init__(self, project: Path, version: str, directory: Path) -> None:
        self._headers = [Header(file) for file in sorted((project / "include").glob("*.h"))]
        self._examples = project / "docs" / "examples"
        self._families = [header for header in self._headers if header.name != CONVENTIONS]
        self._version = version
        self._directory = directory
        self._date = Texts("ksv_comm").shared("date")

    def write(self) -> None:
        self._write_overview()
        for header in self._families:
            self._write_header(header)

    def _begin(self, names: list[str], summary: str) -> roff.Page:
        library = LIBRARIES.get(names[0], "ksv_comm")
        page = roff.Page(names[0], 3, self._date, f"ksv_comm {self._version}",
                         f"The library {library}")
        page.heading("NAME")
        page.lines(",\n".join(names) + f" \\- {roff.escaped(summary)}")
        return page

    def _end(self, page: roff.Page) -> None:
        if page.name in EXAMPLES:
            page.heading("EXAMPLES")
            example = self._examples / f"{EXAMPLES[page.name]}.c"
            page.verbatim(example.read_text(encoding="utf-8").splitlines(), indent=0)
        page.heading("SEE ALSO")
        names = [("ksv_comm", 3)] + [(header.name, 3) for header in self._families] + [("ksv", 1)]
        page.paragraph(",\n".join(f"{roff.bold(name)}({section})" for name, section in names
                                  if (name, section) != (page.name, page.section)))
        (self._directory / f"{page.name}.{page.section}").write_text(page.text(), "utf-8")

    def _write_overview(self) -> None:
        texts = Texts("ksv_comm")
        conventions = next(header for header in self._headers if header.name == CONVENTIONS)
        page = self._begin(["ksv_comm"], texts.get("NAME").strip())
        page.heading("SYNOPSIS")
        roff.add_markdown(page, texts.get("SYNOPSIS"))
        page.heading("DESCRIPTION")
        roff.add_markdown(page, texts.get("DESCRIPTION"))
        page.subheading("Headers")
        for header in self._families:
            page.tagged(roff.bold(f"{header.name}.h"),
                        roff.escaped(header.summary[0].upper() + header.summary[1:]) +
                        f". See {roff.bold(header.name)}(3).")
        page.subheading("What holds for all of them")
        add_comment(page, conventions.description)
        for heading in ("ERRORS", "ENVIRONMENT", "FILES"):
            page.heading(heading)
            roff.add_markdown(page, texts.get(heading))
        self._end(page)

    def _write_header(self, header: Header) -> None:
        page = self._begin([header.name, *header.functions()], header.summary)
        page.heading("SYNOPSIS")
        page.lines(roff.bold(f"#include <{header.name}.h>"))
        library = roff.bold(f"-l{LIBRARIES.get(header.name, 'ksv_comm')}")
        page.paragraph(f"Link with {library}, as {roff.bold('ksv_comm')}(3) shows.")
        page.heading("DESCRIPTION")
        add_comment(page, header.description)
        for entry in header.entries:
            self._add_entry(page, entry)
        self._end(page)

    @staticmethod
    def _add_entry(page: roff.Page, entry: Entry) -> None:
        if entry.section:
            page.subheading(entry.section)
        if entry.code:
            names = entry.functions()
            if names:
                page.subheading(", ".join(f"{name}()" for name in names))
            page.verbatim(declaration(entry.code), indent=0)
        add_comment(page, entry.comment)


def main() -> None:
    project, version, directory = Path(sys.argv[1]), sys.argv[2], Path(sys.argv[3])
    directory.mkdir(parents=True, exist_ok=True)
    Manual(project, version, directory).write()


if __name__ == "__main__":
    main()
