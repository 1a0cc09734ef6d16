// SPDX-License-Identifier: MIT
#include <gwq/codec/packet.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include <gwq/status_codes.h>
#include "codec/internal/secret.h"
#include "codec/internal/split_form.h"
#include "codec/internal/xor_fold.h"

namespace gwq {
namespace {

constexpr unsigned char kStx = 0x02;
constexpr unsigned char kEtx = 0x03;
constexpr std::size_t kBodySize = 2048;

using Bytes = std::span<const std::uint8_t>;

unsigned char* AppendSplit(unsigned char* out, Bytes bytes) {
  SplitBytes(bytes, reinterpret_cast<char*>(out));
  return out + 2 * bytes.size();
}

// The bytes between the first `start` and the next `end`. There are none if fewer than two bytes
// follow `start`.
Bytes FindBody(Bytes received, std::uint8_t start, std::uint8_t end) {
  const auto mark = std::find(received.begin(), received.end(), start);
  if (mark == received.end() || received.end() - mark <= 2) return {};
  const auto body = mark + 1;
  const auto body_end = std::find(body, received.end(), end);
  if (body_end == received.end()) return {};
  return {body, body_end};
}

// A merged answer: length, status, data, XOR. Zero after its `size` bytes.
struct MergedAnswer {
  SecretArray<std::uint8_t, kBodySize> bytes;
  std::size_t size = 0;

  [[nodiscard]] unsigned Word(std::size_t at) const { return bytes[at] * 256U + bytes[at + 1]; }

  [[nodiscard]] bool IsXorValid() {
    const std::size_t covered = size > 3 ? size - 3 : 0;
    return XorFold(bytes.span().subspan(2, covered)) == bytes[size - 1];
  }

  // Bounded by what has arrived: the declared length comes from the terminal.
  [[nodiscard]] Bytes Data() {
    const std::size_t declared = Word(0) > 2 ? Word(0) - 2 : 0;
    const std::size_t arrived = size > 4 ? size - 4 : 0;
    return bytes.span().subspan(4, std::min(declared, arrived));
  }
};

// Contract: an answer of up to 9 bytes must begin with 0x10, a longer one with 0x20; others are
// refused.
bool MarkMatchesLength(Bytes merged) {
  if (merged.empty()) return false;
  return (merged[0] == 0x10 && merged.size() <= 9) || (merged[0] == 0x20 && merged.size() > 9);
}

}  // namespace
}  // namespace gwq

using namespace gwq;

int PackData(const unsigned char* body, int n, unsigned char* out) {
  if (out == nullptr) return 0;
  const Bytes bytes = BytesOf(body, n);
  const auto size = static_cast<unsigned>(bytes.size());
  const std::uint8_t length[] = {static_cast<std::uint8_t>(size >> 8U), static_cast<std::uint8_t>(size)};
  const std::uint8_t check[] = {XorFold(bytes)};
  unsigned char* end = out;
  *end++ = kStx;
  end = AppendSplit(end, length);
  end = AppendSplit(end, bytes);
  end = AppendSplit(end, check);
  *end++ = kEtx;
  return static_cast<int>(end - out);
}

// Contract: a status word other than 0 is returned as it is, and the data is copied all the same.
int UnPackData(const unsigned char* buf, int count, unsigned char* data, int* dataLen) {
  const Bytes body = FindBody(BytesOf(buf, count), kStx, kEtx);
  if (body.size() < 2 || body.size() % 2 != 0 || body.size() > kBodySize) return GWQ_BAD_FRAME;
  MergedAnswer answer;
  answer.size = MergePairs(body, answer.bytes.span());
  if (!answer.IsXorValid()) return GWQ_BAD_FRAME;
  const Bytes found = answer.Data();
  if (data != nullptr) std::copy(found.begin(), found.end(), data);
  if (dataLen != nullptr) *dataLen = static_cast<int>(found.size());
  return static_cast<int>(answer.Word(2));
}

int GetPacketBody(unsigned char start, unsigned char end, const unsigned char* buf, int count,
                  unsigned char* out) {
  const Bytes body = FindBody(BytesOf(buf, count), start, end);
  if (body.empty() || out == nullptr) return -1;
  std::copy(body.begin(), body.end(), out);
  return static_cast<int>(body.size());
}

int GetDataLRC(const unsigned char* data, int count) {
  return XorFold(BytesOf(data, count));
}

unsigned char getLRC(const unsigned char* data, int count) {
  return XorFold(BytesOf(data, count));
}

unsigned char* Endian_intToChar(int value, unsigned char* out) {
  if (out == nullptr) return nullptr;
  for (const unsigned shift : {24U, 16U, 8U, 0U}) {
    *out++ = static_cast<unsigned char>(static_cast<unsigned>(value) >> shift);
  }
  return out - 1;
}

void PSBC_SplitData(const unsigned char* in, int len, unsigned char* out) {
  if (out == nullptr) return;
  AppendSplit(out, BytesOf(in, len));
}

// Contract: an odd length converts nothing.
void PSBC_MergeData(const unsigned char* in, int len, unsigned char* out) {
  if (out == nullptr || len % 2 != 0) return;
  MergePairs(BytesOf(in, len), BytesOf(out, len / 2));
}

int CheckAndGetResponse(const unsigned char* buf, int count) {
  if (buf == nullptr || count == 0) return GWQ_NO_ANSWER;
  const Bytes answer = BytesOf(buf, count);
  if (answer.size() < 2 || answer.front() != kStx || answer.back() != kEtx) return GWQ_REFUSED;
  if (answer[1] == 'U') return GWQ_REFUSED;
  // Contract: this is an answer of the terminal, but counts as none.
  if (answer.size() > 2 && answer[1] == 0xAA && answer[2] == '1') return GWQ_NO_ANSWER;
  return 0;
}

int CheckAndGetResponseForTY(unsigned char stx, unsigned char etx, const unsigned char* buf, int count,
                             unsigned char* out, int* outLen) {
  const Bytes answer = BytesOf(buf, count);
  if (out == nullptr || outLen == nullptr) return GWQ_REFUSED;
  if (answer.size() < 2 || answer.front() != stx || answer.back() != etx) return GWQ_REFUSED;
  const Bytes body = answer.subspan(1, answer.size() - 2);
  SecretArray<unsigned char, 1024> merged;
  if (body.size() > 2 * merged.size()) return GWQ_REFUSED;
  // Contract: the last character of an odd body is paired with the end mark that follows it.
  const Bytes joined = merged.span().first(JoinPairs(body, etx, merged.span()));
  if (!MarkMatchesLength(joined)) return GWQ_REFUSED;
  std::copy(joined.begin() + 1, joined.end(), out);
  *outLen = static_cast<int>(joined.size()) - 1;
  return 0;
}

int CheckDeviceId(const char* id) {
  if (id == nullptr) return 0;
  const std::string_view text(id);
  if (text.size() != 11 || !text.starts_with("st_")) return 0;
  return text.find_first_not_of("0123456789", 3) == std::string_view::npos ? 1 : 0;
}
