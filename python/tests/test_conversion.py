"""Conversion in one call and in pieces, what it takes, and what it tells when it fails."""
import array
import gc
import mmap
import pickle
import tempfile
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import ksv
import pytest
from hypothesis import given
from hypothesis import strategies as st
from texts import JAPANESE, READ_ONLY, SAMPLES

SJIS = JAPANESE.encode("shift_jis")


def test_text_is_converted():
    assert ksv.convert(b"\x91\x90\x96\x8d", "sjis", "utf-8") == "草枕".encode()


@pytest.mark.parametrize("charset", SAMPLES)
def test_text_comes_back_from_every_kind_of_charset(charset):
    utf8 = SAMPLES[charset].encode()
    there = ksv.convert(utf8, "utf-8", charset)
    assert ksv.convert(there, charset, "utf-8") == utf8


@pytest.mark.parametrize("charset", READ_ONLY)
def test_charsets_that_are_only_read_are_converted_from(charset):
    assert ksv.convert(READ_ONLY[charset].encode(charset), charset, "utf-8") == READ_ONLY[charset].encode()


@pytest.mark.parametrize("length", [0, 1, 40, 21_845, 21_846, 65_536, 1 << 20, 1_398_100, 1_398_102, 5 << 20])
def test_lengths_around_those_of_the_rooms_are_converted(length):
    text = (SJIS * (length // len(SJIS) + 1))[: length // 2 * 2]
    text = text.decode("shift_jis", "ignore").encode("shift_jis")
    assert ksv.convert(text, "shift_jis", "utf-8") == text.decode("shift_jis").encode()


def test_replacements_longer_than_the_room_are_written():
    data = b"\xff" * 50_000
    assert ksv.convert(data, "cp932", "utf-8", invalid="replace",
                       invalid_text="twelve bytes") == b"twelve bytes" * 50_000


def test_buffers_of_all_kinds_are_taken():
    numpy = pytest.importorskip("numpy")
    want = JAPANESE.encode()
    with tempfile.TemporaryFile() as file:
        file.write(SJIS)
        file.flush()
        with mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as mapped:
            buffers = [bytearray(SJIS), memoryview(SJIS), memoryview(b"xx" + SJIS)[2:], mapped,
                       array.array("B", SJIS), numpy.frombuffer(SJIS, numpy.uint8)]
            for data in buffers:
                assert ksv.convert(data, "sjis", "utf8") == want
                assert ksv.Converter("sjis", "utf8").feed(data) == want
                assert ksv.detect(data, languages="ja")[0].charset == "Shift_JIS"


def test_what_is_no_buffer_is_refused():
    for data in ("text", 5, None, memoryview(b"abcdef")[::2]):
        with pytest.raises((TypeError, ValueError, BufferError)):
            ksv.convert(data, "sjis", "utf8")


def test_a_buffer_is_released_also_when_the_text_is_wrong():
    data = bytearray(b"a\xffb")
    with pytest.raises(ksv.InvalidText):
        ksv.convert(data, "cp932", "utf-8")
    data.append(0x62)  # a BufferError where someone still holds it
    with pytest.raises(ksv.InvalidText):
        ksv.Converter("cp932", "utf-8").feed(data)
    data.append(2)


def test_errors_in_cycles_are_collected():
    """An exception that keeps its frames alive, with a view of the text in them."""
    class Keeper:
        pass

    for _ in range(20):
        keeper = Keeper()
        try:
            ksv.convert(memoryview(bytearray(b"a\xff")), "cp932", "utf-8")
        except ksv.Error as error:
            keeper.error, keeper.itself = error, keeper
        del keeper
    gc.collect()


def test_invalid_text_is_told_with_its_place():
    with pytest.raises(ksv.InvalidText) as told:
        ksv.convert(b"\x91\x90\n\x82\xff", "shift_jis", "utf-8")
    error = told.value
    assert (error.result, error.offset, error.line, error.column) == ("KSV_INVALID", 3, 2, 1)
    assert error.data == b"\x82\xff" and error.code_point is None
    assert "byte offset 3" in error.reason == str(error)
    assert isinstance(error, ValueError)


def test_other_failures_have_their_own_exceptions():
    with pytest.raises(ksv.TruncatedText):
        ksv.convert(b"\x91", "shift_jis", "utf-8")
    with pytest.raises(ksv.UnmappableCharacter) as told:
        ksv.convert("a€".encode(), "utf-8", "shift_jis")
    assert (told.value.code_point, told.value.offset) == (0x20AC, 1)
    with pytest.raises(ksv.UnknownCharset) as unknown:
        ksv.convert(b"", "shift_jsi", "utf-8")
    assert isinstance(unknown.value, LookupError)
    with pytest.raises(ksv.BadArgument):
        ksv.convert(b"", "shift_jis", "utf-8", invalid="perhaps")
    with pytest.raises(ksv.BadArgument):
        ksv.convert(b"", "shift_jis", "utf-8", profile="nobody's")


def test_errors_travel_between_processes():
    with pytest.raises(ksv.InvalidText) as told:
        ksv.convert(b"a\xffb", "cp932", "utf-8")
    copy = pickle.loads(pickle.dumps(told.value))
    assert type(copy) is ksv.InvalidText and vars(copy) == vars(told.value)


@pytest.mark.parametrize("policy, written", [
    ("skip", b"ab"), ("replace", "a\ufffdb".encode()), ("hex", b"a&#xFF;b"),
    ("decimal", b"a&#255;b"), ("escape", rb"a\xFFb"), ("percent", b"a%FFb")])
def test_policies_for_invalid_bytes(policy, written):
    assert ksv.convert(b"a\xffb", "cp932", "utf-8", invalid=policy) == written


@pytest.mark.parametrize("policy, written", [
    ("skip", b"12"), ("replace", b"1?2"), ("hex", b"1&#x20AC;2"), ("decimal", b"1&#8364;2"),
    ("escape", rb"1\u{20AC}2"), ("percent", b"1%E2%82%AC2"), ("look-alike", b"1EUR2"),
    ("built-in", b"1?2")])
def test_policies_for_characters_that_the_target_lacks(policy, written):
    assert ksv.convert("1€2".encode(), "utf-8", "us-ascii", unmappable=policy) == written


def test_functions_are_asked_in_the_place_of_policies():
    asked = []

    def answer(problem):
        asked.append(problem)
        return f"<{problem.data.hex()}>"

    assert ksv.convert(b"a\xffb\x81", "cp932", "utf-8", invalid=answer) == b"a<ff>b<81>"
    assert [(problem.result, problem.offset) for problem in asked] == [("invalid", 1), ("truncated", 3)]
    assert ksv.convert("€1".encode(), "utf-8", "us-ascii",
                       unmappable=lambda problem: f"U+{problem.code_point:X}") == b"U+20AC1"
    assert ksv.convert(b"a\xffb", "cp932", "utf-8", invalid=lambda problem: "") == b"ab"


def test_a_function_that_answers_none_ends_the_conversion():
    with pytest.raises(ksv.InvalidText):
        ksv.convert(b"a\xffb", "cp932", "utf-8", invalid=lambda problem: None)


def test_what_a_function_raises_is_raised():
    def fail(problem):
        raise KeyError(problem.offset)

    with pytest.raises(KeyError):
        ksv.convert(b"a\xff", "cp932", "utf-8", invalid=fail)
    converter = ksv.Converter("cp932", "utf-8", invalid=fail)
    with pytest.raises(KeyError):
        converter.feed(b"a\xffbb")


def test_options_change_the_text():
    assert ksv.convert(b"a\r\nb\n", "ascii", "utf-8", newline="lf") == b"a\nb\n"
    assert ksv.convert(b"a", "ascii", "utf-16be", mark="add") == b"\xfe\xff\0a"
    assert ksv.convert(b"a", "ascii", "utf-16", byte_order="big") == b"\0a"
    assert ksv.convert("か\u3099".encode(), "utf-8", "sjis", normalize="composed") == b"\x82\xaa"
    assert ksv.convert("ｶﾞＡ".encode(), "utf-8", "utf-8", widths="full-katakana,half-ascii") == "ガA".encode()
    assert ksv.convert(b"\x81\x60", "sjis", "utf-16be", profile="jis") == b"\x30\x1c"


@given(st.sampled_from(sorted(SAMPLES)), st.lists(st.integers(1, 9)), st.booleans())
def test_where_a_text_is_cut_changes_nothing(charset, cuts, is_read):
    text = SAMPLES[charset].encode() * 2
    source, target = "utf-8", charset
    if is_read:
        text = ksv.convert(text, source, target)
        source, target = target, source
    converter, written, rest = ksv.Converter(source, target), [], text
    for cut in cuts:
        written.append(converter.feed(rest[:cut]))
        rest = rest[cut:]
    written.append(converter.feed(rest))
    written.append(converter.finish())
    assert b"".join(written) == ksv.convert(text, source, target)


@given(st.binary(max_size=64), st.sampled_from(sorted(SAMPLES)))
def test_any_bytes_are_converted_or_refused_with_a_place(data, charset):
    try:
        text = ksv.convert(data, charset, "utf-8").decode()
    except ksv.TextError as error:
        assert 0 <= error.offset <= len(data)
        text = ksv.convert(data, charset, "utf-8", invalid="skip").decode()
    assert ksv.convert(bytearray(data), charset, "utf-8", invalid="skip").decode() == text


def test_a_converter_begins_anew_behind_the_end():
    converter = ksv.Converter("utf-8", "iso-2022-jp")
    for _ in range(2):
        assert converter.feed("草枕".encode()) + converter.finish() == "草枕".encode("iso-2022-jp")


def test_a_converter_tells_what_stood_before_the_problem_and_counts():
    converter = ksv.Converter("cp932", "utf-8")
    with pytest.raises(ksv.InvalidText) as told:
        converter.feed(b"abc\xffdef")
    assert converter.before_problem == b"abc" and told.value.offset == 3
    converter = ksv.Converter("cp932", "us-ascii", invalid="skip", unmappable="skip")
    converter.feed(b"a\xff\x91\x90b")
    assert converter.counts == (1, 1)


def test_long_pieces_come_out_whole():
    converter = ksv.Converter("sjis", "utf-8")
    data = SJIS * 5000
    assert converter.feed(data) + converter.finish() == data.decode("shift_jis").encode()


def test_report_tells_what_would_be_lost():
    told = ksv.report("€草€".encode(), "utf-8", "shift_jis")
    assert told["unmappable"] == 2 and told["losses"][0]["code_point"] == "U+20AC"
    assert told["losses"][0]["count"] == 2


def test_threads_convert_at_once():
    def work(number):
        text = f"草枕{number}".encode()
        for _ in range(200):
            there = ksv.convert(text, "utf-8", "euc-jp")
            assert ksv.convert(there, "euc-jp", "utf-8") == text
        return ksv.convert(b"a\xff", "cp932", "utf-8", invalid=lambda problem: str(number))

    with ThreadPoolExecutor(8) as pool:
        assert list(pool.map(work, range(32))) == [b"a%d" % number for number in range(32)]


def test_charsets_are_told():
    sjis = ksv.charset("sjis")
    assert sjis.name == "Shift_JIS" and "MS_Kanji" in sjis.aliases and sjis.can_be_written
    assert sjis.mime_name == "Shift_JIS" and ksv.charset("windows-1252").web_name == "windows-1252"
    assert not sjis.is_stateful and ksv.charset("iso-2022-jp").is_stateful
    assert ksv.charset("cp932").code_page == 932 and sjis.longest_character == 2
    assert "草" in sjis and "€" not in sjis and sjis.encoded_length("草枕a") == 5
    assert any(ord("草") in span for span in sjis.ranges)
    assert sjis in ksv.charsets() and len(ksv.charsets()) >= 90
    assert pickle.loads(pickle.dumps(sjis)) == sjis
    with pytest.raises(ksv.UnknownCharset):
        ksv.charset("nobody's")


def test_pieces_are_cut_between_characters():
    assert ksv.leading_piece(b"\x91\x90\x96\x8d", 3, "sjis") == 2
    assert ksv.leading_piece(b"a\r\nb", 2, "utf-8") == 1


def test_the_interpreter_is_left_to_others_during_a_call():
    data = SJIS * (32 << 20 >> 7)

    def times_meanwhile():
        """When another thread was at work between the beginning and the end of a call."""
        seen, span = [], []

        def work():
            begin = time.perf_counter()
            ksv.convert(data, "sjis", "utf-16le")
            span.extend((begin, time.perf_counter()))

        thread = threading.Thread(target=work)
        thread.start()
        while thread.is_alive():
            seen.append(time.perf_counter())
        begin, end = span
        middle = (begin + end) / 2
        return [at for at in seen if abs(at - middle) < (end - begin) / 4]

    assert any(times_meanwhile() for _ in range(20))
