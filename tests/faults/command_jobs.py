"""The jobs of the command that are walked."""

import hashlib
import json
import re
from pathlib import Path

from verdict import Job

_ENTITY = re.compile(r'<!ENTITY (\S+) SYSTEM "([^"]+)">')
_TEXT = "あいう abc 漢字\n"
_SJIS = _TEXT.encode("shift_jis")
_UTF8 = _TEXT.encode()
_ISO = "日本語の文です。\n".encode("iso2022_jp")
# Long enough to be told by its bytes.
_LETTER = "親譲りの無鉄砲で小供の時から損ばかりしている。\n" * 3
_MENU = "café au lait, déjà vu\n".encode()
_MENU_TWICE = _MENU.decode("cp1252").encode()


def _closure(directory: Path, names) -> set[str]:
    """The files of these charsets: what their rule files name, and what that names."""
    found = set()
    waiting = [f"{name}.xml" for name in names]
    while waiting:
        name = waiting.pop()
        if name in found or not (directory / name).exists():
            continue
        found.add(name)
        if name.endswith(".txt"):
            waiting.append(name[:-4] + ".cmp")
        if name.endswith(".xml"):
            text = (directory / name).read_bytes().decode("utf-16")
            waiting += [file for _, file in _ENTITY.findall(text)]
    return found


class _Rooms:
    """Charset directories of a few charsets, and of all."""

    def __init__(self, directory: Path):
        self._directory = directory

    def of(self, *charsets: str, compiled: bool = True) -> dict[str, bytes]:
        return {f"charset/{name}": (self._directory / name).read_bytes()
                for name in _closure(self._directory, charsets)
                if compiled or not name.endswith(".cmp")}

    def all(self) -> dict[str, Path]:
        return {f"charset/{path.name}": path for path in self._directory.iterdir()}


def _document() -> bytes:
    return (Path(__file__).parent.parent / "ole" / "documents" / "japanese.doc").read_bytes()


def _convert_jobs(ksv: str, small: dict[str, bytes], env) -> list[Job]:
    to_utf8 = [ksv, "convert", "-f", "sjis", "-t", "utf8"]
    one = small | {"a.txt": _SJIS}
    three = small | {"a.txt": _SJIS, "b.txt": b"abc\n", "c.txt": _SJIS * 2}
    done = {"a.txt": _UTF8, "c.txt": _UTF8 * 2}
    names = ["a.txt", "b.txt", "c.txt"]
    return [
        Job("convert", to_utf8, small, stdin=_SJIS, env=env, out=_UTF8),
        Job("convert-to-file", [*to_utf8, "-o", "new.txt", "a.txt"], one, env=env, out=b"",
            after={"new.txt": _UTF8}),
        Job("convert-over-file", [*to_utf8, "-o", "old.txt", "a.txt"],
            one | {"old.txt": b"older\n"}, env=env, out=b"", after={"old.txt": _UTF8}),
        Job("convert-to-directory", [*to_utf8, "-j", "2", "--output-dir", "out", *names], three,
            env=env, out=b"", operands=names,
            after={"out/a.txt": _UTF8, "out/b.txt": b"abc\n", "out/c.txt": _UTF8 * 2}),
        Job("convert-in-place", [*to_utf8, "--in-place", *names], three, env=env, out=b"",
            after=done, operands=names, in_place=True),
        Job("convert-in-place-backup", [*to_utf8, "--in-place=.bak", "-j", "2", "a.txt", "c.txt"],
            three, env=env, out=b"", operands=["a.txt", "c.txt"], in_place=True,
            after=done | {"a.txt.bak": _SJIS, "c.txt.bak": _SJIS * 2}),
        Job("convert-strict", [*to_utf8, "--strict", "--invalid", "skip"], small, stdin=_SJIS,
            env=env, out=_UTF8),
    ]


def _choosing_jobs(ksv: str, small: dict[str, bytes], env) -> list[Job]:
    """Those that find out themselves which files are to be worked on, and how."""
    to_utf8 = [ksv, "convert", "-f", "sjis", "-t", "utf8"]
    declared = b"<?xml version='1.0' encoding='%s'?>\n"
    texts = {"in/a.txt": _SJIS, "in/s/b.txt": _SJIS * 2, "in/s/c.bak": b"abc\n"}
    return [
        Job("convert-tree", [*to_utf8, "-r", "--exclude", "*.bak", "--output-dir", "out",
                             "--keep-tree", "in"], small | texts, env=env, out=b"",
            after={"out/a.txt": _UTF8, "out/s/b.txt": _UTF8 * 2}),
        Job("convert-tree-in-place", [*to_utf8, "-r", "--include", "*.txt", "--in-place", "-j", "2",
                                      "--skip-valid", "in"],
            small | texts | {"in/d.txt": _UTF8}, env=env, out=b"",
            after={"in/a.txt": _UTF8, "in/s/b.txt": _UTF8 * 2}),
        Job("convert-skip-valid", [*to_utf8, "--skip-valid", "--quiet"], small, stdin=_UTF8, env=env,
            out=_UTF8),
        Job("convert-skip-valid-to-file", [*to_utf8, "--skip-valid", "-o", "new.txt", "a.txt"],
            small | {"a.txt": _UTF8}, env=env, out=b"", after={"new.txt": _UTF8}),
        Job("convert-fix-declaration", [*to_utf8, "--fix-declaration"], small, env=env,
            stdin=declared % b"sjis" + _SJIS, out=declared % b"UTF-8" + _UTF8),
        Job("check-tree", [ksv, "check", "--json", "-r", "in"], texts, env=env,
            holds=b'"path":"in/s/c.bak"'),
        Job("check-list", [ksv, "check", "--files-from", "list", "--null", "-r"],
            texts | {"list": b"in/s\0in/a.txt\0"}, env=env, holds=b"in/a.txt\t"),
    ]


def _sum(text: bytes) -> str:
    return hashlib.sha256(text).hexdigest()


def _manifest_line(name: str, before: bytes, after: bytes, kept: str | None, kind: str) -> dict:
    return {"record": kind, "path": name, "source": "Shift_JIS", "found": "given",
            "target": "UTF-8", "result": "converted", "sizeBefore": len(before),
            "sizeAfter": len(after), "invalid": 0, "unmappable": 0, "output": name, "kept": kept,
            "modifiedBefore": None, "modifiedAfter": None, "sha256Before": _sum(before),
            "sha256After": _sum(after)}


def _manifest(*lines: dict) -> bytes:
    head = {"record": "head", "format": "ksv manifest", "version": 1, "run": "0123456789abcdef",
            "time": "2026-11-22T00:00:00Z", "directory": "@",
            "options": {"to": "UTF-8", "from": "Shift_JIS", "in-place": ".bak"}}
    return "".join(json.dumps(line, separators=(",", ":")) + "\n"
                   for line in (head, *lines)).encode()


def _manifest_jobs(ksv: str, small: dict[str, bytes], env) -> list[Job]:
    """Runs that a kill or a fault ends anywhere, and that the same call goes on with."""
    to_utf8 = [ksv, "convert", "-f", "sjis", "-t", "utf8", "--manifest", "m", "--resume"]
    two = small | {"a.txt": _SJIS, "b.txt": b"abc\n", "c.txt": _SJIS * 2}
    kept = {"a.txt": _UTF8, "c.txt": _UTF8 * 2, "a.txt.bak": _SJIS, "c.txt.bak": _SJIS * 2}
    names = ["a.txt", "b.txt", "c.txt"]
    originals = [(_SJIS, ("a.txt", "a.txt.bak")), (_SJIS * 2, ("c.txt", "c.txt.bak"))]
    intents = [_manifest_line("a.txt", _SJIS, _UTF8, "a.txt.bak", "intent"),
               _manifest_line("c.txt", _SJIS * 2, _UTF8 * 2, "c.txt.bak", "intent")]
    half = small | {"a.txt": _UTF8, "a.txt.bak": _SJIS, "b.txt": b"abc\n", "c.txt.bak": _SJIS * 2}
    return [
        Job("convert-manifest", [*to_utf8, "--in-place=.bak", *names], two, env=env, out=b"",
            after=kept, operands=names, manifest="m", never_lost=originals),
        Job("convert-manifest-directory", [*to_utf8, "-j", "2", "--output-dir", "out", *names], two,
            env=env, out=b"", operands=names, manifest="m",
            after={"out/a.txt": _UTF8, "out/b.txt": b"abc\n", "out/c.txt": _UTF8 * 2}),
        Job("convert-json", [ksv, "convert", "-f", "sjis", "-t", "utf8", "--json", "--output-dir",
                             "out", *names], two, env=env, holds=b'"result":"converted"',
            operands=names,
            after={"out/a.txt": _UTF8, "out/b.txt": b"abc\n", "out/c.txt": _UTF8 * 2}),
        # The first text is converted, and the second has lost its place.
        Job("convert-resume", [*to_utf8, "--in-place=.bak", *names],
            half | {"m": _manifest(*intents) + b'{"record":"re'}, env=env, out=b"", after=kept,
            operands=names, manifest="m", never_lost=originals,
            between={"c.txt": _SJIS * 2, "c.txt.bak": None}),
        Job("convert-undo", [ksv, "convert", "--undo", "m"],
            small | kept | {"m": _manifest(*intents)}, env=env, out=b"", operands=["a.txt", "c.txt"],
            after={"a.txt": _SJIS, "c.txt": _SJIS * 2, "a.txt.bak": None, "c.txt.bak": None},
            manifest="m", never_lost=originals),
    ]


def _judged(rooms: _Rooms) -> dict[str, bytes]:
    """What the judge needs to tell texts in Japanese from others."""
    return rooms.of("shift_jis", "windows31j", "euc-jp-ms", "utf-8", "utf-16", "iso-8859-1",
                    "windows-1252", "iso-646irv")


def _detecting_jobs(ksv: str, rooms: _Rooms, env) -> list[Job]:
    found = _judged(rooms)
    letter = {"a.txt": _LETTER.encode("cp932")}
    return [
        Job("convert-detected", [ksv, "convert", "-t", "utf8", "-o", "b.txt", "a.txt"],
            found | letter, env=env, out=b"", after={"b.txt": _LETTER.encode()}),
        Job("convert-detected-stdin", [ksv, "convert", "-t", "utf8"], found, env=env,
            stdin=letter["a.txt"], out=_LETTER.encode()),
        Job("convert-mixed", [ksv, "convert", "-t", "utf8", "--mixed", "--in-place=.bak", "a.txt"],
            found | {"a.txt": letter["a.txt"] + _LETTER.encode()}, env=env, out=b"",
            operands=["a.txt"], in_place=True,
            after={"a.txt": _LETTER.encode() * 2, "a.txt.bak": letter["a.txt"] + _LETTER.encode()}),
        Job("convert-mixed-stdin", [ksv, "convert", "-t", "utf8", "--mixed"], found, env=env,
            stdin=letter["a.txt"] + _LETTER.encode(), out=_LETTER.encode() * 2),
        Job("convert-repair", [ksv, "convert", "-f", "utf8", "-t", "utf8", "--repair", "-o", "b.txt",
                               "a.txt"], found | {"a.txt": _MENU_TWICE}, env=env, out=b"",
            after={"b.txt": _MENU}),
        Job("convert-classic", [ksv, "convert", "--classic", "-t", "sjis"], found, env=env,
            stdin=_LETTER.encode(), out=letter["a.txt"]),
    ]


def _mail_jobs(ksv: str, rooms: _Rooms, env) -> list[Job]:
    mail = rooms.of("cp50220", "cp50220-kana", "iso-10646-ucs-4", "utf-8")
    text = "Hello あ\n"
    return [
        Job("convert-mail", [ksv, "convert", "-f", "cp50220", "-t", "utf8", "-o", "b", "a"],
            mail | {"a": _ISO}, env=env, out=b"", after={"b": _ISO.decode("iso2022_jp").encode()}),
        Job("convert-utf7", [ksv, "convert", "-f", "utf-7", "-t", "utf8"], mail, env=env,
            stdin=text.encode("utf-7"), out=text.encode()),
    ]


def _judging_jobs(ksv: str, rooms: _Rooms, env) -> list[Job]:
    texts = {"a.txt": _LETTER.encode("cp932"), "b.txt": _LETTER.encode(), "c.txt": b""}
    names = sorted(texts)
    found = _judged(rooms)
    both = texts["a.txt"] + texts["b.txt"]
    return [
        Job("detect", [ksv, "detect", "a.txt"], found | texts, env=env, holds=b"\tShift_JIS\t"),
        Job("detect-many", [ksv, "detect", "-j", "2", *names], found | texts, env=env,
            operands=names, holds=b"\tUTF-8\t"),
        Job("detect-json", [ksv, "detect", "--json", "--all", *names], found | texts, env=env,
            operands=names, holds=b'"charset":"Shift_JIS"'),
        Job("detect-stdin", [ksv, "detect"], found, env=env, stdin=texts["a.txt"],
            holds=b"\tShift_JIS\t"),
        Job("detect-segments", [ksv, "detect", "--segments", "a.txt"], found | {"a.txt": both},
            env=env, holds=b"\tUTF-8\t"),
        Job("detect-list", [ksv, "detect", "--files-from", "list"],
            found | texts | {"list": b"a.txt\nb.txt\n"}, env=env, holds=b"b.txt\tUTF-8\t"),
    ]


def _telling_jobs(ksv: str, small: dict[str, bytes], env) -> list[Job]:
    texts = {"a.txt": _LETTER.encode("cp932"), "b.txt": _LETTER.encode(), "c.txt": b""}
    names = sorted(texts)
    classic = [ksv, "detect", "--classic"]
    return [
        Job("detect-classic", [*classic, "a.txt"], texts, env=env, holds=b"\tShift_JIS"),
        Job("detect-classic-many", [*classic, "-j", "2", "a.txt", "b.txt"], texts, env=env,
            operands=["a.txt", "b.txt"], holds=b"\tUTF-8\t"),
        Job("detect-classic-stdin", classic, env=env, stdin=texts["a.txt"], holds=b"\tShift_JIS"),
        Job("check", [ksv, "check", *names], texts, env=env, operands=names, holds=b"a.txt\t"),
        Job("cut", [ksv, "cut", "-c", "sjis", "-n", "3", "a.txt"], small | texts, env=env,
            out="親".encode("cp932")),
        Job("cut-single-bytes", [ksv, "cut", "-c", "iso-646irv", "-n", "2"], small, env=env,
            stdin=b"abc", out=b"ab"),
        Job("charsets", [ksv, "charsets"], small, env=env, holds=b"Shift_JIS\t"),
        Job("charsets-json", [ksv, "charsets", "--json"],
            small | {"charset/aliases.txt": b"mine Shift_JIS\n"}, env=env, holds=b'"mine"'),
        Job("help", [ksv, "convert", "--help"], env=env, holds=b"--in-place"),
        Job("version", [ksv, "--version"], env=env, holds=b"ksv ", walks_loader=True),
    ]


def _directory_jobs(ksv: str, rooms: _Rooms, env) -> list[Job]:
    bare = rooms.of("shift_jis", "utf-8", compiled=False)
    compiled = {name: content for name, content in rooms.of("shift_jis", "utf-8").items()
                if name not in bare}
    # What a compiled table is called before it is whole.
    passing = re.compile(r"(^|/)[^/]*\.tmp$")
    return [
        Job("tables", [ksv, "tables"], bare, env=env, after=compiled, passing=passing,
            out=b"the code tables of 2 charsets are filled\n"),
        Job("convert-compiling", [ksv, "convert", "-f", "sjis", "-t", "utf8"], bare, env=env,
            stdin=_SJIS, out=_UTF8, any_after=True, may_lack=re.compile(r"\.cmp$"), passing=passing),
        Job("lint", [ksv, "lint", "charset"], rooms.of("shift_jis", "utf-8"), env=env, out=b""),
        Job("doctor-json", [ksv, "doctor", "--json"], rooms.of("iso-646irv"),
            env={"Charsetpath": "charset", "TMPDIR": "tmp"}, holds=b'"charsets","verdict":"ok"'),
        Job("lint-json", [ksv, "lint", "--json"], rooms.of("iso-646irv"), env=env, out=b""),
    ]


def _document_jobs(ksv: str, rooms: _Rooms, env) -> list[Job]:
    document = {"a.doc": _document()}
    both = rooms.of("windows31j", "utf-8", "utf-16") | document
    return [
        Job("summary", [ksv, "summary", "a.doc"], both, env=env, holds=b"  Title "),
        Job("summary-json", [ksv, "summary", "--json", "a.doc"], both, env=env,
            holds=b'"title":'),
        Job("summary-stdin", [ksv, "summary"], rooms.of("windows31j", "utf-8", "utf-16"), env=env,
            stdin=document["a.doc"], holds=b"  Title "),
        Job("summary-all", [ksv, "summary", "--all", "a.doc"], both, env=env, holds=b"VT_LPSTR"),
        Job("summary-set", [ksv, "summary", "--set", "title=x", "--in-place=.bak", "a.doc"], both,
            env=env, out=b"", operands=["a.doc"], in_place=True, any_after=True,
            never_lost=[(document["a.doc"], ("a.doc", "a.doc.bak"))]),
        Job("summary-set-to-file", [ksv, "summary", "--set-custom", "Count=7:number", "-o", "b.doc",
                                    "a.doc"], both, env=env, out=b"", any_after=True),
        Job("ole-list", [ksv, "ole", "list", "a.doc"], document, env=env, holds=b"WordDocument"),
        Job("ole-list-json", [ksv, "ole", "list", "--json", "a.doc"], document, env=env,
            holds=b'"WordDocument"'),
        Job("ole-cat", [ksv, "ole", "cat", "a.doc", "WordDocument"], document, env=env,
            holds=b"\x00"),
        Job("ole-cat-stdin", [ksv, "ole", "cat", "-", "WordDocument"], env=env,
            stdin=document["a.doc"], holds=b"\x00"),
        Job("ole-list-classic", [ksv, "ole", "list", "--classic", "a.doc"], document, env=env,
            holds=b"WordDocument"),
        Job("ole-cat-classic", [ksv, "ole", "cat", "--classic", "a.doc", "WordDocument"], document,
            env=env, holds=b"\x00"),
        Job("ole-cat-output", [ksv, "ole", "cat", "a.doc", "1Table", "-o", "out"], document, env=env,
            out=b"", any_after=True),
        Job("ole-extract", [ksv, "ole", "extract", "a.doc", "parts"], document, env=env, out=b"",
            any_after=True),
        Job("ole-check", [ksv, "ole", "check", "a.doc"], document, env=env, out=b"a.doc: sound\n"),
    ]


# GLib ends the process where there is no memory, and the loader has words of its own for modules that it
# cannot load, as docs/faults.md tells: neither is walked.
def _reading_mail_jobs(ksv: str, rooms: _Rooms, env) -> list[Job]:
    if not (Path(ksv).parent / "ksv_mail.so").exists():
        return []
    mail = (b"From: a@b.c\nContent-Type: multipart/mixed; boundary=x\n\n--x\n"
            b"Content-Type: text/plain; charset=shift_jis\n\n" + _SJIS + b"--x--\n")
    files = rooms.of("shift_jis", "windows31j", "utf-8", "utf-16", "iso-646irv") | {"mail": mail}
    return [Job("mail", [ksv, "mail", "mail"], files, env=env, holds=_TEXT.encode(), kinds=("kill",))]


def command_jobs(command: Path, directory: Path) -> list[Job]:
    ksv = str(command)
    rooms = _Rooms(directory)
    env = {"Charsetpath": "@/charset"}
    small = rooms.of("shift_jis", "utf-8", "iso-646irv")
    whole = Job("convert-all-charsets", [ksv, "convert", "-f", "sjis", "-t", "utf8"], stdin=_SJIS,
                linked=rooms.all(), env=env, out=_UTF8)
    jobs = [*_convert_jobs(ksv, small, env), *_choosing_jobs(ksv, small, env),
            *_manifest_jobs(ksv, small, env), *_detecting_jobs(ksv, rooms, env),
            *_mail_jobs(ksv, rooms, env), *_judging_jobs(ksv, rooms, env),
            *_telling_jobs(ksv, small, env),
            *_directory_jobs(ksv, rooms, env), *_document_jobs(ksv, rooms, env),
            *_reading_mail_jobs(ksv, rooms, env), whole]
    for job in jobs:
        if not job.walks_loader:
            job.begins_like = [ksv, "--version"]
    return jobs
