# SPDX-License-Identifier: MIT
"""The library itself: the functions that the module uses, with their types."""

from __future__ import annotations

import ctypes
import os
from ctypes import POINTER, c_char, c_char_p, c_int, c_uint, c_void_p

# A text that is read, and a buffer that is written.
_text = c_char_p
_room = POINTER(c_char)
_number = POINTER(c_int)

_Types = list[type[object]]
_LINE: _Types = [c_int, c_int]  # port, baud
_PIN_PAD: _Types = [c_int, _text, c_int]  # port, reserved, baud
_SCREEN: _Types = [c_void_p, c_void_p, c_int]  # ignored, ignored, baud
_MEDIA: _Types = [_text, _text, c_int]  # ignored, ignored, baud
_ENTRY: _Types = [*_PIN_PAD, c_int, c_int, c_int, c_int, _text, _room, c_void_p, _number]

# Every one returns an int.
FUNCTIONS: dict[str, _Types] = {
    "DEV_CommCall": [_text, c_int, _room, _number],
    "GWQ_GetVerBuildDate": [c_int, c_char, c_int, _room],
    "GWQ_StartEvaluator": [*_LINE, _text, _text, c_int, _text, c_int, POINTER(c_uint)],
    "GWQ_StartInfo": [*_LINE, c_int, _text, POINTER(c_uint)],
    "GWQ_StartKeyboard": [*_LINE, c_int, c_int, _room],
    "GetVideoList": [c_int, c_char, c_int, c_int, _room, c_int],
    "MP_CancelCurrentOperation": [*_SCREEN, c_int],
    "MP_CancleEvaluate": _SCREEN,
    "MP_CheckOut_All": [*_SCREEN, c_int, _text, _text, _room],
    "MP_ConfirmPDF": [*_SCREEN, c_int, _text, _number],
    "MP_DelHeadFile": [*_MEDIA, _text],
    "MP_DownHeadFile": [*_MEDIA, _text, _text],
    "MP_DownloadFile": [*_MEDIA, _text, c_int, _room, c_int],
    "MP_GetFirmwareVersion": [*_SCREEN, c_int, _room, _room],
    "MP_SetBarcodePic": [*_MEDIA, _text],
    "MP_SetEvaluateInfo": [*_SCREEN, _text, _text, c_int, _text],
    "MP_ShowPDF": [*_SCREEN, c_int, _text],
    "MP_SignPDF": [c_void_p, _text, c_int, c_int, _text, _text, _text, _room],
    "MP_SignPDF_Voice": [c_void_p, _text, c_int, c_int, _text, _text, _text, _text, _room],
    "MP_StartElectronicCard": [*_SCREEN, c_int, _text, _text, c_int, _text],
    "MP_StartEvaluate": [*_SCREEN, c_int, _room],
    "MP_StartInfoHtml": [*_SCREEN, c_int, c_int, _text, _number, c_int],
    "MP_StartInfoHtmlScreenshot": [c_void_p, _text, c_int, c_int, c_int, _text, _text, _number],
    "PN_DownloadPinPadWK": [*_PIN_PAD, _text, _text, _text, _text],
    "PN_GetInNo": [*_PIN_PAD, c_int, c_int, c_int, _text, _room],
    "PN_GetPinBlock": _ENTRY,
    "PN_GetPinBlockShowString": [*_ENTRY, _text],
    "PN_ObtainFactor": [*_PIN_PAD, _text, _room],
    "PN_ObtainPublicKey": [*_PIN_PAD, c_int, c_int, _room],
    "PN_ReadDeviceId": [*_PIN_PAD, _room],
    "PN_SetPinPadParameter": [*_PIN_PAD, c_int, c_int, c_int, _text],
    "PullFile": [c_int, c_char, c_int, c_int, c_int, _room, _room],
    "pushFileToZ11": [_text, _room],
}


def _opened() -> ctypes.CDLL:
    named = os.environ.get("GWQ_LIBRARY")
    try:
        return ctypes.CDLL(named or "libgwq.so.1")
    except OSError as error:
        sought = (f"GWQ_LIBRARY names {named}, which cannot be loaded" if named else
                  "libgwq.so.1 was looked for in LD_LIBRARY_PATH and in the loader's directories, and cannot be loaded")
        remedy = "Install the Debian package libgwq1, or set GWQ_LIBRARY to the path of libgwq.so."
        raise OSError(f"{sought} ({error}). {remedy}") from error


def load() -> ctypes.CDLL:
    """The library, with the types of the functions above set."""
    library = _opened()
    for name, arguments in FUNCTIONS.items():
        function = getattr(library, name)
        function.argtypes = arguments
        function.restype = c_int
    return library
