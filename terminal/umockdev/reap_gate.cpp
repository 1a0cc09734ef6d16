// SPDX-License-Identifier: MIT
#include "umockdev/reap_gate.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>

#include "base/errors.h"

namespace gwq::terminal::umockdev {

ReapGate::ReapGate(const std::string& path) {
  const std::string fresh = path + ".fifo";
  Checked(mkfifo(fresh.c_str(), 0600), fresh);
  // Open for reading and for writing, so that it never looks hung up to a host; not for both at
  // once, which is how the hosts that hold the device have it open.
  reader_.Reset(Checked(open(fresh.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC), fresh));
  writer_.Reset(Checked(open(fresh.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC), fresh));
  // The smallest pipe holds a page: one byte in it occupies the page, which then counts as full.
  Checked(fcntl(writer_.Get(), F_SETPIPE_SZ, 1), "F_SETPIPE_SZ");
  SetReapable(false);
  Checked(rename(fresh.c_str(), path.c_str()), path);
}

void ReapGate::SetReapable(bool reapable) {
  if (!writer_ || reapable == reapable_) return;
  char mark = 0;
  const ssize_t moved = reapable ? read(reader_.Get(), &mark, 1) : write(writer_.Get(), &mark, 1);
  if (moved == 1) reapable_ = reapable;
}

}  // namespace gwq::terminal::umockdev
