// SPDX-License-Identifier: MIT
// Every frame that goes over the wire, once, with one example each: what the host must send and what the
// terminal answers. On USB each of the host's frames travels in whole 1024-byte reports, the rest of the last
// one zero.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "support/bytes.h"

namespace gwq::wire {

using std::string_view_literals::operator""sv;

// ---------------------------------------------------------------- counter PIN-pad commands, host to terminal

//  PIN length        ESC "[1;" length "L"             length: decimal, 1 to 14
inline constexpr std::string_view kPinLength14 = "\x1B[1;14L"sv;
inline constexpr std::string_view kPinLength1 = "\x1B[1;1L"sv;

//  Key commands      ESC letter record CR LF          every byte of the record as two characters, nibble +
//  0x30
//
//    "M" master key      record: master index 03, old key, new key
inline constexpr std::string_view kMasterKey =
    "\x1BM"
    "03"
    "31313131313131313131313131313131"
    "0123456789:;<=>?"
    "?>=<;:9876543210"
    "\r\n"sv;
inline constexpr const char* kOldMasterKeyHex = "31313131313131313131313131313131";
inline constexpr const char* kNewMasterKeyHex = "0123456789ABCDEFFEDCBA9876543210";
//    "S" working key     record: master index 03, working index 0A, key enciphered under the master key
inline constexpr std::string_view kWorkingKey =
    "\x1BS"
    "030:"
    "?=7:?640961<=;8;5<<?;>13;358?>6>"
    "\r\n"sv;
inline constexpr const char* kWorkingKeyHex = "FD7AF640961CDB8B5CCFBE13B358FE6E";
//    "A" activate        record: master index 03, working index 0A
inline constexpr std::string_view kActivate =
    "\x1B"
    "A030:\r\n"sv;
//    "R" reset           no record
inline constexpr std::string_view kResetKeys = "\x1BR\r\n"sv;

//  Entry options     ESC "[1;0X"
inline constexpr std::string_view kEntryOptions = "\x1B[1;0X"sv;

//  Entry time-out    ESC "[1;" seconds "T"            seconds: decimal, 1 to 999
inline constexpr std::string_view kEntryTimeout30 = "\x1B[1;30T"sv;
inline constexpr std::string_view kEntryTimeout1 = "\x1B[1;1T"sv;
inline constexpr std::string_view kEntryTimeout999 = "\x1B[1;999T"sv;

//  Clear PIN entry   one byte                         0x82 mode 0, 0x81 mode 1; 0x83 leaves entry
inline constexpr std::string_view kEntryMode0 = "\x82"sv;
inline constexpr std::string_view kEntryMode1 = "\x81"sv;
inline constexpr std::string_view kLeaveEntry = "\x83"sv;

//  DES PIN block     ESC "F" digit digit CR LF
inline constexpr std::string_view kDesBlock =
    "\x1B"
    "F13\r\n"sv;

//  ANSI PIN block    ESC "I" digit digit account CR LF   no account: "000000"
inline constexpr std::string_view kAnsiBlock = "\x1BI126222021234567890\r\n"sv;
inline constexpr std::string_view kAnsiBlockNoAccount = "\x1BI01000000\r\n"sv;

//  Version           ESC "[0GETVERSION"
inline constexpr std::string_view kGetVersion = "\x1B[0GETVERSION"sv;

// ---------------------------------------------------------------- their answers, terminal to host

//  Key command       one byte
inline constexpr std::string_view kKeyAccepted = "\xAA"sv;
inline constexpr std::string_view kKeyNotAccepted = "\x55"sv;

//  Clear PIN         digits CR
inline constexpr std::string_view kClearPin = "4711\r"sv;

//  PIN block         STX split(mark, data) ETX        mark 0x10: at most 8 bytes of data, 0x20: more
inline constexpr std::string_view kBlock8 =
    "\x02"
    "10"
    "5;3=?;9>=0269>=0"
    "\x03"sv;
inline constexpr std::string_view kBlock8Hex = "5B3DFB9ED0269ED0"sv;
inline constexpr std::string_view kBlockOfAccount =
    "\x02"
    "10"
    "804522728732=5>5"
    "\x03"sv;
inline constexpr std::string_view kBlockOfAccountHex = "804522728732D5E5"sv;
inline constexpr std::string_view kBlock10 =
    "\x02"
    "2000112233445566778899"
    "\x03"sv;
inline constexpr std::string_view kBlock10Hex = "00112233445566778899"sv;

//  Version           STX text "|" date ETX            date: YYYYMMDD
inline constexpr std::string_view kVersion20231114 = "\x02V1.2|20231114\x03"sv;

//  Not known         STX "U" ETX, also to what is no command
inline constexpr std::string_view kNoCommand = "\x1B[0NOSUCHCOMMAND"sv;
inline constexpr std::string_view kNoise = "noise"sv;
inline constexpr std::string_view kUnknownCommand = "\x02U\x03"sv;

// ---------------------------------------------------------------- framed PIN-pad commands

//  Command           STX split(length, body, XOR of the body) ETX              length: of the body, 16-bit,
//  Answer            STX split(length, status, data, XOR of status and data) ETX        big-endian
//                    length: of status and data; status: 16-bit, big-endian, 0 accepted
inline constexpr std::string_view kReadDeviceIdFrame =
    "\x02"
    "0002"
    "3018"
    "28"
    "\x03"sv;
inline constexpr std::string_view kAnswer1234Frame =
    "\x02"
    "0004"
    "0000"
    "1234"
    "26"
    "\x03"sv;

inline void AppendSplit(test::Bytes& frame, const test::Bytes& bytes) {
  for (const std::uint8_t byte : bytes) {
    frame.push_back(static_cast<std::uint8_t>((byte >> 4U) + 0x30U));
    frame.push_back(static_cast<std::uint8_t>((byte & 0x0FU) + 0x30U));
  }
}

inline test::Bytes PinPadFrame(const test::Bytes& body) {
  std::uint8_t check = 0;
  for (const std::uint8_t byte : body) check = static_cast<std::uint8_t>(check ^ byte);
  test::Bytes frame{0x02};
  AppendSplit(frame, {static_cast<std::uint8_t>(body.size() >> 8U), static_cast<std::uint8_t>(body.size())});
  AppendSplit(frame, body);
  AppendSplit(frame, {check});
  frame.push_back(0x03);
  return frame;
}

inline test::Bytes PinPadFrame(std::string_view body) {
  return PinPadFrame(test::BytesOf(body));
}

inline test::Bytes PinPadAnswer(unsigned status, const test::Bytes& data = {}) {
  return PinPadFrame(
      test::Concat({static_cast<std::uint8_t>(status >> 8U), static_cast<std::uint8_t>(status)}, data));
}

//  Bodies            a body ends before its first zero byte, so that a value of 0 is left out
//    settings          30 code value
inline constexpr std::string_view kGetEnType = "\x30\x33"sv;
inline constexpr std::string_view kSetEnType1 = "\x30\x10\x01"sv;
inline constexpr std::string_view kSetEnType0 = "\x30\x10"sv;
inline constexpr std::string_view kGetPinLen = "\x30\x35"sv;
inline constexpr std::string_view kSetPinLen6 = "\x30\x12\x06"sv;
inline constexpr std::string_view kSetPinLen0 = "\x30\x12"sv;
inline constexpr std::string_view kSetEndRule2 = "\x30\x13\x02"sv;
inline constexpr std::string_view kSetEndRule0 = "\x30\x13"sv;
inline constexpr std::string_view kFillWithOnes = "\x30\x11\xFF"sv;
inline constexpr std::string_view kFillWithZeros = "\x30\x11"sv;
inline constexpr std::string_view kSetPinMode1 = "\x30\x32\x01"sv;
inline constexpr std::string_view kSetPinMode5 = "\x30\x32\x05"sv;
inline constexpr std::string_view kSetPinMode6 = "\x30\x32\x06"sv;
inline constexpr std::string_view kSetPinMode0 = "\x30\x32"sv;
inline constexpr std::string_view kSetSound1 = "\x30\x14\x01"sv;
inline constexpr std::string_view kSetSound2 = "\x30\x14\x02"sv;
inline constexpr std::string_view kSetSound3 = "\x30\x14\x03"sv;
inline constexpr std::string_view kSetSound0 = "\x30\x14"sv;
//    account           30 16 length digits
inline constexpr std::string_view kAccount19 =
    "\x30\x16\x13"
    "1234567890123456789"sv;
inline constexpr std::string_view kAccountField =
    "\x30\x16\x0C"
    "789012345678"sv;
inline constexpr std::string_view kEmptyAccountField = "\x30\x16\x0C"sv;
//    serial number
inline constexpr std::string_view kReadDeviceId = "\x30\x18"sv;
//    factor            read; make one of type 1, of type 2
inline constexpr std::string_view kReadFactor = "\x30\x19"sv;
inline constexpr std::string_view kMakeFactor1 = "\x30\x03"sv;
inline constexpr std::string_view kMakeFactor2 = "\x30\x3A"sv;
inline constexpr std::string_view kFactor = "0102030405060708"sv;
//    public key        30 02 algorithm length      length: bytes, 2048 bits as 1
inline constexpr std::string_view kPublicKey1024 = "\x30\x02\x01\x80"sv;
inline constexpr std::string_view kPublicKey256 = "\x30\x02\x02\x20"sv;
//      its answer of algorithm 2: X and Y, here the curve's generator, whose private key is 1
inline constexpr std::string_view kSm2Generator =
    "\x32\xC4\xAE\x2C\x1F\x19\x81\x19\x5F\x99\x04\x46\x6A\x39\xC9\x94"
    "\x8F\xE3\x0B\xBF\xF2\x66\x0B\xE1\x71\x5A\x45\x89\x33\x4C\x74\xC7"
    "\xBC\x37\x36\xA2\xF4\xF6\x77\x9C\x59\xBD\xCE\xE3\x6B\x69\x21\x53"
    "\xD0\xA9\x87\x7C\xC6\x2A\x47\x40\x02\xDF\x32\xE5\x21\x39\xF0\xA0"sv;
//    digest            30 15 algorithm length data
inline constexpr std::string_view kDigestOfAbc =
    "\x30\x15\x04\x03"
    "abc"sv;
inline constexpr std::string_view kSm3OfAbc =
    "\x30\x15\x03\x03"
    "abc"sv;
inline constexpr std::string_view kSm3DigestOfAbc =
    "\x66\xC7\xF0\xF4\x62\xEE\xED\xD9\xD1\xF2\xD4\x6B\xDC\x10\xE4\xE2"
    "\x41\x67\xC4\x87\x5C\xF2\xF7\xA2\x29\x7D\xA0\x2B\x8F\x4B\xA8\xE0"sv;
//    working key       30 04 (type 1) or 30 39 (type 2), length, enciphered key, factor, verify key
inline constexpr std::string_view kPadKeyHex = "112233445566778899AABBCCDDEEFF01"sv;
inline constexpr std::string_view kVerifyKey = "869C59"sv;
inline constexpr std::string_view kLoadKeyType1 =
    "\x30\x04\x10"
    "\x11\x22\x33\x44\x55\x66\x77\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF\x01"
    "0102030405060708"
    "869C59"sv;
inline constexpr std::string_view kLoadKeyType2 =
    "\x30\x39\x10"
    "\x11\x22\x33\x44\x55\x66\x77\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF\x01"
    "0102030405060708"
    "869C59"sv;
//      its confirmation: the command's own code as status, then one byte
inline constexpr unsigned kKeyType1Confirmed = 0x3004;
inline constexpr unsigned kKeyType2Confirmed = 0x3039;
//      the status of a value that the pad does not have
inline constexpr unsigned kBadPadArgument = 0x6A80;
//    PIN entry         30 05 seconds; with a text on the screen 40 30 seconds text
inline constexpr std::string_view kEnterPin30 = "\x30\x05\x1E"sv;
inline constexpr std::string_view kEnterPinNoTime = "\x30\x05"sv;
inline constexpr std::string_view kEnterPinShowing =
    "\x40\x30\x1E"
    "Key your PIN"sv;
//      its answer, of the PIN that is kClearPin and the working key above
inline constexpr std::string_view kPadPinBlock = "\x42\x43\x3F\x33\x4B\xF3\xAA\xA2"sv;
inline constexpr std::string_view kEnterPinShowingNothing = "\x40\x30\x1E"sv;

//  Give the terminal a serial number    ESC "[0BJPOSTSETSN" STX number ETX
inline constexpr std::string_view kWriteDeviceId = "\x1B[0BJPOSTSETSN\x02SN-20231114\x03"sv;

//  Encipher          ESC "[1GETFIRMVERSION", then ESC "[1GETENCDATA" STX algorithm "|" length "|" hex ETX
inline constexpr std::string_view kGetFirmwareVersion = "\x1B[1GETFIRMVERSION"sv;
//    its answer      STX common "|" private ETX
inline constexpr std::string_view kFirmwareVersion = "\x02V1.2|P20231114\x03"sv;
inline constexpr std::string_view kEncipher = "\x1B[1GETENCDATA\x02\x30|6|616263\x03"sv;
//    answer          STX code hex ETX, and the hex in a file
inline constexpr std::string_view kEnciphered =
    "\x02\xAA\x30\x31\x30\x32\x30\x33\x30\x34\x30\x35\x30\x36\x30\x37\x30\x38"
    "E18971AA7B7A00D1\x03"sv;
inline constexpr std::string_view kEncipheredHex = "0102030405060708E18971AA7B7A00D1"sv;
inline constexpr std::string_view kPullEnciphered = "\x1B[0PULLFILE\x02/tmp/encdata.txt\x03"sv;

//  Ask for a number  ESC "[5GETINNO" STX seconds "|" param "|" param "|" split(prompt in GBK) ETX
inline constexpr std::string_view kAskNumber = "\x1B[5GETINNO\x02\x33\x30|20|2|<7>;4142\x03"sv;
inline constexpr std::string_view kAskNumberPrompt =
    "\u8bf7"
    "AB"sv;
//    answer          byte, number, "F"
inline constexpr std::string_view kNumberKeyed = "B12345F"sv;

// ---------------------------------------------------------------- file pull

//  Request           ESC "[0PULLFILE" STX path ETX
inline constexpr std::string_view kPullRequest = "\x1B[0PULLFILE\x02/tmp/hw.png\x03"sv;

//  Packet, terminal to host, from the beginning of a 1024-byte report on through the next ones:
//
//      offset  0    1     2      3..5                       6
//              STX  type  check  length (24-bit, big-end.)  payload
//
//      type: 1 start, 2 data, 3 end; check: XOR of the payload
inline test::Bytes TransferPacket(std::uint8_t type, const test::Bytes& payload) {
  std::uint8_t check = 0;
  for (const std::uint8_t byte : payload) check = static_cast<std::uint8_t>(check ^ byte);
  const std::size_t n = payload.size();
  const test::Bytes header{0x02,
                           type,
                           check,
                           static_cast<std::uint8_t>(n >> 16U),
                           static_cast<std::uint8_t>(n >> 8U),
                           static_cast<std::uint8_t>(n)};
  return test::Concat(header, payload);
}

//  Acknowledgement   ESC "[0RESPONSE" STX result ETX  result: "0" accepted, "1" rejected
inline constexpr std::string_view kAccepted =
    "\x1B[0RESPONSE\x02"
    "0\x03"sv;
inline constexpr std::string_view kRejected =
    "\x1B[0RESPONSE\x02"
    "1\x03"sv;

// ---------------------------------------------------------------- file push

//  Mode change       ESC "[0HIDCHANGE"
inline constexpr std::string_view kModeChange = "\x1B[0HIDCHANGE"sv;

//  Packets           as for the pull, host to terminal; the start packet has a zero byte behind it
inline constexpr std::string_view kPushStart = "\x02\x01\x00\x00\x00\x00\x00"sv;

inline constexpr std::string_view kUnknownPacket = "\x02\x09\x00\x00\x00\x00"sv;

//  End packet        payload: media type, name
inline test::Bytes PushEnd(std::uint8_t type, std::string_view name) {
  return TransferPacket(3, test::Concat({type}, test::BytesOf(name)));
}

//  Acknowledgements  STX mark ETX                     mark: 0xAA done, 0xAA "1" failed, "U" refused
inline constexpr std::string_view kDone = "\x02\xAA\x03"sv;
inline constexpr std::string_view kFailed = "\x02\xAA\x31\x03"sv;
inline constexpr std::string_view kRefused = "\x02U\x03"sv;

// ---------------------------------------------------------------- media on the terminal

//  List              ESC "[0GETFILELIST" STX type ETX            type: decimal
inline constexpr std::string_view kListPictures = "\x1B[0GETFILELIST\x02\x30\x03"sv;
inline constexpr std::string_view kListHeadPhotos = "\x1B[0GETFILELIST\x02\x32\x03"sv;
//    answer          STX names, between them "|" ETX
inline constexpr std::string_view kTwoNames = "\x02\x61.jpg|b.jpg\x03"sv;

//  Delete            ESC "[0DELETE" STX type "|" name ETX        name "*": all of the type
inline constexpr std::string_view kDeleteAllPictures = "\x1B[0DELETE\x02\x30|*\x03"sv;
inline constexpr std::string_view kDeletePicture = "\x1B[0DELETE\x02\x30|x.jpg\x03"sv;
inline constexpr std::string_view kDeleteHeadPhoto = "\x1B[0DELETE\x02\x32|x.jpg\x03"sv;

//  Piece             ESC "[0DOWNLOAD" STX type "|" name "|" split(record) ETX
//    record, little-endian:  total   remaining  bytes  XOR of all before
//                            2       1          41     42
inline constexpr std::string_view kPiece = "\x1B[0DOWNLOAD\x02\x30|n.txt|02000000010000004142\x03"sv;

//  Query             ESC "[0SPECQUERYFILE" STX path ETX          known: an answer of more than 9 bytes
inline constexpr std::string_view kQueryPicture =
    "\x1B[0SPECQUERYFILE\x02/mnt/internal_sd/media/picture/x.jpg\x03"sv;
inline constexpr std::string_view kPictureIsThere = "\x02/mnt/internal_sd/media/picture/x.jpg\x03"sv;

//  QR code           ESC "[4QRCODEDELETE"
inline constexpr std::string_view kDeleteQrCode = "\x1B[4QRCODEDELETE"sv;

//  Update            ESC "[0UPDATE" STX path ETX
inline constexpr std::string_view kUpdate = "\x1B[0UPDATE\x02/mnt/sdcard/media/data/update.dat\x03"sv;

}  // namespace gwq::wire
