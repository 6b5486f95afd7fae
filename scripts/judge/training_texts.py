#!/usr/bin/env python3
"""Gets the texts that the judge of charsets learns from and is measured by.

    scripts/judge/training_texts.py --work /tmp/ksv-texts

The Debian packages of packages.txt are fetched with apt-get download and unpacked below the work
directory, and what people wrote in them is put as UTF-8 into texts/LANGUAGE/SPLIT/NAME.txt, one
paragraph a line and one file for each document, or part of a catalogue. Prints how much there is.

SPLIT is train (70 % of the documents), tune (15 %) or held (15 %), by a hash of the document's
name without its language: the same document is on the same side in each language. A line that
occurs in an earlier text of the language, letter for letter, is left out, train before tune
before held: so no line of a held text was ever learnt.
"""
import argparse
import hashlib
import multiprocessing
import re
import shutil
import sys
from collections import Counter, defaultdict
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "bench"))
from debian_texts import unpack  # noqa: E402
from plain_text import (INVISIBLE, decoded, file_bytes, messages, paragraphs_of_manual,  # noqa: E402
                        paragraphs_of_markup, paragraphs_of_message, paragraphs_of_plain)

SPLITS = ("train", "tune", "held")
LATIN = ("en de fr es pt it nl da sv nb fi is pl cs sk hu ro sl hr sq et lv lt tr mt eo ga cy ca eu "
         "gl vi").split()
# Languages whose every line has letters of their own, and the share of all letters that these are
# at least: the rest was left in English.
CYRILLIC = ("[\u0400-\u04ff]", 0.3)
IDEOGRAPHS = ("[\u3040-\u30ff\u4e00-\u9fff]", 0.15)
OWN_LETTERS = {
    "ja": IDEOGRAPHS, "zh-CN": IDEOGRAPHS, "zh-TW": IDEOGRAPHS, "ko": ("[\uac00-\ud7a3]", 0.15),
    "ru": CYRILLIC, "uk": CYRILLIC, "bg": CYRILLIC, "sr": CYRILLIC, "mk": CYRILLIC, "be": CYRILLIC,
    "el": ("[\u0370-\u03ff]", 0.3), "he": ("[\u05d0-\u05ea]", 0.3), "ar": ("[\u0620-\u06ff]", 0.3),
    "fa": ("[\u0620-\u06ff]", 0.3), "th": ("[\u0e00-\u0e7f]", 0.3),
}
LANGUAGES = LATIN + list(OWN_LETTERS)
# A letter that a script shares with another language of it: a line with one is not this language.
FOREIGN_LETTERS = {"zh-CN": "[\u3041-\u3096\u30a1-\u30fa]", "zh-TW": "[\u3041-\u3096\u30a1-\u30fa]",
                   "ru": "[іїєґўјљњћђџѓќ]", "ar": "[پچژگکی]"}
ENGLISH_WORDS = frozenset("the and this with which you your from that is of when".split())
NOT_ONLY_ENGLISH = {"nl": {"of", "is"}, "ro": {"is"}, "cy": {"of"}}
LETTER = re.compile(r"[^\W\d_]")
WORD = re.compile(r"[^\W\d_]+")
NO_LETTERS = re.compile(r"[\W\d_]+")
FOLDER = re.compile(r"([a-z]{2,3})(?:[-_]([A-Za-z]{2,4}))?(?:\.UTF-8)?$")
BEFORE_SUFFIX = re.compile(r"\.([a-z]{2}(?:[-_][A-Za-z]{2})?)\.(?:html|txt)(?:\.gz)?$")
LETTER_GROUPS = ("ab", "cd", "efgh", "ijklm", "nop", "qrs", "tuvwxyz")
WHOLE_CATALOGUE = 32768  # bytes; a longer one is taken in parts
LEAST = 200              # bytes of a text


def language_tag(name):
    found = FOLDER.match(name)
    if not found:
        return "en" if name == "C" else None
    base, region = found[1], (found[2] or "").upper()
    if base == "zh":
        return {"CN": "zh-CN", "HANS": "zh-CN", "TW": "zh-TW", "HANT": "zh-TW"}.get(region)
    return base if base in LANGUAGES and len(region) < 3 else None


def language_of(path):
    """The language of a file, by its path below the package."""
    if found := BEFORE_SUFFIX.search(path.name):
        return language_tag(found[1])
    if path.match("usr/share/man/man*/*"):
        return "en"
    return next(filter(None, map(language_tag, path.parts[2:-1])), None)


def kind_of(path):
    name = path.name
    if name.endswith(".mo"):
        return "catalogue"
    if "/man/" in str(path) and re.search(r"\.\d\w*(\.gz)?$", name):
        return "manual"
    if re.search(r"\.x?html?(\.gz)?$", name):
        return "page"
    if "share/help" in str(path) and name.endswith((".page", ".docbook", ".xml")):
        return "help"
    if re.search(r"\.txt(\.gz)?$", name) and BEFORE_SUFFIX.search(name):
        return "plain"
    return None


def document_of(kind, path):
    """A document's name, the same in each language."""
    name = re.sub(r"(\.gz|\.mo|\.x?html?|\.page|\.docbook|\.xml|\.txt)+$", "", path.name)
    name = re.sub(r"\.([a-z]{2}([-_][A-Za-z]{2})?)$", "", name)
    return f"{kind}/{name}"


def split_of(document):
    share = int(hashlib.sha256(document.encode()).hexdigest()[:8], 16) / 2 ** 32
    return "train" if share < 0.7 else "tune" if share < 0.85 else "held"


def group_of(original):
    first = next((c for c in original.split("\x04")[-1].casefold() if c.isalpha()), "?")
    return next((group for group in LETTER_GROUPS if first in group), "others")


def catalogue_texts(name, language, data):
    """The texts of a catalogue: by groups of first letters where it is long."""
    pairs = [(o, o if language == "en" else t) for o, t in messages(data) if t != o or
             language == "en"]
    whole = sum(len(t.encode()) for _, t in pairs) <= WHOLE_CATALOGUE
    parts = defaultdict(list)
    for original, translation in pairs:
        part = name if whole else f"{name}-{group_of(original)}"
        parts[part] += paragraphs_of_message(translation)
    return parts.items()


def texts_of_file(kind, language, path):
    """Pairs (document, paragraphs)."""
    name = document_of(kind, path)
    if kind == "catalogue":
        return list(catalogue_texts(name, language, path.read_bytes()))
    text = decoded(file_bytes(path))
    if text is None or text.startswith(".so "):
        return []
    reader = {"manual": paragraphs_of_manual, "plain": paragraphs_of_plain}.get(
        kind, paragraphs_of_markup)
    return [(name, reader(text))]


def key_of(line):
    """What is the same in lines that differ in digits, signs and case alone."""
    return NO_LETTERS.sub(" ", line.casefold()).strip()


class Filter:
    """Which paragraphs are prose in the language."""

    def __init__(self, language, english):
        self.language = language
        self.english = english
        own = OWN_LETTERS.get(language)
        self.own, self.share = (re.compile(own[0]), own[1]) if own else (None, 0)
        foreign = FOREIGN_LETTERS.get(language)
        self.foreign = re.compile(foreign) if foreign else None
        self.english_words = ENGLISH_WORDS - NOT_ONLY_ENGLISH.get(language, set())

    def is_prose(self, line):
        letters = len(LETTER.findall(line))
        dense = len(line) - line.count(" ")
        if letters < 2 or letters < 0.5 * dense and not (self.own and letters > 0.35 * dense):
            return False
        if self.foreign and self.foreign.search(line.casefold()):
            return False
        if self.own:
            return len(self.own.findall(line)) >= max(1, self.share * letters)
        return self.language == "en" or not self.is_english(line)

    def is_english(self, line):
        if key_of(line) in self.english:
            return True
        words = WORD.findall(line.casefold())
        found = sum(word in self.english_words for word in words)
        return found >= 2 and found > 0.08 * len(words)


def package_list():
    """Pairs (package, kinds)."""
    path = Path(__file__).with_name("packages.txt")
    lines = [line.split(None, 2) for line in path.read_text(encoding="utf-8").splitlines()
             if line and not line.startswith("#")]
    return [(package, kinds.split(",")) for package, kinds, _ in lines]


def files_by_language(packages):
    """For each language its files: (package, kind, path), in the order of their names."""
    found = defaultdict(list)
    for package, kinds in package_list():
        folder = packages / package
        for path in sorted(folder.rglob("*")):
            inner = path.relative_to(folder)
            kind = kind_of(inner)
            if kind not in kinds or path.is_symlink() or not path.is_file():
                continue
            language = language_of(inner)
            # The originals of a catalogue are English.
            if kind == "catalogue" and language == "de":
                found["en"].append((package, kind, path))
            if language in LANGUAGES:
                found[language].append((package, kind, path))
    return found


def english_lines(files):
    """What English texts have, to know it again where it was not translated."""
    lines = set()
    for _, kind, path in files:
        for _, paragraphs in texts_of_file(kind, "en", path):
            lines.update(map(key_of, paragraphs))
    return lines


def collect(language, files, english, most):
    """The texts of a language: {split: [(package, document, lines)]}."""
    by_split = defaultdict(list)
    for package, kind, path in files:
        for document, paragraphs in texts_of_file(kind, language, path):
            by_split[split_of(document)].append((package, document, paragraphs))
    seen = set()
    judge = Filter(language, english)
    share = {"train": 0.7, "tune": 0.15, "held": 0.15}
    texts = defaultdict(list)
    for split in SPLITS:
        used = Counter()
        order = sorted(by_split[split], key=lambda text: hashlib.sha256(text[1].encode()).digest())
        for package, document, paragraphs in order:
            if used[package] > most * share[split]:
                continue
            lines = []
            for line in paragraphs:
                line = INVISIBLE.sub("", line)
                key = key_of(line)
                if key not in seen and judge.is_prose(line):
                    seen.add(key)
                    lines.append(line)
            length = sum(len(line.encode()) + 1 for line in lines)
            if length >= LEAST:
                used[package] += length
                texts[split].append((package, document, lines))
    return texts


def write(folder, texts):
    """Writes a language's texts; {split: bytes}."""
    sizes = {}
    shutil.rmtree(folder, ignore_errors=True)
    for split in SPLITS:
        (folder / split).mkdir(parents=True)
        sizes[split] = 0
        names = Counter()
        for package, document, lines in texts[split]:
            name = f"{package}.{document.replace('/', '.')}"
            names[name] += 1
            number = f".{names[name]}" if names[name] > 1 else ""
            data = ("\n".join(lines) + "\n").encode()
            (folder / split / f"{name}{number}.txt").write_bytes(data)
            sizes[split] += len(data)
    return sizes


ENGLISH = set()  # shared with the processes that are forked from this one


def make(work):
    language, files, folder, most = work
    return language, write(folder / language, collect(language, files, ENGLISH, most))


def print_table(sizes):
    print("| language | " + " | ".join(SPLITS) + " |\n| - | -: | -: | -: |")
    for language in LANGUAGES:
        if language in sizes:
            print(f"| {language} | "
                  + " | ".join(f"{sizes[language][split]:,}" for split in SPLITS) + " |")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--work", type=Path, default=Path("/tmp/ksv-texts"),
                        help="where packages and texts go")
    parser.add_argument("--most", type=int, default=1500000,
                        help="bytes of a language out of one package, about")
    parser.add_argument("--language", action="append", help="only this one; may be repeated")
    arguments = parser.parse_args()
    packages = unpack(arguments.work, [package for package, _ in package_list()])
    files = files_by_language(packages)
    ENGLISH.update(english_lines(files["en"]))
    wanted = arguments.language or [language for language in LANGUAGES if files[language]]
    with multiprocessing.get_context("fork").Pool() as pool:
        sizes = dict(pool.imap_unordered(make, [
            (language, files[language], arguments.work / "texts", arguments.most)
            for language in wanted]))
    print_table(sizes)


if __name__ == "__main__":
    main()
