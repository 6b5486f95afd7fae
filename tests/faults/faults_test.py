"""What the command says and leaves where one call to one file fails, and that the walker would see it
if it said or left something else.

  faults_test.py COMMAND CHARSET_DIRECTORY FAILING_MALLOC
"""

import dataclasses
import fcntl
import itertools
import os
import re
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

import tracing
from command_jobs import command_jobs
from verdict import Expected, Job, judge, remove
from walk import SKIPPED

LIMIT = 20
# What it begins with does not settle its charset.
LONG_TEXT = (b"plain\n" * 1000 +
             "親譲りの無鉄砲で小供の時から損ばかりしている。\n".encode("cp932") * 100_000)


class Room(unittest.TestCase):
    def setUp(self):
        self._scratch = tempfile.TemporaryDirectory(prefix="faults-")
        self.room = Path(self._scratch.name)
        (self.room / "tmp").mkdir()

    def tearDown(self):
        self._scratch.cleanup()

    def set_up(self, name: str) -> Job:
        job = JOBS[name]
        job.set_up(self.room)
        return job

    def run_job(self, job: Job, *options: str, argv=None) -> tracing.Ended:
        argv = [word.replace("@", str(self.room)) for word in argv or job.argv]
        options = [option.replace("@", str(self.room)) for option in options]
        return tracing.run_traced(["-o", "/dev/null", *options], argv, self.room,
                                  job.environment(self.room), job.stdin, LIMIT)

    def expect(self, ended: tracing.Ended, status: int, *lines: str):
        said = [line for line in ended.err.decode().splitlines() if line.startswith("ksv: ")]
        self.assertEqual((ended.status, said),
                         (status, [line.replace("@", str(self.room)) for line in lines]))


class Command(Room):
    def test_a_text_that_cannot_be_read_has_no_charset(self):
        ended = self.run_job(self.set_up("detect"), "-P", "a.txt", "-e",
                             "inject=read:error=EIO:when=1")
        self.expect(ended, 1, "ksv: a.txt: Input/output error")
        self.assertEqual(ended.out, b"")

    def test_a_text_that_cannot_be_read_has_no_charset_by_the_library(self):
        ended = self.run_job(self.set_up("detect-classic"), "-P", "a.txt", "-e",
                             "inject=read:error=EIO:when=1")
        self.expect(ended, 1, "ksv: a.txt: cannot be read: Input/output error")
        self.assertEqual(ended.out, b"")

    def test_a_document_that_cannot_be_read_is_not_a_damaged_one(self):
        for job in ("ole-list", "ole-cat", "summary"):
            for name in self.room.glob("a.doc"):
                name.unlink()
            ended = self.run_job(self.set_up(job), "-P", "a.doc", "-e",
                                 "inject=pread64:error=EIO:when=2+")
            self.expect(ended, 1, "ksv: a.doc: Input/output error")
            self.assertEqual(ended.out, b"")

    def test_a_document_that_the_library_cannot_read_is_not_a_damaged_one(self):
        ended = self.run_job(self.set_up("summary-classic"), "-P", "a.doc", "-e",
                             "inject=read:error=EIO:when=2+")
        self.expect(ended, 1, "ksv: a.doc: cannot be read: Input/output error")
        self.assertEqual(ended.out, b"")

    def test_a_document_that_cannot_be_read_is_not_changed(self):
        ended = self.run_job(self.set_up("summary-set"), "-P", "a.doc", "-e",
                             "inject=pread64:error=EIO:when=3+")
        self.expect(ended, 1, "ksv: a.doc: Input/output error")
        self.assertFalse((self.room / "a.doc.bak").exists())

    def test_a_temporary_file_that_cannot_be_removed_is_told(self):
        ended = self.run_job(self.set_up("detect-classic-stdin"), "-e", "inject=unlink:error=EROFS")
        left = [path.name for path in (self.room / "tmp").iterdir()]
        self.assertEqual(len(left), 1)
        self.assertEqual(ended.out, b"-\tShift_JIS,ChineseGBK\t-\tlf\t-\t0x68000500\n")
        self.expect(ended, 1,
                    f"ksv: @/tmp/{left[0]}: cannot be removed: Read-only file system")

    def test_names_that_cannot_be_read_are_not_left_out(self):
        ended = self.run_job(self.set_up("charsets-json"), "-P", "@/charset/aliases.txt", "-e",
                             "inject=read:error=EIO:when=1")
        self.expect(ended, 1, "ksv: @/charset/aliases.txt: cannot be read: Input/output error")
        self.assertEqual(ended.out, b"")

    def test_a_rule_file_that_cannot_be_opened_is_not_missing(self):
        ended = self.run_job(self.set_up("lint"), "-P", "charset/set.jis_x0201kana.xml", "-e",
                             "inject=openat:error=EMFILE:when=1")
        self.expect(ended, 1,
                    "ksv: charset/set.jis_x0201kana.xml: cannot be read: Too many open files")
        self.assertEqual(ended.out, b"")

    def test_a_compiled_table_that_cannot_take_its_place_is_told_by_who_makes_them(self):
        ended = self.run_job(self.set_up("tables"), "-P", "@/charset/jis_x0201kana.cmp.tmp", "-e",
                             "inject=rename:error=ENOSPC")
        self.expect(ended, 1,
                    "ksv: @/charset/jis_x0201kana.cmp: cannot be made: No space left on device")
        self.assertEqual([path.name for path in (self.room / "charset").glob("*.tmp")], [])

    def test_threads_that_cannot_be_started_are_done_without(self):
        job = self.set_up("detect-many")
        ended = self.run_job(job, "-e", "inject=clone,clone3:error=EAGAIN")
        self.expect(ended, 0)
        self.assertEqual(len(ended.out.splitlines()), 3)

    def test_an_input_of_which_nothing_can_be_told_is_the_only_one_not_converted(self):
        ended = self.run_job(self.set_up("convert-in-place"), "-P", "c.txt", "-e",
                             "inject=newfstatat:error=EIO:when=1+")
        self.expect(ended, 1, "ksv: c.txt: Input/output error")
        self.assertEqual((self.room / "a.txt").read_bytes(), "あいう abc 漢字\n".encode())
        self.assertEqual((self.room / "c.txt").read_bytes(), job_text("convert-in-place", "c.txt"))

    def test_a_link_that_cannot_be_looked_at_is_not_replaced(self):
        job = self.set_up("convert-in-place")
        (self.room / "link").symlink_to("a.txt")
        ended = self.run_job(job, "-P", "link", "-e", "inject=newfstatat:error=EIO:when=5",
                             argv=[*job.argv[:-3], "link"])
        self.expect(ended, 1, "ksv: link: cannot write link: Input/output error")
        self.assertTrue((self.room / "link").is_symlink())
        self.assertEqual((self.room / "a.txt").read_bytes(), job_text("convert-in-place", "a.txt"))

    def test_what_waits_for_the_disk_goes_on_behind_a_signal(self):
        job = self.set_up("convert-in-place")
        self.expect(self.run_job(job, "-e", "inject=fsync:error=EINTR:when=1"), 0)
        self.assertEqual((self.room / "a.txt").read_bytes(), "あいう abc 漢字\n".encode())

    def expect_refused_in_place(self, call: str, words: str, *more: str, job="convert-in-place"):
        """The text stays as it was, and alone."""
        with self.subTest(call=call, more=more):
            self.set_up_again(job)
            ended = self.run_job(JOBS[job], "-e", f"inject={call}", *more,
                                 argv=self.argv_of_one(job))
            self.expect(ended, 1, f"ksv: a.txt: cannot write a.txt: {words}")
            self.assertEqual((self.room / "a.txt").read_bytes(), job_text(job, "a.txt"))
            self.assertFalse((self.room / "a.txt.bak").exists())
            self.assertEqual(list(self.room.glob(".ksv-*")), [])

    def set_up_again(self, job: str):
        for path in self.room.iterdir():
            remove(path)
        (self.room / "tmp").mkdir()
        self.set_up(job)

    @staticmethod
    def argv_of_one(job: str) -> list[str]:
        return [word for word in JOBS[job].argv if word not in ("b.txt", "c.txt")]

    def test_what_the_system_refuses_a_converted_text_is_told_and_leaves_the_text(self):
        refused = "Operation not permitted"
        self.expect_refused_in_place("fchown:error=EPERM",
                                     f"its owner and group cannot be kept: {refused}")
        for call in ("fchmod:error=EPERM", "listxattr:error=EPERM", "utimensat:error=EPERM",
                     "fsync:error=EPERM:when=1", "rename:error=EPERM"):
            self.expect_refused_in_place(call, refused)
        self.expect_refused_in_place(
            "rename:error=EPERM", refused, job="convert-in-place-backup")

    def test_a_text_that_cannot_get_its_place_is_put_back_from_its_backup(self):
        job = "convert-in-place-backup"
        self.expect_refused_in_place("rename:error=EIO", "Input/output error", "-e",
                                     "inject=link:error=EPERM", job=job)
        self.expect_refused_in_place("link:error=EEXIST", "the backup a.txt.bak exists already",
                                     job=job)
        self.expect_refused_in_place(
            "link:error=EIO", "the backup a.txt.bak cannot be made: Input/output error", job=job)

    def test_a_backup_is_made_by_a_new_name_where_there_are_no_second_ones(self):
        job = self.set_up("convert-in-place-backup")
        self.expect(self.run_job(job, "-e", "inject=link:error=EPERM"), 0)
        self.assertEqual((self.room / "a.txt").read_bytes(), "あいう abc 漢字\n".encode())
        self.assertEqual((self.room / "a.txt.bak").read_bytes(), job_text(job.name, "a.txt"))

    def test_what_a_volume_does_not_have_is_done_without(self):
        for call in ("listxattr:error=EOPNOTSUPP", "fsync:error=EINVAL",
                     "fremovexattr:error=EOPNOTSUPP", "openat:error=EINTR:when=10", "write:error=EINTR:when=1"):
            with self.subTest(call=call):
                self.set_up_again("convert-in-place")
                self.expect(self.run_job(JOBS["convert-in-place"], "-e", f"inject={call}"), 0)
                self.assertEqual((self.room / "a.txt").read_bytes(), "あいう abc 漢字\n".encode())

    def test_a_directory_that_cannot_be_waited_for_waits_for_all_there_is(self):
        job = self.set_up("convert-in-place")
        self.expect(self.run_job(job, "-P", ".", "-e", "inject=openat:error=EACCES"), 0)
        self.assertEqual((self.room / "a.txt").read_bytes(), "あいう abc 漢字\n".encode())

    def test_an_attribute_that_cannot_be_kept_leaves_the_text(self):
        for job, call, status in (("convert-in-place", "fsetxattr:error=EPERM", 1),
                                  ("convert-in-place", "getxattr:error=EPERM", 1),
                                  ("convert-over-file", "fsetxattr:error=EPERM", 0)):
            with self.subTest(job=job, call=call):
                self.set_up_again(job)
                name = "a.txt" if status else "old.txt"
                self.give_attribute(name, "user.note")
                ended = self.run_job(JOBS[job], "-e", f"inject={call}", argv=self.argv_of_one(job))
                told = ["ksv: a.txt: cannot write a.txt: its attribute user.note cannot be kept: "
                        "Operation not permitted"]
                self.expect(ended, status, *told[:status])
                kept = job_text(job, name) if status else "あいう abc 漢字\n".encode()
                self.assertEqual((self.room / name).read_bytes(), kept)

    def give_attribute(self, name: str, attribute: str):
        try:
            os.setxattr(self.room / name, attribute, b"x" * 300)
        except OSError as refused:
            self.skipTest(f"no attributes here: {refused}")

    def test_an_attribute_of_the_system_need_not_be_kept(self):
        job = self.set_up("convert-in-place")
        if os.geteuid() != 0:
            self.skipTest("only root can give one")
        self.give_attribute("a.txt", "trusted.note")
        self.expect(self.run_job(job, "-e", "inject=fsetxattr:error=EPERM"), 0)

    def test_a_link_that_cannot_be_followed_is_told(self):
        job = self.set_up("convert-in-place")
        (self.room / "link").symlink_to(self.room / "a.txt")
        argv = [*job.argv[:-3], "link"]
        ended = self.run_job(job, "-e", "inject=readlink,readlinkat:error=EIO", argv=argv)
        self.expect(ended, 1, "ksv: link: cannot write link: Input/output error")
        self.expect(self.run_job(job, argv=argv), 0)
        self.assertTrue((self.room / "link").is_symlink())
        self.assertEqual((self.room / "a.txt").read_bytes(), "あいう abc 漢字\n".encode())

    def test_the_backup_of_what_a_link_leads_to_stands_beside_the_link(self):
        job = self.set_up("convert-in-place-backup")
        (self.room / "sub").mkdir()
        (self.room / "sub" / "link").symlink_to(self.room / "a.txt")
        self.expect(self.run_job(job, argv=[*job.argv[:-2], "sub/link"]), 0)
        self.assertEqual((self.room / "sub" / "link.bak").read_bytes(),
                         job_text(job.name, "a.txt"))
        self.assertEqual((self.room / "a.txt").read_bytes(), "あいう abc 漢字\n".encode())

    def test_a_new_file_that_cannot_be_finished_is_not_left(self):
        for call in ("fchmod:error=EPERM", "rename:error=EPERM"):
            with self.subTest(call=call):
                self.set_up_again("convert-to-file")
                ended = self.run_job(JOBS["convert-to-file"], "-e", f"inject={call}")
                self.expect(ended, 1, "ksv: a.txt: cannot write new.txt: Operation not permitted")
                self.assertFalse((self.room / "new.txt").exists())
                self.assertEqual(list(self.room.glob(".ksv-*")), [])

    # What does not fit into memory waits in a file while its charset is looked for.
    def run_on_long_text(self, *options: str) -> tracing.Ended:
        job = dataclasses.replace(self.set_up("convert-detected-stdin"), stdin=LONG_TEXT)
        return self.run_job(job, *options)

    def test_a_long_text_whose_copy_cannot_be_kept_is_not_converted(self):
        for call, words in (("write:error=ENOSPC:when=1", "written: No space left on device"),
                            ("lseek:error=EIO", "read: Input/output error")):
            with self.subTest(call=call):
                self.set_up_again("convert-detected-stdin")
                ended = self.run_on_long_text("-e", f"inject={call}")
                self.expect(ended, 1, f"ksv: standard input: a temporary file cannot be {words}")
                self.assertEqual((ended.out, list((self.room / "tmp").iterdir())), (b"", []))

    def test_a_copy_that_cannot_be_removed_while_it_is_open_is_removed_behind(self):
        ended = self.run_on_long_text("-e", "inject=unlink:error=EBUSY:when=1")
        self.assertEqual((ended.status, ended.out), (0, LONG_TEXT.decode("cp932").encode()))
        self.assertEqual(list((self.room / "tmp").iterdir()), [])

    # Killed when the original has its second name already.
    def test_a_conversion_that_was_killed_behind_its_backup_can_be_called_again(self):
        job = self.set_up("convert-in-place-backup")
        argv = [*job.argv[:-2], "a.txt"]
        killed = self.run_job(job, "-e", "inject=rename:signal=KILL:when=1", argv=argv)
        self.assertEqual(killed.status, -9)
        self.assertTrue((self.room / "a.txt").samefile(self.room / "a.txt.bak"))
        self.expect(self.run_job(job, argv=argv), 0)
        self.assertEqual((self.room / "a.txt").read_bytes(), "あいう abc 漢字\n".encode())
        self.assertEqual((self.room / "a.txt.bak").read_bytes(),
                         job_text("convert-in-place-backup", "a.txt"))


class RunsWithManifest(Room):
    """What cannot be noted is not done."""

    def run_refused(self, call: str, *options: str) -> tracing.Ended:
        self._scratch.cleanup()
        self.setUp()
        job = self.set_up("convert-manifest")
        return self.run_job(job, "-P", "@/m", "-e", f"inject={call}", *options)

    def texts(self) -> list[bytes]:
        return [(self.room / name).read_bytes() for name in ("a.txt", "c.txt")]

    def go_on(self):
        job = JOBS["convert-manifest"]
        self.expect(self.run_job(job), 0)
        self.assertEqual(self.texts(), [job.after["a.txt"], job.after["c.txt"]])
        self.assertEqual((self.room / "a.txt.bak").read_bytes(), job.files["a.txt"])
        self.assertEqual(list(self.room.glob(".ksv-*")), [])

    # The head is written first, and then the intent for a.txt and its result.
    def test_a_run_stops_in_front_of_a_file_that_it_cannot_note(self):
        originals = [JOBS["convert-manifest"].files[name] for name in ("a.txt", "c.txt")]
        for call, words in (("write:error=ENOSPC:when=2", "No space left on device"),
                            ("write:error=EIO:when=2+", "Input/output error"),
                            ("fsync:error=EIO:when=2", "Input/output error"),
                            ("fsync:error=ENOSPC:when=2", "No space left on device")):
            with self.subTest(call=call):
                ended = self.run_refused(call)
                self.expect(ended, 1, f"ksv: a.txt: cannot write m: {words}",
                            "ksv: m: the run has stopped; --resume goes on with it")
                self.assertEqual(self.texts(), originals)
                self.assertFalse((self.room / "a.txt.bak").exists())
                self.go_on()

    def test_a_run_stops_behind_a_file_whose_result_it_cannot_note(self):
        job = JOBS["convert-manifest"]
        ended = self.run_refused("write:error=ENOSPC:when=3")
        self.expect(ended, 1, "ksv: a.txt: cannot write m: No space left on device",
                    "ksv: m: the run has stopped; --resume goes on with it")
        self.assertEqual(self.texts(), [job.after["a.txt"], job.files["c.txt"]])
        self.go_on()

    def test_nothing_is_done_where_the_head_cannot_be_written(self):
        originals = [JOBS["convert-manifest"].files[name] for name in ("a.txt", "c.txt")]
        for call, words in (("write:error=ENOSPC:when=1", "No space left on device"),
                            ("fsync:error=EIO:when=1", "Input/output error")):
            with self.subTest(call=call):
                ended = self.run_refused(call)
                self.expect(ended, 1, f"ksv: m: cannot write m: {words}")
                self.assertEqual(self.texts(), originals)
                self.go_on()

    def test_the_intent_is_on_the_disk_before_the_file_is_replaced(self):
        job = self.set_up("convert-manifest")
        trace = self.room / "tmp" / "trace"
        argv = [word for word in job.argv if word not in ("b.txt", "c.txt")]
        ended = tracing.run_traced(
            ["-y", "-o", str(trace), "-e", "trace=write,fsync,link,rename"], argv, self.room,
            job.environment(self.room), job.stdin, LIMIT)
        self.expect(ended, 0)
        steps = [step for line in trace.read_text().splitlines() if (step := step_of(line))]
        self.assertEqual(steps, ["fsync .", "write m", "fsync m",  # the head
                                 "write new", "fsync new",
                                 "write m", "fsync m",             # the intent
                                 "link", "fsync .", "rename", "fsync .",
                                 "write m", "write m", "fsync m"])

    def test_a_second_run_does_not_have_the_manifest_of_the_first(self):
        job = self.set_up("convert-manifest")
        (self.room / "m").touch()
        with open(self.room / "m") as manifest:
            fcntl.flock(manifest, fcntl.LOCK_EX)
            self.expect(self.run_job(job), 1, "ksv: m: another run is writing to it")
        self.assertEqual(self.texts()[0], job.files["a.txt"])


def step_of(line: str) -> str:
    """A step of a trace with descriptors as paths: which call, and of which file."""
    found = re.search(r"\b(write|fsync)\(\d+<([^>]*)>|\b(link|rename)\(", line)
    if not found:
        return ""
    if found[3]:
        return found[3]
    name = found[2].rsplit("/")[-1]
    kind = "new" if name.startswith(".ksv-") else "m" if name == "m" else "."
    return f"{found[1]} {kind}"


class WithoutMemory(Room):
    def fail_from(self, name: str, place: int, alone: bool = False) -> tracing.Ended:
        job = self.set_up(name)
        more = {"LD_PRELOAD": PRELOAD, "KSV_FAIL_AT" if alone else "KSV_FAIL_FROM": str(place)}
        return tracing.run(job.argv, self.room, job.environment(self.room) | more, job.stdin, LIMIT)

    def allocations(self, name: str) -> int:
        job = self.set_up(name)
        count = self.room / "count"
        more = {"LD_PRELOAD": PRELOAD, "KSV_COUNT": str(count)}
        tracing.run(job.argv, self.room, job.environment(self.room) | more, job.stdin, LIMIT)
        return int(count.read_text())

    def test_a_line_and_status_1_end_the_command_from_the_first_allocation_on(self):
        for place in (1, 2, 3, 10, 100, 1000):
            ended = self.fail_from("version", place)
            self.assertEqual((ended.status, ended.err), (1, b"ksv: Cannot allocate memory\n"), place)

    # The table of 71680 bytes for exceptions is the first of all, so that nothing can be thrown.
    def test_nothing_is_left_where_there_is_no_memory_for_an_exception(self):
        ended = self.fail_from("convert-to-file", 1)
        self.assertEqual((ended.status, ended.err), (1, b"ksv: Cannot allocate memory\n"))
        self.assertFalse((self.room / "new.txt").exists())

    def test_a_setting_that_finds_no_memory_is_not_one_that_is_missing(self):
        told = 0
        for place in range(1, 80):
            ended = self.fail_from("lint-json", place, alone=True)
            remove(self.room / "charset")
            if ended.status != 0:
                self.assertTrue(ended.err.endswith(b": Cannot allocate memory\n"), ended.err)
                told += b"charset directory: Cannot" in ended.err
        self.assertGreater(told, 0)

    def test_help_is_whole_or_not_there(self):
        whole = self.fail_from("help", 10**9)
        self.assertEqual(whole.status, 0)
        for place in range(1, self.allocations("help"), 20):
            ended = self.fail_from("help", place, alone=True)
            if ended.status == 0:
                self.assertEqual(ended.out, whole.out, place)
            else:
                self.assertEqual((ended.out, ended.err),
                                 (b"", b"ksv: Cannot allocate memory\n"), place)


    # Each charset is made when it is asked for, and what is lacking then is no charset that is unknown.
    def test_a_packed_directory_is_used_whole_or_the_want_of_memory_told(self):
        program = self.room / "ksv"
        shutil.copy(COMMAND, program)
        (self.room / "charset").mkdir()
        shutil.copy(Path(CHARSETS) / "charsets.pack", self.room / "charset")
        argv = [str(program), "convert", "-f", "sjis", "-t", "utf8"]
        right, told = 0, 0
        for place in itertools.count(1):
            more = {"LD_PRELOAD": PRELOAD, "KSV_FAIL_AT": str(place), "HOME": str(self.room)}
            ended = tracing.run(argv, self.room, more, "漢字\n".encode("cp932"), LIMIT)
            if ended.status == 0:
                self.assertEqual((ended.out, ended.err), ("漢字\n".encode(), b""), place)
                right += 1
            else:
                self.assertEqual((ended.status, ended.out), (1, b""), place)
                self.assertTrue(ended.err.endswith(b"Cannot allocate memory\n"), (place, ended.err))
                told, right = told + 1, 0
            if right == 50:
                break
        self.assertGreater(told, 100)


class Walker(unittest.TestCase):
    """That the verdicts are not all the same."""

    def judged(self, before, after, now, ended, fault=None, **job):
        with tempfile.TemporaryDirectory() as scratch:
            for name, content in now.items():
                (Path(scratch) / name).write_bytes(content)
            expected = Expected(before, after, b"out\n", b"")
            fault = fault or tracing.failing_call("read", "EIO", "1")
            return judge(Job("job", [], **job), ended, expected, fault, Path(scratch)).kind

    def ended(self, status, out=b"", err=b"", hung=False, trace=b""):
        return tracing.Ended(status, out, err, hung, trace)

    def test_right_is_only_what_all_is_right_of(self):
        old, new = {"a": b"old"}, {"a": b"new"}
        told = b"ksv: a: Input/output error\n"
        cases = [
            ("right", new, self.ended(0, b"out\n")),
            ("told", old, self.ended(1, b"", told)),
            ("told", new, self.ended(1, b"ou", told)),
            ("wrong file", old, self.ended(0, b"out\n")),
            ("wrong file", {"a": b"ne"}, self.ended(1, b"", told)),
            ("lost", {}, self.ended(1, b"", told)),
            ("wrong output", new, self.ended(0, b"")),
            ("wrong output", old, self.ended(1, b"other\n", told)),
            ("not told", old, self.ended(1)),
            ("other words", old, self.ended(1, b"", b"ksv: a: is empty\n")),
            ("strange words", old, self.ended(1, b"", b"Aborted\n")),
            ("signal", old, self.ended(-6, b"", told)),
            ("hang", old, self.ended(-9, b"", told, hung=True)),
            ("wrong file", old | {"b": b"x"}, self.ended(1, b"", told)),
        ]
        for kind, now, ended in cases:
            self.assertEqual(self.judged(old, new, now, ended), kind, (now, ended))

    def test_a_passing_file_stays_only_where_that_is_told(self):
        new, name = {"a": b"new"}, ".ksv-0123456789ab"
        left = new | {name: b""}
        told = f"ksv: {name}: cannot be removed: Input/output error\n".encode()
        unlink = f'1 unlink("{name}") = -1 EIO (INJECTED)'.encode()
        self.assertEqual(self.judged(new, new, left, self.ended(0, b"out\n")), "left over")
        self.assertEqual(self.judged(new, new, left, self.ended(1, b"", told)), "left over")
        self.assertEqual(self.judged(new, new, left, self.ended(1, b"", told, trace=unlink)), "told")
        kill = tracing.Fault("kill")
        self.assertEqual(self.judged(new, new, left, self.ended(-9), kill), "told")

    def test_each_call_is_let_fail_alone_and_from_there_on(self):
        calls = [(b"1", "openat"), (b"1", "read"), (b"1", "read"), (b"2", "read")]
        faults = [str(fault) for fault in tracing.call_faults(calls, 1)]
        self.assertIn("inject=read:error=EIO:when=2", faults)
        self.assertIn("inject=read:error=EIO:when=2+", faults)
        self.assertIn("inject=read:error=EINTR:when=1", faults)
        self.assertNotIn("inject=read:error=EINTR:when=1+", faults)
        self.assertFalse([fault for fault in faults if "openat" in fault or "when=3" in fault])


def job_text(job: str, name: str) -> bytes:
    return JOBS[job].files[name]


if __name__ == "__main__":
    COMMAND, CHARSETS = (str(Path(argument).resolve()) for argument in sys.argv[1:3])
    PRELOAD = str(Path(sys.argv[3]).resolve())
    if not tracing.can_trace():
        print("skipped: strace cannot trace programs here")
        sys.exit(SKIPPED)
    JOBS = {job.name: job for job in command_jobs(Path(COMMAND), Path(CHARSETS))}
    unittest.main(argv=sys.argv[:1])
