#!/usr/bin/env python3
import unittest

from header_filter import Comment, transformed

HEAD = '''/* PINs.
 *
 * Common arguments
 *   iPortNo    0 USB
 *   iBaudRate  bits per second
 *
 * Common results
 *   0    success
 *   -14  refused
 *
 * One thread at a time.
 */
'''


def manual(declarations):
    return transformed('pinpad/entry.h', HEAD + '\n' + declarations)


class CommentTest(unittest.TestCase):
    def test_an_items_text_goes_on_in_deeper_lines(self):
        parts = Comment(' Does.\n *   name  in; a text\n *         that goes on\n * Also this.').parts
        self.assertEqual(parts, [('text', 'Does.'), ('item', 'name', 'in; a text that goes on'), ('text', 'Also this.')])

    def test_indented_lines_are_verbatim(self):
        parts = Comment(' Frame:\n *\n *     offset  0\n *             STX').parts
        self.assertEqual(parts[1], ('pre', ['     offset  0', '             STX']))


class FilterTest(unittest.TestCase):
    def test_a_function_gets_its_own_and_the_common_arguments(self):
        text = manual('/* Sets.\n *   out  out; bytes\n *   both  in: room; out: length */\n'
                      'GWQ_API int PN_SetX(int iPortNo, char* out, int* both);\n\n')
        self.assertIn('@param[in] iPortNo 0 USB', text)
        self.assertIn('@param[out] out bytes', text)
        self.assertIn('@param[in,out] both in: room; out: length', text)
        self.assertNotIn('@param[in] iBaudRate', text)

    def test_an_argument_that_nobody_describes_is_left_to_doxygens_complaint(self):
        self.assertNotIn('@param', manual('/* Sets. */\nGWQ_API int PN_SetX(int strange);\n\n'))

    def test_an_argument_is_described_where_the_comment_refers_to(self):
        text = manual('/* Sets.\n *   size  in; bytes */\nGWQ_API int PN_SetX(int size);\n\n'
                      '/* As PN_SetX. */\nGWQ_API int PN_SetY(int size);\n\n')
        self.assertEqual(text.count('@param[in] size bytes'), 2)

    def test_common_results_stand_beside_what_a_function_adds_and_not_beside_what_it_returns(self):
        text = manual('/* Sets. Also -24: too small. */\nGWQ_API int PN_SetX(void);\n\n')
        self.assertIn('@ref status14 "-14"', text)
        self.assertIn('Also @ref status24 "-24": too small.', text)
        text = manual('/* Sets. Returns 0 always. */\nGWQ_API int PN_SetX(void);\n\n')
        self.assertIn('@return Returns 0 always.', text.split('@file')[1].split('/**')[1])
        self.assertNotIn('@ref status14', text.split('*/')[1])

    def test_two_names_of_one_comment_are_both_documented(self):
        text = manual('/* Sets. */\nGWQ_API int PN_SetX(int iPortNo);\nGWQ_API int PN_SetY(int iPortNo);\n\n')
        self.assertEqual(text.count('@brief Sets.'), 2)

    def test_what_doxygen_would_take_for_markup_is_escaped(self):
        self.assertIn('\\\\e[0X &lt;STX&gt; \\@', manual('/* Sends \\e[0X <STX> @. */\nGWQ_API void PN_SetX(void);\n\n'))

    def test_bytes_on_the_wire_stand_with_their_function(self):
        text = manual('/* Reads. */\nGWQ_API int PN_GetPinPadFactor(int iPortNo);\n\n')
        self.assertIn('<td>frame, body 30 19</td>', text)

    def test_the_comments_of_members_follow_them(self):
        self.assertIn('int a; /**< first */', manual('/* Both. */\nstruct X {\n  int a; /* first */\n};\n\n'))


if __name__ == '__main__':
    unittest.main()
