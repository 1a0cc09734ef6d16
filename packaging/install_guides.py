#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Copies guides for the package: their links to headers lead to the reference manual beside them.
install_guides.py OUTPUT FILE..., the files by their names in the repository"""
from __future__ import annotations

import os
import pathlib
import re
import sys

HEADER_LINK = re.compile(r'\]\((?:\.\./)?src/([\w/.]+)\)')


def manual_page(guide: pathlib.Path, header: str) -> str:
    """The reference manual's page of a header, from where the guide is."""
    name = 'index' if header == 'gwq.h' else pathlib.Path(header).name.replace('_', '__').replace('.', '_8')
    return os.path.relpath(f'manual/{name}.html', guide.parent)


def main(output: str, *guides: str) -> None:
    for guide in map(pathlib.Path, guides):
        text = HEADER_LINK.sub(lambda m: f']({manual_page(guide, m[1])})', guide.read_text(encoding='utf-8'))
        copy = pathlib.Path(output) / guide
        copy.parent.mkdir(parents=True, exist_ok=True)
        copy.write_text(text, encoding='utf-8')


main(*sys.argv[1:])
