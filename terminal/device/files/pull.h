// SPDX-License-Identifier: MIT
// A file that the host fetches: data packets and an end packet, each of which the
// host acknowledges before the next is sent.
//
//                 Start                  accepted: the next packet
//   (no pull) -------------> (packet sent) <------+
//       ^                     |      |     +------+
//       +---------------------+      |
//         end packet accepted        | rejected, silence, Stop: what the
//       ^                            | host has not taken is withdrawn
//       +----------------------------+
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "device/files/file_faults.h"
#include "device/files/file_system.h"
#include "device/host_channel.h"
#include "protocol/transfer_packet.h"

namespace gwq::terminal::device {

class Pull {
 public:
  static constexpr std::size_t kDataSize = 65536;
  // A host takes its time over the reports of a packet.
  static constexpr Time kPatience{10000};

  Pull(HostChannel& host, const PullFaults& faults) : host_(host), faults_(faults) {}

  // `name` is for the trace.
  void Start(std::unique_ptr<FileReader> file, const std::string& name);
  void TakeResponse(bool accepted);
  void Stop(const std::string& why);

  void Advance(Time now);
  [[nodiscard]] std::optional<Time> NextDeadline() const;

 private:
  struct Transfer {
    std::unique_ptr<FileReader> file;
    std::string name;
    std::deque<std::uint8_t> empty_packets;
    std::uint64_t size = 0;
    std::uint64_t packets = 0;  // with data
    std::uint64_t reports = 0;
    bool first = true;  // no packet of the file itself was sent yet
    bool ended = false;
    Time gives_up_at{0};
  };

  void SendNext();
  void SendEmptyPackets();
  void SendData(const Bytes& payload);
  void SendEnd();
  void Spoil(Bytes& packet, const std::string& step);
  void Send(Bytes packet, const std::string& what);

  HostChannel& host_;
  const PullFaults& faults_;
  std::unique_ptr<Transfer> transfer_;
};

}  // namespace gwq::terminal::device
