#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
from __future__ import annotations

import unittest

from header_filter import transformed

HEAD = '''/**
 * @file
 * PINs.
 *
 * @remark One thread at a time.
 *   CancelRead() ends GWQ_REFUSED.
 *
 * @warning Careful.
 */
'''


def manual(declarations: str) -> str:
    return transformed('pinpad/entry.h', HEAD + '\n' + declarations)


def own(declarations: str) -> str:
    """What a declaration's comment becomes."""
    return manual(declarations)[len(HEAD):].split('/**', 1)[1].split('*/')[0]


class FilterTest(unittest.TestCase):
    def test_a_function_and_a_datum_get_their_place(self) -> None:
        self.assertIn('@ingroup pin\n * Sets.', own('/** Sets. */\nGWQ_API int PN_SetX(int a);\n'))
        self.assertIn('@ingroup pin\n', own('/** Bytes. */\nGWQ_API extern unsigned char m_szX[200];\n'))

    def test_a_function_gets_the_remarks_and_warnings_of_the_head_and_a_datum_does_not(self) -> None:
        text = own('/**\n * Sets.\n */\nGWQ_API int PN_SetX(int a);\n')
        self.assertIn('@remark One thread at a time.\n *   CancelRead() ends', text)
        self.assertIn('@warning Careful.', text)
        self.assertNotIn('@remark', own('/** Bytes. */\nGWQ_API extern int g_x;\n'))

    def test_a_status_leads_to_what_to_do_about_it(self) -> None:
        text = own('/**\n * Not GWQ_NO_FILE.\n *\n * @retval GWQ_REFUSED  (-14) else GWQ_OTHER\n */\nGWQ_API int PN_SetX(int a);\n')
        self.assertIn('Not @ref status15 "GWQ_NO_FILE".', text)
        self.assertIn('@retval GWQ_REFUSED  (@ref status14 "-14") else GWQ_OTHER', text)
        self.assertIn('ends @ref status14 "GWQ_REFUSED".', text)

    def test_code_stays_as_it_is(self) -> None:
        text = own('/**\n * `GWQ_REFUSED`\n * @code\n * GWQ_REFUSED\n * @endcode\n */\nGWQ_API void PN_SetX(void);\n')
        self.assertNotIn('@ref', text.split('@endcode')[0])

    def test_a_status_itself_leads_to_its_row(self) -> None:
        self.assertIn('No. @ref status14 "What to do"', own('enum X {\n  /** No. */\n  GWQ_REFUSED = -14,\n};\n'))

    def test_other_declarations_are_left_alone(self) -> None:
        declaration = '/** Both. */\nstruct X {\n  int a; /**< first */\n};\n'
        self.assertTrue(manual(declaration).endswith(declaration))

    def test_bytes_on_the_wire_are_with_their_function(self) -> None:
        text = own('/** Reads. */\nGWQ_API int PN_GetPinPadFactor(int iPortNo);\n')
        self.assertIn('<td>frame, body 30 19</td>', text)
        self.assertNotIn('On the wire', own('/** Reads. */\nGWQ_API int PN_GetX(int iPortNo);\n'))

    def test_what_doxygen_would_take_for_markup_is_escaped_on_the_wire(self) -> None:
        self.assertIn('ESC \\[2', own('/** Signs. */\nGWQ_API int MP_SignPDF(int iTimeout);\n'))


if __name__ == '__main__':
    unittest.main()
