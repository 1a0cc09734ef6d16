# SPDX-License-Identifier: MIT
"""Code in a guide that names a file stands in that file just so: guide_test.py ROOT GUIDE"""
import pathlib
import re
import sys


def main(root, guide):
    text = (root / guide).read_text(encoding='utf-8')
    blocks = re.findall(r'^```\w+ (\S+)\n(.*?)^```', text, re.MULTILINE | re.DOTALL)
    if len(blocks) < 4:
        sys.exit(f'{guide} shows only {len(blocks)} files')
    for name, code in blocks:
        if code not in (root / name).read_text(encoding='utf-8'):
            sys.exit(f'{guide} shows other code than {name} has:\n{code}')
        print(f'{name}: {len(code.splitlines())} lines, as they are')


main(pathlib.Path(sys.argv[1]), sys.argv[2])
