// SPDX-License-Identifier: MIT
// A line of the table of results: the same work done by the library and by a peer, under names such as
// "hex encode/65536/gwq" and "hex encode/65536/Boost".
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>

namespace gwq::bench {

// Registers one side. `size` is in bytes of text; 0 when the work has no size.
template <typename Call>
benchmark::internal::Benchmark* Side(const std::string& work, std::size_t size, const char* side, Call call) {
  const std::string name = work + "/" + std::to_string(size) + "/" + side;
  return benchmark::RegisterBenchmark(name.c_str(), [call, size](benchmark::State& state) {
    for ([[maybe_unused]] const auto& turn : state) {
      call();
      benchmark::ClobberMemory();
    }
    if (size != 0) state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
  });
}

}  // namespace gwq::bench
