#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The check of rooms finds what is missing and what is gone, and nothing else."""
from __future__ import annotations

import pathlib
import tempfile
import unittest

from check_rooms import problems

TABLE = '# Rooms\n\n| Room | Holds |\n|---|---|\n'


class Rooms(unittest.TestCase):
    def setUp(self) -> None:
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.folder = pathlib.Path(directory.name)

    def found(self, table: str, *files: str) -> list[str]:
        (self.folder / 'README.md').write_text(table)
        for name in files:
            (self.folder / name).parent.mkdir(parents=True, exist_ok=True)
            (self.folder / name).write_text('')
        return list(problems(self.folder))

    def test_all_in_order(self) -> None:
        self.assertEqual(self.found(TABLE + '| `device/` | the unit |\n| `web/` | the page |\n', 'device/a.h', 'web/page/b.js', 'main.cpp'), [])

    def test_a_room_that_is_not_described(self) -> None:
        self.assertEqual(self.found(TABLE + '| `device/` | the unit |\n| `usb/` |  |\n', 'device/a.h', 'usb/b.h'), ['usb/ is not described'])

    def test_a_room_that_is_gone(self) -> None:
        (self.folder / 'web').mkdir()  # an empty folder is none to git
        self.assertEqual(self.found(TABLE + '| `device/` | the unit |\n| `web/` | the page |\n', 'device/a.h'),
                         ['web/ is described and not there'])

    def test_no_table(self) -> None:
        self.assertEqual(self.found('# Rooms\n'), ['README.md has no table of rooms'])


if __name__ == '__main__':
    unittest.main()
