// SPDX-License-Identifier: MIT
// The frames of the customer's screens, once, with one example each; see wire/frames.h. A split
// text has every byte as two characters, nibble + 0x30.
#pragma once

#include <string>
#include <string_view>

namespace gwq::wire {

using std::string_view_literals::operator""sv;

// ---------------------------------------------------------------- host to terminal

//  Time-out          ESC "[" channel ";" seconds "T"    channel: "2" information, "4" evaluation, "5" keypad
inline constexpr std::string_view kInformationTime30 = "\x1B[2;30T"sv;
inline constexpr std::string_view kEvaluationTime30 = "\x1B[4;30T"sv;
inline constexpr std::string_view kKeypadTime30 = "\x1B[5;30T"sv;

//  Close             ESC "[" channel "C"
inline constexpr std::string_view kCloseInformation = "\x1B[2C"sv;
inline constexpr std::string_view kCloseEvaluation = "\x1B[4C"sv;
inline constexpr std::string_view kCloseKeypad = "\x1B[5C"sv;

//  Teller's card     ESC "[4" word STX name "|" number "|" stars "|" photo ETX
inline constexpr std::string_view kShowCard = "\x1B[4OPINFODPUTF8\x02Li|0123|5|li.jpg\x03"sv;
inline constexpr std::string_view kSetCard = "\x1B[4SETEVALINFOUTF8\x02Li|0123|5|li.jpg\x03"sv;
inline constexpr std::string_view kCounterCard = "\x1B[4H\x02Li|0123|5|li.jpg\x03"sv;

//  Rating            ESC "[4STARTEVALUTF8", ESC "[4R"
inline constexpr std::string_view kStartRating = "\x1B[4STARTEVALUTF8"sv;
inline constexpr std::string_view kStartCounterRating = "\x1B[4R"sv;

//  Message           ESC "[2A" STX split(text) ETX
inline constexpr std::string_view kShowMessage = "\x1B[2A\x02\x36\x38\x36\x39\x03"sv;  // "hi"

//  Keypad            ESC letters CR LF                  "GM" mode 0, "FA" mode 1
inline constexpr std::string_view kKeypadMode0 = "\x1BGM\r\n"sv;
inline constexpr std::string_view kKeypadMode1 = "\x1B\x46\x41\r\n"sv;

//  Page              ESC "[2" word STX split(page) ETX
inline constexpr std::string_view kShowPage = "\x1B[2SHOWHTMLUTF8\x02\x36\x38\x36\x39\x03"sv;
inline constexpr std::string_view kAskPage = "\x1B[2AUTF8\x02\x36\x38\x36\x39\x03"sv;
inline constexpr std::string_view kCapturePage = "\x1B[2STARTSCREENSHOTUTF8\x02\x36\x38\x36\x39\x03"sv;
inline constexpr std::string_view kCountdown7 = "\x1B[2SETHTMLBTNTIME\x02\x37\x03"sv;
inline constexpr std::string_view kPullCapture = "\x1B[0PULLFILE\x02/tmp/capture.png\x03"sv;

//  Page as a file    ESC "[2YCSTARTINFOHTMLEXUTF8" STX seconds "#" split(extra) "#" ETX
inline constexpr std::string_view kShowPageFile =
    "\x1B[2YCSTARTINFOHTMLEXUTF8\x02\x33\x30#3<3>#\x03"sv;  // "<>"

//  Checkout          ESC "[2YCCHECKOUTALLUTF8" STX seconds "#" split(second) "#" split(first) ETX
inline constexpr std::string_view kCheckOut =
    "\x1B[2YCCHECKOUTALLUTF8\x02\x33\x30#3>#3<\x03"sv;  // "<" and ">"

//  Close program     ESC "[0CLOSECURPROGRAM"
inline constexpr std::string_view kCloseProgram = "\x1B[0CLOSECURPROGRAM"sv;

// ---------------------------------------------------------------- terminal to host

//  Key               "B" key "F"
inline constexpr std::string_view kKey0 = "B0F"sv;
inline constexpr std::string_view kKey1 = "B1F"sv;
inline constexpr std::string_view kKey2 = "B2F"sv;
inline constexpr std::string_view kKey3 = "B3F"sv;

//  Page as a file    "B" the key's name "F"
inline constexpr std::string_view kPageConfirmed = "BokF"sv;

//  Captured page     in a file, which is a picture where the terminal has a painter
inline constexpr std::string_view kCapturedPicture = "picture of hi, Confirm pressed"sv;

//  Keypad            letter characters "F"
inline constexpr std::string_view kKeyed1234 = "A1234F"sv;

//  Checkout          STX code text ETX                  "U" refused, "f" time-out, "w" cancelled, without text
inline constexpr std::string_view kCheckedOut = "\x02\xAAok\x03"sv;
inline constexpr std::string_view kCheckOutTimedOut = "\x02\x66\x03"sv;
inline constexpr std::string_view kCheckOutCancelled = "\x02w\x03"sv;

}  // namespace gwq::wire
