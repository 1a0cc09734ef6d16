"""The terminal as an object."""

from __future__ import annotations

import ctypes
import json
import os
import time
from collections.abc import Iterable
from dataclasses import dataclass
from pathlib import Path
from typing import Optional, Union

from .errors import Cancelled, check
from .native import load

PathLike = Union[str, "os.PathLike[str]"]
Paths = Union[PathLike, Iterable[PathLike]]

_ROOM = 4096  # more than any answer that comes as text
_DESCRIPTION_ROOM = 1 << 16
_LONGEST_LIST = 1023
_LONGEST_MESSAGE = 30720
_PULL_MS = 3000
_CANCEL_PAUSE = 0.02
_CHANNEL = b"9"
_PICTURES, _PHOTOS = 0, 2
_FIRMWARE = 1
_DELETE_ALL, _REPLACE, _ADD, _ADD_MISSING, _DELETE = range(5)
_UNBOUND, _BOUND = 5, 1


@dataclass(frozen=True)
class Teller:
    """What a teller's card shows: name, number, 0 to 6 stars, and a head photo that is on the terminal; without
    one it is the number with ".jpg"."""

    name: str
    number: str
    stars: int
    photo: Optional[str] = None


@dataclass(frozen=True)
class Signature:
    """A customer's signature: the picture's file, and the strokes as the terminal wrote them."""

    picture: Path
    strokes: bytes


def _bytes(text: str) -> bytes:
    """A text for the library, which ends at a zero byte."""
    if "\0" in text:
        raise ValueError("a text for the terminal cannot hold a zero character")
    return text.encode()


def _optional(text: Optional[str]) -> Optional[bytes]:
    return None if text is None else _bytes(text)


def _path(path: PathLike) -> bytes:
    """An absolute path: the library looks for the "/" before a file's name."""
    return os.fsencode(Path(path).absolute())


def _paths(documents: Paths, longest: Optional[int] = None) -> bytes:
    every = [documents] if isinstance(documents, (str, os.PathLike)) else list(documents)
    names = [_path(document) for document in every]
    if any(b"|" in name for name in names):
        raise ValueError('a path with "|" in it cannot be listed')
    paths = b"|".join(names)
    if longest is not None and len(paths) > longest:
        raise ValueError(f"the paths are longer than {longest} bytes together")
    return paths


def _room(size: int = _ROOM) -> ctypes.Array[ctypes.c_char]:
    return ctypes.create_string_buffer(size)


def _text(room: ctypes.Array[ctypes.c_char]) -> str:
    """What the terminal wrote: UTF-8, or else GBK."""
    try:
        return room.value.decode()
    except UnicodeDecodeError:
        return room.value.decode("gb18030", "replace")


class Terminal:
    """The terminal at a port: 0 is USB, n the serial device /dev/ttyS(n-1).

    Only inform(), ask_digits(), rate() with a teller, photos() and pictures() use the serial port; all others are USB
    whatever the port. Nothing stays open between calls, so that there is nothing to close.

    Times are whole seconds that the customer has, 1 to 999. One thread at a time may call, but for cancel().
    """

    def __init__(self, port: int = 0, baud: int = 115200) -> None:
        self._library = load()
        self._port = port
        self._baud = baud
        self._running: Optional[object] = None
        self._cancelled: Optional[object] = None

    def _call(self, name: str, *arguments: object) -> None:
        self._running = running = object()
        try:
            status = getattr(self._library, name)(*arguments)
        finally:
            self._running = None
        if status != 0 and self._cancelled is running:
            raise Cancelled(name, status)
        check(name, status)

    def _on_line(self, name: str, *arguments: object) -> None:
        self._call(name, self._port, self._baud, *arguments)

    def _screen(self, name: str, *arguments: object) -> None:
        self._call(name, None, None, self._baud, *arguments)

    def _pin_pad(self, name: str, *arguments: object) -> None:
        self._call(name, self._port, None, self._baud, *arguments)

    # ---- the terminal itself

    def description(self) -> dict[str, str]:
        """DeviceBrand, DllVersion, DeviceVersion, ProductionDate, DeviceSN and DeviceModel; ErrorMessage says which of
        them could not be read."""
        room = _room(_DESCRIPTION_ROOM)
        length = ctypes.c_int(len(room))
        self._call("DEV_CommCall", json.dumps({"RequestBaudRate": self._baud}).encode(), 0, room, length)
        return {key: str(value) for key, value in json.loads(_text(room)).items()}

    def firmware_version(self) -> tuple[str, str]:
        """The common and the private part."""
        common, private = _room(), _room()
        self._call("MP_GetFirmwareVersion", None, None, 0, 0, common, private)
        return _text(common), _text(private)

    def build_date(self) -> str:
        """The date of the terminal's software, such as "20231114"."""
        date = _room(9)
        self._call("GWQ_GetVerBuildDate", 0, b"\0", self._baud, date)
        return _text(date)

    def serial_number(self) -> str:
        number = _room()
        self._pin_pad("PN_ReadDeviceId", number)
        return _text(number)

    def cancel(self) -> None:
        """Ends what another thread does with this object, which raises Cancelled there, and closes the terminal's
        screen. Any thread; takes 0.6 seconds and more."""
        running = self._running
        if running is not None:
            self._cancelled = running
            # A request that comes before the call waits is lost, and between sending and waiting it also stops further
            # ones of CancelRead; the link's own has no such memory.
            while self._running is running:
                self._library.CancelRead()
                self._library.ICC_CancelReadTransPort()
                time.sleep(_CANCEL_PAUSE)
        status = self._library.MP_CancelCurrentOperation(None, None, self._baud, 0)
        check("MP_CancelCurrentOperation", status)

    # ---- screens

    def show_teller(self, teller: Teller, seconds: int = 60) -> None:
        """Shows the teller's card and returns at once."""
        self._screen("MP_StartElectronicCard", seconds, _bytes(teller.name), _bytes(teller.number), teller.stars,
                     _optional(teller.photo))

    def set_teller(self, teller: Teller) -> None:
        """Sets the card that rate() shows from now on."""
        self._screen("MP_SetEvaluateInfo", _bytes(teller.name), _bytes(teller.number), teller.stars,
                     _optional(teller.photo))

    def rate(self, seconds: int = 30, teller: Optional[Teller] = None) -> int:
        """The customer's rating: 1, 2 or 3 as keyed, 4 for the terminal's key 0, 0 for an answer that is none. With
        the card that was set, or with a teller's."""
        if teller is not None:
            return self._rate_teller(teller, seconds)
        value = _room(8)
        self._screen("MP_StartEvaluate", seconds, value)
        return int(value.value or b"0")

    def _rate_teller(self, teller: Teller, seconds: int) -> int:
        value = ctypes.c_uint(0)
        self._on_line("GWQ_StartEvaluator", _bytes(teller.name), _bytes(teller.number), teller.stars,
                      _bytes(teller.photo or f"{teller.number}.jpg"), seconds, value)
        return value.value

    def inform(self, message: str, seconds: int = 30) -> int:
        """Shows a message and waits for a key: 0, 1 or 3; 4 for every other answer."""
        text = _bytes(message)
        if len(text) > _LONGEST_MESSAGE:
            raise ValueError(f"the message is longer than {_LONGEST_MESSAGE} bytes")
        key = ctypes.c_uint()
        self._on_line("GWQ_StartInfo", seconds, text, key)
        return key.value

    def show_html(self, html: str, seconds: int = 60) -> None:
        """Shows a page and returns at once."""
        self._screen("MP_StartInfoHtml", seconds, 0, _bytes(html), None, 0)

    def ask_html(self, html: str, seconds: int = 60, countdown: int = 0, screenshot: Optional[PathLike] = None) -> int:
        """Shows a page and waits for a key: 0, 1, or 2 for the terminal's key 3. The answer button counts `countdown`
        seconds down, or else a picture of what was confirmed by key 0 goes to `screenshot`."""
        key = ctypes.c_int()
        if screenshot is None:
            self._screen("MP_StartInfoHtml", seconds, 1, _bytes(html), key, countdown)
        else:
            self._call("MP_StartInfoHtmlScreenshot", None, _CHANNEL, self._baud, seconds, 1, _bytes(html),
                       _path(screenshot), key)
        return key.value

    def ask_digits(self, seconds: int = 30, mode: int = 0) -> str:
        """What the customer keys on the screen's keypad; `mode` 0 or 1 is the terminal's."""
        digits = _room()
        self._on_line("GWQ_StartKeyboard", seconds, mode, digits)
        return _text(digits)

    def ask_number(self, prompt: str, seconds: int = 30, most_digits: int = 0, display: int = 0) -> str:
        """The number that the customer keys under a prompt; empty if they cancel. Of 0 to 20 digits (0 leaves it to
        the terminal); `display` 0 to 2 is the terminal's."""
        number = _room()
        self._pin_pad("PN_GetInNo", seconds, most_digits, display, _bytes(prompt), number)
        return _text(number)

    def check_out(self, first: str, second: str, seconds: int = 60) -> str:
        """Shows the checkout screen with its two texts; the terminal's answer."""
        result = _room()
        self._screen("MP_CheckOut_All", seconds, _bytes(first), _bytes(second), result)
        return _text(result)

    # ---- documents

    def show_documents(self, documents: Paths, seconds: int = 60) -> None:
        """Shows one or several documents and returns once they are on the terminal. The paths are at most 1023 bytes
        together, here and in the next two."""
        self._screen("MP_ShowPDF", seconds, _paths(documents, _LONGEST_LIST))

    def confirm_documents(self, documents: Paths, seconds: int = 60) -> bool:
        """Shows documents; whether the customer agrees."""
        refused = ctypes.c_int(2)
        self._screen("MP_ConfirmPDF", seconds, _paths(documents, _LONGEST_LIST), refused)
        return refused.value == 0

    def sign_documents(self, documents: Paths, picture: PathLike, *, place: str, voice: Optional[str] = None,
                       seconds: int = 120) -> Signature:
        """Has documents signed. The picture goes to `picture` and the strokes to "hw.data" beside it; both are written
        anew. `place` is where to sign, as the terminal takes it; `voice` is spoken."""
        target = Path(picture).absolute()
        head = (None, _CHANNEL, self._baud, seconds, _paths(documents, _LONGEST_LIST), _bytes(place))
        # The strokes are read from their file, for their size is not known before.
        if voice is None:
            self._call("MP_SignPDF", *head, _path(target), None)
        else:
            self._call("MP_SignPDF_Voice", *head, _bytes(voice), _path(target), None)
        return Signature(target, (target.parent / "hw.data").read_bytes())

    # ---- files

    def push(self, files: Paths) -> list[str]:
        """Sends files to the terminal; their paths there."""
        every = [files] if isinstance(files, (str, os.PathLike)) else files
        return [self._push_one(file) for file in every]

    def _push_one(self, file: PathLike) -> str:
        place = _room()
        self._call("pushFileToZ11", _paths(file, _LONGEST_LIST), place)
        return _text(place)

    def pull(self, place: str, file: PathLike) -> None:
        """Fetches a file of the terminal, such as "/tmp/hw.png"; `file` is written anew."""
        command = ctypes.create_string_buffer(b"\x1b[0PULLFILE\x02" + _bytes(place) + b"\x03")
        self._call("PullFile", 0, _CHANNEL, self._baud, _PULL_MS, len(command.value), command,
                   ctypes.create_string_buffer(_path(file)))

    def photos(self) -> list[str]:
        """The head photos on the terminal."""
        return self._list(_PHOTOS)

    def pictures(self) -> list[str]:
        """The pictures of the idle screen."""
        return self._list(_PICTURES)

    def _list(self, kind: int) -> list[str]:
        names = _room(_ROOM + 1)
        self._call("GetVideoList", self._port, _CHANNEL, self._baud, kind, names, _ROOM)
        return [name for name in _text(names).split("|") if name]

    def add_photo(self, photo: PathLike, name: Optional[str] = None) -> None:
        """Sends a head photo, to be stored under its own name or another."""
        self._call("MP_DownHeadFile", None, _CHANNEL, self._baud, _path(photo), _optional(name))

    def delete_photo(self, name: str) -> None:
        self._call("MP_DelHeadFile", None, None, self._baud, _bytes(name))

    def add_pictures(self, pictures: Paths, only_missing: bool = False) -> None:
        """Adds pictures to the idle screen, or only those whose names the terminal lacks."""
        self._change_pictures(_paths(pictures), _ADD_MISSING if only_missing else _ADD)

    def replace_pictures(self, pictures: Paths) -> None:
        self._change_pictures(_paths(pictures), _REPLACE)

    def delete_pictures(self, names: Optional[Iterable[str]] = None) -> None:
        """Deletes the pictures of these names, or all."""
        if names is None:
            self._change_pictures(b"", _DELETE_ALL)
        else:
            self._change_pictures(b"|".join(_bytes(name) for name in names), _DELETE)

    def _change_pictures(self, names: bytes, how: int) -> None:
        self._call("MP_DownloadFile", None, None, self._baud, None, _PICTURES, ctypes.create_string_buffer(names), how)

    def set_qr_code(self, picture: Optional[PathLike]) -> None:
        """Replaces the QR code's picture, or removes it."""
        self._call("MP_SetBarcodePic", None, None, self._baud, None if picture is None else _path(picture))

    def update_firmware(self, package: PathLike) -> None:
        """Sends a firmware package, whose extension begins with "dat", and has it installed."""
        self._call("MP_DownloadFile", None, None, self._baud, None, _FIRMWARE,
                   ctypes.create_string_buffer(_path(package)), 0)

    # ---- PIN pad

    def set_pin_entry(self, algorithm: int, digits: int, end_rule: int = 0, fill: str = "F") -> None:
        """Sets encryption type, PIN length, end rule and fill type, whose values are the pad's."""
        self._pin_pad("PN_SetPinPadParameter", algorithm, digits, end_rule, _bytes(fill))

    def public_key(self, algorithm: int, bits: int) -> bytes:
        """The pad's public key: the modulus for algorithm 1 (RSA), X and Y for 2 (SM2)."""
        key = _room()
        self._pin_pad("PN_ObtainPublicKey", algorithm, bits, key)
        return bytes.fromhex(_text(key))

    def new_factor(self, key_type: int = 1) -> str:
        """Has the pad make a new factor, for which the bank prepares a working key."""
        factor = _room()
        self._pin_pad("PN_ObtainFactor", str(key_type).encode(), factor)
        return _text(factor)

    def load_working_key(self, enciphered: bytes, factor: str, verify_key: str, key_type: int = 1) -> None:
        """Loads a working key that was prepared for this pad and factor. No byte of it is zero."""
        self._pin_pad("PN_DownloadPinPadWK", _bytes(factor), str(key_type).encode(), enciphered.hex().upper().encode(),
                      _bytes(verify_key))

    def pin_block(self, account: Optional[str], *, algorithm: int, digits: int, prompt: Optional[str] = None,
                  sound: int = 0, seconds: int = 60) -> bytes:
        """The PIN block of the PIN that the customer keys, bound to an account of 12 digits or more, or to none.
        Encryption type and length are those that set_pin_entry() set."""
        kind = _UNBOUND if account is None else _BOUND
        factor, block = _room(), _room()
        length = ctypes.c_int(digits)
        arguments = (seconds, algorithm, sound, kind, _optional(account), factor, block, length)
        if prompt is None:
            self._pin_pad("PN_GetPinBlock", *arguments)
        else:
            self._pin_pad("PN_GetPinBlockShowString", *arguments, _bytes(prompt))
        return block.raw[: length.value]
