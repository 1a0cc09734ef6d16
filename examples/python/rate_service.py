#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Asks the customer on USB how the service was; a teller who does not want to wait presses Ctrl-C."""
import sys
from concurrent.futures import ThreadPoolExecutor

from gwq import GwqError, Teller, Terminal


def main() -> None:
    terminal = Terminal()
    terminal.set_teller(Teller("王芳", "0123", stars=5))
    with ThreadPoolExecutor(1) as pool:
        try:
            rating = pool.submit(terminal.rate, seconds=30)
            print(f"rating: {rating.result():d}")
        except KeyboardInterrupt:
            terminal.cancel()
            raise


if __name__ == "__main__":
    try:
        main()
    except (GwqError, KeyboardInterrupt) as failed:
        sys.exit(f"no rating: {failed}")
