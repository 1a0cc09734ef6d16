#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks how every program and library below a directory is hardened: check_hardening.py [--without-fortify] DIRECTORY

READELF and OBJDUMP in the environment name the tools for another machine's files.
"""
import os
import pathlib
import re
import subprocess
import sys

MIN_LANDINGS = 100
# What a function may take from the stack at once without touching it: the compiler's guard.
MAX_UNPROBED = {'X86-64': 4096, 'AArch64': 65536}
LANDING = re.compile(r'\s(endbr64|paciasp|bti\s+c)\b')
X86_ALLOCATION = re.compile(r'\ssub\s+\$0x([0-9a-f]+),%rsp')
ARM_ALLOCATION = re.compile(r'\ssub\s+sp, sp, #0x([0-9a-f]+)(, lsl #12)?')
# By a register that was just set.
ARM_BY_REGISTER = re.compile(r'\smov\s+(x\d+), #0x([0-9a-f]+).*\n(?:.*\n){0,4}?(?:.*\smovk\s+\1, #0x([0-9a-f]+), lsl #16.*\n)?'
                             r'(?:.*\n){0,4}?.*\ssub\s+sp, sp, \1\b')


class Elf:
    def __init__(self, path):
        self.path = path
        self.header = self._run('READELF', '-Wh')
        self.segments = self._run('READELF', '-Wl')
        self.dynamic = self._run('READELF', '-Wd')
        self.symbols = self._run('READELF', '-W', '--dyn-syms')
        self.code = self._run('OBJDUMP', '-d', '--no-show-raw-insn', '--section=.text')

    def _run(self, tool, *options):
        return subprocess.run([os.environ.get(tool, tool.lower()), *options, self.path], check=True, capture_output=True,
                              text=True, env={**os.environ, 'LC_ALL': 'C'}).stdout

    @property
    def machine(self):
        name = re.search(r'Machine:.*?(X86-64|AArch64)', self.header)
        if not name:
            sys.exit(f'{self.path}: a machine that this check does not know')
        return name[1]

    def flags_of(self, segment):
        """The flags of each segment of that type, such as 'RW'."""
        return [''.join(m.split()) for m in re.findall(rf'^\s+{segment}(?:\s+0x\w+){{5}} ([R W E]{{3}})', self.segments, re.M)]

    def largest_unprobed_allocation(self):
        if self.machine == 'X86-64':
            # Sizes beyond 2 GiB are negative numbers, by which some compilers add.
            sizes = [int(m, 16) for m in X86_ALLOCATION.findall(self.code)]
            return max((s for s in sizes if s < 1 << 31), default=0)
        sizes = [int(size, 16) << (12 if shifted else 0) for size, shifted in ARM_ALLOCATION.findall(self.code)]
        sizes += [int(low, 16) + (int(high or '0', 16) << 16) for _, low, high in ARM_BY_REGISTER.findall(self.code)]
        return max(sizes, default=0)


def weaknesses(elf, with_fortify):
    is_program = bool(elf.flags_of('INTERP') or 'INTERP' in elf.segments)
    stack = elf.flags_of('GNU_STACK')
    if 'DYN (' not in elf.header:
        yield 'its address is fixed'
    if is_program and not re.search(r'FLAGS_1.*\bPIE\b', elf.dynamic):
        yield 'it is no position-independent program'
    if stack != ['RW']:
        yield 'its stack may be executable'
    if any('W' in flags and 'E' in flags for flags in elf.flags_of('LOAD')):
        yield 'a part of it is both writable and executable'
    if not elf.flags_of('GNU_RELRO'):
        yield 'its tables stay writable (no RELRO)'
    if not re.search(r'\(FLAGS\).*BIND_NOW|\(FLAGS_1\).*\bNOW\b', elf.dynamic):
        yield 'it binds lazily'
    if re.search(r'\((RPATH|RUNPATH)\)', elf.dynamic):
        yield 'it searches a directory of its own for libraries'
    if 'TEXTREL' in elf.dynamic:
        yield 'its code is relocated'
    if '__stack_chk_fail' not in elf.symbols:
        yield 'its stack has no guard'
    if with_fortify and not re.search(r'\b__\w+_chk\b', elf.symbols):
        yield 'copies are not checked against their buffers'
    # The mark of the whole file is lost by one object without it, such as the C library's start files: the code counts.
    if len(LANDING.findall(elf.code)) <= MIN_LANDINGS:
        yield 'jumps may land anywhere'
    if elf.largest_unprobed_allocation() > MAX_UNPROBED[elf.machine]:
        yield 'a large frame may jump over the guard page of a stack'


def elf_files(directory):
    for path in sorted(pathlib.Path(directory).rglob('*')):
        if path.is_file() and not path.is_symlink():
            with path.open('rb') as file:
                if file.read(4) == b'\x7fELF':
                    yield path


def main(arguments):
    with_fortify = '--without-fortify' not in arguments
    directory, = (a for a in arguments if not a.startswith('--'))
    files = list(elf_files(directory))
    found = [f'{path}: {weakness}' for path in files for weakness in weaknesses(Elf(path), with_fortify)]
    found += [f'{path}: it runs with more rights than its user has' for path in files if path.stat().st_mode & 0o6000]
    if not files:
        sys.exit(f'{directory}: no program and no library')
    if found:
        sys.exit('\n'.join(found))
    print('hardened:', *(path.relative_to(directory) for path in files))


if __name__ == '__main__':
    main(sys.argv[1:])
