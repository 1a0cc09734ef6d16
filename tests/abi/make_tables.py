#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Turns the list of exports into what the host programs and the tests are compiled from or read.

make_tables.py INTERFACE CJSON_NAMES OUTPUT_DIR
"""
import json
import pathlib
import re
import sys


def pointer_type(signature, name):
    """'int f(int a)' to 'int (*)(int a)', which picks one of several functions of a name."""
    return re.sub(rf'\b{name} ?\(', '(*)(', signature, count=1)


def main(interface, cjson_names, output_dir):
    exports = json.loads(pathlib.Path(interface).read_text(encoding='utf-8'))['exports']
    plain = [e for e in exports if e['linkage'] == 'C']
    functions = [e for e in plain if e['kind'] == 'function']
    data = [e for e in plain if e['kind'] == 'datum']
    cxx = [e for e in exports if e['linkage'] == 'C++']

    def write(name, lines):
        (pathlib.Path(output_dir) / name).write_text(''.join(line + '\n' for line in lines), encoding='utf-8')

    write('c_functions.txt', [e['name'] for e in functions])
    write('c_data.txt', [e['name'] for e in data])
    # Each signature declares its name once more: the compiler refuses one that the header does not give.
    write('redeclarations.h', [e['signature'] + ';' for e in plain])
    write('function_table.h', [f'{{"{e["name"]}", (AnyFunction){e["name"]}}},' for e in functions])
    write('data_table.h', [f'{{"{e["name"]}", &{e["name"]}}},' for e in data])
    write('cxx_redeclarations.h', [e['signature'] + ';' for e in cxx])
    write('cxx_function_table.h',
          [f'reinterpret_cast<AnyFunction>(static_cast<{pointer_type(e["signature"], e["name"])}>({e["name"]})),'
           for e in cxx])
    cjsons = re.findall(r'\((\w+)\)', pathlib.Path(cjson_names).read_text(encoding='utf-8'))
    write('intruders.c', ['int Intrude(const char* name);'] +
          [f'int {name}(void) {{ return Intrude("{name}"); }}' for name in [e['name'] for e in functions] + cjsons])


main(*sys.argv[1:])
