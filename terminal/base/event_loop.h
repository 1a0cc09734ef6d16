// SPDX-License-Identifier: MIT
// One thread's loop over readable descriptors and the terminals' deadlines.
#pragma once

#include <glib.h>

#include <functional>
#include <optional>
#include <vector>

#include "base/clock.h"

namespace gwq::terminal {

// Something that has to be told when its time has come.
class Timed {
 public:
  Timed() = default;
  Timed(const Timed&) = delete;
  Timed& operator=(const Timed&) = delete;
  virtual ~Timed() = default;
  virtual std::optional<Time> NextDeadline() = 0;
  virtual void Advance(Time now) = 0;
};

class EventLoop {
 public:
  // Everything given here must outlive Run.
  void OnReadable(int fd, std::function<void()> action);
  // `wanted` is asked before each wait whether `fd` is to be watched for room.
  void OnWritable(int fd, std::function<bool()> wanted, std::function<void()> action);
  void Add(Timed& timed) { timed_.push_back(&timed); }
  void BeforeEachWait(std::function<void()> action) { before_wait_.push_back(std::move(action)); }
  // Does GLib's work in this context too, which must be this thread's alone.
  void Join(GMainContext* context) { context_ = context; }

  // Returns after an action has called Stop.
  void Run(const Clock& clock);
  void Stop() { running_ = false; }

 private:
  struct Watch {
    int fd;
    gushort events;
    std::function<bool()> wanted;
    std::function<void()> action;
  };
  void WaitAndServe(const Clock& clock);
  [[nodiscard]] int PollTimeout(const Clock& clock) const;
  // Adds what GLib waits for behind our own, and tells how urgent its work is.
  int AddGlib(std::vector<GPollFD>& fds, int& timeout) const;
  void ServeGlib(GPollFD* fds, std::size_t count, int priority) const;
  void ServeTimed(Time now);

  GMainContext* context_ = nullptr;
  std::vector<std::function<void()>> before_wait_;
  std::vector<Watch> watches_;
  std::vector<Timed*> timed_;
  bool running_ = false;
};

}  // namespace gwq::terminal
