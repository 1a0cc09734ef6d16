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
//    "M" master key      record: master index, old key, new key
//                                 03            1A2B     CDEF
inline constexpr std::string_view kMasterKey = "\x1BM031:2;<=>?\r\n"sv;
//    "S" working key     record: master index, working index, key
//                                 01            0A             99AF
inline constexpr std::string_view kWorkingKey = "\x1BS010:99:?\r\n"sv;
//    "A" activate        record: master index, working index
//                                 01            0A
inline constexpr std::string_view kActivate =
    "\x1B"
    "A010:\r\n"sv;
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

//  Clear PIN         digits CR
inline constexpr std::string_view kClearPin = "4711\r"sv;

//  PIN block         STX split(mark, data) ETX        mark 0x10: at most 8 bytes of data, 0x20: more
inline constexpr std::string_view kBlock8 =
    "\x02"
    "1012345678"
    "9:;<=>?0"
    "\x03"sv;
inline constexpr std::string_view kBlock8Hex = "123456789ABCDEF0"sv;
inline constexpr std::string_view kBlock10 =
    "\x02"
    "2000112233445566778899"
    "\x03"sv;
inline constexpr std::string_view kBlock10Hex = "00112233445566778899"sv;

//  Version           STX text "|" date ETX            date: YYYYMMDD
inline constexpr std::string_view kVersion20231114 = "\x02V1.2|20231114\x03"sv;

//  Not known         STX "U" ETX
inline constexpr std::string_view kUnknownCommand = "\x02U\x03"sv;

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

}  // namespace gwq::wire
