# SPDX-License-Identifier: MIT
"""What a program's --help says, in parts."""
from __future__ import annotations

import re
import subprocess

COLUMN = 30  # in which the meanings begin
# The parser's remarks on what kind of value it is mean nothing to a reader.
REMARK = re.compile(r':(FILE|INT|PATH)\b| (REQUIRED|(Excludes|Needs): .*)$')


def help_of(*command: str) -> list[str]:
    return subprocess.run([*command, '--help'], check=True, capture_output=True, text=True).stdout.splitlines()


def has_room_for_its_name(line: str) -> bool:
    """Whether the name ends before the column of meanings; in a range, "[1 - 256]", a blank does not end it."""
    name = line[:COLUMN]
    return name.endswith(' ') and name.count('[') == name.count(']')


def entries(lines: list[str]) -> list[list[str]]:
    """[[what, meaning]] of a list; a long name has its meaning below it."""
    found: list[list[str]] = []
    for line in lines:
        what, meaning = (line[:COLUMN], line[COLUMN:]) if has_room_for_its_name(line) else (line, '')
        what, meaning = what.strip(), meaning.strip()
        if what:
            found.append([REMARK.sub('', what).strip(), meaning])
        else:
            found[-1][1] = f'{found[-1][1]} {meaning}'.strip()
    return found


def parts(lines: list[str]) -> tuple[list[str], dict[str, list[str]], list[str]]:
    """The help's head, its titled lists by title, and the text below them."""
    lists: dict[str, list[str]] = {}
    head: list[str] = []
    foot: list[str] = []
    title = None
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


def blocks(lines: list[str]) -> list[str]:
    """The paragraphs of a text."""
    return [block for block in re.split(r'\n\s*\n', '\n'.join(lines).strip('\n')) if block]


def usage_and_purpose(head: list[str]) -> tuple[str, str]:
    """'exec [OPTIONS] -- COMMAND' and 'Run a command' of a subcommand's head."""
    purpose, colon, usage = head[0].rpartition(': ')
    return (usage, purpose) if colon else (' '.join(head[1].split()[2:]), head[0])
