"""How a text is converted: options by name, and questions that a conversion asks."""
from __future__ import annotations

import threading
from dataclasses import dataclass
from typing import Any, Callable, NamedTuple, Optional, TypedDict, Union

from ksv._errors import BadArgument
from ksv._native import ffi, lib


class Problem(NamedTuple):
    """What a function is asked about that stands in the place of a policy."""

    result: str
    """`"invalid"`, `"truncated"` or `"unmappable"`."""
    offset: int
    """Of the first byte, from the beginning of the text."""
    data: bytes
    """The bytes concerned."""
    code_point: Optional[int]
    """Of a character that cannot be written."""


Ask = Callable[[Problem], Optional[str]]
"""Answers with the text to be written (`""`: nothing), or None: the conversion ends."""
Policy = Union[str, Ask]

POLICIES = {
    "fail": lib.KSV_FAIL, "skip": lib.KSV_SKIP, "replace": lib.KSV_REPLACE,
    "hex": lib.KSV_HEX_REFERENCE, "decimal": lib.KSV_DECIMAL_REFERENCE, "escape": lib.KSV_ESCAPE,
    "percent": lib.KSV_PERCENT, "look-alike": lib.KSV_LOOK_ALIKE, "built-in": lib.KSV_BUILT_IN,
}
_NEWLINES = {"keep": lib.KSV_KEEP_NEWLINES, "lf": lib.KSV_NEWLINES_LF,
             "crlf": lib.KSV_NEWLINES_CRLF, "cr": lib.KSV_NEWLINES_CR}
_MARKS = {"drop": lib.KSV_DROP_MARK, "add": lib.KSV_ADD_MARK, "keep": lib.KSV_KEEP_MARK}
_BYTE_ORDERS = {"little": lib.KSV_LITTLE_ENDIAN, "big": lib.KSV_BIG_ENDIAN}
_NORMALIZATIONS = {None: lib.KSV_NO_NORMALIZATION, "nfc": lib.KSV_NFC, "nfd": lib.KSV_NFD,
                   "nfkc": lib.KSV_NFKC, "nfkd": lib.KSV_NFKD, "composed": lib.KSV_COMPOSED}
_WIDTHS = {"full-katakana": lib.KSV_WIDEN_KATAKANA, "half-katakana": lib.KSV_NARROW_KATAKANA,
           "full-ascii": lib.KSV_WIDEN_ASCII, "half-ascii": lib.KSV_NARROW_ASCII}
_PROBLEMS = {lib.KSV_INVALID: "invalid", lib.KSV_TRUNCATED: "truncated",
             lib.KSV_UNMAPPABLE: "unmappable"}


@dataclass(frozen=True)
class Options:
    """What the keywords of `ksv.convert` say; `ksv.convert` tells of each."""

    invalid: Policy = "fail"
    unmappable: Policy = "fail"
    newline: str = "keep"
    mark: str = "drop"
    byte_order: str = "little"
    normalize: Optional[str] = None
    widths: str = ""
    profile: Optional[str] = None
    invalid_text: Optional[str] = None
    unmappable_text: Optional[str] = None


class Keywords(TypedDict, total=False):
    """The same as keywords of a call."""

    invalid: Policy
    unmappable: Policy
    newline: str
    mark: str
    byte_order: str
    normalize: Optional[str]
    widths: str
    profile: Optional[str]
    invalid_text: Optional[str]
    unmappable_text: Optional[str]


def _choice(kind: str, name: Any, choices: dict[Any, int]) -> int:
    try:
        return choices[name]
    except (KeyError, TypeError):
        wanted = ", ".join(str(choice) for choice in choices)
        raise BadArgument(f"{kind}: {name!r} is none of {wanted}", "KSV_BAD_ARGUMENT") from None


def _width_bits(widths: str) -> int:
    bits = 0
    for name in filter(None, widths.split(",")):
        bits |= _choice("widths", name.strip(), _WIDTHS)
    return bits


class Asker:
    """Stands between the library and the functions that answer in the place of policies. What they raise
    ends the conversion and is raised where it was called."""

    def __init__(self, invalid: Optional[Ask], unmappable: Optional[Ask]) -> None:
        self._invalid, self._unmappable = invalid, unmappable
        self._of_thread = threading.local()
        self.handle = ffi.new_handle(self)

    def answer(self, problem: Any, text: Any, length: Any) -> int:
        function = self._unmappable if problem.result == lib.KSV_UNMAPPABLE else self._invalid
        code_point = None if problem.code_point == lib.KSV_NO_CODE_POINT else int(problem.code_point)
        assert function is not None
        written = function(Problem(_PROBLEMS[problem.result], int(problem.offset),
                                   bytes(ffi.buffer(problem.bytes, problem.byte_count)[:]),
                                   code_point))
        if written is None:
            return int(lib.KSV_FAIL)
        encoded = written.encode("utf-8")
        self._of_thread.kept = ffi.from_buffer("char[]", encoded)
        text[0], length[0] = self._of_thread.kept, len(encoded)
        return int(lib.KSV_REPLACE if encoded else lib.KSV_SKIP)

    def note(self, failure: BaseException) -> None:
        self._of_thread.failure = failure

    def raise_noted(self) -> None:
        """Raises what a function raised in this thread, once."""
        failure = getattr(self._of_thread, "failure", None)
        if failure is not None:
            self._of_thread.failure = None
            raise failure


def _fail_asking(_kind: Any, failure: Any, traceback: Any) -> int:
    asker = ffi.from_handle(traceback.tb_frame.f_locals["context"])
    asker.note(failure)
    return int(lib.KSV_FAIL)


@ffi.def_extern(name="ksv_python_ask", onerror=_fail_asking)  # type: ignore[untyped-decorator]
def _ask(context: Any, problem: Any, text: Any, length: Any) -> int:
    return int(ffi.from_handle(context).answer(problem, text, length))


class Filled:
    """A `ksv_options`, and what it points to."""

    def __init__(self, options: Options) -> None:
        self.value = value = ffi.new("ksv_options*")
        self._kept: list[Any] = []
        self.asker: Optional[Asker] = None
        value.size = ffi.sizeof("ksv_options")
        self._fill_policies(options)
        value.newlines = _choice("newline", options.newline, _NEWLINES)
        value.mark = _choice("mark", options.mark, _MARKS)
        value.byte_order = _choice("byte_order", options.byte_order, _BYTE_ORDERS)
        value.normalization = _choice("normalize", options.normalize, _NORMALIZATIONS)
        value.widths = _width_bits(options.widths)
        value.profile = self._text(options.profile)
        value.invalid_text = self._text(options.invalid_text)
        value.unmappable_text = self._text(options.unmappable_text)

    def _fill_policies(self, options: Options) -> None:
        invalid = options.invalid if callable(options.invalid) else None
        unmappable = options.unmappable if callable(options.unmappable) else None
        self.value.invalid = (lib.KSV_ASK if invalid else
                              _choice("invalid", options.invalid, POLICIES))
        self.value.unmappable = (lib.KSV_ASK if unmappable else
                                 _choice("unmappable", options.unmappable, POLICIES))
        if invalid or unmappable:
            self.asker = Asker(invalid, unmappable)
            self.value.ask = lib.ksv_python_ask
            self.value.ask_context = self.asker.handle

    def _text(self, text: Optional[str]) -> Any:
        if text is None:
            return ffi.NULL
        self._kept.append(ffi.new("char[]", text.encode("utf-8")))
        return self._kept[-1]
