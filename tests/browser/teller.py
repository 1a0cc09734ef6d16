# SPDX-License-Identifier: MIT
"""A teller application that does as a test tells it: a call of gwq.Terminal as a JSON line in, its outcome as one out."""

import base64
import json
import pathlib
import sys

from gwq import GwqError, Signature, Teller, Terminal
from gwq.native import load


def plain(value):
    if isinstance(value, Signature):
        return {"picture": str(value.picture), "strokes": value.strokes.decode()}
    if isinstance(value, bytes):
        return base64.b16encode(value).decode()
    return str(value) if isinstance(value, pathlib.Path) else value


def outcome(terminal, call, args, options):
    if isinstance(options.get("teller"), dict):
        options["teller"] = Teller(**options["teller"])
    if call.endswith("_teller"):
        args = [Teller(**args[0])]
    if call == "load_working_key":
        args = [bytes.fromhex(args[0]), terminal.new_factor(), args[1]]
    if call == "library":  # a function that gwq.Terminal lacks
        name, *values = args
        return {"value": getattr(load(), name)(*(v.encode() if isinstance(v, str) else v for v in values))}
    try:
        return {"value": plain(getattr(terminal, call)(*args, **options))}
    except GwqError as failed:
        return {"failed": type(failed).__name__, "status": failed.status}


terminal = Terminal()
for line in sys.stdin:
    print("outcome", json.dumps(outcome(terminal, **json.loads(line))), flush=True)
