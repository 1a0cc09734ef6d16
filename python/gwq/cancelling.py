# SPDX-License-Identifier: MIT
"""The cancels of this process. The library has one link, so that a cancel ends whatever call is running."""

from __future__ import annotations

import threading
from collections.abc import Iterator
from contextlib import contextmanager


class Cancels:
    """Tells whether a cancel fell into a call."""

    def __init__(self) -> None:
        self._changed = threading.Condition()
        self._begun = 0
        self._ended = 0

    @contextmanager
    def cancelling(self) -> Iterator[None]:
        with self._changed:
            self._begun += 1
        try:
            yield
        finally:
            with self._changed:
                self._ended += 1
                self._changed.notify_all()

    def mark(self) -> int:
        """To be asked about later. A cancel that is under way counts as one that comes later."""
        with self._changed:
            return self._ended

    def mark_when_idle(self) -> int:
        """As mark(), once no cancel is under way."""
        with self._changed:
            self._changed.wait_for(lambda: self._begun == self._ended)
            return self._ended

    def came_since(self, mark: int) -> bool:
        with self._changed:
            return self._begun > mark
