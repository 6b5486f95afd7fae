"""What the command says and leaves where one call to one file fails, and that the walker would see it
if it said or left something else.

  faults_test.py COMMAND CHARSET_DIRECTORY FAILING_MALLOC
"""

import sys
import tempfile
import unittest
from pathlib import Path

import tracing
from command_jobs import command_jobs
from verdict import Expected, Job, judge, remove
from walk import SKIPPED

LIMIT = 20


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
        self.expect(ended, 1, "ksv: a.txt: cannot be read: Input/output error")
        self.assertEqual(ended.out, b"")

    def test_a_document_that_cannot_be_read_is_not_a_damaged_one(self):
        for job in ("ole-list", "ole-cat", "summary"):
            for name in self.room.glob("a.doc"):
                name.unlink()
            ended = self.run_job(self.set_up(job), "-P", "a.doc", "-e",
                                 "inject=read:error=EIO:when=2+")
            self.expect(ended, 1, "ksv: a.doc: cannot be read: Input/output error")
            self.assertEqual(ended.out, b"")

    def test_a_temporary_file_that_cannot_be_removed_is_told(self):
        ended = self.run_job(self.set_up("detect-stdin"), "-e", "inject=unlink:error=EROFS")
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


class WithoutMemory(Room):
    def fail_from(self, name: str, place: int, alone: bool = False) -> tracing.Ended:
        job = self.set_up(name)
        more = {"LD_PRELOAD": PRELOAD, "KSV_FAIL_AT" if alone else "KSV_FAIL_FROM": str(place)}
        return tracing.run(job.argv, self.room, job.environment(self.room) | more, job.stdin, LIMIT)

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
        for place in range(1455, 1480):
            ended = self.fail_from("lint-json", place, alone=True)
            remove(self.room / "charset")
            if ended.status != 0:
                self.assertTrue(ended.err.endswith(b": Cannot allocate memory\n"), ended.err)

    def test_help_is_whole_or_not_there(self):
        whole = self.fail_from("help", 10**9)
        self.assertEqual(whole.status, 0)
        for place in range(1440, 1700, 20):
            ended = self.fail_from("help", place, alone=True)
            if ended.status == 0:
                self.assertEqual(ended.out, whole.out, place)
            else:
                self.assertEqual((ended.out, ended.err),
                                 (b"", b"ksv: Cannot allocate memory\n"), place)


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
    command, directory = sys.argv[1:3]
    PRELOAD = str(Path(sys.argv[3]).resolve())
    if not tracing.can_trace():
        print("skipped: strace cannot trace programs here")
        sys.exit(SKIPPED)
    JOBS = {job.name: job for job in command_jobs(Path(command).resolve(), Path(directory).resolve())}
    unittest.main(argv=sys.argv[:1])
