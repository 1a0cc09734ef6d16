// SPDX-License-Identifier: MIT
// The messages of USB/IP, version 1.1.1, as bytes. Numbers travel with the highest byte first.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <variant>

#include "base/types.h"
#include "usb/usb_control.h"
#include "usb/usb_id.h"

namespace gwq::terminal::usbip {

inline constexpr std::uint16_t kVersion = 0x0111;
inline constexpr std::size_t kMaxTransferred = std::size_t{1} << 20U;  // bytes in one transfer

// Before the import: operations, a header each, and with an import the name of the device.
inline constexpr std::size_t kOperationSize = 8;
inline constexpr std::size_t kBusIdSize = 32;
inline constexpr std::uint16_t kListRequest = 0x8005;
inline constexpr std::uint16_t kImportRequest = 0x8003;

struct Operation {
  std::uint16_t version = 0;
  std::uint16_t code = 0;
};

[[nodiscard]] Operation ParseOperation(std::span<const std::uint8_t, kOperationSize> header);
[[nodiscard]] std::string ParseBusId(std::span<const std::uint8_t, kBusIdSize> field);

enum class ImportStatus : std::uint32_t { kDone = 0, kBusy = 2, kNoDevice = 4 };

// With no device when it is not plugged in.
[[nodiscard]] Bytes ListReply(usb::UsbId id, bool plugged);
[[nodiscard]] Bytes ImportReply(usb::UsbId id);
[[nodiscard]] Bytes ImportRefusal(ImportStatus status);

// After it: commands, a header each, and behind the header of a submitted transfer to the device its data.
inline constexpr std::size_t kCommandSize = 48;

struct Submit {
  std::uint32_t sequence = 0;
  std::uint8_t endpoint = 0;  // with the direction in its highest bit
  std::size_t length = 0;     // at most kMaxTransferred
  std::array<std::uint8_t, usb::kSetupSize> setup{};

  [[nodiscard]] bool IsIn() const { return (endpoint & 0x80) != 0; }
  [[nodiscard]] bool IsControl() const { return (endpoint & 0x7f) == 0; }
};

struct Unlink {
  std::uint32_t sequence = 0;
  std::uint32_t victim = 0;
};

struct Malformed {
  const char* why = "";
};

using Command = std::variant<Submit, Unlink, Malformed>;

[[nodiscard]] Command ParseCommand(std::span<const std::uint8_t, kCommandSize> header);

// `status` is 0 or a negative error number; `data` is empty for a transfer to the device.
[[nodiscard]] Bytes SubmitReply(std::uint32_t sequence, int status, std::size_t transferred,
                                std::span<const std::uint8_t> data);
[[nodiscard]] Bytes UnlinkReply(std::uint32_t sequence, int status);

// How the device is called, its speed, and its numbers as sent with every command.
inline constexpr const char* kBusId = "1-1";
inline constexpr std::uint32_t kHighSpeed = 3;
inline constexpr std::uint32_t kBusNumber = 1;
inline constexpr std::uint32_t kDeviceNumber = 5;
inline constexpr std::uint32_t kDeviceId = kBusNumber << 16U | kDeviceNumber;

}  // namespace gwq::terminal::usbip
