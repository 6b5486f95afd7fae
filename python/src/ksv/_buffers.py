"""Bytes on their way in and out, without copies that are not needed."""
from __future__ import annotations

from typing import TYPE_CHECKING, Any, Union

from ksv._native import ffi, lib

if TYPE_CHECKING:
    import mmap
    from array import array

    import numpy

    Buffer = Union[bytes, bytearray, memoryview, mmap.mmap, "array[Any]", "numpy.ndarray[Any, Any]"]
else:
    Buffer = Any


def view(data: Buffer) -> Any:
    """What the library can read of an object with a buffer, for a `with` statement. It has to be released before
    anything is raised: of a memoryview that an exception keeps alive in a cycle, the collector must not find one."""
    if isinstance(data, str):
        raise TypeError("bytes are wanted, not str")
    return ffi.from_buffer("char[]", data)


# Room for outputs that is used again and again. One that is in use is in nobody else's hands.
ROOM_OF_NEW = 1 << 16
LARGEST_ROOM = 1 << 22
# More than any text grows: a byte that becomes three, and what begins and ends a text.
GROWTH = 3
EXTRA = 64

_allocate = ffi.new_allocator(should_clear_after_alloc=False)
Room = tuple[Any, Any, int]  # a ksv_room, its data, and its size
idle: list[Room] = []


def new_room(size: int = ROOM_OF_NEW) -> Room:
    room, data = ffi.new("ksv_room*"), _allocate("char[]", size)
    room.data, room.capacity = data, size
    return room, data, size


def taken_bytes(block: Any, length: int) -> bytes:
    """A copy of what the library has allocated, which is given back."""
    try:
        return bytes(ffi.buffer(block, length)[:])
    finally:
        lib.ksv_free(block)
