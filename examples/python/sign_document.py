#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Has the customer agree to a document and sign it, on the terminal on USB: sign_document.py DOCUMENT PICTURE."""
import sys

from gwq import Answer, GwqError, Terminal


def main(document: str, picture: str) -> None:
    terminal = Terminal()
    if terminal.confirm_documents(document) is not Answer.CONFIRMED:
        sys.exit("the customer does not agree")
    signature = terminal.sign_documents(document, picture, place="1,300,100", voice="请在屏幕上签名")
    points = signature.strokes.count(b"\n")
    print(f"signed: {signature.picture}, {points} points of the pen")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    try:
        main(*sys.argv[1:])
    except GwqError as failed:
        sys.exit(f"not signed: {failed} {failed.text.remedy}")
    except OSError as failed:
        sys.exit(f"not signed: {failed}")
