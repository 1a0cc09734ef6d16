# SPDX-License-Identifier: MIT
"""Where terminals are plugged in."""

from __future__ import annotations

import ctypes
from dataclasses import dataclass

from .native import PlaceRecord, load

_ROOM = 4


@dataclass(frozen=True)
class TerminalPlace:
    """A terminal on USB.

    port_path  where it is plugged in, such as "1-2.3"
    may_open   whether this user may open it
    holder     the process that has it open, this one included, with its name; 0 also if this user may not see it
    """

    bus: int
    address: int
    vendor: int
    product: int
    port_path: str
    may_open: bool
    holder: int = 0
    holder_name: str = ""


def _place(record: PlaceRecord) -> TerminalPlace:
    return TerminalPlace(record.bus, record.address, record.vendor, record.product, record.port_path.decode(),
                         bool(record.may_open), record.holder, record.holder_name.decode(errors="replace"))


def find_terminals() -> list[TerminalPlace]:
    """The terminals on USB, of both identities, by bus and address. None of them is opened; any thread may ask, also
    during a call of another one."""
    library = load()
    room = _ROOM
    while True:
        records = (PlaceRecord * room)()
        count = library.GWQ_FindTerminals(ctypes.cast(records, ctypes.POINTER(PlaceRecord)), room)
        if count <= room:
            return [_place(record) for record in records[:count]]
        room = count
