#!/usr/bin/env python3
"""What pages show as typed, in blocks of console, gives what they show.

    commands_test.py COMMAND CHARSET_DIRECTORY PROJECT PAGE...
"""

from __future__ import annotations

import sys
import tempfile
import unittest
from pathlib import Path

from page_blocks import blocks_of
from typed_commands import Terminal, commands_of

COMMAND, CHARSETS, PROJECT, *PAGES = (Path(argument).resolve() for argument in sys.argv[1:])


class CommandsTest(unittest.TestCase):
    """Each page in a directory of its own, from its first command to its last."""

    def test_each_gives_what_is_shown(self) -> None:
        self.assertGreater(len(PAGES), 0)
        for page in PAGES:
            with tempfile.TemporaryDirectory() as directory:
                terminal = Terminal(COMMAND, CHARSETS, PROJECT, directory)
                self.assertGreater(self._type_all(page, terminal), 0, page.name)

    def _type_all(self, page: Path, terminal: Terminal) -> int:
        commands = [command for block in blocks_of(page) if block.kind == "console"
                    for command in commands_of(block.text)]
        for typed, shown in commands:
            with self.subTest(page=page.name, typed=typed):
                self.assertEqual(terminal.type(typed).stdout, shown)
        return len(commands)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
