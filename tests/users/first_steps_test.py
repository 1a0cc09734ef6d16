# SPDX-License-Identifier: MIT
"""What README and getting-started show a new user is what they get: first_steps_test.py ROOT LIBRARY TERMINAL WORK"""
import pathlib
import re
import subprocess
import sys
import unittest

ROOT, LIBRARY, TERMINAL, WORK = (pathlib.Path(argument) for argument in sys.argv[1:5])
del sys.argv[1:]


def blocks(document):
    """The blocks of code in a document: (language, code)."""
    return re.findall(r'^```(\w*)\n(.*?)^```', (ROOT / document).read_text(encoding='utf-8'), re.MULTILINE | re.DOTALL)


def run(name, code, *arguments):
    """Standard output of a program, with the library's directory as the documents write it."""
    (WORK / f'{name}.c').write_text(code)
    subprocess.run(['cc', f'-I{LIBRARY.parent.parent}/include', f'{name}.c', f'-L{LIBRARY.parent}', '-lgwq', '-o', name], cwd=WORK, check=True)
    done = subprocess.run([TERMINAL, 'exec', '--', f'./{name}', *arguments], cwd=WORK, check=True, capture_output=True,
                          text=True, env={'LD_LIBRARY_PATH': str(LIBRARY.parent), 'PATH': '/usr/bin:/bin'})
    return done.stdout


class FirstSteps(unittest.TestCase):
    def test_the_first_program_is_the_example_and_prints_what_is_shown(self):
        shown = blocks('README.md')
        program, = (code for language, code in shown if language == 'c')
        self.assertIn(program, (ROOT / 'examples/c/first_program.c').read_text())
        output, = (code for language, code in shown if not language)
        self.assertEqual(run('first', program).replace(str(LIBRARY.parent), '/.../lib'), output)

    def test_the_signing_program_prints_what_is_shown_by_relative_paths(self):
        shown = blocks('docs/getting-started.md')
        program = next(code for language, code in shown if language == 'c')
        output = next(code for language, code in shown if not language)
        (WORK / 'agreement.pdf').write_bytes((ROOT / 'examples/files/agreement.pdf').read_bytes())
        printed = run('sign', program, 'agreement.pdf', 'signature.png')
        self.assertEqual(printed.replace(str(LIBRARY.parent), '/.../build/release/lib'), output)
        self.assertEqual((WORK / 'signature.png').read_bytes()[1:4], b'PNG')


if __name__ == '__main__':
    unittest.main()
