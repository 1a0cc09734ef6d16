// Local wall-clock time as the log writes it.
#pragma once

#include <array>
#include <ctime>

namespace gwq {

using ClockText = std::array<char, 128>;

// Today's local date.
std::tm LocalDate();

// "09:41:07(052)"
ClockText TimeStamp();

// "2024-03-05 09:41:07(052)"
ClockText FullTimeStamp();

}  // namespace gwq
