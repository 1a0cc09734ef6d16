// SPDX-License-Identifier: MIT
// Changes sessions by whole records, so that most of what it makes is a session again.
#include <algorithm>
#include <cstring>
#include <random>

#include "calls.h"
#include "records.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

namespace gwq::fuzz {
namespace {

constexpr std::size_t kLongestRecord = 2048;

class Mutator {
 public:
  Mutator(std::vector<Record>& records, unsigned seed) : records_(records), random_(seed) {}

  void Mutate() {
    if (records_.empty()) return Insert();
    switch (Below(10)) {
      case 0:
        return Insert();
      case 1:
        return InsertConversation();
      case 2:
        records_.erase(Any());
        return;
      case 3:
        records_.insert(Any(), *Any());
        return;
      case 4:
        return std::swap(*Any(), *Any());
      case 5:
        return ChangeCall();
      case 6:
        return Below(8) == 0 ? InsertLongestAnswer() : ChangeCall();
      default:
        return ChangeContent(*Any());
    }
  }

 private:
  using Place = std::vector<Record>::iterator;

  std::size_t Below(std::size_t bound) { return random_() % bound; }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(random_()); }
  Place Any() { return records_.begin() + static_cast<std::ptrdiff_t>(Below(records_.size())); }
  Place Gap() { return records_.begin() + static_cast<std::ptrdiff_t>(Below(records_.size() + 1)); }

  Bytes Some(std::size_t most) {
    Bytes bytes(Below(most + 1));
    std::generate(bytes.begin(), bytes.end(), [this] { return Byte(); });
    return bytes;
  }

  Record New(RecordType type) {
    Record record{type, Some(24)};
    if (type == RecordType::kFault) record.content.resize(3);
    if (type == RecordType::kFault) record.content[1] %= 16;
    return record;
  }

  void Insert() { records_.insert(Gap(), New(static_cast<RecordType>(1 + Below(4)))); }

  static Record Answer(Bytes content) {
    content.insert(content.begin(), 1);
    return {RecordType::kAnswer, std::move(content)};
  }

  Record FrameOfSuccess() {
    Bytes content{2, 0, 0};
    const Bytes data = Some(32);
    content.insert(content.end(), data.begin(), data.end());
    return Answer(content);
  }

  // The most that a short answer can be: one byte less than would end the read, and a whole report.
  void InsertLongestAnswer() {
    Bytes first(2 + 1023, 'x');
    first[0] = 1;
    first[1] = 0;
    first[2] = 0x02;
    first[3 + Below(1000)] = '|';
    Bytes second(2 + 1024, 'y');
    second[0] = second[1] = 0;
    second.back() = Below(2) == 0 ? 0x03 : 'F';
    const Record call = New(RecordType::kCall);
    const std::vector<Record> records{{RecordType::kAnswer, first}, {RecordType::kAnswer, second}, call};
    records_.insert(Gap(), records.begin(), records.end());
  }

  // A call that is answered when it asks: what a push gets, what the customer does, what a pull gets.
  void InsertConversation() {
    constexpr std::uint8_t kDone = 5;
    constexpr std::uint8_t kPacket = 0x43;
    std::vector<Record> conversation;
    if (Below(2) == 0) conversation.assign(Below(10), Answer({kDone}));
    for (std::size_t i = Below(4); i > 0; --i) conversation.push_back(Answer(Some(24)));
    for (std::size_t i = Below(3) * Below(5); i > 0; --i) conversation.push_back(FrameOfSuccess());
    for (std::size_t i = Below(3); i > 0; --i) {
      conversation.push_back(Answer({kPacket, 1}));
      conversation.push_back(Answer({kPacket, 2, Byte(), Byte(), Byte()}));
      conversation.push_back(Answer({kPacket, 3}));
    }
    conversation.push_back(New(RecordType::kCall));
    records_.insert(Gap(), conversation.begin(), conversation.end());
  }

  void ChangeCall() {
    const auto call =
        std::find_if(Any(), records_.end(), [](const Record& r) { return r.type == RecordType::kCall; });
    if (call == records_.end()) return Insert();
    if (call->content.empty()) call->content.push_back(0);
    call->content.front() = static_cast<std::uint8_t>(Below(Calls().size()));
  }

  void ChangeContent(Record& record) {
    Bytes& content = record.content;
    const std::size_t size = std::min(content.size(), kLongestRecord);
    content.resize(std::min(2 * size + 64, kLongestRecord));
    content.resize(LLVMFuzzerMutate(content.data(), size, content.size()));
  }

  std::vector<Record>& records_;
  std::minstd_rand random_;
};

std::size_t Store(const std::vector<Record>& records, std::uint8_t* data, std::size_t max_size) {
  const Bytes bytes = WriteRecords(records);
  if (bytes.empty() || bytes.size() > max_size) return 0;
  std::memcpy(data, bytes.data(), bytes.size());
  return bytes.size();
}

}  // namespace
}  // namespace gwq::fuzz

using gwq::fuzz::Input;
using gwq::fuzz::ParseRecords;

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size,
                                               unsigned seed) {
  auto records = ParseRecords(Input(data, size));
  gwq::fuzz::Mutator(records, seed).Mutate();
  const std::size_t stored = gwq::fuzz::Store(records, data, max_size);
  return stored > 0 ? stored : LLVMFuzzerMutate(data, size, max_size);
}

// The beginning of one session and the end of another.
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* data1, std::size_t size1,
                                                 const std::uint8_t* data2, std::size_t size2,
                                                 std::uint8_t* out, std::size_t max_out, unsigned seed) {
  auto first = ParseRecords(Input(data1, size1));
  const auto second = ParseRecords(Input(data2, size2));
  std::minstd_rand random(seed);
  first.resize(first.empty() ? 0 : random() % first.size());
  const auto from = second.empty() ? 0 : random() % second.size();
  first.insert(first.end(), second.begin() + static_cast<std::ptrdiff_t>(from), second.end());
  return gwq::fuzz::Store(first, out, max_out);
}
