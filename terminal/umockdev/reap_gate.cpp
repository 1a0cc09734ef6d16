// SPDX-License-Identifier: MIT
#include "umockdev/reap_gate.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>

#include "base/errors.h"

namespace gwq::terminal {

ReapGate::ReapGate(const std::string& path) {
  const std::string fresh = path + ".fifo";
  Checked(mkfifo(fresh.c_str(), 0600), fresh);
  // Open for reading and writing, so that it never looks hung up to a host.
  fifo_.Reset(Checked(open(fresh.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC), fresh));
  // The smallest pipe holds a page: one byte in it occupies the page, which then counts as full.
  Checked(fcntl(fifo_.Get(), F_SETPIPE_SZ, 1), "F_SETPIPE_SZ");
  SetReapable(false);
  Checked(rename(fresh.c_str(), path.c_str()), path);
}

void ReapGate::SetReapable(bool reapable) {
  if (!fifo_ || reapable == reapable_) return;
  char mark = 0;
  const ssize_t moved = reapable ? read(fifo_.Get(), &mark, 1) : write(fifo_.Get(), &mark, 1);
  if (moved == 1) reapable_ = reapable;
}

}  // namespace gwq::terminal
