// SPDX-License-Identifier: MIT
// The frames of documents, signatures and the terminal's description, once, with one example each.
#pragma once

#include "wire/frames.h"
#include "wire/screen_frames.h"

namespace gwq::wire {

// ---------------------------------------------------------------- documents and signatures

//  Show              ESC "[2YCNEWSHOWFILE" STX 0 "|" seconds "|" list ETX     list: places, GBK, between them "|"
inline constexpr std::string_view kShowDocuments =
    "\x1B[2YCNEWSHOWFILE\x02"
    "0|30|/tmp/a.pdf|/tmp/b.pdf\x03"sv;

//  Confirm           ESC "[2YCNEWSTARTFILE" STX 0 "|" seconds "|" list ETX
inline constexpr std::string_view kConfirmDocuments =
    "\x1B[2YCNEWSTARTFILE\x02"
    "0|30|/tmp/a.pdf|/tmp/b.pdf\x03"sv;

//  Sign              ESC "[2YCNEWSTARTSIGN" STX 0 "|" seconds "|" location "|" list ETX
inline constexpr std::string_view kSignDocuments =
    "\x1B[2YCNEWSTARTSIGN\x02"
    "0|30|p1,x2|/tmp/a.pdf|/tmp/b.pdf\x03"sv;

//  Spoken prompt     ESC "[2YCSETVOICECONTENT" STX text ETX                   text: GBK, here of U+8BF7 U+7B7E
inline constexpr std::string_view kSetVoice = "\x1B[2YCSETVOICECONTENT\x02\xC7\xEB\xC7\xA9\x03"sv;
//    in TZG mode     UTF-8
inline constexpr std::string_view kSetVoiceAsItIs = "\x1B[2YCSETVOICECONTENT\x02\u8BF7\u7B7E\x03"sv;

//  TZG mode          ESC "[2YCISSUPPORTTZG"                                  supported: the answer kDone
//  Sign in it        ESC "[2YCNEWSTARTZGTSIGN" STX 0 "|" seconds "|" flag "|" mode "|" location "|" list ETX
inline constexpr std::string_view kSupportsTzg = "\x1B[2YCISSUPPORTTZG"sv;
inline constexpr std::string_view kSignInTzgMode =
    "\x1B[2YCNEWSTARTZGTSIGN\x02"
    "0|30|0|3|p1,x2|/tmp/a.pdf|/tmp/b.pdf\x03"sv;

//  Sign by hand      ESC "[2HANDSIGN" STX type "|" seconds ETX               type: 1 page, 2 picture, 3 PDF
inline constexpr std::string_view kHandSign = "\x1B[2HANDSIGN\x02\x33|30\x03"sv;

//  Signature         pulled as kPullPicture and kPullStrokes
inline constexpr std::string_view kPullPicture = kPullRequest;
inline constexpr std::string_view kPullStrokes = "\x1B[0PULLFILE\x02/tmp/hw.txt\x03"sv;
//    its files       a picture where the terminal has a painter; x, y, pressure and time of each point
inline constexpr std::string_view kSignaturePicture = "signature of 2 points"sv;
inline constexpr std::string_view kSignatureStrokes = "10,20,300,0\n11,22,0,8\n"sv;

//  Their answers     STX mark ETX                     kDone, kRefused; "f" cancelled or declined, "w" time is over
inline constexpr std::string_view kCustomerCancelled = "\x02\x66\x03"sv;
inline constexpr std::string_view kCustomerTooLate = "\x02w\x03"sv;

// ---------------------------------------------------------------- description of the terminal

//  Item              ESC "[0GETGLOBALCONFIG" STX number ETX   7: production date, 8: model; 6 is read and not used
inline constexpr std::string_view kGetItem6 = "\x1B[0GETGLOBALCONFIG\x02\x36\x03"sv;
inline constexpr std::string_view kGetProductionDate = "\x1B[0GETGLOBALCONFIG\x02\x37\x03"sv;
inline constexpr std::string_view kGetModel = "\x1B[0GETGLOBALCONFIG\x02\x38\x03"sv;
//    answer          STX text ETX, or kRefused
inline constexpr std::string_view kProductionDate = "\x02\x32\x30\x32\x33-11-14\x03"sv;
inline constexpr std::string_view kModel = "\x02Z11\x03"sv;

//  Firmware          ESC "[0GETVERSION" STX "5" ETX
inline constexpr std::string_view kGetFirmware = "\x1B[0GETVERSION\x02\x35\x03"sv;
//    answer          STX version "|" anything ETX
inline constexpr std::string_view kFirmware = "\x02V2|X\x03"sv;

}  // namespace gwq::wire
