// SPDX-License-Identifier: MIT
#include "frame/internal/turn.h"

#include <pthread.h>

#include <cstdint>
#include <ctime>
#include <limits>

#include <gwq/frame/port.h>
#include "diag/internal/monotonic.h"
#include "frame/internal/cancel.h"
#include "frame/internal/dispatcher.h"
#include "links/internal/lifetime.h"

namespace gwq {

// Lies on the stack while a predicate runs. If the host's code leaves the predicate by a throw or a
// jump, the thread's next calls overwrite the mark, unless they stay above it on the stack.
struct PredicateMark {
  explicit PredicateMark(unsigned generation) : value(ValueFor(generation)) {}
  ~PredicateMark() { value = 0; }
  PredicateMark(const PredicateMark&) = delete;
  PredicateMark& operator=(const PredicateMark&) = delete;

  static std::uint64_t ValueFor(unsigned generation) { return 0x9E37'79B9'7F4A'7C15U * (generation + 1ULL); }

  // Whether the caller's frame lies within the predicate. Reads memory that may belong to another
  // function by now.
  __attribute__((no_sanitize("address"))) bool Encloses(const void* caller, unsigned generation) const {
    return caller < this && value == ValueFor(generation);
  }

  volatile std::uint64_t value;
};

namespace {

constexpr int kCancelIntervalMs = 50;
constexpr int kMaxPredicateMs = 1000;
constexpr std::int64_t kForever = std::numeric_limits<std::int64_t>::max();
constexpr unsigned kNone = 0;

thread_local bool t_cancels_while_waiting = false;
thread_local int t_host_cancel_state = PTHREAD_CANCEL_ENABLE;  // while this thread exchanges

int LinkOf(int port) {
  constexpr int kUsb = 0;
  return port > 0 ? port : kUsb;
}

// pthread_mutex_t, because std::mutex would link the C++ runtime's exceptions into the library.
constinit pthread_mutex_t g_mutex = PTHREAD_MUTEX_INITIALIZER;
constinit pthread_cond_t g_released = PTHREAD_COND_INITIALIZER;
constinit pthread_once_t g_prepared = PTHREAD_ONCE_INIT;
pthread_key_t g_thread_exit;

class Locked {
 public:
  Locked() { pthread_mutex_lock(&g_mutex); }
  ~Locked() { pthread_mutex_unlock(&g_mutex); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;
};

// Who has the turn; guarded by g_mutex.
struct Turn {
  bool taken = false;
  pthread_t owner{};
  unsigned generation = kNone;  // a new number for each acquisition
  const void* frame = nullptr;  // the exchange's
  int link = 0;
  bool link_open = false;
  const PredicateMark* predicate = nullptr;  // set while the host's code runs
  std::int64_t predicate_since_ms = 0;

  [[nodiscard]] bool IsMine() const { return taken && pthread_equal(owner, pthread_self()) != 0; }
  [[nodiscard]] bool IsMine(unsigned acquisition) const { return acquisition == generation && IsMine(); }

  // Whether the exchange that `caller` begins is nested in the one that has the turn.
  [[nodiscard]] bool Encloses(int port, const void* caller) const {
    if (!IsMine() || !link_open || link != LinkOf(port)) return false;
    return predicate == nullptr ? caller < frame : predicate->Encloses(caller, generation);
  }

  [[nodiscard]] bool IsFree() const {
    if (!taken || IsMine()) return true;
    return predicate != nullptr && MonotonicMs() - predicate_since_ms > kMaxPredicateMs;
  }

  void SetPredicate(const PredicateMark* mark) {
    predicate = mark;
    predicate_since_ms = MonotonicMs();
  }

  // Returns whether the link of an abandoned exchange is still open.
  bool Acquire(int port, const void* caller) {
    const bool left_open = taken && link_open;
    *this = {.taken = true,
             .owner = pthread_self(),
             .generation = generation + 1 == kNone ? kNone + 1 : generation + 1,
             .frame = caller,
             .link = LinkOf(port)};
    pthread_setspecific(g_thread_exit, this);
    return left_open;
  }

  void Release() {
    taken = false;
    pthread_setspecific(g_thread_exit, nullptr);
    pthread_cond_broadcast(&g_released);
  }
};
constinit Turn g_turn;

// Keeps the turn until the link is closed.
void OnThreadExit(void* /*turn*/) {
  bool open = false;
  {
    const Locked lock;
    if (!g_turn.IsMine()) return;
    open = g_turn.link_open;
  }
  if (open) ICC_CloseTransPort();
  const Locked lock;
  g_turn.Release();
}

void UseMonotonicClock() {
  pthread_condattr_t attributes;
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  pthread_cond_init(&g_released, &attributes);
  pthread_condattr_destroy(&attributes);
}

// Only the forking thread exists in the child: an exchange of another thread remains the parent's.
void AfterForkInChild() {
  g_mutex = PTHREAD_MUTEX_INITIALIZER;
  UseMonotonicClock();
  const bool others = g_turn.taken && !g_turn.IsMine();
  if (others) g_turn.taken = false;
  ResetLinksAfterFork(others);
}

void Prepare() {
  UseMonotonicClock();
  pthread_key_create(&g_thread_exit, &OnThreadExit);
  pthread_atfork(nullptr, nullptr, &AfterForkInChild);
}

void WaitForChange(std::int64_t deadline_ms) {
  const std::int64_t next_check = MonotonicMs() + kCancelIntervalMs;
  const std::int64_t until = deadline_ms < next_check ? deadline_ms : next_check;
  const std::timespec at{.tv_sec = static_cast<std::time_t>(until / 1000),
                         .tv_nsec = static_cast<long>(until % 1000 * 1'000'000)};
  const Locked lock;
  if (!g_turn.IsFree()) pthread_cond_timedwait(&g_released, &g_mutex, &at);
}

enum class Outcome { kAcquired, kLinkLeftOpen, kNested, kBusy };

struct Attempt {
  Outcome outcome;
  unsigned generation;
  const PredicateMark* predicate;  // around a nested exchange
};

Attempt TryAcquire(int port, const void* caller) {
  const Locked lock;
  if (g_turn.Encloses(port, caller)) {
    const PredicateMark* const predicate = g_turn.predicate;
    g_turn.SetPredicate(nullptr);
    return {Outcome::kNested, g_turn.generation, predicate};
  }
  if (!g_turn.IsFree()) return {Outcome::kBusy, kNone, nullptr};
  const bool left_open = g_turn.Acquire(port, caller);
  return {left_open ? Outcome::kLinkLeftOpen : Outcome::kAcquired, g_turn.generation, nullptr};
}

Attempt Acquire(int port, const void* caller, std::int64_t deadline_ms) {
  pthread_once(&g_prepared, &Prepare);
  while (true) {
    const Attempt attempt = TryAcquire(port, caller);
    if (attempt.outcome == Outcome::kLinkLeftOpen) ICC_CloseTransPort();
    if (attempt.outcome != Outcome::kBusy || MonotonicMs() >= deadline_ms) return attempt;
    if (t_cancels_while_waiting) RepeatReadCancel();
    WaitForChange(deadline_ms);
  }
}

unsigned GenerationOfThisThread() {
  const Locked lock;
  return g_turn.IsMine() ? g_turn.generation : kNone;
}

// `mark` becomes the one before it. Returns false if the turn is lost.
bool SwapPredicate(unsigned generation, const PredicateMark*& mark) {
  const Locked lock;
  if (!g_turn.IsMine(generation)) return false;
  const PredicateMark* const before = g_turn.predicate;
  g_turn.SetPredicate(mark);
  mark = before;
  return true;
}

}  // namespace

ExchangeTurn::ExchangeTurn(int port) {
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &host_cancel_state_);
  const Attempt attempt = Acquire(port, __builtin_frame_address(0), kForever);
  t_host_cancel_state = host_cancel_state_;
  generation_ = attempt.generation;
  nested_ = attempt.outcome == Outcome::kNested;
  outer_predicate_ = attempt.predicate;
  ClearReadCancel();
}

ExchangeTurn::~ExchangeTurn() {
  {
    const Locked lock;
    if (g_turn.IsMine(generation_)) {
      if (nested_) {
        g_turn.SetPredicate(outer_predicate_);
      } else {
        g_turn.Release();
      }
    }
  }
  pthread_setcancelstate(host_cancel_state_, nullptr);
}

bool ExchangeTurn::Lost() const {
  const Locked lock;
  return !g_turn.IsMine(generation_);
}

void ExchangeTurn::SetLinkOpen(bool open) const {
  const Locked lock;
  if (g_turn.IsMine(generation_)) g_turn.link_open = open;
}

void AllowThreadCancel() {
  pthread_setcancelstate(t_host_cancel_state, nullptr);
  pthread_testcancel();
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
}

bool ExchangeCancelled() {
  return GenerationOfThisThread() != kNone && ReadCancelRequested();
}

bool CallHost(void (*code)(void* context), void* context) {
  const unsigned generation = GenerationOfThisThread();
  if (generation == kNone) {
    code(context);
    return true;
  }
  const PredicateMark mark(generation);
  const int host_cancel_state = t_host_cancel_state;
  const PredicateMark* outer = &mark;
  SwapPredicate(generation, outer);
  int cancel_state = PTHREAD_CANCEL_DISABLE;
  pthread_setcancelstate(host_cancel_state, &cancel_state);
  pthread_testcancel();
  code(context);
  pthread_setcancelstate(cancel_state, nullptr);
  t_host_cancel_state = host_cancel_state;
  return SwapPredicate(generation, outer);
}

int CallPredicate(GwqEndOfRead predicate, unsigned char* data, int count) {
  constexpr int kComplete = 0;
  constexpr int kReadOn = 1;
  struct Call {
    GwqEndOfRead predicate;
    unsigned char* data;
    int count;
    int result;
  } call{predicate, data, count, kReadOn};
  const auto run = [](void* context) {
    auto& asked = *static_cast<Call*>(context);
    if (asked.predicate != nullptr) asked.result = asked.predicate(asked.data, asked.count);
  };
  return CallHost(run, &call) ? call.result : kComplete;
}

CancelsWhileWaiting::CancelsWhileWaiting() {
  t_cancels_while_waiting = true;
}

CancelsWhileWaiting::~CancelsWhileWaiting() {
  t_cancels_while_waiting = false;
}

bool AcquireTurnForUnload(int max_wait_ms) {
  if (GenerationOfThisThread() != kNone) return false;
  const CancelsWhileWaiting cancels;
  const Attempt attempt = Acquire(0, __builtin_frame_address(0), MonotonicMs() + std::int64_t{max_wait_ms});
  if (attempt.outcome == Outcome::kBusy) return false;
  pthread_key_delete(g_thread_exit);  // its destructor is about to be unmapped
  return true;
}

}  // namespace gwq
