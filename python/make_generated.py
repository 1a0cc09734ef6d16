#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes gwq/_generated.py: version, statuses and prototypes, as CMakeLists.txt and the library's headers have them.

make_generated.py [--check]   with --check it writes nothing and fails if the file is another one
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile
from collections.abc import Iterable, Iterator

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parent / 'src'
OUTPUT = HERE / 'gwq' / '_generated.py'

sys.dont_write_bytecode = True
sys.path.append(str(SOURCE))
import status_texts  # noqa: E402


Export = dict[str, str]


def status(name: str, causes: Iterable[str], remedies: Iterable[str]) -> str:
    texts = (name, *causes, *remedies)
    return 'Status(' + ', '.join(json.dumps(text, ensure_ascii=False) for text in texts) + ')'


def of_functions(names: dict[int, str]) -> Iterator[str]:
    for number, functions, *texts in status_texts.of_functions(SOURCE):
        listed = ', '.join(f'"{function}"' for function in functions)
        yield f'    ({number}, ({listed},), {status(names[number], *texts)}),'


def interface(version: str) -> list[Export]:
    """What src/make_interface.py reads out of the public headers."""
    listed = status_texts.found(r'set\(GWQ_PUBLIC_HEADERS\n(.*?)\)', SOURCE / 'CMakeLists.txt')
    with tempfile.TemporaryDirectory() as directory:
        subprocess.run([sys.executable, SOURCE / 'make_interface.py', version, SOURCE, directory, *listed.split()], check=True)
        exports: list[Export] = json.loads((pathlib.Path(directory) / 'interface.json').read_text(encoding='utf-8'))['exports']
        return exports


def without_name(parameter: str) -> str:
    return re.sub(r'\s*\b\w+$', '', parameter.strip())


def prototypes(exports: list[Export]) -> Iterator[str]:
    for entry in exports:
        if entry['kind'] == 'function' and entry['linkage'] == 'C':
            signature = re.fullmatch(rf'(.*?)\b{entry["name"]} ?\((.*)\)', entry['signature'])
            assert signature, entry
            result, parameters = signature.groups()
            types = [] if parameters == 'void' else [without_name(p) for p in parameters.split(',')]
            listed = ', '.join(f'"{text}"' for text in (result.strip(), *types))
            yield f'    "{entry["name"]}": ({listed},),'


def code(number: int, name: str) -> str:
    return f'    {name.removeprefix("GWQ_")} = {number}'


def generated() -> str:
    version = status_texts.found(r'project\(gwq VERSION ([\d.]+)', HERE.parent / 'CMakeLists.txt')
    known = status_texts.general(SOURCE)
    names = {number: name for number, name, *_ in known}
    value = status(*status_texts.initializer(SOURCE, 'GwqStatusText value')[1:])
    unknown = status(*status_texts.initializer(SOURCE, 'GwqStatusText unknown')[1:])
    return '\n'.join([
        '# SPDX-License-Identifier: MIT', '"""Made by make_generated.py from the headers of the library; not to be edited."""', '',
        'from __future__ import annotations', '',
        'from enum import IntEnum',
        'from typing import NamedTuple', '', '',
        'class Status(NamedTuple):',
        '    name: str', '    cause: str', '    cause_zh: str', '    remedy: str', '    remedy_zh: str', '', '',
        'class StatusCode(IntEnum):',
        '    """What the library returns, without its prefix GWQ_."""', '',
        *(code(number, name) for number, name in names.items()), '', '',
        f'VERSION = "{version}"', '',
        'STATUSES = {', *(f'    {number}: {status(name, cause, remedy)},' for number, name, cause, remedy in known), '}', '',
        'OF_FUNCTIONS = [', *of_functions(names), ']', '',
        f'VALUE = {value}', f'UNKNOWN = {unknown}', '',
        '# Of each function of the library the types of its result and its arguments, as C has them.',
        'PROTOTYPES: dict[str, tuple[str, ...]] = {', *prototypes(interface(version)), '}', ''])


def main(check: bool) -> None:
    if not check:
        OUTPUT.write_text(generated(), encoding='utf-8')
    elif OUTPUT.read_text(encoding='utf-8') != generated():
        sys.exit(f'{OUTPUT.name} is not what the headers say; run python/make_generated.py')


main(sys.argv[1:] == ['--check'])
