#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Adds to a public header's comments what Doxygen cannot know, for its INPUT_FILTER: header_filter.py HEADER

Each exported name gets its place in the manual; each function gets the remarks and warnings of its header's head comment
and its bytes on the wire; each status gets a link to what to do about it.
"""
from __future__ import annotations

import html
import json
import pathlib
import re
import sys
from typing import Any

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parents[1] / 'src'

COMMENT = re.compile(r'^ *(/\*\*\s.*?\*/)\n', re.DOTALL | re.MULTILINE)
FUNCTION = re.compile(r'(?:GWQ_API|static inline) [^;{(]*?(\w+)\(')
DATUM = re.compile(r'GWQ_API extern [^;(]*?(\w+)(?:\[\w*\])*;')
ENUMERATOR = re.compile(r'\s*(GWQ_\w+) = ')
EXPORTED = re.compile(r'^(?:GWQ_API|static inline) [^;{(]*?(\w+)\(', re.MULTILINE)
REMARK = re.compile(r'@(?:remark|warning) .*?(?=\n \*(?: @|\n|\Z)|\Z)', re.DOTALL)
CODE = re.compile(r'(`[^`]*`|@code.*?@endcode)', re.DOTALL)


Group = dict[str, Any]  # of groups.json


def statuses() -> dict[str, str]:
    """{'-14': 'GWQ_REFUSED', ...}"""
    codes = (SOURCE / 'status_codes.h').read_text(encoding='utf-8')
    listed = re.search(r'enum GwqStatus \{(.*?)\};', codes, re.DOTALL)
    assert listed, 'status_codes.h has no enum GwqStatus'
    return {value: name for name, value in re.findall(r'(GWQ_\w+) =\s+(-?\d+)', listed[1])}


def exported_names() -> set[str]:
    headers = re.findall(r'^  (\w+/\w+\.h|\w+\.h)$', (SOURCE / 'CMakeLists.txt').read_text(encoding='utf-8'), re.M)
    return {m[1] for h in headers for m in EXPORTED.finditer((SOURCE / h).read_text(encoding='utf-8'))}


def groups() -> list[Group]:
    listed: list[Group] = json.loads((HERE / 'groups.json').read_text(encoding='utf-8'))
    return listed


def group_of(name: str, header: str) -> str:
    by_name = [g['id'] for g in groups() if name in g.get('functions', [])]
    found: str = (by_name or [g['id'] for g in groups() if header in g['headers']])[0]
    return found


def wire() -> dict[str, list[list[str]]]:
    """{function: [[sent, answer, wait], ...]}"""
    table: dict[str, list[list[str]]] = {}
    for line in (HERE / 'wire.tsv').read_text(encoding='utf-8').splitlines():
        if not line.startswith('#'):
            function, *step = line.split('\t')
            table.setdefault(function, []).append(step)
    return table


class Manual:
    def __init__(self, header: str) -> None:
        self.header = header
        self.numbers = {name: value.removeprefix('-') for value, name in statuses().items()}
        self.names = exported_names() - {'min'}
        self.wire = wire()
        self.remarks: list[str] = []

    def cell(self, text: str) -> str:
        """Plain text of the table of bytes, escaped for Doxygen; names become links."""
        text = re.sub(r'([\\@#%*_`\[\]])', r'\\\1', html.escape(text, quote=False))
        return re.sub(r'(?:\w|\\_)+', lambda m: self.function_link(m[0]), text)

    def function_link(self, escaped: str) -> str:
        name = escaped.replace('\\', '')
        return '#' + name if name in self.names else escaped

    def wire_table(self, name: str) -> str:
        rows = ''.join('<tr>' + ''.join(f'<td>{self.cell(text)}</td>' for text in (str(n), *step)) + '</tr>'
                       for n, step in enumerate(self.wire.get(name, []), 1))
        return rows and ('@par On the wire\n<table><tr><th></th><th>To the terminal</th><th>Answer</th><th>Waits</th></tr>'
                f'{rows}</table>\n')

    def linked(self, text: str) -> str:
        """A status's name, and its number where a result is named, lead to what to do about it."""
        return ''.join(part if CODE.fullmatch(part) else self.prose_linked(part) for part in CODE.split(text))

    def prose_linked(self, text: str) -> str:
        text = re.sub(r'(@retval (GWQ_\w+) +)\((-\d+)\)', self.number_link, text)
        return re.sub(r'(?<!@retval )\bGWQ_\w+\b', self.status_link, text)

    def number_link(self, match: re.Match[str]) -> str:
        return f'{match[1]}(@ref status{match[3].removeprefix("-")} "{match[3]}")'

    def status_link(self, match: re.Match[str]) -> str:
        name = match[0]
        return f'@ref status{self.numbers[name]} "{name}"' if name in self.numbers else name

    def comment(self, text: str, code: str) -> str:
        """A comment, with what the declaration after it asks for."""
        body = text[len('/**'):-len('*/')]
        function, datum, enumerator = FUNCTION.match(code), DATUM.match(code), ENUMERATOR.match(code)
        before, after = '', ''
        if '@file' in body:
            self.remarks = REMARK.findall(body)
        elif named := datum or function:
            before = f' @ingroup {group_of(named[1], self.header)}\n *'
        if function:
            after = ''.join(f'* {remark}\n *\n ' for remark in self.remarks)
        table = self.wire_table(function[1]) if function else ''
        if enumerator and enumerator[1] in self.numbers:
            after = f'@ref status{self.numbers[enumerator[1]]} "What to do" '
        return f'/**{before}{self.linked(body + after)}{table}*/'


def transformed(header: str, text: str) -> str:
    manual = Manual(header)
    return COMMENT.sub(lambda m: manual.comment(m[1], text[m.end():]) + '\n', text)


if __name__ == '__main__':
    path = pathlib.Path(sys.argv[1]).resolve()
    sys.stdout.write(transformed(str(path.relative_to(SOURCE)), path.read_text(encoding='utf-8')))
