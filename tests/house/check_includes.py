#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds every include of src/ and terminal/ against the allowed arrows: check_includes.py ROOT

A room includes rooms before it in ROOMS, and a header outside the rooms includes none of them. Public headers are included as
<gwq/...>, internal ones by their path, and a public header includes no internal one.

The terminal's rooms are ordered in TERMINAL_ROOMS in the same way. Who includes the whole device uses it. The terminal shares
nothing with the library but the generated USB identities, usb_ids.h.
"""
from __future__ import annotations

import pathlib
import re
import sys

ROOMS = ['codec', 'diag', 'links', 'frame', 'files', 'pinpad', 'screens']
TERMINAL_ROOMS = ['base', 'protocol', 'device', 'picture', 'customer', 'faults', 'store', 'recording', 'web', 'scenarios', 'serial', 'usb',
                  'usbip', 'umockdev', 'app']
TERMINAL_GENERATED = {'usb_ids.h', 'page.h'}
DEVICE = 'device/device.h'
USES_DEVICE = re.compile(r'\b(Device|Storage)\b')
COMMENT = re.compile(r'//.*')
SHARED = {'export.h', 'status.h', 'status_codes.h'}
UMBRELLAS = {'gwq.h', 'gwq.hpp'}
INCLUDE = re.compile(r'^#include ([<"])([^">]+)[">]', re.MULTILINE)


def wrong(source: pathlib.Path, path: pathlib.Path, mark: str, included: str) -> str | None:
    """What is wrong with one include of the library's, or None."""
    name = included.removeprefix('gwq/')
    ours = included.startswith('gwq/') or (mark == '"' and (source / name).exists())
    if not ours:
        return None
    internal = '/internal/' in name
    if internal == (mark == '<'):
        return 'an internal header is included by its path, a public one as <gwq/...>'
    if internal and path.suffix != '.cpp' and 'internal' not in path.parts:
        return 'a public header includes an internal one'
    room, other = path.parts[0] if len(path.parts) > 1 else None, name.split('/')[0] if '/' in name else None
    if room is None:
        return None if other is None or path.name in UMBRELLAS or path.name == 'extra.h' else 'a shared header includes a room'
    if other is None:
        return None if name in SHARED or name == 'extra.h' else 'not a shared header'
    return None if ROOMS.index(other) <= ROOMS.index(room) else f'{room} may not include {other}'


def wrong_in_terminal(source: pathlib.Path, path: pathlib.Path, mark: str, included: str) -> str | None:
    """What is wrong with one include of the terminal's, or None."""
    room, other = path.parts[0], included.split('/')[0]
    if other in TERMINAL_ROOMS and mark == '"':
        if room not in TERMINAL_ROOMS:
            return f'{room} is no room'
        return None if TERMINAL_ROOMS.index(other) <= TERMINAL_ROOMS.index(room) else f'{room} may not include {other}'
    if included.startswith('gwq/') or (source / included).exists():
        return 'the terminal shares nothing with the library'
    return 'not in a room' if mark == '"' and included not in TERMINAL_GENERATED else None


def needs_no_device(text: str) -> bool:
    """True when a file of the terminal's includes the whole device and does not name it."""
    return f'"{DEVICE}"' in text and not USES_DEVICE.search(COMMENT.sub('', text).replace(DEVICE, ''))


def main(root: str) -> int:
    source = pathlib.Path(root) / 'src'
    found, checked = [], 0
    for path in sorted(p for p in source.rglob('*') if p.suffix in ('.h', '.hpp', '.cpp') and p.name != 'make_gbk_tables.cpp'):
        for mark, included in INCLUDE.findall(path.read_text(encoding='utf-8')):
            checked += 1
            problem = wrong(source, path.relative_to(source), mark, included)
            if problem:
                found.append(f'{path.relative_to(root)}: {included}: {problem}')
    terminal = pathlib.Path(root) / 'terminal'
    for path in sorted(p for p in terminal.rglob('*') if p.suffix in ('.h', '.cpp')):
        text = path.read_text(encoding='utf-8')
        if needs_no_device(text):
            found.append(f'{path.relative_to(root)}: {DEVICE}: includes the whole device and does not use it')
        for mark, included in INCLUDE.findall(text):
            checked += 1
            problem = wrong_in_terminal(source, path.relative_to(terminal), mark, included)
            if problem:
                found.append(f'{path.relative_to(root)}: {included}: {problem}')
    print('\n'.join(found) or f'{checked} includes follow the arrows')
    return 1 if found or checked < 100 else 0


if __name__ == '__main__':
    sys.exit(main(sys.argv[1]))
