#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the manual with what the library exports: check_manual.py INTERFACE XML-DIRECTORY"""
from __future__ import annotations

import json
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree
from collections.abc import Iterator

from header_filter import SOURCE, group_of, groups, wire

Element = ElementTree.Element
Name = tuple[str, str, str]  # kind, name, arguments
Export = dict[str, str]

DEVICE_HEADERS = re.compile(r'gwq/(pinpad/|screens/|files/(media|media_functions|pull|push)\.h)')
COMMAND_WORD = re.compile(r'\[\d([A-Z]\w+)')
FRAME = re.compile(r'\b([34]0) ([0-9A-F]{2})\b')


def child(element: Element, name: str) -> Element:
    """One that Doxygen always writes."""
    found = element.find(name)
    if found is None:
        sys.exit(f'a {element.tag} of the manual has no {name}')
    return found


def text_of(element: Element) -> str:
    return ''.join(element.itertext())


def members(xml_directory: str) -> Iterator[Element]:
    """The functions and data of the groups' pages."""
    for page in sorted(pathlib.Path(xml_directory).glob('group__*.xml')):
        yield from (m for m in ElementTree.parse(page).iter('memberdef') if m.get('kind') in ('function', 'variable'))


def documented(xml_directory: str) -> set[Name]:
    """{(kind, name, arguments)} of what the groups' pages describe, without the inline functions of status.h."""
    found: set[Name] = set()
    for member in members(xml_directory):
        if not child(member, 'location').get('file', '').endswith('status.h'):
            text = text_of(child(member, 'briefdescription')) + text_of(child(member, 'detaileddescription'))
            if text.strip():
                found.add((member.get('kind', ''), member.findtext('name', ''), arguments(member.findtext('argsstring'))))
    return found


def missing(member: Element) -> Iterator[str]:
    """What a function's or a datum's own comment lacks."""
    sections = {s.get('kind') for s in member.iter('simplesect')} | {p.get('kind') for p in member.iter('parameterlist')}
    described = {text_of(name) for name in member.iter('parametername')}
    if 'since' not in sections:
        yield '@since'
    if member.get('kind') != 'function':
        return
    names = [name for param in member.findall('param') for name in (param.findtext('declname'),) if name]
    yield from (f'@param {name}' for name in names if name not in described)
    if text_of(child(member, 'type')).split()[-1:] != ['void'] and not sections & {'retval', 'return'}:
        yield '@retval or @return'


def incomplete(xml_directory: str) -> Iterator[str]:
    for member in members(xml_directory):
        yield from (f'{member.findtext("name")} has no {lack}' for lack in missing(member))


def arguments(text: str | None) -> str:
    return re.sub(r'\s', '', re.sub(r'\[\w*\]', '', text or '')).removesuffix('void)').removesuffix(')') + ')'


def exported(interface: list[Export]) -> set[Name]:
    found: set[Name] = set()
    for e in interface:
        is_function = e['kind'] == 'function'
        text = e['signature'][e['signature'].index('('):] if is_function else ''
        found.add(('function' if is_function else 'variable', e['name'], arguments(text)))
    return found


def sources() -> str:
    paths = [*SOURCE.rglob('*.cpp'), *SOURCE.rglob('internal/*.h')]
    return '\n'.join(p.read_text(encoding='utf-8') for p in paths)


def complaints(interface: list[Export], xml_directory: str) -> Iterator[str]:
    manual, library = documented(xml_directory), exported(interface)
    yield from (f'exported, but not in the manual: {e[1]}' for e in sorted(library - manual))
    yield from (f'in the manual, but not exported: {e[1]}' for e in sorted(manual - library))
    yield from incomplete(xml_directory)

    functions = {e['name'] for e in interface if e['kind'] == 'function'}
    device = {e['name'] for e in interface if e['kind'] == 'function' and DEVICE_HEADERS.match(e['header'])}
    steps = wire()
    yield from (f'no bytes on the wire: {name}' for name in sorted(device - set(steps)))
    yield from (f'bytes on the wire of no exported function: {name}' for name in sorted(set(steps) - functions))

    code = sources()
    for name, rows in steps.items():
        for row in rows:
            if len(row) != 3:
                yield f'not three columns on the wire: {name}'
            referred = re.match(r'as (\w+)', row[0])
            if referred and referred[1] not in functions:
                yield f'{name} refers to {referred[1]}, which is not exported'
            yield from (f'{name}: no source sends {word}' for word in COMMAND_WORD.findall(row[0]) if word not in code)
            yield from (f'{name}: no source sends the frame {a} {b}' for a, b in FRAME.findall(row[0])
                        if f'0x{a}{b}' not in code)

    known = {e['name'] for e in interface} | {'GwqStatusName', 'GwqStatusCauseOf', 'GwqStatusRemedyOf'}
    for group in groups():
        for name in group.get('functions', []) + group['sequence']:
            if name not in known:
                yield f'group {group["id"]} names {name}, which is not exported'


def main(interface_file: str, xml_directory: str) -> None:
    interface = json.loads(pathlib.Path(interface_file).read_text(encoding='utf-8'))['exports']
    found = list(complaints(interface, xml_directory))
    if found:
        sys.exit('\n'.join(found))
    print(f'{len(interface)} exported names documented')


if __name__ == '__main__':
    main(*sys.argv[1:])
