// SPDX-License-Identifier: MIT
// Failed system calls as exceptions.
#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace gwq::terminal {

[[noreturn]] inline void ThrowErrno(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// The result of a call that reports failure by a negative number.
inline int Checked(int result, const std::string& what) {
  if (result < 0) ThrowErrno(what);
  return result;
}

}  // namespace gwq::terminal
