#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Says what the packages are made of: make_sbom.py BUILD-DIRECTORY

Writes Built-Using into each package that holds something of others, and the bill of materials, gwq-VERSION.spdx.json (SPDX 2.3),
with a checksum of each package.
"""
from __future__ import annotations

import datetime
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
from collections.abc import Iterator
from typing import Any

from contents import Contents, Package, contents, owners, package, resources, run

ROOT = pathlib.Path(__file__).resolve().parent.parent
EPOCH = int(os.environ['SOURCE_DATE_EPOCH'])
PDF_READER = '/usr/share/javascript/pdf/build'
BUILD_TOOLS = ('g++-12', 'binutils', 'cmake', 'doxygen')
HOME = 'https://gwq.example/'

Document = dict[str, Any]  # of SPDX


def parts_of(build: pathlib.Path) -> dict[str, Contents]:
    """{package name: Contents} of each package that others' work is in."""
    library, = build.glob('lib/libgwq.so.*.*.*')
    terminal = build / 'bin/gwq-terminal'
    found = {'libgwq1': contents(build, library, build / 'packaging/gwq.map', 'src'),
             'libgwq-doc': Contents(set(), {package('doxygen')}, set())}  # its scripts are in the manual
    if terminal.exists():
        programs = contents(build, terminal, build / 'packaging/gwq-terminal.map', 'terminal')
        embedded = owners(resources(ROOT / 'terminal/web/page/page.gresource.xml', [PDF_READER]))
        preloaded = owners(filter(None, [shutil.which('umockdev-run')]))
        found['gwq-terminal'] = programs._replace(embedded=embedded, linked=programs.linked | preloaded)
    return found


def built_using(part: Contents) -> str:
    return ', '.join(sorted({f'{p.source} (= {p.source_version})' for p in part.compiled_in | part.embedded}))


def write_md5sums(tree: pathlib.Path) -> None:
    """CPack names the files of debug symbols by their paths on the building machine."""
    files = sorted(p for p in tree.rglob('*') if p.is_file() and not p.is_symlink() and tree / 'DEBIAN' not in p.parents)
    lines = (f'{hashlib.md5(p.read_bytes()).hexdigest()}  {p.relative_to(tree)}\n' for p in files)
    (tree / 'DEBIAN/md5sums').write_text(''.join(lines), encoding='utf-8')


def finish(archive: pathlib.Path, using: str) -> None:
    """Packs an archive once more: with the field, with file names in md5sums as they are installed, and with the date of the
    commit on everything in it."""
    tree = archive.with_suffix('.tree')
    shutil.rmtree(tree, ignore_errors=True)
    run('dpkg-deb', '-R', archive, tree)
    if using:
        control = tree / 'DEBIAN/control'
        control.write_text(control.read_text(encoding='utf-8').rstrip('\n') + f'\nBuilt-Using: {using}\n', encoding='utf-8')
    write_md5sums(tree)
    for path in [tree, *tree.rglob('*')]:
        os.utime(path, (EPOCH, EPOCH), follow_symlinks=False)
    run('dpkg-deb', '--root-owner-group', '--threads-max=1', '-b', tree, archive)
    shutil.rmtree(tree)


def identifier(*words: str) -> str:
    return 'SPDXRef-' + re.sub(r'[^A-Za-z0-9.-]', '-', '-'.join(words))


def spdx_package(name: str, version: str, licence: str, location: str, **more: Any) -> Document:
    return {'SPDXID': identifier('Package', name), 'name': name, 'versionInfo': version, 'downloadLocation': 'NOASSERTION',
            'filesAnalyzed': False, 'licenseConcluded': licence, 'licenseDeclared': licence, 'copyrightText': 'NOASSERTION',
            'externalRefs': [{'referenceCategory': 'PACKAGE-MANAGER', 'referenceType': 'purl', 'referenceLocator': location}],
            **more}


def product(archive: pathlib.Path) -> Document:
    """An archive of ours, as SPDX describes it."""
    if archive.suffix == '.whl':
        name, version, location = 'gwq-wheel', archive.name.split('-')[1], 'pkg:pypi/gwq@'
    else:
        name, version = run('dpkg-deb', '-W', '--showformat=${Package}\t${Version}', archive).split('\t')
        location = f'pkg:deb/debian/{name}@'
    digest = hashlib.sha256(archive.read_bytes()).hexdigest()
    return spdx_package(name, version, 'MIT', location + version, packageFileName=archive.name, homepage=HOME,
                        supplier='Organization: The gwq developers',
                        checksums=[{'algorithm': 'SHA256', 'checksumValue': digest}])


def debian(p: Package) -> Document:
    version = p.version.replace('+', '%2B').replace(':', '%3A')
    return spdx_package(p.name, p.version, 'NOASSERTION', f'pkg:deb/debian/{p.name}@{version}',
                        sourceInfo=f'{p.source} {p.source_version}', supplier='Organization: Debian')


def relations_of(name: str, part: Contents, tools: set[Package]) -> Iterator[tuple[str, str, str]]:
    ours = identifier('Package', name)
    for kind, others in (('STATIC_LINK', part.compiled_in), ('CONTAINS', part.embedded), ('DYNAMIC_LINK', part.linked)):
        yield from ((ours, kind, identifier('Package', p.name)) for p in sorted(others))
    yield from ((identifier('Package', p.name), 'BUILD_TOOL_OF', ours) for p in sorted(tools))


def bill(version: str, products: list[Document], parts: dict[str, Contents]) -> Document:
    tools = {package(name) for name in BUILD_TOOLS}
    others = sorted(tools.union(*(p for part in parts.values() for p in part)))
    relations = [('SPDXRef-DOCUMENT', 'DESCRIBES', p['SPDXID']) for p in products]
    relations += [r for name, part in parts.items() for r in relations_of(name, part, tools)]
    body = {'packages': products + [debian(p) for p in others],
            'relationships': [{'spdxElementId': a, 'relationshipType': kind, 'relatedSpdxElement': b} for a, kind, b in relations]}
    digest = hashlib.sha256(json.dumps(body, sort_keys=True).encode()).hexdigest()
    created = datetime.datetime.fromtimestamp(EPOCH, datetime.timezone.utc)
    return {'spdxVersion': 'SPDX-2.3', 'dataLicense': 'CC0-1.0', 'SPDXID': 'SPDXRef-DOCUMENT', 'name': f'gwq-{version}',
            'documentNamespace': f'{HOME}spdx/gwq-{version}-{digest[:32]}',
            'creationInfo': {'created': f'{created:%Y-%m-%dT%H:%M:%SZ}',
                             'creators': ['Organization: The gwq developers', f'Tool: make_sbom.py-{version}']},
            **body}


def main(directory: str) -> None:
    build = pathlib.Path(directory)
    parts = parts_of(build)
    archives = sorted([*build.glob('*.deb'), *build.glob('*.ddeb')])
    for archive in archives:
        finish(archive, built_using(parts.get(archive.name.split('_')[0], Contents(set(), set(), set()))))
    products = [product(archive) for archive in [*archives, *sorted(build.glob('*.whl'))]]
    version = next(p['versionInfo'] for p in products if p['name'] == 'libgwq1')
    text = json.dumps(bill(version, products, parts), indent=2, ensure_ascii=False) + '\n'
    (build / f'gwq-{version}.spdx.json').write_text(text, encoding='utf-8')


if __name__ == '__main__':
    try:
        main(*sys.argv[1:])
    except subprocess.CalledProcessError as error:
        sys.exit(f'{error}\n{error.stderr}')
