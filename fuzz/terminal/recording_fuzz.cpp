// SPDX-License-Identifier: MIT
// Recordings and captures: text, pcap and pcapng. What is read can be
// written as text, and is the same when it is read again.
#include <stdexcept>

#include "recording/recording.h"
#include "recording/text_form.h"
#include "require.h"

namespace gwq::fuzz {
namespace {

void Check(const terminal::recording::WireTransfer& transfer) {
  std::size_t end = 0;
  for (const auto& [offset, length] : transfer.masks) {
    Require(offset >= end && length > 0 && length <= transfer.data.size() - offset, "a mask beside the data");
    end = offset + length;
  }
  if (transfer.data.size() > (std::size_t{1} << 16)) return;
  const std::string line = terminal::recording::LineOf(transfer);
  try {
    Require(terminal::recording::LineOf(terminal::recording::ParseLine(line)) == line,
            "another transfer came back");
  } catch (const std::runtime_error&) {
    Require(transfer.time_us < 0, "what was written cannot be read");
  }
}

}  // namespace
}  // namespace gwq::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const auto recording = gwq::terminal::recording::ParseRecording({data, size});
    for (const auto& transfer : recording.transfers) gwq::fuzz::Check(transfer);
  } catch (const std::runtime_error&) {
    // no recording
  }
  return 0;
}
