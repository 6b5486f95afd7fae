"""The codecs, beside Python's own."""
import codecs
import io

import codec_differences
import pytest
from hypothesis import given
from hypothesis import strategies as st
from texts import JAPANESE, READ_ONLY, SAMPLES

HANDLERS = ["strict", "replace", "ignore", "xmlcharrefreplace", "surrogateescape", "backslashreplace",
            "namereplace", "surrogatepass"]

def outcome(function, *arguments):
    """What a call gives, or where it fails."""
    try:
        return function(*arguments)
    except UnicodeError as error:
        return type(error), getattr(error, "start", None), getattr(error, "end", None)


@pytest.mark.parametrize("charset", SAMPLES)
def test_texts_are_decoded_and_encoded_as_python_does(charset):
    text = SAMPLES[charset]
    assert text.encode(f"ksv-{charset}").decode(charset) == text
    assert text.encode(charset).decode(f"ksv-{charset}") == text


@pytest.mark.parametrize("charset", READ_ONLY)
def test_charsets_that_are_only_read_are_decoded_and_refuse_to_be_written(charset):
    assert READ_ONLY[charset].encode(charset).decode(f"ksv-{charset}") == READ_ONLY[charset]
    with pytest.raises(LookupError):
        "a".encode(f"ksv-{charset}")


def test_differences_from_pythons_codecs_are_those_of_the_table():
    names = {**codec_differences.ONE_BYTE, **codec_differences.TWO_BYTES}
    want = codec_differences.TABLE.read_text(encoding="utf-8").splitlines()
    assert codec_differences.table(names) == want


@pytest.mark.parametrize("errors", HANDLERS)
@pytest.mark.parametrize("text", ["a€b草", "€", "草€€枕", "\udc80a", "草\ud83d\ude00", "a\ufeff€", "\ufeff\ufeff€", "a\udcffb", "\ufeffa", ""])
def test_characters_without_a_code_are_handled_as_python_does(text, errors):
    assert (outcome(text.encode, "ksv-shift_jis", errors) == outcome(text.encode, "shift_jis", errors))


@pytest.mark.parametrize("errors", [handler for handler in HANDLERS if handler not in (
    "xmlcharrefreplace", "namereplace")])
@pytest.mark.parametrize("data", [b"a\xffb", b"\xff", b"\x91\x90\xfd", b"abc", b"", b"\x91\x90a\xfeb\xff\xff"])
def test_bytes_without_a_character_are_handled_as_python_does(data, errors):
    assert outcome(data.decode, "ksv-shift_jis", errors) == outcome(data.decode, "shift_jis", errors)


def test_a_truncated_text_is_told():
    with pytest.raises(UnicodeDecodeError) as told:
        b"a\x91".decode("ksv-shift_jis")
    assert (told.value.start, told.value.end, told.value.object) == (1, 2, b"a\x91")


@given(st.binary(max_size=40), st.sampled_from(["utf-8", "koi8-r", "windows-1253", "euc-kr"]))
def test_surrogateescape_brings_bytes_back_that_are_no_text(data, charset):
    try:
        text = data.decode(f"ksv-{charset}", "surrogateescape")
    except UnicodeDecodeError as error:  # as with Python's own: of bytes below 80 there is no surrogate
        assert any(byte < 0x80 for byte in data[error.start:error.end])
        return
    assert text.encode(f"ksv-{charset}", "surrogateescape") == data


@given(st.text(max_size=30), st.sampled_from(sorted(SAMPLES)), st.sampled_from(["ignore", "xmlcharrefreplace", "replace"]))
def test_any_text_is_encoded_so_that_python_reads_it(text, charset, errors):
    written = text.encode(f"ksv-{charset}", errors)
    assert isinstance(written.decode(charset, "replace"), str)


@given(st.text(max_size=30), st.sampled_from(["utf-8", "utf-16le", "utf-16be", "gb18030"]))
def test_every_character_of_unicode_comes_back(text, charset):
    if charset == "gb18030":
        text = text.replace("\ufeff", "")
    assert text.encode(f"ksv-{charset}").decode(f"ksv-{charset}") == text


def test_texts_longer_than_a_piece_are_handled_as_one():
    for text in ("a" * 5000 + "€" + "草" * 5000 + "€", "草" * 4095 + "か\u309a" + "€", "€" * 9000):
        want = text.replace("€", "{}").encode("ksv-shift_jis-2004")
        codecs.register_error("ksv-test-braces", lambda error: ("{}", error.end))
        found = text.replace("€", "\udc80").encode("ksv-shift_jis-2004", "ksv-test-braces")
        assert found == want


def test_handlers_may_move_the_position_and_answer_bytes():
    codecs.register_error("ksv-test-skip-two", lambda error: ("<>", min(error.end + 1, len(error.object))))
    assert b"a\xffbc".decode("ksv-cp932", "ksv-test-skip-two") == "a<>c"
    codecs.register_error("ksv-test-bytes", lambda error: (b"\x01\x02", error.end))
    assert "a\ud800b".encode("ksv-utf-16", "ksv-test-bytes") == b"\xff\xfea\0\x01\x02b\0"
    assert "a€b".encode("ksv-sjis", "ksv-test-bytes") == b"a\x01\x02b"
    codecs.register_error("ksv-test-outside", lambda error: ("", 99))
    with pytest.raises(IndexError):
        b"a\xffb".decode("ksv-cp932", "ksv-test-outside")
    codecs.register_error("ksv-test-unwritable", lambda error: ("€", error.end))
    with pytest.raises(UnicodeEncodeError):
        "a€b".encode("ksv-sjis", "ksv-test-unwritable")
    with pytest.raises(LookupError):
        b"a\xff".decode("ksv-cp932", "ksv-test-nobody")


def test_handlers_in_charsets_with_escape_sequences_answer_text_only():
    jis = "草".encode("iso-2022-jp")
    assert (jis + b"\xff").decode("ksv-iso-2022-jp", "backslashreplace") == "草\\xff"
    assert "草€枕".encode("ksv-iso-2022-jp", "namereplace") == "草\\N{EURO SIGN}枕".encode("iso-2022-jp")
    with pytest.raises(UnicodeDecodeError):
        (jis + b"\xff").decode("ksv-iso-2022-jp", "surrogateescape")
    composed = "か\u309a".encode("ksv-iso-2022-jp-2004")
    assert "か\u309a€か\u309a".encode("ksv-iso-2022-jp-2004", "xmlcharrefreplace").count(composed[-5:-3]) == 2
    assert "\ufeff草\ud800".encode("ksv-iso-2022-jp", "backslashreplace").endswith(rb"\ud800")


def test_ordered_and_unordered_forms_of_unicode_treat_marks_as_python_does():
    for name in ("utf-16", "utf-8", "utf-16le", "utf-16be"):
        for text in ("\ufeffa草", "a"):
            assert text.encode(f"ksv-{name}") == text.encode(name)
            assert text.encode(name).decode(f"ksv-{name}") == text.encode(name).decode(name)


@given(st.sampled_from(sorted(SAMPLES)), st.lists(st.integers(1, 6), max_size=30))
def test_incremental_codecs_give_the_same_wherever_the_text_is_cut(charset, cuts):
    text = SAMPLES[charset] * 2
    encoder, decoder = (codecs.getincrementalencoder(f"ksv-{charset}")(),
                        codecs.getincrementaldecoder(f"ksv-{charset}")())
    data, rest = b"", text
    for cut in cuts:
        data += encoder.encode(rest[:cut])
        rest = rest[cut:]
    data += encoder.encode(rest, True)
    assert charset == "iso-2022-jp" or data == text.encode(f"ksv-{charset}")
    assert data.decode(charset) == text
    found, rest = "", data
    for cut in cuts:
        found += decoder.decode(rest[:cut])
        rest = rest[cut:]
    assert found + decoder.decode(rest, True) == text


@given(st.binary(max_size=24), st.sampled_from(["cp932", "euc-jp", "gb18030", "utf-8", "utf-16le", "iso-2022-jp"]),
       st.sampled_from(["replace", "ignore", "backslashreplace"]), st.integers(0, 24))
def test_incremental_decoders_handle_any_bytes_as_the_whole_is_handled(data, charset, errors, cut):
    decoder = codecs.getincrementaldecoder(f"ksv-{charset}")(errors)
    assert decoder.decode(data[:cut]) + decoder.decode(data[cut:], True) == data.decode(f"ksv-{charset}", errors)


@pytest.mark.parametrize("charset", ["shift_jis", "iso-2022-jp"])
@pytest.mark.parametrize("errors, written", [("replace", "a\ufffdb"), ("ignore", "ab"), ("backslashreplace", "a\\xffb")])
def test_incremental_decoders_handle_errors(charset, errors, written):
    decoder = codecs.getincrementaldecoder(f"ksv-{charset}")(errors)
    assert decoder.decode(b"a") + decoder.decode(b"\xff") + decoder.decode(b"b", True) == written


@pytest.mark.parametrize("charset", ["shift_jis", "iso-2022-jp"])
@pytest.mark.parametrize("errors, written", [("replace", b"a?b"), ("ignore", b"ab"), ("xmlcharrefreplace", b"a&#8364;b"),
                                             ("backslashreplace", b"a\\u20acb")])
def test_incremental_encoders_handle_errors(charset, errors, written):
    encoder = codecs.getincrementalencoder(f"ksv-{charset}")(errors)
    data = encoder.encode("a") + encoder.encode("€") + encoder.encode("b", True)
    assert data.replace(b"\x1b(B", b"") == written


@pytest.mark.parametrize("charset", ["shift_jis", "iso-2022-jp"])
def test_incremental_codecs_tell_the_place_in_the_piece(charset):
    decoder = codecs.getincrementaldecoder(f"ksv-{charset}")()
    decoder.decode(b"abc")
    with pytest.raises(UnicodeDecodeError) as told:
        decoder.decode(b"de\xff", True)
    assert (told.value.start, told.value.end) == (2, 3)
    encoder = codecs.getincrementalencoder(f"ksv-{charset}")()
    encoder.encode("abc")
    with pytest.raises(UnicodeEncodeError) as told:
        encoder.encode("d€", True)
    assert (told.value.start, told.value.end) == (1, 2)


@pytest.mark.parametrize("charset", ["shift_jis", "iso-2022-jp", "utf-16", "gb18030"])
def test_text_files_are_written_and_read(charset, tmp_path):
    path = tmp_path / "text"
    text = JAPANESE * 2000
    with open(path, "w", encoding=f"ksv-{charset}", newline="") as file:
        for line in text.splitlines(keepends=True):
            file.write(line)
    assert path.read_bytes().decode(charset) == text
    with open(path, encoding=f"ksv-{charset}", newline="") as file:
        assert "".join(file) == text
        file.seek(0)
        assert file.read(5) == text[:5]


def test_places_of_text_files_can_be_told_and_returned_to(tmp_path):
    path = tmp_path / "text"
    path.write_bytes((JAPANESE * 50).encode("shift_jis"))
    with open(path, encoding="ksv-shift_jis") as file:
        file.readline()
        file.read(3)
        place = file.tell()
        want = file.read()
        file.seek(place)
        assert file.read() == want


def test_places_in_utf_16_with_a_mark_can_be_returned_to(tmp_path):
    for order in ("utf-16-le", "utf-16-be"):
        path = tmp_path / order
        path.write_bytes(("\ufeff" + JAPANESE * 9).encode(order))
        with open(path, encoding="ksv-utf-16") as file:
            assert file.read(3) == JAPANESE[:3]
            place = file.tell()
            want = file.read()
            file.seek(place)
            assert file.read() == want


def test_a_charset_with_escape_sequences_is_not_read_from_the_middle_on():
    decoder = codecs.getincrementaldecoder("ksv-iso-2022-jp")()
    decoder.decode("草".encode("iso-2022-jp"))
    state = decoder.getstate()
    decoder.setstate(state)
    decoder.decode(b"abc")
    with pytest.raises(io.UnsupportedOperation):
        decoder.setstate(state)
    decoder.setstate((b"", 0))
    assert decoder.decode("枕".encode("iso-2022-jp"), True) == "枕"


@pytest.mark.parametrize("charset", ["shift_jis", "iso-2022-jp", "utf-16"])
def test_stream_codecs_read_and_write(charset):
    stream = io.BytesIO()
    writer = codecs.getwriter(f"ksv-{charset}")(stream)
    for character in JAPANESE * 3:
        writer.write(character)
    writer.reset()
    assert stream.getvalue().decode(charset) == JAPANESE * 3
    stream.seek(0)
    reader = codecs.getreader(f"ksv-{charset}")(stream)
    assert list(reader) == [JAPANESE] * 3


def test_appending_to_a_file_writes_no_second_mark(tmp_path):
    path = tmp_path / "text"
    for _ in range(2):
        with open(path, "a", encoding="ksv-utf-16") as file:
            file.write("草\n")
    assert path.read_bytes().decode("utf-16") == "草\n草\n"


def test_names_are_those_of_charsets():
    assert codecs.lookup("ksv-CP932").name == "ksv-cp932"
    for name in ("ksv-nobody", "ksv"):
        with pytest.raises(LookupError):
            codecs.lookup(name)
    with pytest.raises(LookupError):
        "a".encode("ksv-iso-2022-kr-nobody")
