#include "pinpad/internal/framed.h"

#include <algorithm>
#include <cstring>

#include <gwq/codec/packet.h>
#include <gwq/status_codes.h>

namespace gwq {

PadBody::PadBody(int command, std::size_t room) : bytes_(std::max<std::size_t>(room, 3)) {
  *this << (command >> 8) << command;
}

PadBody& PadBody::operator<<(std::string_view bytes) {
  if (!bytes_) return *this;
  const std::size_t length = std::min(bytes.size(), bytes_.size() - 1 - size_);
  bytes.copy(bytes_.data() + size_, length);
  size_ += length;
  return *this;
}

PadBody& PadBody::operator<<(int number) {
  const char byte = static_cast<char>(number & 0xFF);
  return *this << std::string_view(&byte, 1);
}

std::span<const unsigned char> PadBody::Sent() const {
  return {reinterpret_cast<const unsigned char*>(bytes_.data()), std::strlen(bytes_.data())};
}

void PadAnswer::Unpack() {
  const auto bytes = raw_.bytes();
  status_ = UnPackData(bytes.data(), static_cast<int>(bytes.size()), data_.data(), &length_);
}

// Without a body's bytes nothing of it may be looked at.
PadFrame::PadFrame(const PadBody& body) : bytes_(body ? (body.Sent().size() + 5) * 2 : 0) {
  if (!body || !bytes_) return;
  const auto sent = body.Sent();
  length_ = PackData(sent.data(), static_cast<int>(sent.size()), bytes_.data());
}

int AskPad(Line line, PadFrame& frame, int timeout_ms, PadAnswer& answer) {
  const int result =
      TransProcByEnd(line.port, line.baud, reinterpret_cast<char*>(frame.bytes_.data()), frame.length_,
                     answer.raw_.data(), answer.raw_.length(), &EndOfRead2, timeout_ms);
  if (result == GWQ_OK) answer.Unpack();
  return result;
}

int AskPad(Line line, const PadBody& body, int timeout_ms, PadAnswer& answer) {
  PadFrame frame(body);
  return frame ? AskPad(line, frame, timeout_ms, answer) : static_cast<int>(GWQ_BAD_ARGUMENT);
}

void CopyOut(std::span<const unsigned char> data, char* out) {
  std::memcpy(out, data.data(), data.size());
  out[data.size()] = '\0';
}

}  // namespace gwq
