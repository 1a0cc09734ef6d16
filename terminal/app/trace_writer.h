// SPDX-License-Identifier: MIT
// The readable record of what passes between host and terminal.
#pragma once

#include <optional>
#include <string>

#include "base/unique_fd.h"
#include "device/trace.h"

namespace gwq::terminal::app {

class TraceWriter {
 public:
  // A file to append to, "-" for standard error, nothing for no trace at all.
  explicit TraceWriter(const std::optional<std::string>& target);

  // Lines of the returned sink begin with `line_name`. It may be called on any
  // thread and must not outlive the writer.
  [[nodiscard]] device::TraceSink Sink(const std::string& line_name) const;

 private:
  UniqueFd file_;
  int fd_ = -1;
};

}  // namespace gwq::terminal::app
