"""Judges of charsets: this project's library and its peers, each told bytes and asked for a name."""
import ctypes
import ctypes.util
import importlib
import importlib.metadata
import re
import subprocess
import sys
import venv

from written_texts import CODECS, decode, normal

# Names that mean the same, or that everybody reads alike: what the web's standard reads by one table
# stands together. The first of each is how written_texts.py calls it.
SAME = (
    ("US-ASCII", "ASCII", "ANSI_X3.4-1968", "ISO-646IRV"),
    ("UTF-8", "utf-8-sig"), ("UTF-16LE",), ("UTF-16BE",),
    ("Shift_JIS", "SJIS", "CP932", "windows-31j", "MS932", "Windows-932", "WINDOWS31J"),
    ("EUC-JP", "eucJP-ms", "CP51932"),
    ("ISO-2022-JP", "ISO-2022-JP-1", "ISO-2022-JP-2", "ISO-2022-JP-3", "ISO-2022-JP-EXT",
     "ISO-2022-JP-2004", "CP50220", "CP50221", "CP50222"),
    ("GBK", "GB2312", "CP936", "GB18030", "EUC-CN", "MS936", "ChineseGBK"), ("HZ-GB-2312", "HZ"),
    ("Big5", "CP950", "Big5-HKSCS", "Big5-ETEN", "ChineseBIG5"), ("EUC-TW",),
    ("EUC-KR", "CP949", "UHC", "KS_C_5601-1987", "windows-949", "KoreanKSC"),
    ("ISO-2022-KR",), ("Johab", "CP1361"),
    ("windows-1252", "ISO-8859-1", "latin1", "CP1252"),
    ("windows-1254", "ISO-8859-9", "latin5", "CP1254"),
    ("TIS-620", "windows-874", "ISO-8859-11", "CP874"),
    ("ISO-8859-8", "ISO-8859-8-I"), ("macintosh", "MacRoman", "mac_roman", "x-mac-roman"),
    ("x-mac-ce", "MacCentralEurope", "mac_latin2", "MAC-CENTRALEUROPE", "x-mac-centraleurroman"),
    ("x-mac-cyrillic", "MacCyrillic", "mac_cyrillic", "x-mac-ukrainian"),
    ("x-mac-turkish", "mac_turkish"), ("x-mac-greek", "mac_greek"),
    ("x-mac-arabic", "mac_arabic"), ("x-mac-farsi", "mac_farsi"),
    ("TCVN", "TCVN5712-1", "TCVN-5712", "TCVN5712-1:1993"), ("VISCII",),
    ("IBM1125", "CP1125", "RUSCII"), ("KOI8-U",), ("KOI8-R",),
    *[(f"IBM{n}", f"CP{n}", str(n)) for n in
      ("437", "720", "737", "775", "850", "852", "855", "857", "858", "860", "861", "862", "864", "865", "866",
       "869")],
    *[(f"windows-{n}", f"CP{n}") for n in (1250, 1251, 1253, 1255, 1256, 1257, 1258)],
)


def plain(name):
    return re.sub(r"[\W_]", "", name.lower())


NAME_OF = {plain(name): names[0] for names in SAME for name in names}


def canonical(name):
    """The name of written_texts.py where it is one of the charset's, else the name."""
    return NAME_OF.get(plain(name), name)




# What a name is read by where that is not the codec of the name.
READ_BY = {"iso88591": "windows-1252", "gbk": "GB18030", "tis620": "windows-874",
           "iso88598i": "ISO-8859-8", "iso2022jp": "iso2022_jp_ext", "big5hkscs": "big5hkscs",
           "iso2022cn": "iconv:ISO-2022-CN"}


def readers(name):
    """Names of codecs that may have the charset, the best one first."""
    known = canonical(name)
    yield from filter(None, (READ_BY.get(plain(name)), READ_BY.get(plain(known))))
    if plain(name) not in ("iso88599", "iso88591"):
        yield CODECS.get(known, known)
    yield name
    yield f"iconv:{name}"


def reading(data, name):
    """The text that a charset's name gives, by whatever has such a charset; None: there is none."""
    for codec in readers(name):
        try:
            text = decode(data, codec)
        except (LookupError, UnicodeError):
            continue
        if text is not None or codec != "windows-1252":
            return text
    return None


class Answer:
    """What a judge says of a piece: a charset's name or None, and its confidence or None."""

    def __init__(self, name, confidence=None, text=None, language="", decode_as=None):
        self.name = name
        self.decode_as = decode_as or name  # what it says to read the piece by
        self.confidence = confidence
        self.text = text  # how it reads the piece itself, where it does
        self.language = language

    def names(self, charset):
        """Whether one of its names is the charset's."""
        return canonical(charset) in map(canonical, filter(None, (self.name, self.decode_as)))

    def reads(self, piece):
        """Whether what is named gives the piece's text."""
        text, data = piece
        if not self.name:
            return False
        got = self.text if self.text is not None else reading(data, self.name)
        return got is not None and normal(got) == normal(text)


class Uchardet:
    name = "uchardet"
    slow = False

    def __init__(self):
        self.library = ctypes.CDLL("libuchardet.so.0")
        self.library.uchardet_new.restype = ctypes.c_void_p
        self.library.uchardet_get_charset.restype = ctypes.c_char_p
        for call in ("reset", "data_end", "get_charset"):
            getattr(self.library, f"uchardet_{call}").argtypes = [ctypes.c_void_p]
        self.library.uchardet_handle_data.argtypes = [ctypes.c_void_p, ctypes.c_char_p,
                                                      ctypes.c_size_t]
        self.handle = self.library.uchardet_new()

    def version(self):
        return debian_version("libuchardet0")

    def judge(self, data):
        self.library.uchardet_reset(self.handle)
        self.library.uchardet_handle_data(self.handle, data, len(data))
        self.library.uchardet_data_end(self.handle)
        return Answer(self.library.uchardet_get_charset(self.handle).decode() or None)


class Icu:
    name = "ICU"
    slow = False
    VERSION = 72

    def __init__(self):
        self.library = ctypes.CDLL(f"libicui18n.so.{self.VERSION}")
        self.call("open").restype = ctypes.c_void_p
        self.call("detect").restype = ctypes.c_void_p
        self.call("getName").restype = ctypes.c_char_p
        self.call("open").argtypes = [ctypes.c_void_p]
        self.call("setText").argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int32,
                                         ctypes.c_void_p]
        for name in ("detect", "getName", "getConfidence"):
            self.call(name).argtypes = [ctypes.c_void_p, ctypes.c_void_p]
        self.status = ctypes.c_int32(0)
        self.handle = self.call("open")(ctypes.byref(self.status))

    def call(self, name):
        return getattr(self.library, f"ucsdet_{name}_{self.VERSION}")

    def version(self):
        return debian_version(f"libicu{self.VERSION}")

    def judge(self, data):
        status = ctypes.byref(self.status)
        self.status.value = 0
        self.call("setText")(self.handle, data, len(data), status)
        match = self.call("detect")(self.handle, status)
        if self.status.value > 0 or not match:
            return Answer(None)
        confidence = self.call("getConfidence")(match, status) / 100
        return Answer(self.call("getName")(match, status).decode(), confidence)


class PythonPeer:
    """A peer of the Python package index."""

    def version(self):
        return importlib.metadata.version(self.package)


class Cchardet(PythonPeer):
    name = package = "faust-cchardet"
    slow = False

    def __init__(self):
        self.module = importlib.import_module("cchardet")

    def judge(self, data):
        found = self.module.detect(data)
        return Answer(found["encoding"], found["confidence"])


class Chardet(PythonPeer):
    name = package = "chardet"
    slow = True

    def __init__(self):
        self.module = importlib.import_module("chardet")

    def judge(self, data):
        found = self.module.detect(data)
        return Answer(found["encoding"], found["confidence"])


class CharsetNormalizer(PythonPeer):
    name = package = "charset-normalizer"
    slow = True

    def __init__(self):
        self.module = importlib.import_module("charset_normalizer")

    def judge(self, data):
        found = self.module.from_bytes(data).best()
        return Answer(found.encoding if found else None)


class KsvGuess(ctypes.Structure):
    _fields_ = [("charset", ctypes.c_char_p), ("decode_as", ctypes.c_char_p),
                ("language", ctypes.c_char_p), ("reason", ctypes.c_char_p),
                ("confidence", ctypes.c_double), ("invalid_offset", ctypes.c_uint64),
                ("line_end", ctypes.c_int32), ("mark_length", ctypes.c_uint32)]


class Ksv:
    name = "ksv"
    slow = False

    def __init__(self, path):
        library = self.library = ctypes.CDLL(str(path))
        library.ksv_version.restype = ctypes.c_char_p
        library.ksv_detect.argtypes = [ctypes.c_char_p, ctypes.c_size_t, ctypes.c_void_p,
                                       ctypes.c_void_p, ctypes.c_void_p]
        library.ksv_detection_guess.restype = ctypes.POINTER(KsvGuess)
        library.ksv_detection_guess.argtypes = [ctypes.c_void_p, ctypes.c_size_t]
        library.ksv_detection_free.argtypes = [ctypes.c_void_p]
        library.ksv_convert.argtypes = [ctypes.c_char_p, ctypes.c_char_p, ctypes.c_void_p,
                                        ctypes.c_char_p, ctypes.c_size_t, ctypes.c_void_p,
                                        ctypes.c_void_p, ctypes.c_void_p]
        library.ksv_free.argtypes = [ctypes.c_void_p]
        library.ksv_charset_find.restype = ctypes.c_void_p
        library.ksv_charset_find.argtypes = [ctypes.c_char_p]

    def version(self):
        return self.library.ksv_version().decode()

    def has(self, charset):
        return bool(self.library.ksv_charset_find(charset.encode()))

    def text_of(self, data, charset):
        """How the library reads the bytes; None where it finds a fault in them."""
        text, length = ctypes.c_void_p(), ctypes.c_size_t()
        result = self.library.ksv_convert(charset, b"UTF-8", None, data, len(data),
                                          ctypes.byref(text), ctypes.byref(length), None)
        if result != 0:
            return None
        try:
            return ctypes.string_at(text, length.value).decode()
        finally:
            self.library.ksv_free(text)

    def judge(self, data):
        detection = ctypes.c_void_p()
        result = self.library.ksv_detect(data, len(data), None, ctypes.byref(detection), None)
        if result != 0:
            raise RuntimeError(f"ksv_detect fails with {result} on {data[:64].hex()}")
        try:
            guess = self.library.ksv_detection_guess(detection, 0)
            if not guess:
                return Answer(None)
            return self.answer(data, guess.contents)
        finally:
            self.library.ksv_detection_free(detection)

    def answer(self, data, guess):
        text = self.text_of(data, guess.decode_as) if guess.decode_as else None
        return Answer(guess.charset.decode(), guess.confidence, text, guess.language.decode(),
                      (guess.decode_as or b"").decode())


def debian_version(package):
    run = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], capture_output=True,
                         text=True, check=False)
    return run.stdout or "unknown"


PYTHON_PEERS = {peer.package: peer for peer in (Cchardet, Chardet, CharsetNormalizer)}


def get_python_peers(work):
    """Makes the peers of the package index known to this process, below the work directory."""
    folder = work / "venv"
    if not (folder / "bin/python").exists():
        venv.create(folder, with_pip=True)
        subprocess.run([folder / "bin/pip", "install", "-q", *PYTHON_PEERS], check=True)
    sys.path[:0] = map(str, folder.glob("lib/python*/site-packages"))


def judges(names, work, library):
    """The judges of those names that there are."""
    if any(name in PYTHON_PEERS for name in names):
        get_python_peers(work)
    makers = {"ksv": lambda: Ksv(library), "uchardet": Uchardet, "ICU": Icu, **PYTHON_PEERS}
    return [makers[name]() for name in names]
