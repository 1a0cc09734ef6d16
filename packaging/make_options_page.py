#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the guides' page of gwq-terminal's options from what its --help says: make_options_page.py PROGRAM PAGE [--check]

With --check it writes nothing and fails if the page is another one."""
from __future__ import annotations

import pathlib
import re
import sys
import textwrap

from command_help import blocks, entries, help_of, parts, usage_and_purpose

HEAD = '''# Options of gwq-terminal

Written by `packaging/make_options_page.py` from `gwq-terminal --help`, as is the manual page `gwq-terminal(1)`. How to use the
program: [virtual-terminal.md](virtual-terminal.md).
'''
KINDS = {'Positionals': 'Argument', 'Options': 'Option'}
OF_THE_BUILD = re.compile(r'=[0-9a-f]{4}:[0-9a-f]{4}\b')  # the default identity


def cell(text: str) -> str:
    return text.replace('|', '\\|').replace('<', '&lt;')


def table(kind: str, found: list[list[str]]) -> str:
    rows = [f'| `{OF_THE_BUILD.sub("", what).replace("|", chr(92) + "|")}` | {cell(meaning)} |' for what, meaning in found
            if not what.startswith('-h,')]
    return f'| {kind} | |\n|---|---|\n' + '\n'.join(rows) + '\n' if rows else ''


def prose(block: str) -> str:
    if block.startswith('  '):
        return f'```sh\n{textwrap.dedent(block)}\n```\n'
    return re.sub(r'(?<![\w/])docs/(\w+)\.md', r'[\1.md](\1.md)', block) + '\n'


def subcommand(program: str, name: str) -> str:
    head, lists, foot = parts(help_of(program, name))
    usage, purpose = usage_and_purpose(head)
    tables = [table(kind, entries(lists[title])) for title, kind in KINDS.items() if title in lists]
    sections = [f'## {name}\n', f'`gwq-terminal {usage}`: {purpose}.\n', *tables, *map(prose, blocks(foot))]
    return '\n'.join(part for part in sections if part)


def page(program: str) -> str:
    _, lists, _ = parts(help_of(program))
    return '\n'.join([HEAD, *(subcommand(program, name) for name, _ in entries(lists['Subcommands']))])


def main(program: str, output: str, *check: str) -> None:
    path = pathlib.Path(output)
    if check != ('--check',):
        path.write_text(page(program), encoding='utf-8')
    elif path.read_text(encoding='utf-8') != page(program):
        sys.exit(f'{path.name} is not what --help says; run packaging/make_options_page.py {program} {output}')


if __name__ == '__main__':
    main(*sys.argv[1:])
