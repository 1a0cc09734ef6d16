// SPDX-License-Identifier: MIT
// Every device function, callable with arguments from a fuzzer's input.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "input.h"

namespace gwq::fuzz {

// The arguments of one call. What they point to has exactly the size that the declarations promise, so that
// AddressSanitizer sees the byte beside it.
class Arguments {
 public:
  explicit Arguments(Input input) : input_(input) {}

  Input& input() { return input_; }

  // `count` bytes for the library to write to; zeroed, or full of what is no text's end.
  char* Room(std::size_t count, bool zeroed);
  // A copy of a text, terminator included; `Bytes` has none.
  char* Text(const std::string& text);
  unsigned char* Bytes(std::span<const std::uint8_t> bytes);

  // Output of a size that the caller has told, and what it holds before the call.
  char* Limited(std::size_t size);
  // After a call that found too little room.
  void RequireLimitedUntouched() const;

  // What the host has the library wait for, besides what each function waits for by itself.
  void Wait(std::int64_t seconds) { wait_s_ += seconds > 0 ? seconds : 0; }
  [[nodiscard]] std::int64_t WaitS() const { return wait_s_; }

 private:
  Input input_;
  std::vector<std::unique_ptr<char[]>> owned_;
  std::string limited_before_;
  const char* limited_ = nullptr;
  std::int64_t wait_s_ = 0;
};

struct Call {
  const char* name;
  int own_s;       // the seconds of all reads that stand in the declaration
  int per_read_s;  // for calls with as many reads as a file or a list needs
  bool holds;      // opens or closes a link that stays so
  void (*run)(Arguments& arguments);
};

std::span<const Call> Calls();

// What the host's predicates do in the next call: the first bytes of the call's input, one for each
// time they are asked.
void BeHost(Arguments& arguments);

}  // namespace gwq::fuzz
