# SPDX-License-Identifier: MIT
"""Every call of gwq.Terminal, against the virtual terminal: terminal_test.py FILES TEST..."""
import errno
import os
import pathlib
import pickle
import shutil
import sys
import tempfile
import threading
import unittest

from gwq import (Algorithm, Answer, Cancelled, Display, EndRule, GwqError, NoAnswer, OldSignature, PublicKeyType, Rating, Step,
                 Teller, Terminal, TimedOut, find_terminals)

FILES = pathlib.Path(sys.argv.pop(1))
PAPER = FILES / 'agreement.pdf'
PAGE = '<html><body>您好</body></html>'
CLERK = Teller('王芳', '0123', 5)
DIGITS = 6
WORKING_KEY = bytes.fromhex('7ABD7E083CCCB5C4DF133F577FA1BAED')
VERIFY_KEY = 'A3CEBD6AB1EDF262'


class Agreeable(unittest.TestCase):
    def setUp(self):
        self.terminal = Terminal()
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.out = pathlib.Path(directory.name)

    def status_of(self, call, *arguments, **more):
        with self.assertRaises(GwqError) as caught:
            call(*arguments, **more)
        return caught.exception.status

    def test_describes_itself(self):
        self.assertEqual(self.terminal.description()['DeviceSN'], 'st_00000001')
        self.assertEqual(self.terminal.serial_number(), 'st_00000001')
        common, private = self.terminal.firmware_version()
        self.assertTrue(common.startswith('V') and private.startswith('P'), (common, private))
        self.assertEqual('P' + self.terminal.build_date(), private)

    def test_screens(self):
        self.terminal.show_teller(CLERK)
        self.terminal.set_teller(Teller('王芳', '0123', 5, photo='photo.jpg'))
        self.assertIs(self.terminal.rate(), Rating.THREE)
        self.assertIs(self.terminal.rate(teller=CLERK), Rating.THREE)
        self.assertIs(self.terminal.inform('您好'), Answer.CONFIRMED)
        self.terminal.show_html(PAGE)
        self.assertIs(self.terminal.ask_html(PAGE), Answer.CONFIRMED)
        self.assertIs(self.terminal.ask_html(PAGE, screenshot=self.out / 'page.png'), Answer.CONFIRMED)
        self.assertEqual((self.out / 'page.png').read_bytes()[1:4], b'PNG')
        self.assertEqual(self.terminal.ask_digits(), '1234')
        self.assertEqual(self.terminal.ask_digits(mode=Display.STARS), '1234')
        self.assertEqual(self.terminal.ask_number('请输入手机号码', most_digits=11, display=Display.HIDDEN), '123456')
        self.assertEqual(self.terminal.check_out('开户', '5.00'), 'ok')

    def test_documents(self):
        self.terminal.show_documents([PAPER, FILES / 'welcome.html'])
        self.assertIs(self.terminal.confirm_documents(str(PAPER)), Answer.CONFIRMED)
        for voice in (None, '请签名'):
            picture = self.out / f'{voice}.png'
            signature = self.terminal.sign_documents(PAPER, picture, place='1,300,100', voice=voice)
            self.assertEqual(picture.read_bytes()[1:4], b'PNG')
            self.assertRegex(signature.strokes, rb'\A(\d+,\d+,\d+,\d+\n)+\Z')

    def test_files(self):
        self.assertEqual(self.terminal.push([PAPER, FILES / 'welcome.html']), ['/tmp/agreement.pdf', '/tmp/welcome.html'])
        self.terminal.pull('/tmp/agreement.pdf', self.out / 'back.pdf')
        self.assertEqual((self.out / 'back.pdf').read_bytes(), PAPER.read_bytes())
        self.assertEqual(self.status_of(self.terminal.pull, '/tmp/none', self.out / 'none'), -14)

    def test_media(self):
        picture = FILES / 'offer.png'
        self.terminal.add_photo(picture)
        self.terminal.add_photo(picture, '王芳.png')
        self.assertEqual(self.terminal.photos(), ['offer.png', '王芳.png'])
        self.terminal.delete_photo('offer.png')
        self.assertEqual(self.terminal.photos(), ['王芳.png'])
        self.terminal.delete_photo('王芳.png')
        self.assertEqual(self.terminal.photos(), [])
        self.terminal.add_pictures(picture)
        self.terminal.add_pictures([picture], only_missing=True)
        self.assertEqual(self.terminal.pictures(), ['offer.png'])
        self.terminal.delete_pictures(['offer.png'])
        self.assertEqual(self.terminal.pictures(), [])
        self.terminal.replace_pictures([picture])
        self.terminal.delete_pictures()
        self.assertEqual(self.terminal.pictures(), [])
        self.terminal.set_qr_code(picture)
        self.terminal.set_qr_code(None)
        package = self.out / 'update.dat'
        package.write_text('V9.9.9|20300101\n')
        self.terminal.update_firmware(package)
        self.addCleanup(self.restore_firmware, package)
        self.assertEqual(self.terminal.firmware_version(), ('V9.9.9', 'P20300101'))

    def test_names_out_of_a_list_name_the_same_file(self):
        # The second byte of the last one is that of "|" in GBK.
        texts = ['offer.png', '王芳.png', '倈.png']
        self.assertIn(b'|', texts[2].encode('gbk'))
        for text in texts:
            self.terminal.add_photo(FILES / 'offer.png', text)
        photos = self.terminal.photos()
        self.assertEqual(sorted(photos), sorted(texts))
        self.assertEqual(sorted(photo.raw for photo in photos), sorted(text.encode('gbk') for text in texts))
        for photo in photos:
            self.terminal.delete_photo(photo)
        self.assertEqual(self.terminal.photos(), [])
        pictures = [self.out / name for name in ('国庆.png', 'offer.png')]
        for picture in pictures:
            shutil.copy(FILES / 'offer.png', picture)
        self.terminal.add_pictures(pictures)
        self.assertEqual(sorted(self.terminal.pictures()), ['offer.png', '国庆.png'])
        self.terminal.delete_pictures(self.terminal.pictures())
        self.assertEqual(self.terminal.pictures(), [])
        self.terminal.add_photo(FILES / 'offer.png', '王芳.png'.encode('gbk'))
        self.terminal.delete_photo('王芳.png'.encode('gbk'))
        self.assertEqual(self.terminal.photos(), [])

    def restore_firmware(self, package):
        package.write_text('V1.0.0|20240615\n')
        self.terminal.update_firmware(package)

    def test_without_a_working_key_there_is_no_block(self):
        self.terminal.set_pin_entry(Algorithm.TRIPLE_DES, 6, EndRule.ENTER)
        self.assertEqual(len(self.terminal.public_key(PublicKeyType.RSA, 2048)), 256)
        self.assertEqual(len(self.terminal.public_key(PublicKeyType.SM2, 256)), 64)
        self.assertEqual(len(self.terminal.new_factor()), 16)
        self.assertEqual(self.status_of(self.terminal.pin_block, None, algorithm=0, digits=6), -22)
        self.assertEqual(self.status_of(self.terminal.pin_block, 'no number', algorithm=0, digits=6, prompt='PIN'), -21)

    def test_errors_say_what_a_status_means(self):
        with self.assertRaisesRegex(GwqError, r'MP_ShowPDF: A document does not exist on this host. \(GWQ_NO_FILE, status -15\)') as caught:
            self.terminal.show_documents('/nowhere/to-be-found.pdf')
        self.assertEqual(caught.exception.text.cause_zh, '主机上不存在该文件。')
        self.assertEqual(str(pickle.loads(pickle.dumps(caught.exception))), str(caught.exception))
        failure = caught.exception.failure
        self.assertEqual((failure.step, failure.error, failure.is_system_error), (Step.LOCAL_FILE, errno.ENOENT, True))
        self.assertTrue(str(caught.exception).endswith(failure.advice))
        self.assertTrue(failure.advice_zh.startswith('本机文件无法使用'))

    def test_is_found_without_being_opened(self):
        place, = find_terminals()
        self.assertEqual((place.vendor, place.may_open, place.holder, place.holder_name), (0x1209, True, 0, ''))
        self.assertTrue(place.port_path.startswith(f'{place.bus}-'), place)

    def test_refuses_what_the_library_would_cut(self):
        for call, argument in ((self.terminal.show_html, 'a\0b'), (self.terminal.show_documents, '/a|b.pdf'),
                               (self.terminal.show_documents, '/' + 1023 * 'a'), (self.terminal.inform, 30721 * 'a')):
            with self.assertRaises(ValueError):
                call(argument)


class Scripted(unittest.TestCase):
    def setUp(self):
        self.terminal = Terminal()
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.out = pathlib.Path(directory.name)

    def sign(self, seconds=120):
        return self.terminal.sign_documents(PAPER, self.out / 'signature.png', place='1,300,100', seconds=seconds)

    def pin_block(self, seconds):
        self.terminal.set_pin_entry(Algorithm.TRIPLE_DES, DIGITS)
        self.terminal.load_working_key(WORKING_KEY, self.terminal.new_factor(), VERIFY_KEY)
        return self.terminal.pin_block(None, algorithm=Algorithm.TRIPLE_DES, digits=DIGITS, seconds=seconds)

    def assert_nothing_left(self):
        self.assertEqual(list(self.out.iterdir()), [])


class Refusing(Scripted):
    def test_questions_are_answered_with_refused(self):
        for answer in (self.terminal.inform('您好'), self.terminal.ask_html(PAGE), self.terminal.confirm_documents(PAPER),
                       self.terminal.ask_html(PAGE, screenshot=self.out / 'page.png')):
            self.assertIs(answer, Answer.REFUSED)
            self.assertFalse(answer)
        self.assert_nothing_left()
        self.assertIs(self.terminal.rate(), Rating.NONE)

    def test_what_is_not_given_is_cancelled(self):
        (self.out / 'signature.png').write_text('the last customer')
        (self.out / 'hw.data').write_text('the last customer')
        for call, arguments in ((self.sign, ()), (self.terminal.check_out, ('开户', '5.00')), (self.terminal.ask_digits, ()),
                                (self.terminal.ask_number, ('请输入手机号码',)), (self.pin_block, (60,))):
            with self.subTest(call.__name__), self.assertRaises(Cancelled):
                call(*arguments)
        self.assert_nothing_left()


class Leaving(Scripted):
    def test_the_customers_time_runs_out(self):
        picture = self.out / 'page.png'
        for call, arguments, options in (
                (self.terminal.inform, ('您好',), {}), (self.terminal.ask_html, (PAGE,), {}),
                (self.terminal.ask_html, (PAGE,), {'screenshot': picture}), (self.terminal.ask_digits, (), {}),
                (self.terminal.confirm_documents, (PAPER,), {}), (self.terminal.check_out, ('开户', '5.00'), {}),
                (self.sign, (), {}), (self.pin_block, (), {})):
            with self.subTest(call.__name__), self.assertRaisesRegex(TimedOut, "time"):
                call(*arguments, seconds=1, **options)
        self.assert_nothing_left()

    def test_a_rating_and_a_number_do_not_tell_time_from_cancel(self):
        self.assertIs(self.terminal.rate(seconds=1), Rating.NONE)
        with self.assertRaises(Cancelled):
            self.terminal.ask_number('请输入手机号码', seconds=1)


class Full(Scripted):
    """A terminal that cannot store a file says so at once: not a customer whose time ran out."""

    def test_a_file_that_it_cannot_store_is_no_time_out(self):
        for call, arguments in ((self.terminal.push, (PAPER,)), (self.terminal.show_documents, (PAPER,)),
                                (self.terminal.confirm_documents, (PAPER,)), (self.sign, ())):
            with self.subTest(call.__name__), self.assertRaises(NoAnswer) as caught:
                call(*arguments)
            self.assertEqual(caught.exception.status, -2)
        self.assert_nothing_left()


class Silent(Scripted):
    """A terminal that keeps silent instead of asking for a second signature, and still has the first one. Its storage is
    GWQ_TEST_STORAGE."""

    def put_back(self, kept, over):
        there = pathlib.Path(os.environ['GWQ_TEST_STORAGE']) / 'tmp'
        while not over.wait(0.02):
            if not (there / 'hw.txt').exists():  # the terminal asks
                for name, content in kept.items():
                    (there / name).write_bytes(content)
                return

    def test_the_signature_before_is_no_signature(self):
        there = pathlib.Path(os.environ['GWQ_TEST_STORAGE']) / 'tmp'
        first = self.sign()
        self.assertTrue(first.strokes)
        kept = {name: (there / name).read_bytes() for name in ('hw.png', 'hw.txt')}
        over = threading.Event()
        keeper = threading.Thread(target=self.put_back, args=(kept, over))
        keeper.start()
        with self.assertRaisesRegex(OldSignature, 'kept silent and gave back the signature'):
            self.sign(seconds=1)
        over.set()
        keeper.join()
        self.assert_nothing_left()


class Waiting(unittest.TestCase):
    def cancel_after(self, delay, call, *arguments, **more):
        terminal = Terminal()
        failures = []

        def cancel():
            try:
                Terminal().cancel()  # any object will do
            except GwqError as error:
                failures.append(error)

        other = threading.Timer(delay, cancel)
        other.start()
        with self.assertRaises(Cancelled):
            getattr(terminal, call)(*arguments, **more)
        other.join()
        self.assertEqual(failures, [])

    def test_another_thread_cancels(self):
        self.cancel_after(2, 'rate', seconds=60)

    def test_another_thread_cancels_before_the_call_waits(self):
        self.cancel_after(0.05, 'rate', seconds=60)
        self.cancel_after(0.05, 'confirm_documents', PAPER, seconds=60)

    def test_a_cancelled_signing_leaves_no_files(self):
        with tempfile.TemporaryDirectory() as directory:
            out = pathlib.Path(directory)
            self.cancel_after(3, 'sign_documents', PAPER, out / 'signature.png', place='1,300,100', seconds=60)
            self.assertEqual(list(out.iterdir()), [])

    def test_a_push_is_cancelled_without_an_error_in_the_cancelling_thread(self):
        with tempfile.TemporaryDirectory() as directory:
            file = pathlib.Path(directory) / 'large.pdf'
            file.write_bytes(bytes(40_000_000))
            self.cancel_after(0.7, 'push', file)
        Terminal().show_teller(CLERK)

    def test_cancelling_does_not_reach_the_next_call(self):
        terminal = Terminal()
        terminal.cancel()
        terminal.show_teller(CLERK)


if __name__ == '__main__':
    unittest.main()
