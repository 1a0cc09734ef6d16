// SPDX-License-Identifier: MIT
// Makes transfers of what the kernel captured on a bus.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <vector>

#include "recording/capture.h"
#include "recording/options.h"
#include "recording/recording.h"

namespace gwq::terminal::recording {

// Throws std::runtime_error when the masks do not lie in `size` bytes.
[[nodiscard]] Masks ParseMaskComment(std::string_view comment, std::size_t size);

// Packets that this does not understand are none of a terminal's.
class UsbCapture {
 public:
  // The packet's bytes must stay where they are.
  void Add(const CapturedPacket& packet);

  [[nodiscard]] bool Empty() const { return events_.empty(); }
  // Adds the device's transfers; throws when it cannot be told or was captured in part.
  void Extract(const std::optional<BusAddress>& device, Recording& recording) const;

 private:
  struct Event {
    std::uint64_t id = 0;
    char type = 0;
    TransferType transfer_type = TransferType::kInterrupt;
    std::uint8_t endpoint = 0;
    BusAddress address;
    bool has_setup = false;
    std::array<std::uint8_t, 8> setup{};
    std::int32_t status = 0;
    std::uint32_t length = 0;
    std::int64_t time_us = 0;
    std::span<const std::uint8_t> data;
    std::string_view comment;
  };
  using Identities = std::map<BusAddress, Recording::Identity>;

  [[nodiscard]] static std::optional<Event> Parse(const CapturedPacket& packet);
  [[nodiscard]] static bool IsTerminalTransfer(const Event& event);
  [[nodiscard]] Identities FindIdentities() const;
  [[nodiscard]] BusAddress Choose(const std::optional<BusAddress>& device,
                                  const Identities& identities) const;
  [[nodiscard]] std::set<BusAddress> Devices() const;
  [[nodiscard]] static std::optional<WireTransfer> MakeTransfer(const Event& begin, const Event& end);

  std::vector<Event> events_;
};

}  // namespace gwq::terminal::recording
