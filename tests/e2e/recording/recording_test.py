# SPDX-License-Identifier: MIT
"""Sessions of recorded_host, recorded and replayed.

    recording_test.py GWQ_TERMINAL RECORDED_HOST [TEST...]
"""
import os
import pathlib
import re
import signal
import stat
import subprocess
import sys
import tempfile
import unittest

import captures

TERMINAL, HOST = sys.argv[1:3]
PIN = b"123456"
WORKING_KEY = b"SECRET-WORK-KEY!"
MASTER_KEY = bytes.fromhex("0123456789ABCDEFFEDCBA9876543210")
ACCOUNT = b"6225880123456789"
IDENTITY = bytes.fromhex("1201000200000040")


def split(data):
    return bytes(0x30 + nibble for byte in data for nibble in (byte >> 4, byte & 15))


class Session(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)

    def run_terminal(self, *arguments):
        return subprocess.run([TERMINAL, *map(str, arguments)], capture_output=True, timeout=100, check=False)

    def record(self, name, *options, host=()):
        path = self.directory / name
        run = self.run_terminal("exec", "--record", path, *options, "--", HOST, *host)
        self.assertEqual(run.returncode, 0, run.stderr)
        return path, run.stdout

    def replay(self, path, *options, host=()):
        run = self.run_terminal("replay", "--fast", *options, path, "--", HOST, *host)
        run.errors = run.stderr.decode()
        return run

    def lines(self, path):
        return [line for line in path.read_text().splitlines() if not line.startswith("#")]


class Recording(Session):
    def test_text_has_a_line_for_each_transfer(self):
        path, _ = self.record("session.txt")
        self.assertTrue(path.read_text().startswith("# gwq-terminal recording 1\n"))
        lines = self.lines(path)
        for line in lines:
            self.assertRegex(line, r"^[0-9]+\.[0-9]{6} usb (in 81|out 02|control 80) [0-9]+ ")
        bodies = [line.split(" ", 1)[1] for line in lines if " control " not in line]
        self.assertEqual(bodies[:4], [
            'usb out 02 1024 1b "[0GETVERSION" 00*1011',
            'usb in 81 1024 02 "V1.0.0|20240615" 03 00*1007',
            "usb out 02 1024 1b 52 0d 0a 00*1020",
            "usb in 81 1024 aa 00*1023",
        ])
        self.assertEqual(len(bodies), 16)

    def test_pcapng_has_what_the_kernel_would_capture(self):
        path, _ = self.record("session.pcapng")
        events = [captures.UsbEvent(packet) for packet in captures.read_pcapng(path)]
        self.assertEqual({(event.bus, event.device) for event in events}, {(1, 5)})
        descriptor = events[1]
        self.assertEqual((events[0].setup, descriptor.event), (bytes.fromhex("8006000100001200"), "C"))
        self.assertTrue(descriptor.data.startswith(IDENTITY))
        begun = {}
        for event in events[4:]:
            self.assertEqual((event.type, event.has_setup), (1, False))
            if event.event == "S":
                self.assertNotIn(event.id, begun)
                begun[event.id] = event
                self.assertEqual((event.status, event.length), (-115, 1024))
                self.assertEqual(len(event.data), 0 if event.endpoint & 0x80 else 1024)
                continue
            start = begun.pop(event.id)
            self.assertEqual(start.endpoint, event.endpoint)
            self.assertLessEqual(start.time_us, event.time_us)
            self.assertEqual(len(event.data), event.length if event.endpoint & 0x80 else 0)
        self.assertEqual(begun, {})
        sent = [event.data.rstrip(b"\0") for event in events if event.event == "S" and event.endpoint == 2]
        self.assertEqual(sent[0], b"\x1b[0GETVERSION")
        self.assertEqual(len(sent), 8)

    def test_reads_in_vain_are_recorded(self):
        path, _ = self.record("session.txt", host=["--drain"])
        self.assertTrue(any(re.search(r" in 81 0 status=-2$", line) for line in self.lines(path)))

    def test_is_for_its_owner_alone_even_where_a_file_was(self):
        old = self.directory / "old.txt"
        old.write_text("x" * 100000)
        old.chmod(0o666)
        path, _ = self.record("old.txt")
        self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o600)
        self.assertNotIn("xxx", path.read_text())

    @unittest.skipUnless(pathlib.Path("/dev/full").is_char_device(), "there is no /dev/full")
    def test_a_full_disk_is_told_once_and_disturbs_nothing(self):
        _, answers = self.record("good.txt")
        run = self.run_terminal("exec", "--record", "/dev/full", "--", HOST)
        self.assertEqual(run.returncode, 0)
        # the first PIN block has random digits in it
        self.assertEqual(run.stdout.split()[:6], answers.split()[:6])
        self.assertEqual(len(run.stdout.split()), 8)
        self.assertEqual(run.stderr.decode().count("No space left on device"), 1, run.stderr)

    def test_a_file_that_cannot_be_made_is_no_start(self):
        run = self.run_terminal("exec", "--record", self.directory / "no" / "file.txt", "--", HOST)
        self.assertEqual(run.returncode, 1)
        self.assertIn(b"No such file or directory", run.stderr)

    def test_a_killed_terminal_leaves_whole_transfers(self):
        path = self.directory / "killed.pcapng"
        script = f"{HOST} >&2; echo over; sleep 60"
        with subprocess.Popen([TERMINAL, "exec", "--record", path, "--", "/bin/sh", "-c", script],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as supervisor:
            self.assertEqual(supervisor.stdout.readline(), b"over\n")
            children = pathlib.Path(f"/proc/{supervisor.pid}/task/{supervisor.pid}/children").read_text().split()
            servers = [int(child) for child in children
                       if b"--control-fd" in pathlib.Path(f"/proc/{child}/cmdline").read_bytes()]
            self.assertEqual(len(servers), 1)
            os.kill(servers[0], signal.SIGKILL)
            self.assertEqual(supervisor.wait(60), 1)
        events = [captures.UsbEvent(packet) for packet in captures.read_pcapng(path)]
        self.assertEqual(sum(event.event == "C" and event.endpoint == 2 for event in events), 8)


class Masks(Session):
    def secrets(self):
        return [PIN, split(WORKING_KEY), split(MASTER_KEY), ACCOUNT, split(b"1" * 16)]

    def blocks(self, answers):
        """The PIN blocks, which the host printed."""
        blocks = [bytes.fromhex(line) for line in answers.decode().split() if line.startswith("023130")]
        self.assertEqual(len(blocks), 2)
        return [block[3:-1] for block in blocks]

    def raw(self, path):
        """The bytes of all transfers, one after the other."""
        return b"".join(captures.UsbEvent(packet).data.rstrip(b"\0") for packet in captures.read_pcapng(path))

    def test_no_secret_is_in_a_recording(self):
        for name in ("session.txt", "session.pcapng"):
            path, answers = self.record(name)
            content = path.read_bytes()
            for secret in self.secrets() + self.blocks(answers):
                self.assertNotIn(secret, content)
                self.assertNotIn(secret.hex().encode(), content.replace(b" ", b""))

    def test_all_of_them_are_when_asked_for(self):
        path, answers = self.record("session.pcapng", "--record-secrets")
        content = self.raw(path)
        for secret in self.secrets() + self.blocks(answers):
            self.assertIn(secret, content)
        text, answers = self.record("session.txt", "--record-secrets")
        for secret in self.secrets() + self.blocks(answers):
            self.assertIn(secret, text.read_bytes())

    def test_masks_have_the_size_of_what_they_hide(self):
        path, _ = self.record("session.txt")
        masked = [line.split(" ", 5)[5] for line in self.lines(path) if "?*" in line]
        self.assertEqual(masked, [
            "1b 4d ?*66 0d 0a 00*954",
            "1b 53 ?*36 0d 0a 00*984",
            "?*6 0d 00*1017",
            "02 ?*18 03 00*1004",
            '1b "I10" ?*16 0d 0a 00*1002',
            "02 ?*18 03 00*1004",
        ])
        path, _ = self.record("session.pcapng")
        events = [captures.UsbEvent(packet) for packet in captures.read_pcapng(path)]
        comments = [event.comment for event in events if event.comment]
        self.assertEqual(comments, ["masked 2+66", "masked 2+36", "masked 0+6", "masked 1+18", "masked 4+16",
                                    "masked 1+18"])
        self.assertEqual([e.data[2:69] for e in events if e.comment == "masked 2+66"], [b"*" * 66 + b"\r"])

    def test_a_serial_line_is_masked_too(self):
        node = "/dev/ttyS77"
        for name in ("session.txt", "session.pcapng"):
            path, _ = self.record(name, "--no-usb", "--serial", "78", host=["--serial", node])
            for secret in self.secrets():
                self.assertNotIn(secret, path.read_bytes())
        path, _ = self.record("all.pcapng", "--no-usb", "--serial", "78", "--record-secrets", host=["--serial", node])
        packets = captures.read_pcapng(path)
        self.assertEqual({packet.link_type for packet in packets}, {captures.USER0})
        from_host = b"".join(packet.data[1:] for packet in packets if packet.data[0] == 0)
        to_host = b"".join(packet.data[1:] for packet in packets if packet.data[0] == 1)
        self.assertIn(split(WORKING_KEY), from_host)
        self.assertIn(PIN, to_host)


class Replay(Session):
    def test_the_same_program_sees_the_same(self):
        for name in ("session.txt", "session.pcapng"):
            path, answers = self.record(name, "--record-secrets")
            run = self.replay(path)
            self.assertEqual((run.returncode, run.stdout), (0, answers), run.errors)
            self.assertIn("usb: replayed 8 of 8 transfers of the host, no difference", run.errors)

    def test_masked_answers_are_zeros(self):
        for name in ("session.txt", "session.pcapng"):
            path, answers = self.record(name)
            run = self.replay(path)
            self.assertEqual(run.returncode, 0, run.errors)
            lines, recorded = run.stdout.decode().split(), answers.decode().split()
            self.assertEqual(lines[:5], recorded[:5])
            self.assertEqual(lines[5:], ["3030303030300d"] + ["023130" + "30" * 16 + "03"] * 2)

    def test_it_takes_the_time_it_took(self):
        path, _ = self.record("session.txt")
        path.write_text(re.sub(r"^(\S+)( usb in 81 1024 02 \"V1)", lambda m: f"{float(m[1]) + 0.4:.6f}{m[2]}",
                               path.read_text(), flags=re.M))
        replayed = self.directory / "again.txt"
        run = self.run_terminal("replay", "--record", replayed, path, "--", HOST)
        self.assertEqual(run.returncode, 0, run.stderr)
        times = [float(line.split()[0]) for line in self.lines(replayed) if " control " not in line]
        self.assertGreaterEqual(times[1] - times[0], 0.39)

    def test_reads_in_vain_and_the_cut_of_transfers_may_differ(self):
        path, answers = self.record("session.txt", "--record-secrets")
        run = self.replay(path, host=["--drain"])
        self.assertEqual((run.returncode, run.stdout), (0, answers), run.errors)
        path, answers = self.record("drained.pcapng", "--record-secrets", host=["--drain"])
        run = self.replay(path)
        self.assertEqual((run.returncode, run.stdout), (0, answers), run.errors)

    def test_the_first_difference_is_told(self):
        path, _ = self.record("session.txt", "--record-secrets")
        # a host that gives up when there is no answer
        run = self.run_terminal("replay", "--fast", path, "--", HOST, "--other", "--brief")
        self.assertEqual(run.returncode, 1)
        errors = run.stderr.decode()
        self.assertRegex(errors, r"usb: the host differs from the recording in its transfer 8 of 8 "
                                 r"\(recorded at [0-9.]+ s\), at byte 19:\n"
                                 r"  expected: 39 0d 0a 00 .*\|9\.\.\.")
        self.assertRegex(errors, r"\n  seen:     \*\* 0d 0a 00 .*\|\*\.\.\.")

    def test_another_program_differs_at_its_first_byte_that_does(self):
        path, _ = self.record("session.txt")
        text = path.read_text().replace('"[0GETVERSION"', '"[0GETVERSIOM"')
        path.write_text(text)
        run = self.run_terminal("replay", "--fast", path, "--", HOST, "--brief")
        self.assertEqual(run.returncode, 1)
        self.assertRegex(run.stderr.decode(), r"transfer 1 of 8 .*, at byte 12:\n  expected: 4d 00 .*\|M\.+\|\n"
                                              r"  seen:     4e 00 .*\|N\.+\|")

    def test_stopping_early_or_going_on_is_a_difference(self):
        path, _ = self.record("session.txt")
        run = self.run_terminal("replay", "--fast", path, "--", "/bin/true")
        self.assertEqual(run.returncode, 1)
        self.assertIn(b"the host stopped before the end: 0 of 8 transfers of the host", run.stderr)
        lines = path.read_text().splitlines(keepends=True)
        path.write_text("".join(lines[:-2]))
        run = self.run_terminal("replay", "--fast", path, "--", HOST, "--brief")
        self.assertEqual(run.returncode, 1)
        self.assertIn(b"the host goes on after the last of its 7 recorded transfers", run.stderr)

    def test_the_status_is_the_commands_when_nothing_differs(self):
        path, _ = self.record("session.txt")
        run = self.run_terminal("replay", "--fast", path, "--", "/bin/sh", "-c", f"{HOST}; exit 7")
        self.assertEqual(run.returncode, 7)

    def test_serial_lines_are_replayed(self):
        host = ["--serial", "/dev/ttyS77"]
        for name in ("session.txt", "session.pcapng"):
            path, answers = self.record(name, "--no-usb", "--serial", "78", "--record-secrets", host=host)
            run = self.replay(path, "--serial", "78", host=host)
            self.assertEqual((run.returncode, run.stdout), (0, answers), run.errors)
            run = self.replay(path, host=host)
            self.assertEqual(run.returncode, 1)
            self.assertIn("--serial N", run.errors)

    def test_damaged_files_are_refused(self):
        path = self.directory / "file"
        for content, text in ((b"", "it is no recording"), (b"\x0a\x0d\x0d\x0a", "ends in the middle"),
                              (b"# gwq-terminal recording 1\nnonsense\n", "line 2: 'nonsense' is no time")):
            path.write_bytes(content)
            run = self.replay(path)
            self.assertEqual(run.returncode, 1)
            self.assertIn(text, run.errors)
        self.assertEqual(self.run_terminal("replay", path).returncode, 2)
        self.assertEqual(self.run_terminal("replay", "--device", "x", path, "--", "true").returncode, 2)


class Pty(Session):
    """What needs no umockdev."""

    def on_pty(self, *arguments):
        """Of gwq-terminal, with the host for its command."""
        command = f'exec {HOST} --brief --serial "$GWQ_TERMINAL_SERIAL"'
        return self.run_terminal(*arguments, "--", "/bin/sh", "-c", command)

    def test_a_recording_of_a_pseudo_terminal_is_replayed_at_one(self):
        for name in ("session.txt", "session.pcapng"):
            path = self.directory / name
            recorded = self.on_pty("exec", "--pty", "--record", path, "--record-secrets")
            self.assertEqual(recorded.returncode, 0, recorded.stderr)
            replayed = self.on_pty("replay", "--pty", "--fast", path)
            self.assertEqual((replayed.returncode, replayed.stdout), (0, recorded.stdout), replayed.stderr)
            self.assertIn(b"serial: replayed 8 of 8 transfers of the host, no difference", replayed.stderr)

    def test_a_difference_is_told(self):
        path = self.directory / "session.txt"
        self.on_pty("exec", "--pty", "--record", path)
        path.write_text(path.read_text().replace('"[0GETVERSION"', '"[0GETVERSIOM"'))
        run = self.on_pty("replay", "--pty", "--fast", path)
        self.assertEqual(run.returncode, 1)
        self.assertIn(b"differs from the recording in its transfer 1 of 8", run.stderr)

    def test_a_recording_of_usb_has_no_line(self):
        path = self.directory / "usb.txt"
        path.write_text("# gwq-terminal recording 1\n0.100000 usb out 02 4 1b 52 0d 0a\n")
        run = self.on_pty("replay", "--pty", path)
        self.assertEqual(run.returncode, 1)
        self.assertIn(b"the recording has no serial line; leave --serial and --pty out", run.stderr)


class Captures(Session):
    """Captures of a real unit, made here by the layout of usbmon."""

    def setUp(self):
        super().setUp()
        path, self.answers = self.record("session.pcapng", "--record-secrets")
        self.events = [captures.UsbEvent(packet) for packet in captures.read_pcapng(path)]

    def packets(self, link, order, with_descriptor=True, mouse_size=8):
        """The session, moved to device 7 on bus 3, with a mouse beside it."""
        packets, skipped = [], 0 if with_descriptor else 4
        for number, event in enumerate(self.events[skipped:]):
            packets.append((event.time_us, captures.usbmon(
                event.event, event.endpoint, event.data, number=event.id, length=event.length, status=event.status,
                device=7, bus=3, kind=event.type, setup=event.setup if event.has_setup else None, link=link,
                order=order, time_us=event.time_us)))
            for kind, data in (("S", b""), ("C", bytes(mouse_size))):
                packets.append((event.time_us, captures.usbmon(
                    kind, 0x81, data, number=10_000 + number, length=mouse_size, device=2, bus=3, link=link, order=order,
                    time_us=event.time_us)))
        return packets

    def capture(self, link, order="<", nano=False, snap=None, **how):
        path = self.directory / "unit.pcap"
        path.write_bytes(captures.pcap(self.packets(link, order, **how), link, order=order, nano=nano, snap=snap))
        return path

    def check(self, path, *options):
        run = self.replay(path, *options)
        self.assertEqual((run.returncode, run.stdout), (0, self.answers), run.errors)

    def test_both_headers_byte_orders_and_units_of_time(self):
        for link in (captures.USBMON, captures.USBMON_MMAPPED):
            for order, nano in (("<", False), (">", True)):
                with self.subTest(link=link, order=order, nano=nano):
                    self.check(self.capture(link, order, nano))

    def test_the_unit_is_told_by_its_transfers(self):
        self.check(self.capture(captures.USBMON, with_descriptor=False))

    def test_two_that_look_alike_need_a_choice(self):
        path = self.capture(captures.USBMON_MMAPPED, with_descriptor=False, mouse_size=1024)
        run = self.replay(path)
        self.assertEqual(run.returncode, 1)
        self.assertIn("--device BUS.ADDR of: 3.2, 3.7", run.errors)
        self.check(path, "--device", "3.7")
        run = self.replay(path, "--device", "3.9")
        self.assertIn("there is no device 3.9 in the capture; these are: 3.2, 3.7", run.errors)

    def test_captures_with_packets_cut_off_are_refused(self):
        run = self.replay(self.capture(captures.USBMON, snap=96))
        self.assertEqual(run.returncode, 1)
        self.assertIn("-s 0", run.errors)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:], verbosity=2)
