#!/usr/bin/env python3
"""Time and peak memory of the command over the worst shapes of input that are known, by size.

Each shape is written at each size, and one run of the command over it is measured as a whole
process. What grows faster than its input is told at the end, with status 1.

    bench/hostile_work.py build/release/ksv [--most 100M] [--shape NAME]... [--limit SECONDS]
"""
import argparse
import os
import resource
import shutil
import signal
import struct
import subprocess
import sys
import tempfile

SIZES = {"1K": 1000, "10K": 10_000, "100K": 100_000, "1M": 1_000_000, "10M": 10_000_000,
         "100M": 100_000_000}


def repeated(piece, size):
    return (piece * (size // len(piece) + 1))[:size]


# --- Rule files and tables: a charset directory in which one file is hostile. ---

HEAD = '<?xml version="1.0" encoding="UTF-16"?>\n'
CODEC = '<rule construle="constSAME" destrule="destSAME"/>'


def rule_bytes(text):
    return b"\xff\xfe" + (HEAD + text).encode("utf-16-le")


def subset(content):
    return ('<subseta><name>hostile_subset</name><lang domain="English"/><code bytenum="2"/>' + content +
            "</subseta>")


def charset(declarations, content):
    return declarations + "<charset><name>hostile</name>" + CODEC + content + "</charset>"


def entity(name, file):
    return f'<!ENTITY {name} SYSTEM "{file}">'


def write(directory, name, data):
    with open(os.path.join(directory, name), "wb") as file:
        file.write(data)


def sound_charset(directory, subset_content="<srtable>&t;</srtable>", members="<baseset>&s;</baseset>"):
    write(directory, "s.set", rule_bytes(subset(subset_content)))
    write(directory, "h.xml", rule_bytes(charset(entity("s", "s.set") + entity("t", "t.txt"), members)))


def rules_of(piece):
    """A charset file that consists of nothing else."""
    def make(directory, size):
        write(directory, "h.xml", rule_bytes(repeated(piece, size // 2)))
        return ["charsets"]
    return make


def rules_with_entities(name):
    """As many declarations as references, each of another subset entity."""
    def make(directory, size):
        count = max(1, size // 2 // (2 * len(name(0)) + 45))
        declarations = "".join(entity(name(i), "s.set") for i in range(count))
        members = "".join(f"<baseset>&{name(i)};</baseset>" for i in reversed(range(count)))
        write(directory, "s.set", rule_bytes(subset("")))
        write(directory, "h.xml", rule_bytes(charset(declarations, members)))
        return ["charsets"]
    return make


def linted(make):
    """The same directory, looked at for what is wrong with it."""
    def make_for_lint(directory, size):
        make(directory, size)
        return ["lint"]
    return make_for_lint


def rules_with_dest_tables(directory, size):
    count = max(1, size // 2 // 70)
    declarations = "".join(entity(f"t{i}", "t.txt") for i in range(count))
    tables = "".join(f"<dstable>&t{i};</dstable>" for i in reversed(range(count)))
    write(directory, "s.set", rule_bytes(subset("")))
    write(directory, "t.txt", "1 2\r\n\r\n".encode("utf-16-le"))
    write(directory, "h.xml", rule_bytes(charset(entity("s", "s.set") + declarations,
                                                 f"<baseset>&s;{tables}</baseset>")))
    return ["charsets"]


def subset_with_ranges(directory, size):
    pieces = "".join(f"{i * 7 % 65536:04X} " for i in range(size // 10))
    sound_charset(directory, f"<defined>{pieces}</defined>")
    return ["charsets"]


def many_rule_files(directory, size):
    for i in range(max(1, size // 1000)):
        text = charset("", "").replace("hostile", f"hostile{i}")
        write(directory, f"h{i}.xml", rule_bytes(text))
    return ["charsets"]


def table_of(lines):
    def make(directory, size):
        sound_charset(directory)
        write(directory, "t.txt", lines(size // 2).encode("utf-16-le") + "\r\n\r\n".encode("utf-16-le"))
        return ["tables"]
    return make


def sparse_lines(size):
    return "".join(f"{(i * 2654435761) % 2**32:08X} {i % 65535 + 1:04X}\r\n" for i in range(size // 15))


def falling_lines(size):
    count = size // 15
    return "".join(f"{(count - i) * 4096 % 2**32:08X} {i % 65535 + 1:04X}\r\n" for i in range(count))


def compiled_table(keys):
    def make(directory, size):
        sound_charset(directory)
        count = size // 8
        data = bytearray(8 * count)
        for i in range(count):
            struct.pack_into("<II", data, 8 * i, keys(i, count), i % 65535 + 1)
        write(directory, "t.cmp", bytes(data))
        return ["convert", "-f", "hostile", "-t", "hostile", "/dev/null"]
    return make


# --- Compound files. ---

def compound_file(sectors, fat, directory_start, directory_entries):
    """A file of 512-byte sectors behind its header; fat is the list of its chain."""
    fat_sectors = (len(fat) + 127) // 128
    first_fat = sectors
    for i in range(fat_sectors + 1 + fat_sectors // 127):
        fat.append(0xFFFFFFFD)
    while len(fat) % 128:
        fat.append(0xFFFFFFFF)
    fat_sectors = len(fat) // 128
    difat = list(range(first_fat, first_fat + fat_sectors))
    head, rest = difat[:109], difat[109:]
    lists = [rest[i:i + 127] for i in range(0, len(rest), 127)]
    header = bytearray(512)
    header[0:8] = bytes([0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1])
    struct.pack_into("<HHHHH", header, 24, 0x3E, 3, 0xFFFE, 9, 6)
    struct.pack_into("<I", header, 44, fat_sectors)
    struct.pack_into("<I", header, 48, directory_start)
    struct.pack_into("<I", header, 56, 4096)
    struct.pack_into("<II", header, 60, 0xFFFFFFFE, 0)
    struct.pack_into("<II", header, 68, first_fat + fat_sectors if lists else 0xFFFFFFFE, len(lists))
    struct.pack_into("<109I", header, 76, *(head + [0xFFFFFFFF] * (109 - len(head))))
    tail = b"".join(
        struct.pack("<128I", *(part + [0xFFFFFFFF] * (127 - len(part))),
                    first_fat + fat_sectors + i + 1 if i + 1 < len(lists) else 0xFFFFFFFE)
        for i, part in enumerate(lists))
    return bytes(header), struct.pack(f"<{len(fat)}I", *fat) + tail


def directory_entry(name, kind, left=0xFFFFFFFF, right=0xFFFFFFFF, child=0xFFFFFFFF, start=0, size=0):
    units = name.encode("utf-16-le")
    entry = bytearray(128)
    entry[:len(units)] = units
    struct.pack_into("<HBB", entry, 64, len(units) + 2, kind, 1)
    struct.pack_into("<III", entry, 68, left, right, child)
    struct.pack_into("<II", entry, 116, start, size)
    return bytes(entry)


def compound_with_chain(order, command):
    """One stream over the whole file, whose sectors follow each other in some order."""
    def make(directory, size):
        count = max(8, size // 516)
        places = order(count)
        fat = [0] * count
        for here, behind in zip(places, places[1:]):
            fat[here] = behind
        fat[places[-1]] = 0xFFFFFFFE
        fat.append(0xFFFFFFFE)
        header, tail = compound_file(count + 1, fat, count, 4)
        entries = (directory_entry("Root Entry", 5, child=1) +
                   directory_entry("s", 2, start=places[0], size=512 * count) +
                   bytes(256))
        write(directory, "document", header + bytes(512 * count) + entries + tail)
        return command
    return make


def compound_with_loop(directory, size):
    """A stream whose chain leads back to its first sector, and says that it is 2 GB long."""
    count = max(8, size // 516)
    fat = [i + 1 for i in range(count - 1)] + [0, 0xFFFFFFFE]
    header, tail = compound_file(count + 1, fat, count, 4)
    entries = (directory_entry("Root Entry", 5, child=1) +
               directory_entry("s", 2, start=0, size=0x7FFFFFFF) + bytes(256))
    write(directory, "document", header + bytes(512 * count) + entries + tail)
    return ["ole", "cat", "document", "s"]


def compound_with_entries(links):
    """As many entries as the file has room for, linked in some way."""
    def make(directory, size):
        sectors = max(2, size // 516)
        count = 4 * sectors
        fat = [i + 1 for i in range(sectors - 1)] + [0xFFFFFFFE]
        header, tail = compound_file(sectors, fat, 0, count)
        entries = [directory_entry("Root Entry", 5, child=1)]
        for i in range(1, count):
            left, right, child = links(i, count)
            entries.append(directory_entry(f"n{i}", 1 if child != 0xFFFFFFFF else 2, left, right, child))
        write(directory, "document", header + b"".join(entries) + tail)
        return ["ole", "list", "document"]
    return make


NONE = 0xFFFFFFFF


def next_or_none(i, count):
    return i + 1 if i + 1 < count else NONE


def balanced(i, count):
    return (2 * i if 2 * i < count else NONE, 2 * i + 1 if 2 * i + 1 < count else NONE, NONE)


def property_set(section):
    """The sections or properties all lie upon each other at the end of the stream."""
    def make(directory, size):
        data = section(size)
        count = (len(data) + 511) // 512
        fat = [i + 1 for i in range(count - 1)] + [0xFFFFFFFE, 0xFFFFFFFE]
        header, tail = compound_file(count + 1, fat, count, 4)
        entries = (directory_entry("Root Entry", 5, child=1) +
                   directory_entry("\5SummaryInformation", 2, start=0, size=len(data)) + bytes(256))
        write(directory, "document", header + data.ljust(512 * count, b"\0") + entries + tail)
        return ["summary", "document"]
    return make


FORMAT_ID = bytes.fromhex("E0859FF2F94F6810AB9108002B27B3D9")


def many_properties(size):
    count = size // 8
    head = struct.pack("<HHI16sI", 0xFFFE, 0, 0, bytes(16), 1) + FORMAT_ID + struct.pack("<I", 48)
    rows = bytearray(8 * count)
    for i in range(count):
        struct.pack_into("<II", rows, 8 * i, 2, 8 + 8 * count)
    text = struct.pack("<II", 30, 8) + b"abcdefg\0"
    return head + struct.pack("<II", 8 + 8 * count + len(text), count) + bytes(rows) + text


def many_sections(size):
    count = max(1, size // 20)
    head = struct.pack("<HHI16sI", 0xFFFE, 0, 0, bytes(16), count)
    place = len(head) + 20 * count
    rows = (FORMAT_ID + struct.pack("<I", place)) * count
    return head + rows + struct.pack("<IIII", 16, 1, 2, 16)


# --- Texts, mails and the command's own work. ---

def text_of(data, command):
    def make(directory, size):
        write(directory, "text", data(size))
        return command
    return make


def pieces(piece):
    return lambda size: repeated(piece, size)


def tags_inside_tags(size):
    return repeated("\U000E0001\U000E0065".encode(), size // 8 * 8)


MAIL = ["convert", "-f", "UTF-7", "-t", "UTF-8", "-o", "out", "text"]
HZ = ["convert", "-f", "HZ-GB-2312", "-t", "UTF-8", "-o", "out", "text"]
ISO_2022 = ["convert", "-f", "ISO-2022-JP", "-t", "UTF-8", "--invalid", "skip", "-o", "out", "text"]
DETECTED = ["convert", "-t", "UTF-8", "-o", "out", "text"]
SKIPPING = ["convert", "-f", "Shift_JIS", "-t", "UTF-8", "--invalid", "skip", "-o", "out", "text"]

SHAPES = {
    "rules: tags without an end": rules_of("<baseset>"),
    "rules: openings": rules_of("<"),
    "rules: comments": rules_of("<!-- - -->"),
    "rules: nested elements": rules_of("<charset><name>"),
    "rules: quotes and references": rules_of('&a; "'),
    "rules: entities, names of 7": rules_with_entities(lambda i: f"n{i:06d}"),
    "rules: entities, alike but for their end": rules_with_entities(lambda i: "n" * 200 + f"{i:06d}"),
    "rules: destination tables": rules_with_dest_tables,
    "rules: defined codes": subset_with_ranges,
    "rules: files": many_rule_files,
    "lint of rules: tags without an end": linted(rules_of("<baseset>")),
    "lint of rules: comments": linted(rules_of("<!-- - -->")),
    "lint of rules: entities": linted(rules_with_entities(lambda i: f"n{i:06d}")),
    "lint of rules: destination tables": linted(rules_with_dest_tables),
    "tables: sparse keys": table_of(sparse_lines),
    "tables: falling keys": table_of(falling_lines),
    "tables: one number": table_of(lambda size: "1" * size),
    "tables: tags": table_of(lambda size: repeated("<a", size)),
    "compiled tables: sparse keys": compiled_table(lambda i, n: (i * 2654435761) % 2**32),
    "compiled tables: falling keys": compiled_table(lambda i, n: (n - i) * 4096 % 2**32),
    "compiled tables: one key": compiled_table(lambda i, n: 1),
    "compound files: chain backwards": compound_with_chain(
        lambda n: list(range(n - 1, -1, -1)), ["ole", "cat", "document", "s"]),
    "compound files: chain to and fro": compound_with_chain(
        lambda n: [i // 2 if i % 2 else n - 1 - i // 2 for i in range(n)],
        ["ole", "cat", "document", "s"]),
    "compound files: chain that loops": compound_with_loop,
    "compound files: entries in a balanced tree": compound_with_entries(balanced),
    "compound files: entries in a row": compound_with_entries(lambda i, n: (NONE, next_or_none(i, n), NONE)),
    "compound files: storages inside each other": compound_with_entries(
        lambda i, n: (NONE, NONE, next_or_none(i, n))),
    "compound files: entries with three ways to the next": compound_with_entries(
        lambda i, n: (next_or_none(i, n),) * 3),
    "properties: one value, many rows": property_set(many_properties),
    "properties: sections upon each other": property_set(many_sections),
    "mail: UTF-7 without an end": text_of(pieces(b"+AAAA"), MAIL),
    "mail: UTF-7 shifts": text_of(pieces(b"+-"), MAIL),
    "mail: HZ shifts": text_of(pieces(b"~{~}"), HZ),
    "mail: ISO-2022 escapes": text_of(pieces(b"\x1b$B\x1b(B"), ISO_2022),
    "mail: broken escapes": text_of(pieces(b"\x1b$"), ISO_2022),
    "texts: language tags inside each other": text_of(
        tags_inside_tags, ["convert", "-f", "UTF-8", "-t", "UTF-16", "-o", "out", "text"]),
    "texts: nothing but invalid bytes": text_of(pieces(b"\xff"), SKIPPING),
    "texts: of which no charset is told": text_of(pieces(b"\x82\xa0\xff\n\xe9"), DETECTED),
    "texts: detected, alike in several charsets": text_of(pieces(b"\xb0\xa1\xb0\xa2 "), DETECTED),
    "texts: one line of declarations": text_of(pieces(b"<?xml encoding='"), DETECTED),
    "texts: checked": text_of(pieces(b"<?xml version=\"1.0\" "), ["check", "text"]),
    "texts: cut": text_of(pieces(b"\x1b$B"), ["cut", "--charset", "ISO-2022-JP", "-n", "2000000", "text"]),
    "texts: line ends": text_of(pieces(b"\r"), ["convert", "-f", "UTF-8", "-t", "UTF-8", "--newline", "crlf",
                                                "-o", "out", "text"]),
}
RULES = ("rules:", "lint of rules:", "tables:", "compiled tables:")


def measure(command, arguments, directory, environment, limit):
    """Seconds, peak bytes and status of one run; no status where it took too long. Measured by a
    small process in between: the peak of a child begins with that of its parent."""
    report = os.path.join(directory, ".measured")
    measured = ["/usr/bin/time", "-q", "-o", report, "-f", "%M", command] + arguments
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    process = subprocess.Popen(measured, cwd=directory, env=environment, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, start_new_session=True)
    try:
        _, told = process.communicate(timeout=limit)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.communicate()
        return limit, 0, None, ""
    with open(report, encoding="ascii") as file:
        peak = int(file.read()) * 1024
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    seconds = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return seconds, peak, process.returncode, told.decode(errors="replace")


def run(command, name, size, limit):
    parent = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    directory = tempfile.mkdtemp(prefix="ksv_hostile_", dir=parent)
    try:
        arguments = SHAPES[name](directory, size)
        environment = dict(os.environ, LC_ALL="C.UTF-8")
        if name.startswith(RULES):
            environment["Charsetpath"] = directory + "/"
        return measure(command, arguments, directory, environment, limit)
    finally:
        shutil.rmtree(directory)


def shown_bytes(count):
    return f"{count / 1e6:.0f} MB"


def faults_of(rows, size):
    """What grows with more than the size: ten times the input may take twenty times as long."""
    faults = []
    for (_, before, _), (label, seconds, _) in zip(rows, rows[1:]):
        if seconds > 0.2 and seconds > 20 * max(before, 0.01):
            faults.append(f"{label}: {before:.3f} s, then {seconds:.3f} s")
    return faults


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("command")
    parser.add_argument("--most", choices=SIZES, default="100M")
    parser.add_argument("--shape", action="append")
    parser.add_argument("--told", action="store_true", help="show what the command says")
    parser.add_argument("--limit", type=float, default=60)
    arguments = parser.parse_args()
    command = os.path.abspath(arguments.command)
    sizes = list(SIZES)[:list(SIZES).index(arguments.most) + 1]
    print("| shape | " + " | ".join(sizes) + " |\n|---|" + "---|" * len(sizes))
    failed = False
    for name in SHAPES:
        if arguments.shape and not any(part in name for part in arguments.shape):
            continue
        rows, cells = [], []
        for label in sizes:
            seconds, peak, status, told = run(command, name, SIZES[label], arguments.limit)
            if status is None or status > 2:
                cells.append(f"over {arguments.limit:.0f} s" if status is None else f"status {status}")
                failed = True
                break
            if arguments.told:
                print(f"{name}, {label}: status {status} {told[:200]}", file=sys.stderr)
            rows.append((label, seconds, peak))
            cells.append(f"{seconds:.3f} s, {shown_bytes(peak)}")
        print(f"| {name} | " + " | ".join(cells) + " |", flush=True)
        for fault in faults_of(rows, sizes):
            print(f"{name}: grows faster than its input: {fault}", file=sys.stderr)
            failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
