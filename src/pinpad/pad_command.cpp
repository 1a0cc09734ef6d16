// SPDX-License-Identifier: MIT
#include "pinpad/internal/pad_command.h"

#include <algorithm>
#include <cstring>

#include <gwq/codec/packet.h>
#include <gwq/diag/log.h>
#include <gwq/status_codes.h>

namespace gwq {
namespace {

// A body packed for sending. False without memory for the body or for its frame.
class PackedBody {
 public:
  explicit PackedBody(const PadBody& body) : bytes_(body ? (body.Sent().size() + 5) * 2 : 0) {
    if (!body || !bytes_) return;
    const auto sent = body.Sent();
    length_ = PackData(sent.data(), static_cast<int>(sent.size()), bytes_.data());
  }

  explicit operator bool() const { return length_ > 0; }
  CommandBytes bytes() { return {reinterpret_cast<char*>(bytes_.data()), length_}; }

 private:
  SecretHeap<unsigned char> bytes_;
  int length_ = 0;
};

// Returns GWQ_NOT_OPENED where it ends the call; otherwise GWQ_OK.
int DrainAfterPacking(PadDrain drain, Endpoint endpoint) {
  switch (drain) {
    case PadDrain::kPackThenUsb:
      DrainUsb(endpoint);
      return GWQ_OK;
    case PadDrain::kPackThenUsbLogged:
      return DrainFirst(endpoint, DrainLog::kLogged);
    case PadDrain::kPackThenUsbLoggedIgnored:
      DrainFirst(endpoint, DrainLog::kLogged);
      return GWQ_OK;
    default:
      return GWQ_OK;
  }
}

void LogStatus(const char* format, int value) {
  if (format != nullptr) ICC_DPrintLogToFile(format, value);
}

int ResultOfStatusWord(PadRefusal refusal, int status_word) {
  if (refusal == PadRefusal::kCallerDecides) return GWQ_OK;
  if (refusal == PadRefusal::kStatusWord) return status_word;
  return status_word == GWQ_OK ? GWQ_OK : GWQ_REFUSED;
}

}  // namespace

PadBody::PadBody(const PadCommand& command, std::size_t room)
    : command_(command), bytes_(std::max<std::size_t>(room, 3)) {
  Byte(command.code >> 8).Byte(command.code);
}

PadBody& PadBody::Text(std::string_view bytes) {
  if (!bytes_) return *this;
  const std::size_t length = std::min(bytes.size(), bytes_.size() - 1 - size_);
  bytes.copy(bytes_.data() + size_, length);
  size_ += length;
  return *this;
}

PadBody& PadBody::Byte(int number) {
  const char byte = static_cast<char>(number & 0xFF);
  return Text({&byte, 1});
}

std::span<const unsigned char> PadBody::Sent() const {
  return {reinterpret_cast<const unsigned char*>(bytes_.data()), std::strlen(bytes_.data())};
}

void PadAnswer::CopyTo(char* out) const {
  std::memcpy(out, data_.data(), data().size());
  out[data().size()] = '\0';
}

void PadAnswer::Unpack() {
  const auto bytes = raw_.bytes();
  status_ = UnPackData(bytes.data(), static_cast<int>(bytes.size()), data_.data(), &length_);
}

int AskPad(Endpoint endpoint, const PadBody& body, PadAnswer& answer, int customer_s) {
  const PadCommand& command = body.command();
  if (command.drain == PadDrain::kUsbThenPack) DrainUsb(endpoint);
  PackedBody packet(body);
  if (!packet) return GWQ_BAD_ARGUMENT;
  if (const int status = DrainAfterPacking(command.drain, endpoint); status != GWQ_OK) return status;
  const int result =
      Exchange(kAsk, endpoint, packet.bytes(), {&EndOfRead2, WaitMs(customer_s, command.timeout_ms)},
               {answer.raw_.data(), answer.raw_.length()});
  LogStatus(command.exchanged_log, result);
  if (result != GWQ_OK) return result;
  answer.Unpack();
  LogStatus(command.unpacked_log, answer.status());
  return ResultOfStatusWord(command.refusal, answer.status());
}

int SetPad(Endpoint endpoint, const PadCommand& setting, int value) {
  PadBody body(setting);
  PadAnswer answer;
  return AskPad(endpoint, body.Byte(value), answer);
}

}  // namespace gwq
