#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The check of hardening finds each weakness in a library made to have it; CC names the compiler."""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

from check_hardening import Elf, elf_files, weaknesses

COMPILER = os.environ.get('CC', 'cc')
CODE = '''
#include <string.h>
void Fill(char* bytes, int size);
int Use(const char* text, int size) {
  char room[%d];
  strcpy(room, text);
  Fill(room, size);
  return room[size] == 0;
}
''' + '\n'.join(f'int Land{n}(void) {{ return {n}; }}' for n in range(120))
SHARED = ['-shared', '-fPIC']
IS_ARM = 'aarch64' in subprocess.run([COMPILER, '-dumpmachine'], check=True, capture_output=True, text=True).stdout
GOOD = ['-O2', '-U_FORTIFY_SOURCE', '-D_FORTIFY_SOURCE=3', '-fstack-protector-strong', '-fstack-clash-protection',
        '-mbranch-protection=standard' if IS_ARM else '-fcf-protection=full', '-Wl,-z,relro,-z,now,-z,noexecstack']


class Hardening(unittest.TestCase):
    def setUp(self):
        self._directory = tempfile.TemporaryDirectory()
        self.addCleanup(self._directory.cleanup)
        self.directory = pathlib.Path(self._directory.name)

    def found(self, *options, link=(), frame=200_000, code=CODE):
        source, library = self.directory / 'weak.c', self.directory / 'weak.so'
        source.write_text(code % frame, encoding='utf-8')
        subprocess.run([COMPILER, *GOOD, *(link or SHARED), *options, source, '-o', library], check=True)
        path, = elf_files(self.directory)
        return list(weaknesses(Elf(path), True))

    def test_nothing_is_wrong_with_what_has_everything(self):
        self.assertEqual(self.found(), [])
        self.assertEqual(self.found(frame=9_000), [])

    def test_an_executable_stack(self):
        self.assertEqual(self.found('-Wl,-z,execstack'), ['its stack may be executable'])

    def test_tables_that_stay_writable(self):
        self.assertEqual(self.found('-Wl,-z,norelro'), ['its tables stay writable (no RELRO)'])

    def test_late_binding(self):
        self.assertEqual(self.found('-Wl,-z,lazy'), ['it binds lazily'])

    def test_a_directory_to_search(self):
        self.assertEqual(self.found('-Wl,-rpath,/nowhere'), ['it searches a directory of its own for libraries'])

    def test_no_guard_on_the_stack(self):
        self.assertEqual(self.found('-fno-stack-protector'), ['its stack has no guard'])

    def test_unchecked_copies(self):
        self.assertEqual(self.found('-U_FORTIFY_SOURCE'), ['copies are not checked against their buffers'])

    def test_no_landing_marks(self):
        self.assertEqual(self.found('-mbranch-protection=none' if IS_ARM else '-fcf-protection=none'),
                         ['jumps may land anywhere'])

    def test_a_frame_that_jumps_over_the_guard(self):
        clash = ['a large frame may jump over the guard page of a stack']
        self.assertEqual(self.found('-fno-stack-clash-protection'), clash)
        self.assertEqual(self.found('-fno-stack-clash-protection', frame=70_000), clash)
        self.assertEqual(self.found('-fno-stack-clash-protection', frame=2_000), [])

    def test_a_program_at_a_fixed_address(self):
        main = '\nvoid Fill(char* bytes, int size) { bytes[size] = 0; }\nint main(int argc, char** argv) { return Use(argv[0], argc); }'
        self.assertEqual(self.found(link=['-fPIE', '-pie'], code=CODE + main), [])
        self.assertEqual(self.found(link=['-fno-pie', '-no-pie'], code=CODE + main),
                         ['its address is fixed', 'it is no position-independent program'])


if __name__ == '__main__':
    sys.exit(unittest.main())
