#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The check finds each kind of wrong include, in a copy of its own."""
import pathlib
import tempfile
import unittest

import check_includes


class CheckIncludes(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.source = pathlib.Path(folder.name)
        for name in ('export.h', 'links/serial.h', 'links/internal/link.h', 'files/push.h', 'frame/internal/ask.h'):
            (self.source / name).parent.mkdir(parents=True, exist_ok=True)
            (self.source / name).touch()

    def problem(self, path, mark, included):
        return check_includes.wrong(self.source, pathlib.Path(path), mark, included)

    def problem_in_terminal(self, path, included):
        return check_includes.wrong_in_terminal(self.source, pathlib.Path(path), included)

    def test_lets_arrows_point_down(self):
        self.assertIsNone(self.problem('frame/exchange.cpp', '"', 'links/internal/link.h'))
        self.assertIsNone(self.problem('frame/port.h', '<', 'gwq/links/serial.h'))
        self.assertIsNone(self.problem('links/serial.h', '<', 'gwq/export.h'))
        self.assertIsNone(self.problem('links/serial.cpp', '<', 'unistd.h'))

    def test_finds_an_arrow_that_points_up(self):
        self.assertIn('may not include', self.problem('links/serial.cpp', '"', 'frame/internal/ask.h'))
        self.assertIn('may not include', self.problem('links/serial.h', '<', 'gwq/files/push.h'))

    def test_finds_a_header_spelt_otherwise(self):
        self.assertIn('as <gwq/...>', self.problem('files/pull.cpp', '"', 'files/push.h'))
        self.assertIn('as <gwq/...>', self.problem('files/pull.cpp', '<', 'gwq/links/internal/link.h'))

    def test_finds_an_internal_header_in_a_public_one(self):
        self.assertIn('public header', self.problem('files/push.h', '"', 'links/internal/link.h'))

    def test_finds_a_shared_header_that_includes_a_room(self):
        self.assertIn('shared header', self.problem('export.h', '<', 'gwq/links/serial.h'))

    def test_finds_a_terminal_that_shares_with_the_library(self):
        for included in ('gwq/export.h', 'export.h', 'links/internal/link.h'):
            self.assertIn('shares nothing', self.problem_in_terminal('web/page.cpp', included))
        for included in ('usb_ids.h', 'scenarios/stage.h', 'vector'):
            self.assertIsNone(self.problem_in_terminal('web/page.cpp', included))

    def test_finds_transports_in_the_core_of_the_terminal(self):
        self.assertIn('may not include', self.problem_in_terminal('scenarios/stage.h', 'transports/clock.h'))
        self.assertIsNone(self.problem_in_terminal('web/page.cpp', 'transports/clock.h'))


if __name__ == '__main__':
    unittest.main()
