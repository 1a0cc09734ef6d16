#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The check finds what it is for."""
from __future__ import annotations

import pathlib
import unittest

import check_sources

LICENCE = '// SPDX-License-Identifier: MIT\n'


class CheckSources(unittest.TestCase):
    def problems(self, name: str, text: str) -> list[str]:
        return list(check_sources.problems(pathlib.Path(name), text))

    def test_a_file_in_order_has_no_problem(self) -> None:
        self.assertEqual(self.problems('a.cpp', LICENCE + '//' + 'x' * 108), [])
        self.assertEqual(self.problems('a.py', '#!/usr/bin/env python3\n' + LICENCE + 'x' * 200), [])

    def test_finds_a_missing_licence(self) -> None:
        self.assertEqual(len(self.problems('a.cpp', '#include <vector>\n')), 1)
        self.assertEqual(len(self.problems('a.h', '// SPDX-License-Identifier: MIT What it holds\n')), 1, 'text behind it')
        self.assertEqual(len(self.problems('a.py', '\n\n\n' + LICENCE)), 1, 'too far down')

    def test_finds_a_wide_line_and_counts_characters(self) -> None:
        self.assertEqual(self.problems('a.h', LICENCE + '//' + '字' * 109), ['a.h:2: 111 columns'])
        self.assertEqual(self.problems('a.h', LICENCE + ' * ' + '字' * 107), [])
        self.assertEqual(self.problems('a.h', LICENCE + ' * ' + '字' * 108), ['a.h:2: 111 columns'])

    def test_lets_drawings_and_code_be_wide(self) -> None:
        self.assertEqual(self.problems('a.h', LICENCE + '// field   ' + 'x' * 120), [])
        self.assertEqual(self.problems('a.h', LICENCE + 'x' * 120), [])


if __name__ == '__main__':
    unittest.main()
