// SPDX-License-Identifier: MIT
// Changes answer frames by their fields; most of what it makes has the right length and check again.
#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include <gwq/codec/packet.h>
#include "exact.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size,
                                               unsigned seed) {
  std::minstd_rand random(seed);
  if (random() % 3 == 0) return LLVMFuzzerMutate(data, size, max_size);
  gwq::fuzz::Exact<unsigned char> body({data, size});
  gwq::fuzz::Exact<unsigned char> content(1020);
  int length = 0;
  std::vector<std::uint8_t> changed(1024);
  const int status = UnPackData(body.data(), body.length(), content.data(), &length);
  changed[0] = static_cast<std::uint8_t>(status >> 8);
  changed[1] = static_cast<std::uint8_t>(status);
  std::copy_n(content.data(), length, changed.begin() + 2);
  const std::size_t count =
      LLVMFuzzerMutate(changed.data(), static_cast<std::size_t>(length) + 2, changed.size());
  std::vector<std::uint8_t> frame(2 * count + 8);
  PackData(changed.data(), static_cast<int>(count), frame.data());
  if (random() % 4 == 0) frame[1 + random() % 4] = static_cast<std::uint8_t>('0' + random() % 16);
  if (random() % 8 == 0) frame[frame.size() - 2] ^= 1U;
  if (random() % 8 == 0) frame.insert(frame.begin(), random() % 16, static_cast<std::uint8_t>(random()));
  if (frame.size() > max_size) return LLVMFuzzerMutate(data, size, max_size);
  std::memcpy(data, frame.data(), frame.size());
  return frame.size();
}
