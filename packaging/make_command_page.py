#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes a program's manual page from what its --help says, and that of its subcommands:
make_command_page.py PROGRAM VERSION OUTPUT-DIRECTORY"""
from __future__ import annotations

import pathlib
import sys

from command_help import blocks, entries, help_of, parts, usage_and_purpose
from manual_page import bold, paragraph, quoted, section, write_page


def as_list(found: list[list[str]]) -> str:
    return ''.join(f'.TP\n{bold(quoted(what))}\n{quoted(meaning)}\n' for what, meaning in found)


def prose(lines: list[str]) -> str:
    """Paragraphs; indented lines stay as they are."""
    return ''.join('.PP\n.nf\n' + quoted(block) + '\n.fi\n' if block.startswith('  ') else paragraph(quoted(block))
                   for block in blocks(lines))


def subcommand(program: str, name: str) -> str:
    head, lists, foot = parts(help_of(program, name))
    usage, purpose = usage_and_purpose(head)
    result = f'.SS "{quoted(usage)}"\n' + paragraph(quoted(purpose) + '.')
    return result + ''.join(as_list(entries(listed)) for listed in lists.values()) + prose(foot)


def main(program: str, version: str, output: str) -> None:
    name = pathlib.Path(program).name
    head, lists, foot = parts(help_of(program))
    names = [what for what, _ in entries(lists['Subcommands'])]
    body = section('NAME') + f'{quoted(name)} \\- {quoted(head[0].rstrip(".").lower())}\n'
    body += section('SYNOPSIS') + f'{bold(quoted(name))} {quoted("SUBCOMMAND [OPTIONS]")}\n'
    body += section('DESCRIPTION') + paragraph('Plays the customer terminal of a bank counter for any program that drives one, '
                                               'without hardware and without root.') + prose(foot)
    body += section('OPTIONS') + as_list(entries(lists['Options'])) + section('SUBCOMMANDS')
    body += ''.join(subcommand(program, n) for n in names)
    body += section('SEE ALSO') + paragraph('virtual\\-terminal.md, terminal\\-behaviour.md, scenarios.md and recording.md in '
                                            '/usr/share/doc/libgwq\\-doc/docs (package libgwq\\-doc)')
    write_page(pathlib.Path(output), name, 1, version, body)


main(*sys.argv[1:])
