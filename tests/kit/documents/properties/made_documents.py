"""Compound documents with one stream, and property sets, written from the published layouts alone."""

import struct

SUMMARY = "\x05SummaryInformation"
SUMMARY_FORMAT = bytes.fromhex("E0859FF2F94F6810AB9108002B27B3D9")

_SECTOR = 512
_END, _FREE, _FAT = 0xFFFFFFFE, 0xFFFFFFFF, 0xFFFFFFFD


def _entry(name: str, kind: int, child: int, start: int, size: int) -> bytes:
    units = (name + "\0").encode("utf-16-le") if name else b""
    return (units.ljust(64, b"\0") + struct.pack("<HBB", len(units), kind, 1)
            + struct.pack("<III", _FREE, _FREE, child) + bytes(16 + 4 + 16)
            + struct.pack("<IQ", start, size))


def document(stream: str, content: bytes) -> bytes:
    """The stream is filled up to 4,096 bytes, from which on streams have sectors of their own."""
    content = content.ljust(4096, b"\0")
    count = (len(content) + _SECTOR - 1) // _SECTOR
    table = [_FAT, _END] + [index + 3 for index in range(count)]
    table[-1] = _END
    assert len(table) <= 128, "one sector of the table has to do"
    table += [_FREE] * (128 - len(table))
    header = (bytes.fromhex("D0CF11E0A1B11AE1") + bytes(16)
              + struct.pack("<HHHHH6xIIIIIIIIII", 0x3E, 3, 0xFFFE, 9, 6, 0, 1, 1, 0, 4096,
                            _END, 0, _END, 0, 0)
              + struct.pack("<I", _FREE) * 108)
    directory = (_entry("Root Entry", 5, 1, _END, 0) + _entry(stream, 2, _FREE, 2, len(content))
                 + _entry("", 0, _FREE, 0, 0) * 2)
    return (header + struct.pack("<128I", *table) + directory
            + content.ljust(count * _SECTOR, b"\0"))


def property_set(properties: list[tuple[int, bytes]], form: bytes = SUMMARY_FORMAT) -> bytes:
    """Each property is its number and its value with its type."""
    listed, values = b"", b""
    for number, value in properties:
        listed += struct.pack("<II", number, 8 + 8 * len(properties) + len(values))
        values += value + bytes(-len(value) % 4)
    section = struct.pack("<II", 8 + len(listed) + len(values), len(properties)) + listed + values
    return struct.pack("<HHI", 0xFFFE, 0, 2) + bytes(16) + struct.pack("<I", 1) + form \
        + struct.pack("<I", 48) + section


def counted(content: bytes) -> bytes:
    return struct.pack("<I", len(content)) + content


def typed(number: int, content: bytes) -> bytes:
    return struct.pack("<I", number) + content


CODE_PAGE = (1, typed(2, struct.pack("<I", 1252)))

# One of each type that the format has, vectors and arrays of some.
EVERY_TYPE = [
    typed(0, b""), typed(1, b""), typed(2, b"\xFE\xFF"), typed(3, struct.pack("<i", -7)),
    typed(4, struct.pack("<f", 1.5)), typed(5, struct.pack("<d", float("nan"))),
    typed(6, struct.pack("<q", -12345)), typed(7, struct.pack("<d", 45351.5)),
    typed(8, counted(b"text\0")), typed(10, struct.pack("<I", 0x80004005)), typed(11, b"\xFF\xFF"),
    typed(14, struct.pack("<HBBIQ", 0, 3, 0x80, 0, 12345)), typed(16, b"\xFF"), typed(17, b"\xFF"),
    typed(18, b"\xFF\xFF"), typed(19, b"\xFF" * 4), typed(20, b"\xFF" * 8), typed(21, b"\xFF" * 8),
    typed(22, b"\xFF" * 4), typed(23, b"\xFF" * 4), typed(30, counted("é".encode("cp1252") + b"\0")),
    typed(31, struct.pack("<I", 2) + "表\0".encode("utf-16-le")),
    typed(64, struct.pack("<Q", 2 ** 63)), typed(65, counted(b"\0\1")), typed(66, counted(b"name\0")),
    typed(70, counted(b"blob")), typed(71, counted(struct.pack("<II", 0xFFFFFFFF, 3) + b"META")),
    typed(72, bytes(range(16))), typed(73, bytes(range(16)) + counted(b"name\0")),
    typed(0x1003, struct.pack("<III", 2, 5, 6)), typed(0x1011, counted(b"bytes")),
    typed(0x101E, struct.pack("<I", 2) + counted(b"a\0") + counted(b"bcd\0")),
    typed(0x100C, struct.pack("<I", 2) + typed(30, counted(b"a\0")) + typed(3, struct.pack("<I", 1))),
    typed(0x2003, struct.pack("<IIIiII", 3, 1, 2, -1, 8, 9)), typed(0x4FF, b"what is this"),
]
