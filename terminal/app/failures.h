// SPDX-License-Identifier: MIT
// Failures, told so that the reader knows what to do.
#pragma once

#include <exception>
#include <string>

namespace gwq::terminal::app {

// Throws std::system_error when fewer descriptors can be opened than any way of running takes. Libraries
// that run out of them halfway tell other reasons, or none.
void CheckDescriptors();

[[nodiscard]] std::string ReasonOf(const std::exception& error);

// The reason, and what to do about it when the system ran out of something.
[[nodiscard]] std::string WithAdvice(const std::string& reason);

}  // namespace gwq::terminal::app
