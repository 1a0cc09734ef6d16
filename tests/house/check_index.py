#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The index of the guides, README.md, links to each of the other pages once, with a line about it: check_index.py FOLDER"""
from __future__ import annotations

import pathlib
import re
from collections.abc import Iterator

from folder_check import main

ENTRY = re.compile(r'^- \[[^\]]+\]\(([\w.-]+\.md)\): \S', re.MULTILINE)


def problems(folder: pathlib.Path) -> Iterator[str]:
    """What is wrong, a line each."""
    entries = ENTRY.findall((folder / 'README.md').read_text(encoding='utf-8'))
    pages = {page.name for page in folder.glob('*.md')} - {'README.md'}
    yield from (f'{page} is not in the index' for page in sorted(pages - set(entries)))
    yield from (f'{page} is in the index more than once' for page in sorted({e for e in entries if entries.count(e) > 1}))
    if not pages:
        yield 'there are no pages'


if __name__ == '__main__':
    main(problems, 'every page is in the index')
