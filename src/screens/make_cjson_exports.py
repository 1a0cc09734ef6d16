#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the functions under which libgwq.so exports cJSON: one for each that cJSON's header declares.

make_cjson_exports.py CJSON_H OUTPUT_NAMES OUTPUT_FUNCTIONS
"""
from __future__ import annotations

import pathlib
import re
import sys

DECLARATION = re.compile(r'^CJSON_PUBLIC\((?P<result>[^()]*)\)\s*(?P<name>\w+)\((?P<parameters>[^()]*)\);', re.MULTILINE)


def parameter_names(parameters: str) -> list[str]:
    if parameters.strip() == 'void':
        return []
    named = (re.search(r'(\w+)\s*(\[\w*\])?\s*$', parameter) for parameter in parameters.split(','))
    return [match[1] for match in named if match]


def function(match: re.Match[str]) -> str:
    name = match['name']
    arguments = ''.join(f', {argument}' for argument in parameter_names(match['parameters']))
    return (f'CJSON_PUBLIC({match["result"]}) {name}({" ".join(match["parameters"].split())}) {{\n'
            f'  return gwq::CallCjson(gwq::CjsonFunction::k_{name}, &{name}{arguments});\n}}\n')


def main(header: str, names_path: str, functions_path: str) -> None:
    declared = list(DECLARATION.finditer(pathlib.Path(header).read_text(encoding='utf-8')))
    if not declared:
        sys.exit(f'{header} declares no functions')
    names = ''.join(f'GWQ_CJSON_NAME({match["name"]})\n' for match in declared)
    functions = '\n'.join(function(match) for match in declared if match['name'] != 'cJSON_InitHooks')
    pathlib.Path(names_path).write_text(names, encoding='utf-8')
    pathlib.Path(functions_path).write_text(functions, encoding='utf-8')


main(*sys.argv[1:])
