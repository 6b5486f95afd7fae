#!/usr/bin/env python3
"""Shows how often ksv convert without -f is right on real texts, as a table in Markdown.

    bench/conversion_accuracy.py --ksv build/release/ksv --work /tmp/accuracy

The texts are those of Debian's translated manual pages and installation guide, fetched with
apt-get download and unpacked below the work directory, and of one the Thai messages of the
programs of this machine, if there are any. Pieces of 8 to 4,096 bytes are cut out of them, at
the borders of characters and anywhere in the text, and written in each usual encoding; pure
ASCII is left out. Each is converted to UTF-8 with its language named by LANG, by
--detect-language, and not at all; with --strangers the texts of each language also with
LANG=ja_JP.UTF-8.

A cell is: wrong in per cent (the text came out as another one, exit 0) / refused in per cent.
"""
import argparse
import os
import random
import re
import subprocess
import sys
from collections import Counter, defaultdict
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from debian_texts import unpack  # noqa: E402
from detection_accuracy import read_text  # noqa: E402

PACKAGES = ("installation-guide-amd64", "manpages-ja", "manpages-zh", "manpages-ru",
            "manpages-de")
GUIDE = "usr/share/doc/installation-guide-amd64"
# Language: (LANG, --detect-language, folders, encodings).
LANGUAGES = {
    "Japanese": ("ja_JP.UTF-8", "ja", ((PACKAGES[1], "usr/share/man/ja"), (PACKAGES[0], f"{GUIDE}/ja")),
                 ("cp932", "euc_jp", "iso2022_jp", "utf-8", "utf-16")),
    "Simplified Chinese": ("zh_CN.UTF-8", "zh-cn",
                           ((PACKAGES[2], "usr/share/man/zh_CN"), (PACKAGES[0], f"{GUIDE}/zh_CN")),
                           ("gbk", "utf-8")),
    "Traditional Chinese": ("zh_TW.UTF-8", "zh-tw", ((PACKAGES[2], "usr/share/man/zh_TW"),),
                            ("cp950", "utf-8")),
    "Korean": ("ko_KR.UTF-8", "ko", ((PACKAGES[0], f"{GUIDE}/ko"),), ("cp949", "utf-8")),
    "Russian": ("ru_RU.UTF-8", "any", ((PACKAGES[3], "usr/share/man/ru"), (PACKAGES[0], f"{GUIDE}/ru")),
                ("koi8_r", "cp1251", "iso8859_5", "utf-8")),
    "German": ("de_DE.UTF-8", "any", ((PACKAGES[4], "usr/share/man/de"), (PACKAGES[0], f"{GUIDE}/de")),
               ("latin_1", "cp1252", "utf-8")),
    "Thai": ("th_TH.UTF-8", "any", ((None, "usr/share/locale/th/LC_MESSAGES"),), ("tis_620",)),
}
SIZES = (8, 16, 32, 64, 256, 1024, 4096)


def texts_of(packages, folders, most):
    texts = []
    for package, folder in folders:
        root = packages / package / folder if package else Path("/") / folder
        paths = sorted(path for path in root.rglob("*")
                       if path.is_file() and not path.is_symlink()
                       and re.search(r"\.html$|\.\d\w*\.gz$|\.mo$", path.name))
        found = []
        for path in paths[::max(1, len(paths) // (3 * most))]:
            if path.suffix == ".mo":
                text = path.read_bytes().decode("utf-8", "ignore").replace("\0", "\n")
                text = re.sub(r"(?s)^.*?\n\n|[\x00-\x08\x0b-\x1f\ufffd]", "", text)
                text = "\n".join(line for line in text.splitlines() if re.search(r"[^\0-\x7f]", line))
            else:
                text = read_text(path)
            if len(text) >= 1000:
                found.append(text)
        texts += found[:most]
    return texts


def encode(text, codec):
    return text.encode("utf-16-le" if codec == "utf-16" else codec, "ignore")


def piece(text, codec, size, chance):
    """A piece of at most so many bytes with a character that is not ASCII, and its text."""
    for _ in range(20):
        start = chance.randrange(max(1, len(text) - size // 3))
        end = min(len(text), start + size)
        data = encode(text[start:end], codec)
        while len(data) > size:
            end -= max(1, (len(data) - size) // 6)
            data = encode(text[start:end], codec)
        if not data or len(data) < size // 2:
            continue
        plain = data.decode("utf-16-le" if codec == "utf-16" else codec)
        if re.search(r"[^\0-\x7f]", plain):
            return data, plain
    return None


def pieces_of(texts, codec, size, count, chance):
    pieces = [piece(chance.choice(texts), codec, size, chance) for _ in range(count)]
    return [one for one in pieces if one]


def windows(text):
    """What code page 932 gives to characters for which Python has the standard's."""
    return text.translate({0x301C: 0xFF5E, 0x2016: 0x2225, 0x2212: 0xFF0D, 0xA2: 0xFFE0,
                           0xA3: 0xFFE1, 0xAC: 0xFFE2, 0x2014: 0x2015, 0x5C: 0x5C,
                           0xFF3C: 0xFF3C})


def convert(ksv, folder, pieces, lang, options):
    """For each piece: right, wrong or refused."""
    out = folder / "out"
    paths = []
    for number, (data, _) in enumerate(pieces):
        paths.append(folder / f"{number}.txt")
        paths[-1].write_bytes(data)
        (out / f"{number}.txt").unlink(missing_ok=True)
    environment = {k: v for k, v in os.environ.items() if not k.startswith(("LC_", "LANG"))}
    environment["LANG"] = lang
    subprocess.run([ksv, "convert", "-t", "UTF-8", "--output-dir", out, *options, *paths],
                   env=environment, capture_output=True, check=False)
    answers = []
    for number, (_, plain) in enumerate(pieces):
        result = out / f"{number}.txt"
        if not result.exists():
            answers.append("refused")
        else:
            got = result.read_bytes().decode("utf-8", "replace")
            answers.append("right" if windows(got) == windows(plain) else "wrong")
    return answers


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--ksv", required=True, type=Path, help="the command")
    parser.add_argument("--work", type=Path, required=True, help="where packages and texts go")
    parser.add_argument("--count", type=int, default=300, help="pieces of each kind")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--strangers", action="store_true", help="also with LANG=ja_JP.UTF-8")
    parser.add_argument("--options", default="", help="further options of ksv convert")
    parser.add_argument("--show", type=int, default=0, help="show so many wrong pieces")
    parser.add_argument("--only", default="", help="languages, with commas")
    arguments = parser.parse_args()
    ksv = arguments.ksv.resolve()
    packages = unpack(arguments.work, PACKAGES)
    folder = arguments.work / "pieces"
    (folder / "out").mkdir(parents=True, exist_ok=True)

    totals = defaultdict(Counter)
    rows = []
    for language, (lang, name, folders, codecs) in LANGUAGES.items():
        if arguments.only and language not in arguments.only.split(","):
            continue
        texts = texts_of(packages, folders, 100)
        if not texts:
            continue
        ways = {"LANG": (lang, []), "--detect-language": ("C", ["--detect-language", name]),
                "none": ("C", [])}
        if arguments.strangers and name != "ja":
            ways["LANG=ja"] = ("ja_JP.UTF-8", [])
        for codec in codecs:
            chance = random.Random(f"{arguments.seed} {language} {codec}")
            sets = {size: pieces_of(texts, codec, size, arguments.count, chance) for size in SIZES}
            for way, (locale, options) in ways.items():
                cells = []
                for size, pieces in sets.items():
                    answers = convert(ksv, folder, pieces, locale,
                                      options + arguments.options.split())
                    counts = Counter(answers)
                    totals[way, size].update(counts)
                    size_of_all = max(1, len(pieces))
                    cells.append(f"{100 * counts['wrong'] / size_of_all:.1f} / "
                                 f"{100 * counts['refused'] / size_of_all:.0f}")
                    wrong = [p for p, a in zip(pieces, answers) if a == "wrong"]
                    for data, plain in wrong[:arguments.show]:
                        print(f"WRONG {language} {codec} {way} {size}: {data[:64].hex()} {plain[:40]!r}",
                              file=sys.stderr)
                rows.append([language, codec, way] + cells)
    for way in dict.fromkeys(way for way, _ in totals):
        cells = []
        for size in SIZES:
            counts = totals[way, size]
            size_of_all = max(1, sum(counts.values()))
            cells.append(f"{100 * counts['wrong'] / size_of_all:.2f} / "
                         f"{100 * counts['refused'] / size_of_all:.1f} of {size_of_all}")
        rows.append(["all", "", way] + cells)
    header = ["text", "encoding", "language given by"] + [f"{size} bytes" for size in SIZES]
    for row in [header, ["-" * len(title) for title in header]] + rows:
        print("| " + " | ".join(row) + " |")


if __name__ == "__main__":
    main()
