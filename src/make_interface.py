#!/usr/bin/env python3
"""Writes the list of everything that libgwq.so exports, as its public headers declare it.

make_interface.py VERSION SOURCE_DIR OUTPUT HEADER...
"""
import json
import pathlib
import re
import sys

COMMENT = re.compile(r'/\*.*?\*/|//[^\n]*', re.DOTALL)
PREPROCESSOR = re.compile(r'^#.*$', re.MULTILINE)
DECLARATION = re.compile(r'\bGWQ_API\b([^;]*);')
ATTRIBUTE = re.compile(r'__attribute__\s*\(\(.*\)\)')
FUNCTION = re.compile(r'(?P<result>[^()]*?\W)(?P<name>\w+) ?\((?P<parameters>.*)\)')
DATUM = re.compile(r'extern [^()]*?\W(?P<name>\w+)(\[\w*\])*')


def symbol_type(parameter):
    """'const char* in' to 'char const*', as symbols are written."""
    return re.sub(r'^const (\w+)', r'\1 const', re.sub(r'\s*\b\w+$', '', parameter.strip()))


def entry(header, text, has_c_linkage):
    signature = ' '.join(ATTRIBUTE.sub('', text).split())
    function = FUNCTION.fullmatch(signature)
    match = function or DATUM.fullmatch(signature)
    if not match:
        sys.exit(f'{header}: neither a function nor a datum: {signature}')
    name = match['name']
    symbol = name
    if not has_c_linkage:
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


def entries(source_dir, header):
    text = PREPROCESSOR.sub('', COMMENT.sub(' ', (source_dir / header).read_text(encoding='utf-8')))
    c_end = text.find('GWQ_C_END')
    for match in DECLARATION.finditer(text):
        yield entry(header, match[1], match.start() < c_end)


def main(version, source_dir, output, *headers):
    exports = sorted((e for h in headers for e in entries(pathlib.Path(source_dir), h)), key=lambda e: e['symbol'])
    lines = ',\n'.join('  ' + json.dumps(e) for e in exports)
    soname = 'libgwq.so.' + version.split('.')[0]
    text = f'{{"soname": "{soname}", "version": "{version}", "exports": [\n{lines}\n]}}\n'
    pathlib.Path(output).write_text(text, encoding='utf-8')


main(*sys.argv[1:])
