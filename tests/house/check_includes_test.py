#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The check finds each kind of wrong include, in a copy of its own."""
from __future__ import annotations

import pathlib
import tempfile
import unittest

import check_includes


class CheckIncludes(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.source = pathlib.Path(folder.name)
        for name in ('export.h', 'links/serial.h', 'links/internal/link.h', 'files/push.h', 'frame/internal/ask.h'):
            (self.source / name).parent.mkdir(parents=True, exist_ok=True)
            (self.source / name).touch()

    def problem(self, path: str, mark: str, included: str) -> str | None:
        return check_includes.wrong(self.source, pathlib.Path(path), mark, included)

    def problem_in_terminal(self, path: str, included: str, mark: str = '"') -> str | None:
        return check_includes.wrong_in_terminal(self.source, pathlib.Path(path), mark, included)

    def test_lets_arrows_point_down(self) -> None:
        self.assertIsNone(self.problem('frame/exchange.cpp', '"', 'links/internal/link.h'))
        self.assertIsNone(self.problem('frame/port.h', '<', 'gwq/links/serial.h'))
        self.assertIsNone(self.problem('links/serial.h', '<', 'gwq/export.h'))
        self.assertIsNone(self.problem('links/serial.cpp', '<', 'unistd.h'))

    def test_finds_an_arrow_that_points_up(self) -> None:
        self.assertIn('may not include', self.problem('links/serial.cpp', '"', 'frame/internal/ask.h') or '')
        self.assertIn('may not include', self.problem('links/serial.h', '<', 'gwq/files/push.h') or '')

    def test_finds_a_header_spelt_otherwise(self) -> None:
        self.assertIn('as <gwq/...>', self.problem('files/pull.cpp', '"', 'files/push.h') or '')
        self.assertIn('as <gwq/...>', self.problem('files/pull.cpp', '<', 'gwq/links/internal/link.h') or '')

    def test_finds_an_internal_header_in_a_public_one(self) -> None:
        self.assertIn('public header', self.problem('files/push.h', '"', 'links/internal/link.h') or '')

    def test_finds_a_shared_header_that_includes_a_room(self) -> None:
        self.assertIn('shared header', self.problem('export.h', '<', 'gwq/links/serial.h') or '')

    def test_finds_a_terminal_that_shares_with_the_library(self) -> None:
        for included in ('gwq/export.h', 'export.h', 'links/internal/link.h'):
            self.assertIn('shares nothing', self.problem_in_terminal('web/page.cpp', included) or '')
        for included in ('usb_ids.h', 'recording/writer.h', 'device/device.h'):
            self.assertIsNone(self.problem_in_terminal('web/page.cpp', included))
        self.assertIsNone(self.problem_in_terminal('web/page.cpp', 'vector', '<'))

    def test_finds_an_arrow_of_the_terminal_that_points_up(self) -> None:
        for path, included in (('device/device.h', 'customer/live.h'), ('base/clock.h', 'device/trace.h'), ('usb/urb.h', 'umockdev/testbed.h')):
            self.assertIn('may not include', self.problem_in_terminal(path, included) or '')
        self.assertIsNone(self.problem_in_terminal('app/main.cpp', 'umockdev/testbed.h'))

    def test_finds_includes_outside_of_the_terminals_rooms(self) -> None:
        self.assertIn('not in a room', self.problem_in_terminal('web/page.cpp', 'messages.h') or '')
        self.assertIn('is no room', self.problem_in_terminal('hostile/line.h', 'base/types.h') or '')

    def test_finds_who_includes_the_whole_device_for_nothing(self) -> None:
        include = '#include "device/device.h"\n'
        self.assertTrue(check_includes.needs_no_device(include + 'Bytes answer;  // of the Device\n'))
        self.assertFalse(check_includes.needs_no_device(include + 'Device device;\n'))
        self.assertFalse(check_includes.needs_no_device('Bytes answer;\n'))


if __name__ == '__main__':
    unittest.main()
