# SPDX-License-Identifier: MIT
"""A host that exits while a daemon thread of it waits: exits_while_waiting.py CALL FILE MILLISECONDS, as in
exits_while_waiting.c."""
import ctypes
import sys
import threading
import time

from gwq import GwqError, Terminal
from gwq.native import load


def wait(call, file):
    if call == 'pin':
        load().GWQ_ReadPin(0, 115200, 0, 60, ctypes.create_string_buffer(1040), 15)
    elif call == 'push':
        Terminal().push(file)
    else:
        Terminal().pull('/tmp/large.bin', file)


def run(call, file):
    try:
        wait(call, file)
    except GwqError:
        pass


def main():
    call, file, milliseconds = sys.argv[1:]
    waiting = threading.Thread(target=run, args=(call, file), daemon=True)
    waiting.start()
    time.sleep(int(milliseconds) / 1000)
    print('exits at', int(time.monotonic() * 1000), flush=True)
    sys.exit(7 if waiting.is_alive() else 1)


main()
