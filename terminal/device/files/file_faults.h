// SPDX-License-Identifier: MIT
// Ways in which the terminal's files can be made to go wrong, so that a host can
// see every failure. What goes wrong is named by steps:
//
//   "HIDCHANGE" "start" "data" "end"            of a file that the host sends
//   "PULLFILE" "GETFILELIST" "DELETE" "DOWNLOAD"
//   "SPECQUERYFILE" "QRCODEDELETE" "UPDATE"     the commands
//
// A step alone means each time, "data:2" the second time: of a packet within its
// transfer, of a command since the terminal was switched on. QRCODEDELETE and
// UPDATE are never answered; any fault means that they do nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace gwq::terminal::device {

struct PullFaults {
  std::vector<std::string> bad_check;               // "data", "data:2", "end": the check byte is wrong
  std::optional<std::uint32_t> announce_length;     // in place of the first packet's length
  std::optional<std::uint8_t> packet_type;          // in place of the first packet's type
  std::optional<std::uint32_t> stop_after_reports;  // then silence for the rest of this file
  std::vector<std::uint8_t> empty_packets_first;    // types of packets without payload before the first
};

struct FileFaults {
  std::vector<std::string> refuse;  // answered by STX 'U' ETX
  std::vector<std::string> fail;    // answered by STX 0xAA '1' ETX
  std::vector<std::string> ignore;  // not answered
  PullFaults pull;

  // Not a fault of the terminal, but leniency with one of hosts that cut their
  // packets at the first zero byte: a data or end packet that so lost its length
  // is then accepted whatever its check byte is. Nothing of it can be stored.
  bool accept_cut_packets = false;
};

enum class Verdict { kNone, kRefuse, kFail, kIgnore };

// Counts the steps and says which of them go wrong.
class FaultCounter {
 public:
  explicit FaultCounter(FileFaults faults) : faults_(std::move(faults)) {}

  // To be asked once for each step that happens.
  [[nodiscard]] Verdict Next(const std::string& step);
  // Packets are counted within their transfer.
  void StartTransfer();

  [[nodiscard]] const FileFaults& Script() const { return faults_; }

 private:
  FileFaults faults_;
  std::map<std::string, std::uint64_t> times_;
};

// True if `steps` names this step, or its `time`th time.
[[nodiscard]] bool Names(const std::vector<std::string>& steps, const std::string& step, std::uint64_t time);

}  // namespace gwq::terminal::device
