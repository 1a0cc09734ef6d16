#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The check of the index finds a page that is not in it, and one that is in it twice."""
from __future__ import annotations

import pathlib
import tempfile
import unittest

from check_index import problems


class Index(unittest.TestCase):
    def setUp(self) -> None:
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.folder = pathlib.Path(directory.name)
        (self.folder / 'log.md').write_text('# The log\n')

    def found(self, index: str) -> list[str]:
        (self.folder / 'README.md').write_text(index)
        return list(problems(self.folder))

    def test_all_in_order(self) -> None:
        self.assertEqual(self.found('- [the log](log.md): reading it\n- [work](../CONTRIBUTING.md): more\n'), [])

    def test_a_page_that_is_missing_or_has_no_line(self) -> None:
        for index in ('# Guides\n', '- [log.md](log.md)\n', 'See [log.md](log.md): there.\n'):
            self.assertEqual(self.found(index), ['log.md is not in the index'])

    def test_a_page_that_is_in_it_twice(self) -> None:
        self.assertEqual(self.found(2 * '- [log.md](log.md): reading it\n'), ['log.md is in the index more than once'])

    def test_no_pages(self) -> None:
        (self.folder / 'log.md').unlink()
        self.assertEqual(self.found('# Guides\n'), ['there are no pages'])


if __name__ == '__main__':
    unittest.main()
