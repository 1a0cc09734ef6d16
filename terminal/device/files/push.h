// SPDX-License-Identifier: MIT
// A file that the host sends: mode change, start packet, data packets, end packet
// with the file's type and name, each answered before the next comes.
//
//                    mode change            start                 data
//   (no transfer) -------------> (waiting) -------> (receiving) <------+
//        ^                         |    ^            |   |      +------+
//        |  end, a command,        |    |            |   | anything wrong: refused or failed
//        |  silence, a cut packet  |    |  wrong,    |   v
//        +-------------------------+    +--------- (spoilt) : all is refused but a new start
//        +----------------------------------------- end: stored
//
// The file streams into the store, where nobody sees it before its end.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "device/files/file_faults.h"
#include "device/files/file_system.h"
#include "device/host_channel.h"
#include "protocol/command_reader.h"
#include "protocol/transfer_packet.h"

namespace gwq::terminal::device {

class Push final : public protocol::PacketSink {
 public:
  Push(HostChannel& host, protocol::CommandReader& reader, FileSystem& files, FaultCounter& faults)
      : host_(host), reader_(reader), files_(files), faults_(faults) {}

  void ChangeMode();

  void BeginPacket(const protocol::PacketHeader& header) override;
  void TakePayload(std::span<const std::uint8_t> piece) override;
  void EndPacket() override;
  void PacketsOver(const char* why) override;

 private:
  // How a packet fared; `text` tells the trace.
  struct Outcome {
    Verdict verdict = Verdict::kNone;
    std::string text;
  };

  [[nodiscard]] Outcome Judge(const std::string& step, Outcome (Push::*own)());
  [[nodiscard]] Outcome Start();
  [[nodiscard]] Outcome Data();
  [[nodiscard]] Outcome End();
  [[nodiscard]] Outcome Store(int type, std::string_view name);
  [[nodiscard]] bool CheckHolds() const;
  [[nodiscard]] bool IsCut() const;
  void Conclude(const protocol::CommandRow& packet, const std::string& detail, const Outcome& outcome);

  HostChannel& host_;
  protocol::CommandReader& reader_;
  FileSystem& files_;
  FaultCounter& faults_;

  protocol::PacketHeader header_;
  std::uint8_t folded_ = 0;
  bool appended_ = true;  // all of this data packet
  Bytes end_payload_;
  std::unique_ptr<FileWriter> writer_;  // there while receiving
  std::uint64_t size_ = 0;
};

// Answers as the script of faults wants it; not to be called with kNone.
void AnswerVerdict(HostChannel& host, Verdict verdict);

}  // namespace gwq::terminal::device
