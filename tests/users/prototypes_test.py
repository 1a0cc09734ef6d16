# SPDX-License-Identifier: MIT
"""The types that the Python module gives to functions are those of the headers: prototypes_test.py INTERFACE"""
import ctypes
import json
import math
import pathlib
import re
import sys
import unittest
from ctypes import POINTER

from gwq import native

ROOT = pathlib.Path(__file__).resolve().parents[2]
with open(sys.argv.pop(1), encoding='utf-8') as file:
    INTERFACE = {e['name']: e['signature'] for e in json.load(file)['exports'] if e['linkage'] == 'C' and e['kind'] == 'function'}
VALUES = {'int': ctypes.c_int, 'unsigned int': ctypes.c_uint, 'char': ctypes.c_char, 'unsigned char': ctypes.c_ubyte}
POINTERS = {'int': POINTER(ctypes.c_int), 'unsigned int': POINTER(ctypes.c_uint), 'unsigned short': POINTER(ctypes.c_ushort),
            'char': native.Buffer, 'unsigned char': native.Buffer, 'void': ctypes.c_void_p, 'TransMssionLinux_t': ctypes.c_void_p,
            'struct GwqFailure': POINTER(native.FailureRecord), 'struct GwqTerminalPlace': POINTER(native.PlaceRecord)}


def type_of(text):
    """That of a parameter without its name."""
    if text == 'const char*':
        return ctypes.c_char_p
    if text in ('GwqEndOfRead', 'GwqProgress'):  # functions
        return ctypes.c_void_p
    return POINTERS[text.removeprefix('const ').removesuffix('*')] if text.endswith('*') else VALUES[text]


def types_of(signature):
    parameters = re.search(r'\((.*)\)', signature)[1]
    names = [] if parameters == 'void' else [re.sub(r'\s*\b\w+$', '', p.strip()) for p in parameters.split(',')]
    return [type_of(name) for name in names if name != '...']


def sizes_in_header(struct):
    """The size of each field, in order."""
    header = (ROOT / 'src' / 'extra.h').read_text(encoding='utf-8')
    body = re.search(rf'struct {struct} \{{(.*?)\n\}};', header, re.DOTALL)[1]
    fields = re.findall(r'^ *(int|char) (\w+)((?:\[\d+\])*);', body, re.MULTILINE)
    return {name: (4 if kind == 'int' else 1) * math.prod(map(int, re.findall(r'\d+', rooms))) for kind, name, rooms in fields}


class Prototypes(unittest.TestCase):
    def test_are_those_of_the_headers(self):
        self.assertGreaterEqual(len(INTERFACE), 200)
        self.assertEqual(native.FUNCTIONS.keys(), INTERFACE.keys())
        for name, arguments in native.FUNCTIONS.items():
            with self.subTest(name):
                self.assertEqual(arguments, types_of(INTERFACE[name]))

    def test_of_the_failure_is_the_headers_struct(self):
        sizes = sizes_in_header('GwqFailure')
        sizes['advice'], advice_zh = sizes['advice'] // 2, sizes['advice'] // 2
        record = {name: ctypes.sizeof(kind) for name, kind in native.FailureRecord._fields_}
        self.assertEqual(record.pop('advice_zh'), advice_zh)
        self.assertEqual(record, sizes)
        self.assertEqual(list(record), list(sizes))

    def test_of_the_place_is_the_headers_struct(self):
        record = [(name, ctypes.sizeof(kind)) for name, kind in native.PlaceRecord._fields_]
        self.assertEqual(record, list(sizes_in_header('GwqTerminalPlace').items()))

    def test_are_set_on_the_library(self):
        library = native.load()
        for name, arguments in native.FUNCTIONS.items():
            function = getattr(library, name)
            self.assertEqual(function.argtypes, arguments)
            if INTERFACE[name].startswith('int '):
                self.assertIs(function.restype, ctypes.c_int)
            if INTERFACE[name].startswith('void '):
                self.assertIsNone(function.restype)


class Buffers(unittest.TestCase):
    def setUp(self):
        self.library = native.load()

    def test_are_written(self):
        text = ctypes.create_string_buffer(8)
        self.assertEqual((self.library.HexToAscii(b'\x12\xab', 2, text), text.value), (4, b'12AB'))
        characters = (ctypes.c_ubyte * 2)()
        self.assertEqual((self.library.AsciiToHex(b'12ab', 4, characters), bytes(characters)), (2, b'\x12\xab'))

    def test_bytes_are_handed_over_as_a_copy(self):
        text = b'a b'
        self.library.ClearInvisibleCharInStr(text)
        self.assertEqual(text, b'a b')
        buffer = ctypes.create_string_buffer(text)
        self.library.ClearInvisibleCharInStr(buffer)
        self.assertEqual(buffer.value, b'ab')

    def test_are_no_texts_and_no_numbers(self):
        for wrong in ('text', 5):
            with self.assertRaises(ctypes.ArgumentError):
                self.library.ClearInvisibleCharInStr(wrong)

    def test_an_older_library_may_lack_a_function(self):
        class Older:
            CancelRead = self.library.CancelRead

        opened = native._opened
        native._opened = Older
        self.addCleanup(setattr, native, '_opened', opened)
        self.assertFalse(hasattr(native.load(), 'HexToAscii'))


if __name__ == '__main__':
    unittest.main()
