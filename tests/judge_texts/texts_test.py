#!/usr/bin/env python3
"""scripts/judge and bench/written_texts.py, on texts made up for them.

    texts_test.py DIRECTORY_OF_THE_PROJECT
"""
import struct
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
PROJECT = Path(sys.argv.pop(1)).resolve()
sys.path[:0] = [str(PROJECT / "scripts/judge"), str(PROJECT / "bench")]
import charset_judges as judges  # noqa: E402
import plain_text as plain  # noqa: E402
import training_texts as training  # noqa: E402
import written_texts as written  # noqa: E402


def catalogue(pairs):
    """A message catalogue of the pairs, as programs read it."""
    header = ("", "Content-Type: text/plain; charset=UTF-8\n")
    texts = [header, *pairs]
    tables, data = [b"", b""], b""
    at = 28 + 16 * len(texts)
    for side in (0, 1):
        for pair in texts:
            text = pair[side].encode()
            tables[side] += struct.pack("<2I", len(text), at + len(data))
            data += text + b"\0"
    return struct.pack("<7I", 0x950412DE, 0, len(texts), 28, 28 + 8 * len(texts), 0,
                       0) + b"".join(tables) + data


class PlainText(unittest.TestCase):
    def test_a_page_is_its_paragraphs_without_code(self):
        page = ("<html><head><title>x</title></head><body><h1>Grüße</h1><pre>ls -l</pre>"
                "<p>Ein <b>fetter</b>\n  Satz &amp; mehr</p></body></html>")
        self.assertEqual([p for p in plain.paragraphs_of_markup(page) if p],
                         ["Grüße", "Ein fetter Satz & mehr"])

    def test_a_line_break_between_ideographs_is_no_space(self):
        self.assertEqual(plain.one_line("日本\n語 の\nABC"), "日本語 の ABC")

    def test_a_manual_page_is_its_words(self):
        page = '.TH X 1\n.SH 名前\n\\fBls\\fR \\- 一覧\n.nf\nls \\-l\n.fi\n.BR cp (1)\nを見よ\n'
        self.assertEqual([p for p in plain.paragraphs_of_manual(page) if p],
                         ["名前", "ls - 一覧", "cp(1) を見よ"])

    def test_a_catalogue_is_its_translations(self):
        data = catalogue([("Open", "Öffnen"), ("menu\x04Save", "Sichern")])
        self.assertEqual(plain.messages(data), [("Open", "Öffnen"), ("menu\x04Save", "Sichern")])

    def test_a_message_has_no_marks_of_programs(self):
        self.assertEqual(plain.paragraphs_of_message("_Datei „%s“ <b>öffnen</b>"),
                         ["Datei „1“ öffnen"])
        self.assertEqual(plain.paragraphs_of_message("保存(&S)"), ["保存"])


class Languages(unittest.TestCase):
    def test_are_told_by_folders_and_names(self):
        for path, language in (("usr/share/help/zh_CN/a/b.page", "zh-CN"),
                               ("usr/share/doc/x/html/pt-BR/a.html", "pt"),
                               ("usr/share/doc/x/a.ja.html", "ja"),
                               ("usr/share/man/de/man1/ls.1.gz", "de"),
                               ("usr/share/locale/sr@latin/LC_MESSAGES/x.mo", None),
                               ("usr/share/help/C/a/b.page", "en")):
            self.assertEqual(training.language_of(Path(path)), language, path)

    def test_what_was_left_in_english_is_none_of_the_language(self):
        english = {training.key_of("Save the file")}
        german = training.Filter("de", english)
        self.assertFalse(german.is_prose("Save the file."))
        self.assertFalse(german.is_prose("This is what you get with the second one"))
        self.assertTrue(german.is_prose("Das ist ein Satz"))
        russian = training.Filter("ru", english)
        self.assertFalse(russian.is_prose("Untranslated"))
        self.assertTrue(russian.is_prose("Файл file.txt"))


class Splits(unittest.TestCase):
    def collect(self, folder, texts):
        """The texts, by name, as manual pages of one package."""
        files = []
        for name, lines in texts.items():
            path = Path(folder) / f"{name}.1"
            path.write_text("\n\n".join(lines) + "\n", encoding="utf-8")
            files.append(("package", "manual", path))
        return training.collect("de", files, set(), 10 ** 6)

    def names_by_split(self):
        """A name of a document for each split."""
        found = {}
        for number in range(1000):
            found.setdefault(training.split_of(f"manual/n{number}.1"), f"n{number}")
        return found

    def test_a_document_is_on_the_same_side_in_each_language(self):
        german = training.document_of("page", Path("a/installation.de.html"))
        japanese = training.document_of("page", Path("b/installation.ja.html.gz"))
        self.assertEqual(german, japanese)

    def test_no_line_of_a_held_text_was_learnt(self):
        names = self.names_by_split()
        shared = "Diese Zeile steht in beiden Texten und ist lang genug, " + "um zu zählen " * 20
        alone = "Nur hier steht etwas ganz anderes, " + "das niemand sonst geschrieben hat " * 20
        with tempfile.TemporaryDirectory() as folder:
            texts = self.collect(folder, {names["held"]: [shared + "1", alone],
                                          names["train"]: [shared + "2"]})
        self.assertEqual([lines for _, _, lines in texts["train"]], [[shared + "2"]])
        self.assertEqual([[line.strip() for line in lines] for _, _, lines in texts["held"]],
                         [[alone.strip()]])

    def test_most_documents_are_learnt_from(self):
        splits = [training.split_of(f"page/{n}") for n in range(2000)]
        self.assertAlmostEqual(splits.count("train") / 2000, 0.7, delta=0.05)
        self.assertAlmostEqual(splits.count("held") / 2000, 0.15, delta=0.05)


class Pieces(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        held = Path(self.folder.name) / "de" / "held"
        held.mkdir(parents=True)
        (held / "p.page.a.txt").write_text("Größe – „Maß“\n" * 5 + "nothing but ASCII\n" * 20,
                                           encoding="utf-8")
        self.texts = written.HeldTexts(Path(self.folder.name), "de")

    def test_are_whole_characters_and_the_same_each_time(self):
        for charset in ("UTF-8", "UTF-16BE", "windows-1252", "ISO-8859-1"):
            found = written.pieces(self.texts, charset, 9, 5, 1)
            self.assertTrue(found)
            self.assertEqual(found, written.pieces(self.texts, charset, 9, 5, 1))
            for text, data in found:
                self.assertLessEqual(len(data), 9)
                self.assertEqual(written.decode(data, charset), text)
                self.assertRegex(text, "[^\0-\x7f]")

    def test_have_what_people_write_where_the_charset_lacks_a_sign(self):
        self.assertEqual(written.Writing("de", "ISO-8859-1").line("Maß – „a“"), 'Maß - "a"')
        self.assertIsNone(written.Writing("de", "ISO-8859-1").line("Łódź"))
        self.assertEqual(written.Writing("ro", "windows-1250").line("și"), "şi")

    def test_of_ascii_have_nothing_else(self):
        for text, _ in written.pieces(self.texts, "US-ASCII", 16, 5, 1):
            self.assertTrue(text.isascii())

    def test_vietnamese_is_written_with_its_tones_apart(self):
        self.assertEqual(written.encode("ấ", "windows-1258"), b"\xe2\xec")


class Answers(unittest.TestCase):
    PIECE = ("Grüße", "Grüße".encode("latin_1"))

    def test_are_right_when_what_is_named_gives_the_text(self):
        for name in ("ISO-8859-1", "windows-1252", "latin1", "ISO-8859-15", "WINDOWS-1254"):
            self.assertTrue(judges.Answer(name).reads(self.PIECE), name)
        for name in ("UTF-8", "windows-1251", "macintosh", "KOI8-R", "no such charset", None):
            self.assertFalse(judges.Answer(name).reads(self.PIECE), name)

    def test_name_a_charset_by_any_name_that_is_read_alike(self):
        self.assertTrue(judges.Answer("iso-8859-1").names("windows-1252"))
        self.assertTrue(judges.Answer("gb18030").names("GBK"))
        self.assertTrue(judges.Answer("GB2312", decode_as="ChineseGBK").names("GBK"))
        self.assertFalse(judges.Answer("ISO-8859-15").names("windows-1252"))
        self.assertFalse(judges.Answer(None).names("UTF-8"))

    def test_differ_not_by_a_wave_of_one_table_or_the_other(self):
        self.assertTrue(judges.Answer("Shift_JIS").reads(("〜", b"\x81\x60")))


if __name__ == "__main__":
    unittest.main()
