# SPDX-License-Identifier: MIT
"""JSON with comments in the manner of C++, as scenarios are written."""
import json
import re
from pathlib import Path
from typing import Any

_STRING_OR_COMMENT = re.compile(r'("(?:[^"\\]|\\.)*")|//[^\n]*|/\*.*?\*/', re.DOTALL)


def load(path: Path) -> Any:
    return json.loads(_STRING_OR_COMMENT.sub(lambda found: found.group(1) or "", path.read_text()))


def shipped_scenarios(directory: Path) -> "list[Path]":
    return sorted(path for path in directory.glob("*.json") if path.name != "scenario.schema.json")
