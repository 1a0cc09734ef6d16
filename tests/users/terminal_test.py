"""Every call of gwq.Terminal, against the virtual terminal: terminal_test.py FILES TEST..."""
import pathlib
import pickle
import sys
import tempfile
import threading
import unittest

from gwq import Cancelled, GwqError, Teller, Terminal

FILES = pathlib.Path(sys.argv.pop(1))
PAPER = FILES / 'agreement.pdf'
PAGE = '<html><body>您好</body></html>'
CLERK = Teller('王芳', '0123', 5)


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
        self.assertEqual(self.terminal.rate(), 3)
        self.assertEqual(self.terminal.rate(teller=CLERK), 3)
        self.assertEqual(self.terminal.inform('您好'), 0)
        self.terminal.show_html(PAGE)
        self.assertEqual(self.terminal.ask_html(PAGE), 0)
        self.assertEqual(self.terminal.ask_html(PAGE, screenshot=self.out / 'page.png'), 0)
        self.assertEqual((self.out / 'page.png').read_bytes()[1:4], b'PNG')
        self.assertEqual(self.terminal.ask_digits(), '1234')
        self.assertEqual(self.terminal.ask_number('请输入手机号码', most_digits=11), '123456')
        self.assertEqual(self.terminal.check_out('开户', '5.00'), 'ok')

    def test_documents(self):
        self.terminal.show_documents([PAPER, FILES / 'welcome.html'])
        self.assertIs(self.terminal.confirm_documents(str(PAPER)), True)
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

    def restore_firmware(self, package):
        package.write_text('V1.0.0|20240615\n')
        self.terminal.update_firmware(package)

    def test_without_a_working_key_there_is_no_block(self):
        self.terminal.set_pin_entry(0, 6)
        self.assertEqual(len(self.terminal.public_key(1, 2048)), 256)
        self.assertEqual(len(self.terminal.public_key(2, 256)), 64)
        self.assertEqual(len(self.terminal.new_factor()), 16)
        self.assertEqual(self.status_of(self.terminal.pin_block, None, algorithm=0, digits=6), -22)
        self.assertEqual(self.status_of(self.terminal.pin_block, 'no number', algorithm=0, digits=6, prompt='PIN'), -21)

    def test_errors_say_what_a_status_means(self):
        with self.assertRaisesRegex(GwqError, r'MP_ShowPDF: A file is missing. \(GWQ_NO_FILE, status -15\)') as caught:
            self.terminal.show_documents('/nowhere/to-be-found.pdf')
        self.assertEqual(caught.exception.text.cause_zh, '文件不存在。')
        self.assertEqual(str(pickle.loads(pickle.dumps(caught.exception))), str(caught.exception))

    def test_refuses_what_the_library_would_cut(self):
        for call, argument in ((self.terminal.show_html, 'a\0b'), (self.terminal.show_documents, '/a|b.pdf'),
                               (self.terminal.show_documents, '/' + 1023 * 'a'), (self.terminal.inform, 30721 * 'a')):
            with self.assertRaises(ValueError):
                call(argument)


class Refusing(unittest.TestCase):
    def test_a_customer_who_refuses(self):
        self.assertIs(Terminal().confirm_documents(PAPER), False)
        with tempfile.TemporaryDirectory() as out, self.assertRaises(Cancelled):
            Terminal().sign_documents(PAPER, pathlib.Path(out) / 'signature.png', place='1,300,100')


class Waiting(unittest.TestCase):
    def cancel_after(self, delay, call, *arguments, **more):
        terminal = Terminal()
        other = threading.Timer(delay, terminal.cancel)
        other.start()
        with self.assertRaises(Cancelled):
            getattr(terminal, call)(*arguments, **more)
        other.join()

    def test_another_thread_cancels(self):
        self.cancel_after(2, 'rate', seconds=60)

    def test_another_thread_cancels_before_the_call_waits(self):
        self.cancel_after(0.05, 'rate', seconds=60)
        self.cancel_after(0.05, 'confirm_documents', PAPER, seconds=60)

    def test_cancelling_does_not_reach_the_next_call(self):
        terminal = Terminal()
        terminal.cancel()
        terminal.show_teller(CLERK)


if __name__ == '__main__':
    unittest.main()
