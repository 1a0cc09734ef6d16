// SPDX-License-Identifier: MIT
// Local time in the log's formats.
#pragma once

#include <array>
#include <ctime>
#include <span>

namespace gwq {

using ClockText = std::array<char, 128>;

// Fills `place` with the last decimal digits of a number of 0 or more. Used for every line of the
// log, where snprintf would be slow.
void WriteDigits(int number, std::span<char> place);

std::tm LocalDate();

// The time now, such as "09:41:07(052)".
ClockText TimeStamp();

// "2024-03-05 09:41:07(052)", in a buffer that each call overwrites.
// Contract: kept although nothing calls it.
const char* FullTimeStamp();

// 512 zeroed bytes, the same ones at each call.
// Contract: kept although nothing calls it.
char* ScratchText();

}  // namespace gwq
