// SPDX-License-Identifier: MIT
// Input and output of one function in one block, as callers that convert in place have them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "exact.h"
#include "machine.h"

namespace gwq::fuzz {

class Overlap {
 public:
  // `shift` bytes lie between the beginnings of input and output; below 0 the output comes first.
  Overlap(std::span<const std::uint8_t> in, std::size_t out_size, int shift)
      : in_at_(shift < 0 ? static_cast<std::size_t>(-shift) : 0),
        out_at_(shift < 0 ? 0 : static_cast<std::size_t>(shift)),
        out_size_(out_size),
        block_(std::max(in_at_ + in.size(), out_at_ + out_size)) {
    std::copy(in.begin(), in.end(), block_.data() + in_at_);
  }

  template <typename T>
  const T* in() {
    return reinterpret_cast<const T*>(block_.data() + in_at_);
  }
  template <typename T>
  T* out() {
    return reinterpret_cast<T*>(block_.data() + out_at_);
  }
  [[nodiscard]] std::vector<std::uint8_t> Output() {
    const std::uint8_t* first = block_.data() + out_at_;
    return {first, first + out_size_};
  }

 private:
  std::size_t in_at_;
  std::size_t out_at_;
  std::size_t out_size_;
  Exact<std::uint8_t> block_;
};

// Runs convert(in, out) apart, and then in place and shifted. Nothing may leave the block; what is
// promised of overlapping buffers (`same`) gives the same bytes as apart.
enum class Promise { kNone, kInPlace, kAnyOverlap };

template <typename In, typename Out, typename Convert>
void TryOverlaps(std::span<const std::uint8_t> in, std::size_t out_size, Promise promise, Convert convert) {
  Exact<std::uint8_t> apart_in(in);
  Exact<std::uint8_t> apart_out(out_size);
  const int written =
      convert(reinterpret_cast<const In*>(apart_in.data()), reinterpret_cast<Out*>(apart_out.data()));
  const std::size_t count = std::min(out_size, static_cast<std::size_t>(std::max(written, 0)));
  for (const int shift : {0, 1, 2, 3, 8, -1, -2, -3, -8}) {
    Overlap block(in, out_size, shift);
    const int result = convert(block.in<In>(), block.out<Out>());
    if (promise == Promise::kNone || (promise == Promise::kInPlace && shift != 0)) continue;
    const auto first = apart_out.first(count);
    Require(result == written && std::equal(first.begin(), first.end(), block.Output().begin()),
            "an overlap changes the result");
  }
}

}  // namespace gwq::fuzz
