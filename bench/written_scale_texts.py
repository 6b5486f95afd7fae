#!/usr/bin/env python3
"""Writes the texts that bench/scale measures with, in Shift_JIS, into FOLDER.

    written_scale_texts.py FOLDER

small/ gets 10,000 files of 200 bytes to 20 KB in 100 folders, and large.txt and large2.txt 1 GB
each, where there is room for five times as much. The texts are drawn from words, from a fixed seed.
"""
import random
import shutil
import sys
from pathlib import Path

WORDS = ["日本語", "の", "文章", "は", "漢字", "と", "かな", "が", "混じる", "。", "カタカナ", "、", "ABC ", "2024年", "文字コード",
         "変換", "する", "ため", "に", "書かれた", "\n", "ｱｲｳ", "test ", "「例」", "です", "ます"]
FOLDERS = 100
FILES = 100
PIECE = 1 << 20
LARGE = 1 << 30


def text_of(random_words, least):
    words = []
    length = 0
    while length < least:
        word = random_words.choice(WORDS)
        words.append(word)
        length += len(word.encode("cp932"))
    return "".join(words).encode("cp932")


def main():
    folder = Path(sys.argv[1])
    random_words = random.Random(18)
    for number in range(FOLDERS):
        within = folder / "small" / f"{number:02}"
        within.mkdir(parents=True)
        for file in range(FILES):
            size = int(200 * 100 ** random_words.random())
            (within / f"{file:02}.txt").write_bytes(text_of(random_words, size))
    (folder / "one.txt").write_bytes(text_of(random_words, 40))
    if shutil.disk_usage(folder).free < 5 * LARGE:
        return
    piece = text_of(random_words, PIECE)
    for name in ("large.txt", "large2.txt"):
        with open(folder / name, "wb") as file:
            for _ in range(LARGE // PIECE):
                file.write(piece)


if __name__ == "__main__":
    main()
