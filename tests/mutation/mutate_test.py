#!/usr/bin/env python3
"""scripts/mutate: which mutants it finds in a text, and what becomes of those of a made-up
room.

    mutate_test.py SCRIPT
"""
import os
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
SCRIPT = Path(sys.argv.pop(1)).resolve()
sys.path.insert(0, str(SCRIPT.parent))
from mutation.mutants import mutants_of
from mutation.trial import LIMITS, run_limited

MADE_UP = Path(__file__).resolve().parent / "made_up"


def changes(text):
    return [mutant.change for mutant in mutants_of(text)]


def body_changes(statements):
    return changes("void f() {\n" + statements + "\n}\n")


class Mutants(unittest.TestCase):
    def test_of_comments_strings_and_directives_are_none(self):
        text = """#include <a1>
#define ONE 1 \\
  + 2
// a + 1 == true
/* 2
 * 3 */
const char* a = "1 + 1" u8R"x(1 < 2)" ")x";
char b = '1', c = '\\'';
  # if 1 < 2
"""
        self.assertEqual(changes(text), [])

    def test_of_operators_are_those_between_blanks(self):
        self.assertEqual(changes("auto x = a < b;"), ["< -> <="])
        self.assertEqual(changes("std::vector<int> x = f<A>(p->q, *r, &s, -t);"), [])
        self.assertEqual(changes("const A* p; B& q; C&& r; auto x = a * b & c;"),
                         ["* -> /", "& -> |"])
        self.assertEqual(changes("x <<= a % b;"), ["<<= -> >>=", "% -> *"])
        self.assertEqual(changes("x = i++ && !j;"), ["++ -> --", "&& -> ||", "! removed before j"])

    def test_of_numbers_are_one_more_and_one_less(self):
        self.assertEqual(changes("x = 0x1F;"), ["0x1F -> 0x1e", "0x1F -> 0x20"])
        self.assertEqual(changes("x = 0u;"), ["0u -> 1u"])
        self.assertEqual(changes("x = 1'000;"), ["1'000 -> 1001", "1'000 -> 999"])
        self.assertEqual(changes("x = 010;"), ["010 -> 011", "010 -> 07"])
        self.assertEqual(changes("x = 1.5 + 2e3 + y1;"), ["+ -> -", "+ -> -"])

    def test_of_conditions_are_negations(self):
        self.assertEqual(body_changes("if (a) b();"), ["a -> !(a)", "removed: b();"])
        self.assertEqual(body_changes("if (int c = d(); c) {}"), ["c -> !(c)"])
        self.assertEqual(body_changes("while (f(a, b)) {}"), ["f(a, b) -> !(f(a, b))"])

    def test_of_statements_are_calls_assignments_and_leaving(self):
        self.assertEqual(body_changes("a.b(c)->d();"), ["removed: a.b(c)->d();"])
        self.assertEqual(body_changes("*a++ = b;"), ["removed: *a++ = b;", "++ -> --"])
        self.assertEqual(body_changes("std::get<A>(b).c += d;"),
                         ["removed: std::get<A>(b).c += d;", "+= -> -="])
        self.assertEqual(body_changes("for (;;) { break; continue; }"),
                         ["removed: break;", "removed: continue;"])
        self.assertEqual(body_changes("switch (a) { case B: c(); return; default: d(); }"),
                         ["removed: c();", "removed: return;", "removed: d();"])
        self.assertEqual(body_changes("auto g = [&](A a) { h(a); };"), ["removed: h(a);"])

    def test_of_declarations_are_none(self):
        self.assertEqual(body_changes("A b; A c(d); const A e = f; std::pair<A, B> g(h); A* i = j;"),
                         [])
        self.assertEqual(changes("class A { A(B); A(const A&) = delete; void c(); };"), [])
        self.assertEqual(changes("namespace a { void f(); enum B { kC, kD }; }"), [])

    def test_replace_just_what_they_name(self):
        text = "int f(int a) { return a < 2; }"
        self.assertIn("int f(int a) { return a <= 2; }",
                      [mutant.applied_to(text) for mutant in mutants_of(text)])


class Rooms(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.builds = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.builds.cleanup)

    def run_script(self, *arguments, **environment):
        done = subprocess.run(
            [sys.executable, SCRIPT, "room", "--root", MADE_UP, "--rooms", MADE_UP / "rooms.json",
             "--build", self.builds.name, *arguments],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False,
            env=os.environ | environment)
        return done.returncode, done.stdout.splitlines()

    def mutate(self, *arguments):
        status, lines = self.run_script(*arguments)
        self.assertEqual(status, 0, lines)
        return lines

    def test_tell_the_mutants_that_live_and_count_those_that_die(self):
        self.assertEqual(self.mutate("--line", "3-6"), [
            "room/price.cpp:6: > -> >=",
            "room/price.cpp:6: 10 -> 11",
            "10 mutants, 8 killed, 0 timed out, 2 survived, 0 did not compile "
            "(1 more are the same program as another or as without)"])

    def test_are_begun_until_the_time_is_over(self):
        self.assertEqual(self.mutate("--minutes", "0"), [
            "0 mutants, 0 killed, 0 timed out, 0 survived, 0 did not compile "
            "(0 more are the same program as another or as without)"])

    def test_have_headers_that_are_compiled_into_their_sources(self):
        self.assertEqual(self.mutate("--file", "room/price.h"), [
            "2 mutants, 2 killed, 0 timed out, 0 survived, 0 did not compile "
            "(0 more are the same program as another or as without)"])

    def test_are_not_tried_while_their_tests_fail(self):
        status, lines = self.run_script(PRICES_ARE_WRONG="1")
        self.assertEqual(status, 1)
        self.assertEqual(lines, ["mutate: room_tests fails without any mutant (status 1)"])

    def test_have_a_sample_that_its_seed_says(self):
        self.assertEqual(self.mutate("--list", "--sample", "2", "--seed", "5"),
                         self.mutate("--list", "--sample", "2", "--seed", "5"))
        self.assertEqual(len(self.mutate("--list", "--sample", "2")), 2)


class Programs(unittest.TestCase):
    def run_shell(self, command, seconds):
        return run_limited(["sh", "-c", command], LIMITS, seconds, "/", os.environ)

    def test_have_a_status_unless_they_take_too_long(self):
        self.assertEqual(self.run_shell("exit 3", 10), 3)
        self.assertIsNone(self.run_shell("sleep 60", 0.1))

    def test_leave_nothing_running(self):
        with tempfile.TemporaryDirectory() as directory:
            begun = time.monotonic()
            self.assertIsNone(self.run_shell(f"(sleep 0.3; touch {directory}/late) & sleep 60", 0.1))
            self.assertLess(time.monotonic() - begun, 10)
            time.sleep(0.5)
            self.assertEqual(os.listdir(directory), [])


if __name__ == "__main__":
    unittest.main()
