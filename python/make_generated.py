#!/usr/bin/env python3
"""Writes gwq/_generated.py: the version and the status texts, as CMakeLists.txt and the library's headers have them.

make_generated.py [--check]   with --check it writes nothing and fails if the file is another one
"""
import ast
import json
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
OUTPUT = HERE / 'gwq' / '_generated.py'
COMMENT = re.compile(r'/\*.*?\*/', re.DOTALL)
TOKEN = re.compile(r'(?P<text>"(?:[^"\\]|\\.)*")|(?P<name>\bGWQ_\w+)|(?P<brace>[{}])')


def source(name):
    return COMMENT.sub('', (HERE.parent / name).read_text(encoding='utf-8'))


def initializer(header, declaration, values):
    """A C initializer of numbers, names and texts, as Python tuples."""
    c = re.search(re.escape(declaration) + r'\s*=\s*(\{.*?\});', header, re.DOTALL)[1]

    def python(token):
        if token['brace']:
            return '(' if token['brace'] == '{' else ')'
        return token['text'] or str(values[token['name']])

    return ast.literal_eval(' '.join(TOKEN.sub(python, c).split()))


def status(name, causes, remedies):
    texts = (name, *causes, *remedies)
    return 'Status(' + ', '.join(json.dumps(text, ensure_ascii=False) for text in texts) + ')'


def generated():
    version = re.search(r'project\(gwq VERSION ([\d.]+)', source('CMakeLists.txt'))[1]
    values = {name: int(value) for name, value in re.findall(r'(GWQ_\w+)\s*=\s*(-?\d+)', source('src/frame/port.h'))}
    header = source('src/status.h')
    known = initializer(header, 'texts[]', values)
    lines = [f'    {number}: {status(*texts)},' for number, *texts in known]
    value = status(*initializer(header, 'GwqStatusText value', values)[1:])
    unknown = status(*initializer(header, 'GwqStatusText unknown', values)[1:])
    return '\n'.join([
        '"""Made by make_generated.py from the headers of the library; not to be edited."""', '',
        'from typing import NamedTuple', '', '',
        'class Status(NamedTuple):',
        '    name: str', '    cause: str', '    cause_zh: str', '    remedy: str', '    remedy_zh: str', '', '',
        f'VERSION = "{version}"', '',
        'STATUSES = {', *lines, '}', '',
        f'VALUE = {value}', f'UNKNOWN = {unknown}', ''])


def main(check):
    if not check:
        OUTPUT.write_text(generated(), encoding='utf-8')
    elif OUTPUT.read_text(encoding='utf-8') != generated():
        sys.exit(f'{OUTPUT.name} is not what the headers say; run python/make_generated.py')


main(sys.argv[1:] == ['--check'])
