// SPDX-License-Identifier: MIT
// Records what passes on the wires of a process's terminals.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>

#include "recording/masks.h"
#include "recording/recording_file.h"
#include "recording/writer.h"

namespace gwq::terminal::recording {

// The members may be called on any thread.
class Recorder {
 public:
  // Keys, PINs and numbers are masked unless `with_secrets`. Throws when there can be no such file.
  Recorder(const std::string& path, bool with_secrets);

  // Tells a host's transfers from each other while they are under way.
  struct Key {
    const void* client = nullptr;
    unsigned long address = 0;
    friend bool operator<(const Key& one, const Key& other) {
      return std::tie(one.client, one.address) < std::tie(other.client, other.address);
    }
  };
  struct Begun {
    TransferType type = TransferType::kInterrupt;
    std::uint8_t endpoint = 0;
    std::span<const std::uint8_t> buffer;  // of control transfers the setup packet, and the room behind it
  };
  struct Ended {
    int status = 0;
    std::size_t moved = 0;
    std::span<const std::uint8_t> received;
  };

  // The device is there: what the kernel then asks it.
  void Plugged(const Bytes& device_descriptor, const Bytes& configuration);
  void Begin(const Key& key, const Begun& begun);
  void End(const Key& key, const Ended& ended);
  void Serial(bool to_host, std::span<const std::uint8_t> bytes);

 private:
  using Lock = std::lock_guard<std::mutex>;
  struct Pending {
    WireTransfer transfer;
    Bytes clear;  // what the host offers; wiped when the transfer is over
    std::uint64_t id = 0;
  };

  [[nodiscard]] std::int64_t NowUs() const;
  void KernelAsks(std::uint8_t type, const Bytes& descriptor);
  [[nodiscard]] Masks MasksFromHost(LineMask& line, std::span<const std::uint8_t> bytes) const;
  [[nodiscard]] Masks MasksToHost(LineMask& line, std::span<const std::uint8_t> bytes) const;

  const bool with_secrets_;
  const std::int64_t start_us_;
  const std::chrono::steady_clock::time_point start_;
  std::mutex mutex_;  // guards everything below
  RecordingFile file_;
  std::unique_ptr<Writer> writer_;
  LineMask usb_mask_;
  LineMask serial_mask_;
  std::map<Key, Pending> pending_;
  std::uint64_t last_id_ = 0;
};

}  // namespace gwq::terminal::recording
