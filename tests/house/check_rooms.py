#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The table of rooms in a folder's README.md names the folders that are there, and no others: check_rooms.py FOLDER"""
from __future__ import annotations

import pathlib
import re
from collections.abc import Iterator

from folder_check import main

ROW = re.compile(r'^\| `(\w+)/` \| (.*) \|$', re.MULTILINE)


def problems(folder: pathlib.Path) -> Iterator[str]:
    """What is wrong, a line each."""
    rows = ROW.findall((folder / 'README.md').read_text(encoding='utf-8'))
    described = {name for name, text in rows if text.strip()}
    rooms = {path.name for path in folder.iterdir() if path.is_dir() and any(p.is_file() for p in path.rglob('*'))}
    yield from (f'{name}/ is not described' for name in sorted(rooms - described))
    yield from (f'{name}/ is described and not there' for name in sorted(described - rooms))
    if not rows:
        yield 'README.md has no table of rooms'


if __name__ == '__main__':
    main(problems, 'every room is described')
