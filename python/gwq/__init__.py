# SPDX-License-Identifier: MIT
"""Drives the customer terminal at a bank counter.

    from gwq import Cancelled, Rating, Terminal, TimedOut

    terminal = Terminal()
    try:
        rating = terminal.rate(seconds=30)
    except Cancelled:
        rating = Rating.NONE

Calls that wait for the customer block, without holding the interpreter's lock; another thread ends them with
Terminal.cancel(). Otherwise one thread at a time calls. What a customer answers comes back as Answer or Rating; a
customer who cancels what they should key, sign or pay raises Cancelled, and one whose time runs out TimedOut. Any other
call that fails raises GwqError, whose `status` is the library's, by name in StatusCode, and whose `failure` tells what it
failed of; NoAnswer is the GwqError of a terminal that refused or did not answer.

The library is found as the loader finds it; the environment variable GWQ_LIBRARY names another file. What Terminal
lacks can be called on gwq.native.load(), which is the library itself.
"""

from ._generated import VERSION as __version__
from ._generated import StatusCode
from .errors import Cancelled, Failure, GwqError, NoAnswer, OldSignature, Step, TimedOut
from .places import TerminalPlace, find_terminals
from .results import Answer, Name, Rating, Signature
from .settings import Algorithm, Display, EndRule, PublicKeyType
from .terminal import Teller, Terminal

__all__ = ["Algorithm", "Answer", "Cancelled", "Display", "EndRule", "Failure", "GwqError", "Name", "NoAnswer",
           "OldSignature", "PublicKeyType", "Rating", "Signature", "StatusCode", "Step", "Teller", "Terminal", "TerminalPlace",
           "TimedOut", "__version__", "find_terminals"]
