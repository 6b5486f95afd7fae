#!/usr/bin/env python3
"""Writes the seed corpora of the fuzz targets into corpus/ beside this file.

Only the files named here are written; inputs that fuzzing found, and that were
added by hand, stay.
"""
import struct
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "charsets"))
import pack

CORPUS = HERE / "corpus"
SEPARATOR = b"\x1e"
DECLARATION = b'<?xml version="1.0" encoding="UTF-16"?>\r\n'


def write(target, seeds):
    directory = CORPUS / target
    directory.mkdir(parents=True, exist_ok=True)
    for name, data in seeds.items():
        (directory / name).write_bytes(data)


# --- Rule files. Order of the files: first.xml second.xml a.xml b.xml c.dat t.txt u.txt v.txt. ---

def charset(name, codec, members, user=b"", declaration=DECLARATION):
    entities = b"".join(
        b'<!ENTITY %s SYSTEM "%s">\r\n' % (entity, file)
        for entity, file in ((b"a", b"a.xml"), (b"b", b"b.xml"), (b"c", b"c.dat"),
                             (b"t", b"T.txt"), (b"u", b"u.TXT"), (b"v", b"v.txt")))
    rule = b'<rule construle="const%s" destrule="dest%s"/>\r\n' % (codec, codec) if codec else b""
    return (declaration + b"<!DOCTYPE charset [\r\n" + entities + b"]>\r\n<charset>\r\n<name>"
            + name + b"</name>\r\n" + rule + members + user + b"</charset>\r\n")


def base(reference, destination=b""):
    return b"<baseset>&" + reference + b";" + destination + b"</baseset>\r\n"


def subset(name, bytes_per_code, table=b"", defined=b""):
    return (DECLARATION + b"<subseta>\r\n<name>" + name + b'</name>\r\n<lang domain="ja"/>\r\n'
            + b'<code bytenum="%d"><range>00-FF</range></code>\r\n' % bytes_per_code
            + (b"<defined>" + defined + b"</defined>\r\n" if defined else b"")
            + (b"<srtable>&" + table + b";</srtable>\r\n" if table else b"") + b"</subseta>\r\n")


def difference(name, table):
    return (DECLARATION + b"<subsetb>\r\n<name>" + name + b'</name>\r\n<lang domain="ja"/>\r\n'
            + b'<codeb bytenum="2" basedon="jis_x0208-1990"></codeb>\r\n'
            + b"<defined>2121-217E 2221</defined>\r\n<srtable>&" + table
            + b";</srtable>\r\n</subsetb>\r\n")


def user_defined(start, number):
    return (DECLARATION + b"<name>fuzz-user</name>\r\n" + b'<codec bytenum="2"></codec>\r\n'
            + b'<defrange start="%s" number="%s"/>\r\n' % (start, number))


def files(kind, *texts):
    return SEPARATOR.join(kind + text if text else b"" for text in texts)


ASCII_TABLE = b"".join(b"%02X %04X\r\n" % (c, c) for c in range(0x20, 0x7F))
JIS_TABLE = b"2121 3000\r\n2422 3042\r\n2424 3044\r\n3021 4E9C\r\n"
DIFFERENCE_TABLE = b"2D21 2460\r\n2422 3043\r\n"
ONE_WAY = b'<dstable bytenum="2">&v;</dstable>'
ONE_WAY_TABLE = b"2121 00A0\r\n"


def rule_file_seeds():
    latin = subset(b"iso-646irv", 1, b"t")
    kanji = subset(b"jis_x0208-1990", 2, b"u", b"2121-7E7E 8740")
    same = charset(b"Fuzz", b"SAME", base(b"a") + base(b"b"))
    tables = (b"", ASCII_TABLE, JIS_TABLE)
    shift_jis = charset(b"Shift_JIS", b"Shift_JIS", base(b"a") + base(b"b", ONE_WAY))
    wide = subset(b"iso-10646", 4)
    forms = {codec: charset(codec, codec, base(b"c"))
             for codec in (b"UTF-8", b"UTF-16", b"ISO-10646-UCS-2", b"ISO-10646-UCS-4")}
    seeds = {
        "two_groups": files(b"l", same, b"", latin, kanji, *tables),
        "two_groups_big_endian": files(b"b", same, b"", latin, kanji, *tables),
        "two_groups_ucs4": SEPARATOR.join(
            [b"L" + same, b"", b"L" + latin, b"L" + kanji, b"", b"w" + ASCII_TABLE,
             b"w" + JIS_TABLE]),
        "without_marks": files(b"n", same, b"", latin, kanji, *tables),
        "shift_jis_and_utf8": files(b"l", shift_jis, forms[b"UTF-8"], latin, kanji, wide,
                                    ASCII_TABLE, JIS_TABLE, ONE_WAY_TABLE),
        "windows31j_and_utf16": files(
            b"l", charset(b"WINDOWS31J", b"WINDOWS31J", base(b"a") + base(b"b")),
            forms[b"UTF-16"], latin, kanji, wide, ASCII_TABLE, JIS_TABLE),
        "shift_jis_2004_and_ucs4": files(
            b"l", charset(b"Shift_JIS-2004", b"Shift_JIS-2004", base(b"a") + base(b"b")),
            forms[b"ISO-10646-UCS-4"], latin, subset(b"jis_x0213", 4, b"u"), wide, ASCII_TABLE,
            JIS_TABLE),
        "ucs2_and_utf8": files(b"l", forms[b"ISO-10646-UCS-2"], forms[b"UTF-8"], latin, kanji,
                               subset(b"iso-10646-bmp", 2)),
        "difference_before_base": files(
            b"l", charset(b"Fuzz", b"SAME", b"<diffset>&b;</diffset>" + base(b"a")), b"", latin,
            difference(b"fuzz-difference", b"u"), b"", ASCII_TABLE, DIFFERENCE_TABLE),
        "user_defined": files(
            b"l", charset(b"Fuzz", b"SAME", base(b"a"), b"<eudcset>&c;</eudcset>"), b"", latin,
            b"", user_defined(b"F040", b"0BC"), ASCII_TABLE),
        "same_name_twice": files(b"l", same, charset(b"FUZZ", b"SAME", base(b"a")), latin, kanji,
                                 *tables),
        "without_rule": files(b"l", charset(b"Fuzz", b"", base(b"a")), b"", latin),
        "unknown_codec": files(b"l", charset(b"Fuzz", b"Nothing", base(b"a")), b"", latin),
        "decoder_as_encoder": files(b"l", same.replace(b"constSAME", b"destSAME"), b"", latin, kanji,
                                    *tables),
        "encoder_as_decoder": files(b"l", same.replace(b"destSAME", b"constSAME"), b"", latin, kanji,
                                    *tables),
        "unicode_decoder_as_encoder": files(
            b"l", forms[b"UTF-8"].replace(b"constUTF-8", b"destUTF-16"), shift_jis, latin, kanji, wide,
            ASCII_TABLE, JIS_TABLE, ONE_WAY_TABLE),
        "unicode_encoder_as_decoder": files(
            b"l", forms[b"UTF-8"].replace(b"destUTF-8", b"constUTF-16"), shift_jis, latin, kanji, wide,
            ASCII_TABLE, JIS_TABLE, ONE_WAY_TABLE),
        "missing_subset": files(b"l", same, b"", latin),
        "missing_table": files(b"l", same, b"", latin, kanji, b"", ASCII_TABLE),
        "declared_ucs2": files(b"l", charset(
            b"Fuzz", b"SAME", base(b"a"),
            declaration=b'<?xml version="1.0" encoding="ISO-10646-UCS-2"?>\r\n'), b"", latin, b"",
            b"", ASCII_TABLE),
        "utf8": charset(b"Fuzz", b"SAME", base(b"a"),
                        declaration=b'.<?xml version="1.0" encoding="utf-8"?>'),
        "comments": files(b"l", b"<!-- <charset> -->" + same + b"<!-- open", b"", latin,
                          kanji.replace(b"<defined>", b"<!-- no --><defined>"), *tables),
        "wide_codes": files(b"l", same, b"", subset(b"a", 300), subset(b"b", 3, b"u"), *tables),
        "zero_bytes": files(b"l", same, b"", subset(b"a", 0), kanji, *tables),
        "empty_elements": files(b"l", b"<charset><name>x</name><rule/><baseset/></charset>"),
        "empty": b"",
    }
    return seeds


# --- Table texts. ---

def table_text(kind, big_endian, text, blanks=0, raw=False):
    return bytes([kind | (0x80 if big_endian else 0), blanks, 0 if raw else 1]) + text


def table_text_seeds():
    utf16, ucs4, ucs2 = 1, 3, 4
    lines = b"8140 3000\r\n8141 3001\r\n"
    seeds = {}
    for name, kind in (("utf16", utf16), ("ucs4", ucs4), ("ucs2", ucs2)):
        for order, big in (("little", False), ("big", True)):
            seeds[f"{name}_{order}"] = table_text(kind, big, lines)
    seeds.update({
        "unreadable_kind": table_text(2, False, lines),
        "markup": table_text(ucs2, False, b"<!-- 1 2 --><t>8140 3000</t>\r\n8141\t3001<"),
        "unclosed_markup": table_text(ucs2, False, b"1 2\r\n<3 4\r\n"),
        "no_line_break": table_text(ucs2, False, b"8140 3000\r\n8141 3001"),
        "lone_line_feed": table_text(ucs2, False, b"8140 3000\r\n8141 3001\n"),
        "odd_count": table_text(ucs2, False, b"1 2 3\r\n"),
        "long_run": table_text(ucs2, False, b"0" * 63 + b"1" + b"23 4" + b"5" * 130 + b"\r\n"),
        "lower_case": table_text(ucs4, True, b"abcdef fedcba9876543210\r\n"),
        "at_the_half_buffer": table_text(ucs2, False, lines * 20, blanks=42),
        "at_the_buffer_end": table_text(ucs2, False, lines * 20, blanks=85),
        "wide_at_the_half_buffer": table_text(ucs4, True, lines * 20, blanks=21),
        "beyond_two_buffers": table_text(utf16, False, lines, blanks=200),
        "surrogates": table_text(utf16, False, "1\U00010030 2\U0001F600\r\n3 4\r\n".encode(
            "utf-16-le"), raw=True),
        "swapped_surrogates": table_text(utf16, True, b"\xdc\x00\xd8\x000\x00 \xd8\x00\xd8\x00\0\r",
                                         raw=True),
        "half_a_unit": table_text(ucs2, False, b"1\0 \0002\0\r\0\n", raw=True),
        "low_bytes_that_are_digits": table_text(
            ucs4, False, "\u01312 3\r\n".encode("utf-32-le"), raw=True),
        "empty": table_text(ucs2, False, b""),
    })
    return seeds


# --- Compiled tables. ---

def compiled(pairs, bytes_per_code=2, block_size=0, tail=b""):
    return (bytes([bytes_per_code - 1]) + struct.pack(">H", block_size)
            + b"".join(struct.pack("<II", *pair) for pair in pairs) + tail)


def compiled_table_seeds():
    return {
        "two_pairs": compiled([(0x8140, 0x3000), (0x8141, 0x3001)]),
        "partial_record": compiled([(0x8140, 0x3000), (0x8141, 0x3001)], tail=b"\1\2\3\4"),
        "single_bytes": compiled([(c, c) for c in range(0x20, 0x7F)], bytes_per_code=1),
        "downwards": compiled([(10, 0x3000), (5, 0x2000), (7, 0x2500)]),
        "same_key_twice": compiled([(0x30, 0x41), (0x30, 0x42), (0x31, 0x42)]),
        "value_zero": compiled([(0x30, 0), (0x31, 0x41), (0, 0x42)]),
        "only_key_zero": compiled([(0, 0)]),
        "lone_high_key": compiled([(0x10000000, 0x10000001)]),
        "lone_key_below_the_limit": compiled([(0xFFFFFFF, 0xFFFFFFF)]),
        "end_of_the_keys": compiled([(0xFFFFFFFF, 0xFFFFFFFE), (0xFFFFFFF0, 1), (0, 2)]),
        "wraps_to_zero": compiled([(0xFFFFF000, 0xFFFFF000), (0xFFFFF001, 3)]),
        "overlapping_blocks": compiled([(4096, 1), (100, 2), (4150, 3), (8191, 4), (8192, 5)]),
        "smallest_blocks": compiled([(1, 2), (3, 4), (2, 3)], block_size=1),
        "largest_blocks": compiled([(1, 2), (65536, 4), (65535, 3)], block_size=65535),
        "values_too_wide": compiled([(0x12345678, 0x9ABCDEF0)], bytes_per_code=1),
        "three_bytes": compiled([(0x8EA1A1, 0x4E02), (0x8EA1A2, 0x20089)], bytes_per_code=3),
        "four_bytes": compiled([(0x81308130, 0x80), (0xE3329A35, 0x10FFFF)], bytes_per_code=4),
        "empty": compiled([]),
    }


# --- Conversions. ---

CHARSETS = ["Shift_JIS", "WINDOWS31J", "Shift_JIS-2004", "UTF-8", "UTF-16", "ISO-10646-UCS-2",
            "ISO-10646-UCS-4", "UTF-7", "HZ-GB-2312", "none", "Tabled-UTF-8", "Tabled-UTF-16",
            "Tabled-UCS-4", "ChineseGBK"]
TARGETS = CHARSETS[:7] + CHARSETS[10:]
BIG_OUT, MARK_OUT, REPLACE, NEWLINES, BIG_IN, MARK_IN, SKIP, LONG = (1 << i for i in range(8))
# Operations of a step.
SOURCE, SET_UP, LANGUAGE, TERMINATE, REWIND, CONVERT = range(6)


def conversion(source, target, text, flags=BIG_OUT | BIG_IN, form=0, mode=0, language=0,
               narrow=0, wide=0, steps=()):
    head = bytes([CHARSETS.index(source), TARGETS.index(target), flags,
                  form | mode << 3 | language << 5])
    return (head + struct.pack(">HH", narrow, wide) + bytes([len(steps)])
            + b"".join(bytes(step) for step in steps) + text)


JAPANESE = "吾輩は猫である。名前はまだ無い。\r\nどこで生れたかとんと見当がつかぬ。ABC 123\n"


def conversion_seeds():
    shift_jis = JAPANESE.encode("cp932")
    every_byte = bytes(range(0x20, 0x100)) + bytes(range(0x20))
    composed = "か゚æ̀˥˩\u309aカ゚ア\u0300"
    tag = "\U000E0001\U000E006A\U000E0061"
    cancel = "\U000E0001\U000E007F"
    pieces = [(CONVERT, 1, 1), (CONVERT, 1, 2), (CONVERT, 3, 3), (CONVERT, 2, 0), (CONVERT, 5, 7)]
    seeds = {}
    for source, text in (("Shift_JIS", shift_jis), ("WINDOWS31J", shift_jis + b"\x87\x40\xFA\x5C"),
                         ("Shift_JIS-2004", shift_jis + b"\x82\xF5\x86\x63"),
                         ("UTF-8", (JAPANESE + composed).encode()),
                         ("UTF-16", (JAPANESE + composed + "😀").encode("utf-16-be")),
                         ("ISO-10646-UCS-2", (JAPANESE + composed).encode("utf-16-be")),
                         ("ISO-10646-UCS-4", (JAPANESE + composed + "😀").encode("utf-32-be"))):
        for target in CHARSETS[:7]:
            if source != target:
                name = f"{source}_to_{target}".lower()
                seeds[name] = conversion(source, target, text, steps=pieces)
                if target in ("UTF-8", "Shift_JIS-2004", "UTF-16"):
                    seeds[name + "_long"] = conversion(
                        source, target, text, flags=BIG_OUT | BIG_IN | LONG | REPLACE | SKIP)
    seeds.update({
        "every_byte_windows31j": conversion("WINDOWS31J", "UTF-8", every_byte,
                                            flags=BIG_OUT | BIG_IN | SKIP),
        "every_byte_shift_jis_2004": conversion("Shift_JIS-2004", "UTF-16", every_byte * 2,
                                                flags=BIG_IN),
        "bad_utf8": conversion("UTF-8", "WINDOWS31J", b"a\x80\xC0\xAF\xED\xA0\x80\xF8\xFF\xE3\x81"),
        "bad_utf16": conversion("UTF-16", "UTF-8", b"\xD8\x00\x00A\xDC\x00\xD8\x00"),
        "marks": conversion("UTF-16", "UTF-8", b"\xFF\xFEA\0B\0",
                            flags=BIG_OUT | MARK_OUT | MARK_IN),
        "marks_long": conversion("UTF-8", "UTF-16", b"\xEF\xBB\xBF" + JAPANESE.encode(),
                                 flags=MARK_OUT | MARK_IN | LONG),
        "languages": conversion("Shift_JIS", "UTF-8", shift_jis, language=2,
                                steps=[(CONVERT, 4, 64), (LANGUAGE, 1, 0), (CONVERT, 4, 20),
                                       (LANGUAGE, 3, 0), (CONVERT, 4, 200), (LANGUAGE, 2, 0)]),
        "language_tags_in": conversion("UTF-8", "UTF-16",
                                       (tag + "あ" + tag[:1] + "\U000E007F" + "い" + tag).encode(),
                                       language=2),
        "language_tags_cut": conversion("UTF-16", "UTF-8", (tag + "あ").encode("utf-16-be"),
                                        language=1, steps=[(CONVERT, 5, 99), (CONVERT, 4, 99)]),
        "language_tag_bad": conversion("ISO-10646-UCS-4", "UTF-8",
                                       (tag + "A" + tag).encode("utf-32-be"), language=1,
                                       flags=BIG_OUT | BIG_IN | SKIP),
        "replacements": conversion("UTF-8", "Shift_JIS", "é漢😀\u2028".encode(),
                                   flags=BIG_OUT | REPLACE, narrow=0x2A, wide=0x25A0),
        "replacement_impossible": conversion("UTF-8", "WINDOWS31J", "é😀".encode(),
                                             flags=BIG_OUT | REPLACE, narrow=0xE9, wide=0xD800),
        "references_hexadecimal": conversion("UTF-8", "ISO-10646-UCS-2", "a😀b".encode(), mode=1,
                                             steps=[(CONVERT, 9, 9), (CONVERT, 0, 20)]),
        "references_decimal": conversion("UTF-16", "ISO-10646-UCS-2", "😀".encode("utf-16-be"),
                                         mode=2),
        "hz": conversion("HZ-GB-2312", "UTF-8", b"a~~ ~{<:Ky2;VS~} ~\n~{~!~}~\0"),
        "hz_pieces": conversion("HZ-GB-2312", "Shift_JIS", b"~{2;~}a~\nb~{VS", steps=pieces),
        "gbk": conversion("ChineseGBK", "UTF-16", b"a\xBC\xBA\xCB\xF9\xFFb\x1B",
                          flags=BIG_OUT | SKIP | BIG_IN),
        "utf7": conversion("UTF-7", "UTF-8", b"Hi Mom -+Jjo--! +ZeVnLIqe-\0",
                           steps=[(CONVERT, 30, 200)]),
        "utf7_pieces": conversion("UTF-7", "Shift_JIS", b"+ZeVnLIqe-, +2D3eAA- +-\0",
                                  steps=pieces),
        "hz_without_gbk": conversion("Shift_JIS", "UTF-8", b"~{<:Ky2;VS{#,NpJ)l6HK!#~}~~.\n~\nz",
                                     steps=[(SOURCE, 8, 0), (CONVERT, 40, 200)]),
        "unknown_source": conversion("none", "UTF-8", b"abc"),
        "source_changes": conversion("Shift_JIS", "UTF-8", shift_jis,
                                     steps=[(CONVERT, 5, 50), (SOURCE, 1, 0), (CONVERT, 5, 50),
                                            (SOURCE, 9, 0), (CONVERT, 3, 9), (SET_UP, 3, 4),
                                            (CONVERT, 3, 9), (TERMINATE, 0, 9)]),
        "rewound": conversion("UTF-8", "UTF-16", JAPANESE.encode(),
                              steps=[(CONVERT, 30, 99), (REWIND, 0, 0), (CONVERT, 9, 99)]),
        "empty": b"",
    })
    for name, source, encoding in (("utf8", "Tabled-UTF-8", "utf-8"),
                                   ("utf16", "Tabled-UTF-16", "utf-16-be"),
                                   ("ucs4", "Tabled-UCS-4", "utf-32-be")):
        def encode(text):
            return text.encode(encoding)
        read = "A" + tag + "あ猫" + cancel + "か\u309A\uE000\uE0FF\uE100\U000E0041" + tag
        seeds[f"tags_read_{name}"] = conversion(
            source, "UTF-16", encode(read), language=2, steps=[(CONVERT, 9, 99), (CONVERT, 9, 9)])
        seeds[f"tags_read_{name}_long"] = conversion(
            source, "Tabled-UTF-8", encode(read), language=1,
            flags=BIG_OUT | BIG_IN | LONG | SKIP)
        seeds[f"tag_too_long_{name}"] = conversion(
            source, "UTF-8", encode("\U000E0001" + "\U000E0061" * 261 + "A"), language=1)
        seeds[f"tag_in_a_tag_{name}"] = conversion(
            source, "UTF-8", encode("\U000E0001" * 3 + "A" + tag + "\u0100" + tag), language=1,
            flags=BIG_OUT | BIG_IN | SKIP)
    for form in range(6):
        for name, target in (("bytes", "Shift_JIS"), ("units", "UTF-16")):
            seeds[f"line_ends_{form}_{name}"] = conversion(
                "UTF-8", target, "a\r\nb\rc\nd\u2028e\u2029f\n\r".encode(), form=form,
                flags=BIG_OUT | NEWLINES, steps=[(CONVERT, 3, 1), (CONVERT, 0, 5)])
    seeds["line_ends_long"] = conversion("WINDOWS31J", "UTF-8", shift_jis, form=3,
                                         flags=BIG_OUT | BIG_IN | NEWLINES | LONG)
    return seeds


# --- Texts to be detected. ---

DETECTED = "\u65e5\u672c\u8a9e\u306e\u30c6\u30ad\u30b9\u30c8\r\nABC \uff71\u3002\r\n"


def texts():
    fixed = b"".join(bytes([0, c]) for c in b"ABC\r\n") + b"\xc6\xfc\xb0\x21"
    return {
        "ascii": b"plain text\nof two lines\n",
        "shift_jis": DETECTED.encode("cp932"),
        "euc_jp": DETECTED.encode("euc_jp") + b"\x8f\xb0\xa1",
        "euc_jp_fix": fixed,
        "iso_2022_jp": DETECTED.encode("iso2022_jp_ext") + b"\x1b(I1\x1b$(D\x22\x2f\x1b(B\r",
        "gbk": "\u4e2d\u6587\u6587\u672c\n\u4e02".encode("gbk"),
        "big5": "\u4e2d\u6587\u6587\u672c\n".encode("big5"),
        "korean": "\ud55c\uad6d\uc5b4 \ub620\u3131\n".encode("cp949"),
        "tie": b"\xb0\xa1\xc4\xe3\xd0\xd0 ",
        "utf8": DETECTED.encode() + "\U0001f600\u2028".encode(),
        "utf8_marked": b"\xef\xbb\xbf" + DETECTED.encode(),
        "utf16le": (DETECTED + "\u2028\U0001f600").encode("utf-16-le"),
        "utf16be_marked": b"\xfe\xff" + (DETECTED + "\u2029").encode("utf-16-be"),
        "ucs4le_marked": b"\xff\xfe\0\0" + DETECTED.encode("utf-32-le"),
        "ucs4be": (DETECTED + "\U00020000").encode("utf-32-be"),
        "controls": bytes(range(256)),
        "empty": b"",
    }


def detection_seeds():
    seeds = {}
    for number, (name, text) in enumerate(texts().items()):
        seeds[name] = bytes([number % 5, 0]) + text
        seeds[name + "_long"] = bytes([4, 150]) + text
    return seeds


def check_seeds():
    seeds = {name: b"\0" + text for name, text in texts().items()}
    declaration = "<?xml version='1.0' encoding='Shift_JIS'?>\r\n<a/>\n"
    for name in ("ascii", "utf-16-le", "utf-16-be", "utf-32-le", "utf-32-be"):
        seeds["declared_" + name] = b"\0" + declaration.encode(name)
    seeds["declared_behind_a_mark"] = b"\0\xef\xbb\xbf" + declaration.encode()
    seeds["declared_at_a_position"] = b"\x0d<a encoding=''" + declaration.encode()
    seeds["declared_too_long"] = b"\0<?xml encoding=\"" + b"x" * 258 + b"\"?>"
    return seeds


# --- Compound files: the number that reads are drawn from, then the file. ---

FREE, END, FAT = 0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFFFD


def dwords(*values):
    return struct.pack(f"<{len(values)}I", *values)


def padded(data, size):
    return data + bytes(-len(data) % size)


def entry(name, kind, left=FREE, right=FREE, child=FREE, start=END, size=0):
    encoded = name.encode("utf-16-le")
    return (padded(encoded + b"\0\0", 64)[:64] + struct.pack("<HBB", len(encoded) + 2, kind, 1)
            + dwords(left, right, child) + bytes(36) + dwords(start, size, 0))


def compound(large=b"", small=b"", shift=9, entries=None, difat=FREE):
    """A file with one table sector: the large stream, the mini stream, its table, the directory."""
    size = 1 << shift
    sectors, table = [], []

    def chain(data):
        first = len(sectors)
        pieces = [padded(data, size)[i:i + size] for i in range(0, len(data), size)]
        sectors.extend(pieces)
        table.extend([first + i + 1 for i in range(len(pieces) - 1)] + [END] * bool(pieces))
        return first if pieces else END

    large_start = chain(large)
    mini = chain(padded(small, 64))
    count = (len(small) + 63) // 64
    mini_table = chain(padded(dwords(*range(1, count), END) if count else b"", size))
    directory = entries or [
        entry("Root Entry", 5, child=1, start=mini, size=len(small)),
        entry("large", 2, left=2, right=3, start=large_start, size=len(large)),
        entry("small", 2, start=0 if small else END, size=len(small)),
        entry("storage", 1, child=4),
        entry("inner", 2, right=5, start=large_start, size=len(large)),
        entry("empty", 2)]
    directory_start = chain(b"".join(directory))
    fat_start = chain(padded(b"\xff" * size, size))
    table[-1] = FAT
    sectors[fat_start] = dwords(*(table + [FREE] * 128)[:128]).ljust(size, b"\xff")
    header = bytearray(512)
    header[:8] = b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1"
    struct.pack_into("<HHHHH", header, 24, 0x3E, 3, 0xFFFE, shift, 6)
    struct.pack_into("<IIIIIIIII", header, 44, 1, directory_start, 0, 4096, mini_table,
                     1 if count else 0, difat, 0, fat_start)
    header[80:] = b"\xff" * 432
    return b"\1" + bytes(header) + b"".join(padded(sector, size) for sector in sectors)


def compound_file_seeds():
    large = bytes(i % 251 for i in range(4200))
    small = bytes(i % 241 for i in range(700))
    chain = [entry("Root Entry", 5, child=1)] + [
        entry(f"n{i}", 2, left=i + 1 if i < 11 else FREE) for i in range(1, 12)]
    cycle = [entry("Root Entry", 5, child=1), entry("a", 2, left=2, right=3),
             entry("b", 2, left=1), entry("small", 2)]
    shared = [entry("Root Entry", 5, child=1)] + [
        entry(f"n{i}", 1, left=i + 1 if i < 11 else FREE, right=i + 1 if i < 11 else FREE)
        for i in range(1, 12)]
    return {
        "both_streams": compound(large, small),
        "large_sectors": compound(large, small, shift=10),
        "mini_stream_only": compound(b"", small),
        "nothing": compound(),
        "chain_of_siblings": compound(entries=chain),
        "cycle_of_siblings": compound(small=small, entries=cycle),
        "siblings_that_meet_again": compound(entries=shared),
        "empty": b"",
    }


# --- Documents: whether they are checked first, then the file. ---


def version_4(seed):
    """The same with the header in a sector of its own and the table without its later half."""
    file = bytearray(seed[1:])
    struct.pack_into("<H", file, 26, 4)
    return seed[:1] + bytes(file[:512]) + bytes(4096 - 512) + bytes(file[512:])


def document_tree_seeds():
    large = bytes(i % 251 for i in range(4200))
    small = bytes(i % 241 for i in range(700))
    apart = [entry("Root Entry", 5, child=1, start=9, size=len(small)),
             entry("small", 2, right=2, start=0, size=len(small)), entry("large", 2, size=0)]
    orphan = [entry("Root Entry", 5), entry("a", 1, child=2), entry("b", 2)]
    seeds = {name: seed for name, seed in compound_file_seeds().items() if name != "large_sectors"}
    return seeds | {
        "version_4": version_4(compound(large, small, shift=12)),
        "unchecked": b"\0" + compound(b"", small, entries=apart)[1:],
        "orphans": compound(entries=orphan),
        "large_sectors": version_4(compound(large, small, shift=10)),
    }


# --- Property sets: kind, code page, target, language, line ends, length of the first set. ---

SUMMARY = bytes.fromhex("E0859FF2F94F6810AB9108002B27B3D9")
DOCUMENT_SUMMARY = bytes.fromhex("02D5CDD59C2E1B10939708002B2CF9AE")


def section(*properties):
    offsets, values = [], b""
    for _, value in properties:
        offsets.append(8 + 8 * len(properties) + len(values))
        values += padded(value, 4)
    rows = b"".join(dwords(number, offset) for (number, _), offset in zip(properties, offsets))
    return dwords(8 + len(rows) + len(values), len(properties)) + rows + values


def property_set(*sections):
    head = bytes.fromhex("FEFF000005000200") + bytes(16) + dwords(len(sections))
    offset = len(head) + 20 * len(sections)
    for format_id, data in sections:
        head += format_id + dwords(offset)
        offset += len(data)
    return head + b"".join(data for _, data in sections)


def string(number, text):
    return number, dwords(30, len(text) + 1) + text + b"\0"


def summary(kind, page, target, first, second, language=0, line_ends=8):
    return bytes([kind, page, target, language, line_ends]) + struct.pack(
        ">H", len(first)) + first + second


def property_set_seeds():
    def counted(text):
        return struct.pack("<I", len(text)) + text

    user = bytes.fromhex("05D5CDD59C2E1B10939708002B2CF9AE")
    names = dwords(2, 2, 6) + b"Count\0" + dwords(3, 5) + b"Name\0"
    pages = {page: (1, dwords(2, page)) for page in (932, 1200, 1252, 65001)}
    values = [dwords(0), dwords(3, 7), dwords(11, 0xFFFF), dwords(64, 1, 2), dwords(65) + counted(b"blob"),
              dwords(71) + counted(dwords(0xFFFFFFFF, 3) + b"META"), dwords(72) + bytes(16),
              dwords(0x1003, 2, 5, 6), dwords(0x101E, 2) + counted(b"a\0") + counted(b"bcd\0"),
              dwords(0x100C, 2, 30) + counted(b"ab\0\0") + dwords(3, 1), dwords(0x2003, 3, 1, 2, 0, 8, 9),
              dwords(31, 2) + "表\0".encode("utf-16-le"), dwords(73) + bytes(16) + counted(b"x\0")]
    every = property_set((SUMMARY, section(pages[1252], *((i + 2, v) for i, v in enumerate(values)))))
    both = property_set((DOCUMENT_SUMMARY, section(pages[65001], string(2, "文".encode()))),
                        (user, section((0, names), pages[1252], (2, dwords(3, 1)), string(3, b"x"))))
    sets = {"every_type": every, "names": both,
            "japanese_as_1252": property_set((SUMMARY, section(pages[1252], string(2, "日本語の文書".encode("cp932"))))),
            "bytes_as_1200": property_set((SUMMARY, section(pages[1200], string(2, b"A title")))),
            "units_as_1252": property_set((SUMMARY, section(pages[1252], string(2, "Title".encode("utf-16-le")))))}
    seeds = {name: b"\0\0" + data for name, data in sets.items()}
    seeds["other_page"] = b"\x03\xa4" + every
    seeds["empty"] = b""
    return seeds


def summary_seeds():
    page = (1, dwords(2, 65001))
    time = dwords(64, 0x0B6E1800, 0x01DA6B0B)
    texts = [string(i, f"文{i}".encode()) for i in (2, 3, 4, 5, 6, 8, 9, 18)]
    first = property_set((SUMMARY, section(page, *texts, (12, time), (13, time))))
    second = property_set((DOCUMENT_SUMMARY, section(
        page, string(2, b"category"), string(14, b"manager"), string(15, b"company"),
        *((i, dwords(3, i)) for i in (4, 6, 7, 8)))))
    long = property_set((SUMMARY, section((1, dwords(2, 932)), string(2, b"\x82\xa0" * 200),
                                          string(3, b"\n" * 300))))
    twice = property_set((SUMMARY, section(*texts)), (DOCUMENT_SUMMARY, section(*texts)),
                         (SUMMARY, section(*texts[:2], (1, dwords(2, 949)))))
    seeds = {f"kind_{kind}": summary(kind, 0, 0, first, second) for kind in range(6)}
    seeds.update({f"target_{target}": summary(0, target, target | 0x80, first, second, target % 4)
                  for target in range(7)})
    seeds["long"] = summary(1, 0, 4, long, b"")
    seeds["sections"] = summary(0, 1, 0, twice, twice)
    seeds["empty"] = b""
    return seeds


# --- Paths: a capacity, then strings that end in a zero. ---

def path_seeds():
    def strings(*texts, capacity=780):
        return struct.pack(">H", capacity) + b"".join(text + b"\0" for text in texts)
    return {
        "plain": strings(b"/data/report.tar.gz", b"_err"),
        "drive": strings(b"C:\\data\\report.doc", b"*.doc", b"txt"),
        "dots": strings(b"../.profile", b".?*"),
        "japanese": strings("日本/表.txt".encode(), "?本/*".encode(), "表".encode()),
        "shift_jis": strings(b"dir/\x95\x5c.txt\\\x83", b"\x95?"),
        "beyond_the_plane": strings("😀/\U0010ffff".encode(), b"?/?", capacity=5),
        "no_room": strings(b"abcdef", capacity=3),
        "nowhere": strings(b"a", capacity=0),
        "bad_utf8": strings(b"a\xc0\xaf/\xed\xa0\x80/\xf8/\xe3\x81", b"*\xc0?"),
        "long_base": strings(b"x" * 770, b"_", b"." + b"y" * 10),
        "long_path": strings(b"d/" * 380 + b"file.ext", b"z" * 10),
        "most_units": strings("あ".encode() * 779),
        "stars": strings(b"aaaaaaaaaaaaaaaab", b"*a*a*a*a?b*"),
        "surrogates": struct.pack(">H", 40) + "a😀".encode("utf-16-le") + b"\x3d\xd8\0\0",
        "empty": b"",
    }


# --- Cuts: charset, what the length leaves, limit, text. ---

def cut_seeds():
    japanese = "a日本\r\nｱ\r\n"
    texts = {0: japanese.encode("cp932"), 1: japanese.encode("euc_jp"),
             2: japanese.encode("euc_jp") + b"\x8f\xa1\xa1", 3: japanese.encode("iso2022_jp_ext"),
             4: b"\x1b$(Q\x24\x22\x1b(B\r\nb", 5: japanese.encode("utf-32-le"),
             6: japanese.encode("utf-16-be"), 7: (japanese + "😀é").encode(),
             8: "中文\r\n".encode("gbk"), 9: "中文\U0010ffff\r\n".encode("gb18030"), 10: b"ab\r\n"}
    seeds = {}
    for charset, text in texts.items():
        for limit in (3, len(text) - 1):
            seeds[f"charset_{charset}_limit_{limit}"] = (
                bytes([charset, 0]) + struct.pack(">H", limit) + text + bytes(4))
    seeds["empty"] = b""
    return seeds


# --- Formats of the log: an argument, then the format. ---

def log_format_seeds():
    formats = [b"status %d\n", b"%08X", b"<%-5d>", b"%c", b"%.3i|%lu", b"100%%", b"%s%n%*d", b"%5.",
               b"%hhd %hu", b"%llx", b"%+zu % td%jo", b"%4095d", b"%.4096d", b"%#-+ 0o", b"%\xe3\x81",
               b"%1$d%", b""]
    return {f"format_{number}": struct.pack(">i", argument) + text
            for number, (text, argument) in enumerate(
                zip(formats, [12, -2, 7, 0, 65, 1, -70000, 77] * 3))}


# --- The command: arguments, standard input, the files "a" and "b". ---

def command(arguments, text=b"", a=JAPANESE.encode(), b=b"plain\n"):
    return SEPARATOR.join([b"".join(argument.encode() + b"\0" for argument in arguments.split()),
                           text, a, b])


def command_seeds():
    japanese = JAPANESE.encode("cp932")
    document = compound(b"", b"small")[1:]
    lines = {
        "convert": command("convert -f UTF-8 -t Shift_JIS a b"),
        "convert_input": command("convert -f Shift_JIS -t UTF-16LE --bom --newline crlf", japanese),
        "convert_detected": command("convert -t UTF-8 a", a=japanese),
        "convert_guess": command("convert --guess -t UTF-8 --detect-language ja a", a=japanese),
        "convert_classic": command("convert --classic -t UTF-8 a b", a=japanese),
        "convert_invalid": command("convert -f UTF-8 -t UTF-16 --invalid skip --strict -",
                                   b"a\xff\xe3\x81b"),
        "convert_unmappable": command("convert -f UTF-8 -t ISO-8859-1 --unmappable replace "
                                      "--replacement ? --references decimal a"),
        "convert_output": command("convert -f UTF-8 -t ISO-2022-JP -o out --block-size 7 a"),
        "convert_directory": command("convert -f UTF-8 -t UTF-16BE --output-dir new a b -j 2"),
        "convert_in_place": command("convert -f UTF-8 -t Shift_JIS --in-place=.bak --touch a b"),
        "convert_in_place_fails": command("convert -f UTF-8 -t Shift_JIS --in-place a", a=b"\xff"),
        "convert_mixed": command("convert -t UTF-8 --mixed --verbose -", JAPANESE.encode() + japanese),
        "convert_repair": command("convert -f UTF-8 -t UTF-8 --repair --in-place=.o --json a b",
                                  a=JAPANESE.encode().decode("latin-1").encode()),
        "convert_missing": command("convert -f UTF-8 -t UTF-16 a missing b"),
        "detect": command("detect --json a b -"),
        "detect_list": command("detect --files-from a --null", a=b"a\0b\0missing"),
        "detect_all": command("detect --all --language ja,Korean --declared x a b", a=japanese),
        "detect_segments": command("detect --json --segments --charsets UTF-8,sjis a -",
                                   JAPANESE.encode() + japanese),
        "detect_classic": command("detect --classic --language ja a b"),
        "check": command("check a b --json", a=JAPANESE.encode("utf-16")),
        "check_input": command("check --classic", japanese),
        "charsets": command("charsets --json"),
        "tables": command("tables"),
        "cut": command("cut -c Shift_JIS -n 9 -", japanese),
        "cut_name": command("cut --charset=utf-8 --bytes=3 a"),
        "summary": command("summary a --json", a=document),
        "summary_charset": command("summary -t Shift_JIS a b", a=document),
        "ole_list": command("ole list a --json", a=document),
        "ole_cat": command("ole cat a small", a=document),
        "lint": command("lint . --json"),
        "lint_file": command("lint a"),
        "help": command("convert --help"),
        "version": command("--version"),
        "no_job": command("nothing at all"),
        "bad_option": command("cut -n x --none"),
        "empty": b"",
    }
    return lines


# --- Changes of a text: which one, two numbers for the cuts, a profile and the text. ---

def text_change_seeds():
    def change(kind, text, profile=b"", cuts=b"\1\2"):
        return bytes([kind]) + cuts + profile + b"\0" + text.encode()
    marks = "e\u0301か\u3099ｶﾞ\u1112\u1161\u11ab\u212b\ufa19①ﬁ\u0958s\u0307\u0323 plain"
    widths = "ｶﾞｷｶﾊﾟ｡ガパー ＡＢ～\u3000ab~"
    profile = (b"name p\ncharset shift_jis\n as windows31j\n read FF5E 301C\n"
               b" write 2026 2E 2E 2E\n refuse E000-E757 A5\n unread 7F # all\n")
    seeds = {f"form_{kind}": change(kind, marks) for kind in range(5)}
    seeds |= {f"widths_{kind}": change(kind, widths) for kind in (6, 7, 8, 11, 14, 22, 31)}
    seeds["profile"] = change(32, "～…〜\ue000", profile)
    seeds["profile_mistake"] = change(32, "～", b"name p\ncharset x\nread FF5E\n")
    seeds["many_marks"] = change(0, "a" + "\u0301\u0323" * 300)
    seeds["empty"] = b""
    return seeds


# --- The judge of charsets: which hints, the length of a piece, four hints and the text. ---

def judge_seeds():
    def judged(text, which=0, languages="", charsets="", declared="", name="", piece=3):
        hints = "".join(hint + "\0" for hint in (languages, charsets, declared, name))
        return bytes([which, piece]) + hints.encode() + text
    line = "山路を登りながら、こう考えた。\n"
    russian = "Сегодня очень хорошая погода.\n"
    seeds = {name: judged(line.encode(codec)) for name, codec in (
        ("utf8", "utf-8"), ("sjis", "cp932"), ("euc_jp", "euc_jp"), ("mail", "iso2022_jp"),
        ("utf16le", "utf-16-le"), ("utf32_mark", "utf-32"), ("utf16_mark", "utf-16"))}
    seeds |= {f"russian_{codec}": judged(russian.encode(codec)) for codec in
              ("koi8_r", "cp1251", "iso8859_5", "cp866")}
    seeds["german"] = judged("Heute ist schönes Wetter.\r\n".encode("latin-1"))
    seeds["korean"] = judged("오늘은 날씨가 좋다.\n".encode("cp949"))
    seeds["chinese"] = judged("今天天气很好。\n".encode("gb18030"))
    seeds["big5"] = judged("今天天氣很好。\n".encode("big5"))
    seeds["shifts"] = judged("오늘\n".encode("iso2022_kr") + b"~{VPND~}\n+MEI-\n")
    seeds["mixed"] = judged(line.encode() + line.encode("cp932") + line.encode("euc_jp"))
    seeds["twice"] = judged("café au lait, déjà vu\nplain\n".encode().decode("cp1252").encode())
    seeds["twice_lost"] = judged("dÃ©jÃ\ufffd vu, cafÃ©\n".encode())
    seeds["damaged"] = judged(line.encode() * 3 + b"\xff" + line.encode())
    seeds["hints"] = judged(line.encode("euc_jp"), 15, "ja,zh-TW", "EUC-JP", "x-euc", "ja.euc-jp.po")
    seeds["declared"] = judged(b"<?xml version='1.0' encoding='KOI8-R'?>" + russian.encode("koi8_r"))
    seeds["ascii"] = judged(b"plain\r", 4, declared="utf-16")
    seeds["binary"] = judged(b"\x7fELF\2\1\1\0\0\0")
    seeds["no_text"] = judged(b"\xff\x81\x80\xff\x01")
    seeds["nothing"] = judged(b"")
    return seeds


# --- Packed charset directories: their tables by both numbers, or by none, so that lines are all. ---

def packed(tables, with_trees=True):
    made = pack.Pack()
    for number, pairs in enumerate(tables):
        if with_trees:
            made.add_table(number, pairs, first_is_key=True, width=4)
            made.add_table(number, pairs, first_is_key=False, width=2)
    files = [pack.PackedFile(f"t{number}.txt", 100, pairs) for number, pairs in enumerate(tables)]
    groups = [pack.PackedSubset(f"group{number}", "ja", 2, number) for number in range(len(tables))]
    members = [(number, []) for number in range(len(tables))]
    if len(tables) > 1:
        members[0] = (0, [(1, 2)])
    charsets = [pack.PackedCharset("packed", "SAME", members)]
    return made.bytes({"packed.xml": b"\xff\xfe<\0a\0>\0"}, files, groups, charsets)


def packed_seeds():
    latin = [(code, code) for code in range(256)]
    pairs = [(0x8140 + place, 0x3000 + 3 * place % 97) for place in range(97)]
    four = [(0x81308130 + 0x100 * tens + ones, 0x452 + 10 * tens + ones)
            for tens in range(30) for ones in range(10)]
    front = [(0x9000, 0x4E00), (0x8FFF, 0x4E01)]
    return {"one_byte": packed([latin]), "lines_only": packed([pairs], with_trees=False),
            "several": packed([latin, front + pairs, four + [(0x8140, 0x51)]])}


# --- Mails. ---

def mail_seeds():
    line = b"From a@b.c Thu Feb 29 12:34:56 2024\n"
    mixed = b"Content-Type: multipart/mixed; boundary=x\n\npreamble\n--x\n"
    encoded = b"Content-Transfer-Encoding: base64\n\n44GC44GE*\n"
    nested = b"".join(b"Content-Type: multipart/mixed; boundary=b%d\n\n--b%d\n" % (i, i)
                      for i in range(70))
    seeds = {
        "words": b"\x00Subject: =?iso-2022-jp*ja?B?GyRCJCI=?=\n =?ISO-2022-JP?Q?=1B(B?= a\n"
                 b"From: \"=?utf-8?Q?A=2C?=\" <a@b.c>, g: d (e);\nDate: 29 Feb 2024 1:2:3 +0900\n\nx",
        "parts": b"\x02" + mixed + b"Content-Type: text/plain; charset=shift_jis\n" + encoded +
                 b"--x\nContent-Type: message/rfc822\n\nSubject: a\n\nb\n--x\n"
                 b"Content-Disposition: attachment; filename*0*=utf-8''%E3; filename*1*=%81%82\n"
                 b"Content-Transfer-Encoding: quoted-printable\n\na=3D=\n=zz\n--x--\nend\n",
        "alternatives": b"\x00" + mixed.replace(b"mixed", b"alternative") +
                        b"\na\n--x\nContent-Type: text/html\n\n<p>\n--x--\n",
        "digest": b"\x00" + mixed.replace(b"mixed", b"digest") + b"\nSubject: a\n\nb\n--x--\n",
        "mailbox": b"\x01" + line + b"A: b\n\n>From x\n\n" + line + b"no field\n\n\x80\xFF\n",
        "nested": b"\x00" + nested,
        "charsets": b"\x03Content-Type: text/plain; charset=utf-7\n\n+MEI- ~{VP~} \x1B$B$\"\x1B(B\n",
        "uuencoded": b"\x00Content-Transfer-Encoding: x-uuencode\n\nbegin 644 a\n#86)C\n`\nend\n",
        "not_valid": b"\x04Content-Type: text/plain; charset=utf-8\n\na\xE3\x81\x82\xFFz\n",
    }
    return seeds


def main():
    write("packed_charsets_fuzzer", packed_seeds())
    write("mail_fuzzer", mail_seeds())
    write("rule_file_fuzzer", rule_file_seeds())
    write("table_text_fuzzer", table_text_seeds())
    write("compiled_table_fuzzer", compiled_table_seeds())
    write("converter_fuzzer", conversion_seeds())
    write("compound_file_fuzzer", compound_file_seeds())
    write("document_tree_fuzzer", document_tree_seeds())
    write("summary_fuzzer", summary_seeds())
    write("property_set_fuzzer", property_set_seeds())
    write("text_detection_fuzzer", detection_seeds())
    write("encoding_check_fuzzer", check_seeds())
    write("path_fuzzer", path_seeds())
    write("cut_fuzzer", cut_seeds())
    write("log_format_fuzzer", log_format_seeds())
    write("text_change_fuzzer", text_change_seeds())
    write("command_fuzzer", command_seeds())
    write("judge_fuzzer", judge_seeds())


if __name__ == "__main__":
    main()
