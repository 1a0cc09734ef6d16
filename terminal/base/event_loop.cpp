// SPDX-License-Identifier: MIT
#include "base/event_loop.h"

#include <sys/wait.h>

#include <algorithm>
#include <utility>

namespace gwq::terminal {
namespace {

gboolean Unused(gpointer) {
  return G_SOURCE_CONTINUE;
}

}  // namespace

struct EventLoop::FdSource {
  GSource base;
  EventLoop* loop;
  gpointer tag;
};

struct EventLoop::ExitAction {
  EventLoop* loop;
  std::function<void(int status)> action;
};

void EventLoop::SourceEnd::operator()(GSource* source) const {
  g_source_destroy(source);
  g_source_unref(source);
}

void EventLoop::Watch::Want(unsigned conditions) {
  g_source_modify_unix_fd(source_.get(), reinterpret_cast<FdSource*>(source_.get())->tag,
                          static_cast<GIOCondition>(conditions));
}

EventLoop::EventLoop() : context_(g_main_context_new()) {
  static GSourceFuncs s_timer = {nullptr, nullptr, DispatchTimer, nullptr, nullptr, nullptr};
  timer_.reset(g_source_new(&s_timer, sizeof(GSource)));
  g_source_set_callback(timer_.get(), Unused, this, nullptr);
  // Before the descriptors: what is due by now comes before what the host says now.
  g_source_set_priority(timer_.get(), G_PRIORITY_HIGH);
  g_source_attach(timer_.get(), context_.get());
}

EventLoop::~EventLoop() = default;

EventLoop::Watch EventLoop::OnReady(int fd, Action action) {
  static GSourceFuncs s_descriptor = {nullptr, nullptr, DispatchFd, nullptr, nullptr, nullptr};
  Watch watch(g_source_new(&s_descriptor, sizeof(FdSource)));
  GSource* source = watch.source_.get();
  auto* descriptor = reinterpret_cast<FdSource*>(source);
  descriptor->loop = this;
  descriptor->tag = g_source_add_unix_fd(source, fd, G_IO_IN);
  auto owned = std::make_unique<Action>(std::move(action));
  g_source_set_callback(source, Unused, owned.release(),
                        [](gpointer data) { delete static_cast<Action*>(data); });
  g_source_attach(source, context_.get());
  return watch;
}

EventLoop::ExitWatch EventLoop::OnExit(pid_t child, std::function<void(int status)> action) {
  ExitWatch watch(g_child_watch_source_new(child));
  auto owned = std::make_unique<ExitAction>(ExitAction{this, std::move(action)});
  g_source_set_callback(watch.source_.get(), G_SOURCE_FUNC(DispatchExit), owned.release(),
                        [](gpointer data) { delete static_cast<ExitAction*>(data); });
  g_source_attach(watch.source_.get(), context_.get());
  return watch;
}

void EventLoop::DispatchExit(GPid, gint wait_status, gpointer action) {
  const auto* exit = static_cast<ExitAction*>(action);
  const int status = WIFSIGNALED(wait_status) ? 128 + WTERMSIG(wait_status) : WEXITSTATUS(wait_status);
  exit->loop->Guard([&] { exit->action(status); });
}

// Nothing may be thrown through GLib.
void EventLoop::Guard(const std::function<void()>& action) {
  try {
    if (running_) action();
  } catch (...) {
    failure_ = std::current_exception();
    running_ = false;
  }
}

gboolean EventLoop::DispatchFd(GSource* source, GSourceFunc, gpointer action) {
  auto* descriptor = reinterpret_cast<FdSource*>(source);
  const unsigned ready = g_source_query_unix_fd(source, descriptor->tag);
  descriptor->loop->Guard([&] { (*static_cast<Action*>(action))(ready); });
  return G_SOURCE_CONTINUE;
}

gboolean EventLoop::DispatchTimer(GSource*, GSourceFunc, gpointer loop) {
  auto* self = static_cast<EventLoop*>(loop);
  self->Guard([self] { self->ServeTimed(self->clock_->Now()); });
  return G_SOURCE_CONTINUE;
}

// When the nearest deadline is, by GLib's clock; -1 when there is none.
gint64 EventLoop::ReadyTime(const Clock& clock) const {
  std::optional<Time> nearest = ends_at_;
  for (Timed* timed : timed_) {
    const std::optional<Time> deadline = timed->NextDeadline();
    if (deadline && (!nearest || *deadline < *nearest)) nearest = deadline;
  }
  if (!nearest) return -1;
  const std::chrono::microseconds left = std::max(*nearest - clock.Now(), Time{0});
  return g_get_monotonic_time() + left.count();
}

void EventLoop::ServeTimed(Time now) {
  for (Timed* timed : timed_) {
    const std::optional<Time> deadline = timed->NextDeadline();
    if (deadline && *deadline <= now) timed->Advance(now);
  }
  if (!ends_at_ || *ends_at_ > now) return;
  ends_at_.reset();
  Stop();
}

void EventLoop::Run(const Clock& clock) {
  ends_at_.reset();
  RunUntilStopped(clock);
}

bool EventLoop::RunFor(const Clock& clock, Time limit) {
  ends_at_ = clock.Now() + limit;
  RunUntilStopped(clock);
  return ends_at_.has_value();
}

void EventLoop::RunUntilStopped(const Clock& clock) {
  clock_ = &clock;
  running_ = true;
  while (running_) {
    for (const auto& action : before_wait_) action();
    if (!running_) break;
    g_source_set_ready_time(timer_.get(), ReadyTime(clock));
    g_main_context_iteration(context_.get(), TRUE);
  }
  if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

}  // namespace gwq::terminal
