// SPDX-License-Identifier: MIT
// The forms that a recording is written in.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "recording/recording_file.h"
#include "recording/transfer.h"

namespace gwq::terminal::recording {

// Times are microseconds since the epoch.
class Writer {
 public:
  Writer() = default;
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  virtual ~Writer() = default;

  // A USB transfer begins; `transfer` has the data that the host offers. `id` tells it from
  // the others that are under way.
  virtual void Begin(const WireTransfer& transfer, std::uint64_t id) = 0;
  // It has ended, with the data that were moved. On a serial line there is only this.
  virtual void End(const WireTransfer& transfer, std::uint64_t id) = 0;
};

// pcapng by its published draft, with the kernel's own record of USB transfers
// (LINKTYPE_USB_LINUX_MMAPPED). Packets with masks have a comment that tells them. The bytes of a
// serial line are in LINKTYPE_USER0: a byte that is 0 from the host and 1 to it, and the bytes.
class PcapngWriter final : public Writer {
 public:
  explicit PcapngWriter(RecordingFile& file);
  void Begin(const WireTransfer& transfer, std::uint64_t id) override;
  void End(const WireTransfer& transfer, std::uint64_t id) override;

 private:
  void WriteUsb(const WireTransfer& transfer, std::uint64_t id, char event);
  void WritePacket(std::uint32_t interface, std::int64_t time_us, const Bytes& packet, const Masks& masks);

  RecordingFile& file_;
};

// A line for each transfer, see docs/recording.md.
class TextWriter final : public Writer {
 public:
  TextWriter(RecordingFile& file, std::int64_t start_us);
  void Begin(const WireTransfer&, std::uint64_t) override {}
  void End(const WireTransfer& transfer, std::uint64_t id) override;

 private:
  RecordingFile& file_;
  std::int64_t start_us_;
};

// The text form when the name ends in ".txt".
[[nodiscard]] bool IsTextName(const std::string& path);

}  // namespace gwq::terminal::recording
