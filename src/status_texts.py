# SPDX-License-Identifier: MIT
"""Reads the texts of the statuses from status.h, for the generators."""
import ast
import re

COMMENT = re.compile(r'/\*.*?\*/', re.DOTALL)
TOKEN = re.compile(r'(?P<text>"(?:[^"\\]|\\.)*")|(?P<name>\bGWQ_\w+)|(?P<brace>[{}])')


def source(path):
    return COMMENT.sub('', path.read_text(encoding='utf-8'))


def statuses(source_dir):
    """{'GWQ_REFUSED': -14, ...}"""
    return {name: int(value) for name, value in
            re.findall(r'(GWQ_\w+)\s*=\s*(-?\d+)', source(source_dir / 'status_codes.h'))}


def initializer(source_dir, declaration):
    """A C initializer of numbers, names and texts in status.h, as Python tuples."""
    values = statuses(source_dir)
    c = re.search(re.escape(declaration) + r'\s*=\s*(\{.*?\});', source(source_dir / 'status.h'), re.DOTALL)[1]

    def python(token):
        if token['brace']:
            return '(' if token['brace'] == '{' else ')'
        return token['text'] or str(values[token['name']])

    return ast.literal_eval(' '.join(TOKEN.sub(python, c).split()))


def general(source_dir):
    """[(status, name, (cause, cause in Chinese), (remedy, remedy in Chinese)), ...]"""
    return initializer(source_dir, 'struct GwqStatusText texts[]')


def of_functions(source_dir):
    """As general(), but with a tuple of functions instead of the name, and with complete remedies."""
    remedies = {status: remedy for status, _, _, remedy in general(source_dir)}
    for status, functions, cause, remedy in initializer(source_dir, 'struct GwqFunctionText texts[]'):
        whole = tuple(own or known for own, known in zip(remedy, remedies[status]))
        yield status, tuple(functions.split()), cause, whole
