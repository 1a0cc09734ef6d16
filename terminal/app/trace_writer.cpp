// SPDX-License-Identifier: MIT
#include "app/trace_writer.h"

#include <fcntl.h>

#include <array>
#include <cstdio>
#include <tuple>

#include "base/errors.h"

namespace gwq::terminal::app {
namespace {

// In the order of TraceEvent::What.
constexpr std::array kSpeakers{"host     > ", "terminal > ", "customer : ", "         : "};

std::string TimeText(Time time) {
  char text[32];
  const auto ms = static_cast<long long>(time.count());
  std::snprintf(text, sizeof text, "%6lld.%03lld ", ms / 1000, ms % 1000);
  return text;
}

// One write for a line, so that lines of several threads and of the command
// itself do not run into each other.
void WriteLine(int fd, const std::string& line) {
  std::ignore = write(fd, line.data(), line.size());  // a lost line of the trace is no failure
}

}  // namespace

TraceWriter::TraceWriter(const std::optional<std::string>& target) {
  if (!target) return;
  if (*target == "-") {
    fd_ = STDERR_FILENO;
    return;
  }
  file_.Reset(Checked(open(target->c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600), *target));
  fd_ = file_.Get();
}

device::TraceSink TraceWriter::Sink(const std::string& line_name) const {
  if (fd_ < 0) return {};
  return [fd = fd_, line_name](const device::TraceEvent& event) {
    WriteLine(fd, TimeText(event.time) + line_name + " " + kSpeakers.at(event.what.index()) +
                      device::TextOf(event) + "\n");
  };
}

}  // namespace gwq::terminal::app
