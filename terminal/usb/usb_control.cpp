// SPDX-License-Identifier: MIT
#include "usb/usb_control.h"

#include <algorithm>

#include "usb/usb_descriptors.h"

namespace gwq::terminal::usb {
namespace {

std::uint16_t LittleEndian(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
}

// Request type in the upper byte, request in the lower.
constexpr int Key(int type, int request) {
  return (type << 8) | request;
}

std::optional<Bytes> FullAnswer(UsbId id, const ControlRequest& request) {
  switch (Key(request.type, request.request)) {
    case Key(0x80, 0x06):  // GET_DESCRIPTOR from the device
    case Key(0x81, 0x06):  // and from the interface
      return Descriptor(id, static_cast<std::uint8_t>(request.value >> 8),
                        static_cast<std::uint8_t>(request.value & 0xff));
    case Key(0x80, 0x00):  // GET_STATUS
    case Key(0x81, 0x00):
    case Key(0x82, 0x00):
      return Bytes{0, 0};
    case Key(0x80, 0x08):  // GET_CONFIGURATION
      return Bytes{1};
    case Key(0x00, 0x09):  // SET_CONFIGURATION
    case Key(0x01, 0x0b):  // SET_INTERFACE
    case Key(0x02, 0x01):  // CLEAR_FEATURE, endpoint halt
    case Key(0x21, 0x0a):  // SET_IDLE
    case Key(0x21, 0x09):  // SET_REPORT
      return Bytes{};
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<ControlRequest> ControlRequest::Parse(std::span<const std::uint8_t> payload) {
  if (payload.size() < kSetupSize) return std::nullopt;
  return ControlRequest{payload[0], payload[1], LittleEndian(payload.subspan(2)),
                        LittleEndian(payload.subspan(6)), payload.subspan(kSetupSize)};
}

std::optional<Bytes> AnswerControl(UsbId id, const ControlRequest& request) {
  std::optional<Bytes> answer = FullAnswer(id, request);
  if (!answer) return std::nullopt;
  const std::size_t room = std::min<std::size_t>(request.length, request.data.size());
  if (answer->size() > room) answer->resize(room);
  return answer;
}

}  // namespace gwq::terminal::usb
