"""Plans: what does not change from text to text, and one call for each text."""
from __future__ import annotations

from typing import Any

from ksv._buffers import (EXTRA, GROWTH, LARGEST_ROOM, Buffer, idle, new_room, taken_bytes, view)
from ksv._errors import check, error_of
from ksv._native import ffi, lib
from ksv._options import Filled, Options

_convert = lib.ksv_room_convert
_unpack = ffi.unpack


class Plan:
    """The charsets, looked up, and the options. Any number of threads may use one."""

    __slots__ = ("handle", "asker", "source", "target")

    def __init__(self, source: str, target: str, options: Options = Options()) -> None:
        filled = Filled(options)
        handle, error = ffi.new("ksv_plan**"), ffi.new("ksv_error*")
        check(lib.ksv_plan_new(source.encode("utf-8"), target.encode("utf-8"), filled.value, handle,
                               error), error)
        self.handle = ffi.gc(handle[0], lib.ksv_plan_free)
        self.asker = filled.asker
        self.source, self.target = source, target

    def convert(self, data: Buffer) -> bytes:
        """Converts a whole text."""
        if type(data) is bytes:
            return converted(self, data)
        with view(data) as source:
            return converted(self, source)


def converted(plan: Plan, source: Any) -> bytes:
    """A whole text, from bytes or from a view. This is what short texts wait for."""
    try:
        taken = idle.pop()
    except IndexError:
        taken = new_room()
    room, data, size = taken
    length = len(source)
    if length * GROWTH + EXTRA > size:
        idle.append(taken)
        return _converted_long(plan, source, length)
    written = _convert(plan.handle, source, length, room)
    if written >= 0:
        text: bytes = _unpack(data, written)
        idle.append(taken)
        return text
    try:
        return _converted_again(plan, source, length, room)
    finally:
        idle.append(taken)


def _converted_long(plan: Plan, source: Any, length: int) -> bytes:
    needed = length * GROWTH + EXTRA
    if needed > LARGEST_ROOM:
        return _converted_into_new_block(plan, source, length)
    room, data, _ = taken = new_room(min(2 * needed, LARGEST_ROOM))
    if idle:
        idle.pop()  # The larger one takes its place.
    written = _convert(plan.handle, source, length, room)
    if written < 0:
        return _converted_again(plan, source, length, room)
    text: bytes = _unpack(data, written)
    idle.append(taken)
    return text


def _converted_again(plan: Plan, source: Any, length: int, room: Any) -> bytes:
    """Replacements can be longer than there is room."""
    if plan.asker is not None:
        plan.asker.raise_noted()
    if room.result != lib.KSV_NO_ROOM:
        raise error_of(room.error)
    return _converted_into_new_block(plan, source, length)


def _converted_into_new_block(plan: Plan, source: Any, length: int) -> bytes:
    block, written, error = ffi.new("char**"), ffi.new("size_t*"), ffi.new("ksv_error*")
    result = lib.ksv_plan_convert(plan.handle, source, length, block, written, error)
    if result != lib.KSV_OK:
        if plan.asker is not None:
            plan.asker.raise_noted()
        raise error_of(error)
    return taken_bytes(block[0], written[0])


_MOST_KEPT = 256
_plans: dict[tuple[str, str, Options], Plan] = {}
plain_plans: dict[tuple[str, str], Plan] = {}
"""Those without options."""


def plan_for(source: str, target: str, options: Options) -> Plan:
    """The plan that was made for the same charsets and options before, if there is one. Plans that ask
    functions are made anew: those may belong to one text."""
    if callable(options.invalid) or callable(options.unmappable):
        return Plan(source, target, options)
    plan = _plans.get((source, target, options))
    if plan is None:
        plan = Plan(source, target, options)
        _keep(_plans, (source, target, options), plan)
    return plan


def plain_plan(source: str, target: str) -> Plan:
    plan = Plan(source, target)
    _keep(plain_plans, (source, target), plan)
    return plan


def _keep(plans: Any, key: Any, plan: Plan) -> None:
    if len(plans) >= _MOST_KEPT:
        plans.clear()
    plans[key] = plan
