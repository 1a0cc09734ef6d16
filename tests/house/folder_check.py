# SPDX-License-Identifier: MIT
"""What the checks of a folder share: they print what is wrong, a line each, and fail if there is something."""
from __future__ import annotations

import pathlib
import sys
from collections.abc import Callable, Iterator


def main(problems: Callable[[pathlib.Path], Iterator[str]], in_order: str) -> None:
    """Checks the folder that the command line names, and ends the program."""
    found = list(problems(pathlib.Path(sys.argv[1])))
    print('\n'.join(found) or in_order)
    sys.exit(1 if found else 0)
