#include "transports/event_loop.h"

#include <poll.h>

#include <algorithm>
#include <utility>

#include "transports/errors.h"

namespace gwq::terminal {

void EventLoop::OnReadable(int fd, std::function<void()> action) {
  watches_.push_back({fd, POLLIN, [] { return true; }, std::move(action)});
}

void EventLoop::OnWritable(int fd, std::function<bool()> wanted, std::function<void()> action) {
  watches_.push_back({fd, POLLOUT, std::move(wanted), std::move(action)});
}

void EventLoop::Run(const Clock& clock) {
  running_ = true;
  while (running_) WaitAndServe(clock);
}

// The time to the nearest deadline, at most an hour; -1 when there is none.
int EventLoop::PollTimeout(const Clock& clock) const {
  std::optional<Time> nearest;
  for (Timed* timed : timed_) {
    const std::optional<Time> deadline = timed->NextDeadline();
    if (deadline && (!nearest || *deadline < *nearest)) nearest = deadline;
  }
  if (!nearest) return -1;
  const Time left = std::clamp(*nearest - clock.Now(), Time{0}, Time{3'600'000});
  return static_cast<int>(left.count());
}

void EventLoop::WaitAndServe(const Clock& clock) {
  std::vector<pollfd> fds;
  fds.reserve(watches_.size());
  // A negative descriptor keeps its place and is passed over by poll.
  for (const Watch& watch : watches_) fds.push_back({watch.wanted() ? watch.fd : -1, watch.events, 0});
  if (poll(fds.data(), fds.size(), PollTimeout(clock)) < 0 && errno != EINTR) ThrowErrno("poll");

  const Time now = clock.Now();
  for (Timed* timed : timed_) {
    const std::optional<Time> deadline = timed->NextDeadline();
    if (deadline && *deadline <= now) timed->Advance(now);
  }
  for (std::size_t i = 0; i < fds.size() && running_; ++i) {
    if (fds[i].revents != 0) watches_[i].action();
  }
}

}  // namespace gwq::terminal
