# SPDX-License-Identifier: MIT
"""What interface.json has of the statuses: interface_test.py INTERFACE"""
import json
import sys
import unittest

with open(sys.argv.pop(1), encoding='utf-8') as file:
    INTERFACE = json.load(file)


class Statuses(unittest.TestCase):
    def test_have_their_texts_in_both_languages(self):
        statuses = {row['status']: row for row in INTERFACE['statuses']}
        self.assertEqual(len(statuses), len(INTERFACE['statuses']))
        self.assertEqual(statuses[-23]['name'], 'GWQ_CANCELLED')
        self.assertEqual(statuses[-15]['cause'], {'en': 'A file is missing.', 'zh': '文件不存在。'})
        for row in INTERFACE['statuses'] + INTERFACE['function_statuses']:
            for text in ('cause', 'remedy'):
                self.assertEqual(list(row[text]), ['en', 'zh'])
                self.assertTrue(row[text]['en'].endswith('.') and row[text]['zh'].endswith('。'), row)

    def test_of_functions_name_known_statuses_and_exported_functions(self):
        statuses = {row['status'] for row in INTERFACE['statuses']}
        exported = {row['name'] for row in INTERFACE['exports']}
        self.assertGreater(len(INTERFACE['function_statuses']), 30)
        for row in INTERFACE['function_statuses']:
            self.assertIn(row['status'], statuses)
            self.assertTrue(row['functions'] and exported.issuperset(row['functions']), row)

    def test_of_a_function_have_the_general_remedy_where_there_is_no_other(self):
        general, = (row for row in INTERFACE['statuses'] if row['status'] == -1)
        own, = (row for row in INTERFACE['function_statuses'] if row['status'] == -1 and row['functions'] == ['PN_GetInNo'])
        self.assertEqual(own['remedy'], general['remedy'])


if __name__ == '__main__':
    unittest.main()
