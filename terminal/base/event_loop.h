// SPDX-License-Identifier: MIT
// One thread's loop, GLib's, over descriptors and the terminals' deadlines.
#pragma once

#include <glib.h>
#include <sys/types.h>

#include <exception>
#include <functional>
#include <memory>
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
  struct SourceEnd {
    void operator()(GSource* source) const;
  };
  using SourcePtr = std::unique_ptr<GSource, SourceEnd>;

 public:
  EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;
  ~EventLoop();

  static constexpr unsigned kIn = G_IO_IN;
  static constexpr unsigned kOut = G_IO_OUT;
  // What a descriptor is ready for: kIn, kOut, and unasked G_IO_HUP or G_IO_ERR.
  using Action = std::function<void(unsigned ready)>;

  // Watches a descriptor as long as it lives, which may end in its own action.
  class Watch {
   public:
    Watch() = default;
    // kIn, kOut, both or 0.
    void Want(unsigned conditions);

   private:
    friend class EventLoop;
    explicit Watch(GSource* source) : source_(source) {}
    SourcePtr source_;
  };

  // Waits for a child's exit as long as it lives.
  class ExitWatch {
   public:
    ExitWatch() = default;

   private:
    friend class EventLoop;
    explicit ExitWatch(GSource* source) : source_(source) {}
    SourcePtr source_;
  };

  // Wants kIn at first. The loop must outlive the watch.
  [[nodiscard]] Watch OnReady(int fd, Action action);
  // Comes once, with the exit status, or 128 and the number of the signal that ended the child, which
  // is reaped then. The loop must outlive the watch.
  [[nodiscard]] ExitWatch OnExit(pid_t child, std::function<void(int status)> action);
  // These must outlive Run.
  void Add(Timed& timed) { timed_.push_back(&timed); }
  void BeforeEachWait(std::function<void()> action) { before_wait_.push_back(std::move(action)); }

  // Returns after an action has called Stop; throws what an action throws.
  void Run(const Clock& clock);
  // The same, but returns after `limit` too: false then.
  bool RunFor(const Clock& clock, Time limit);
  void Stop() { running_ = false; }
  // Has the loop ask for the deadlines again. May be called on any thread.
  void Wake() { g_main_context_wakeup(context_.get()); }

  // Where GLib's own work of this thread can be done too.
  [[nodiscard]] GMainContext* Context() const { return context_.get(); }

 private:
  struct ContextUnref {
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
  };
  struct FdSource;
  struct ExitAction;

  static gboolean DispatchFd(GSource* source, GSourceFunc callback, gpointer action);
  static void DispatchExit(GPid child, gint wait_status, gpointer action);
  static gboolean DispatchTimer(GSource* source, GSourceFunc callback, gpointer loop);
  void Guard(const std::function<void()>& action);
  [[nodiscard]] gint64 ReadyTime(const Clock& clock) const;
  void ServeTimed(Time now);
  void RunUntilStopped(const Clock& clock);

  std::unique_ptr<GMainContext, ContextUnref> context_;
  SourcePtr timer_;
  std::vector<std::function<void()>> before_wait_;
  std::vector<Timed*> timed_;
  const Clock* clock_ = nullptr;
  std::optional<Time> ends_at_;
  std::exception_ptr failure_;
  bool running_ = false;
};

}  // namespace gwq::terminal
