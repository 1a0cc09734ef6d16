#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes a program's manual page from what its --help says, and that of its subcommands:
make_command_page.py PROGRAM VERSION OUTPUT-DIRECTORY"""
import pathlib
import re
import subprocess
import sys

from manual_page import bold, paragraph, quoted, section, write_page

COLUMN = 30  # in which the meanings begin
# The parser's remarks on what kind of value it is mean nothing to a reader.
REMARK = re.compile(r':(FILE|INT|PATH)\b| (REQUIRED|(Excludes|Needs): .*)$')


def help_of(*command):
    return subprocess.run([*command, '--help'], check=True, capture_output=True, text=True).stdout.splitlines()


def entries(lines):
    """[[what, meaning]] of a list; a long name has its meaning below it."""
    found = []
    for line in lines:
        what, meaning = (line[:COLUMN].strip(), line[COLUMN:].strip()) if line[COLUMN - 1] == ' ' else (line.strip(), '')
        if what:
            found.append([REMARK.sub('', what), meaning])
        else:
            found[-1][1] = f'{found[-1][1]} {meaning}'.strip()
    return found


def as_list(found):
    return ''.join(f'.TP\n{bold(quoted(what))}\n{quoted(meaning)}\n' for what, meaning in found)


def parts(lines):
    """The help's head, its titled lists by title, and the text below them."""
    lists, head, foot, title = {}, [], [], None
    for line in lines:
        if re.fullmatch(r'(Options|Positionals|Subcommands):', line):
            title = line.rstrip(':')
            lists[title] = []
        elif title is None:
            head.append(line)
        elif line.startswith('  ') and not foot:
            lists[title].append(line)
        elif line or foot:
            foot.append(line)
    return head, lists, foot


def prose(lines):
    """Paragraphs; indented lines stay as they are."""
    result = ''
    for block in re.split(r'\n\s*\n', '\n'.join(lines).strip('\n')):
        if block.startswith('  '):
            result += '.PP\n.nf\n' + quoted(block) + '\n.fi\n'
        elif block:
            result += paragraph(quoted(block))
    return result


def subcommand(program, name):
    head, lists, foot = parts(help_of(program, name))
    usage = head[0].rsplit(': ', 1)[-1] if ': ' in head[0] else ' '.join(head[1].split()[2:])
    result = f'.SS "{quoted(usage)}"\n' + paragraph(quoted(head[0].rsplit(': ', 1)[0]) + '.')
    return result + ''.join(as_list(entries(listed)) for listed in lists.values()) + prose(foot)


def main(program, version, output):
    name = pathlib.Path(program).name
    head, lists, foot = parts(help_of(program))
    names = [what for what, _ in entries(lists['Subcommands'])]
    body = section('NAME') + f'{quoted(name)} \\- {quoted(head[0].rstrip(".").lower())}\n'
    body += section('SYNOPSIS') + f'{bold(quoted(name))} {quoted("SUBCOMMAND [OPTIONS]")}\n'
    body += section('DESCRIPTION') + paragraph('Plays the customer terminal of a bank counter for any program that drives one, '
                                               'without hardware and without root.') + prose(foot)
    body += section('OPTIONS') + as_list(entries(lists['Options'])) + section('SUBCOMMANDS')
    body += ''.join(subcommand(program, n) for n in names)
    body += section('SEE ALSO') + paragraph('virtual\\-terminal.md, scenarios.md and recording.md in '
                                            '/usr/share/doc/libgwq\\-doc/docs (package libgwq\\-doc)')
    write_page(pathlib.Path(output), name, 1, version, body)


main(*sys.argv[1:])
