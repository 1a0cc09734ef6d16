# SPDX-License-Identifier: MIT
"""What gwq does itself, above a library that a test plays."""
import copy
import ctypes
import os
import pathlib
import pickle
import tempfile
import threading
import time
import unittest
from unittest import mock

import gwq
from gwq import (Algorithm, Answer, Cancelled, Display, EndRule, GwqError, Name, NoAnswer, OldSignature, PublicKeyType, Rating,
                 StatusCode, Terminal, TimedOut, native)
from gwq import terminal as module

PAPER = pathlib.Path(__file__)
OLD, NEW = b'1,1,1,1\n', b'2,2,2,2\n'


class Library:
    """Signs as told, and cancels when a test lets it."""

    def __init__(self, *signatures):
        self.signatures = list(signatures)
        self.calls = []
        self.cancel_ends = threading.Event()
        self.cancel_ends.set()
        self.cancel_status = 0
        self.while_signing = lambda: None

    def MP_SignPDF(self, *arguments):
        self.calls.append('MP_SignPDF')
        self.while_signing()
        picture = pathlib.Path(os.fsdecode(arguments[6]))
        picture.write_bytes(b'picture')
        signature = self.signatures.pop(0)
        if isinstance(signature, int):
            return signature
        (picture.parent / 'hw.data').write_bytes(signature)
        return 0

    def MP_CancelCurrentOperation(self, *arguments):
        self.calls.append('MP_CancelCurrentOperation')
        self.cancel_ends.wait(10)
        return self.cancel_status

    def GWQ_GetFailure(self, record):
        return 0

    def MP_CancleEvaluate(self, *arguments):
        self.calls.append('MP_CancleEvaluate')
        return 0


class WithLibrary(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.out = pathlib.Path(directory.name)
        self.now = 1000.0
        self.enter(mock.patch.object(module, '_last_signature', module._LastSignature()))
        self.enter(mock.patch.object(module.time, 'monotonic', lambda: self.now))

    def enter(self, patch):
        patch.start()
        self.addCleanup(patch.stop)

    def terminal(self, library, port=0):
        with mock.patch.object(module, 'load', lambda: library):
            return Terminal(port)

    def sign(self, terminal, picture='signature.png', seconds=60):
        return terminal.sign_documents(PAPER, self.out / picture, place='1,300,100', seconds=seconds)

    def files(self):
        return sorted(path.name for path in self.out.iterdir())


class Signing(WithLibrary):
    def test_gives_the_picture_and_the_strokes(self):
        signature = self.sign(self.terminal(Library(NEW)))
        self.assertEqual((signature.picture, signature.strokes), (self.out / 'signature.png', NEW))
        self.assertEqual(self.files(), ['hw.data', 'signature.png'])

    def test_that_fails_leaves_no_signature_of_an_earlier_customer(self):
        (self.out / 'signature.png').write_text('earlier')
        (self.out / 'hw.data').write_text('earlier')
        with self.assertRaises(NoAnswer):
            self.sign(self.terminal(Library(-2)))
        self.assertEqual(self.files(), [])

    def test_is_timed_out_only_when_the_customers_time_is_over(self):
        for lasted, kind, cause in ((0, NoAnswer, 'refused or failed before'), (53, NoAnswer, 'refused or failed before'),
                                    (60, TimedOut, "The customer's time ran out")):
            with self.subTest(lasted), self.assertRaisesRegex(GwqError, cause) as caught:
                self.sign(self.terminal(self.lasting(Library(-2), lasted)))
            self.assertIs(type(caught.exception), kind)
            self.assertEqual(str(pickle.loads(pickle.dumps(caught.exception))), str(caught.exception))

    def test_does_not_begin_where_the_files_cannot_be_written(self):
        library = Library(NEW)
        (self.out / 'hw.data').mkdir()
        for picture, error in (('none/signature.png', FileNotFoundError), ('hw.data', IsADirectoryError),
                               ('signature.png', IsADirectoryError)):
            with self.subTest(picture), self.assertRaises(error):
                self.sign(self.terminal(library), picture)
        self.assertEqual((library.calls, self.files()), ([], ['hw.data']))

    def test_that_a_cancel_fell_into_is_cancelled_though_the_library_says_success(self):
        library = Library(OLD)
        library.while_signing = self.terminal(library).cancel
        with self.assertRaises(Cancelled) as caught:
            self.sign(self.terminal(library))
        self.assertEqual((caught.exception.status, self.files()), (-23, []))

    def test_begins_once_a_cancel_of_another_call_is_over(self):
        library = Library(NEW)
        library.cancel_ends.clear()
        other = threading.Thread(target=self.terminal(library).cancel)
        other.start()
        while not library.calls:
            time.sleep(0.001)
        threading.Timer(0.05, library.cancel_ends.set).start()
        self.assertEqual(self.sign(self.terminal(library)).strokes, NEW)
        other.join()
        self.assertEqual(library.calls, ['MP_CancelCurrentOperation', 'MP_SignPDF'])

    def lasting(self, library, seconds):
        def pass_time():
            self.now += seconds
        library.while_signing = pass_time
        return library

    def test_after_silence_is_not_that_of_the_time_before(self):
        library = Library(OLD, OLD, OLD, NEW)
        self.assertEqual(self.sign(self.terminal(library)).strokes, OLD)
        self.lasting(library, 63)
        for _ in range(2):
            with self.assertRaises(OldSignature) as caught:
                self.sign(self.terminal(library))
            self.assertEqual(self.files(), [])
        self.assertEqual(caught.exception.status, -14)
        self.assertRegex(str(pickle.loads(pickle.dumps(caught.exception))), 'MP_SignPDF: The terminal kept silent')
        self.assertEqual(self.sign(self.terminal(library)).strokes, NEW)

    def test_that_was_cancelled_is_known_again(self):
        library = Library(OLD, OLD)
        library.while_signing = self.terminal(library).cancel
        with self.assertRaises(Cancelled):
            self.sign(self.terminal(library))
        self.lasting(library, 63)
        with self.assertRaises(OldSignature):
            self.sign(self.terminal(library))

    def test_may_be_like_the_last_one_where_the_terminal_answered(self):
        library = self.lasting(Library(OLD, OLD), 59)
        for _ in range(2):
            self.assertEqual(self.sign(self.terminal(library)).strokes, OLD)


class Failing(WithLibrary):
    HELD = 'The device is held by process 4711 (other): end it, and call again.'

    def fail(self, function, status):
        def tell(record):
            told = record._obj
            told.status, told.step, told.holder = -3, 6, 4711
            told.function, told.holder_name, told.advice = function, b'other', self.HELD.encode()
            told.advice_zh = '设备被进程 4711 占用'.encode()
            return 0
        library = Library(status)
        library.GWQ_GetFailure = tell
        with self.assertRaises(gwq.GwqError) as caught:
            self.sign(self.terminal(library))
        return caught.exception

    def test_tells_what_the_call_failed_of(self):
        error = self.fail(b'MP_SignPDF', -3)
        self.assertTrue(str(error).endswith(f'(GWQ_NOT_OPENED, status -3) {self.HELD}'), error)
        self.assertEqual((error.failure.step, error.failure.holder, error.failure.holder_name), (gwq.Step.CLAIM, 4711, 'other'))
        self.assertEqual(error.failure.advice_zh, '设备被进程 4711 占用')
        self.assertEqual(pickle.loads(pickle.dumps(error)).failure, error.failure)

    def test_does_not_tell_what_another_call_failed_of(self):
        for function, status in ((b'MP_ShowPDF', -3), (b'MP_SignPDF', -11)):
            error = self.fail(function, status)
            self.assertIsNone(error.failure)
            self.assertNotIn('4711', str(error))


class Finding(WithLibrary):
    @staticmethod
    def of(count):
        """A library that sees so many terminals."""
        def find(places, room):
            for number in range(min(count, room)):
                places[number].bus, places[number].address, places[number].may_open = 1, number + 2, number % 2
                places[number].port_path, places[number].holder_name = f'1-{number + 1}'.encode(), b'caf\xe9'
            return count
        library = Library()
        library.GWQ_FindTerminals = find
        return mock.patch('gwq.places.load', lambda: library)

    def test_tells_where_each_terminal_is(self):
        for count in (0, 1, 4, 5, 30):
            with self.of(count):
                places = gwq.find_terminals()
            self.assertEqual([p.port_path for p in places], [f'1-{n + 1}' for n in range(count)])
            self.assertEqual([p.may_open for p in places], [n % 2 == 1 for n in range(count)])
            self.assertTrue(all(p.holder_name == 'caf\ufffd' for p in places))


class Cancelling(WithLibrary):
    def test_does_not_ask_for_the_close_commands_answer(self):
        library = Library()
        for library.cancel_status in (0, -2, -10, -11, -23):
            self.terminal(library).cancel()
        library.cancel_status = -3
        with self.assertRaisesRegex(gwq.GwqError, 'another program holds it'):
            self.terminal(library).cancel()

    def test_of_a_serial_terminal_sends_nothing_to_the_one_on_usb(self):
        library = Library()
        self.terminal(library, port=1).cancel()
        self.assertEqual(library.calls, ['MP_CancleEvaluate'])


class Entering(WithLibrary):
    def failure(self, status, lasted=0, seconds=60):
        """What a PIN entry comes to, by the type of its exception."""
        library = mock.Mock()
        library.PN_GetPinBlock = lambda *_: self.pass_time(lasted, status)
        with self.assertRaises(GwqError) as caught:
            self.terminal(library).pin_block(None, algorithm=Algorithm.TRIPLE_DES, digits=6, seconds=seconds)
        return type(caught.exception)

    def pass_time(self, seconds, status):
        self.now += seconds
        return status

    def test_a_pin_is_cancelled_by_the_pads_refusal_1(self):
        self.assertIs(self.failure(StatusCode.PIN_REFUSAL_1), Cancelled)
        self.assertIs(self.failure(StatusCode.PIN_REFUSAL_3), GwqError)

    def test_a_pin_is_timed_out_only_when_the_time_that_the_pad_got_is_over(self):
        self.assertIs(self.failure(StatusCode.NO_ANSWER), NoAnswer)
        self.assertIs(self.failure(StatusCode.READ_FAILED), GwqError)
        for status in (StatusCode.NO_ANSWER, StatusCode.READ_FAILED):
            self.assertIs(self.failure(status, 60), TimedOut)
            self.assertIs(self.failure(status, 44, seconds=300), TimedOut)


class Ports(WithLibrary):
    def test_other_than_usb_are_refused_where_only_usb_is_known(self):
        terminal = self.terminal(Library(), port=78)
        teller = gwq.Teller('Wang', '0123', 5)
        for name, arguments in {
                'ask_number': ['prompt'], 'ask_html': ['page'], 'rate': [], 'show_html': ['page'], 'show_teller': [teller],
                'set_teller': [teller], 'check_out': ['a', 'b'], 'show_documents': [PAPER], 'confirm_documents': [PAPER],
                'push': [PAPER], 'pull': ['/tmp/a', self.out / 'a'], 'add_photo': [PAPER], 'delete_photo': ['a'],
                'add_pictures': [PAPER], 'replace_pictures': [PAPER], 'delete_pictures': [], 'set_qr_code': [None],
                'update_firmware': [PAPER], 'description': [], 'firmware_version': [], 'build_date': [],
                'serial_number': [], 'set_pin_entry': [0, 6], 'public_key': [1, 2048], 'new_factor': [],
                'load_working_key': [b'k', 'f', 'v']}.items():
            with self.subTest(name), self.assertRaisesRegex(ValueError, 'USB only.*serial port 78'):
                getattr(terminal, name)(*arguments)
        with self.assertRaises(ValueError):
            terminal.pin_block(None, algorithm=0, digits=6)
        (self.out / 'signature.png').write_text('stays')
        with self.assertRaises(ValueError):
            self.sign(terminal)
        with self.assertRaises(ValueError):
            terminal.ask_html('page', screenshot=self.out / 'signature.png')
        self.assertEqual((self.out / 'signature.png').read_text(), 'stays')


class Numbers(WithLibrary):
    """The library and a teller that gives plain numbers see no enumerations."""

    def test_go_to_the_library_as_they_are(self):
        library = mock.Mock()
        library.PN_SetPinPadParameter.return_value = 0
        terminal = self.terminal(library)
        for algorithm, rule in ((Algorithm.SM4, EndRule.LAST_DIGIT), (1, 1)):
            terminal.set_pin_entry(algorithm, 6, rule)
            self.assertEqual(library.PN_SetPinPadParameter.call_args.args, (0, None, 115200, 1, 6, 1, b'F'))

    def test_are_those_of_the_terminal(self):
        self.assertEqual((*Algorithm, *PublicKeyType, *EndRule, *Display), (0, 1, 1, 2, 0, 1, 0, 1, 2))

    def test_a_status_has_its_name(self):
        library = mock.Mock()
        library.MP_ShowPDF.return_value = -15
        with self.assertRaises(GwqError) as caught:
            self.terminal(library).show_documents(PAPER)
        self.assertIs(type(caught.exception.status), int)
        self.assertEqual(caught.exception.status, StatusCode.NO_FILE)
        self.assertIn('(GWQ_NO_FILE, status -15)', str(caught.exception))

    def test_a_status_of_the_pad_itself_has_none(self):
        library = mock.Mock()
        library.PN_SetPinPadParameter.return_value = 0x6A80
        with self.assertRaises(GwqError) as caught:
            self.terminal(library).set_pin_entry(Algorithm.SM4, 6)
        self.assertEqual((caught.exception.status, caught.exception.text.name), (0x6A80, 'GWQ_VALUE'))


class Results(unittest.TestCase):
    def test_are_equal_to_the_librarys_numbers(self):
        self.assertEqual((Answer.CONFIRMED, Answer.REFUSED, Rating.THREE, Rating.NONE), (0, 1, 3, 4))

    def test_only_a_confirmation_counts_as_true(self):
        self.assertEqual([bool(answer) for answer in Answer], [True, False, False])

    def test_names_keep_the_terminals_bytes(self):
        name = Name('王芳.png'.encode('gbk'))
        for same in (name, copy.copy(name), pickle.loads(pickle.dumps(name))):
            self.assertEqual((same, same.raw), ('王芳.png', '王芳.png'.encode('gbk')))
        self.assertEqual(Name('王芳.png'.encode()).raw, '王芳.png'.encode())

    def test_a_list_of_gbk_names_is_cut_only_between_names(self):
        texts = ['倈.png', 'a.png', '王倈']
        raw = [text.encode('gbk') for text in texts]
        names = module._names(b'|'.join(raw))
        self.assertEqual(([str(name) for name in names], [name.raw for name in names]), (texts, raw))
        self.assertEqual(module._names('王芳.png|b.png'.encode()), ['王芳.png', 'b.png'])
        self.assertEqual(module._names(b''), [])


class NoLibrary(unittest.TestCase):
    def failure(self, **environment):
        def open_library(name):
            raise OSError(f'{name}: cannot open shared object file')
        with mock.patch.dict(os.environ, environment), mock.patch.object(ctypes, 'CDLL', open_library):
            if not environment:
                os.environ.pop('GWQ_LIBRARY', None)
            with self.assertRaises(OSError) as caught:
                native.load()
        return str(caught.exception)

    def test_says_what_was_looked_for_and_what_to_install(self):
        self.assertEqual(self.failure(), 'libgwq.so.1 was looked for in LD_LIBRARY_PATH and in the loader\'s directories, and '
                         'cannot be loaded (libgwq.so.1: cannot open shared object file). Install the Debian package '
                         'libgwq1, or set GWQ_LIBRARY to the path of libgwq.so.')

    def test_says_which_file_the_environment_names(self):
        self.assertTrue(self.failure(GWQ_LIBRARY='/none.so').startswith('GWQ_LIBRARY names /none.so, which cannot be loaded'))


if __name__ == '__main__':
    unittest.main()
