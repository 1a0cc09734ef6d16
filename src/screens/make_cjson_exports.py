#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the functions under which libgwq.so exports cJSON: one for each that cJSON's header declares.

make_cjson_exports.py CJSON_H OUTPUT_NAMES OUTPUT_FUNCTIONS
"""
import pathlib
import re
import sys

DECLARATION = re.compile(r'^CJSON_PUBLIC\((?P<result>[^()]*)\)\s*(?P<name>\w+)\((?P<parameters>[^()]*)\);', re.MULTILINE)


def parameter_names(parameters):
    if parameters.strip() == 'void':
        return []
    return [re.search(r'(\w+)\s*(\[\w*\])?\s*$', parameter)[1] for parameter in parameters.split(',')]


def function(match):
    name = match['name']
    arguments = ''.join(f', {argument}' for argument in parameter_names(match['parameters']))
    return (f'CJSON_PUBLIC({match["result"]}) {name}({" ".join(match["parameters"].split())}) {{\n'
            f'  return gwq::CallCjson(gwq::CjsonFunction::k_{name}, &{name}{arguments});\n}}\n')


def main(header, names_path, functions_path):
    declared = list(DECLARATION.finditer(pathlib.Path(header).read_text(encoding='utf-8')))
    if not declared:
        sys.exit(f'{header} declares no functions')
    names = ''.join(f'GWQ_CJSON_NAME({match["name"]})\n' for match in declared)
    functions = '\n'.join(function(match) for match in declared if match['name'] != 'cJSON_InitHooks')
    pathlib.Path(names_path).write_text(names, encoding='utf-8')
    pathlib.Path(functions_path).write_text(functions, encoding='utf-8')


main(*sys.argv[1:])
