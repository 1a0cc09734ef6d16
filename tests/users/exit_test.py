# SPDX-License-Identifier: MIT
"""Hosts that exit while a call waits: exit_test.py HOST HOST_IN_PYTHON TEST...

GWQ_TEST_STORAGE is where the terminal keeps its files; GWQ_TEST_CYCLES exits of each kind, at random moments that
GWQ_TEST_SEED repeats."""
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import time
import unittest

HOST, HOST_IN_PYTHON = sys.argv[1:3]
del sys.argv[1:3]
CYCLES = int(os.environ.get('GWQ_TEST_CYCLES', '2'))
SEED = int(os.environ.get('GWQ_TEST_SEED', random.randrange(1 << 30)))
STATUS = 7
LONGEST_S = 3
PULLED = 2_000_000  # at a report every 10 ms
PUSHED = 200_000_000
# After a packet that was cut.
TERMINAL_IS_QUIET_S = 1.1


class Exit(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        print('seed', SEED)
        cls.random = random.Random(SEED)
        storage = pathlib.Path(os.environ['GWQ_TEST_STORAGE']) / 'tmp'
        storage.mkdir(parents=True, exist_ok=True)
        (storage / 'large.bin').write_bytes(bytes(PULLED))

    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)
        with open(self.directory / 'pushed.bin', 'wb') as file:
            file.truncate(PUSHED)

    def exit_once(self, host, call):
        file = self.directory / ('pushed.bin' if call == 'push' else 'pulled.bin')
        moment = self.random.randrange(100, 1800)
        with subprocess.Popen([*host, call, file, str(moment)], text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT) as process:
            try:
                output, _ = process.communicate(timeout=moment / 1000 + 15)
            finally:
                process.kill()
            ended = time.monotonic()
        self.assertEqual(process.returncode, STATUS, f'{call} at {moment} ms: {output}')
        told = re.search(r'exits at (\d+)', output)
        took = ended - int(told[1]) / 1000
        self.assertLess(took, LONGEST_S, f'{call} at {moment} ms')
        if call == 'push':
            time.sleep(TERMINAL_IS_QUIET_S)
        return took

    def exit_again_and_again(self, *host):
        for call in ('pin', 'push', 'pull'):
            with self.subTest(call=call):
                took = [self.exit_once(host, call) for _ in range(CYCLES)]
                print(f'{self.id()}, {call}: {len(took)} exits, the slowest took {max(took):.2f} s')


class ExitOfC(Exit):
    def test_main_returns(self):
        self.exit_again_and_again(HOST, 'main_returns')

    def test_main_exits(self):
        self.exit_again_and_again(HOST, 'main_exits')

    def test_another_thread_exits(self):
        self.exit_again_and_again(HOST, 'another_exits')

    def test_a_child_exits_and_the_parent_goes_on(self):
        self.exit_again_and_again(HOST, 'child_exits')


class ExitOfPython(Exit):
    def test_while_a_daemon_thread_waits(self):
        self.exit_again_and_again(sys.executable, HOST_IN_PYTHON)


if __name__ == '__main__':
    unittest.main()
