"""Manual pages in roff, as man and mandoc read them."""

from __future__ import annotations

import re
import textwrap
from collections.abc import Iterable, Iterator

_INLINE = re.compile(r"`([^`]+)`|\*\*([^*]+)\*\*|\*([^*\s][^*]*)\*|\[([^\]]+)\]\([^)]+\)")


def escaped(text: str) -> str:
    """Text in which roff finds no commands."""
    plain = text.replace("\\", "\\e")
    return "".join(sign if ord(sign) < 0x80 else f"\\[u{ord(sign):04X}]" for sign in plain)


def literal(text: str) -> str:
    """The same of what is typed: its hyphens, quotes and accents are those of ASCII."""
    return (escaped(text).replace("-", "\\-").replace("'", "\\(aq").replace("`", "\\(ga")
            .replace("^", "\\(ha").replace("~", "\\(ti"))


def bold(text: str) -> str:
    return f"\\fB{literal(text)}\\fR"


def italic(text: str) -> str:
    return f"\\fI{literal(text)}\\fR"


def inline(text: str) -> str:
    """Text with `code`, **bold**, *italic* and [links](to) in it."""
    result, at = "", 0
    for found in _INLINE.finditer(text):
        result += escaped(text[at:found.start()])
        code, strong, slanted, link = found.groups()
        if code or strong:
            result += bold(code or strong)
        else:
            result += italic(slanted) if slanted else escaped(link)
        at = found.end()
    return result + escaped(text[at:])


def _guarded(line: str) -> str:
    return "\\&" + line if line.startswith((".", "'", " ")) else line


class Page:
    """The lines of a manual page, in the order in which it is read. Text is in roff already."""

    def __init__(self, name: str, section: int, date: str, source: str, manual: str) -> None:
        self.name, self.section = name, section
        self._lines = [".\\\" Made from the program's own texts; changes here are lost.",
                       f'.TH {name.upper()} {section} "{date}" "{source}" "{manual}"']

    def heading(self, title: str) -> None:
        self._lines.append(f".SH {title}")

    def subheading(self, title: str) -> None:
        self._lines.append(f'.SS "{title}"')

    def paragraph(self, text: str) -> None:
        if not self._lines[-1].startswith((".SH", ".SS", ".TP", ".RS")):
            self._lines.append(".PP")
        self.lines(text)

    def lines(self, text: str) -> None:
        """Goes on with the paragraph."""
        self._lines += map(_guarded, textwrap.wrap(text, width=78, break_long_words=False,
                                                   break_on_hyphens=False))

    def line_break(self) -> None:
        self._lines.append(".br")

    def tagged(self, tag: str, text: str) -> None:
        self._lines += [".TP", _guarded(tag)]
        self.lines(text)

    def bullet(self, text: str) -> None:
        self._lines += [".IP \\(bu 2"]
        self.lines(text)

    def verbatim(self, lines: Iterable[str], indent: int = 4) -> None:
        """What is typed or shown as it stands."""
        self._lines += [".PP"] if not self._lines[-1].startswith((".SH", ".SS")) else []
        self._lines += [f".RS {indent}"] if indent else []
        self._lines += [".nf", *(_guarded(literal(line)) for line in lines), ".fi"]
        self._lines += [".RE"] if indent else []

    def text(self) -> str:
        return "\n".join(self._lines) + "\n"


def blocks(lines: Iterable[str]) -> Iterator[list[str]]:
    """Lines that no empty one parts; code keeps its empty lines."""
    block: list[str] = []
    waiting = 0
    for line in lines:
        if not line.strip():
            waiting += 1
            continue
        goes_on = not waiting or (block and is_code(block[0]) and is_code(line))
        if block and not goes_on:
            yield block
            block = []
        block += [""] * (waiting if block else 0) + [line.rstrip()]
        waiting = 0
    if block:
        yield block


def is_code(line: str) -> bool:
    return line.startswith("    ")


def add_markdown(page: Page, text: str) -> None:
    """Paragraphs, code that is set in by four blanks, bullets, and terms with a line
    ":   definition" below each."""
    for block in blocks(text.split("\n")):
        if is_code(block[0]):
            page.verbatim(line[4:] for line in block)
        elif len(block) > 1 and block[1].startswith(":   "):
            page.tagged(inline(block[0]),
                        inline("\n".join([block[1][4:], *(line.strip() for line in block[2:])])))
        elif block[0].startswith("- "):
            for item in "\n".join(block)[2:].split("\n- "):
                page.bullet(inline(item))
        else:
            page.paragraph(inline("\n".join(block)))
