#!/usr/bin/env python3
"""Makes a site of the pages of docs/, the reference of the headers and the manual pages.

    build.py PROJECT MANUAL_PAGES SITE

Needs the package python3-markdown, Doxygen and mandoc; scripts/site sees to them.
"""

from __future__ import annotations

import html
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import markdown

from links import slug

HERE = Path(__file__).resolve().parent
NAVIGATION = {
    "The command": ["docs/command.md", "docs/convert.md", "docs/mail.md"],
    "The library libksv": ["docs/libksv.md", "docs/cookbook.md"],
    "From Python": ["docs/python.md", "docs/clusters.md", "docs/python_speed.md"],
    "The library ksv_comm": ["docs/conversion.md", "docs/detection.md", "docs/documents.md",
                    "docs/cutting.md", "docs/strings.md", "docs/mapping.md", "docs/files.md",
                    "docs/paths.md", "docs/log.md", "docs/memory.md"],
    "Charsets": ["charsets/README.md", "docs/unicode.md", "docs/profiles.md",
                 "docs/properties.md", "docs/detection_accuracy.md"],
    "What it promises": ["docs/security.md", "docs/faults.md", "docs/abi.md",
                         "docs/windows.md", "docs/licences.md"],
    "How it is made": ["docs/architecture.md", "CONTRIBUTING.md", "bench/README.md",
                       "fuzz/README.md", "docs/coverage.md", "docs/mutation.md",
                       "docs/releasing.md"],
}
# Pages that others link to, and that no list names.
OTHERS = ["CHANGELOG.md", "docs/samples/README.md"]
START = "README.md"  # in whose place there is
FIRST = "index.html"
LINK = re.compile(r'(<a [^>]*href=")([^"#:]+)(#[^"]*)?"')
# Which Doxygen closes by itself.
DOXYGEN_OPENING = '<div id="top">'
# What is only of use to the scripts that Doxygen's own pages have.
LEFT_OUT = ("*.js", "*.css", "*.png", "*.svg", "*.map", "*.md5")


def title_of(text: str, name: str) -> str:
    found = re.search(r"^# (.+)$", text, re.MULTILINE)
    return found[1].replace("`", "") if found else name


class Site:
    """Puts pages of all kinds into one form."""

    def __init__(self, project: Path, manual: Path, directory: Path) -> None:
        self._project, self._manual, self._directory = project, manual, directory
        self._form = (HERE / "page.html").read_text(encoding="utf-8")
        self._version = re.search(r"VERSION ([0-9.]+)",
                                  (project / "CMakeLists.txt").read_text(encoding="utf-8").partition(
                                      "project(")[2])[1]
        listed = [page for pages in NAVIGATION.values() for page in pages] + OTHERS
        further = [str(page.relative_to(project)) for page in sorted((project / "docs").glob("*.md"))]
        self._pages = list(dict.fromkeys(listed + further))
        self._texts = {page: (project / page).read_text(encoding="utf-8") for page in self._pages}
        self._waiting: set[str] = set()  # files of the sources that pages link to

    def build(self) -> None:
        if self._directory.exists():
            shutil.rmtree(self._directory)
        self._directory.mkdir(parents=True)
        shutil.copy(HERE / "style.css", self._directory)
        for page in self._pages:
            self._write_markdown(page, self._texts[page], f"{page[:-3]}.html")
        self._write_markdown("docs/site/index.md", (HERE / "index.md").read_text(encoding="utf-8"),
                             FIRST)
        for file in sorted(self._waiting):
            self._write_source(file)
        self._write_manual()
        self._write_reference()

    def _write(self, place: str, title: str, content: str, aside: str = "") -> None:
        file = self._directory / place
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(self._filled(place, title, content, aside), encoding="utf-8")

    def _filled(self, place: str, title: str, content: str, aside: str) -> str:
        values = {"title": html.escape(title), "root": "../" * place.count("/"),
                  "content": content, "aside": aside, "version": self._version,
                  "layout": "" if aside else "wide"}
        return re.sub(r"\{(title|root|content|aside|version|layout)\}",
                      lambda name: values[name[1]], self._form)

    def _navigation(self, current: str) -> str:
        root = "../" * current.count("/")
        parts = []
        for heading, pages in NAVIGATION.items():
            items = "".join(
                f'<li><a href="{root}{page[:-3]}.html"'
                f'{" aria-current=" + chr(34) + "page" + chr(34) if page == current else ""}>'
                f"{html.escape(title_of(self._texts[page], page))}</a></li>" for page in pages)
            parts.append(f"<h2>{heading}</h2><ul>{items}</ul>")
        return f'<aside aria-label="Pages"><nav>{"".join(parts)}</nav></aside>'

    # ---- Markdown ----

    def _write_markdown(self, page: str, text: str, place: str) -> None:
        content = markdown.markdown(
            text, extensions=["tables", "fenced_code", "toc", "sane_lists", "md_in_html"],
            extension_configs={"toc": {"slugify": slug}})
        content = LINK.sub(lambda link: self._moved(link, page, place), content)
        content = re.sub(r"<table>(.*?)</table>",
                         r'<div class="scroll" tabindex="0"><table>\1</table></div>', content,
                         flags=re.DOTALL)
        content = content.replace("<pre>", '<pre tabindex="0">')
        # What is short stays in one line.
        content = re.sub(r"<code>([^<]{1,32})</code>", r'<code class="short">\1</code>', content)
        content = re.sub(r'<(h[23]) id="([^"]+)">(.*?)</\1>',
                         r'<\1 id="\2">\3<a class="anchor" href="#\2" aria-label="This section">#</a>'
                         r"</\1>", content, flags=re.DOTALL)
        title = title_of(text, page)
        if place == FIRST:
            self._write(place, title, content)
        else:
            self._write(place, f"{title} - ksv_comm", content, self._navigation(page))

    def _moved(self, link: re.Match, page: str, place: str) -> str:
        """A link to a page leads to what it has become, one to a source to a page of that."""
        target = os.path.normpath(os.path.join(os.path.dirname(page), link[2]))
        if target == START:
            moved = FIRST
        elif target in self._pages:
            moved = f"{target[:-3]}.html"
        elif (self._project / target).is_file():
            self._waiting.add(target)
            moved = f"{target}.html"
        else:
            return link[0]  # a page of the site itself, or one that the check of links finds
        return f'{link[1]}{os.path.relpath(moved, os.path.dirname(place) or ".")}{link[3] or ""}"'

    def _write_source(self, file: str) -> None:
        text = (self._project / file).read_text(encoding="utf-8", errors="replace")
        self._write(f"{file}.html", f"{file} - ksv_comm",
                    f"<h1><code>{html.escape(file)}</code></h1>\n"
                    f'<pre tabindex="0"><code>{html.escape(text)}</code></pre>',
                    self._navigation(file))

    # ---- Manual pages ----

    def _write_manual(self) -> None:
        pages = sorted(self._manual.iterdir(), key=lambda page: (page.suffix, page.stem))
        names = {page.name for page in pages}
        items = "".join(f'<li><a href="{page.name}.html">{page.stem}({page.suffix[1:]})</a></li>'
                        for page in pages)
        aside = f'<aside aria-label="Manual pages"><nav><h2>Manual pages</h2><ul>{items}</ul></nav></aside>'
        for page in pages:
            shown = subprocess.run(["mandoc", "-T", "html", "-O", "fragment", page],
                                   capture_output=True, text=True, check=True).stdout
            content = re.sub(r"<b>([\w-]+)</b>\((\d)\)",
                             lambda name: self._see(name, names), shown)
            title = f"{page.stem}({page.suffix[1:]})"
            self._write(f"manual/{page.name}.html", f"{title} - ksv_comm",
                        f'<div class="manual">{content}</div>', aside)

    @staticmethod
    def _see(name: re.Match, names: set[str]) -> str:
        page = f"{name[1]}.{name[2]}"
        return f'<a href="{page}.html">{name[1]}</a>({name[2]})' if page in names else name[0]

    # ---- The reference of the headers ----

    def _header_list(self) -> str:
        headers = sorted(header.name for header in (self._project / "include").glob("*.h"))
        places = [name.replace("_", "__").replace(".", "_8") for name in headers]  # Doxygen's
        items = "".join(f'<li><a href="{place}.html">{name}</a></li>'
                        for name, place in zip(headers, places))
        return f'<aside aria-label="Headers"><nav><h2>Headers</h2><ul>{items}</ul></nav></aside>'

    def _write_reference(self) -> None:
        directory = self._directory / "reference"
        directory.mkdir()
        form = self._filled("reference/x.html", "$title", DOXYGEN_OPENING + "\0",
                            self._header_list())
        header, footer = (part.replace("$title", "\1").replace("$", "$$").replace("\1", "$title")
                          for part in form.split("\0"))
        (directory / "header.html").write_text(header, encoding="utf-8")
        (directory / "footer.html").write_text(footer, encoding="utf-8")
        values = {"PROJECT_VERSION": self._version, "PROJECT_SOURCE_DIR": str(self._project),
                  "KSV_REFERENCE_INPUT": str(self._project / "include"),
                  "KSV_REFERENCE_DIRECTORY": str(directory), "Python3_EXECUTABLE": sys.executable}
        settings = re.sub(r"@(\w+)@", lambda name: values[name[1]],
                          (HERE.parent / "reference" / "Doxyfile.in").read_text(encoding="utf-8"))
        settings += (f'\nHTML_OUTPUT = .\nHTML_HEADER = "{directory}/header.html"\n'
                     f'HTML_FOOTER = "{directory}/footer.html"\nDISABLE_INDEX = YES\n'
                     "SEARCHENGINE = NO\nHTML_TIMESTAMP = NO\nDISABLE_INDEX = YES\n"
                     "SHOW_USED_FILES = NO\nVERBATIM_HEADERS = NO\nALPHABETICAL_INDEX = NO\n")
        subprocess.run(["doxygen", "-"], input=settings, text=True, check=True)
        for pattern in (*LEFT_OUT, "header.html", "footer.html", "reference.tag", "index.html"):
            for file in directory.glob(pattern):
                file.unlink()


def main() -> None:
    Site(*(Path(argument).resolve() for argument in sys.argv[1:4])).build()


if __name__ == "__main__":
    main()
