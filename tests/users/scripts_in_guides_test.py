# SPDX-License-Identifier: MIT
"""The customers, faults and scenarios that guides show are taken by gwq-terminal: scripts_in_guides_test.py TERMINAL GUIDE..."""
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

TERMINAL = sys.argv.pop(1)
GUIDES, sys.argv[1:] = sys.argv[1:], []
BLOCK = re.compile(r'^```json\n(.*?)^```', re.MULTILINE | re.DOTALL)
COMMENT = re.compile(r'^\s*//.*$|(?<=[\[\]{},"\d\w])\s+//.*$', re.MULTILINE)
CUSTOMER = {'pin_entries', 'number_entries', 'screens'}


def scripts():
    for guide in GUIDES:
        for text in BLOCK.findall(pathlib.Path(guide).read_text(encoding='utf-8')):
            yield pathlib.Path(guide).name, text, set(json.loads(COMMENT.sub('', text)))


def arguments(members, file):
    """How gwq-terminal gets to read it."""
    if 'expect' in members:
        return ['check', file, '--', 'true']
    return ['exec', '--customer' if members <= CUSTOMER else '--faults', file, '--', 'true']


class Scripts(unittest.TestCase):
    def run_with(self, text, members):
        with tempfile.TemporaryDirectory() as directory:
            file = pathlib.Path(directory) / 'script.json'
            file.write_text(text, encoding='utf-8')
            return subprocess.run([TERMINAL, *arguments(members, file)], capture_output=True, text=True)

    def test_of_the_guides_are_taken(self):
        found = list(scripts())
        self.assertEqual({guide for guide, _, _ in found}, {pathlib.Path(guide).name for guide in GUIDES})
        for guide, text, members in found:
            with self.subTest(guide, members=members):
                done = self.run_with(text, members)
                if 'expect' in members:  # "true" does not sign
                    self.assertIn('0 passed, 1 failed', done.stdout)
                else:
                    self.assertEqual((done.returncode, done.stderr), (0, ''))

    def test_with_an_error_are_not(self):
        for guide, text, members in scripts():
            with self.subTest(guide, members=members):
                done = self.run_with(text.replace('{', '{"no such member": 1,', 1), members)
                self.assertIn('no such member', done.stderr)
                self.assertNotEqual(done.returncode, 0)


if __name__ == '__main__':
    unittest.main()
