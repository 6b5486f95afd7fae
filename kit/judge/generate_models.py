#!/usr/bin/env python3
"""Writes language_models.inc: how usual characters and their neighbours are in each language.

    scripts/judge/training_texts.py --work /tmp/ksv-texts
    kit/judge/generate_models.py /tmp/ksv-texts/texts > kit/judge/language_models.inc

Counted are the texts of LANGUAGE/train, out of Debian's packages; what is measured later comes from
LANGUAGE/held, which is not read here. Languages that are written in an alphabet get the cost of
each letter behind each other one; those of East Asia that of each character, of the kinds of
characters behind each other, and of the pairs that are more usual than these two say. What
stands only in the national standards' sets gets what is left: level 1 before level 2, as
charsets/facts has their codes. To be run by hand where the figures are to be taken anew.
"""
import math
import sys
import unicodedata
from collections import Counter, defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

# Language: how its name is written in C++.
ALPHABETS = {
    "latin": "en de fr es pt it nl da sv nb fi is pl cs sk hu ro sl hr sq et lv lt tr eo ga cy ca eu "
             "gl vi".split(),
    "cyrillic": "ru uk bg sr mk be".split(),
    "greek": ["el"],
    "hebrew": ["he"],
    "arabic": ["ar", "fa"],
    "thai": ["th"],
}
EAST_ASIA = ["ja", "zh-CN", "zh-TW", "ko"]

# ---- Alphabets ----

SPACE, DIGIT, SIGN, OPENING, CLOSING, MARK, LATIN, STRANGE_LETTER, STRANGE, CONTROL = range(10)
FIRST_LETTER, SYMBOLS = 10, 64
DIGITS64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"

# What a byte above 7F stands for in texts of any language: what opens a word, what closes one, and
# other signs.
OPENINGS = set("\u00ab\u2018\u201a\u201b\u201c\u201e\u2039\u00bf\u00a1")
CLOSINGS = set("\u00bb\u2019\u201d\u203a\u00b4")
MARKS = set("\u00a0\u2013\u2014\u2026\u2022\u00b7\u00a7\u00b0\u00a9\u00ae\u2122\u20ac\u00a3\u2116"
            "\u200c\u200d\u200e\u200f\u060c\u061b\u061f\u0640\u05be\u05f3\u05f4\u0e2f\u0e3f")


def is_letter_like(character):
    return unicodedata.category(character)[0] in "LM"


def folded(character):
    lower = character.lower()
    return lower if len(lower) == 1 else character


class Alphabet:
    def __init__(self, script, texts):
        counts = Counter()
        for text in texts:
            counts.update(folded(c) for c in text if is_letter_like(c) and self.is_own(script, c))
        self.script = script
        most = SYMBOLS - FIRST_LETTER
        letters = set("abcdefghijklmnopqrstuvwxyz") if script == "latin" else set()
        total = sum(counts.values())
        for letter, count in counts.most_common():
            if len(letters) == most:
                break
            if ord(letter) < 0x10000 and count * 200000 >= total:
                letters.add(letter)
        self.letters = sorted(letters)
        self.index = {letter: FIRST_LETTER + i for i, letter in enumerate(self.letters)}

    @staticmethod
    def is_own(script, c):
        code = ord(c)
        if script == "latin":
            return c.isascii() or 0xC0 <= code <= 0x24F or 0x300 <= code <= 0x36F or 0x1E00 <= code <= 0x1EFF
        first, last = {"cyrillic": (0x400, 0x52F), "greek": (0x370, 0x3FF), "hebrew": (0x590, 0x5FF),
                       "arabic": (0x600, 0x6FF), "thai": (0xE00, 0xE7F)}[script]
        return first <= code <= last

    def symbol(self, c):
        if c in " \t\n\r\f":
            return SPACE
        if c in "0123456789":
            return DIGIT
        known = self.index.get(folded(c))
        if known is not None:
            return known
        if c.isascii():
            return LATIN if c.isalpha() else CONTROL if ord(c) < 0x20 or c == "\x7f" else SIGN
        for kind, characters in ((OPENING, OPENINGS), (CLOSING, CLOSINGS), (MARK, MARKS)):
            if c in characters:
                return kind
        if 0x80 <= ord(c) < 0xA0:
            return CONTROL
        return STRANGE_LETTER if self.is_own(self.script, c) and is_letter_like(c) else STRANGE


def quarter_bits(share, most=63):
    return most if share <= 0 else max(0, min(most, round(-4 * math.log2(share))))


def pair_costs(alphabet, texts):
    pairs = [[0.0] * SYMBOLS for _ in range(SYMBOLS)]
    for text in texts:
        before = SPACE
        for c in text:
            symbol = alphabet.symbol(c)
            pairs[before][symbol] += 1
            before = symbol
    size = FIRST_LETTER + len(alphabet.letters)
    behind = [sum(pairs[a][b] for a in range(size)) + 0.2 for b in range(size)]
    total = sum(behind)
    rows = []
    for a in range(size):
        weight = 3.0
        whole = sum(pairs[a]) + weight
        rows.append([quarter_bits((pairs[a][b] + weight * behind[b] / total) / whole)
                     for b in range(size)])
    return rows


CASES = ("none", "lower", "upper")


def case_of(c):
    return 1 if c.islower() else 2 if c.isupper() else 0


def case_costs(texts):
    """What a case costs behind another one, over what kind of character it is."""
    pairs = [[0.5] * 3 for _ in CASES]
    for text in texts:
        before = 0
        for c in text:
            case = case_of(c)
            pairs[before][case] += 1
            before = case
    rows = []
    for row in pairs:
        letters = row[1] + row[2]
        rows.append([0, quarter_bits(row[1] / letters), quarter_bits(row[2] / letters)])
    return rows


def escaped(text):
    return "".join(c if c.isascii() or (c.isalpha() and unicodedata.bidirectional(c) == "L")
                   else f'\\x{ord(c):04X}" u"' for c in text)


def print_alphabet(language, script, texts):
    alphabet = Alphabet(script, texts)
    name = identifier(language)
    rows = pair_costs(alphabet, texts)
    print(f"\n// {language}, of {sum(map(len, texts)):,} characters.")
    print(f"constexpr AlphabetFacts {name} = {{\n    {literal(alphabet.letters)},\n"
          f"    {literal(map(capital_of, alphabet.letters))},")
    heads = ["space", "digit", "sign", "opening", "closing", "mark", "latin", "strange letter", "strange", "control"]
    for index, row in enumerate(rows):
        head = heads[index] if index < FIRST_LETTER else shown(alphabet.letters[index - FIRST_LETTER])
        print(f'    "{"".join(DIGITS64[cost] for cost in row)}"  // {head}')
    print("};")


def capital_of(letter):
    upper = letter.upper()
    return upper if len(upper) == 1 and upper != letter else "\x01"


def literal(letters):
    return f'u"{escaped("".join(letters))}"'.replace('" u""', '"')


def shown(letter):
    plain = unicodedata.bidirectional(letter) == "L" and not unicodedata.combining(letter)
    return letter if plain and letter != "\\" else f"U+{ord(letter):04X}"


# ---- East Asia ----

GROUPS = ("space", "letter", "sign", "odd", "hiragana", "katakana", "half-width katakana",
          "wide sign", "han", "hangul", "lower", "upper", "symbol")
G_SPACE, G_LETTER, G_SIGN, G_ODD, HIRAGANA, KATAKANA, HALF_KATAKANA, WIDE, HAN, HANGUL, LOWER, \
    UPPER, SYMBOL = range(len(GROUPS))
ASCII_GROUPS = (G_SPACE, G_LETTER, G_SIGN)

# The codes of level 1 and level 2 of the sets that the standards divide.
LEVELS = {
    "ja": ("jis_x0208_windows.txt", (0x3021, 0x4F7E), (0x5021, 0x747E)),
    "zh-CN": ("gbk.txt", (0xB0A1, 0xD7FE), (0xD8A1, 0xF7FE)),
    "zh-TW": ("cp950.txt", (0xA440, 0xC67E), (0xC940, 0xF9D5)),
    "ko": ("cp949.txt", (0xB0A1, 0xC8FE), (0xCAA1, 0xFDFE)),
}
MOST_FOR_A_CHANGE, MOST_FOR_A_CHARACTER = 12, 18
# A group that the language's texts have this little of does not get cheap behind another.
LEAST_OF_A_GROUP, COST_OF_A_STRANGER = 1e-4, 9
# Of the characters of a group, what is kept for those that no text has; of that, the part of the
# second level, and of all that no level has.
UNSEEN, UNSEEN_ELSEWHERE = {HAN: 0.02, HANGUL: 0.01}, 0.01
LEVEL_TWO, NO_LEVEL = 0.12, 0.02
GROUP_SIZE = {HIRAGANA: 90, KATAKANA: 94, HALF_KATAKANA: 63, WIDE: 120, HAN: 20902,
              HANGUL: 11172, LOWER: 1000, UPPER: 500, SYMBOL: 2400}
PAIRS = 4600
LEAST_PAIR_COUNT = 4


def group_of(character):
    code = ord(character)
    if code < 0x80:
        if character in " \t\n\r\f":
            return G_SPACE
        if code < 0x20 or code == 0x7F:
            return G_ODD
        return G_LETTER if character.isalnum() else G_SIGN
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
        return G_ODD
    if 0xC0 <= code <= 0x24F and code not in (0xD7, 0xF7) or 0x370 <= code <= 0x6FF \
            or 0xE01 <= code <= 0xE4E or 0x1E00 <= code <= 0x1FFF:
        return UPPER if unicodedata.category(character) in ("Lu", "Lt") else LOWER
    return SYMBOL


def bits(share, most):
    return min(most, -math.log2(share)) if share > 0 else most


def change_costs(changes):
    """In quarter bits. Between ASCII nothing is counted: what a text has of it says nothing."""
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
                row.append(0)
                continue
            cost = bits((changes.get((before, group), 0) + 0.5) / total, MOST_FOR_A_CHANGE)
            row.append(round(4 * max(cost, COST_OF_A_STRANGER if group in strangers else 0)))
        rows.append(row)
    return rows


def level_characters(language):
    file, one, two = LEVELS[language]
    lines = (ROOT / "charsets/facts" / file).read_text("utf-8").split("\n\n", 1)[1]
    found = [], []
    for line in lines.splitlines():
        code, character = (int(part, 16) for part in line.split()[:2])
        for level, (first, last) in zip(found, (one, two)):
            if first <= code <= last and group_of(chr(character)) in (HAN, HANGUL):
                level.append(chr(character))
    return found


def character_shares(language, characters):
    """Of each group: how likely each of its characters is, and any other one."""
    by_group = defaultdict(dict)
    for character, weight in characters.items():
        by_group[group_of(character)][character] = weight
    level_one, level_two = level_characters(language)
    shares, others = {}, {}
    for group, size in GROUP_SIZE.items():
        seen = by_group.get(group, {})
        total = sum(seen.values())
        unseen = UNSEEN.get(group, UNSEEN_ELSEWHERE) if total else 1
        levels = [(part, [c for c in level if group_of(c) == group]) for part, level in
                  ((1 - LEVEL_TWO - NO_LEVEL, level_one), (LEVEL_TWO, level_two))]
        base = (NO_LEVEL if any(level for _, level in levels) else 1) * unseen / size
        others[group] = base
        share = defaultdict(lambda base=base: base)
        for part, level in levels:
            for character in level:
                share[character] += part * unseen / len(level)
        for character, weight in seen.items():
            share[character] += (1 - unseen) * weight / total
        shares.update(share)
    return shares, others


def usual_pairs(pairs, singles, changes, shares):
    """Those that save most bits over what group and character say: (saving, pair, bits)."""
    found = []
    rows = change_costs(changes)
    for (a, b), count in pairs.items():
        if count < LEAST_PAIR_COUNT:
            continue
        share = (count - 0.7) / singles[a]
        plain = rows[group_of(a)][group_of(b)] / 4 + bits(shares[b], MOST_FOR_A_CHARACTER)
        cost = -math.log2(share)
        if plain - cost >= 1.5:
            found.append((count * (plain - cost), a + b, max(1, round(cost))))
    return sorted(found, reverse=True)[:PAIRS]


def quoted(characters):
    """Lines of a literal. What could be read as something else is written by its number."""
    plain = [c if c.isalpha() and c.isprintable() and unicodedata.bidirectional(c) not in ("R", "AL")
             and not unicodedata.combining(c) else f"\\x{ord(c):04X}\" u\"" for c in characters]
    lines = ["".join(plain[i:i + 48]) for i in range(0, len(plain), 48)]
    return "\n".join(f'      u"{line}"' for line in lines).replace('" u""', '"')


def print_bands(kind, name, bands, in_order):
    print(f"constexpr {kind} {name}[] = {{")
    for cost in sorted(bands):
        print(f"  {{{cost},\n{quoted(in_order(bands[cost]))}}},")
    print("};")


def print_east_asian(language, texts):
    changes, characters, pairs, singles = Counter(), Counter(), Counter(), Counter()
    for text in texts:
        before, before_group = " ", G_SPACE
        for c in text:
            if ord(c) >= 0x10000:
                continue
            group = group_of(c)
            changes[before_group, group] += 1
            if group not in ASCII_GROUPS and group != G_ODD:
                characters[c] += 1
                singles[c] += 1
                if before_group not in ASCII_GROUPS and before_group != G_ODD:
                    pairs[before, c] += 1
            before, before_group = c, group
    shares, others = character_shares(language, characters)
    bands, pair_bands = defaultdict(list), defaultdict(list)
    costs_of_others = [0, 0, 0, 8] + [round(bits(others[g], MOST_FOR_A_CHARACTER))
                                      for g in range(4, len(GROUPS))]
    for character, share in shares.items():
        cost = max(0, round(bits(share, MOST_FOR_A_CHARACTER)))
        if cost != costs_of_others[group_of(character)]:
            bands[cost].append(character)
    for _, pair, cost in usual_pairs(pairs, singles, changes, shares):
        pair_bands[cost].append(pair)
    name = identifier(language)
    print(f"\n// {language}, of {sum(map(len, texts)):,} characters.")
    print_bands("Band", f"{name}Characters", bands, sorted)
    print_bands("Band", f"{name}Pairs", pair_bands, lambda band: "".join(sorted(band)))
    print(f"constexpr EastAsianFacts {name} = {{\n  {{")
    for row in change_costs(changes):
        print("    {" + ", ".join(map(str, row)) + "},")
    print("  },\n  {" + ", ".join(map(str, costs_of_others)) + "},")
    print(f"  {name}Characters, std::size({name}Characters), {name}Pairs, std::size({name}Pairs),\n}};")


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


# ---- All of it ----

def identifier(language):
    return "k" + language.replace("-", "").capitalize().replace("cn", "Cn").replace("tw", "Tw")


# No single text tells more than this many characters, so that none speaks for its language.
MOST_OF_A_TEXT = {"catalogue": 15000}
MOST_OF_ANY = 40000
# More does not change the figures of an alphabet.
MOST_OF_A_LANGUAGE = 1_500_000


# Letters that Unicode writes otherwise than older charsets, as these have them: with a cedilla.
OLDER_LETTERS = str.maketrans("\u0218\u0219\u021a\u021b", "\u015e\u015f\u0162\u0163")


def texts_of(root, language, most=1 << 40):
    texts = []
    for path in sorted((root / language / "train").glob("*.txt")):
        kind = path.name.split(".catalogue.")
        longest = MOST_OF_A_TEXT["catalogue"] if len(kind) > 1 else MOST_OF_ANY
        text = unicodedata.normalize("NFC", path.read_text("utf-8")[:longest])
        texts.append(text.translate(OLDER_LETTERS))
    share = min(1, most / max(1, sum(map(len, texts))))
    return [text[:int(len(text) * share)] for text in texts]


def main():
    root = Path(sys.argv[1])
    print("// Made by generate_models.py, never edited by hand.\n//\n"
          "// Origin: texts of the packages that scripts/judge/packages.txt lists, and charsets/facts.\n"
          "// Licence: counts of characters, which are facts; no text is in here.\n"
          "// clang-format off")
    for name, marks in (("kOpenings", OPENINGS), ("kClosings", CLOSINGS), ("kMarks", MARKS)):
        print(f"\nconstexpr char16_t {name}[] =\n" + quoted("".join(sorted(marks))) + ";")
    cased = []
    for script, languages in ALPHABETS.items():
        for language in languages:
            texts = texts_of(root, language, MOST_OF_A_LANGUAGE)
            if not texts:
                print(f"no texts in {language}", file=sys.stderr)
                continue
            if script in ("latin", "cyrillic", "greek"):
                cased += [text[:2000] for text in texts]
            print_alphabet(language, script, texts)
    print("\nconstexpr uint8_t kCaseCosts[3][3] = {")
    for row in case_costs(cased):
        print("  {" + ", ".join(map(str, row)) + "},")
    print("};")
    print_groups()
    for language in EAST_ASIA:
        print_east_asian(language, texts_of(root, language))


if __name__ == "__main__":
    sys.stdout.reconfigure(encoding="utf-8")
    main()
