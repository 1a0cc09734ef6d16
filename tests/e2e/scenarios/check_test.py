# SPDX-License-Identifier: MIT
"""gwq-terminal check, seen from outside: check_test.py SUITE GWQ_TERMINAL CARELESS_TELLER SHIPPED."""
import json
import subprocess
import sys
import tempfile
import time
import unittest
import xml.etree.ElementTree as ElementTree
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from commented_json import load, shipped_scenarios

TERMINAL, CARELESS, SHIPPED = "", "", Path()

class Case(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory(prefix="gwq-check-")
        self.addCleanup(self.directory.cleanup)

    def path(self, name):
        return str(Path(self.directory.name, name))

    def scenario(self, name="ours", expect=({"exit_status": 0},), **members):
        whole = {"name": name, "description": "A test.", **members, "expect": list(expect)}
        Path(self.path(name + ".json")).write_text("// a comment\n" + json.dumps(whole))
        return self.path(name + ".json")

    def check(self, *arguments):
        return subprocess.run([TERMINAL, "check", *arguments], capture_output=True, text=True, timeout=100, check=False)

    def run_in(self, script, **members):
        """What comes of a shell script in a scenario."""
        return self.check(self.scenario(**members), "--", "sh", "-c", script)

    def assert_fails(self, outcome, *texts):
        self.assertEqual(outcome.returncode, 1, outcome)
        self.assertIn("FAILED", outcome.stdout)
        for text in texts:
            self.assertIn(text, outcome.stdout)


class Passing(Case):
    def test_tells_the_name_and_the_summary(self):
        outcome = self.run_in("exit 0")
        self.assertRegex(outcome.stdout, r"\Aours +ok +\(\d+\.\d s\)\n1 passed, 0 failed\n\Z")
        self.assertEqual((outcome.returncode, outcome.stderr), (0, ""))

    def test_hides_what_the_command_prints(self):
        self.assertNotIn("noise", self.run_in("echo noise; echo noise >&2").stdout)

    def test_counts_several_in_one_run(self):
        outcome = self.check(self.scenario("one"), self.scenario("two", [{"exit_status": 3}]), self.scenario("three"),
                             "--", "true")
        self.assertEqual(outcome.returncode, 1)
        self.assertRegex(outcome.stdout, r"(?s)\Aone +ok .*\ntwo +FAILED .*\nthree +ok .*\n2 passed, 1 failed\n\Z")

    def test_leaves_nothing_behind(self):
        with tempfile.TemporaryDirectory(prefix="gwq-") as temporary:
            path = self.scenario(terminal={"files": [{"path": "/tmp/x", "size": 10}]})
            subprocess.run(["env", "TMPDIR=" + temporary, TERMINAL, "check", path, "--", "true"], check=True,
                           capture_output=True)
            self.assertEqual(list(Path(temporary).iterdir()), [])


class Failing(Case):
    def test_tells_what_was_expected_and_what_was_seen(self):
        outcome = self.run_in("exit 4")
        self.assert_fails(outcome, "    expected: exit status 0\n    seen:     exit status 4\n", "0 passed, 1 failed\n")

    def test_shows_the_end_of_what_the_command_said(self):
        outcome = self.run_in("seq 100; echo trouble >&2; exit 1")
        self.assert_fails(outcome, "    | 100\n", "    | trouble\n")
        self.assertNotIn("| 50\n", outcome.stdout)

    def test_keeps_pins_and_keys_out_of_reports(self):
        script = "echo the PIN is 24681357 or 123456, the key 0123456789abcdef0123456789ABCDEF; exit 1"
        report = self.path("junit.xml")
        customer = {"pin_entries": [{"pin": "24681357"}]}
        path = self.scenario(customer=customer, expect=[{"exit_status": 0}, {"output_contains": "24681357 signed"}])
        outcome = self.check("--junit", report, path, "--", "sh", "-c", script)
        self.assert_fails(outcome, "the PIN is ******** or ******, the key ****")
        for secret in ("24681357", "123456", "0123456789abcdef", "ABCDEF"):
            self.assertNotIn(secret, outcome.stdout + outcome.stderr + Path(report).read_text())


class Commands(Case):
    def test_that_cannot_be_started(self):
        outcome = self.check(self.scenario(), "--", "no-such-command")
        self.assert_fails(outcome, "expected: a command that can be started", "no-such-command: No such file")

    def test_that_die_by_a_signal(self):
        outcome = self.run_in("kill -SEGV $$", expect=[{"output_lacks": "x"}])
        self.assert_fails(outcome, "died by signal 11")

    def test_that_hang_are_ended_by_the_option(self):
        begin = time.monotonic()
        outcome = self.check("--timeout", "1", self.scenario(timeout_s=90), "--", "sleep", "80")
        self.assert_fails(outcome, "expected: an end within 1 s", "the command hung and was ended")
        self.assertLess(time.monotonic() - begin, 60)

    def test_that_hang_are_ended_by_the_scenario_even_if_they_refuse(self):
        outcome = self.run_in("trap '' TERM; sleep 80; sleep 80", timeout_s=1)
        self.assert_fails(outcome, "the command hung and was ended")

    def test_are_ended_with_the_check_itself_and_no_more_are_run(self):
        mark = Path(self.path("mark"))
        script = f"echo begun >>{mark}; sleep 80"
        arguments = [TERMINAL, "check", self.scenario("one"), self.scenario("two"), "--", "sh", "-c", script]
        with subprocess.Popen(arguments, stdout=subprocess.PIPE, text=True) as check:
            while not mark.exists():
                time.sleep(0.02)
            check.terminate()
            output, _ = check.communicate(timeout=60)
        self.assertEqual(check.returncode, 1)
        self.assertIn("it was interrupted", output)
        self.assertTrue(output.endswith("0 passed, 1 failed\n"), output)
        self.assertEqual(mark.read_text(), "begun\n")

    def test_see_the_terminal_that_the_scenario_describes(self):
        script = "test -e /dev/ttyS77 && test ! -e /dev/bus/usb/001/005"
        outcome = self.run_in(script, terminal={"usb": False, "serial": 78})
        self.assertEqual(outcome.returncode, 0, outcome)
        outcome = self.run_in("grep -aq . /sys/bus/usb/devices/*/idProduct && cat /sys/bus/usb/devices/*/idProduct",
                              terminal={"usb": "1209:0002"}, expect=[{"output_contains": "0002"}])
        self.assertEqual(outcome.returncode, 0, outcome)


class Junit(Case):
    def test_is_well_formed_and_counts(self):
        report = self.path("junit.xml")
        bad = self.scenario("two", [{"exit_status": 3}, {"output_contains": "<&\">"}])
        outcome = self.check(self.scenario("one"), bad, "--junit", report, "--", "sh", "-c", "printf 'a\\001<b>\\377&'")
        self.assertEqual(outcome.returncode, 1)
        root = ElementTree.parse(report).getroot()
        self.assertEqual(root.tag, "testsuites")
        for element in (root, root.find("testsuite")):
            self.assertEqual([element.get(name) for name in ("tests", "failures", "errors")], ["2", "1", "0"])
        one, two = root.findall("testsuite/testcase")
        self.assertEqual((one.get("name"), len(one)), ("one", 0))
        self.assertGreaterEqual(float(two.get("time")), 0)
        failure = two.find("failure")
        self.assertEqual(failure.get("message"), "expected: exit status 3; seen: exit status 0")
        self.assertIn('expected: standard output with "<&">"', failure.text)
        self.assertIn("a <b>\N{REPLACEMENT CHARACTER}&", failure.text)

    def test_that_cannot_be_written_is_told_before_anything_runs(self):
        mark = self.path("mark")
        outcome = self.check("--junit", self.path("no/such/dir.xml"), self.scenario(), "--", "touch", mark)
        self.assertEqual(outcome.returncode, 2)
        self.assertIn("cannot write", outcome.stderr)
        self.assertFalse(Path(mark).exists())


class CommandLine(Case):
    def test_lists_those_that_come_with_it(self):
        outcome = self.check("--list")
        self.assertEqual((outcome.returncode, outcome.stderr), (0, ""))
        names = [line.split()[0] for line in outcome.stdout.splitlines()]
        self.assertEqual(names, [path.stem for path in shipped_scenarios(SHIPPED)])
        self.assertEqual(len(names), 10)
        for path in shipped_scenarios(SHIPPED):
            self.assertEqual(load(path)["name"], path.stem)
            self.assertIn(load(path)["description"], outcome.stdout)

    def test_finds_one_by_its_name(self):
        self.assert_fails(self.check("signs-at-once", "--", "true"), "screen signing once")

    def test_that_is_wrong_ends_with_2_and_says_what_to_do(self):
        good = self.scenario()
        twin = self.path("twin.json")
        Path(twin).write_text(Path(good).read_text())
        wrong = {
            ("no-such", "--", "true"): "check --list",
            (self.path("no.json"), "--", "true"): "there is no scenario file",
            ("--", "true"): "no scenario",
            (good,): "no command: write it after --",
            (good, twin, "--", "true"): 'two scenarios have the name "ours"',
            ("--list", good): "--list stands alone",
            ("--list", "--", "true"): "a command needs exec, check or replay",
            ("--timeout", "0", good, "--", "true"): "--timeout",
            (self.directory.name + "/", "--", "true"): "is a directory",
        }
        for arguments, text in wrong.items():
            outcome = self.check(*arguments)
            self.assertEqual((outcome.returncode, outcome.stdout), (2, ""), arguments)
            self.assertIn(text, outcome.stderr)

    def test_a_typo_in_a_scenario_is_named_with_its_place(self):
        typos = {
            "unknown member \"expects\"": {"expects": []},
            "terminal: unknown member \"tgz\"": {"terminal": {"tgz": False}},
            "customer: step 1: unknown member \"pins\"": {"customer": {"pin_entries": [{"pins": "1"}]}},
            "events 2: unknown member \"unplgu\"": {"events": [{"unplug": True}, {"unplgu": True}]},
            "expect 2: unknown member \"time\"": {"expect": [{"exit_status": 0}, {"screen": "html", "time": 2}]},
            "faults: unknown member \"fial\"": {"faults": {"fial": []}},
            "is no command": {"expect": [{"command": "UPDAET", "never": True}]},
        }
        for text, members in typos.items():
            path = self.scenario(**members)
            outcome = self.check(path, "--", "true")
            self.assertEqual(outcome.returncode, 2, text)
            self.assertIn("gwq-terminal: scenario " + path + ": ", outcome.stderr)
            self.assertIn(text, outcome.stderr)

    def test_a_scenario_is_read_before_any_other_runs(self):
        mark = self.path("mark")
        outcome = self.check(self.scenario(), self.scenario("bad", []), "--", "touch", mark)
        self.assertEqual((outcome.returncode, Path(mark).exists()), (2, False))


class Events(Case):
    NODE = "/dev/bus/usb/001/005"

    def test_pull_the_cable(self):
        script = f"for n in $(seq 3000); do test -e {self.NODE} || exit 0; sleep 0.02; done; exit 1"
        outcome = self.run_in(script, events=[{"after_ms": 100, "unplug": True}],
                              expect=[{"exit_status": 0}, {"unplugged": True, "times": 1}])
        self.assertEqual(outcome.returncode, 0, outcome)

    def test_put_the_cable_in_again(self):
        """It can be pulled twice only if it was in between."""
        events = [{"after_ms": 100, "unplug": True}, {"when": "unplugged", "after_ms": 200, "plug": True},
                  {"when": "plugged", "after_ms": 100, "unplug": True}]
        outcome = self.run_in("sleep 6", events=events, expect=[{"unplugged": True, "times": 2}])
        self.assertEqual(outcome.returncode, 0, outcome)

    def test_do_not_come_by_themselves(self):
        outcome = self.run_in("sleep 0.5", expect=[{"unplugged": True}])
        self.assert_fails(outcome, "expected: the terminal unplugged at least once", "seen:     never")

    def test_walking_away_takes_back_what_the_customer_was_to_do(self):
        signs = {"customer": {"screens": [{"sign": True, "after_ms": 1500}]}, "expect": [{"stored": "hw.png"}]}
        walks_away = {"events": [{"when": "screen signing", "walk_away": True}]}
        outcome = self.check(self.scenario(**signs), "--", CARELESS, "stays")
        self.assertEqual(outcome.returncode, 0, outcome)
        outcome = self.check(self.scenario(**signs, **walks_away), "--", CARELESS, "stays")
        self.assert_fails(outcome, "file hw.png stored at least once", "seen:     never; stored files: none")


class Expectations(Case):
    """Each one of the scenarios that come with the program can fail, by a command that does not deserve it."""

    def can_fail(self, path, expectation, number):
        one = self.path(f"{path.stem}-{number}.json")
        Path(one).write_text(json.dumps({**load(path), "expect": [expectation]}))
        return any(self.check(one, "--", command).returncode == 1 for command in ("true", "false", CARELESS))

    def test_fail_with_wrong_commands(self):
        every = [(path, expectation, number) for path in shipped_scenarios(SHIPPED)
                 for number, expectation in enumerate(load(path)["expect"])]
        with ThreadPoolExecutor(6) as pool:
            results = list(pool.map(lambda one: self.can_fail(*one), every))
        self.assertEqual([one for one, can_fail in zip(every, results) if not can_fail], [])


class Pty(Case):
    """Scenarios at a pseudo-terminal, which need no umockdev. The command is a host that asks for PIN blocks."""

    def check_at(self, *scenarios):
        return self.check("--pty", *scenarios, "--", "sh", "-c", f'exec {CARELESS} --serial "$GWQ_TERMINAL_SERIAL"')

    def test_pass_whatever_the_scenario_says_of_lines(self):
        expect = [{"exit_status": 0}, {"command": "GETVERSION"}, {"pin_keyed": True, "times": 3},
                  {"output_contains": "313233343536"}]
        lines = {"usb": {}, "serial": {"terminal": {"usb": False, "serial": 78}},
                 "both": {"terminal": {"serial": 1, "version": "V1.0.0"}}}
        paths = [self.scenario(name, expect, **members) for name, members in lines.items()]
        outcome = self.check_at(*paths)
        self.assertEqual((outcome.returncode, outcome.stdout.splitlines()[-1]), (0, "3 passed, 0 failed"), outcome)

    def test_fail_with_what_was_seen(self):
        path = self.scenario(customer={"pin_entries": [{"pin": "4321"}]}, events=[{"after_ms": 0, "unplug": True}],
                             expect=[{"output_contains": "313233343536"}, {"unplugged": True}])
        self.assert_fails(self.check_at(path), "expected: standard output with", "expected: the terminal unplugged")


class WrongCommands(Case):
    def test_pass_no_scenario(self):
        names = [path.stem for path in shipped_scenarios(SHIPPED)]
        with ThreadPoolExecutor(6) as pool:
            outcomes = list(pool.map(lambda name: self.check(name, "--", CARELESS), names))
        for outcome in outcomes:
            self.assertEqual((outcome.returncode, outcome.stdout.splitlines()[-1]), (1, "0 passed, 1 failed"), outcome)
        for command in ("true", "false"):
            outcome = self.check(*names, "--", command)
            self.assertEqual((outcome.returncode, outcome.stdout.splitlines()[-1]), (1, "0 passed, 10 failed"))


if __name__ == "__main__":
    suite, TERMINAL, CARELESS, shipped = sys.argv[1:]
    SHIPPED = Path(shipped)
    unittest.main(argv=[sys.argv[0], suite])
