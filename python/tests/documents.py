"""Makes small compound documents and property sets for tests."""
import struct

SECTOR = 512
FREE, END, TABLE, NONE = 0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFFFD, 0xFFFFFFFF
SUMMARY_FORMAT = bytes.fromhex("E0859FF2F94F6810AB9108002B27B3D9")
LEAST = 4096  # what is smaller lies elsewhere in a document


def _entry(name, kind, right, child, start, size):
    units = (name + "\0").encode("utf-16-le")
    return (units.ljust(64, b"\0") + struct.pack("<HBBIII", len(units), kind, 1, NONE, right, child)
            + bytes(16) + struct.pack("<IQQIQ", 0, 0, 0, start, size))


def document(streams):
    """Of streams by name, each of LEAST bytes and more. One sector has the table."""
    names = sorted(streams, key=lambda name: (len(name), name.upper()))
    table, sectors, starts = [TABLE], [], {}
    for name in names:
        content = streams[name]
        assert len(content) >= LEAST
        parts = [content[at:at + SECTOR].ljust(SECTOR, b"\0") for at in range(0, len(content), SECTOR)]
        starts[name] = len(table)
        table += [*range(len(table) + 1, len(table) + len(parts)), END]
        sectors += parts
    entries = [_entry("Root Entry", 5, NONE, 1 if names else NONE, END, 0)]
    for number, name in enumerate(names, 1):
        right = number + 1 if number < len(names) else NONE
        entries.append(_entry(name, 2, right, NONE, starts[name], len(streams[name])))
    directory = b"".join(entries)
    directory = directory.ljust(-(-len(directory) // SECTOR) * SECTOR, b"\0")
    first = len(table)
    count = len(directory) // SECTOR
    table += [*range(first + 1, first + count), END]
    assert len(table) <= SECTOR // 4
    header = (bytes.fromhex("D0CF11E0A1B11AE1") + bytes(16)
              + struct.pack("<HHHHH6xIIIIIIIIII", 0x3E, 3, 0xFFFE, 9, 6, 0, 1, first, 0, LEAST, END, 0, END, 0, 0)
              + struct.pack("<108I", *[FREE] * 108))
    packed = struct.pack(f"<{SECTOR // 4}I", *table, *[FREE] * (SECTOR // 4 - len(table)))
    return header + packed + b"".join(sectors) + directory


def property_set(values):
    """Of values by number: (type, the bytes behind it)."""
    places, body, at = b"", b"", 8 + 8 * len(values)
    for number, (kind, value) in values.items():
        places += struct.pack("<II", number, at + len(body))
        body += struct.pack("<I", kind) + value + bytes(-len(value) % 4)
    section = struct.pack("<II", at + len(body), len(values)) + places + body
    return (struct.pack("<HHI16xI", 0xFFFE, 0, 0x00020005, 1) + SUMMARY_FORMAT + struct.pack("<I", 48) + section)


def text(value):
    return struct.pack("<I", len(value) + 1) + value + b"\0"
