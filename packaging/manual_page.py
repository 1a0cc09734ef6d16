# SPDX-License-Identifier: MIT
"""What the manual pages have in common: letters, sections, and the file."""
from __future__ import annotations

import datetime
import gzip
import os
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree


def quoted(text: str) -> str:
    """Text that troff prints as it stands."""
    text = text.replace('\\', '\\e').replace('-', '\\-').replace("'", '\\(aq').replace('`', '\\(ga')
    return re.sub(r'^\.', r'\\&.', text, flags=re.M)


def bold(quoted_text: str) -> str:
    return f'\\fB{quoted_text}\\fR'


def section(title: str) -> str:
    return f'.SH "{title}"\n'


def paragraph(quoted_text: str) -> str:
    return f'.PP\n{quoted_text}\n'


def text_of(element: ElementTree.Element, lines: bool = False) -> str:
    """The text of an XML element and what is in it, on one line unless its own lines are wanted."""
    text = ''.join(element.itertext())
    return quoted(text if lines else ' '.join(text.split()))


def child(element: ElementTree.Element, path: str) -> ElementTree.Element:
    """One that is always there."""
    found = element.find(path)
    if found is None:
        sys.exit(f'a {element.tag} of the manual has no {path}')
    return found


def write_page(directory: pathlib.Path, name: str, number: int | str, version: str, body: str) -> None:
    """DIRECTORY/NAME.NUMBER.gz, the same bytes whenever it is made."""
    day = datetime.datetime.fromtimestamp(int(os.environ.get('SOURCE_DATE_EPOCH', '0')), datetime.timezone.utc)
    head = f'\'\\" t\n.TH "{name}" "{number}" "{day:%Y-%m-%d}" "gwq {version}" "gwq"\n.ad l\n'
    directory.mkdir(parents=True, exist_ok=True)
    with open(directory / f'{name}.{number}.gz', 'wb') as file:
        with gzip.GzipFile(filename='', mode='wb', compresslevel=9, fileobj=file, mtime=0) as packed:
            packed.write((head + body).encode())
