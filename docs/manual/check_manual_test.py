#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
from __future__ import annotations

import unittest
import xml.etree.ElementTree as ElementTree
from collections.abc import Sequence

from check_manual import missing

PARAMETER = ('<parameterlist kind="param"><parameteritem><parameternamelist><parametername>{}</parametername>'
             '</parameternamelist></parameteritem></parameterlist>')
RESULT = ('<parameterlist kind="retval"><parameteritem><parameternamelist><parametername><ref>GWQ_OK</ref></parametername>'
          '</parameternamelist></parameteritem></parameterlist>')
RETURN = '<simplesect kind="return"/>'
SINCE = '<simplesect kind="since"/>'


def lacks(sections: str, parameters: Sequence[str] = (), result: str = '<ref>GWQ_API</ref> int',
          kind: str = 'function') -> list[str]:
    params = ''.join(f'<param><type>int</type><declname>{name}</declname></param>' for name in parameters)
    return list(missing(ElementTree.fromstring(
        f'<memberdef kind="{kind}"><type>{result}</type><name>PN_SetX</name>{params}'
        f'<detaileddescription><para>{sections}</para></detaileddescription></memberdef>')))


class MissingTest(unittest.TestCase):
    def test_a_whole_comment_lacks_nothing(self) -> None:
        self.assertEqual(lacks(PARAMETER.format('a') + RESULT + SINCE, ['a']), [])

    def test_each_argument_is_described_under_its_name(self) -> None:
        self.assertEqual(lacks(PARAMETER.format('a') + RESULT + SINCE, ['a', 'b']), ['@param b'])
        self.assertEqual(lacks(PARAMETER.format('c') + RESULT + SINCE, ['a']), ['@param a'])

    def test_a_result_is_described_by_its_statuses_or_in_words(self) -> None:
        self.assertEqual(lacks(SINCE), ['@retval or @return'])
        self.assertEqual(lacks(RETURN + SINCE), [])

    def test_what_returns_nothing_describes_no_result(self) -> None:
        self.assertEqual(lacks(SINCE, result='void'), [])
        self.assertEqual(lacks(SINCE, result='void *'), ['@retval or @return'])

    def test_the_version_that_brought_it_is_named(self) -> None:
        self.assertEqual(lacks(RESULT), ['@since'])

    def test_a_datum_only_has_to_name_its_version(self) -> None:
        self.assertEqual(lacks(SINCE, kind='variable'), [])
        self.assertEqual(lacks('', kind='variable'), ['@since'])


if __name__ == '__main__':
    unittest.main()
