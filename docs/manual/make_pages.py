#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the manual's pages that are not a header's: the entrance, the groups, the statuses.  make_pages.py OUTPUT"""
from __future__ import annotations

import html
import pathlib
import re
import sys

from header_filter import SOURCE, Group, exported_names, groups, statuses

STATUS_TEXT = re.compile(r'\{(GWQ_\w+),\s*"\1",\s*\{(.*?)\},\s*\{(.*?)\}\}', re.DOTALL)
TEXT = re.compile(r'(?:"(?:[^"\\]|\\.)*"\s*)+')

ENTRANCE = """/** @mainpage
gwq drives the customer terminal at a bank counter. The functions are grouped by what a teller application does with them:
<ul>{groups}</ul>
Each function's page tells what it does, its arguments, its results with a link to what to do, and its bytes on the wire.
What holds for all of them:
{conventions}
*/
"""
GROUP = """/** @defgroup {id} {title}
{text}

@par Usual order
{sequence}

@par Example
@snippet manual_examples.c {id}
*/
"""


def linked(text: str, names: set[str]) -> str:
    return re.sub(r'\w+', lambda m: '#' + m[0] if m[0] in names else m[0], text)


def conventions() -> str:
    """The list in gwq.h's head comment."""
    head = re.search(r'/\*\*(.*?)\*/', (SOURCE / 'gwq.h').read_text(encoding='utf-8'), re.DOTALL)
    assert head, 'gwq.h has no head comment'
    lines = ' '.join(line.removeprefix(' *').strip() for line in head[1].split('\n'))
    _, *rules = lines.split(' - ')
    return '<ul>' + ''.join(f'<li>{html.escape(rule.strip(), quote=False)}</li>' for rule in rules) + '</ul>'


def group(g: Group, names: set[str]) -> str:
    sequence = ', '.join(g['sequence']) + ('; ' + g['more'] if g['more'] else '') + '.'
    return GROUP.format(id=g['id'], title=g['title'], text=linked(g['text'], names), sequence=linked(sequence, names))


def texts(list_of_strings: str) -> list[str]:
    """English and Chinese out of an initialiser."""
    return [''.join(re.findall(r'"([^"]*)"', m[0])) for m in TEXT.finditer(list_of_strings)]


def status_page() -> str:
    values = {name: value for value, name in statuses().items()}
    found = STATUS_TEXT.findall((SOURCE / 'status.h').read_text(encoding='utf-8'))
    if {name for name, *_ in found} != set(values):
        sys.exit('make_pages.py: src/status.h and src/status_codes.h do not name the same statuses')
    rows = []
    for name, cause, remedy in found:
        cells = [values[name], '#' + name, '<br>'.join(texts(cause)), '<br>'.join(texts(remedy))]
        anchor = f'@anchor status{values[name].removeprefix("-")} '
        rows.append('<tr><td>' + anchor + '</td><td>'.join(cells) + '</td></tr>')
    return ('/** @page statuses Statuses: causes and what to do\n'
            'What a status means in general; what it means for one function stands with that function.\n'
            '<table><tr><th>Value</th><th>Name</th><th>Cause</th><th>What to do</th></tr>\n' + '\n'.join(rows) + '</table>\n*/\n')


def main(output: str) -> None:
    names = exported_names() - {'min'}
    entries = ''.join(f'<li>@ref {g["id"]} - {linked(g["text"], names)}</li>\n' for g in groups()) + '<li>@ref statuses</li>'
    pages = [ENTRANCE.format(groups=entries, conventions=conventions()), status_page()]
    pathlib.Path(output).write_text(''.join(pages + [group(g, names) for g in groups()]), encoding='utf-8')


main(*sys.argv[1:])
