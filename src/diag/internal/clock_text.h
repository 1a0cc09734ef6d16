// Local wall-clock time as the log writes it.
#pragma once

#include <array>
#include <ctime>
#include <span>

namespace gwq {

using ClockText = std::array<char, 128>;

// Fills `place` with the last decimal digits of a number that is not negative. Every line of the log needs a date and a
// time, and snprintf takes its time over them.
void WriteDigits(int number, std::span<char> place);

// Today's local date.
std::tm LocalDate();

// "09:41:07(052)"
ClockText TimeStamp();

// "2024-03-05 09:41:07(052)", in a buffer that each call writes anew. Kept, though nothing calls it today.
const char* FullTimeStamp();

// 512 zeroed bytes, the same ones at each call. Kept, though nothing calls it today.
char* ScratchText();

}  // namespace gwq
