// SPDX-License-Identifier: MIT
#include "usbip/usbip_protocol.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "usb/usb_descriptors.h"

namespace gwq::terminal::usbip {
namespace {

constexpr const char* kSysPath = "/sys/devices/usb1/1-1";  // shown to people, and nothing else
constexpr std::uint16_t kListReply = 0x0005;
constexpr std::uint16_t kImportReply = 0x0003;
constexpr std::size_t kPathSize = 256;
constexpr std::size_t kDeviceSize = 18;  // of the device descriptor

constexpr std::uint32_t kSubmitCommand = 1;
constexpr std::uint32_t kUnlinkCommand = 2;
constexpr std::uint32_t kSubmitReply = 3;
constexpr std::uint32_t kUnlinkReply = 4;
constexpr std::uint32_t kNotIsochronous = 0xffffffff;  // or 0

std::uint16_t Number16(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

std::uint32_t Number32(std::span<const std::uint8_t> bytes) {
  return std::uint32_t{Number16(bytes)} << 16U | Number16(bytes.subspan(2));
}

class Writer {
 public:
  Writer& Put8(std::uint8_t value) {
    bytes_.push_back(value);
    return *this;
  }
  Writer& Put16(std::uint16_t value) {
    return Put8(static_cast<std::uint8_t>(value >> 8U)).Put8(static_cast<std::uint8_t>(value & 0xffU));
  }
  Writer& Put32(std::uint32_t value) {
    return Put16(static_cast<std::uint16_t>(value >> 16U)).Put16(static_cast<std::uint16_t>(value & 0xffffU));
  }
  // Followed by zeros up to `size`.
  Writer& PutText(std::string_view text, std::size_t size) {
    const std::size_t end = bytes_.size() + size;
    bytes_.insert(bytes_.end(), text.begin(), text.end());
    return FillTo(end);
  }
  Writer& Put(std::span<const std::uint8_t> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return *this;
  }
  Writer& FillTo(std::size_t size) {
    bytes_.resize(size);
    return *this;
  }
  [[nodiscard]] Bytes Take() { return std::move(bytes_); }

 private:
  Bytes bytes_;
};

Writer OperationReply(std::uint16_t code, ImportStatus status) {
  Writer reply;
  reply.Put16(kVersion).Put16(code).Put32(static_cast<std::uint32_t>(status));
  return reply;
}

// What its own descriptors say, in the order of this protocol.
void PutDevice(Writer& reply, usb::UsbId id) {
  const Bytes descriptors = usb::AllDescriptors(id);
  const std::span device = std::span(descriptors).first(kDeviceSize);
  const std::span configuration = std::span(descriptors).subspan(kDeviceSize);
  reply.PutText(kSysPath, kPathSize).PutText(kBusId, kBusIdSize);
  reply.Put32(kBusNumber).Put32(kDeviceNumber).Put32(kHighSpeed).Put16(id.vendor).Put16(id.product);
  reply.Put8(device[13]).Put8(device[12]);  // bcdDevice
  reply.Put(device.subspan(4, 3));          // class, subclass, protocol
  reply.Put8(configuration[5])
      .Put8(device[17])
      .Put8(configuration[4]);  // its value, their number, interfaces
}

void PutInterface(Writer& reply, usb::UsbId id) {
  const Bytes descriptors = usb::AllDescriptors(id);
  const std::span configuration = std::span(descriptors).subspan(kDeviceSize);
  reply.Put(configuration.subspan(9 + 5, 3)).Put8(0);
}

const char* WhyMalformed(std::span<const std::uint8_t, kCommandSize> header) {
  if (Number32(header.subspan(8)) != kDeviceId) return "a command for another device";
  if (Number32(header) == kUnlinkCommand) return nullptr;
  if (Number32(header) != kSubmitCommand) return "an unknown command";
  if (Number32(header.subspan(12)) > 1) return "a transfer in no direction";
  if (Number32(header.subspan(16)) > 15) return "an impossible endpoint";
  if (Number32(header.subspan(24)) > kMaxTransferred) return "a transfer of impossible length";
  const std::uint32_t packets = Number32(header.subspan(32));
  return packets == 0 || packets == kNotIsochronous ? nullptr : "an isochronous transfer";
}

}  // namespace

Operation ParseOperation(std::span<const std::uint8_t, kOperationSize> header) {
  return {Number16(header), Number16(header.subspan(2))};
}

std::string ParseBusId(std::span<const std::uint8_t, kBusIdSize> field) {
  return {field.begin(), std::find(field.begin(), field.end(), 0)};
}

Bytes ListReply(usb::UsbId id, bool plugged) {
  Writer reply = OperationReply(kListReply, ImportStatus::kDone);
  reply.Put32(plugged ? 1 : 0);
  if (plugged) {
    PutDevice(reply, id);
    PutInterface(reply, id);
  }
  return reply.Take();
}

Bytes ImportReply(usb::UsbId id) {
  Writer reply = OperationReply(kImportReply, ImportStatus::kDone);
  PutDevice(reply, id);
  return reply.Take();
}

Bytes ImportRefusal(ImportStatus status) {
  return OperationReply(kImportReply, status).Take();
}

Command ParseCommand(std::span<const std::uint8_t, kCommandSize> header) {
  if (const char* why = WhyMalformed(header)) return Malformed{why};
  const std::uint32_t sequence = Number32(header.subspan(4));
  if (Number32(header) == kUnlinkCommand) return Unlink{sequence, Number32(header.subspan(20))};
  const bool in = Number32(header.subspan(12)) == 1;
  const std::uint32_t number = Number32(header.subspan(16));
  Submit submit{
      sequence, static_cast<std::uint8_t>(in ? number | 0x80 : number), Number32(header.subspan(24)), {}};
  std::copy(header.begin() + 40, header.end(), submit.setup.begin());
  return submit;
}

Bytes SubmitReply(std::uint32_t sequence, int status, std::size_t transferred,
                  std::span<const std::uint8_t> data) {
  Writer reply;
  reply.Put32(kSubmitReply).Put32(sequence).FillTo(20);
  reply.Put32(static_cast<std::uint32_t>(status)).Put32(static_cast<std::uint32_t>(transferred));
  return reply.FillTo(kCommandSize).Put(data).Take();
}

Bytes UnlinkReply(std::uint32_t sequence, int status) {
  Writer reply;
  reply.Put32(kUnlinkReply).Put32(sequence).FillTo(20);
  return reply.Put32(static_cast<std::uint32_t>(status)).FillTo(kCommandSize).Take();
}

}  // namespace gwq::terminal::usbip
