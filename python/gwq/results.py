# SPDX-License-Identifier: MIT
"""What calls return."""

from __future__ import annotations

from dataclasses import dataclass
from enum import IntEnum
from pathlib import Path


class Answer(IntEnum):
    """What the customer answers to a question. Only CONFIRMED counts as true. Equal to the library's numbers."""

    CONFIRMED = 0
    REFUSED = 1
    OTHER = 4  # inform(): the terminal's key 2, or an answer that is no key

    def __bool__(self) -> bool:
        return self is Answer.CONFIRMED


class Rating(IntEnum):
    """The key by which the customer rates. Which of the three is the best is the terminal's affair (the virtual
    terminal's is THREE)."""

    UNKNOWN = 0  # an answer that is no rating
    ONE = 1
    TWO = 2
    THREE = 3
    NONE = 4  # the customer does not want to rate, or did not in time


class Name(str):
    """The name of a file on the terminal, out of its lists: the text for people, `raw` for the terminal, whose
    encoding is GBK. Handed back to delete_photo() and delete_pictures() it names just this file."""

    raw: bytes

    def __new__(cls, raw: bytes) -> Name:
        name = super().__new__(cls, text_of(raw))
        name.raw = raw
        return name

    def __getnewargs__(self) -> tuple[bytes]:  # type: ignore[override]
        return (self.raw,)


@dataclass(frozen=True)
class Signature:
    """A customer's signature: the picture's file, and the strokes as the terminal wrote them."""

    picture: Path
    strokes: bytes


def is_utf8(raw: bytes) -> bool:
    try:
        raw.decode()
    except UnicodeDecodeError:
        return False
    return True


def text_of(raw: bytes) -> str:
    """What the terminal wrote: UTF-8, or else GBK."""
    return raw.decode() if is_utf8(raw) else raw.decode("gb18030", "replace")
