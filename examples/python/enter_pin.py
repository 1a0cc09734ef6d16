#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Lets the customer on USB key a PIN and prints its block for the bank: enter_pin.py KEY VERIFY ACCOUNT.

KEY is the working key as the bank prepared it for this pad, in hexadecimal; VERIFY is what the pad checks it by.
"""
import sys

from gwq import Algorithm, GwqError, Terminal

DIGITS = 6


def main(key: str, verify: str, account: str) -> None:
    terminal = Terminal()
    terminal.set_pin_entry(Algorithm.TRIPLE_DES, DIGITS)
    terminal.load_working_key(bytes.fromhex(key), terminal.new_factor(), verify)
    block = terminal.pin_block(account, algorithm=Algorithm.TRIPLE_DES, digits=DIGITS,
                               prompt="Please key your PIN")
    print(f"PIN block: {block.hex().upper()}")


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    try:
        main(*sys.argv[1:])
    except GwqError as failed:
        sys.exit(f"{failed} {failed.text.remedy}")
