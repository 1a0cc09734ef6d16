# SPDX-License-Identifier: MIT
"""The types that the Python module gives to functions are those of the headers: prototypes_test.py INTERFACE"""
import ctypes
import json
import re
import sys
import unittest
from ctypes import POINTER

from gwq import native

with open(sys.argv.pop(1), encoding='utf-8') as file:
    INTERFACE = {e['name']: e['signature'] for e in json.load(file)['exports'] if e['linkage'] == 'C'}
TYPES = {
    'int': ctypes.c_int, 'char': ctypes.c_char, 'void*': ctypes.c_void_p, 'const char*': ctypes.c_char_p,
    'char*': POINTER(ctypes.c_char), 'int*': POINTER(ctypes.c_int), 'unsigned int*': POINTER(ctypes.c_uint),
}


def types_of(signature):
    parameters = re.search(r'\((.*)\)', signature)[1]
    names = [] if parameters == 'void' else [re.sub(r'\s*\b\w+$', '', p.strip()) for p in parameters.split(',')]
    return [TYPES[name] for name in names]


class Prototypes(unittest.TestCase):
    def test_are_those_of_the_headers(self):
        self.assertGreater(len(native.FUNCTIONS), 30)
        for name, arguments in native.FUNCTIONS.items():
            with self.subTest(name):
                self.assertEqual(arguments, types_of(INTERFACE[name]))
                self.assertTrue(INTERFACE[name].startswith('int '), INTERFACE[name])

    def test_are_set_on_the_library(self):
        library = native.load()
        for name, arguments in native.FUNCTIONS.items():
            self.assertEqual(getattr(library, name).argtypes, arguments)
            self.assertIs(getattr(library, name).restype, ctypes.c_int)


if __name__ == '__main__':
    unittest.main()
