#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The check of links finds what leads nowhere, and nothing else."""
import pathlib
import tempfile
import unittest

from check_links import broken


class Links(unittest.TestCase):
    def setUp(self):
        self._directory = tempfile.TemporaryDirectory()
        self.addCleanup(self._directory.cleanup)
        self.root = pathlib.Path(self._directory.name)
        self.write('guide.md', '# The first page\n')
        self.write('page.html', '<h1 id="top">Top</h1>')

    def write(self, name, text):
        (self.root / name).write_text(text, encoding='utf-8')
        return self.root / name

    def wrong(self, name, text):
        return [link for link, _ in broken(self.write(name, text), self.root)[1]]

    def test_what_is_there(self):
        text = '[a](guide.md) [b](guide.md#the-first-page) [c](https://gwq.example/) ![d](page.html) [e](/page.html#top)'
        self.assertEqual(self.wrong('a.md', text), [])
        self.assertEqual(self.wrong('a.html', '<a href="guide.md"></a><img src="page.html"><a href="#x" id="x"></a>'), [])

    def test_what_is_not_there(self):
        self.assertEqual(self.wrong('b.md', '[a](gone.md) [b](guide.md#other) [c](/gone)'), ['gone.md', 'guide.md#other', '/gone'])
        self.assertEqual(self.wrong('b.html', '<a href="gone.html"></a><img src="gone.png"><a href="page.html#low"></a>'),
                         ['gone.html', 'gone.png', 'page.html#low'])

    def test_code_is_no_link(self):
        self.assertEqual(self.wrong('c.md', '`array[1](2)`\n```c\nf[1](gone);\n```\n'), [])


if __name__ == '__main__':
    unittest.main()
