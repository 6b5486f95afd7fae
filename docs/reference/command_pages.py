#!/usr/bin/env python3
"""Makes the manual pages of the command: what its own option table says, and the texts of
manual/ beside it.

    command_pages.py OPTION_TABLE DIRECTORY
"""

from __future__ import annotations

import json
import re
import sys
from pathlib import Path

import roff

TEXTS = Path(__file__).resolve().parent / "manual"
HEADINGS = ("DESCRIPTION", "EXIT STATUS", "ENVIRONMENT", "FILES", "EXAMPLES", "SEE ALSO")
OTHER_HEADINGS = ("NAME", "SYNOPSIS", "ERRORS")  # of the library's page
SHARED = re.compile(r"^\{([a-z ]+)\}$", re.MULTILINE)
EXIT_STATUS = "Exit status: "


def sections_of(file: Path) -> dict[str, str]:
    """What stands behind each heading."""
    parts = re.split(r"^# (.+)$", file.read_text(encoding="utf-8"), flags=re.MULTILINE)
    if parts[0].strip():
        raise ValueError(f"{file} begins without a heading")
    return dict(zip(parts[1::2], parts[2::2]))


class Texts:
    """The texts of one page, with what is shared by several put in."""

    def __init__(self, page: str) -> None:
        self._shared = sections_of(TEXTS / "shared.md")
        self._own = sections_of(TEXTS / f"{page}.md")
        unknown = self._own.keys() - set(HEADINGS + OTHER_HEADINGS)
        if unknown:
            raise ValueError(f"{page}.md has headings that no page has: {unknown}")

    def get(self, heading: str, default: str = "") -> str:
        text = self._own.get(heading, default)
        return SHARED.sub(lambda name: self._shared[name[1]].strip("\n"), text)

    def shared(self, name: str) -> str:
        return self._shared[name].strip("\n")


def value_words(options: list[dict]) -> set[str]:
    return {option["value"] for option in options if option["value"]}


class HelpText:
    """Makes text of the help stand out where it names options and values of the job."""

    def __init__(self, options: list[dict], operands: list[dict]) -> None:
        names = sorted((name for option in options for name in option["names"]), key=len,
                       reverse=True)
        values = sorted(value_words(options) | value_words(operands), key=len, reverse=True)
        self._words = re.compile(
            r"(?<![\w-])(?:(" + "|".join(map(re.escape, names)) + r")|(" +
            ("|".join(map(re.escape, values)) or r"\Z.") + r")|'(ksv [^']*)')(?![\w-])")

    def shown(self, text: str) -> str:
        result, at = "", 0
        for found in self._words.finditer(text):
            result += roff.escaped(text[at:found.start()])
            option, value, call = found.groups()
            result += roff.italic(value) if value else roff.bold(option or call)
            at = found.end()
        return result + roff.escaped(text[at:])


def term_of(option: dict) -> str:
    """An option as its line in the list of options names it."""
    names = []
    for name in option["names"]:
        shown = roff.bold(name)
        if option["valueMayLack"]:
            shown += f"[={roff.italic(option['value'])}]"
        elif option["value"] and name == option["names"][-1]:
            shown += " " + roff.italic(option["value"])
        names.append(shown)
    return ", ".join(names)


def meaning_of(option: dict, texts: HelpText) -> str:
    meaning = texts.shown(option["help"])
    if option["oneOf"]:
        meaning += ". One of " + ", ".join(roff.bold(value) for value in option["oneOf"])
    if option["required"]:
        meaning += ". Required"
    return meaning + "."


def synopsis_of(words: list[str], job: dict) -> str:
    parts = [roff.bold(" ".join(words))]
    required = [option for option in job["options"] if option["required"]]
    parts += [f"{roff.bold(option['names'][0])} {roff.italic(option['value'])}"
              for option in required]
    if len(required) < len(job["options"]):
        parts.append(f"[{roff.italic('OPTION')}]...")
    for operand in job["operands"]:
        shown = roff.italic(operand["value"])
        shown = shown if operand["required"] else f"[{shown}]"
        parts.append(shown + ("..." if operand["repeats"] else ""))
    return " ".join(parts)


def add_synopsis(page: roff.Page, lines: list[str]) -> None:
    page.heading("SYNOPSIS")
    for number, line in enumerate(lines):
        if number:
            page.line_break()
        page.lines(line)


def add_options(page: roff.Page, job: dict, texts: HelpText) -> None:
    for operand in job["operands"]:
        page.tagged(roff.italic(operand["value"]), meaning_of(operand, texts))
    for option in job["options"]:
        page.tagged(term_of(option), meaning_of(option, texts))


def description_and_status(job: dict) -> tuple[list[str], dict[str, str]]:
    """The paragraphs of the help's end, and what it says of the exit status."""
    paragraphs = [text for text in job["footer"].split("\n\n") if text]
    told = [text for text in paragraphs if text.startswith(EXIT_STATUS)]
    status = {}
    if told:
        text = " ".join(told[0].removeprefix(EXIT_STATUS).rstrip(".").split("\n"))
        status = dict(part.split(" ", 1) for part in re.split(r", (?=[0-9] )", text))
    return [text for text in paragraphs if text not in told], status


def add_description(page: roff.Page, job: dict, texts: HelpText) -> dict[str, str]:
    paragraphs, status = description_and_status(job)
    for paragraph in paragraphs:
        page.paragraph(texts.shown(paragraph))
    return status


def add_status(page: roff.Page, status: dict[str, str], texts: Texts, help_text: HelpText) -> None:
    page.heading("EXIT STATUS")
    if status:
        status.setdefault("2", "wrong usage")
        for number, meaning in status.items():
            page.tagged(roff.bold(number), help_text.shown(meaning[0].upper() + meaning[1:]) + ".")
    else:
        roff.add_markdown(page, texts.shared("exit status"))
    roff.add_markdown(page, texts.get("EXIT STATUS"))


def add_texts(page: roff.Page, texts: Texts, headings: tuple[str, ...], names: list[str]) -> None:
    for heading in headings:
        page.heading(heading)
        if heading == "SEE ALSO":
            page.paragraph(see_also(page, names, texts.get(heading)))
            continue
        text = texts.get(heading)
        if not text.strip():
            raise ValueError(f"{page.name}: nothing stands under {heading}")
        roff.add_markdown(page, text)


def see_also(page: roff.Page, names: list[str], more: str) -> str:
    pages = [(name, 1) for name in names if name != page.name] + [("ksv_comm", 3)]
    for other in more.split():
        name, section = re.fullmatch(r"([\w.-]+)\((\d)\)", other).groups()
        pages.append((name, int(section)))
    return ",\n".join(f"{roff.bold(name)}({section})" for name, section in pages)


class Manual:
    """All pages of the command."""

    def __init__(self, table: dict, directory: Path) -> None:
        self._table = table
        self._directory = directory
        self._date = Texts("ksv").shared("date")
        self._names = ["ksv"] + [f"ksv-{job['name']}" for job in table["jobs"]]

    def _begin(self, name: str, summary: str) -> roff.Page:
        page = roff.Page(name, 1, self._date, self._table["version"], "The command ksv")
        page.heading("NAME")
        page.lines(f"{name} \\- {roff.escaped(summary[0].lower() + summary[1:].rstrip('.'))}")
        return page

    def _write(self, page: roff.Page) -> None:
        (self._directory / f"{page.name}.{page.section}").write_text(page.text(), "utf-8")

    def write(self) -> None:
        self._write_main()
        for job in self._table["jobs"]:
            self._write_job(job)

    def _write_main(self) -> None:
        table, texts = self._table, Texts("ksv")
        help_text = HelpText(table["options"], [])
        page = self._begin("ksv", table["help"])
        add_synopsis(page, [f"{roff.bold('ksv')} {roff.italic('JOB')} [{roff.italic('OPTION')}]..."
                            f" [{roff.italic('FILE')}]...",
                            f"{roff.bold('ksv')} {roff.bold('--help')} | {roff.bold('--version')}"])
        page.heading("DESCRIPTION")
        roff.add_markdown(page, texts.get("DESCRIPTION"))
        for group in dict.fromkeys(job["group"] for job in table["jobs"]):
            page.subheading(group)
            for job in table["jobs"]:
                if job["group"] == group:
                    page.tagged(roff.bold(f"ksv {job['name']}"), roff.escaped(job["help"]) +
                                f". See {roff.bold('ksv-' + job['name'])}(1).")
        page.heading("OPTIONS")
        add_options(page, {"operands": [], "options": table["options"]}, help_text)
        add_status(page, {}, texts, help_text)
        add_texts(page, texts, HEADINGS[2:], self._names)
        self._write(page)

    def _write_job(self, job: dict) -> None:
        name = f"ksv-{job['name']}"
        texts = Texts(name)
        page = self._begin(name, job["help"])
        parts = job["parts"] or [job]
        calls = [["ksv", job["name"]] + ([part["name"]] if job["parts"] else [])
                 for part in parts]
        helps = [HelpText(part["options"], part["operands"]) for part in parts]
        add_synopsis(page, [synopsis_of(call, part) for call, part in zip(calls, parts)])
        page.heading("DESCRIPTION")
        status = {}
        for call, part, help_text in zip(calls, parts, helps):
            if job["parts"]:
                page.subheading(" ".join(call))
                page.paragraph(roff.escaped(part["help"]) + ".")
            status |= add_description(page, part, help_text)
        roff.add_markdown(page, texts.get("DESCRIPTION"))
        page.heading("OPTIONS")
        for call, part, help_text in zip(calls, parts, helps):
            if job["parts"]:
                page.subheading(" ".join(call))
            add_options(page, part, help_text)
        add_status(page, status, texts, helps[0])
        add_texts(page, texts, HEADINGS[2:], self._names)
        self._write(page)


def main() -> None:
    table = json.loads(Path(sys.argv[1]).read_text(encoding="utf-8"))
    directory = Path(sys.argv[2])
    directory.mkdir(parents=True, exist_ok=True)
    Manual(table, directory).write()


if __name__ == "__main__":
    main()
