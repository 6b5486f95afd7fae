#!/usr/bin/env python3
"""Writes language_models.inc: how usual each character is in texts of a language.

    cli/text/language_models.py > cli/text/language_models.inc

Counted are the translated messages of a Debian machine's programs (below
/usr/share/locale; the lists of countries and languages are left out, whose names are
no text). What stands only in the national standards' sets of common characters, and in
no message, gets what is left: level 1 before level 2, as charsets/facts has their codes.
To be run by hand where the figures are to be taken anew.
"""
import math
import re
import struct
import sys
import unicodedata
from collections import Counter, defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
LOCALES = Path("/usr/share/locale")

# Model: the languages that it is counted from, each with equal weight.
MODELS = {
    "kJapanese": ["ja"],
    "kSimplifiedChinese": ["zh_CN"],
    "kTraditionalChinese": ["zh_TW"],
    "kKorean": ["ko"],
    "kLatin": ["de", "fr", "es", "pl", "cs", "tr", "hu", "pt_BR", "sv"],
    "kCyrillic": ["ru", "uk", "bg"],
    "kGreek": ["el"],
    "kThai": ["th"],
    "kHebrew": ["he"],
    "kArabic": ["ar", "fa"],
}

# The codes of level 1 and level 2 of the sets that the standards divide.
LEVELS = {
    "kJapanese": ("jis_x0208_windows.txt", (0x3021, 0x4F7E), (0x5021, 0x747E)),
    "kSimplifiedChinese": ("gbk.txt", (0xB0A1, 0xD7FE), (0xD8A1, 0xF7FE)),
    "kTraditionalChinese": ("cp950.txt", (0xA440, 0xC67E), (0xC940, 0xF9D5)),
    "kKorean": ("cp949.txt", (0xB0A1, 0xC8FE), (0xCAA1, 0xFDFE)),
}

# The order of CharacterGroup in language_model.h.
GROUPS = ("space", "letter", "sign", "odd", "hiragana", "katakana", "half-width katakana",
          "wide sign", "han", "hangul", "lower", "upper", "symbol")
SPACE, LETTER, SIGN, ODD, HIRAGANA, KATAKANA, HALF_KATAKANA, WIDE, HAN, HANGUL, LOWER, UPPER, \
    SYMBOL = range(len(GROUPS))
ASCII_GROUPS = (SPACE, LETTER, SIGN)

# No character that a text might have is made dearer than this; in bits.
MOST_FOR_A_CHANGE = 11
MOST_FOR_A_CHARACTER = 18
# A group that the language's texts have this little of does not get cheap behind another.
LEAST_OF_A_GROUP, COST_OF_A_STRANGER = 1e-4, 8
COST_OF_LEAVING_ASCII = 3
# Of the characters of a group, what is kept for those that no message has.
UNSEEN = {HAN: 0.08, HANGUL: 0.03}
UNSEEN_ELSEWHERE = 0.01
# Of that, the part of the second level, and of all that no level has.
LEVEL_TWO, NO_LEVEL = 0.12, 0.02
# How many characters a group has.
GROUP_SIZE = {HIRAGANA: 90, KATAKANA: 94, HALF_KATAKANA: 63, WIDE: 120, HAN: 20902,
              HANGUL: 11172, LOWER: 1000, UPPER: 500, SYMBOL: 2400}


def group_of(character):
    code = ord(character)
    if code < 0x80:
        if character in " \t\n\r\f":
            return SPACE
        if code < 0x20 or code == 0x7F:
            return ODD
        return LETTER if character.isalnum() else SIGN
    if 0x3041 <= code <= 0x309E:
        return HIRAGANA
    if 0x30A1 <= code <= 0x30FE and code != 0x30FB:
        return KATAKANA
    if 0xFF61 <= code <= 0xFF9F:
        return HALF_KATAKANA
    if 0x3000 <= code <= 0x303F or code == 0x30FB or 0xFF01 <= code <= 0xFF60 \
            or 0xFFE0 <= code <= 0xFFE6:
        return WIDE
    if 0x3400 <= code <= 0x9FFF or 0xF900 <= code <= 0xFAFF or 0x20000 <= code <= 0x3FFFF:
        return HAN
    if 0xAC00 <= code <= 0xD7A3:
        return HANGUL
    if code < 0xA0 or 0xE000 <= code <= 0xF8FF or code >= 0xFFF0:
        return ODD
    if 0xC0 <= code <= 0x24F and code not in (0xD7, 0xF7) or 0x370 <= code <= 0x6FF \
            or 0xE01 <= code <= 0xE4E or 0x1E00 <= code <= 0x1FFF:
        return UPPER if unicodedata.category(character) in ("Lu", "Lt") else LOWER
    return SYMBOL


def messages(path):
    """The translations of a compiled catalogue."""
    data = path.read_bytes()
    if len(data) < 28:
        return
    order = "<" if data[:4] == b"\xde\x12\x04\x95" else ">"
    count, originals, translations = struct.unpack(order + "3I", data[8:20])
    charset = "utf-8"
    for index in range(count):
        length, at = struct.unpack_from(order + "2I", data, originals + 8 * index)
        key = data[at:at + length]
        length, at = struct.unpack_from(order + "2I", data, translations + 8 * index)
        text = data[at:at + length]
        if not key:
            found = re.search(rb"charset=([\w-]+)", text)
            charset = found.group(1).decode() if found else charset
        elif text and text != key:
            yield text.split(b"\0")[0].decode(charset, "ignore")


def texts_of(language):
    texts = set()
    for path in sorted((LOCALES / language / "LC_MESSAGES").glob("*.mo")):
        if not path.name.startswith("iso_"):
            texts.update(messages(path))
    return sorted(texts)


def weighted(counters):
    total = defaultdict(float)
    for counter in counters:
        size = sum(counter.values())
        for key, count in counter.items():
            total[key] += count / size * 1e6
    return total


def count(languages):
    changes, characters = [], []
    for language in languages:
        change, character = Counter(), Counter()
        for text in texts_of(language):
            before = SPACE
            for one in text:
                group = group_of(one)
                change[before, group] += 1
                if group not in ASCII_GROUPS and group != ODD:
                    character[one] += 1
                before = group
        changes.append(change)
        characters.append(character)
    return weighted(changes), weighted(characters)


def bits(share, most):
    return min(most, -math.log2(share)) if share > 0 else most


def change_costs(changes):
    """In quarter bits. Between ASCII all languages are alike: what a program's texts have
    of it says nothing, nor how often a text changes from ASCII to its own characters."""
    met = Counter()
    for (_, group), weight in changes.items():
        met[group] += weight
    strangers = {g for g in range(len(GROUPS))
                 if met[g] < LEAST_OF_A_GROUP * sum(met.values())}
    rows = []
    for before in range(len(GROUPS)):
        row = []
        counted = [g for g in range(len(GROUPS)) if g not in ASCII_GROUPS] \
            if before in ASCII_GROUPS else range(len(GROUPS))
        total = sum(changes.get((before, g), 0) for g in counted) + 40
        for group in range(len(GROUPS)):
            if before in ASCII_GROUPS and group in ASCII_GROUPS:
                row.append(1)
                continue
            cost = bits((changes.get((before, group), 0) + 0.5) / total, MOST_FOR_A_CHANGE)
            if group in strangers:
                cost = max(cost, COST_OF_A_STRANGER)
            cost += COST_OF_LEAVING_ASCII if before in ASCII_GROUPS else 0
            row.append(round(4 * cost))
        rows.append(row)
    return rows


def level_characters(name):
    if name not in LEVELS:
        return [], []
    file, one, two = LEVELS[name]
    lines = (ROOT / "charsets/facts" / file).read_text("utf-8").split("\n\n", 1)[1]
    found = [], []
    for line in lines.splitlines():
        code, character = (int(part, 16) for part in line.split()[:2])
        for level, (first, last) in zip(found, (one, two)):
            if first <= code <= last and group_of(chr(character)) in (HAN, HANGUL):
                level.append(chr(character))
    return found


def character_costs(name, characters):
    """Character: its cost in whole bits; and the cost of all others of each group."""
    by_group = defaultdict(dict)
    for character, weight in characters.items():
        by_group[group_of(character)][character] = weight
    level_one, level_two = level_characters(name)
    costs, others = {}, [MOST_FOR_A_CHARACTER] * len(GROUPS)
    others[SPACE], others[LETTER], others[SIGN], others[ODD] = 1, 5, 4, 8
    for group, size in GROUP_SIZE.items():
        seen = by_group.get(group, {})
        total = sum(seen.values())
        unseen = UNSEEN.get(group, UNSEEN_ELSEWHERE) if total else 1
        levels = [(part, [c for c in level if group_of(c) == group]) for part, level in
                  ((1 - LEVEL_TWO - NO_LEVEL, level_one), (LEVEL_TWO, level_two))]
        base = (NO_LEVEL if any(level for _, level in levels) else 1) * unseen / size
        others[group] = round(bits(base, MOST_FOR_A_CHARACTER))
        share = defaultdict(lambda: base)
        for part, level in levels:
            for character in level:
                share[character] += part * unseen / len(level)
        for character, weight in seen.items():
            share[character] += (1 - unseen) * weight / total
        for character, one in share.items():
            costs[character] = max(1, round(bits(one, MOST_FOR_A_CHARACTER)))
    return costs, others


def quoted(characters):
    """Lines of a literal. What could be read as something else is written by its number."""
    plain = [c if c.isalpha() and c.isprintable() and not unicodedata.bidirectional(c) in ("R", "AL")
             and not unicodedata.combining(c) else f"\\x{ord(c):04X}\" u\"" for c in characters]
    lines = ["".join(plain[i:i + 40]) for i in range(0, len(plain), 40)]
    return "\n".join(f"      u\"{line}\"" for line in lines).replace('" u""', '"')


def print_groups():
    """Where one group ends and the next begins, in the first 65,536 characters."""
    print("\nconstexpr GroupRun kGroupRuns[] = {")
    before = None
    for code in range(0x10000):
        group = group_of(chr(code))
        if group != before:
            print(f"  {{0x{code:04X}, {group}}},")
        before = group
    print("};")


def main():
    release = Path("/etc/debian_version").read_text().strip()
    print("// Made by language_models.py, never edited by hand.\n//\n"
          f"// Origin: the translated messages of programs (*.mo) of a Debian {release} machine, and\n"
          "// charsets/facts. Licence: counts of characters, which are facts; no text is in here.\n"
          "// clang-format off")
    print_groups()
    for name, languages in MODELS.items():
        messages_counted = sum(len(texts_of(language)) for language in languages)
        changes, characters = count(languages)
        costs, others = character_costs(name, {c: w for c, w in characters.items()
                                               if ord(c) < 0x10000})
        bands = defaultdict(list)
        for character, cost in costs.items():
            if cost != others[group_of(character)]:
                bands[cost].append(character)
        print(f"\n// Of {messages_counted} messages in {', '.join(languages)}.")
        print(f"constexpr CharacterBand {name}Bands[] = {{")
        for cost in sorted(bands):
            print(f"  {{{cost},\n{quoted(sorted(bands[cost]))}}},")
        print("};")
        print(f"constexpr LanguageFacts {name}Facts = {{\n  {{")
        for row in change_costs(changes):
            print("    {" + ", ".join(f"{cost}" for cost in row) + "},")
        print("  },\n  {" + ", ".join(map(str, others)) + "},")
        print(f"  {name}Bands, std::size({name}Bands),\n}};")


if __name__ == "__main__":
    sys.stdout.reconfigure(encoding="utf-8")
    main()
