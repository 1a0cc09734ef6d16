// SPDX-License-Identifier: MIT
// USB/IP as a client speaks it, byte by byte.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace gwq::test::usbip {

using namespace std::string_literals;

inline constexpr std::size_t kOperationSize = 8;
inline constexpr std::size_t kDeviceSize = 312;
inline constexpr std::size_t kListSize = kOperationSize + 4 + kDeviceSize + 4;
inline constexpr std::size_t kImportSize = kOperationSize + kDeviceSize;
inline constexpr std::size_t kCommandSize = 48;
inline constexpr std::uint32_t kDeviceId = 0x10005;
inline constexpr std::uint32_t kSubmitReply = 3;
inline constexpr std::uint32_t kUnlinkReply = 4;
inline constexpr std::size_t kReport = 1024;

inline std::string Big(std::uint64_t value, int bytes) {
  std::string text;
  for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) text += static_cast<char>(value >> shift & 0xFF);
  return text;
}

inline std::string Zeros(std::size_t count) {
  return std::string(count, '\0');
}

inline std::string Padded(std::string text, std::size_t size) {
  text.resize(size);
  return text;
}

inline std::string Operation(unsigned code) {
  return Big(0x0111, 2) + Big(code, 2) + Big(0, 4);
}
inline std::string ListRequest() {
  return Operation(0x8005);
}
inline std::string ImportRequest(const std::string& bus_id = "1-1") {
  return Operation(0x8003) + Padded(bus_id, 32);
}

struct Submit {
  std::uint32_t sequence = 1;
  std::uint32_t in = 0;
  std::uint32_t endpoint = 0;
  std::uint32_t length = 0;
  std::string setup = std::string(8, '\0');
  std::uint32_t command = 1;
  std::uint32_t device = kDeviceId;
  std::uint32_t packets = 0;
};

inline std::string Header(const Submit& submit) {
  return Big(submit.command, 4) + Big(submit.sequence, 4) + Big(submit.device, 4) + Big(submit.in, 4) +
         Big(submit.endpoint, 4) + Big(0, 4) + Big(submit.length, 4) + Big(0, 4) + Big(submit.packets, 4) +
         Big(0, 4) + submit.setup;
}
inline std::string Out(std::uint32_t sequence, const std::string& data) {
  return Header({sequence, 0, 2, static_cast<std::uint32_t>(data.size())}) + data;
}
inline std::string Report(std::uint32_t sequence, std::string command) {
  return Out(sequence, Padded(std::move(command), kReport));
}
inline std::string In(std::uint32_t sequence, std::uint32_t length = kReport) {
  return Header({sequence, 1, 1, length});
}
inline std::string Unlink(std::uint32_t sequence, std::uint32_t victim) {
  return Big(2, 4) + Big(sequence, 4) + Big(kDeviceId, 4) + Zeros(8) + Big(victim, 4) + Zeros(24);
}

// Numbers of a setup packet have the lowest byte first.
inline std::string SetupPacket(unsigned type, unsigned request, unsigned value, unsigned length) {
  std::string setup{static_cast<char>(type), static_cast<char>(request)};
  for (const unsigned number : {value, 0U, length}) {
    setup += static_cast<char>(number & 0xFFU);
    setup += static_cast<char>(number >> 8U & 0xFFU);
  }
  return setup;
}
inline std::string ControlIn(std::uint32_t sequence, unsigned type, unsigned request, unsigned value,
                             unsigned length) {
  return Header({sequence, 1, 0, length, SetupPacket(type, request, value, length)});
}
inline std::string ControlOut(std::uint32_t sequence, unsigned type, unsigned request, unsigned value,
                              const std::string& data = "") {
  const auto length = static_cast<unsigned>(data.size());
  return Header({sequence, 0, 0, length, SetupPacket(type, request, value, length)}) + data;
}

// Replies.
inline std::string Submitted(std::uint32_t sequence, int status, std::size_t transferred,
                             const std::string& data = "") {
  return Big(kSubmitReply, 4) + Big(sequence, 4) + Zeros(12) + Big(static_cast<std::uint32_t>(status), 4) +
         Big(transferred, 4) + Zeros(20) + data;
}
inline std::string Unlinked(std::uint32_t sequence, int status) {
  return Big(kUnlinkReply, 4) + Big(sequence, 4) + Zeros(12) + Big(static_cast<std::uint32_t>(status), 4) +
         Zeros(24);
}
inline std::string DeviceRecord() {
  return Padded("/sys/devices/usb1/1-1", 256) + Padded("1-1", 32) + Big(1, 4) + Big(5, 4) + Big(3, 4) +
         "\x12\x09\x00\x01\x01\x00\x00\x00\x00\x01\x01\x01"s;
}
inline std::string ListReply() {
  return Operation(5) + Big(1, 4) + DeviceRecord() + "\x03\x00\x00\x00"s;
}
inline std::string ImportReply() {
  return Operation(3) + DeviceRecord();
}
inline std::string ImportRefusal(unsigned status) {
  return Big(0x0111, 2) + Big(3, 2) + Big(status, 4);
}

inline constexpr const char* kGetVersion = "\033[0GETVERSION";

}  // namespace gwq::test::usbip
