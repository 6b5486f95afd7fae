#!/usr/bin/env python3
"""Installs a build tree, moves what was installed, and uses it as others do.

    installed_test.py --build DIR --cmake CMAKE [--toolchain FILE] [--emulator COMMAND...]

The libraries, the command and the charset directory have to be built already.
"""
import argparse
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
COMPONENTS = ("runtime", "development", "command", "data", "texts", "licences")
NIHON = "E6 97 A5 E6 9C AC"
NOBODY = 65534


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path, required=True)
    parser.add_argument("--cmake", default="cmake")
    parser.add_argument("--toolchain", type=Path)
    parser.add_argument("--emulator", nargs="*", default=[])
    return parser.parse_args()


ARGUMENTS = parse_arguments()


def cached(name):
    """What the build tree was configured with."""
    found = re.search(rf"^{name}:[A-Z]+=(.*)$",
                      (ARGUMENTS.build / "CMakeCache.txt").read_text(), re.MULTILINE)
    return found.group(1) if found else ""


def reads_mail():
    return cached("KSV_BUILD_MAIL") == "ON"


def is_windows():
    return (ARGUMENTS.build / "ksv.exe").exists()


def run(*command, **options):
    """What a command prints; its failure is the test's."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors="replace", check=False,
                          **options)
    if done.returncode != 0:
        raise AssertionError(f"{shlex.join(map(str, command))} gave {done.returncode}:\n"
                             f"{done.stdout}")
    return done.stdout


def install(prefix, *options):
    run(ARGUMENTS.cmake, "--install", ARGUMENTS.build, "--prefix", prefix, *options)


def files_below(directory):
    return {str(path.relative_to(directory)) for path in directory.rglob("*")
            if not path.is_dir() or path.is_symlink()}


def without_settings(**settings):
    """An environment in which nothing says where the charset directory is."""
    kept = {name: value for name, value in os.environ.items()
            if name not in ("Charsetpath", "KSV_CHARSETS", "XDG_CONFIG_HOME")}
    if not is_windows():
        kept["HOME"] = "/nowhere"
    return {**kept, **settings}


def execute(program, *arguments, **options):
    options.setdefault("env", without_settings())
    return run(*ARGUMENTS.emulator, program, *arguments, **options)


class Installed(unittest.TestCase):
    """An installation that lies elsewhere than it was installed to."""

    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory(prefix="ksv_install")
        cls.directory = Path(cls.scratch.name)
        cls.directory.chmod(0o755)
        first = cls.directory / "first"
        install(first)
        cls.prefix = cls.directory / "moved"
        first.rename(cls.prefix)
        cls.ending = ".exe" if is_windows() else ""
        cls.libraries = cls.prefix / (cached("CMAKE_INSTALL_LIBDIR") or "lib")

    @classmethod
    def tearDownClass(cls):
        cls.scratch.cleanup()

    def command(self):
        return self.prefix / "bin" / f"ksv{self.ending}"

    def convert_by_command(self, prefix=None, **options):
        command = (prefix or self.prefix) / "bin" / f"ksv{self.ending}"
        text = self.directory / "text.sjis"
        text.write_bytes(b"\x93\xFA\x96\x7B")
        return execute(command, "convert", "-f", "Shift_JIS", "-t", "UTF-8", text, **options)

    def run_beside_library(self, program, **options):
        """As a program that is installed with the library; on Windows the system finds the
        library there."""
        place = self.prefix / "bin" / program.name
        shutil.copy(program, place)
        try:
            return execute(place, **options)
        finally:
            place.unlink()


MOST_BYTES = 9_000_000


class Components(Installed):
    @unittest.skipIf(is_windows() or cached("CMAKE_BUILD_TYPE") != "Release", "sizes of other builds")
    def test_libraries_command_and_packed_charsets_take_nine_megabytes_at_most(self):
        prefix = self.directory / "for_programs"
        for component in ("runtime", "command", "data"):
            install(prefix, "--strip", "--component", component)
        sizes = {name: (prefix / name).lstat().st_size for name in files_below(prefix)
                 if not name.startswith("share/") or name.endswith(".pack")}
        self.assertGreater(len(sizes), 3)
        self.assertLessEqual(sum(sizes.values()), MOST_BYTES, sizes)

    def test_are_the_whole_installation_and_have_no_file_in_common(self):
        whole = files_below(self.prefix)
        parts = []
        for component in COMPONENTS + (("mail",) if reads_mail() else ()):
            prefix = self.directory / component
            install(prefix, "--component", component)
            parts.append(files_below(prefix))
        self.assertEqual(set().union(*parts), whole)
        self.assertEqual(sum(map(len, parts)), len(whole))

    def test_hold_what_their_names_say(self):
        def ending_with(component, endings):
            prefix = self.directory / f"{component}_alone"
            install(prefix, "--component", component)
            files = files_below(prefix)
            self.assertNotEqual(files, set(), component)
            return {file for file in files if not file.endswith(endings)}
        self.assertEqual(ending_with("texts", (".xml", ".txt", ".cmp")), set())
        self.assertEqual(ending_with("data", ".pack"), set())
        self.assertEqual(ending_with("command", (f"ksv{self.ending}", ".1", ".fish")), set())
        if reads_mail():
            self.assertEqual(ending_with("mail", "/ksv/ksv_mail.so"), set())
        self.assertEqual(ending_with("development", (".h", ".hpp", ".cmake", ".pc", ".a", ".so", ".3")),
                         set())

    def test_bring_what_man_and_shells_look_for(self):
        if is_windows():
            self.skipTest("Windows has neither")
        files = files_below(self.prefix)
        for name in ("man/man1/ksv.1", "man/man1/ksv-convert.1", "man/man3/ksv_comm.3",
                     "man/man3/ksv_cconv.3", "bash-completion/completions/ksv",
                     "zsh/site-functions/_ksv", "fish/vendor_completions.d/ksv.fish"):
            self.assertIn(f"share/{name}", files)



class Mail(Installed):
    def setUp(self):
        if not reads_mail():
            self.skipTest("this build has no mail reader")

    def test_is_read_wherever_the_installation_is(self):
        self.assertEqual(execute(self.command(), "mail", input="Subject: =?utf-8?B?44GC?=\n\n"),
                         "Subject: あ\n\n")


class WithoutTexts(Installed):
    """The packed charsets alone."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.whole = cls.prefix
        cls.prefix = cls.directory / "without_texts"
        for component in ("runtime", "command", "data"):
            install(cls.prefix, "--component", component)

    def charset_directory(self):
        return next(self.prefix.rglob("charsets.pack")).parent

    def test_converts_by_every_charset_and_needs_no_place_to_write(self):
        before = files_below(self.prefix)
        self.assertIn("filled", execute(self.command(), "tables"))
        self.assertEqual(self.convert_by_command(encoding="utf-8"), "日本")
        self.assertEqual(files_below(self.prefix), before)

    def test_knows_the_charsets_that_the_files_describe(self):
        files = next(self.whole.rglob("charsets.pack")).parent
        named = without_settings(Charsetpath=str(files))
        self.assertEqual(execute(self.command(), "charsets"),
                         execute(self.command(), "charsets", env=named))

    def test_is_in_order(self):
        told = execute(self.command(), "doctor")
        self.assertRegex(told, "packed charsets.*88 charsets, 109 tables")
        self.assertEqual(execute(self.command(), "lint"), "")

    def test_says_so_where_a_setting_names_the_directory_whose_files_are_not_there(self):
        with self.assertRaisesRegex(AssertionError, "holds no charset rule file"):
            self.convert_by_command(
                env=without_settings(Charsetpath=str(self.charset_directory())))

    def test_takes_a_charset_that_is_put_beside_the_packed_ones(self):
        directory = self.charset_directory()
        files = next(self.whole.rglob("charsets.pack")).parent
        rules = (files / "koi8-r.xml").read_bytes().decode("utf-16")
        own = rules.replace("<name>KOI8-R", "<name>OWN-R")
        self.assertNotEqual(own, rules)
        added = directory / "own-r.xml"
        added.write_bytes(b"\xff\xfe" + own.encode("utf-16-le"))
        try:
            text = self.directory / "text.own"
            text.write_bytes(b"\xc1\xc2")
            self.assertEqual(execute(self.command(), "convert", "-f", "own-r", "-t", "UTF-8", text,
                                     encoding="utf-8"), "аб")
            self.assertEqual(self.convert_by_command(encoding="utf-8"), "日本")
        finally:
            added.unlink()

    def test_opens_the_packed_file_and_the_directory_and_the_text(self):
        if is_windows() or shutil.which("strace") is None:
            self.skipTest("needs strace")
        text = self.directory / "text.sjis"
        text.write_bytes(b"\x93\xFA\x96\x7B")
        log = self.directory / "opened"
        execute("strace", "-o", log, "-e", "trace=open,openat", self.command(), "convert", "-f",
                "sjis", "-t", "UTF-8", text)
        opened = re.findall(r'"([^"\n]*)".*\) = \d', log.read_text())
        own = [path for path in opened
               if path.startswith(str(self.directory)) and not path.endswith(".so")]
        self.assertEqual(own, [str(self.charset_directory() / "charsets.pack"),
                               str(self.charset_directory()) + "/", str(text)])


class Command(Installed):
    def test_converts_without_any_setting(self):
        self.assertEqual(self.convert_by_command(encoding="utf-8"), "日本")

    def test_takes_the_directory_of_KSV_CHARSETS(self):
        empty = self.directory / "empty"
        empty.mkdir()
        with self.assertRaisesRegex(AssertionError, "holds no charset rule file"):
            self.convert_by_command(env=without_settings(KSV_CHARSETS=str(empty)))

    def test_converts_for_users_who_may_not_write_to_the_installation(self):
        if is_windows() or os.name != "posix":
            self.skipTest("another system asks for its users otherwise")
        def state():
            return {str(path): path.lstat().st_mtime_ns for path in self.prefix.rglob("*")}
        for path in self.prefix.rglob("*"):
            if not path.is_symlink():
                path.chmod(path.stat().st_mode & ~0o222)
        before = state()
        options = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
        self.assertEqual(self.convert_by_command(**options), "日本")
        execute(self.command(), "tables", **options)
        self.assertEqual(state(), before)


class FindPackage(Installed):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.built = cls.directory / "consumer"
        cls.configure(cls.built)
        run(ARGUMENTS.cmake, "--build", cls.built)

    @classmethod
    def configure(cls, directory, *options):
        # Toolchain files let packages be looked for among the target's own only.
        toolchain = [f"-DCMAKE_TOOLCHAIN_FILE={ARGUMENTS.toolchain}",
                     f"-Dksv_DIR={cls.libraries}/cmake/ksv"] if ARGUMENTS.toolchain else [
            f"-DCMAKE_C_COMPILER={cached('CMAKE_C_COMPILER')}",
            f"-DCMAKE_CXX_COMPILER={cached('CMAKE_CXX_COMPILER')}"]
        run(ARGUMENTS.cmake, "-S", HERE / "consumer", "-B", directory, "-G", "Ninja", *toolchain,
            "-DKSV_BY=find_package",
            f"-DKSV_VERSION={cached('CMAKE_PROJECT_VERSION')}", f"-Dksv_ROOT={cls.prefix}", "-DCMAKE_BUILD_TYPE=Release",
            *options)

    def program(self, name):
        return self.built / f"{name}{self.ending}"

    def test_gives_programs_the_shared_library(self):
        for prefix in ("", "kit_"):
            for language, name in (("c", "C"), ("cpp", "C++")):
                program = self.program(f"{prefix}{language}_shared")
                self.assertEqual(self.run_beside_library(program), f"{NIHON} in {name}\n")

    def test_gives_programs_the_archive_which_finds_its_charsets_from_beside(self):
        for prefix in ("", "kit_"):
            for language, name in (("c", "C"), ("cpp", "C++")):
                program = self.program(f"{prefix}{language}_static")
                self.assertEqual(self.run_beside_library(program), f"{NIHON} in {name}\n")

    def test_tells_where_the_charsets_are_for_programs_that_lie_elsewhere(self):
        charsets = (self.built / "charset_directory.txt").read_text()
        self.assertEqual(Path(charsets), self.prefix / "share" / "ksv_comm" / "charset")
        for program in ("c_static", "cpp_static", "kit_c_static", "kit_cpp_static"):
            with self.subTest(program):
                self.assertIn(NIHON, execute(self.program(program),
                                             env=without_settings(KSV_CHARSETS=charsets)))

    def test_gives_the_archive_to_a_project_that_knows_no_cpp(self):
        directory = self.directory / "consumer_in_c"
        self.configure(directory, "-DONLY_IN_C=ON")
        run(ARGUMENTS.cmake, "--build", directory)
        for name in ("c_static", "kit_c_static"):
            program = directory / f"{name}{self.ending}"
            self.assertEqual(self.run_beside_library(program), f"{NIHON} in C\n")

    def test_finds_no_other_major_version_and_no_unknown_component(self):
        for wanted, answer in (("99", 0), ("COMPONENTS wood", 0), ("COMPONENTS static", 1)):
            with self.subTest(wanted):
                script = self.directory / "find"
                script.mkdir(exist_ok=True)
                (script / "CMakeLists.txt").write_text(
                    "cmake_minimum_required(VERSION 3.22)\nproject(find LANGUAGES C)\n"
                    f"find_package(ksv {wanted} QUIET)\nmessage(STATUS \"found ${{ksv_FOUND}}\")\n")
                said = run(ARGUMENTS.cmake, "-S", script, "-B", script / "build", "-G", "Ninja",
                           f"-Dksv_ROOT={self.prefix}")
                self.assertRegex(said, f"found {answer}")


class PkgConfig(Installed):
    SOURCES = {"ksv_comm": "convert.c", "ksv": "kit.c"}

    def pkg_config(self, package, *options):
        environment = {**os.environ, "PKG_CONFIG_LIBDIR": str(self.libraries / "pkgconfig")}
        return run("pkg-config", *options, package, env=environment).strip()

    def build(self, package, name, *options):
        program = self.directory / f"{package}_{name}{self.ending}"
        run(cached("CMAKE_C_COMPILER") or self.c_compiler(),
            HERE / "consumer" / self.SOURCES[package], "-o", program, *options)
        return program

    @staticmethod
    def c_compiler():
        found = re.search(r"CMAKE_C_COMPILER (\S+)\)", ARGUMENTS.toolchain.read_text())
        return found.group(1)

    def test_gives_a_program_in_c_the_shared_library(self):
        for package in self.SOURCES:
            options = shlex.split(self.pkg_config(package, "--cflags", "--libs"))
            if not is_windows():
                options.append(f"-Wl,-rpath,{self.libraries}")
            program = self.build(package, "shared", *options)
            self.assertEqual(self.run_beside_library(program), f"{NIHON} in C\n")

    def test_gives_a_program_in_c_all_that_the_archive_needs(self):
        for package in self.SOURCES:
            options = shlex.split(self.pkg_config(package, "--static", "--cflags", "--libs"))
            program = self.build(package, "static", "-static", *options)
            self.assertEqual(self.run_beside_library(program), f"{NIHON} in C\n")

    def test_tells_version_and_place_of_the_charsets(self):
        self.assertRegex(self.pkg_config("ksv", "--modversion"), r"^\d+\.\d+\.\d+$")
        charsets = Path(self.pkg_config("ksv_comm", "--variable=charsetdir"))
        self.assertTrue((charsets / "utf-8.xml").is_file(), charsets)


class SharedLibrary(Installed):
    def test_has_its_interface_and_its_release_in_its_name(self):
        if is_windows():
            self.skipTest("libraries have one name there")
        for name in ("libksv", "libksv_comm"):
            link = self.libraries / f"{name}.so"
            soname = re.search(r"\(SONAME\).*\[(.*)\]", run("readelf", "-d", link)).group(1)
            self.assertRegex(soname, rf"^{name}\.so\.\d+$")
            real = self.libraries / f"{soname}.{cached('CMAKE_PROJECT_VERSION')}"
            self.assertTrue(real.is_file() and not real.is_symlink())
            self.assertEqual(link.resolve(), real)
            self.assertEqual((self.libraries / soname).resolve(), real)

    def test_and_the_command_search_no_directory_that_others_name(self):
        if is_windows():
            self.skipTest("programs hold no search path there")
        for file in (self.libraries / "libksv_comm.so", self.command()):
            self.assertNotRegex(run("readelf", "-d", file), "RPATH|RUNPATH")
        # It finds the library that it stands on beside itself.
        path = re.search(r"RUNPATH\).*\[(.*)\]", run("readelf", "-d", self.libraries / "libksv.so"))
        self.assertEqual(path.group(1), "$ORIGIN")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
