"""The examples of the page about the package."""
import doctest
from pathlib import Path

import pytest

PAGE = Path(__file__).resolve().parents[2] / "docs" / "python.md"


@pytest.mark.skipif(not PAGE.exists(), reason="the pages are not in the archive of the package")
def test_examples_of_the_page_hold():
    failed, tried = doctest.testfile(str(PAGE), module_relative=False, encoding="utf-8")
    assert tried >= 9 and failed == 0
