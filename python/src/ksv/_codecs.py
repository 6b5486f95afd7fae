"""Python codecs of all charsets: `data.decode("ksv-cp932")`, once `ksv.register_codecs()` was called."""
from __future__ import annotations

import codecs
import threading
from typing import Optional

from ksv._charset_codec import CharsetCodec
from ksv._charsets import charset
from ksv._errors import UnknownCharset
from ksv._incremental_codecs import (IncrementalEncoder, StreamReader, StreamWriter, codec_class,
                                     decoder_class)

PREFIX = "ksv_"


def find(name: str) -> Optional[codecs.CodecInfo]:
    """For codecs.register: names come in lower case, with underscores."""
    if not name.startswith(PREFIX):
        return None
    spelling = name[len(PREFIX):]
    try:
        codec = CharsetCodec(charset(spelling), spelling)
    except UnknownCharset:
        return None
    return codecs.CodecInfo(codec.encode, codec.decode, codec_class(StreamReader, codec),
                            codec_class(StreamWriter, codec), codec_class(IncrementalEncoder, codec),
                            decoder_class(codec), name=codec.name)


_registering = threading.Lock()
_is_registered = False


def register_codecs() -> None:
    """Makes codecs named `ksv-NAME` known to Python, NAME being any name of a charset: `"ksv-cp932"`. May be
    called again."""
    global _is_registered
    with _registering:
        if not _is_registered:
            codecs.register(find)
            _is_registered = True
