#!/usr/bin/env python3
"""Finds links that lead nowhere: to a file that is not there, or to a place in it that it does
not have. Links to other sites are not followed.

    links.py markdown PROJECT      the pages of the sources
    links.py html SITE             those that scripts/site has made
"""

from __future__ import annotations

import re
import subprocess
import sys
from collections.abc import Iterator
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit

FENCE = re.compile(r"^(```|~~~).*?^\1[ \t]*$", re.DOTALL | re.MULTILINE)
INLINE_CODE = re.compile(r"(`+)(?:(?!\1).)+\1")
LINK = re.compile(r"\]\(([^()\s]+)\)")
HEADING = re.compile(r"^#{1,6} +(.+?) *#*$", re.MULTILINE)


def slug(heading: str, _separator: str = "-") -> str:
    """The name of a heading's place, as the usual viewers of Markdown make it."""
    plain = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading).replace("`", "")
    return re.sub(r"[^\w\- ]", "", plain.strip().lower()).replace(" ", "-")


class Page:
    """Where a page leads, and the places that it has."""

    def __init__(self, links: list[str], places: set[str]) -> None:
        self.links, self.places = links, places


def markdown_page(file: Path) -> Page:
    text = FENCE.sub("", file.read_text(encoding="utf-8"))
    places: set[str] = set()
    for heading in HEADING.findall(text):
        name, count = slug(heading), 0
        while (f"{name}-{count}" if count else name) in places:
            count += 1
        places.add(f"{name}-{count}" if count else name)
    return Page(LINK.findall(INLINE_CODE.sub("", text)), places)


class _Collector(HTMLParser):
    def __init__(self) -> None:
        super().__init__()
        self.page = Page([], set())

    def handle_starttag(self, tag: str, attrs: list[tuple[str, str | None]]) -> None:
        named = dict(attrs)
        self.page.links += [named[name] for name in ("href", "src") if named.get(name)]
        self.page.places |= {named[name] for name in ("id", "name") if named.get(name)}


def html_page(file: Path) -> Page:
    collector = _Collector()
    collector.feed(file.read_text(encoding="utf-8"))
    return collector.page


class Checker:
    """Follows the links of pages that are read by one function."""

    def __init__(self, suffix: str, read) -> None:
        self._suffix, self._read = suffix, read
        self._pages: dict[Path, Page] = {}

    def _page(self, file: Path) -> Page:
        file = file.resolve()
        if file not in self._pages:
            self._pages[file] = self._read(file)
        return self._pages[file]

    def faults(self, files: list[Path]) -> Iterator[str]:
        for file in files:
            for link in self._page(file).links:
                reason = self._reason(file, link)
                if reason:
                    yield f"{file}: {link} {reason}"

    def _reason(self, file: Path, link: str) -> str:
        parts = urlsplit(link)
        if parts.scheme or parts.netloc:
            return ""
        target = file.parent / unquote(parts.path) if parts.path else file
        if not target.exists():
            return "is not there"
        if parts.fragment and target.suffix == self._suffix:
            if unquote(parts.fragment) not in self._page(target).places:
                return "has no such place"
        return ""


def markdown_files(project: Path) -> list[Path]:
    """Those of the sources, and none that a build has made."""
    listed = subprocess.run(["git", "-C", project, "ls-files", "--cached", "--others",
                             "--exclude-standard", "*.md"],
                            capture_output=True, text=True, check=False)
    if listed.returncode == 0:
        files = [project / name for name in listed.stdout.splitlines()]
    else:
        files = [file for file in project.rglob("*.md") if "build" not in file.parts]
    return sorted(file for file in files if file.exists())


def main() -> int:
    kind, root = sys.argv[1], Path(sys.argv[2])
    if kind == "markdown":
        files, checker = markdown_files(root), Checker(".md", markdown_page)
    else:
        files, checker = sorted(root.rglob("*.html")), Checker(".html", html_page)
    faults = list(checker.faults(files))
    print("\n".join([*faults, f"{len(files)} pages, {len(faults)} links that lead nowhere"]))
    return 1 if faults or not files else 0


if __name__ == "__main__":
    sys.exit(main())
