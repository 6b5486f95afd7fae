"""Texts that codecs of Python are given in pieces, and streams of bytes that are read and written as texts."""
from __future__ import annotations

import codecs
import io
from typing import Any, Optional

from ksv._charset_codec import MARK, POLICIES_OF_DECODING, WIDE, CharsetCodec, text_of_wide
from ksv._charsets import charset
from ksv._conversion import Converter
from ksv._errors import TextError
from ksv._options import Problem


class IncrementalDecoder(codecs.IncrementalDecoder):
    """Of a charset whose bytes mean the same wherever they stand: what waits are the bytes of a character that
    is not complete."""

    codec: CharsetCodec

    def __init__(self, errors: str = "strict") -> None:
        super().__init__(errors)
        self._waiting = b""

    def decode(self, input: Any, final: bool = False) -> str:
        data = self._waiting + bytes(input)
        handler = None if self.errors == "strict" else codecs.lookup_error(self.errors)
        text, self._waiting = self.codec.decode_pieces(data, handler, is_whole=final)
        return text

    def reset(self) -> None:
        self._waiting = b""

    def getstate(self) -> tuple[bytes, int]:
        return self._waiting, 0

    def setstate(self, state: tuple[bytes, int]) -> None:
        self._waiting = state[0]


class StatefulDecoder(codecs.IncrementalDecoder):
    """Of a charset with escape or shift sequences. Where it is in them cannot be told to anyone: files can be
    read on, and from their beginning."""

    codec: CharsetCodec

    def __init__(self, errors: str = "strict") -> None:
        super().__init__(errors)
        self.reset()

    def reset(self) -> None:
        self._taken, self._data = 0, b""
        policy: Any = POLICIES_OF_DECODING.get(self.errors, self._ask)
        replacement = "\ufffd" if policy == "replace" else None
        self._converter = Converter(self.codec.charset, WIDE, invalid=policy,
                                    mark=self.codec.mark_in, invalid_text=replacement)

    def _ask(self, problem: Problem) -> str:
        handler = codecs.lookup_error(self.errors)
        answer: str = self.codec.decoding_question(self._data, handler, self._taken)(problem)
        return answer

    def decode(self, input: Any, final: bool = False) -> str:
        self._data = data = bytes(input)
        try:
            converted = self._converter.feed(data)
            if final:
                converted += self._converter.finish()
        except TextError as error:
            raise self.codec.decode_error(data, error, -self._taken) from None
        self._taken = 0 if final else self._taken + len(data)
        return text_of_wide(converted)

    def getstate(self) -> tuple[bytes, int]:
        return b"", self._taken

    def setstate(self, state: tuple[bytes, int]) -> None:
        if state == (b"", self._taken):
            return
        if state != (b"", 0):
            raise io.UnsupportedOperation(f"{self.codec.name} cannot be read from the middle on")
        self.reset()


class MarkedDecoder(codecs.IncrementalDecoder):
    """Of a form of Unicode whose order of bytes a mark tells, if there is one."""

    codec: CharsetCodec

    def __init__(self, errors: str = "strict") -> None:
        super().__init__(errors)
        assert self.codec.orders is not None
        self._orders = self.codec.orders
        form = "utf-32" if self._orders[0].startswith("UTF-32") else "utf-16"
        self._marks = [MARK.encode(f"{form}-le"), MARK.encode(f"{form}-be")]
        self.reset()

    def reset(self) -> None:
        self._begin(None)

    def _begin(self, order: Optional[int]) -> None:
        self._order, self._waiting = order, b""
        name = self._orders[order or 0]
        self._decoder = codec_class(IncrementalDecoder, CharsetCodec(charset(name), name))(self.errors)

    def decode(self, input: Any, final: bool = False) -> str:
        data = self._waiting + bytes(input)
        if self._order is None:
            if len(data) < len(self._marks[0]) and not final:
                self._waiting = data
                return ""
            self._begin(1 if data.startswith(self._marks[1]) else 0)
            if data.startswith(tuple(self._marks)):
                data = data[len(self._marks[0]):]
        text: str = self._decoder.decode(data, final)
        return text

    def getstate(self) -> tuple[bytes, int]:
        if self._order is None:
            return self._waiting, 0
        return self._decoder.getstate()[0], self._order + 1

    def setstate(self, state: tuple[bytes, int]) -> None:
        waiting, order = state
        self._begin(order - 1 if order else None)
        if order:
            self._decoder.setstate((waiting, 0))
        else:
            self._waiting = waiting


class IncrementalEncoder(codecs.IncrementalEncoder):
    """Every piece is encoded to its end, and closed in charsets with escape sequences: text files never tell their
    encoders that there is no more to come."""

    codec: CharsetCodec

    def __init__(self, errors: str = "strict") -> None:
        super().__init__(errors)
        self._is_begin = True

    def encode(self, input: str, final: bool = False) -> bytes:
        if input == "":
            return b""
        encoded = self.codec.encode(input, self.errors, self._is_begin)[0]
        self._is_begin = final
        return encoded

    def reset(self) -> None:
        self._is_begin = True

    def getstate(self) -> int:
        return 2 if self._is_begin else 0

    def setstate(self, state: Any) -> None:
        """0 is the middle of a text, where no mark is written."""
        self._is_begin = state == 2


class StreamReader(codecs.StreamReader):
    codec: CharsetCodec

    def __init__(self, stream: Any, errors: str = "strict") -> None:
        super().__init__(stream, errors)
        self._decoder = decoder_class(self.codec)(errors)

    def decode(self, input: Any, errors: str = "strict") -> tuple[str, int]:
        return self._decoder.decode(input), len(input)

    def reset(self) -> None:
        super().reset()
        self._decoder.reset()


class StreamWriter(codecs.StreamWriter):
    codec: CharsetCodec

    def __init__(self, stream: Any, errors: str = "strict") -> None:
        super().__init__(stream, errors)
        self._encoder = codec_class(IncrementalEncoder, self.codec)(errors)

    def encode(self, input: str, errors: str = "strict") -> tuple[bytes, int]:
        return self._encoder.encode(input), len(input)

    def reset(self) -> None:
        super().reset()
        self._encoder.reset()


def codec_class(kind: Any, codec: CharsetCodec) -> Any:
    """Python makes objects of these classes by itself, and tells them errors only."""
    return type(kind.__name__, (kind,), {"codec": codec})


def decoder_class(codec: CharsetCodec) -> Any:
    if codec.orders is not None:
        return codec_class(MarkedDecoder, codec)
    return codec_class(StatefulDecoder if codec.is_stateful else IncrementalDecoder, codec)
