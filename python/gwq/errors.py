# SPDX-License-Identifier: MIT
"""Statuses as exceptions."""

from __future__ import annotations

from dataclasses import dataclass
from enum import IntEnum

from ._generated import OF_FUNCTIONS, STATUSES, UNKNOWN, VALUE, Status, StatusCode

_OF_FUNCTION = {(function, status): text for status, functions, text in OF_FUNCTIONS for function in functions}
_PIN_ENTRIES = ("PN_GetPinBlock", "PN_GetPinBlockShowString")
_WAIT_FOR_THE_CUSTOMER = (*_PIN_ENTRIES, "MP_CheckOut_All", "MP_ConfirmPDF", "MP_SignPDF", "MP_SignPDF_Voice")


def status_text(status: int, call: str = "") -> Status:
    """Name, cause and remedy of a status, in English and Chinese: for a function of the library, or in general."""
    general = STATUSES.get(status, VALUE if status > 0 else UNKNOWN)
    return _OF_FUNCTION.get((call, status), general)


class Step(IntEnum):
    """Where a call failed."""

    NONE = 0
    ARGUMENT = 1
    LOCAL_FILE = 2
    FIND = 3
    PERMISSION = 4
    OPEN = 5
    CLAIM = 6
    SEND = 7
    WAIT = 8
    ANSWER = 9


@dataclass(frozen=True)
class Failure:
    """What a call failed of. A number that is not known is 0, a text that is not known empty.

    error              errno if `is_system_error`, else libusb's; `error_text` says it
    bus to tty         the device: on USB, or the serial line
    holder             the process that has it open, with its name
    is_kernel_driver   the kernel's driver could not be detached
    advice, advice_zh  what to do, one sentence
    """

    step: Step
    error: int = 0
    is_system_error: bool = False
    error_text: str = ""
    bus: int = 0
    address: int = 0
    vendor: int = 0
    product: int = 0
    port_path: str = ""
    tty: str = ""
    holder: int = 0
    holder_name: str = ""
    is_kernel_driver: bool = False
    advice: str = ""
    advice_zh: str = ""


class GwqError(Exception):
    """A call failed.

    call     the library's function
    status   what it returned, as in StatusCode; a positive one is the PIN pad's own status word
    text     its name, and cause and remedy for this function (`cause_zh` and `remedy_zh` in Chinese)
    failure  what the call failed of; None where the library returned another status than this
    """

    def __init__(self, call: str, status: int, failure: Failure | None = None) -> None:
        self.call = call
        self.status = int(status)
        self.text = status_text(status, call)
        self.failure = failure
        super().__init__(f"{call}: {self._cause()} ({self.text.name}, status {self.status}){self._sentence()}")

    def _cause(self) -> str:
        return self.text.cause

    def _sentence(self) -> str:
        """What to do, where it is more than the status's remedy."""
        advice = self.failure.advice if self.failure else ""
        return "" if advice in ("", self.text.remedy) else " " + advice

    def __reduce__(self) -> tuple[type[GwqError], tuple[str, int, Failure | None]]:
        return type(self), (self.call, self.status, self.failure)


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

    def __init__(self, call: str, status: int = StatusCode.REFUSED, failure: Failure | None = None) -> None:
        super().__init__(call, status, failure)

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


def error_of(call: str, status: int, failure: Failure | None, time_is_over: bool = False) -> GwqError:
    """What a status that is not success stands for. `time_is_over`: the customer's time has passed."""
    return _kind(call, status, time_is_over)(call, status, failure)
