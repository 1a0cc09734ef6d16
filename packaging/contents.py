# SPDX-License-Identifier: MIT
"""What of other packages is in a built program or library: compiled in, embedded, linked."""
from __future__ import annotations

import functools
import os
import pathlib
import re
import subprocess
import typing
import xml.etree.ElementTree as ElementTree
from collections.abc import Iterable

# Its headers only declare what the kernel offers.
DECLARATIONS_ONLY = {'linux'}


class Package(typing.NamedTuple):
    name: str
    version: str
    source: str
    source_version: str


def run(*command: str | os.PathLike[str]) -> str:
    return subprocess.run(command, check=True, capture_output=True, text=True, env={**os.environ, 'LC_ALL': 'C'}).stdout


@functools.lru_cache(None)
def package(name: str) -> Package:
    fields = run('dpkg-query', '-W', '-f=${Package}\t${Version}\t${source:Package}\t${source:Version}\n', name)
    name_, version, source, source_version = fields.splitlines()[0].split('\t')
    return Package(name_, version, source, source_version)


def names_of(path: str) -> set[str]:
    """How the package database may know a file: some stand there as they were before /lib became a link."""
    real = os.path.realpath(path)
    return {os.path.normpath(path), real, real.removeprefix('/usr')}


def owners(paths: Iterable[str]) -> set[Package]:
    """The installed packages that files belong to; a file of none counts for nothing."""
    names = sorted(name for path in paths for name in names_of(path))
    # It complains of each name that it does not know.
    found = subprocess.run(['dpkg-query', '-S', *names], capture_output=True, text=True, check=False).stdout
    lines = (line for line in found.splitlines() if not line.startswith('diversion '))
    return {package(line.split(': ')[0].split(', ')[0]) for line in lines}


def linked_statically(link_map: pathlib.Path) -> set[str]:
    """Start files and members of archives, out of the linker's own account."""
    text = link_map.read_text(encoding='utf-8')
    members = re.findall(r'^(/\S+\.a)\(\S+\)$', text, re.M)
    return set(members) | set(re.findall(r'^LOAD (/\S+\.o)$', text, re.M))


def linked_dynamically(binary: pathlib.Path) -> tuple[set[Package], set[Package]]:
    """What it names itself, and all that comes with that."""
    needed = set(re.findall(r'\(NEEDED\).*\[(.*)\]', run('readelf', '-d', binary)))
    loaded: dict[str, str] = dict(re.findall(r'^\s*(\S+) => (/\S+)', run('ldd', binary), re.M))
    # Some are not asked for by name but by path, such as the loader.
    return owners(path for name, path in loaded.items() if name in needed), owners(loaded.values())


def headers(build: pathlib.Path, directory: str) -> set[str]:
    """Headers of other packages that were read for the objects in a directory of the build."""
    found: set[str] = set()
    wanted = False
    for line in run('ninja', '-C', str(build), '-t', 'deps').splitlines():
        if line and not line.startswith(' '):
            wanted = line.startswith(f'{directory}/')
        elif wanted and line.strip().startswith('/usr/'):
            found.add(line.strip())
    return found


def resources(listing: pathlib.Path, directories: list[str]) -> set[str]:
    """Files that a list of resources takes from other packages."""
    names = [f.text for f in ElementTree.parse(listing).iter('file') if f.text]
    found = (pathlib.Path(d) / name for name in names for d in directories)
    return {str(path) for path in found if path.is_file()}


class Contents(typing.NamedTuple):
    """What is in a package of ours, as sets of Package."""
    compiled_in: set[Package]
    embedded: set[Package]
    linked: set[Package]


def contents(build: pathlib.Path, binary: pathlib.Path, link_map: pathlib.Path, directory: str) -> Contents:
    direct, loaded = linked_dynamically(binary)
    dynamic_sources = {p.source for p in loaded} | DECLARATIONS_ONLY
    compiled_in = owners(linked_statically(link_map))
    compiled_in |= {p for p in owners(headers(build, directory)) if p.source not in dynamic_sources}
    return Contents(compiled_in, set(), direct)
