"""Detection, segments and repair as values of Python."""
import pickle

import ksv
import pytest
from texts import JAPANESE


def test_charset_language_and_line_end_are_told():
    found = ksv.detect(JAPANESE.encode("euc-jp"))
    assert (found.content, found[0].charset, found[0].language) == ("text", "EUC-JP", "ja")
    assert found[0].decode_as == "EUC-JP-MS" and found[0].line_end == "lf" and found[0].reason
    assert 0.9 < found[0].confidence <= 1 and found[0].invalid_offset is None


def test_what_is_no_text_has_no_guess():
    assert list(ksv.detect(b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\1")) == []
    assert ksv.detect(b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\1").content == "binary"
    assert ksv.detect(b"").content == "empty"


def test_hints_are_followed():
    text = "café, déjà vu, naïve\n".encode("cp1252")
    assert ksv.detect(text, charsets="ISO-8859-15,UTF-8")[0].charset == "ISO-8859-15"
    text = "草枕".encode("sjis")
    assert ksv.detect(text, languages="ja", declared="Shift_JIS", file_name="a.sjis.txt")[0].charset == "Shift_JIS"


def test_where_the_pieces_are_cut_changes_nothing():
    data = JAPANESE.encode("sjis") * 3
    detector = ksv.Detector(languages="ja")
    for begin in range(0, len(data), 7):
        detector.feed(data[begin:begin + 7])
    assert detector.verdict() == ksv.detect(data, languages="ja")


def test_a_file_is_detected(tmp_path):
    path = tmp_path / "草枕.txt"
    path.write_bytes(JAPANESE.encode("euc-jp"))
    assert ksv.detect_file(path)[0].charset == "EUC-JP"
    with pytest.raises(ksv.SystemFailure):
        ksv.detect_file(tmp_path / "nowhere")


def test_parts_in_different_charsets_are_found():
    parts = [JAPANESE.encode("utf-8") * 2, JAPANESE.encode("sjis") * 2]
    found = ksv.segments(b"".join(parts), languages="ja")
    assert [(part.offset, part.length, part.charset) for part in found] == [
        (0, len(parts[0]), "UTF-8"), (len(parts[0]), len(parts[1]), "Shift_JIS")]
    assert ksv.segments(b"") == []


def test_text_written_twice_is_mended():
    once = "café au lait, déjà vu, naïve\n".encode()
    twice = once.decode("cp1252").encode()
    assert ksv.detect(twice).misread_as == "windows-1252"
    mended = ksv.repair(twice)
    assert mended.text == once and mended.repaired == 1 and mended.misread_as == "windows-1252"


def test_detections_travel_between_processes():
    found = ksv.detect(JAPANESE.encode())
    copy = pickle.loads(pickle.dumps(found))
    assert copy == found and vars(copy) == vars(found)
