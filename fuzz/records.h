// SPDX-License-Identifier: MIT
// A session as a fuzzer's input: records of a type, a 16-bit length (low byte first) and so many bytes.
#pragma once

#include "input.h"
#include "machine.h"

namespace gwq::fuzz {

enum class RecordType : std::uint8_t {
  kSettings,  // what is plugged in; whether the log is on; how the library was loaded. Counts as the first record only
  kFile,    // a number, and the content of that file on the host
  kAnswer,  // 0: spoken at once, else when asked; then as ComposeAnswer has it
  kFault,   // pairs of three bytes: what, after how many calls, in which manner
  kCall,    // the call's number, and what its arguments are made from
  kCount
};

struct Record {
  RecordType type;
  Bytes content;
};

inline std::vector<Record> ParseRecords(Input input) {
  std::vector<Record> records;
  while (input.Left() >= 3) {
    const auto type = static_cast<RecordType>(input.Byte() % static_cast<unsigned>(RecordType::kCount));
    const auto content = input.Take(input.Short());
    records.push_back({type, {content.begin(), content.end()}});
  }
  return records;
}

inline Bytes WriteRecords(const std::vector<Record>& records) {
  Bytes bytes;
  for (const Record& record : records) {
    bytes.push_back(static_cast<std::uint8_t>(record.type));
    bytes.push_back(static_cast<std::uint8_t>(record.content.size()));
    bytes.push_back(static_cast<std::uint8_t>(record.content.size() >> 8U));
    bytes.insert(bytes.end(), record.content.begin(), record.content.end());
  }
  return bytes;
}

}  // namespace gwq::fuzz
