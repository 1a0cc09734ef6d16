"""Statuses as exceptions."""

from __future__ import annotations

from ._generated import STATUSES, UNKNOWN, VALUE, Status


def status_text(status: int) -> Status:
    """Name, cause and remedy of a status, in English and Chinese."""
    return STATUSES.get(status, VALUE if status > 0 else UNKNOWN)


class GwqError(Exception):
    """A call failed.

    call     the library's function
    status   what it returned; a positive one is the PIN pad's own status word
    text     its name, cause and remedy (`cause_zh` and `remedy_zh` in Chinese)
    """

    def __init__(self, call: str, status: int) -> None:
        self.call = call
        self.status = status
        self.text = status_text(status)
        super().__init__(f"{call}: {self.text.cause} ({self.text.name}, status {status})")

    def __reduce__(self) -> tuple[type[GwqError], tuple[str, int]]:
        return type(self), (self.call, self.status)


class TimedOut(GwqError):
    """The customer, or the terminal, did not answer in time (-2)."""


class Cancelled(GwqError):
    """The customer pressed Cancel, or another thread cancelled: -23, or what the call came to by that."""


def check(call: str, status: int) -> None:
    """Raises what a status stands for, unless it is success."""
    if status != 0:
        raise {-2: TimedOut, -23: Cancelled}.get(status, GwqError)(call, status)
