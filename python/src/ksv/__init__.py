"""Conversion between character encodings, and detection of them.

    >>> import ksv
    >>> ksv.convert(b"\\x91\\x90\\x96\\x8d", "sjis", "utf-8").decode()
    '草枕'
    >>> ksv.register_codecs()
    >>> b"\\x91\\x90\\x96\\x8d".decode("ksv-cp932")
    '草枕'

Every call leaves the interpreter's lock to others while it works, so that threads make use of all cores.
"""
from ksv._buffers import Buffer
from ksv._charsets import Charset, charset, charsets, leading_piece
from ksv._codecs import register_codecs
from ksv._conversion import Converter, convert, report
from ksv._detection import (Detection, Detector, Guess, Repair, Segment, detect, detect_file,
                            repair, segments)
from ksv._documents import (Damage, Document, DocumentKind, Entry, Property, PropertySection,
                            read_properties)
from ksv._errors import (BadArgument, Damaged, Error, InvalidText, NoDocument, SystemFailure,
                         TextError, TruncatedText, UnknownCharset, UnmappableCharacter, text_of)
from ksv._native import lib
from ksv._options import Problem

__version__: str = text_of(lib.ksv_version())

__all__ = [
    "BadArgument", "Buffer", "Charset", "Converter", "Damage", "Damaged", "Detection", "Detector",
    "Document", "DocumentKind", "Entry", "Error", "Guess", "InvalidText", "NoDocument", "Problem",
    "Property", "PropertySection", "Repair", "Segment", "SystemFailure", "TextError", "TruncatedText",
    "UnknownCharset", "UnmappableCharacter", "charset", "charsets", "convert", "detect",
    "detect_file", "leading_piece", "read_properties", "register_codecs", "repair", "report", "segments",
]
