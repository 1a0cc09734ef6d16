#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds that no code of the library calls an exported function that notes failures: check_calls.py NM OBJECT...

Such a function, made by src/make_calls.py, stands for a call of the host. Inner code calls the one in namespace gwq. The object
calls.cpp.o has the exported ones.
"""
import pathlib
import re
import subprocess
import sys

EXPORTED = 'calls.cpp.o'
SYMBOL = re.compile(r'(.+\.o): ([A-Za-z]\w*) ')


def c_names(nm: str, kind: str, objects: list[str]) -> list[tuple[str, str]]:
    """[(object, C name), ...]"""
    listed = subprocess.run([nm, '-A', kind, '--format=posix', *objects], check=True, capture_output=True, text=True).stdout
    return [(pathlib.Path(file).name, name) for file, name in SYMBOL.findall(listed)]


def main(nm: str, *objects: str) -> None:
    exporting = [o for o in objects if pathlib.Path(o).name == EXPORTED]
    inner = [o for o in objects if pathlib.Path(o).name != EXPORTED]
    exported = {name for _, name in c_names(nm, '--defined-only', exporting)} if exporting else set()
    if len(exported) < 100:
        sys.exit(f'{EXPORTED} has {len(exported)} functions only')
    called = [f'{file} calls the exported {name}' for file, name in c_names(nm, '--undefined-only', inner) if name in exported]
    sys.exit('\n'.join(called) or None)


main(*sys.argv[1:])
