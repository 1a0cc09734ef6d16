#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Generates these files in OUTPUT_DIR from the declarations in the public headers:

    interface.json  all exports of libgwq.so and the texts of the statuses
    exports.txt     the symbols only
    gwq.map         the linker's version script

make_interface.py VERSION SOURCE_DIR OUTPUT_DIR HEADER...
"""
from __future__ import annotations

import json
import pathlib
import re
import sys
from collections.abc import Iterator
from typing import Any

sys.dont_write_bytecode = True  # the script runs in the source tree
import status_texts  # noqa: E402

COMMENT = re.compile(r'/\*.*?\*/|//[^\n]*', re.DOTALL)
PREPROCESSOR = re.compile(r'^#.*$', re.MULTILINE)
DECLARATION = re.compile(r'\bGWQ_API\b([^;]*);')
ATTRIBUTE = re.compile(r'__attribute__\s*\(\(.*\)\)')
FUNCTION = re.compile(r'(?P<result>[^()]*?\W)(?P<name>\w+) ?\((?P<parameters>.*)\)')
DATUM = re.compile(r'extern [^()]*?\W(?P<name>\w+)(\[\w*\])*')


Row = dict[str, Any]  # of interface.json


def symbol_type(parameter: str) -> str:
    """'const char* in' to 'char const*', as symbols are written."""
    return re.sub(r'^const (\w+)', r'\1 const', re.sub(r'\s*\b\w+$', '', parameter.strip()))


def entry(header: str, text: str, has_c_linkage: bool) -> Row:
    signature = ' '.join(ATTRIBUTE.sub('', text).split())
    function = FUNCTION.fullmatch(signature)
    match = function or DATUM.fullmatch(signature)
    if not match:
        sys.exit(f'{header}: neither a function nor a datum: {signature}')
    name = match['name']
    symbol = name
    if function and not has_c_linkage:
        symbol += '(' + ', '.join(symbol_type(p) for p in function['parameters'].split(',')) + ')'
    return {
        'name': name,
        'symbol': symbol,
        'kind': 'function' if function else 'datum',
        'linkage': 'C' if has_c_linkage else 'C++',
        'room': header.split('/')[0],
        'header': 'gwq/' + header,
        'signature': signature,
    }


def entries(source_dir: pathlib.Path, header: str) -> Iterator[Row]:
    text = PREPROCESSOR.sub('', COMMENT.sub(' ', (source_dir / header).read_text(encoding='utf-8')))
    c_end = text.find('GWQ_C_END')
    for match in DECLARATION.finditer(text):
        yield entry(header, match[1], match.start() < c_end)


def in_languages(texts: tuple[str, ...]) -> dict[str, str]:
    return dict(zip(('en', 'zh'), texts))


def texts(source_dir: pathlib.Path) -> Iterator[tuple[str, Row]]:
    """Yields (list, row): the texts of each status, and those that replace them for some functions."""
    for status, name, cause, remedy in status_texts.general(source_dir):
        yield 'statuses', {'status': status, 'name': name, 'cause': in_languages(cause), 'remedy': in_languages(remedy)}
    for status, functions, cause, remedy in status_texts.of_functions(source_dir):
        yield 'function_statuses', {'status': status, 'functions': functions, 'cause': in_languages(cause),
                                    'remedy': in_languages(remedy)}


def listed(entries: list[Row]) -> str:
    return ',\n'.join('  ' + json.dumps(e, ensure_ascii=False) for e in entries)


def version_script(exports: list[Row]) -> str:
    """Exports cJSON's functions by pattern, because libcjson's version decides which there are."""
    plain = ''.join(f'    {e["symbol"]};\n' for e in exports if e['linkage'] == 'C')
    cxx = ''.join(f'      "{e["symbol"]}";\n' for e in exports if e['linkage'] != 'C')
    return f'{{\n  global:\n{plain}    cJSON_*;\n    extern "C++" {{\n{cxx}    }};\n  local:\n    *;\n}};\n'


def main(version: str, source_dir: str, output_dir: str, *headers: str) -> None:
    source = pathlib.Path(source_dir)
    lists = {'exports': sorted((e for h in headers for e in entries(source, h)), key=lambda e: str(e['symbol']))}
    for name, row in texts(source):
        lists.setdefault(name, []).append(row)
    soname = 'libgwq.so.' + version.split('.')[0]
    body = ', '.join(f'"{name}": [\n{listed(rows)}\n]' for name, rows in lists.items())
    output = pathlib.Path(output_dir)
    (output / 'interface.json').write_text(f'{{"soname": "{soname}", "version": "{version}", {body}}}\n', encoding='utf-8')
    (output / 'exports.txt').write_text(''.join(e['symbol'] + '\n' for e in lists['exports']), encoding='utf-8')
    (output / 'gwq.map').write_text(version_script(lists['exports']), encoding='utf-8')


main(*sys.argv[1:])
