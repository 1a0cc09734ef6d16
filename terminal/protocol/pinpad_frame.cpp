// SPDX-License-Identifier: MIT
#include "protocol/pinpad_frame.h"

#include <functional>
#include <numeric>

#include "protocol/marks.h"
#include "protocol/split_form.h"

namespace gwq::terminal::protocol {
namespace {

constexpr std::size_t kLengthBytes = 2;
constexpr std::size_t kLrcBytes = 1;

std::uint8_t Lrc(std::span<const std::uint8_t> bytes) {
  return std::accumulate(bytes.begin(), bytes.end(), std::uint8_t{0}, std::bit_xor<>());
}

std::uint8_t High(std::size_t value) {
  return static_cast<std::uint8_t>((value >> 8) & 0xFF);
}
std::uint8_t Low(std::size_t value) {
  return static_cast<std::uint8_t>(value & 0xFF);
}

}  // namespace

std::optional<SecretBytes> ReadFrame(std::span<const std::uint8_t> frame) {
  if (frame.size() < 2 || frame.front() != kStx || frame.back() != kEtx) return std::nullopt;
  const auto merged = MergeSplit(frame.subspan(1, frame.size() - 2));
  if (!merged || merged->size() < kLengthBytes + kLrcBytes) return std::nullopt;
  const std::span<const std::uint8_t> bytes(*merged);
  const std::size_t length = (std::size_t{bytes[0]} << 8) | bytes[1];
  if (bytes.size() != kLengthBytes + length + kLrcBytes) return std::nullopt;
  const auto body = bytes.subspan(kLengthBytes, length);
  if (Lrc(body) != bytes.back()) return std::nullopt;
  return CopySecret(body);
}

Bytes MakeAnswerFrame(std::uint16_t status, std::span<const std::uint8_t> data) {
  const std::size_t length = 2 + data.size();
  Bytes body{High(status), Low(status)};
  body.insert(body.end(), data.begin(), data.end());
  const Bytes before{High(length), Low(length)};
  const Bytes after{Lrc(body)};
  Bytes frame{kStx};
  AppendSplit(frame, before);
  AppendSplit(frame, body);
  AppendSplit(frame, after);
  frame.push_back(kEtx);
  return frame;
}

}  // namespace gwq::terminal::protocol
