# SPDX-License-Identifier: MIT
"""Reads the texts of the statuses from status.h, for the generators."""
from __future__ import annotations

import ast
import pathlib
import re
from collections.abc import Iterator
from typing import Any

COMMENT = re.compile(r'/\*.*?\*/', re.DOTALL)
TOKEN = re.compile(r'(?P<text>"(?:[^"\\]|\\.)*")|(?P<name>\bGWQ_\w+)|(?P<brace>[{}])')


Texts = tuple[str, ...]  # in English and in Chinese


def source(path: pathlib.Path) -> str:
    return COMMENT.sub('', path.read_text(encoding='utf-8'))


def found(pattern: str, path: pathlib.Path) -> str:
    """The first group of what a file, without its comments, must have."""
    match = re.search(pattern, source(path), re.DOTALL)
    assert match, f'{path} has no {pattern}'
    return match[1]


def statuses(source_dir: pathlib.Path) -> dict[str, int]:
    """{'GWQ_REFUSED': -14, ...}"""
    return {name: int(value) for name, value in
            re.findall(r'(GWQ_\w+)\s*=\s*(-?\d+)', source(source_dir / 'status_codes.h'))}


def initializer(source_dir: pathlib.Path, declaration: str) -> Any:
    """A C initializer of numbers, names and texts in status.h, as Python tuples."""
    values = statuses(source_dir)
    c = found(re.escape(declaration) + r'\s*=\s*(\{.*?\});', source_dir / 'status.h')

    def python(token: re.Match[str]) -> str:
        if token['brace']:
            return '(' if token['brace'] == '{' else ')'
        return token['text'] or str(values[token['name']])

    return ast.literal_eval(' '.join(TOKEN.sub(python, c).split()))


def general(source_dir: pathlib.Path) -> tuple[tuple[int, str, Texts, Texts], ...]:
    """[(status, name, (cause, cause in Chinese), (remedy, remedy in Chinese)), ...]"""
    rows: tuple[tuple[int, str, Texts, Texts], ...] = initializer(source_dir, 'struct GwqStatusText texts[]')
    return rows


def of_functions(source_dir: pathlib.Path) -> Iterator[tuple[int, tuple[str, ...], Texts, Texts]]:
    """As general(), but with a tuple of functions instead of the name, and with complete remedies."""
    remedies = {status: remedy for status, _, _, remedy in general(source_dir)}
    for status, functions, cause, remedy in initializer(source_dir, 'struct GwqFunctionText texts[]'):
        whole = tuple(own or known for own, known in zip(remedy, remedies[status]))
        yield status, tuple(functions.split()), cause, whole
