#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks that docs/oddities.md lists each source file with a "Contract:" tag, and no other: check_oddities.py ROOT"""
from __future__ import annotations

import pathlib
import re
import sys


def listed(page: str) -> set[str]:
    """The files of a page's tables, as "room/name"."""
    found: set[str] = set()
    room = None
    for line in page.split('\n'):
        if line.startswith('## '):
            room = line[3:]
        elif line.startswith('| `'):
            found |= {f'{room}/{name}' for name in re.findall(r'`([^`]+)`', line.split(' | ')[0])}
    return found


def main(root: str) -> int:
    source = pathlib.Path(root) / 'src'
    tagged = {str(p.relative_to(source)) for p in source.glob('*/**/*') if p.suffix in ('.h', '.cpp')
              and 'Contract:' in p.read_text(encoding='utf-8')}
    page = listed((pathlib.Path(root) / 'docs' / 'oddities.md').read_text(encoding='utf-8'))
    found = [f'{name}: has a tag, but no line in docs/oddities.md' for name in sorted(tagged - page)]
    found += [f'docs/oddities.md: {name} has no tag' for name in sorted(page - tagged)]
    print('\n'.join(found) or f'{len(tagged)} files with oddities are listed')
    return 1 if found or not tagged else 0


if __name__ == '__main__':
    sys.exit(main(sys.argv[1]))
