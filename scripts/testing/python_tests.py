#!/usr/bin/env python3
"""Runs the tests of the Python package that is installed where this runs, and mypy, and counts them. The last line is
'N passed, M failed'; what was skipped is told, and is neither. What else it is given is handed to pytest.
"""
import importlib.metadata
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml
from pathlib import Path

PACKAGE = Path(__file__).resolve().parents[2] / "python"


def has_mypy():
    """Whether it is the one that is asked for: each release finds something else."""
    wanted = re.search(r"^mypy==(.+)$", (PACKAGE / "requirements-test.txt").read_text(), re.MULTILINE)[1]
    try:
        return importlib.metadata.version("mypy") == wanted
    except importlib.metadata.PackageNotFoundError:
        return False


def typed():
    """Passed and failed. mypy reads the sources: the installed package has the same."""
    if not has_mypy():
        print("skipped: mypy, which is another release here")
        return 0, 0
    return (1, 0) if is_typed() else (0, 1)


def is_typed():
    return subprocess.run([sys.executable, "-m", "mypy", "--cache-dir", "/dev/null"], cwd=PACKAGE,
                          check=False).returncode == 0


def run_tests(arguments, report):
    command = [sys.executable, "-B", "-m", "pytest", "-q", "-p", "no:cacheprovider", "--tb=short",
               f"--junitxml={report}", *arguments]
    return subprocess.run(command, cwd=PACKAGE / "tests", check=False).returncode


def counts(report):
    """Passed and failed; what could not even begin has failed."""
    (suite,) = xml.parse(report).getroot().iter("testsuite")
    number = {name: int(suite.get(name)) for name in ("tests", "failures", "errors", "skipped")}
    failed = number["failures"] + number["errors"]
    return number["tests"] - failed - number["skipped"], failed


def main():
    passed, failed = typed()
    with tempfile.TemporaryDirectory() as folder:
        report = Path(folder) / "report.xml"
        status = run_tests(sys.argv[1:], report)
        if report.exists():
            tests_passed, tests_failed = counts(report)
            passed, failed = passed + tests_passed, failed + tests_failed
        if status != 0 and failed == 0:
            print(f"pytest ended with status {status}")
            failed += 1
    print(f"{passed} passed, {failed} failed")
    return 0 if failed == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
