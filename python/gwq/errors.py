# SPDX-License-Identifier: MIT
"""Statuses as exceptions."""

from __future__ import annotations

from ._generated import OF_FUNCTIONS, STATUSES, UNKNOWN, VALUE, Status, StatusCode

_OF_FUNCTION = {(function, status): text for status, functions, text in OF_FUNCTIONS for function in functions}
_PIN_ENTRIES = ("PN_GetPinBlock", "PN_GetPinBlockShowString")
_WAIT_FOR_THE_CUSTOMER = (*_PIN_ENTRIES, "MP_CheckOut_All", "MP_ConfirmPDF", "MP_SignPDF", "MP_SignPDF_Voice")


def status_text(status: int, call: str = "") -> Status:
    """Name, cause and remedy of a status, in English and Chinese: for a function of the library, or in general."""
    general = STATUSES.get(status, VALUE if status > 0 else UNKNOWN)
    return _OF_FUNCTION.get((call, status), general)


class GwqError(Exception):
    """A call failed.

    call     the library's function
    status   what it returned, as in StatusCode; a positive one is the PIN pad's own status word
    text     its name, and cause and remedy for this function (`cause_zh` and `remedy_zh` in Chinese)
    """

    def __init__(self, call: str, status: int) -> None:
        self.call = call
        self.status = int(status)
        self.text = status_text(status, call)
        super().__init__(f"{call}: {self._cause()} ({self.text.name}, status {self.status})")

    def _cause(self) -> str:
        return self.text.cause

    def __reduce__(self) -> tuple[type[GwqError], tuple[str, int]]:
        return type(self), (self.call, self.status)


class TimedOut(GwqError):
    """The customer's time ran out. `status` is -2, or -11 where the terminal leaves it to the library to notice."""

    def _cause(self) -> str:
        return "The customer's time ran out."


class NoAnswer(GwqError):
    """The terminal refused, or answered nothing, or could not store a file. `status` is -2. Not the customer's doing:
    where the library has the same status for a customer whose time ran out, that time was not over."""

    def _cause(self) -> str:
        if (self.call, self.status) in _TIME_OUTS:
            return "The terminal refused or failed before the customer's time was over."
        return super()._cause()


class Cancelled(GwqError):
    """The customer pressed Cancel, or Terminal.cancel() ended the call. `status` is -23, or -18 from the PIN pad."""


class OldSignature(GwqError):
    """Nobody signed: the terminal kept silent and gave back the signature that it had given before."""

    def __init__(self, call: str, status: int = StatusCode.REFUSED) -> None:
        super().__init__(call, status)

    def _cause(self) -> str:
        return "The terminal kept silent and gave back the signature that it had given before."


# What the library returns both when the customer's time runs out and when the exchange fails earlier.
_TIME_OUTS = {("GWQ_StartKeyboard", StatusCode.READ_FAILED),
              *((call, StatusCode.READ_FAILED) for call in _PIN_ENTRIES),
              *((call, StatusCode.NO_ANSWER) for call in _WAIT_FOR_THE_CUSTOMER)}


def timed_out(call: str) -> TimedOut:
    """For an answer, not a status, by which the terminal says that the customer's time ran out."""
    return TimedOut(call, StatusCode.NO_ANSWER)


def cancelled(call: str) -> Cancelled:
    return Cancelled(call, StatusCode.CANCELLED)


def _kind(call: str, status: int, time_is_over: bool) -> type[GwqError]:
    if time_is_over and (call, status) in _TIME_OUTS:
        return TimedOut
    if status == StatusCode.CANCELLED or (status == StatusCode.PIN_REFUSAL_1 and call in _PIN_ENTRIES):
        return Cancelled
    return NoAnswer if status == StatusCode.NO_ANSWER else GwqError


def check(call: str, status: int, time_is_over: bool = False) -> None:
    """Raises what a status stands for, unless it is success. `time_is_over`: the customer's time has passed."""
    if status != StatusCode.OK:
        raise _kind(call, status, time_is_over)(call, status)
