# SPDX-License-Identifier: MIT
"""Builds the module's wheel and source archive by the standard library alone, so that `pip install` needs neither an
index nor a package for building (PEP 517, PEP 660)."""
from __future__ import annotations

import base64
import hashlib
import io
import pathlib
import re
import tarfile
import zipfile
from typing import Any, Optional

HERE = pathlib.Path(__file__).resolve().parent
Settings = Optional[dict[str, Any]]  # of the caller; none means anything here

LONG_AGO = (1980, 1, 1, 0, 0, 0)  # so that the same source gives the same wheel


def _field(pattern: str, file: str) -> str:
    found = re.search(pattern, (HERE / file).read_text(encoding="utf-8"), re.MULTILINE)
    assert found, f"{file} has no {pattern}"
    return found[1]


def _project(field: str) -> str:
    return _field(rf'^{field} = "(.*)"$', "pyproject.toml")


def _version() -> str:
    return _field(r'^VERSION = "(.*)"$', "gwq/_generated.py")


def _name() -> str:
    return f'{_project("name")}-{_version()}'


def _metadata() -> str:
    return (f'Metadata-Version: 2.1\nName: {_project("name")}\nVersion: {_version()}\nSummary: {_project("description")}\n'
            f'License: MIT\nRequires-Python: {_project("requires-python")}\n')


def _module_files() -> list[pathlib.Path]:
    return sorted(path for path in (HERE / "gwq").iterdir() if path.suffix in (".py", ".typed"))


def _wheel(directory: str, contents: dict[str, bytes]) -> str:
    info = f"{_name()}.dist-info"
    contents = dict(contents)
    contents[f"{info}/METADATA"] = _metadata().encode()
    contents[f"{info}/WHEEL"] = b"Wheel-Version: 1.0\nGenerator: gwq_build\nRoot-Is-Purelib: true\nTag: py3-none-any\n"
    licence = HERE.parent / "LICENSE"
    if licence.is_file():
        contents[f"{info}/LICENSE"] = licence.read_bytes()
    record = [f"{name},sha256={_digest(content)},{len(content)}" for name, content in contents.items()]
    contents[f"{info}/RECORD"] = "\n".join([*record, f"{info}/RECORD,,", ""]).encode()
    wheel = f"{_name()}-py3-none-any.whl"
    with zipfile.ZipFile(pathlib.Path(directory) / wheel, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, content in contents.items():
            entry = zipfile.ZipInfo(name, LONG_AGO)
            entry.external_attr = 0o100644 << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, content)
    return wheel


def _digest(content: bytes) -> str:
    return base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()


def build_wheel(wheel_directory: str, config_settings: Settings = None, metadata_directory: str | None = None) -> str:
    return _wheel(wheel_directory, {f"gwq/{path.name}": path.read_bytes() for path in _module_files()})


def build_editable(wheel_directory: str, config_settings: Settings = None, metadata_directory: str | None = None) -> str:
    return _wheel(wheel_directory, {"gwq.pth": f"{HERE}\n".encode()})


def build_sdist(sdist_directory: str, config_settings: Settings = None) -> str:
    archive_name = f"{_name()}.tar.gz"
    with tarfile.open(pathlib.Path(sdist_directory) / archive_name, "w:gz") as archive:
        for path in (*_module_files(), HERE / "pyproject.toml", HERE / "gwq_build.py"):
            archive.add(path, f"{_name()}/{path.relative_to(HERE)}")
        metadata = _metadata().encode()
        entry = tarfile.TarInfo(f"{_name()}/PKG-INFO")
        entry.size = len(metadata)
        archive.addfile(entry, io.BytesIO(metadata))
    return archive_name
