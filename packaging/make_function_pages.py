#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes a manual page for each function, from the XML of the reference manual:
make_function_pages.py XML-DIRECTORY VERSION OUTPUT-DIRECTORY"""
from __future__ import annotations

import pathlib
import sys
import xml.etree.ElementTree as ElementTree
from collections.abc import Iterator

from manual_page import bold, child, paragraph, quoted, section, text_of, write_page

Element = ElementTree.Element

SECTIONS = ('parameterlist', 'simplesect')
BLOCKS = SECTIONS + ('table', 'itemizedlist', 'programlisting')
SECTION = '3gwq'  # apart from other packages' functions with such names as Merge


def table(element: Element) -> str:
    rows = [[text_of(entry) or ' ' for entry in row.findall('entry')] for row in element.findall('row')]
    columns = ' '.join(['l'] + ['lx'] * (len(rows[0]) - 1))
    return '.TS\ntab(\t);\n' + columns + '.\n' + '\n'.join(
        '\t'.join(f'T{{\n{cell}\nT}}' for cell in row) for row in rows) + '\n.TE\n'


def listing(element: Element) -> str:
    for space in element.iter('sp'):
        space.text = ' '
    return '.PP\n.nf\n' + '\n'.join(text_of(line, lines=True) for line in element.findall('codeline')) + '\n.fi\n'


def pieces(element: Element) -> Iterator[str | Element | None]:
    """Text, the blocks that stand in it, and None between paragraphs, in order."""
    yield element.text or ''
    for part in element:
        if part.tag in BLOCKS:
            yield part
        else:
            yield from pieces(part)
            if part.tag == 'para':
                yield None
        yield part.tail or ''


def block(element: Element) -> str:
    if element.tag == 'table':
        return table(element)
    if element.tag == 'programlisting':
        return listing(element)
    return ''.join(f'.IP \\(bu 2\n{text_of(item)}\n' for item in element.findall('listitem'))


def blocks(element: Element) -> str:
    """What a description says, without what stands in sections of its own."""
    result, words = '', ''
    for piece in [*pieces(element), None]:
        if isinstance(piece, str):
            words += piece
            continue
        said = ' '.join(words.split())
        result += paragraph(quoted(said)) if said else ''
        words = ''
        if piece is not None and piece.tag not in SECTIONS:
            result += block(piece)
    return result


def items(description: Element, kind: str) -> str:
    """The arguments ("param") or the statuses ("retval"), each with its text."""
    result = ''
    for item in description.findall(f'.//parameterlist[@kind="{kind}"]/parameteritem'):
        name = child(item, 'parameternamelist/parametername')
        direction = f' ({name.get("direction")})' if name.get('direction') else ''
        result += f'.TP\n{bold(text_of(name))}{direction}\n{text_of(child(item, "parameterdescription"))}\n'
    return result


def sections(description: Element, kind: str) -> str:
    """The text of the sections of a kind, each under its own title if it has one."""
    result = ''
    for part in description.findall(f'.//simplesect[@kind="{kind}"]'):
        title = part.find('title')
        body = ElementTree.Element('body')
        body.extend(element for element in part if element.tag != 'title')
        result += ('' if title is None else section(text_of(title).upper())) + blocks(body)
    return result


def titled(title: str, body: str) -> str:
    return section(title) + body if body else ''


def synopsis(function: Element) -> str:
    declared = f'{text_of(child(function, "type"))} {function.findtext("name")}'
    header = 'extra.h' if pathlib.Path(child(function, 'location').get('file', '')).name == 'extra.h' else 'gwq.h'
    return f'.B #include <gwq/{header}>\n.HP 4\n{bold(declared)}{quoted(function.findtext("argsstring", ""))};\n'


def page(function: Element, group: str) -> str:
    description = child(function, 'detaileddescription')
    name, brief = function.findtext('name', ''), text_of(child(function, 'briefdescription'))
    result = section('NAME') + f'{name} \\- {brief.rstrip(".")}\n'
    result += section('SYNOPSIS') + synopsis(function)
    result += section('DESCRIPTION') + paragraph(brief) + blocks(description)
    result += titled('ARGUMENTS', items(description, 'param'))
    result += titled('RETURN VALUE', items(description, 'retval') + sections(description, 'return'))
    result += titled('NOTES', sections(description, 'remark'))
    result += titled('CAVEATS', sections(description, 'warning'))
    result += sections(description, 'par')
    result += titled('VERSIONS', paragraph('Since') + sections(description, 'since').replace('.PP\n', ''))
    return result + section('SEE ALSO') + paragraph(f'The group "{group}" of the reference manual, in the package libgwq-doc.')


def main(xml_directory: str, version: str, output: str) -> None:
    written = 0
    for file in sorted(pathlib.Path(xml_directory).glob('group__*.xml')):
        group = child(ElementTree.parse(file).getroot(), 'compounddef')
        for function in group.findall('.//memberdef[@kind="function"]'):
            if text_of(child(function, 'briefdescription')):
                write_page(pathlib.Path(output), function.findtext('name', ''), SECTION, version,
                           page(function, group.findtext('title', '')))
                written += 1
    if not written:
        sys.exit(f'{xml_directory} describes no function')


main(*sys.argv[1:])
