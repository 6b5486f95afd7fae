"""Pieces of held-out texts as they are written in the charsets that their languages have."""
import ctypes
import random
import re
import unicodedata
from collections import defaultdict

WEST = ("windows-1252", "ISO-8859-1", "ISO-8859-15", "macintosh", "IBM850", "IBM437")
CENTRAL = ("windows-1250", "ISO-8859-2", "IBM852", "x-mac-ce")
BALTIC = ("windows-1257", "ISO-8859-13", "ISO-8859-4", "ISO-8859-10", "IBM775")
CYRILLIC = ("windows-1251", "ISO-8859-5", "IBM855", "x-mac-cyrillic")
UNICODE = ("UTF-8", "UTF-16LE", "UTF-16BE")
# What each language was really written in, beside Unicode.
WRITTEN_IN = {
    "ja": ("Shift_JIS", "EUC-JP", "ISO-2022-JP"),
    "zh-CN": ("GBK", "GB18030", "HZ-GB-2312"),
    "zh-TW": ("Big5", "EUC-TW"),
    "ko": ("EUC-KR", "ISO-2022-KR", "Johab"),
    "en": ("windows-1252", "macintosh"),
    "de": WEST, "fr": WEST, "es": WEST, "it": WEST, "nl": WEST, "sv": WEST, "fi": WEST,
    "pt": WEST[:5] + ("IBM860",), "da": WEST[:5] + ("IBM865",), "nb": WEST[:5] + ("IBM865",),
    "is": WEST[:5] + ("IBM861",), "ca": WEST[:5], "eu": WEST[:4], "gl": WEST[:5],
    "pl": CENTRAL, "cs": CENTRAL, "sk": CENTRAL, "hu": CENTRAL,
    "sl": CENTRAL, "hr": CENTRAL, "ro": ("windows-1250", "ISO-8859-2", "IBM852", "ISO-8859-16"),
    "sq": ("windows-1252", "ISO-8859-1", "windows-1250"),
    "et": ("windows-1252", "ISO-8859-15") + BALTIC, "lv": BALTIC, "lt": BALTIC,
    "tr": ("windows-1254", "ISO-8859-9", "IBM857", "x-mac-turkish"),
    "eo": ("ISO-8859-3",), "ga": ("windows-1252", "ISO-8859-1", "ISO-8859-14"),
    "cy": ("ISO-8859-14",),
    "vi": ("windows-1258", "VISCII", "TCVN"),
    "ru": CYRILLIC + ("KOI8-R", "IBM866"), "uk": ("windows-1251", "KOI8-U", "ISO-8859-5", "IBM1125"),
    "bg": CYRILLIC + ("IBM866",), "sr": CYRILLIC, "mk": CYRILLIC,
    "be": ("windows-1251", "ISO-8859-5"),
    "el": ("windows-1253", "ISO-8859-7", "IBM737", "IBM869", "x-mac-greek"),
    "he": ("windows-1255", "ISO-8859-8", "IBM862"),
    "ar": ("windows-1256", "ISO-8859-6", "IBM720", "x-mac-arabic"),
    "fa": ("windows-1256", "x-mac-farsi"),
    "th": ("TIS-620", "windows-874"),
}
# Names with Python's codecs; all others are iconv's.
CODECS = {
    "US-ASCII": "ascii", "Shift_JIS": "cp932", "EUC-JP": "euc_jp", "ISO-2022-JP": "iso2022_jp",
    "GBK": "gbk", "HZ-GB-2312": "hz", "Big5": "cp950", "EUC-KR": "cp949",
    "ISO-2022-KR": "iso2022_kr", "windows-1258": "iconv:CP1258", "VISCII": "iconv:VISCII",
    "TCVN": "iconv:TCVN", "EUC-TW": "iconv:EUC-TW", "macintosh": "mac_roman",
    "x-mac-ce": "mac_latin2", "x-mac-cyrillic": "mac_cyrillic", "x-mac-turkish": "mac_turkish",
    "x-mac-greek": "mac_greek", "x-mac-arabic": "mac_arabic", "x-mac-farsi": "mac_farsi",
    "TIS-620": "tis_620", "windows-874": "cp874",
    **{f"IBM{i}": f"cp{i}" for i in (437, 720, 737, 775, 850, 852, 855, 857, 858, 860, 861, 862, 863,
                                     864, 865, 866, 869, 1125)},
    **{f"windows-125{i}": f"cp125{i}" for i in range(8)},
}

# What a writer takes where the charset lacks the sign.
PLAIN_SIGNS = str.maketrans({
    "“": '"', "”": '"', "„": '"', "«": '"', "»": '"', "‘": "'", "’": "'", "‚": ",", "′": "'",
    "″": '"', "…": "...", "–": "-", "—": "-", "‐": "-", "‑": "-", "−": "-", "•": "*", "·": "*",
    "\xa0": " ", "\u202f": " ", "\u2009": " ", "→": "->", "←": "<-", "×": "x", "€": "EUR",
    "©": "(c)", "®": "(R)", "™": "(TM)", "\u200e": "", "\u200f": "", "\u200c": "", "\u200d": "",
    "\u202a": "", "\u202b": "", "\u202c": "", "¡": "!", "№": "N", "°": "o", "´": "'"})
PLAIN_LETTERS = {
    "ro": str.maketrans("șțȘȚ", "şţŞŢ"), "fa": str.maketrans("یۀ", "يه"),
    "de": str.maketrans({"ẞ": "SS"}), "ca": str.maketrans({"ŀ": "l·"}),
    "fr": str.maketrans({"œ": "oe", "Œ": "OE"}),
}
# Characters that one charset's code is taken for by one table or the other.
VARIANTS = str.maketrans({0x301C: 0xFF5E, 0x2016: 0x2225, 0x2212: 0xFF0D, 0xA2: 0xFFE0,
                          0xA3: 0xFFE1, 0xAC: 0xFFE2, 0x2014: 0x2015, 0x2027: 0xB7, 0x2022: 0xB7,
                          0x30FB: 0xB7, 0xFFE3: 0xAF, 0x203E: 0xAF, 0x2299: 0x2609, 0x2295: 0x2641,
                          0x20A9: 0x5C, 0xA5: 0x5C, 0x03BC: 0xB5, 0x2126: 0x3A9, 0xFF3C: 0x5C,
                          0x223C: 0xFF5E, 0xFF0F: 0x2215, 0x02D9: 0xB7, 0x66: 0x66})
TONES = "\u0300\u0301\u0303\u0309\u0323"


def normal(text):
    """What is the same in readings of a text that tables of the same charset give."""
    return unicodedata.normalize("NFC", text.removeprefix("\ufeff")).translate(VARIANTS)


class Iconv:
    """The C library's converters, of which Python does not have all."""
    libc = ctypes.CDLL(None, use_errno=True)
    libc.iconv_open.restype = ctypes.c_void_p
    libc.iconv_open.argtypes = [ctypes.c_char_p, ctypes.c_char_p]
    libc.iconv.restype = ctypes.c_size_t
    libc.iconv.argtypes = [ctypes.c_void_p] + [ctypes.c_void_p] * 4
    known = {}

    @classmethod
    def open(cls, to, source):
        pair = (to, source)
        if pair not in cls.known:
            handle = cls.libc.iconv_open(to.encode(), source.encode())
            cls.known[pair] = None if handle in (None, ctypes.c_void_p(-1).value) else handle
        return cls.known[pair]

    @classmethod
    def convert(cls, to, source, data):
        handle = cls.open(to, source)
        if handle is None:
            raise LookupError(source)
        out = ctypes.create_string_buffer(6 * len(data) + 64)
        source_at = ctypes.c_char_p(data)
        source_left = ctypes.c_size_t(len(data))
        out_at = ctypes.c_void_p(ctypes.addressof(out))
        out_left = ctypes.c_size_t(len(out))
        cls.libc.iconv(handle, None, None, None, None)
        for at, left in ((ctypes.byref(source_at), ctypes.byref(source_left)), (None, None)):
            if cls.libc.iconv(handle, at, left, ctypes.byref(out_at), ctypes.byref(out_left)) \
                    == ctypes.c_size_t(-1).value:
                return None
        return out.raw[:len(out) - out_left.value]


def with_tones_apart(text):
    """Vietnamese with its five tones as characters of their own."""
    result = []
    for character in text:
        parts = unicodedata.normalize("NFD", character)
        tone = "".join(part for part in parts if part in TONES)
        rest = "".join(part for part in parts if part not in TONES)
        result.append(unicodedata.normalize("NFC", rest) + tone)
    return "".join(result)


def encode(text, charset):
    """The bytes, or None where the charset does not have all of the text."""
    codec = CODECS.get(charset, charset)
    if charset == "windows-1258":
        text = with_tones_apart(text)
    if codec.startswith("iconv:"):
        return Iconv.convert(codec[6:], "UTF-8", text.encode())
    try:
        return text.encode(codec)
    except UnicodeEncodeError:
        return None


def decode(data, charset):
    """The text, or None where the bytes are none in the charset. LookupError: there is no such one."""
    codec = CODECS.get(charset, charset)
    if codec.startswith("iconv:"):
        utf8 = Iconv.convert("UTF-8", codec[6:], data)
        return None if utf8 is None else utf8.decode("utf-8", "replace")
    try:
        return data.decode(codec)
    except UnicodeDecodeError:
        return None


class Writing(dict):
    """A table for str.translate: what a language's writer puts for characters that the charset lacks."""

    def __init__(self, language, charset):
        super().__init__()
        self.letters = PLAIN_LETTERS.get(language, {})
        self.charset = charset
        self.has_all = charset.startswith(("UTF", "GB18030"))

    def __missing__(self, code):
        character = chr(code)
        if not self.has_all and encode(character, self.charset) is None:
            character = character.translate(self.letters).translate(PLAIN_SIGNS)
        self[code] = character
        return character

    def line(self, line):
        """The line as it is written, or None where it cannot be."""
        if not self.has_all:
            line = line.translate(self)
            if encode(line, self.charset) is None:
                return None
        return line


class HeldTexts:
    """A language's held-out documents."""

    def __init__(self, folder, language):
        self.language = language
        self.by_package = defaultdict(list)
        for path in sorted((folder / language / "held").glob("*.txt")):
            package = path.name.rsplit(".txt", 1)[0].split(".page.")[0].split(".catalogue.")[0] \
                .split(".help.")[0].split(".manual.")[0].split(".plain.")[0]
            self.by_package[package].append(path)
        self.packages = sorted(self.by_package)
        self.lines_of = {}

    def document(self, path):
        if path not in self.lines_of:
            self.lines_of[path] = path.read_text(encoding="utf-8").splitlines()
        return self.lines_of[path]

    def chosen(self, chance):
        return chance.choice(self.by_package[chance.choice(self.packages)])


SENTENCE_END = re.compile(r"[.!?…][\"”»)]?\s+|[。！？]")
NOT_ASCII = re.compile("[^\0-\x7f]")
ONE_BYTE = re.compile("windows-125[0-7]|windows-874|ISO-8859|IBM|KOI8|x-mac|macintosh|TIS|US-ASCII|"
                      "VISCII")


def length_of_beginning(text, charset, most):
    """How many characters of the text have at most so many bytes."""
    if ONE_BYTE.match(charset):
        return min(len(text), most)
    low, high = 0, min(len(text), most)
    while low < high:
        middle = (low + high + 1) // 2
        if len(encode(text[:middle], charset)) <= most:
            low = middle
        else:
            high = middle - 1
    return low


def beginning(text, charset, most):
    """The longest beginning of at most so many bytes, and its bytes."""
    length = length_of_beginning(text, charset, most)
    while 0 < length < len(text) and unicodedata.combining(text[length]):
        length -= 1
    return text[:length], encode(text[:length], charset)


def joined(lines, writing, most):
    """Lines as they are written, without those that cannot be, until there are enough characters."""
    found, length = [], 0
    for line in filter(None, map(writing.line, lines)):
        found.append(line)
        length += len(line) + 1
        if length > most:
            break
    return "\n".join(found) + "\n"


def piece(texts, writing, length, chance):
    """A piece from the start of a line or sentence, or None: (text, bytes)."""
    lines = texts.document(texts.chosen(chance))
    number = chance.randrange(len(lines))
    first = writing.line(lines[number])
    if not first:
        return None
    starts = [0] + [found.end() for found in SENTENCE_END.finditer(first)]
    text = first[chance.choice(starts):] + "\n" + joined(lines[number + 1:], writing, length)
    text, data = beginning(text, writing.charset, length)
    return (text, data) if len(data) >= (length / 2 if length < 100 else 0.7 * length) else None


def whole(path, texts, writing, most=65536):
    """A document, or its beginning where it is long: (text, bytes)."""
    text, data = beginning(joined(texts.document(path), writing, most), writing.charset, most)
    return (text, data) if len(data) >= 100 else None


def tries(texts, writing, length, count, chance):
    """Pieces, or None where a try came to nothing; documents, each once, for the length None."""
    if length is None:
        paths = [path for package in texts.packages for path in texts.by_package[package]]
        chance.shuffle(paths)
        for path in paths[:8 * count]:
            yield whole(path, texts, writing)
    else:
        for _ in range(60 * count):
            yield piece(texts, writing, length, chance)


def pieces(texts, charset, length, count, seed):
    """At most so many different pieces, length None: whole texts. The same for the same seed."""
    chance = random.Random(f"{seed} {texts.language} {charset} {length}")
    found = {}
    for one in tries(texts, Writing(texts.language, charset), length, count, chance):
        if one and (NOT_ASCII.search(one[0]) is None) == (charset == "US-ASCII"):
            found.setdefault(one[1], one[0])
        if len(found) == count:
            break
    return [(text, data) for data, text in found.items()]


def charsets_of(language):
    names = WRITTEN_IN[language] + UNICODE
    return names + ("US-ASCII",) if language in ("en", "de", "nl") else names
