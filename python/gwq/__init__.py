"""Drives the customer terminal at a bank counter.

    from gwq import Cancelled, Terminal

    terminal = Terminal()
    try:
        rating = terminal.rate(seconds=30)
    except Cancelled:
        rating = 0

Calls that wait for the customer block, without holding the interpreter's lock; another thread ends them with
Terminal.cancel(). Otherwise one thread at a time calls. A call that fails raises GwqError, whose `status` is the
library's; what it means for one function in particular stands in the header that declares it.

The library is found as the loader finds it; the environment variable GWQ_LIBRARY names another file. What Terminal
lacks can be called on gwq.native.load(), which is the library itself.
"""

from ._generated import VERSION as __version__
from .errors import Cancelled, GwqError, TimedOut
from .terminal import Signature, Teller, Terminal

__all__ = ["Cancelled", "GwqError", "Signature", "Teller", "Terminal", "TimedOut", "__version__"]
