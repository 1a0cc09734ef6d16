# SPDX-License-Identifier: MIT
"""The scenarios' schema: schema_test.py GWQ_TERMINAL SHIPPED DOCUMENT.

It takes what the program takes, and refuses what that refuses: a scenario with everything in it, and each of its values
spoilt."""
import copy
import json
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import jsonschema
from commented_json import load, shipped_scenarios

TERMINAL, SHIPPED, DOCUMENT = "", Path(), Path()

WHOLE = {
    "$schema": "scenario.schema.json", "name": "whole", "description": "Everything.", "timeout_s": 9,
    "terminal": {"usb": "1209:0001", "serial": 78, "tzg": True, "version": "V1", "build_date": "20240101", "keys": "k",
                 "files": [{"path": "/tmp/a", "text": "a"}, {"path": "/tmp/b", "size": 3}]},
    "customer": {"pin_entries": [{"pin": "1234", "after_ms": 5}, {"cancel": True}, {"walk_away": True}],
                 "number_entries": [{"number": "42"}],
                 "screens": [{"confirm": True, "on": "html"}, {"key": 1}, {"digits": "12"}, {"sign": True},
                             {"sign": [[[1, 2], [3, 4]]]}, {"answer": "x"}, {"walk_away": True}]},
    "faults": {"refuse": ["data:2"], "fail": ["end"], "ignore": ["start"], "storage_limit": 100000000,
               "accept_cut_packets": True,
               "pull": {"bad_check": ["end"], "announce_length": 1, "packet_type": 4, "stop_after_reports": 3,
                        "empty_packets_first": [0]}},
    "hostile": "seed=7,drop=0",
    "events": [{"after_ms": 9, "unplug": True}, {"when": "screen html", "time": 2, "plug": True},
               {"when": "command UPDATE", "walk_away": True}, {"when": "PIN asked", "slow_ms": 5}],
    "expect": [{"exit_status": 0}, {"exit_status": "failure"}, {"output_contains": "x"}, {"output_lacks": "x"},
               {"at_most_s": 3}, {"screens": ["html", {"kind": "html", "contains": "x"}]}, {"commands": ["UPDATE"]},
               {"screen": "html", "contains": "x", "times": 1}, {"command": "UPDATE", "never": True},
               {"stored": "x", "size": 3, "at_least": 1, "at_most": 2}, {"pin_asked": True}, {"pin_keyed": True},
               {"unplugged": True}, {"last_screen": "idle"}],
}
WRONG = (None, -1, 2.5, "?", "", [], {}, {"surplus": 1}, False)


def places(value, place=()):
    """The way to each value inside."""
    items = value.items() if isinstance(value, dict) else enumerate(value) if isinstance(value, list) else ()
    for key, inner in items:
        yield (*place, key)
        yield from places(inner, (*place, key))


def at(value, place):
    for key in place:
        value = value[key]
    return value


class Schema(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory(prefix="gwq-schema-")
        self.addCleanup(self.directory.cleanup)
        Path(self.directory.name, "k").mkdir()
        self.schema = load(SHIPPED / "scenario.schema.json")
        jsonschema.Draft7Validator.check_schema(self.schema)
        self.validator = jsonschema.Draft7Validator(self.schema)

    def program_refuses(self, scenario):
        """It reads all files before it does anything, and the second is never there."""
        path = Path(self.directory.name, "scenario.json")
        path.write_text(json.dumps(scenario))
        outcome = subprocess.run([TERMINAL, "check", str(path), "no.json", "--", "true"], capture_output=True,
                                 text=True, timeout=60, check=False)
        self.assertEqual(outcome.returncode, 2, outcome)
        good = "there is no scenario file no.json" in outcome.stderr
        self.assertNotEqual(good, "scenario.json" in outcome.stderr, outcome.stderr)
        return not good

    def test_takes_those_that_come_with_the_program(self):
        self.assertEqual(len(shipped_scenarios(SHIPPED)), 10)
        for path in shipped_scenarios(SHIPPED):
            self.assertEqual([error.message for error in self.validator.iter_errors(load(path))], [], path)

    def test_and_the_program_take_what_the_manual_shows(self):
        for shown in re.findall(r"```json\n(.*?)```", DOCUMENT.read_text(), re.DOTALL):
            path = Path(self.directory.name, "shown.json")
            path.write_text(shown)
            self.assertEqual([error.message for error in self.validator.iter_errors(load(path))], [])
            self.assertFalse(self.program_refuses(load(path)))
        names = set(re.findall(r"`([^`\n]+)`", re.sub(r"```.*?```", "", DOCUMENT.read_text(), flags=re.DOTALL)))
        self.assertLessEqual(set(self.schema["definitions"]["command_name"]["enum"]), names)
        self.assertLessEqual(set(self.schema["definitions"]["screen_kind"]["enum"]), names)
        self.assertLessEqual({path.stem for path in shipped_scenarios(SHIPPED)}, names)

    def test_knows_the_commands_that_the_program_knows(self):
        every = [{"command": name} for name in self.schema["definitions"]["command_name"]["enum"]]
        self.assertFalse(self.program_refuses({**WHOLE, "expect": every}))

    def test_and_the_program_take_a_scenario_with_everything(self):
        self.assertEqual([error.message for error in self.validator.iter_errors(WHOLE)], [])
        self.assertFalse(self.program_refuses(WHOLE))

    def test_and_the_program_are_of_one_mind_about_what_is_spoilt(self):
        refused = 0
        for number, place in enumerate(places(WHOLE)):
            wrong = WRONG[number % len(WRONG)]
            spoilt = copy.deepcopy(WHOLE)
            at(spoilt, place[:-1])[place[-1]] = wrong
            self.assertEqual(self.validator.is_valid(spoilt), not self.program_refuses(spoilt), (place, wrong))
            refused += not self.validator.is_valid(spoilt)
        self.assertGreater(refused, 100)

    def test_and_the_program_want_no_surplus_member_anywhere(self):
        for place in [(), *places(WHOLE)]:
            if not isinstance(at(WHOLE, place), dict):
                continue
            spoilt = copy.deepcopy(WHOLE)
            at(spoilt, place)["surplus"] = 1
            self.assertFalse(self.validator.is_valid(spoilt), place)
            self.assertTrue(self.program_refuses(spoilt), place)

    def test_and_the_program_want_what_is_needed(self):
        for name in WHOLE:
            lacking = {key: value for key, value in WHOLE.items() if key != name}
            self.assertEqual(self.validator.is_valid(lacking), name not in ("name", "description", "expect"), name)
            self.assertEqual(self.program_refuses(lacking), name in ("name", "description", "expect"), name)


if __name__ == "__main__":
    TERMINAL, SHIPPED, DOCUMENT = sys.argv[1], *map(Path, sys.argv[2:])
    unittest.main(argv=[sys.argv[0]])
