#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks every source file that git knows: check_sources.py ROOT

Each names its licence in one of its first three lines. No comment of C or C++ is wider than clang-format's limit, which does not
apply to comments; drawings may be.
"""
from __future__ import annotations

import pathlib
import re
import subprocess
import sys
from collections.abc import Iterator

LICENCE = re.compile(r'SPDX-License-Identifier: MIT(?: \*/| -->)?$')
SOURCES = {'.c', '.h', '.cpp', '.hpp', '.py', '.sh', '.js', '.java', '.cmake'}
WIDTH = 110
WIDE = {'.c', '.h', '.cpp', '.hpp'}
COMMENT = re.compile(r'\s*(//|/?\*)')
DRAWING = re.compile(r'\S {2,}\S')


def problems(path: pathlib.Path, text: str) -> Iterator[str]:
    """What is wrong with one file, a line each."""
    lines = text.split('\n')
    if not any(LICENCE.search(line) for line in lines[:3]):
        yield f'{path}: no "SPDX-License-Identifier: MIT" in its first three lines'
    if path.suffix in WIDE:
        for number, line in enumerate(lines, 1):
            if len(line) > WIDTH and COMMENT.match(line) and not DRAWING.search(line):
                yield f'{path}:{number}: {len(line)} columns'


def is_source(root: pathlib.Path, path: pathlib.Path) -> bool:
    if path.suffix in SOURCES or path.name == 'CMakeLists.txt':
        return True
    return path.suffix == '' and (root / path).open('rb').read(2) == b'#!'


def main(root: pathlib.Path) -> int:
    names = subprocess.run(['git', '-C', root, 'ls-files', '-z'], check=True, capture_output=True, text=True).stdout
    paths = [p for p in map(pathlib.Path, names.rstrip('\0').split('\0')) if is_source(root, p)]
    found = [p for path in paths for p in problems(path, (root / path).read_text(encoding='utf-8'))]
    print('\n'.join(found) or f'{len(paths)} sources are in order')
    return 1 if found or len(paths) < 100 else 0


if __name__ == '__main__':
    sys.exit(main(pathlib.Path(sys.argv[1])))
