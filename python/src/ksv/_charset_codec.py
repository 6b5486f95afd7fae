"""What a codec of Python does with whole texts of a charset.

Between the library and `str` a text is in UTF-16, which Python reads and writes several times as fast as UTF-8,
unless it is ASCII. A text with lone surrogates is in UTF-32 where it has to stay in one piece.
"""
from __future__ import annotations

import codecs
import re
import unicodedata
from typing import Any, Callable, Optional, Union

from ksv._charsets import Charset
from ksv._errors import (Error, InvalidText, TextError, TruncatedText, UnknownCharset,
                         UnmappableCharacter)
from ksv._options import Options, Problem
from ksv._plans import Plan, plan_for

WIDE, NARROW, PLACED = "UTF-16LE", "UTF-8", "UTF-32LE"
# Forms of Unicode whose names may leave the order of bytes to a mark, and how the orders are named.
_ORDERS = {"UTF-16": ("UTF-16LE", "UTF-16BE"), "ISO-10646-UCS-2": ("UCS-2LE", "UCS-2BE"),
           "ISO-10646-UCS-4": ("UTF-32LE", "UTF-32BE")}
MARK = "\ufeff"
_MARKS = {WIDE: MARK.encode("utf-16-le"), PLACED: MARK.encode("utf-32-le")}
_LONGEST_PIECE = 4096  # in characters
_SURROGATE = re.compile("[\ud800-\udfff]")
# Error handlers that the library follows by itself.
POLICIES_OF_DECODING = {"strict": "fail", "replace": "replace", "ignore": "skip"}
POLICIES_OF_ENCODING = {**POLICIES_OF_DECODING, "xmlcharrefreplace": "decimal"}

Handler = Callable[[UnicodeError], tuple[Union[str, bytes], int]]


def _plain(name: str) -> str:
    return "".join(character for character in name.lower() if character.isalnum())


def _marked(text: Any, form: str) -> Any:
    """A mark in the beginning is a character like any other: one more stands for it."""
    mark = _MARKS[form]
    return mark + bytes(text) if text[:len(mark)] == mark else text


def text_of_wide(wide: bytes) -> str:
    return wide.decode("utf-16-le", "surrogatepass")


def _end_of_piece(text: str, begin: int) -> int:
    """A refusal costs what the text is long that was given, so a text with many problems is given in pieces. A mark stays with what
    it stands behind, and a surrogate begins a piece: that one is empty."""
    end = min(begin + _LONGEST_PIECE, len(text))
    while end < len(text) and unicodedata.combining(text[end]):
        end += 1
    surrogate = _SURROGATE.search(text, begin, end)
    return end if surrogate is None else surrogate.start()


def _position(answered: int, length: int) -> int:
    position = answered + length if answered < 0 else answered
    if not 0 <= position <= length:
        raise IndexError(f"position {answered} from error handler out of bounds")
    return position


def _reason(error: Error) -> str:
    if isinstance(error, TruncatedText):
        return "incomplete character at the end of the text"
    if isinstance(error, UnmappableCharacter):
        return "the charset does not have this character"
    return error.reason


class CharsetCodec:
    """What all codecs of a charset share. Plans are made when they are first needed."""

    def __init__(self, found: Charset, name: str) -> None:
        self.name = "ksv-" + name.replace("_", "-")
        self.charset = name
        orders = _ORDERS.get(found.name)
        self.orders = None if _plain(name).endswith(("le", "be")) else orders
        """The names of both orders where a mark tells it."""
        self.is_stateful = found.is_stateful
        is_unicode = found.name == "UTF-8" or orders is not None
        self.mark_in = "keep" if is_unicode and self.orders is None else "drop"
        self._plans: dict[tuple[str, str, str], Plan] = {}

    def decoding_plan(self, target: str, policy: Any = "fail") -> Plan:
        plan = self._plans.get(("decode", target, policy))
        return plan if plan is not None else self._new_decoding_plan(target, policy)

    def _new_decoding_plan(self, target: str, policy: Any) -> Plan:
        replacement = "\ufffd" if policy == "replace" else None
        options = Options(invalid=policy, mark=self.mark_in, invalid_text=replacement)
        plan = plan_for(self.charset, target, options)
        return self._keep(("decode", target, policy), plan)

    def _keep(self, key: Any, plan: Plan) -> Plan:
        """Plans that ask functions are of one text."""
        if plan.asker is None:
            self._plans[key] = plan
        return plan

    def encoding_plan(self, source: str, unmappable: str = "fail", mark: bool = False) -> Plan:
        kind = "marked" if mark else "encode"
        plan = self._plans.get((kind, source, unmappable))
        if plan is None:
            options = Options(unmappable=unmappable, unmappable_text="?",
                              mark="add" if mark else "drop")
            plan = self._keep((kind, source, unmappable), plan_for(source, self.charset, options))
        return plan

    # ---- Decoding ----

    def decode(self, data: Any, errors: str = "strict") -> tuple[str, int]:
        """Of a whole text."""
        source = data if isinstance(data, bytes) else bytes(data)
        policy = POLICIES_OF_DECODING.get(errors, "fail")
        target = NARROW if source.isascii() else WIDE
        try:
            converted = self.decoding_plan(target, policy).convert(source)
        except (InvalidText, TruncatedText) as error:
            return self._decode_with_handler(source, errors, error), len(source)
        except TextError as error:
            raise UnicodeError(f"{self.name}: {error.reason}") from error
        return converted.decode() if target == NARROW else text_of_wide(converted), len(source)

    def decode_error(self, data: bytes, error: Error, begin: int = 0) -> UnicodeDecodeError:
        start = max(begin + error.offset, 0)
        end = min(start + max(error.length, 1), len(data))
        return UnicodeDecodeError(self.name, data, start, max(end, start), _reason(error))

    def _decode_with_handler(self, data: bytes, errors: str, error: Error) -> str:
        if errors == "strict":
            raise self.decode_error(data, error) from None
        handler = codecs.lookup_error(errors)
        if self.is_stateful:
            plan = self.decoding_plan(WIDE, self.decoding_question(data, handler))
            return text_of_wide(plan.convert(data))
        return self.decode_pieces(data, handler, is_whole=True)[0]

    def decoding_question(self, data: bytes, handler: Handler, begin: int = 0) -> Any:
        """Asks an error handler in the middle of a conversion, where only text can be written."""
        def ask(problem: Problem) -> str:
            start = max(problem.offset - begin, 0)
            end = min(start + len(problem.data), len(data))
            error = UnicodeDecodeError(self.name, data, start, end, problem.result)
            answered, position = handler(error)
            if not isinstance(answered, str):
                raise TypeError("decoding error handler must return (str, int) tuple")
            if position != end or _has_surrogates(answered):
                raise error
            return answered
        return ask

    def decode_pieces(self, data: bytes, handler: Optional[Handler],
                      is_whole: bool) -> tuple[str, bytes]:
        """Decodes what lies between the problems. Gives the text, and the beginning of a character that more
        of the text may complete. No handler: problems are raised."""
        plan, whole, begin = self.decoding_plan(WIDE), memoryview(data), 0
        found: list[str] = []
        while begin < len(data):
            try:
                found.append(text_of_wide(plan.convert(whole[begin:])))
                break
            except (InvalidText, TruncatedText) as error:
                start = begin + error.offset
                if isinstance(error, TruncatedText) and not is_whole:
                    found.append(text_of_wide(plan.convert(whole[begin:start])))
                    return "".join(found), data[start:]
                if handler is None:
                    raise self.decode_error(data, error, begin) from None
                found.append(text_of_wide(plan.convert(whole[begin:start])))
                answered, position = handler(self.decode_error(data, error, begin))
                if not isinstance(answered, str):
                    raise TypeError("decoding error handler must return (str, int) tuple")
                found.append(answered)
                begin = _position(position, len(data))
        return "".join(found), b""

    # ---- Encoding ----

    def encode(self, text: str, errors: str = "strict", is_begin: bool = True) -> tuple[bytes, int]:
        """Of a whole text, or of a piece behind another one."""
        mark = is_begin and self.orders is not None
        unmappable = POLICIES_OF_ENCODING.get(errors, "fail")
        try:
            if text.isascii():
                plan, source = self.encoding_plan(NARROW, unmappable, mark), text.encode("ascii")
            else:
                plan = self.encoding_plan(WIDE, unmappable, mark)
                source = _marked(text.encode("utf-16-le"), WIDE)
            return plan.convert(source), len(text)
        except (TextError, UnicodeEncodeError):
            return self._encode_with_handler(text, errors, mark), len(text)
        except UnknownCharset as error:
            raise LookupError(f"{self.name}: texts cannot be written in it") from error

    def _encode_error(self, text: str, start: int, error: Error) -> UnicodeEncodeError:
        reason = ("surrogates not allowed" if isinstance(error, (InvalidText, TruncatedText))
                  else _reason(error))
        return UnicodeEncodeError(self.name, text, start, start + 1, reason)

    def _encode_with_handler(self, text: str, errors: str, mark: bool) -> bytes:
        handler = None if errors == "strict" else codecs.lookup_error(errors)
        if self.is_stateful and handler is not None:
            return self._encode_asking(text, handler)
        begin = self.encoding_plan(WIDE, mark=True).convert(b"") if mark else b""
        return begin + self._encode_pieces(text, handler)

    def _encode_asking(self, text: str, handler: Handler) -> bytes:
        """Asks an error handler in the middle of a conversion, where only text can be written."""
        form = PLACED if _SURROGATE.search(text) else WIDE
        source = text.encode(form, "surrogatepass")
        marked = _marked(source, form)

        def ask(problem: Problem) -> str:
            offset = problem.offset - (len(marked) - len(source))
            start = len(source[:offset].decode(form, "surrogatepass"))
            kind = InvalidText if problem.code_point is None else UnmappableCharacter
            error = self._encode_error(text, start, kind(problem.result))
            answered, position = handler(error)
            if not isinstance(answered, str) or position != start + 1 or _has_surrogates(answered):
                raise error
            return answered

        options = Options(invalid=ask, unmappable=ask)
        return Plan(form, self.charset, options).convert(marked)

    def _encode_pieces(self, text: str, handler: Optional[Handler]) -> bytes:
        """Encodes what lies between the problems, and what the handler answers. No handler: problems are raised."""
        plan, begin = self.encoding_plan(WIDE), 0
        found: list[bytes] = []
        while begin < len(text):
            end = _end_of_piece(text, begin)
            problem = self._append_piece(text[begin:end], text, begin, found)
            if problem is None:
                begin = end
                continue
            if handler is None:
                raise problem
            answered, position = handler(problem)
            found.append(self._answer(answered, plan, problem))
            begin = _position(position, len(text))
        return b"".join(found)

    def _append_piece(self, piece: str, text: str, begin: int,
                      found: list[bytes]) -> Optional[UnicodeEncodeError]:
        """As much of it as lies before its first problem."""
        if not piece:
            return self._encode_error(text, begin, InvalidText("surrogate"))
        plan, wide = self.encoding_plan(WIDE), piece.encode("utf-16-le")
        marked = _marked(wide, WIDE)
        try:
            found.append(plan.convert(marked))
            return None
        except TextError as error:
            head = wide[:error.offset - (len(marked) - len(wide))]
            found.append(plan.convert(_marked(head, WIDE)))
            return self._encode_error(text, begin + len(head.decode("utf-16-le")), error)

    def _answer(self, answered: Union[str, bytes], plan: Plan, problem: UnicodeError) -> bytes:
        if isinstance(answered, bytes):
            return answered
        try:
            return plan.convert(_marked(answered.encode("utf-16-le"), WIDE))
        except (TextError, UnicodeEncodeError):
            raise problem from None


def _has_surrogates(text: str) -> bool:
    return _SURROGATE.search(text) is not None
