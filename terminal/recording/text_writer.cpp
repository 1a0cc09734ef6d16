// SPDX-License-Identifier: MIT
#include <string>

#include "recording/text_form.h"
#include "recording/writer.h"

namespace gwq::terminal::recording {
namespace {

std::span<const std::uint8_t> AsBytes(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

TextWriter::TextWriter(RecordingFile& file, std::int64_t start_us) : file_(file), start_us_(start_us) {
  std::string head(kTextHead);
  head += '\n';
  file_.Append(AsBytes(head));
}

void TextWriter::End(const WireTransfer& transfer, std::uint64_t) {
  WireTransfer since_start = transfer;
  since_start.time_us -= start_us_;
  file_.Append(AsBytes(LineOf(since_start) + "\n"));
}

bool IsTextName(const std::string& path) {
  return path.ends_with(".txt");
}

}  // namespace gwq::terminal::recording
