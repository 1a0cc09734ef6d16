# SPDX-License-Identifier: MIT
"""The library itself: its functions, with their types."""

from __future__ import annotations

import ctypes
import os
from ctypes import POINTER
from typing import Any

from ._generated import PROTOTYPES
from .errors import Failure, Step


class Buffer:
    """The type of what a function reads or writes by a pointer to characters: None, something of ctypes, or bytes, of
    which it gets a copy."""

    @classmethod
    def from_param(cls, value: object) -> Any:
        if isinstance(value, bytes):
            return ctypes.create_string_buffer(value)
        if isinstance(value, (str, int)):
            raise TypeError(f"a buffer or bytes instead of {type(value).__name__} expected")
        return ctypes.c_void_p.from_param(value)


def _texts(**sizes: int) -> list[tuple[str, Any]]:
    return [(name, ctypes.c_char * size) for name, size in sizes.items()]


class FailureRecord(ctypes.Structure):
    """struct GwqFailure."""

    _fields_ = [
        *((name, ctypes.c_int) for name in ("status", "step", "error_source", "error", "bus", "address", "vendor",
                                            "product", "holder", "kernel_driver")),
        ("reserved", ctypes.c_int * 22),
        *_texts(function=64, error_text=128, port_path=32, tty=64, holder_name=32, advice=384, advice_zh=384,
                reserved_text=192)]


class PlaceRecord(ctypes.Structure):
    """struct GwqTerminalPlace."""

    _fields_ = [
        *((name, ctypes.c_int) for name in ("bus", "address", "vendor", "product", "may_open", "holder")),
        ("reserved", ctypes.c_int * 10), *_texts(port_path=32, holder_name=32)]


_SYSTEM_ERROR = 1

_TYPES: dict[str, Any] = {
    "void": None,
    "int": ctypes.c_int,
    "unsigned int": ctypes.c_uint,
    "char": ctypes.c_char,
    "unsigned char": ctypes.c_ubyte,
    "void*": ctypes.c_void_p,
    "const char*": ctypes.c_char_p,
    "char*": Buffer,
    "unsigned char*": Buffer,
    "const unsigned char*": Buffer,
    "int*": POINTER(ctypes.c_int),
    "unsigned int*": POINTER(ctypes.c_uint),
    "unsigned short*": POINTER(ctypes.c_ushort),
    "const unsigned short*": POINTER(ctypes.c_ushort),
    "GwqEndOfRead": ctypes.c_void_p,
    "GwqProgress": ctypes.c_void_p,
    "TransMssionLinux_t*": ctypes.c_void_p,
    "struct GwqFailure*": POINTER(FailureRecord),
    "struct GwqTerminalPlace*": POINTER(PlaceRecord),
}
_RESULTS: dict[str, Any] = {**_TYPES, "char*": ctypes.c_char_p, "unsigned char*": ctypes.c_void_p}

# The types of the arguments; a function of C's "..." takes more.
FUNCTIONS: dict[str, list[Any]] = {
    name: [_TYPES[parameter] for parameter in parameters if parameter != "..."]
    for name, (_, *parameters) in PROTOTYPES.items()
}


def _opened() -> ctypes.CDLL:
    named = os.environ.get("GWQ_LIBRARY")
    try:
        return ctypes.CDLL(named or "libgwq.so.1")
    except OSError as error:
        sought = (f"GWQ_LIBRARY names {named}, which cannot be loaded" if named else
                  "libgwq.so.1 was looked for in LD_LIBRARY_PATH and in the loader's directories, and cannot be loaded")
        remedy = "Install the Debian package libgwq1, or set GWQ_LIBRARY to the path of libgwq.so."
        raise OSError(f"{sought} ({error}). {remedy}") from error


def load() -> ctypes.CDLL:
    """The library, with the types of its functions set. An older one may lack some of them."""
    library = _opened()
    for name, arguments in FUNCTIONS.items():
        function = getattr(library, name, None)
        if function is not None:
            function.argtypes = arguments
            function.restype = _RESULTS[PROTOTYPES[name][0]]
    return library


def last_failure(library: Any, call: str, status: int) -> Failure | None:
    """What the library says that this thread's last call failed of, if that was this one."""
    get_failure = getattr(library, "GWQ_GetFailure", None)
    record = FailureRecord()
    if get_failure is None or get_failure(ctypes.byref(record)) != 0:
        return None
    if (record.function.decode(), record.status) != (call, status):
        return None

    def text(name: str) -> str:
        content: bytes = getattr(record, name)
        return content.decode(errors="replace")

    return Failure(
        Step(record.step), record.error, record.error_source == _SYSTEM_ERROR, text("error_text"), record.bus,
        record.address, record.vendor, record.product, text("port_path"), text("tty"), record.holder,
        text("holder_name"), bool(record.kernel_driver), text("advice"), text("advice_zh"))
