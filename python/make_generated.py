#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes gwq/_generated.py: the version and the status texts, as CMakeLists.txt and the library's headers have them.

make_generated.py [--check]   with --check it writes nothing and fails if the file is another one
"""
import json
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parent / 'src'
OUTPUT = HERE / 'gwq' / '_generated.py'

sys.dont_write_bytecode = True
sys.path.append(str(SOURCE))
import status_texts  # noqa: E402


def status(name, causes, remedies):
    texts = (name, *causes, *remedies)
    return 'Status(' + ', '.join(json.dumps(text, ensure_ascii=False) for text in texts) + ')'


def of_functions(names):
    for number, functions, *texts in status_texts.of_functions(SOURCE):
        listed = ', '.join(f'"{function}"' for function in functions)
        yield f'    ({number}, ({listed},), {status(names[number], *texts)}),'


def generated():
    version = re.search(r'project\(gwq VERSION ([\d.]+)', status_texts.source(HERE.parent / 'CMakeLists.txt'))[1]
    known = status_texts.general(SOURCE)
    names = {number: name for number, name, *_ in known}
    value = status(*status_texts.initializer(SOURCE, 'GwqStatusText value')[1:])
    unknown = status(*status_texts.initializer(SOURCE, 'GwqStatusText unknown')[1:])
    return '\n'.join([
        '# SPDX-License-Identifier: MIT', '"""Made by make_generated.py from the headers of the library; not to be edited."""', '',
        'from typing import NamedTuple', '', '',
        'class Status(NamedTuple):',
        '    name: str', '    cause: str', '    cause_zh: str', '    remedy: str', '    remedy_zh: str', '', '',
        f'VERSION = "{version}"', '',
        'STATUSES = {', *(f'    {number}: {status(*texts)},' for number, *texts in known), '}', '',
        'OF_FUNCTIONS = [', *of_functions(names), ']', '',
        f'VALUE = {value}', f'UNKNOWN = {unknown}', ''])


def main(check):
    if not check:
        OUTPUT.write_text(generated(), encoding='utf-8')
    elif OUTPUT.read_text(encoding='utf-8') != generated():
        sys.exit(f'{OUTPUT.name} is not what the headers say; run python/make_generated.py')


main(sys.argv[1:] == ['--check'])
