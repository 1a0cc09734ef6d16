# SPDX-License-Identifier: MIT
"""The terminal as an object."""

from __future__ import annotations

import ctypes
import hashlib
import json
import math
import os
import re
import stat
import time
from collections.abc import Iterable, Iterator
from contextlib import contextmanager
from dataclasses import dataclass
from enum import IntEnum
from pathlib import Path
from typing import Union

from ._generated import StatusCode
from .cancelling import Cancels
from .errors import OldSignature, cancelled, error_of, timed_out
from .native import last_failure, load
from .results import Answer, Name, Rating, Signature, is_utf8, text_of
from .settings import Algorithm, Display, EndRule, PublicKeyType

PathLike = Union[str, "os.PathLike[str]"]
Paths = Union[PathLike, Iterable[PathLike]]
FileName = Union[str, bytes]

_TEXT_SIZE = 4096  # more than any answer that comes as text
_DESCRIPTION_SIZE = 1 << 16
_MAX_LIST = 1023
_MAX_MESSAGE = 30720
_PULL_MS = 3000
_CHANNEL = b"9"
_INFORM_TIME_OUT, _HTML_TIME_OUT = 3, 2
# What the close command of a cancel comes to when the terminal does not answer, and a call by a cancel.
_UNANSWERED = (StatusCode.NO_ANSWER, StatusCode.SEND_FAILED, StatusCode.READ_FAILED, StatusCode.CANCELLED)
_BY_CANCEL = (*_UNANSWERED, StatusCode.EVALUATION_READ, StatusCode.REFUSED, StatusCode.NO_VERSION_ANSWER)
# The library waits this much longer than the customer has, and one second of that is for rounding.
_SILENCE_S = 2
# The terminal's clock may be a little faster than this machine's.
_MOST_OF_THE_TIME = 0.9
# GBK characters may hold the byte of "|".
_GBK_NAME = re.compile(rb"(?:[\x81-\xfe].|[^|])+", re.DOTALL)

_cancels = Cancels()


class _FileType(IntEnum):
    PICTURES = 0
    FIRMWARE = 1
    PHOTOS = 2


class _Change(IntEnum):
    """What MP_DownloadFile does with the pictures of the idle screen."""

    DELETE_ALL = 0
    REPLACE = 1
    ADD = 2
    ADD_MISSING = 3
    DELETE = 4


class _PinType(IntEnum):
    BOUND = 1
    UNBOUND = 5


@dataclass(frozen=True)
class Teller:
    """What a teller's card shows: name, number, 0 to 6 stars, and a head photo that is on the terminal; without one
    it is the number with ".jpg". Name and number go to the terminal in UTF-8, the photo's name in GBK."""

    name: str
    number: str
    stars: int
    photo: str | None = None


def _bytes(text: str) -> bytes:
    """A text for the library, which ends at a zero byte."""
    if "\0" in text:
        raise ValueError("a text for the terminal cannot hold a zero character")
    return text.encode()


def _optional(text: str | None) -> bytes | None:
    return None if text is None else _bytes(text)


def _name(name: FileName, encoding: str) -> bytes:
    """A name on the terminal, as bytes: out of its lists as the terminal itself has it."""
    if isinstance(name, Name):
        return name.raw
    raw = name.encode(encoding) if isinstance(name, str) else name
    if b"\0" in raw:
        raise ValueError("a name on the terminal cannot hold a zero character")
    return raw


def _photo_name(name: FileName) -> bytes:
    """In GBK, as teller cards name their photos."""
    return _name(name, "gb18030")


def _picture_name(name: FileName) -> bytes:
    """In UTF-8, as add_pictures() sends the names of the host's files."""
    raw = _name(name, "utf-8")
    if b"|" in raw:
        raise ValueError('a name with the byte of "|" in it cannot be listed')
    return raw


def _names(raw: bytes) -> list[Name]:
    """A list of the terminal, as it came."""
    return [Name(name) for name in (raw.split(b"|") if is_utf8(raw) else _GBK_NAME.findall(raw)) if name]


def _path(path: PathLike) -> bytes:
    """An absolute path: the library looks for the "/" before a file's name."""
    return os.fsencode(Path(path).absolute())


def _paths(documents: Paths, longest: int | None = None) -> bytes:
    every = [documents] if isinstance(documents, (str, os.PathLike)) else list(documents)
    names = [_path(document) for document in every]
    if any(b"|" in name for name in names):
        raise ValueError('a path with "|" in it cannot be listed')
    paths = b"|".join(names)
    if longest is not None and len(paths) > longest:
        raise ValueError(f"the paths are longer than {longest} bytes together")
    return paths


def _buffer(size: int = _TEXT_SIZE) -> ctypes.Array[ctypes.c_char]:
    return ctypes.create_string_buffer(size)


def _text(buffer: ctypes.Array[ctypes.c_char]) -> str:
    return text_of(buffer.value)


def _remove(files: Iterable[Path]) -> None:
    """Only what is a file: nobody wants to lose a device or a link."""
    for file in files:
        try:
            if stat.S_ISREG(file.lstat().st_mode):
                file.unlink()
        except OSError:
            pass


@contextmanager
def _emptied(*files: Path) -> Iterator[None]:
    """Empties the files that a call will write, to learn early that one cannot be written; removes them if it fails."""
    opened: list[Path] = []
    try:
        for file in files:
            os.close(os.open(file, os.O_WRONLY | os.O_CREAT | os.O_TRUNC | os.O_NONBLOCK, 0o666))
            opened.append(file)
        yield
    except BaseException:
        _remove(opened)
        raise


class _LastSignature:
    """Knows the last signature of this process again."""

    def __init__(self) -> None:
        self._digest = b""

    def replace(self, strokes: bytes) -> bool:
        """Whether these are the last ones again."""
        digest = hashlib.sha256(strokes).digest()
        same = digest == self._digest
        self._digest = digest
        return same


_last_signature = _LastSignature()


class Terminal:
    """The terminal at a port: 0 is USB, n the serial device /dev/ttyS(n-1).

    Only inform(), ask_digits(), rate() with a teller, photos(), pictures() and cancel() work on a serial port; all
    others are for USB, and a ValueError with another port. Nothing stays open between calls, so that there is nothing
    to close.

    Times are whole seconds that the customer has, 1 to 999. One thread at a time may call, but for cancel().
    """

    def __init__(self, port: int = 0, baud: int = 115200) -> None:
        self._library = load()
        self._port = port
        self._baud = baud

    def _call(self, name: str, *arguments: object, seconds: float = math.inf) -> float:
        """How long the call lasted; `seconds` is the customer's time, if it waits for them."""
        mark = _cancels.mark()
        begun = time.monotonic()
        status = getattr(self._library, name)(*arguments)
        lasted = time.monotonic() - begun
        if status in _BY_CANCEL and _cancels.came_since(mark):
            raise cancelled(name)
        self._check(name, status, time_is_over=lasted >= _MOST_OF_THE_TIME * seconds)
        return lasted

    def _check(self, name: str, status: int, time_is_over: bool = False) -> None:
        if status != StatusCode.OK:
            raise error_of(name, status, last_failure(self._library, name, status), time_is_over)

    def _on_line(self, name: str, *arguments: object, seconds: float = math.inf) -> None:
        self._call(name, self._port, self._baud, *arguments, seconds=seconds)

    def _require_usb(self, name: str) -> None:
        if self._port != 0:
            raise ValueError(f"{name} works on USB only, and this is the terminal at serial port {self._port}")

    def _on_usb(self, name: str, *arguments: object, seconds: float = math.inf) -> None:
        self._require_usb(name)
        self._call(name, *arguments, seconds=seconds)

    def _screen(self, name: str, *arguments: object, seconds: float = math.inf) -> None:
        self._on_usb(name, None, None, self._baud, *arguments, seconds=seconds)

    def _pin_pad(self, name: str, *arguments: object, seconds: float = math.inf) -> None:
        self._on_usb(name, 0, None, self._baud, *arguments, seconds=seconds)

    # ---- the terminal itself

    def description(self) -> dict[str, str]:
        """DeviceBrand, DllVersion, DeviceVersion, ProductionDate, DeviceSN and DeviceModel; ErrorMessage says which
        of them could not be read."""
        text = _buffer(_DESCRIPTION_SIZE)
        length = ctypes.c_int(len(text))
        self._on_usb("DEV_CommCall", json.dumps({"RequestBaudRate": self._baud}).encode(), 0, text, length)
        return {key: str(value) for key, value in json.loads(_text(text)).items()}

    def firmware_version(self) -> tuple[str, str]:
        """The common and the private part."""
        common, private = _buffer(), _buffer()
        self._on_usb("MP_GetFirmwareVersion", None, None, 0, 0, common, private)
        return _text(common), _text(private)

    def build_date(self) -> str:
        """The date of the terminal's software, such as "20231114"."""
        date = _buffer(9)
        self._on_usb("GWQ_GetVerBuildDate", 0, b"\0", self._baud, date)
        return _text(date)

    def serial_number(self) -> str:
        number = _buffer()
        self._pin_pad("PN_ReadDeviceId", number)
        return _text(number)

    def cancel(self) -> None:
        """Ends what another thread does, which raises Cancelled there, and closes the terminal's screen. Any thread;
        takes 0.6 seconds and more, and a few seconds after a file that was being sent: the terminal still waits for
        the rest of it, and does not answer. A serial terminal closes its screen itself. Raises GwqError only if the
        terminal cannot be opened."""
        with _cancels.cancelling():
            if self._port != 0:
                self._library.MP_CancleEvaluate(None, None, self._baud)  # which sends nothing
                return
            status = self._library.MP_CancelCurrentOperation(None, None, self._baud, 0)
        if status not in _UNANSWERED:
            self._check("MP_CancelCurrentOperation", status)

    # ---- screens

    def show_teller(self, teller: Teller, seconds: int = 60) -> None:
        """Shows the teller's card and returns at once."""
        self._screen("MP_StartElectronicCard", seconds, _bytes(teller.name), _bytes(teller.number), teller.stars,
                     _optional(teller.photo))

    def set_teller(self, teller: Teller) -> None:
        """Sets the card that rate() shows from now on."""
        self._screen("MP_SetEvaluateInfo", _bytes(teller.name), _bytes(teller.number), teller.stars,
                     _optional(teller.photo))

    def rate(self, seconds: int = 30, teller: Teller | None = None) -> Rating:
        """The customer's rating, with the card that was set or with a teller's. The terminal does not tell a customer
        who presses Cancel from one whose time runs out: both are Rating.NONE."""
        if teller is not None:
            return self._rate_teller(teller, seconds)
        value = _buffer(8)
        self._screen("MP_StartEvaluate", seconds, value)
        return Rating(int(value.value or b"0"))

    def _rate_teller(self, teller: Teller, seconds: int) -> Rating:
        value = ctypes.c_uint(0)
        self._on_line("GWQ_StartEvaluator", _bytes(teller.name), _bytes(teller.number), teller.stars,
                      _photo_name(teller.photo or f"{teller.number}.jpg"), seconds, value)
        return Rating(value.value)

    def inform(self, message: str, seconds: int = 30) -> Answer:
        """Shows a message and waits for a key. The terminal's key 3 stands for a customer whose time ran out."""
        text = _bytes(message)
        if len(text) > _MAX_MESSAGE:
            raise ValueError(f"the message is longer than {_MAX_MESSAGE} bytes")
        key = ctypes.c_uint()
        self._on_line("GWQ_StartInfo", seconds, text, key)
        if key.value == _INFORM_TIME_OUT:
            raise timed_out("GWQ_StartInfo")
        return Answer(key.value)

    def show_html(self, html: str, seconds: int = 60) -> None:
        """Shows a page and returns at once."""
        self._screen("MP_StartInfoHtml", seconds, 0, _bytes(html), None, 0)

    def ask_html(self, html: str, seconds: int = 60, countdown: int = 0, screenshot: PathLike | None = None) -> Answer:
        """Shows a page and waits for a key. The answer button counts `countdown` seconds down, or else a picture of
        what was confirmed goes to `screenshot`. That file is emptied first, so that a directory that cannot be
        written is an OSError before the customer is asked, and it is removed unless they confirm. The terminal's key
        3 stands for a customer whose time ran out."""
        if screenshot is not None:
            return self._ask_with_screenshot(html, seconds, Path(screenshot).absolute())
        key = ctypes.c_int()
        self._screen("MP_StartInfoHtml", seconds, 1, _bytes(html), key, countdown)
        return self._html_answer("MP_StartInfoHtml", key.value)

    def _ask_with_screenshot(self, html: str, seconds: int, picture: Path) -> Answer:
        name = "MP_StartInfoHtmlScreenshot"
        page, key = _bytes(html), ctypes.c_int()
        self._require_usb(name)
        with _emptied(picture):
            self._call(name, None, _CHANNEL, self._baud, seconds, 1, page, _path(picture), key)
            answer = self._html_answer(name, key.value)
        if answer is not Answer.CONFIRMED:
            _remove([picture])
        return answer

    @staticmethod
    def _html_answer(call: str, key: int) -> Answer:
        if key == _HTML_TIME_OUT:
            raise timed_out(call)
        return Answer(key)

    def ask_digits(self, seconds: int = 30, mode: Display | int = Display.SHOWN) -> str:
        """What the customer keys on the screen's keypad, SHOWN or as STARS. The terminal does not tell a customer who
        presses Cancel from one who keys nothing: both are Cancelled."""
        digits = _buffer()
        self._on_line("GWQ_StartKeyboard", seconds, mode, digits, seconds=seconds)
        return self._keyed("GWQ_StartKeyboard", digits)

    def ask_number(self, prompt: str, seconds: int = 30, most_digits: int = 0,
                   display: Display | int = Display.SHOWN) -> str:
        """The number that the customer keys under a prompt, of at most 20 digits (0 leaves it to the terminal). The
        library passes on only the digits, so that a customer who presses Cancel, one who keys nothing and one whose
        time runs out look alike: all are Cancelled."""
        number = _buffer()
        self._pin_pad("PN_GetInNo", seconds, most_digits, display, _bytes(prompt), number)
        return self._keyed("PN_GetInNo", number)

    @staticmethod
    def _keyed(call: str, answer: ctypes.Array[ctypes.c_char]) -> str:
        text = _text(answer)
        if not text:
            raise cancelled(call)
        return text

    def check_out(self, first: str, second: str, seconds: int = 60) -> str:
        """Shows the checkout screen with its two texts; the terminal's answer once the customer confirms."""
        result = _buffer()
        self._screen("MP_CheckOut_All", seconds, _bytes(first), _bytes(second), result, seconds=seconds)
        return _text(result)

    # ---- documents

    def show_documents(self, documents: Paths, seconds: int = 60) -> None:
        """Shows one or several documents and returns once they are on the terminal. The paths are at most 1023 bytes
        together, here and in the next two. The terminal gets the files' names as the host has them, and lists them on
        the screen in GBK."""
        self._screen("MP_ShowPDF", seconds, _paths(documents, _MAX_LIST))

    def confirm_documents(self, documents: Paths, seconds: int = 60) -> Answer:
        """Shows documents and asks whether the customer agrees: CONFIRMED, REFUSED, or OTHER for any other answer."""
        decision = ctypes.c_int(Answer.OTHER)
        self._screen("MP_ConfirmPDF", seconds, _paths(documents, _MAX_LIST), decision, seconds=seconds)
        return Answer(decision.value)

    def sign_documents(self, documents: Paths, picture: PathLike, *, place: str, voice: str | None = None,
                       seconds: int = 120) -> Signature:
        """Has documents signed. `place` is where to sign, as the terminal takes it; `voice` is spoken.

        The picture goes to `picture` and the strokes to "hw.data" beside it. Both files are emptied first, so that a
        directory that cannot be written is an OSError before the customer is asked; both are removed when the call
        fails, so that no signature of an earlier customer is left there.

        The terminal, too, keeps its last signature, and the library fetches it even when the wait for the customer
        failed. What is returned is therefore not always new. Rejected are: any signature when a cancel() of this
        process fell into the call (Cancelled); and, after a terminal that kept silent for the whole time, the
        signature that this process got the last time (OldSignature). What cannot be told: after such a silence, or
        after a cancel that was not made by cancel(), a signature that the terminal had before this process began, or
        that another program fetched."""
        target = Path(picture).absolute()
        head = (None, _CHANNEL, self._baud, seconds, _paths(documents, _MAX_LIST), _bytes(place))
        strokes = target.parent / "hw.data"
        # The strokes are read from their file, for their size is not known before.
        name = "MP_SignPDF" if voice is None else "MP_SignPDF_Voice"
        spoken = () if voice is None else (_bytes(voice),)
        arguments = (*head, *spoken, _path(target), None)
        self._require_usb(name)
        with _emptied(target, strokes):
            return Signature(target, self._signed(name, arguments, strokes, seconds))

    def _signed(self, name: str, arguments: tuple[object, ...], strokes: Path, seconds: int) -> bytes:
        mark = _cancels.mark_when_idle()
        lasted = self._call(name, *arguments, seconds=seconds)
        signed = strokes.read_bytes()
        same = _last_signature.replace(signed)
        if _cancels.came_since(mark):
            raise cancelled(name)
        if same and lasted >= seconds + _SILENCE_S:
            raise OldSignature(name)
        return signed

    # ---- files

    def push(self, files: Paths) -> list[str]:
        """Sends files to the terminal, by their names as the host has them; their paths there."""
        every = [files] if isinstance(files, (str, os.PathLike)) else files
        return [self._push_one(file) for file in every]

    def _push_one(self, file: PathLike) -> str:
        place = _buffer()
        self._on_usb("pushFileToZ11", _paths(file, _MAX_LIST), place)
        return _text(place)

    def pull(self, place: FileName, file: PathLike) -> None:
        """Fetches a file of the terminal, such as "/tmp/hw.png"; `file` is overwritten. The place goes in UTF-8; for
        one with a name out of the terminal's lists give its bytes, `b"/tmp/" + name.raw`."""
        command = b"\x1b[0PULLFILE\x02" + _name(place, "utf-8") + b"\x03"
        self._on_usb("PullFile", 0, _CHANNEL, self._baud, _PULL_MS, len(command), command, _path(file))

    def photos(self) -> list[Name]:
        """The head photos on the terminal."""
        return self._list(_FileType.PHOTOS)

    def pictures(self) -> list[Name]:
        """The pictures of the idle screen."""
        return self._list(_FileType.PICTURES)

    def _list(self, kind: _FileType) -> list[Name]:
        names = _buffer(_TEXT_SIZE + 1)
        self._call("GetVideoList", self._port, _CHANNEL, self._baud, kind, names, _TEXT_SIZE)
        return _names(names.value)

    def add_photo(self, photo: PathLike, name: FileName = "") -> None:
        """Sends a head photo, to be stored under its own name or another. The terminal gets it in GBK, as teller
        cards name it; `bytes` go as they are."""
        self._on_usb("MP_DownHeadFile", None, _CHANNEL, self._baud, _path(photo), _photo_name(name or Path(photo).name))

    def delete_photo(self, name: FileName) -> None:
        """Deletes a photo by a name out of photos(), or by one that was handed to add_photo()."""
        self._on_usb("MP_DelHeadFile", None, None, self._baud, _photo_name(name))

    def add_pictures(self, pictures: Paths, only_missing: bool = False) -> None:
        """Adds pictures to the idle screen, or only those whose names the terminal lacks. The terminal gets the
        files' names as the host has them, as with replace_pictures()."""
        self._change_pictures(_paths(pictures), _Change.ADD_MISSING if only_missing else _Change.ADD)

    def replace_pictures(self, pictures: Paths) -> None:
        self._change_pictures(_paths(pictures), _Change.REPLACE)

    def delete_pictures(self, names: Iterable[FileName] | None = None) -> None:
        """Deletes pictures by names out of pictures(), or by those of the files that were added; or all. `bytes` go
        as they are."""
        if names is None:
            self._change_pictures(b"", _Change.DELETE_ALL)
        else:
            self._change_pictures(b"|".join(_picture_name(name) for name in names), _Change.DELETE)

    def _change_pictures(self, names: bytes, change: _Change) -> None:
        self._on_usb("MP_DownloadFile", None, None, self._baud, None, _FileType.PICTURES, names, change)

    def set_qr_code(self, picture: PathLike | None) -> None:
        """Replaces the QR code's picture, or removes it."""
        self._on_usb("MP_SetBarcodePic", None, None, self._baud, None if picture is None else _path(picture))

    def update_firmware(self, package: PathLike) -> None:
        """Sends a firmware package, whose extension begins with "dat", and has it installed."""
        self._on_usb("MP_DownloadFile", None, None, self._baud, None, _FileType.FIRMWARE, _path(package), 0)

    # ---- PIN pad

    def set_pin_entry(self, algorithm: Algorithm | int, digits: int, end_rule: EndRule | int = EndRule.ENTER,
                      fill: str = "F") -> None:
        """Sets encryption type, PIN length, end rule, and what a PIN block is filled with: "F", or else
        zeros."""
        self._pin_pad("PN_SetPinPadParameter", algorithm, digits, end_rule, _bytes(fill))

    def public_key(self, algorithm: PublicKeyType | int, bits: int) -> bytes:
        """The pad's public key: the modulus for RSA, X and Y for SM2."""
        key = _buffer()
        self._pin_pad("PN_ObtainPublicKey", algorithm, bits, key)
        return bytes.fromhex(_text(key))

    def new_factor(self, key_type: int = 1) -> str:
        """Has the pad make a new factor, for which the bank prepares a working key of type 1 or 2."""
        factor = _buffer()
        self._pin_pad("PN_ObtainFactor", str(key_type).encode(), factor)
        return _text(factor)

    def load_working_key(self, enciphered: bytes, factor: str, verify_key: str, key_type: int = 1) -> None:
        """Loads a working key that was prepared for this pad and factor. No byte of it is zero."""
        self._pin_pad("PN_DownloadPinPadWK", _bytes(factor), str(key_type).encode(), enciphered.hex().upper().encode(),
                      _bytes(verify_key))

    def pin_block(self, account: str | None, *, algorithm: Algorithm | int, digits: int,
                  prompt: str | None = None, sound: int = 0, seconds: int = 60) -> bytes:
        """The PIN block of the PIN that the customer keys, bound to an account of 12 digits or more, or to none.
        Algorithm and digits are those that set_pin_entry() set. The pad's refusal 1 is taken for a customer who
        cancels, and its refusal 2, once their time is over, for one whose time ran out."""
        kind = _PinType.UNBOUND if account is None else _PinType.BOUND
        its_seconds = seconds & 0xFF  # all that the pad gets of it
        factor, block = _buffer(), _buffer()
        length = ctypes.c_int(digits)
        arguments = (seconds, algorithm, sound, kind, _optional(account), factor, block, length)
        if prompt is None:
            self._pin_pad("PN_GetPinBlock", *arguments, seconds=its_seconds)
        else:
            self._pin_pad("PN_GetPinBlockShowString", *arguments, _bytes(prompt), seconds=its_seconds)
        return block.raw[: length.value]
