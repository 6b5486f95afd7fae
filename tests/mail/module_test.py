"""What the command takes of the system by itself, and what its mail reader does.

    module_test.py COMMAND MODULE
"""

import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

COMMAND, MODULE = (Path(path).resolve() for path in sys.argv[1:3])


def needed(binary: Path) -> str:
    return subprocess.run(["readelf", "-d", str(binary)], check=True, capture_output=True, text=True).stdout


def exported(binary: Path) -> set[str]:
    listing = subprocess.run(["nm", "-D", "--defined-only", str(binary)], check=True,
                             capture_output=True, text=True).stdout
    return {line.split()[-1] for line in listing.splitlines()}


class Module(unittest.TestCase):
    def test_the_command_itself_needs_nothing_of_it(self):
        self.assertNotRegex(needed(COMMAND), r"NEEDED.*(gmime|glib|gobject)")
        self.assertRegex(needed(MODULE), r"NEEDED.*libgmime-3\.0")

    def test_the_module_needs_no_library_of_cpp(self):
        self.assertNotRegex(needed(MODULE), r"NEEDED.*libstdc")

    def test_the_module_exports_its_one_function(self):
        self.assertEqual(exported(MODULE), {"ksv_mail_reader_of_module"})

    # A copy of the command alone.
    def _run_alone(self, module: bytes | None) -> subprocess.CompletedProcess:
        with tempfile.TemporaryDirectory() as directory:
            command = Path(shutil.copy2(COMMAND, directory))
            if module is not None:
                (Path(directory) / "ksv_mail.so").write_bytes(module)
            return subprocess.run([str(command), "mail"], input="A: b\n\n", capture_output=True, text=True)

    def test_without_it_there_are_no_mails(self):
        run = self._run_alone(None)
        self.assertEqual((run.returncode, run.stdout), (2, ""))
        self.assertEqual(run.stderr, "ksv: mail: there is no mail reader: the module ksv_mail is not "
                                     "installed (see 'ksv mail --help')\n")

    def test_what_is_no_module_is_told(self):
        run = self._run_alone(b"no module")
        self.assertEqual((run.returncode, run.stdout), (2, ""))
        self.assertRegex(run.stderr, "^ksv: mail: there is no mail reader: the module ksv_mail cannot be "
                                     "loaded: .*\n$")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
