#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The bill of materials is what SPDX 2.3 demands, and tells of the packages beside it: check_sbom.py DIRECTORY"""
import hashlib
import json
import pathlib
import re
import subprocess
import sys

DOCUMENT_FIELDS = {'spdxVersion', 'dataLicense', 'SPDXID', 'name', 'documentNamespace', 'creationInfo', 'packages', 'relationships'}
PACKAGE_FIELDS = {'SPDXID', 'name', 'versionInfo', 'downloadLocation', 'filesAnalyzed', 'licenseConcluded', 'licenseDeclared',
                  'copyrightText', 'externalRefs'}
RELATIONS = {'DESCRIBES', 'STATIC_LINK', 'DYNAMIC_LINK', 'CONTAINS', 'BUILD_TOOL_OF'}
IDENTIFIER = re.compile(r'SPDXRef-[A-Za-z0-9.-]+')
# Known to be in the packages, however the bill is made.
MUST_HOLD = {('libgwq1', 'gcc-12'), ('gwq-terminal', 'pdf.js'), ('gwq-terminal', 'nlohmann-json3'), ('gwq-terminal', 'cli11')}


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def form(bill):
    """What is wrong with the document as such."""
    if set(bill) != DOCUMENT_FIELDS or bill['spdxVersion'] != 'SPDX-2.3' or bill['dataLicense'] != 'CC0-1.0':
        yield 'it is no document of SPDX 2.3'
    if not re.fullmatch(r'\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ', bill['creationInfo']['created']):
        yield 'its date is none'
    if not all(re.match(r'(Person|Organization|Tool): \S', creator) for creator in bill['creationInfo']['creators']):
        yield 'a creator is of no kind'
    names = [p['SPDXID'] for p in bill['packages']]
    yield from (f'{name} stands there twice' for name in set(names) if names.count(name) > 1)
    for p in bill['packages']:
        if not PACKAGE_FIELDS <= set(p) or not IDENTIFIER.fullmatch(p['SPDXID']):
            yield f'{p["name"]} lacks a field'
    known = {*names, 'SPDXRef-DOCUMENT'}
    for r in bill['relationships']:
        if not {r['spdxElementId'], r['relatedSpdxElement']} <= known or r['relationshipType'] not in RELATIONS:
            yield f'a relation of nothing: {r}'


def files(bill, directory):
    """What differs between the archives and what the bill says of them."""
    listed = {p['packageFileName']: p['checksums'][0]['checksumValue'] for p in bill['packages'] if 'checksums' in p}
    there = {f.name: hashlib.sha256(f.read_bytes()).hexdigest() for f in directory.iterdir() if f.suffix in ('.deb', '.ddeb', '.whl')}
    yield from (f'{name} is not as listed' for name in sorted(listed.keys() | there.keys()) if listed.get(name) != there.get(name))


def sources(bill):
    """{(package of ours, source)} of what is compiled in or embedded; the versions are those installed."""
    by_name = {p['SPDXID']: p for p in bill['packages']}
    for r in bill['relationships']:
        if r['relationshipType'] in ('STATIC_LINK', 'CONTAINS'):
            part = by_name[r['relatedSpdxElement']]
            installed = run('dpkg-query', '-W', '-f=${Version} ${source:Package} ${source:Version}\n', part['name']).splitlines()
            if f'{part["versionInfo"]} {part["sourceInfo"]}' not in installed:
                sys.exit(f'{part["name"]} is not of the version installed')
            yield by_name[r['spdxElementId']]['name'], *part['sourceInfo'].split()


def built_using(directory):
    for archive in directory.glob('*.deb'):
        name, using = run('dpkg-deb', '-W', '--showformat=${Package}\t${Built-Using}', archive).split('\t')
        yield from ((name, source, version) for source, version in re.findall(r'(\S+) \(= (\S+)\)', using))


def main(directory):
    directory = pathlib.Path(directory)
    file, = directory.glob('*.spdx.json')
    bill = json.loads(file.read_text(encoding='utf-8'))
    wrong = [*form(bill), *files(bill, directory)]
    held = set(sources(bill))
    wrong += [f'Built-Using differs: {part}' for part in sorted(held ^ set(built_using(directory)))]
    wrong += [f'not listed: {part}' for part in sorted(MUST_HOLD - {(name, source) for name, source, _ in held})]
    if wrong:
        sys.exit('\n'.join(f'{file.name}: {w}' for w in wrong))
    print(f'{file.name}: {len(bill["packages"])} packages, {len(bill["relationships"])} relations')


main(*sys.argv[1:])
