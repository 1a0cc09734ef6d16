# SPDX-License-Identifier: MIT
"""Statuses as exceptions."""

from __future__ import annotations

from ._generated import OF_FUNCTIONS, STATUSES, UNKNOWN, VALUE, Status

_NO_ANSWER, _READ_FAILED, _REFUSED, _PIN_REFUSAL_1, _CANCELLED = -2, -11, -14, -18, -23
_OF_FUNCTION = {(function, status): text for status, functions, text in OF_FUNCTIONS for function in functions}
_PIN_ENTRIES = ("PN_GetPinBlock", "PN_GetPinBlockShowString")
_TELL_THE_TIME_OUT = (*_PIN_ENTRIES, "MP_CheckOut_All", "MP_ConfirmPDF", "MP_SignPDF", "MP_SignPDF_Voice")


def status_text(status: int, call: str = "") -> Status:
    """Name, cause and remedy of a status, in English and Chinese: for a function of the library, or in general."""
    general = STATUSES.get(status, VALUE if status > 0 else UNKNOWN)
    return _OF_FUNCTION.get((call, status), general)


class GwqError(Exception):
    """A call failed.

    call     the library's function
    status   what it returned; a positive one is the PIN pad's own status word
    text     its name, and cause and remedy for this function (`cause_zh` and `remedy_zh` in Chinese)
    """

    def __init__(self, call: str, status: int) -> None:
        self.call = call
        self.status = status
        self.text = status_text(status, call)
        super().__init__(f"{call}: {self._cause()} ({self.text.name}, status {status})")

    def _cause(self) -> str:
        return self.text.cause

    def __reduce__(self) -> tuple[type[GwqError], tuple[str, int]]:
        return type(self), (self.call, self.status)


class TimedOut(GwqError):
    """The customer's time ran out. `status` is -2, or -11 where the terminal leaves it to the library to notice."""


class Cancelled(GwqError):
    """The customer pressed Cancel, or Terminal.cancel() ended the call. `status` is -23, or -18 from the PIN pad."""


class OldSignature(GwqError):
    """Nobody signed: the terminal kept silent and gave back the signature that it had given before."""

    def __init__(self, call: str, status: int = _REFUSED) -> None:
        super().__init__(call, status)

    def _cause(self) -> str:
        return "The terminal kept silent and gave back the signature that it had given before."


def _kinds() -> dict[tuple[str, int], type[GwqError]]:
    kinds: dict[tuple[str, int], type[GwqError]] = {("GWQ_StartKeyboard", _READ_FAILED): TimedOut}
    for call in _TELL_THE_TIME_OUT:
        kinds[call, _NO_ANSWER] = TimedOut
    for call in _PIN_ENTRIES:
        kinds[call, _READ_FAILED] = TimedOut
        kinds[call, _PIN_REFUSAL_1] = Cancelled
    return kinds


_KINDS = _kinds()


def timed_out(call: str) -> TimedOut:
    """For an answer, not a status, by which the terminal says that the customer's time ran out."""
    return TimedOut(call, _NO_ANSWER)


def cancelled(call: str) -> Cancelled:
    return Cancelled(call, _CANCELLED)


def check(call: str, status: int) -> None:
    """Raises what a status stands for, unless it is success."""
    if status == _CANCELLED:
        raise cancelled(call)
    if status != 0:
        raise _KINDS.get((call, status), GwqError)(call, status)
