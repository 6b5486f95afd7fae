#!/usr/bin/env python3
"""Shows how often ksv detect --classic is right on real texts, as a table in Markdown.

    bench/detection_accuracy.py --ksv build/release/ksv --work /tmp/accuracy

The texts are those of Debian's installation guide and of the translated manual
pages, fetched with apt-get download and unpacked below the work directory. Each is
written in every encoding that its language has, whole and as its first 200 and 40
bytes (no character is cut), and detected without a language and with its own.

A cell shows three shares of the texts in per cent: the encoding was named alone /
it was named among others / it was not named.
"""
import argparse
import gzip
import html
import json
import re
import subprocess
import sys
from collections import Counter
from pathlib import Path

from debian_texts import unpack

PACKAGES = ("installation-guide-amd64", "manpages-ja", "manpages-zh")
GUIDE = "usr/share/doc/installation-guide-amd64"

# Language: (hint, the folders of its texts, its own encodings).
LANGUAGES = {
    "Japanese": ("Japanese",
                 ((PACKAGES[0], f"{GUIDE}/ja"), (PACKAGES[1], "usr/share/man/ja")),
                 ("Shift_JIS", "EUC-JP", "EUC-JP-FIX", "ISO-2022-JP")),
    "Simplified Chinese": ("Simplified Chinese",
                           ((PACKAGES[0], f"{GUIDE}/zh_CN"),
                            (PACKAGES[2], "usr/share/man/zh_CN")),
                           ("ChineseGBK",)),
    "Traditional Chinese": ("Traditional Chinese",
                            ((PACKAGES[2], "usr/share/man/zh_TW"),), ("ChineseBIG5",)),
    "Korean": ("Korean", ((PACKAGES[0], f"{GUIDE}/ko"),), ("KoreanKSC",)),
    "English": ("English", ((PACKAGES[0], f"{GUIDE}/en"),), ()),
}
UNICODE = ("UTF-8", "UTF-16 little", "UTF-16 big", "ISO-10646-UCS-4 little",
           "ISO-10646-UCS-4 big")
CODECS = {
    "Shift_JIS": "cp932", "EUC-JP": "euc_jp", "ISO-2022-JP": "iso2022_jp", "ChineseGBK": "gbk",
    "ChineseBIG5": "big5", "KoreanKSC": "cp949", "UTF-8": "utf-8", "UTF-16 little": "utf-16-le",
    "UTF-16 big": "utf-16-be", "ISO-10646-UCS-4 little": "utf-32-le",
    "ISO-10646-UCS-4 big": "utf-32-be",
}
LENGTHS = {"whole": None, "200 bytes": 200, "40 bytes": 40}
NO_PREFERENCE = "none"


def plain_html(text):
    text = re.sub(r"(?s)<(script|style|head).*?</\1>", "", text)
    return html.unescape(re.sub(r"(?s)<[^>]*>", "", text))


def plain_manual(text):
    lines = [line for line in text.splitlines() if not line.startswith((".", "'"))]
    return re.sub(r"\\f.|\\-|\\&", "", "\n".join(lines))


def read_text(path):
    data = gzip.decompress(path.read_bytes()) if path.suffix == ".gz" else path.read_bytes()
    text = data.decode("utf-8", "replace").replace("\ufffd", "").replace("\xa0", " ")
    plain = plain_html(text) if path.suffix == ".html" else plain_manual(text)
    return re.sub(r"\n\s*\n+", "\n\n", plain).strip() + "\n"


def texts_of(packages, folders, most):
    """Texts of at least 1,000 characters, spread over the folders."""
    texts = []
    for package, folder in folders:
        paths = sorted(path for path in (packages / package / folder).rglob("*")
                       if path.is_file() and not path.is_symlink()
                       and re.search(r"\.html$|\.\d\w*\.gz$", path.name))
        found = [text for text in map(read_text, paths) if len(text) >= 1000]
        texts += found[::max(1, len(found) // most)][:most]
    return texts


def encode(text, encoding):
    if encoding != "EUC-JP-FIX":
        return text.encode(CODECS[encoding], "ignore")
    pairs = []
    for character in text:
        code = character.encode("euc_jp", "ignore")
        if len(code) == 2:
            pairs.append(code[1:].rjust(2, b"\0") if code[0] == 0x8E else code)
        elif len(code) == 1:
            pairs.append(b"\0" + code)
    return b"".join(pairs)


def beginning(text, encoding, most):
    if most is None:
        return encode(text, encoding)
    length = most
    while len(data := encode(text[:length], encoding)) > most:
        length -= 1
    return data


def detect(ksv, paths, language):
    """The answers of one run, in the order of the paths."""
    run = subprocess.run([ksv, "detect", "--classic", "--json", "--language", language,
                          "--files-from", "-"],
                         input="\n".join(map(str, paths)), capture_output=True, text=True,
                         check=False)
    answers = [json.loads(line) for line in run.stdout.splitlines()]
    if len(answers) != len(paths):
        sys.exit(f"detection_accuracy.py: {run.stderr}")
    return answers


def verdict(answer, encoding):
    name, _, order = encoding.partition(" ")
    if name not in answer["encodings"]:
        return "missed"
    if len(answer["encodings"]) > 1:
        return "among others"
    return "alone" if not order or answer["byteOrder"] == order else "missed"


def cell(counts):
    total = sum(counts.values())
    return " / ".join(f"{100 * counts[kind] / total:.0f}"
                      for kind in ("alone", "among others", "missed"))


def print_table(header, rows):
    for row in [header, ["-" * len(title) for title in header]] + rows:
        print("| " + " | ".join(row) + " |")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--ksv", required=True, help="the command")
    parser.add_argument("--work", type=Path, required=True, help="where packages and texts go")
    parser.add_argument("--texts", type=int, default=60, help="texts of each folder")
    arguments = parser.parse_args()
    packages = unpack(arguments.work, PACKAGES)

    rows = []
    files = 0
    for language, (hint, folders, own) in LANGUAGES.items():
        texts = texts_of(packages, folders, arguments.texts)
        for encoding in own + UNICODE:
            cells = []
            for length, most in LENGTHS.items():
                folder = arguments.work / "texts" / language / encoding / length
                folder.mkdir(parents=True, exist_ok=True)
                paths = []
                for number, text in enumerate(texts):
                    paths.append(folder / str(number))
                    paths[-1].write_bytes(beginning(text, encoding, most))
                for given in (NO_PREFERENCE, hint):
                    answers = detect(arguments.ksv, paths, given)
                    cells.append(cell(Counter(verdict(a, encoding) for a in answers)))
                files += len(paths)
            rows.append([language, str(len(texts)), encoding] + cells)
    header = ["text", "texts", "encoding"]
    for length in LENGTHS:
        header += [f"{length}, no language", f"{length}, its language"]
    print_table(header, rows)
    print(f"\n{files} files, each detected twice")


if __name__ == "__main__":
    main()
