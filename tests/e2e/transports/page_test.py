# SPDX-License-Identifier: MIT
"""A person at the customer's page, played over its WebSocket; the host is a serial line.

Run as: page_test.py GWQ_TERMINAL
"""

import asyncio
import http.client
import json
import os
import re
import resource
import socket as sockets
import struct
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

import websockets

TERMINAL = sys.argv.pop()


def split(text):
    return "".join(chr(0x30 + byte // 16) + chr(0x30 + byte % 16) for byte in text.encode())


# A host on USB that starts an evaluation and prints the answer.
USB_HOST = """
import ctypes, sys
usb = ctypes.CDLL("libusb-1.0.so.0")
usb.libusb_open_device_with_vid_pid.restype = ctypes.c_void_p
usb.libusb_init(None)
vendor, product = (int(part, 16) for part in sys.argv[1].split(":"))
unit = ctypes.c_void_p(usb.libusb_open_device_with_vid_pid(None, vendor, product))
usb.libusb_detach_kernel_driver(unit, 0)
assert usb.libusb_claim_interface(unit, 0) == 0
done = ctypes.c_int()
for endpoint, text in [(0x02, b"\\x1b[4STARTEVALUTF8"), (0x81, b"")]:
    report = ctypes.create_string_buffer(text, 1024)
    status = usb.libusb_interrupt_transfer(unit, endpoint, report, 1024, ctypes.byref(done), 20000)
    assert status == 0, status
print(report.value.decode(), flush=True)
sys.stdin.read()
"""
USB_ID = "1209:0001"


class Terminal:
    """gwq-terminal with its page, and the serial line to it."""

    def __init__(self, descriptors=None):
        self.errors = tempfile.TemporaryFile()
        self.storage = tempfile.TemporaryDirectory()
        os.makedirs(self.storage.name + "/tmp")
        command = [TERMINAL, "pty", "--ui", "--trace", "--storage", self.storage.name]
        limit = lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (descriptors, descriptors))
        # A sanitizer that keeps freed memory for long would be all that resident() tells.
        environment = {**os.environ, "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1"}
        self.process = subprocess.Popen(
            command,
            stdout=subprocess.PIPE,
            stderr=self.errors,
            env=environment,
            preexec_fn=limit if descriptors else None,
        )
        path = self.process.stdout.readline().decode().strip()
        self.line = os.open(path, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
        self.url = re.search(r"http://\S+", self.log()).group()
        self.parts = urllib.parse.urlsplit(self.url)

    def log(self):
        self.errors.seek(0)
        return self.errors.read().decode()

    def resident(self):
        """How much memory it has, in MiB."""
        with open(f"/proc/{self.process.pid}/statm", encoding="ascii") as file:
            return int(file.read().split()[1]) * resource.getpagesize() / 2**20

    def connect(self):
        return sockets.create_connection(("127.0.0.1", self.parts.port), timeout=10)

    def put(self, path, content):
        with open(self.storage.name + path, "wb") as file:
            file.write(content)

    def host_sends(self, text):
        os.write(self.line, text.encode("latin-1"))

    async def host_reads(self, size):
        answer = b""
        while len(answer) < size:
            try:
                answer += os.read(self.line, size - len(answer))
            except BlockingIOError:
                await asyncio.sleep(0.01)
        return answer

    def close(self):
        self.process.terminate()
        status = self.process.wait(10)
        log = self.log()
        self.process.stdout.close()
        self.errors.close()
        self.storage.cleanup()
        os.close(self.line)
        assert status == 0, status
        assert "CRITICAL" not in log and "WARNING" not in log, log

    def get(self, path, method="GET", headers=None):
        connection = http.client.HTTPConnection("127.0.0.1", self.parts.port, timeout=10)
        connection.request(method, path, headers=headers or {})
        response = connection.getresponse()
        body = response.read()
        connection.close()
        return response, body

    def page(self, origin=None, url=None):
        url = url or self.url.replace("http:", "ws:") + "socket"
        return websockets.connect(url, origin=origin or f"http://{self.parts.netloc}", max_size=None)


async def told(socket, kind, fits=lambda message: True):
    """The next message of this type that fits."""
    while True:
        message = json.loads(await asyncio.wait_for(socket.recv(), 10))
        if message["type"] == kind and fits(message):
            return message


class Page(unittest.IsolatedAsyncioTestCase):
    def setUp(self):
        self.terminal = Terminal()
        self.addCleanup(self.terminal.close)

    async def shown(self, socket, kind, command):
        self.terminal.host_sends(command)
        return await told(socket, "screen", lambda message: message["kind"] == kind)

    async def act(self, socket, screen, **action):
        await socket.send(json.dumps({"type": "act", "screen": screen["number"], **action}))

    async def test_rates_a_service(self):
        async with self.terminal.page() as socket:
            screen = await self.shown(socket, "evaluation", "\x1b[4STARTEVALUTF8")
            self.assertEqual([key["name"] for key in screen["keys"]], ["1", "2", "3", "0"])
            await self.act(socket, screen, kind="key", text="2")
            self.assertEqual(await self.terminal.host_reads(3), b"B2F")
            await told(socket, "screen", lambda message: message["kind"] == "idle")

    async def test_an_act_for_a_screen_that_is_gone_meets_no_other(self):
        async with self.terminal.page() as socket:
            old = await self.shown(socket, "evaluation", "\x1b[4STARTEVALUTF8")
            new = await self.shown(socket, "information", "\x1b[2A\x02" + split("Hello 您好") + "\x03")
            self.assertEqual(new["text"], "Hello 您好")
            await self.act(socket, old, kind="cancel")
            await self.act(socket, new, kind="confirm")
            self.assertEqual(await self.terminal.host_reads(3), b"B0F")

    async def test_keys_a_pin_that_nobody_else_learns(self):
        pin = "739154"
        async with self.terminal.page() as socket:
            self.terminal.host_sends("\x82")
            entry = await told(socket, "entry", lambda message: message["number"] > 0)
            heard = []
            for count, digit in enumerate(pin, 1):
                await socket.send(json.dumps({"type": "press", "entry": entry["number"], "key": digit}))
                state = await told(socket, "entry")
                self.assertEqual(state["keyed"], count)
                heard.append(json.dumps({**state, "time_left_ms": 0}))
            await socket.send(json.dumps({"type": "press", "entry": entry["number"], "key": "enter"}))
            self.assertEqual(await self.terminal.host_reads(7), pin.encode() + b"\r")
            trace = await told(socket, "trace", lambda message: "PIN in clear" in json.dumps(message))
        self.assertNotIn(pin, json.dumps(trace) + self.terminal.log())
        self.assertTrue(all('"shown": ""' in text for text in heard))

    async def test_signs(self):
        self.terminal.put("/tmp/a b-合同.pdf", b"%PDF-1.4 not much of one")
        async with self.terminal.page() as socket:
            name = "/tmp/a b-合同.pdf".encode().decode("latin-1")
            screen = await self.shown(socket, "signing", f"\x1b[2YCNEWSTARTSIGN\x021|30|Here|{name}\x03")
            self.assertEqual(screen["documents"], ["/tmp/a b-合同.pdf"])
            path = urllib.parse.quote("/tmp/a b-合同.pdf")
            response, body = self.terminal.get(self.terminal.parts.path + "file" + path)
            self.assertEqual((response.status, body[:4]), (200, b"%PDF"))
            strokes = [[10, 20, 500, 0], [300, 90, 700, 40], [301, 91, 0, 48]]
            await self.act(socket, screen, kind="sign", strokes=strokes)
            self.assertEqual(await self.terminal.host_reads(3), b"\x02\xaa\x03")
        with open(self.terminal.storage.name + "/tmp/hw.txt", encoding="ascii") as file:
            self.assertEqual(file.read(), "10,20,500,0\n300,90,700,40\n301,91,0,48\n")

    async def test_a_page_learns_first_what_the_unit_takes(self):
        for _ in range(2):
            async with self.terminal.page() as socket:
                unit = json.loads(await socket.recv())
                self.assertEqual(unit["type"], "unit")
                self.assertEqual((unit["signature"]["width"], unit["signature"]["height"]), (480, 160))
                self.assertEqual(unit["picture_directory"], "/mnt/internal_sd/media/picture")

    async def test_a_page_that_comes_later_sees_what_is_shown(self):
        async with self.terminal.page() as first:
            screen = await self.shown(first, "evaluation", "\x1b[4STARTEVALUTF8")
            async with self.terminal.page() as second:
                self.assertEqual((await told(second, "screen"))["number"], screen["number"])
                await self.act(second, screen, kind="cancel")
            self.assertEqual(await self.terminal.host_reads(3), b"B0F")

    async def test_garbage_does_no_harm(self):
        async with self.terminal.page() as socket:
            for message in ["", "{", "[]", "[" * 100000, '{"type":"faults","rates":"drop=101"}', "x" * (1 << 17), '{"type":7}', '{"type":"act","screen":-1,"kind":"key"}', b"\x00\xff"]:
                await socket.send(message)
            screen = await self.shown(socket, "evaluation", "\x1b[4STARTEVALUTF8")
            await self.act(socket, screen, kind="confirm")
            self.assertEqual(await self.terminal.host_reads(3), b"B3F")

    async def test_a_message_that_is_too_large_closes_its_socket_only(self):
        async with self.terminal.page() as other, self.terminal.page() as socket:
            await socket.send('{"type":"act","kind":"cancel","text":"' + "x" * (1 << 18) + '"}')
            with self.assertRaises(websockets.ConnectionClosed):
                await told(socket, "nothing")
            screen = await self.shown(other, "evaluation", "\x1b[4STARTEVALUTF8")
            await self.act(other, screen, kind="confirm")
            self.assertEqual(await self.terminal.host_reads(3), b"B3F")

    async def test_switches_the_faults_of_the_line(self):
        async with self.terminal.page() as first, self.terminal.page() as second:
            for rates, answers in [("seed=7,drop=100", False), ("seed=7,drop=0", True)]:
                await first.send(json.dumps({"type": "faults", "rates": rates}))
                await told(second, "link", lambda message, start=rates: message["faults"].startswith(start + ","))
                screen = await self.shown(first, "evaluation", "\x1b[4STARTEVALUTF8")
                await self.act(first, screen, kind="confirm")
                await told(first, "screen", lambda message: message["kind"] == "idle")
                if answers:
                    self.assertEqual(await self.terminal.host_reads(3), b"B3F")
            with self.assertRaises(BlockingIOError):
                os.read(self.terminal.line, 1)

    async def test_refuses_sockets_without_the_token_or_of_another_origin(self):
        good = self.terminal.url.replace("http:", "ws:")
        for url, origin in [
            (good + "socket", "http://evil.example"),
            (good + "socket", "null"),
            (good + "elsewhere", None),
            (f"ws://{self.terminal.parts.netloc}/{'0' * 32}/socket", None),
            (f"ws://{self.terminal.parts.netloc}/socket", None),
        ]:
            with self.assertRaises(websockets.InvalidStatusCode, msg=url) as refused:
                await self.terminal.page(origin, url)
            self.assertEqual(refused.exception.status_code, 403)

    def test_serves_itself_under_a_strict_policy(self):
        for name, kind in [("", "text/html"), ("session.js", "text/javascript"), ("pdf.worker.js", "text/javascript")]:
            response, body = self.terminal.get(self.terminal.parts.path + name)
            self.assertEqual(response.status, 200, name)
            self.assertIn(kind, response.getheader("Content-Type"))
            policy = response.getheader("Content-Security-Policy")
            self.assertTrue(policy.startswith("default-src 'none'; script-src 'self'; style-src 'self';"), policy)
            self.assertNotIn("unsafe", policy)
            self.assertGreater(len(body), 500)

    def test_what_hosts_send_is_sandboxed(self):
        self.terminal.put("/tmp/x.html", b"<script>alert(1)</script>")
        for path in ["page/tmp/x.html", "file/tmp/x.html", "file/tmp/hw.png", "screen/1"]:
            response, _ = self.terminal.get(self.terminal.parts.path + path)
            self.assertEqual(response.status, 200, path)
            policy = response.getheader("Content-Security-Policy")
            self.assertTrue(policy.startswith("sandbox; default-src 'none';"), policy)
            self.assertNotIn("script-src", policy)
            self.assertEqual(response.getheader("X-Content-Type-Options"), "nosniff")

    def test_refuses_requests_that_are_not_its_own(self):
        path = self.terminal.parts.path
        for asked, headers, status in [
            ("/", {}, 403),
            ("/app.js", {}, 403),
            (f"/{'0' * 32}/", {}, 403),
            (path, {"Host": "evil.example"}, 403),
            (path, {"Host": f"evil.example:{self.terminal.parts.port}"}, 403),
            (path, {"Origin": "http://evil.example"}, 403),
            (path + "none.js", {}, 404),
            (path + "file/tmp/none", {}, 404),
            (path + "file/../../etc/passwd", {}, 403),
            (path + "file/%2e%2e/%2e%2e/etc/passwd", {}, 403),
        ]:
            response, _ = self.terminal.get(asked, headers=headers)
            self.assertEqual(response.status, status, (asked, headers))
        for method in ["POST", "PUT", "DELETE"]:
            self.assertEqual(self.terminal.get(path, method)[0].status, 405, method)

    def test_listens_on_the_loopback_interface_only(self):
        port = f":{self.terminal.parts.port:04X}"
        found = []
        for table in ["tcp", "tcp6"]:
            with open(f"/proc/net/{table}", encoding="ascii") as file:
                found += [row.split()[1][: -len(port)] for row in file if row.split()[1].endswith(port)]
        self.assertIn("0100007F", found)
        self.assertLessEqual(set(found), {"0100007F", "00000000000000000000000001000000"})


def is_closed(connection, seconds=10):
    connection.settimeout(seconds)
    try:
        return connection.recv(1) == b""
    except ConnectionError:
        return True
    except TimeoutError:
        return False


class Crowd(unittest.IsolatedAsyncioTestCase):
    """Visitors who do not know the token, and one who does not read."""

    def start(self, **how):
        terminal = Terminal(**how)
        self.addCleanup(terminal.close)
        return terminal

    def post(self, terminal, head, body, limit):
        """Sends a request's body until it is refused, at most `limit` bytes; tells the answer and how much was sent."""
        connection = terminal.connect()
        self.addCleanup(connection.close)
        connection.sendall(head)
        sent = 0
        try:
            while sent < limit:
                connection.sendall(body)
                sent += len(body)
        except ConnectionError:
            pass
        try:
            answer = connection.recv(4096)
        except ConnectionError:
            answer = b""
        return answer, sent

    def test_reads_no_body_of_who_has_no_token(self):
        terminal = self.start()
        limit = 64 << 20
        before = terminal.resident()
        host = f"Host: {terminal.parts.netloc}\r\n"
        chunk = b"10000\r\n" + bytes(0x10000) + b"\r\n"
        for head, body in [
            (f"POST / HTTP/1.1\r\n{host}Content-Length: {limit}\r\n\r\n", bytes(0x10000)),
            (f"POST / HTTP/1.1\r\n{host}Transfer-Encoding: chunked\r\n\r\n", chunk),
            (f"GET / HTTP/1.1\r\nHost: evil\r\nContent-Length: {limit}\r\n\r\n", bytes(0x10000)),
        ]:
            answer, sent = self.post(terminal, head.encode(), body, limit)
            self.assertTrue(answer.startswith(b"HTTP/1.1 403 "), (head, answer))
            self.assertLess(sent, limit / 2, head)
        self.assertEqual(terminal.get(terminal.parts.path)[0].status, 200)
        self.assertLess(terminal.resident() - before, 10)

    def test_keeps_no_body_of_who_has_the_token(self):
        terminal = self.start()
        before = terminal.resident()
        head = f"GET {terminal.parts.path} HTTP/1.1\r\nHost: {terminal.parts.netloc}\r\nContent-Length: {64 << 20}\r\n\r\n"
        answer, _ = self.post(terminal, head.encode(), bytes(0x10000), 64 << 20)
        self.assertTrue(answer.startswith(b"HTTP/1.1 200 "), answer)
        self.assertLess(terminal.resident() - before, 10)

    def test_the_oldest_stranger_makes_room_for_the_next(self):
        terminal = self.start()
        strangers = []
        for _ in range(17):
            strangers.append(terminal.connect())
            self.addCleanup(strangers[-1].close)
            self.assertEqual(terminal.get(terminal.parts.path)[0].status, 200)
        self.assertTrue(is_closed(strangers[0]))
        self.assertFalse(is_closed(strangers[-1], 0.1))

    def test_running_out_of_descriptors_does_not_end_the_page(self):
        terminal = self.start(descriptors=40)
        crowd = [terminal.connect() for _ in range(100)]
        for connection in crowd:
            connection.close()
        for _ in range(3):
            self.assertEqual(terminal.get(terminal.parts.path)[0].status, 200)

    async def test_a_page_that_does_not_read_is_dropped(self):
        terminal = self.start()
        before = terminal.resident()
        stalled = terminal.connect()
        self.addCleanup(stalled.close)
        stalled.sendall(
            f"GET {terminal.parts.path}socket HTTP/1.1\r\nHost: {terminal.parts.netloc}\r\nOrigin: http://{terminal.parts.netloc}\r\n"
            "Connection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
            "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n\r\n".encode()
        )
        async with terminal.page() as socket:
            rest = split('"' * 250_000) + "\x03"  # twice as long in a message
            for number in range(100):
                await self.host_sends_slowly(terminal, "\x1b[2A\x02" + split(f"{number} ") + rest)
                await told(socket, "screen", lambda message, start=f"{number} ": message["text"].startswith(start))
        self.assertLess(terminal.resident() - before, 32)

    async def host_sends_slowly(self, terminal, text):
        rest = text.encode("latin-1")
        while rest:
            try:
                rest = rest[os.write(terminal.line, rest) :]
            except BlockingIOError:
                await asyncio.sleep(0.001)

    def test_sends_nothing_to_pages_that_are_leaving(self):
        terminal = self.start()
        upgrade = (
            f"GET {terminal.parts.path}socket HTTP/1.1\r\nHost: {terminal.parts.netloc}\r\nOrigin: http://{terminal.parts.netloc}\r\n"
            "Connection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
            "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n\r\n"
        ).encode()
        close = b"\x88\x80\0\0\0\0"
        for number in range(200):
            connection = terminal.connect()
            connection.sendall(upgrade + [b"", close, b"\xff\xff"][number % 3])
            if number % 2:
                connection.setsockopt(sockets.SOL_SOCKET, sockets.SO_LINGER, struct.pack("ii", 1, 0))
            connection.close()
            terminal.host_sends("\x1b[4STARTEVALUTF8")
        self.assertEqual(terminal.get(terminal.parts.path)[0].status, 200)


class UsbPage(unittest.IsolatedAsyncioTestCase):
    def setUp(self):
        self.errors = tempfile.TemporaryFile()
        command = [TERMINAL, "exec", "--vid-pid", USB_ID, "--ui", "--", sys.executable, "-c", USB_HOST, USB_ID]
        pipe = subprocess.PIPE
        self.process = subprocess.Popen(command, stdin=pipe, stdout=pipe, stderr=self.errors)
        self.addCleanup(self.end)

    def end(self):
        self.process.communicate(timeout=20)
        self.errors.close()
        self.assertEqual(self.process.returncode, 0)

    async def address(self):
        for _ in range(1000):
            self.errors.seek(0)
            if found := re.search(r"http://(\S+)", self.errors.read().decode()):
                return found.group(1)
            await asyncio.sleep(0.01)
        return self.fail("no address was printed")

    async def test_rates_a_service_and_pulls_the_plug(self):
        address = await self.address()
        origin = "http://" + address.split("/")[0]
        async with websockets.connect(f"ws://{address}socket", origin=origin) as socket:
            screen = await told(socket, "screen", lambda message: message["kind"] == "evaluation")
            act = {"type": "act", "screen": screen["number"], "kind": "key", "text": "1"}
            await socket.send(json.dumps(act))
            self.assertEqual(self.process.stdout.readline().decode().strip(), "B1F")
            for plugged in [False, True]:
                await socket.send(json.dumps({"type": "plug", "plugged": plugged}))
                await told(socket, "link", lambda message, state=plugged: message["plugged"] == state)


if __name__ == "__main__":
    unittest.main()
