# SPDX-License-Identifier: MIT
"""What calls take. Each is the number that goes to the terminal, which gives it its meaning; these are the virtual
terminal's meanings. A terminal that knows other numbers can be given those instead."""

from __future__ import annotations

from enum import IntEnum


class Algorithm(IntEnum):
    """The PIN pad's encryption types."""

    TRIPLE_DES = 0
    SM4 = 1


class PublicKeyType(IntEnum):
    """The PIN pad's own pairs of keys."""

    RSA = 1
    SM2 = 2


class EndRule(IntEnum):
    """What ends a PIN entry."""

    ENTER = 0
    LAST_DIGIT = 1  # or Enter


class Display(IntEnum):
    """What the customer sees of the digits that they key."""

    SHOWN = 0
    STARS = 1
    HIDDEN = 2  # not for ask_digits()
