#include "frame/internal/turn.h"

#include <pthread.h>

#include <cstdint>
#include <ctime>
#include <limits>

#include <gwq/frame/port.h>
#include "frame/internal/cancel.h"
#include "links/internal/lifetime.h"

namespace gwq {

// Stands on the stack while a predicate runs. Where the host's code has left it by a throw or a jump, what the thread
// calls afterwards overwrites it, unless that stays above it on the stack.
struct PredicateMark {
  explicit PredicateMark(unsigned generation) : value(ValueFor(generation)) {}
  ~PredicateMark() { value = 0; }
  PredicateMark(const PredicateMark&) = delete;
  PredicateMark& operator=(const PredicateMark&) = delete;

  static std::uint64_t ValueFor(unsigned generation) { return 0x9E37'79B9'7F4A'7C15U * (generation + 1ULL); }

  // Looks at memory that may be another function's by now.
  __attribute__((no_sanitize("address"))) bool StandsAbove(const void* caller, unsigned generation) const {
    return caller < this && value == ValueFor(generation);
  }

  volatile std::uint64_t value;
};

namespace {

constexpr int kCancelIntervalMs = 50;
constexpr int kLongestPredicateMs = 1000;
constexpr std::int64_t kForever = std::numeric_limits<std::int64_t>::max();
constexpr unsigned kNone = 0;

thread_local bool t_cancels_while_waiting = false;
thread_local int t_hosts_cancel_state = PTHREAD_CANCEL_ENABLE;  // while this thread exchanges

std::int64_t MonotonicMs() {
  std::timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

int LinkOf(int port) {
  constexpr int kUsb = 0;
  return port > 0 ? port : kUsb;
}

// Not a std::mutex, which would bring the C++ runtime's exceptions into the library.
constinit pthread_mutex_t g_mutex = PTHREAD_MUTEX_INITIALIZER;
constinit pthread_cond_t g_given_back = PTHREAD_COND_INITIALIZER;
constinit pthread_once_t g_prepared = PTHREAD_ONCE_INIT;
pthread_key_t g_thread_exit;

class Locked {
 public:
  Locked() { pthread_mutex_lock(&g_mutex); }
  ~Locked() { pthread_mutex_unlock(&g_mutex); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;
};

// Who has the turn, under g_mutex.
struct Turn {
  bool taken = false;
  pthread_t owner{};
  unsigned generation = kNone;  // tells one taking from the next
  const void* frame = nullptr;  // of the exchange
  int link = 0;
  bool link_open = false;
  const PredicateMark* predicate = nullptr;  // while the host's code runs
  std::int64_t predicate_since_ms = 0;

  [[nodiscard]] bool IsMine() const { return taken && pthread_equal(owner, pthread_self()) != 0; }
  [[nodiscard]] bool IsMine(unsigned taking) const { return taking == generation && IsMine(); }

  // Whether the exchange that `caller` begins lies within the one that has the turn.
  [[nodiscard]] bool Surrounds(int port, const void* caller) const {
    if (!IsMine() || !link_open || link != LinkOf(port)) return false;
    return predicate == nullptr ? caller < frame : predicate->StandsAbove(caller, generation);
  }

  [[nodiscard]] bool IsFree() const {
    if (!taken || IsMine()) return true;
    return predicate != nullptr && MonotonicMs() - predicate_since_ms > kLongestPredicateMs;
  }

  void SetPredicate(const PredicateMark* mark) {
    predicate = mark;
    predicate_since_ms = MonotonicMs();
  }

  // Returns whether an abandoned exchange has left its link open.
  bool Take(int port, const void* caller) {
    const bool left_open = taken && link_open;
    *this = {.taken = true,
             .owner = pthread_self(),
             .generation = generation + 1 == kNone ? kNone + 1 : generation + 1,
             .frame = caller,
             .link = LinkOf(port)};
    pthread_setspecific(g_thread_exit, this);
    return left_open;
  }

  void GiveBack() {
    taken = false;
    pthread_setspecific(g_thread_exit, nullptr);
    pthread_cond_broadcast(&g_given_back);
  }
};
constinit Turn g_turn;

// The turn stays taken until the link is closed.
void OnThreadExit(void* /*turn*/) {
  bool open = false;
  {
    const Locked lock;
    if (!g_turn.IsMine()) return;
    open = g_turn.link_open;
  }
  if (open) ICC_CloseTransPort();
  const Locked lock;
  g_turn.GiveBack();
}

void UseMonotonicClock() {
  pthread_condattr_t attributes;
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  pthread_cond_init(&g_given_back, &attributes);
  pthread_condattr_destroy(&attributes);
}

// The thread that forks is the only one in the child: what another one was doing is the parent's.
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
  const std::int64_t next_look = MonotonicMs() + kCancelIntervalMs;
  const std::int64_t until = deadline_ms < next_look ? deadline_ms : next_look;
  const std::timespec at{.tv_sec = static_cast<std::time_t>(until / 1000),
                         .tv_nsec = static_cast<long>(until % 1000 * 1'000'000)};
  const Locked lock;
  if (!g_turn.IsFree()) pthread_cond_timedwait(&g_given_back, &g_mutex, &at);
}

enum class Outcome { kTaken, kLinkLeftOpen, kNested, kBusy };

struct Attempt {
  Outcome outcome;
  unsigned generation;
  const PredicateMark* predicate;  // around a nested exchange
};

Attempt TryToTake(int port, const void* caller) {
  const Locked lock;
  if (g_turn.Surrounds(port, caller)) {
    const PredicateMark* const predicate = g_turn.predicate;
    g_turn.SetPredicate(nullptr);
    return {Outcome::kNested, g_turn.generation, predicate};
  }
  if (!g_turn.IsFree()) return {Outcome::kBusy, kNone, nullptr};
  const bool left_open = g_turn.Take(port, caller);
  return {left_open ? Outcome::kLinkLeftOpen : Outcome::kTaken, g_turn.generation, nullptr};
}

Attempt Take(int port, const void* caller, std::int64_t deadline_ms) {
  pthread_once(&g_prepared, &Prepare);
  while (true) {
    const Attempt attempt = TryToTake(port, caller);
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

// False when the turn is lost.
bool SetPredicate(unsigned generation, const PredicateMark* mark) {
  const Locked lock;
  if (!g_turn.IsMine(generation)) return false;
  g_turn.SetPredicate(mark);
  return true;
}

int Ask(GwqEndOfRead predicate, unsigned char* data, int count) {
  constexpr int kReadOn = 1;
  return predicate == nullptr ? kReadOn : predicate(data, count);
}

}  // namespace

ExchangeTurn::ExchangeTurn(int port) {
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &hosts_cancel_state_);
  const Attempt attempt = Take(port, __builtin_frame_address(0), kForever);
  t_hosts_cancel_state = hosts_cancel_state_;
  generation_ = attempt.generation;
  nested_ = attempt.outcome == Outcome::kNested;
  outer_predicate_ = attempt.predicate;
  ForgetReadCancel();
}

ExchangeTurn::~ExchangeTurn() {
  {
    const Locked lock;
    if (g_turn.IsMine(generation_)) {
      if (nested_) {
        g_turn.SetPredicate(outer_predicate_);
      } else {
        g_turn.GiveBack();
      }
    }
  }
  pthread_setcancelstate(hosts_cancel_state_, nullptr);
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
  pthread_setcancelstate(t_hosts_cancel_state, nullptr);
  pthread_testcancel();
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
}

bool ExchangeCancelled() {
  return GenerationOfThisThread() != kNone && ReadCancelRequested();
}

int AskPredicate(GwqEndOfRead predicate, unsigned char* data, int count) {
  constexpr int kComplete = 0;
  const unsigned generation = GenerationOfThisThread();
  if (generation == kNone) return Ask(predicate, data, count);
  const PredicateMark mark(generation);
  const int hosts_cancel_state = t_hosts_cancel_state;
  SetPredicate(generation, &mark);
  pthread_setcancelstate(hosts_cancel_state, nullptr);
  pthread_testcancel();
  const int answer = Ask(predicate, data, count);
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
  t_hosts_cancel_state = hosts_cancel_state;
  return SetPredicate(generation, nullptr) ? answer : kComplete;
}

CancelsWhileWaiting::CancelsWhileWaiting() {
  t_cancels_while_waiting = true;
}

CancelsWhileWaiting::~CancelsWhileWaiting() {
  t_cancels_while_waiting = false;
}

bool TakeTurnForGood(int longest_wait_ms) {
  if (GenerationOfThisThread() != kNone) return false;
  const CancelsWhileWaiting cancels;
  const Attempt attempt = Take(0, __builtin_frame_address(0), MonotonicMs() + std::int64_t{longest_wait_ms});
  if (attempt.outcome == Outcome::kBusy) return false;
  pthread_key_delete(g_thread_exit);  // its destructor goes with the library
  return true;
}

}  // namespace gwq
