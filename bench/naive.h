// SPDX-License-Identifier: MIT
// The codecs as plain loops, a byte at a time: what the library must beat, and never fall behind on
// short texts.
#pragma once

#include <cstddef>

namespace gwq::bench {

void NaiveSplit(const unsigned char* in, std::size_t count, char* out);
void NaiveJoin(const char* in, std::size_t count, unsigned char* out);
void NaiveHexEncode(const unsigned char* in, std::size_t count, char* out);
void NaiveHexDecode(const char* in, std::size_t count, unsigned char* out);
void NaiveBase64Encode(const unsigned char* in, std::size_t count, char* out);
void NaiveBase64Decode(const char* in, std::size_t count, unsigned char* out);
unsigned char NaiveXor(const unsigned char* in, std::size_t count);

// Reads all of memory into registers and does nothing with it: the limit of every fold.
void ReadMemory(const unsigned char* in, std::size_t count);

}  // namespace gwq::bench
