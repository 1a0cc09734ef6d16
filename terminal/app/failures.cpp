// SPDX-License-Identifier: MIT
#include "app/failures.h"

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <new>
#include <system_error>

#include "base/unique_fd.h"

namespace gwq::terminal::app {
namespace {

struct Advice {
  int error;
  const char* what_to_do;
};

constexpr const char* kMoreFiles = "raise the limit of open files, see ulimit -n";
constexpr const char* kMoreSpace = "free some, or set TMPDIR to a directory with more";
constexpr const char* kMoreMemory = "free some, or raise the limit, see ulimit -v";
constexpr std::array kAdvice = {Advice{EMFILE, kMoreFiles},
                                Advice{ENFILE, kMoreFiles},
                                Advice{ENOSPC, kMoreSpace},
                                Advice{EDQUOT, kMoreSpace},
                                Advice{ENOMEM, kMoreMemory},
                                Advice{EAGAIN, "end some processes, or raise the limit, see ulimit -u"},
                                Advice{EADDRINUSE, "choose another port, or 0 for a free one"}};

}  // namespace

void CheckDescriptors() {
  bool enough = true;
  {
    std::array<UniqueFd, 32> some;
    for (UniqueFd& fd : some) fd.Reset(open("/dev/null", O_RDONLY | O_CLOEXEC));
    enough = static_cast<bool>(some.back());
  }
  if (!enough) throw std::system_error(EMFILE, std::generic_category(), "cannot open 32 files");
}

std::string ReasonOf(const std::exception& error) {
  return dynamic_cast<const std::bad_alloc*>(&error) != nullptr ? std::generic_category().message(ENOMEM)
                                                                : error.what();
}

// By the text, because GLib and umockdev report nothing else.
std::string WithAdvice(const std::string& reason) {
  for (const Advice& advice : kAdvice) {
    if (reason.find(std::generic_category().message(advice.error)) != std::string::npos)
      return reason + " (" + advice.what_to_do + ")";
  }
  return reason;
}

}  // namespace gwq::terminal::app
