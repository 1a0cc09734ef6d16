// SPDX-License-Identifier: MIT
// The PIN pad's packets and the checks of short answers.
#include <algorithm>
#include <string>

#include <gwq/codec/packet.h>
#include "exact.h"
#include "input.h"
#include "machine.h"
#include "overlap.h"

namespace gwq::fuzz {
namespace {

// Untouched outputs stay as they were; whatever is written stays inside what is promised.
void TakeApart(Exact<unsigned char>& answer) {
  Exact<unsigned char> data(std::min<std::size_t>(answer.size() < 2 ? 0 : (answer.size() - 2) / 2, 1020));
  int length = -77;
  const int status = UnPackData(answer.data(), answer.length(), data.data(), &length);
  if (status == -8) return Require(length == -77, "a damaged frame touched its output");
  Require(status >= 0 && status <= 0xFFFF, "a status word of more than 16 bits");
  Require(length >= 0 && length <= data.length(), "more data than there can be");
}

void CheckAnswers(Exact<unsigned char>& answer) {
  const int status = CheckAndGetResponse(answer.data(), answer.length());
  Require(status == 0 || status == -2 || status == -14, "an unknown status");
  Exact<unsigned char> block(1023);
  int length = -77;
  if (CheckAndGetResponseForTY(0x02, 0x03, answer.data(), answer.length(), block.data(), &length) == 0) {
    Require(length >= 0 && length <= 1023, "a PIN block of an impossible length");
  } else {
    Require(length == -77, "a refused PIN block touched its output");
  }
}

void FindBody(Exact<unsigned char>& answer, std::uint8_t start, std::uint8_t end) {
  Exact<unsigned char> body(answer.size());
  const int length = GetPacketBody(start, end, answer.data(), answer.length(), body.data());
  Require(length == -1 || (length > 0 && length <= answer.length()), "a body longer than what it stood in");
}

// What is packed, as an answer, comes out again.
void PackAndUnpack(std::span<const std::uint8_t> bytes) {
  Exact<unsigned char> body(bytes.first(std::min<std::size_t>(bytes.size(), 1000)));
  Exact<unsigned char> frame(2 * body.size() + 8);
  Require(PackData(body.data(), body.length(), frame.data()) == frame.length(), "a frame of another length");
  if (body.size() < 2) return;
  Exact<unsigned char> data(1020);
  int length = 0;
  const int status = UnPackData(frame.data(), frame.length(), data.data(), &length);
  Require(status == body.data()[0] * 256 + body.data()[1], "another status word came back");
  Require(
      std::ranges::equal(data.first(static_cast<std::size_t>(length)), body.first(body.size()).subspan(2)),
      "other data came back");
}

void Overlaps(std::span<const std::uint8_t> in) {
  const int length = static_cast<int>(in.size());
  TryOverlaps<unsigned char, unsigned char>(in, 2 * in.size(), Promise::kNone,
                                            [&](const auto* from, auto* to) {
                                              PSBC_SplitData(from, length, to);
                                              return 2 * length;
                                            });
  TryOverlaps<unsigned char, unsigned char>(
      in, in.size() / 2, Promise::kInPlace, [&](const auto* from, auto* to) {
        PSBC_MergeData(from, length, to);
        return length % 2 == 0 ? length / 2 : 0;  // nothing of an odd length
      });
  TryOverlaps<unsigned char, unsigned char>(
      in, in.size(), Promise::kInPlace,
      [&](const auto* from, auto* to) { return GetPacketBody(0x02, 0x03, from, length, to); });
  if (in.size() > 0xFFFF) return;
  TryOverlaps<unsigned char, unsigned char>(
      in, 2 * in.size() + 8, Promise::kNone,
      [&](const auto* from, auto* to) { return PackData(from, length, to); });
  const std::size_t most = std::min<std::size_t>(in.size() < 2 ? 0 : (in.size() - 2) / 2, 1020);
  TryOverlaps<unsigned char, unsigned char>(in, most, Promise::kInPlace, [&](const auto* from, auto* to) {
    int count = 0;
    UnPackData(from, length, to, &count);
    return count;
  });
}

// What the library takes for a pointer that is missing.
void Nothing(Exact<unsigned char>& in) {
  Exact<unsigned char> out(2 * in.size() + 8);
  int length = -77;
  Require(UnPackData(nullptr, in.length(), out.data(), &length) == -8 && length == -77,
          "an answer of nothing");
  UnPackData(in.data(), in.length(), nullptr, &length);
  UnPackData(in.data(), in.length(), out.data(), nullptr);
  Require(CheckAndGetResponse(nullptr, in.length()) == -2, "a response of nothing");
  CheckAndGetResponseForTY(0x02, 0x03, nullptr, in.length(), out.data(), &length);
  CheckAndGetResponseForTY(0x02, 0x03, in.data(), in.length(), nullptr, &length);
  CheckAndGetResponseForTY(0x02, 0x03, in.data(), in.length(), out.data(), nullptr);
  GetPacketBody(0x02, 0x03, nullptr, in.length(), out.data());
  GetPacketBody(0x02, 0x03, in.data(), in.length(), nullptr);
  PackData(nullptr, in.length(), out.data());
  PackData(in.data(), in.length(), nullptr);
  PSBC_SplitData(nullptr, in.length(), out.data());
  PSBC_SplitData(in.data(), in.length(), nullptr);
  PSBC_MergeData(nullptr, in.length(), out.data());
  PSBC_MergeData(in.data(), in.length(), nullptr);
  Endian_intToChar(in.length(), nullptr);
  CheckDeviceId(nullptr);
}

}  // namespace
}  // namespace gwq::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace gwq::fuzz;
  Exact<unsigned char> answer({data, size});
  TakeApart(answer);
  CheckAnswers(answer);
  FindBody(answer, 0x02, 0x03);
  FindBody(answer, size > 0 ? data[0] : 0, size > 1 ? data[size - 1] : 0);
  PackAndUnpack({data, size});
  Overlaps({data, size});
  Nothing(answer);
  Require(getLRC(answer.data(), answer.length()) == GetDataLRC(answer.data(), answer.length()),
          "two checks differ");
  Exact<unsigned char> number(4);
  Require(Endian_intToChar(Input(data, size).Int(), number.data()) == number.data() + 3,
          "a number of another length");
  std::string id(reinterpret_cast<const char*>(data), size);
  CheckDeviceId(id.c_str());
  Exact<unsigned char> split(2 * size);
  PSBC_SplitData(answer.data(), answer.length(), split.data());
  PSBC_MergeData(split.data(), split.length(), answer.data());
  Require(std::ranges::equal(answer.first(size), std::span(data, size)),
          "split and merged, other bytes came back");
  return 0;
}
