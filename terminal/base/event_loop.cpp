// SPDX-License-Identifier: MIT
#include "base/event_loop.h"

#include <poll.h>

#include <algorithm>
#include <utility>

#include "base/errors.h"

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

int EventLoop::AddGlib(std::vector<GPollFD>& fds, int& timeout) const {
  int priority = 0;
  g_main_context_prepare(context_, &priority);
  const std::size_t own = fds.size();
  int glib_timeout = -1;
  int count = 0;
  int room = 0;
  while ((count = g_main_context_query(context_, priority, &glib_timeout, fds.data() + own, room)) > room) {
    room = count;
    fds.resize(own + static_cast<std::size_t>(room));
  }
  fds.resize(own + static_cast<std::size_t>(count));
  if (glib_timeout >= 0) timeout = timeout < 0 ? glib_timeout : std::min(timeout, glib_timeout);
  return priority;
}

void EventLoop::ServeGlib(GPollFD* fds, std::size_t count, int priority) const {
  if (g_main_context_check(context_, priority, fds, static_cast<int>(count)))
    g_main_context_dispatch(context_);
}

void EventLoop::ServeTimed(Time now) {
  for (Timed* timed : timed_) {
    const std::optional<Time> deadline = timed->NextDeadline();
    if (deadline && *deadline <= now) timed->Advance(now);
  }
}

void EventLoop::WaitAndServe(const Clock& clock) {
  for (const auto& action : before_wait_) action();
  std::vector<GPollFD> fds;
  fds.reserve(watches_.size());
  // A negative descriptor keeps its place and is passed over by poll.
  for (const Watch& watch : watches_) fds.push_back({watch.wanted() ? watch.fd : -1, watch.events, 0});
  const std::size_t own = fds.size();
  int timeout = PollTimeout(clock);
  const int priority = context_ != nullptr ? AddGlib(fds, timeout) : 0;
  if (g_poll(fds.data(), static_cast<guint>(fds.size()), timeout) < 0 && errno != EINTR) ThrowErrno("poll");

  ServeTimed(clock.Now());
  for (std::size_t i = 0; i < own && running_; ++i) {
    if (fds[i].revents != 0) watches_[i].action();
  }
  if (context_ != nullptr && running_) ServeGlib(fds.data() + own, fds.size() - own, priority);
}

}  // namespace gwq::terminal
