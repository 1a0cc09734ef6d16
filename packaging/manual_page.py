# SPDX-License-Identifier: MIT
"""What the manual pages have in common: letters, sections, and the file."""
import datetime
import gzip
import os
import re


def quoted(text):
    """Text that troff prints as it stands."""
    text = text.replace('\\', '\\e').replace('-', '\\-').replace("'", '\\(aq').replace('`', '\\(ga')
    return re.sub(r'^\.', r'\\&.', text, flags=re.M)


def bold(quoted_text):
    return f'\\fB{quoted_text}\\fR'


def section(title):
    return f'.SH "{title}"\n'


def paragraph(quoted_text):
    return f'.PP\n{quoted_text}\n'


def text_of(element, lines=False):
    """The text of an XML element and what is in it, on one line unless its own lines are wanted."""
    text = ''.join(element.itertext())
    return quoted(text if lines else ' '.join(text.split()))


def write_page(directory, name, number, version, body):
    """DIRECTORY/NAME.NUMBER.gz, the same bytes whenever it is made."""
    day = datetime.datetime.fromtimestamp(int(os.environ.get('SOURCE_DATE_EPOCH', '0')), datetime.timezone.utc)
    head = f'\'\\" t\n.TH "{name}" "{number}" "{day:%Y-%m-%d}" "gwq {version}" "gwq"\n.ad l\n'
    directory.mkdir(parents=True, exist_ok=True)
    with open(directory / f'{name}.{number}.gz', 'wb') as file:
        with gzip.GzipFile(filename='', mode='wb', compresslevel=9, fileobj=file, mtime=0) as packed:
            packed.write((head + body).encode())
