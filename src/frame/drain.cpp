// SPDX-License-Identifier: MIT
// The drain, and how long it listens.
#include <atomic>

#include <gwq/extra.h>
#include <gwq/frame/port.h>
#include "diag/internal/failure.h"
#include "frame/internal/arguments.h"
#include "frame/internal/ask.h"
#include "frame/internal/dispatcher.h"

namespace gwq {
namespace {

constexpr int kUntilNextSecond = 0;
constexpr int kLongestDrainMs = 1000;
constinit std::atomic<int> g_drain_ms{kUntilNextSecond};

constexpr AnswerEnd kDrainEnd{.predicate = &EndOfRead3, .timeout_ms = 100};

// Throws away what arrives. Silence has the status of a read that timed out, also if bytes came
// before it.
class SilenceReceiver final : public Receiver {
 public:
  explicit SilenceReceiver(int ms) : ms_(ms) {}

  int Receive(const ExchangeTurn& turn) override {
    AllowThreadCancel();
    const bool cancelled = DrainLink(ms_) == GWQ_LINK_CANCELLED;
    return cancelled && !turn.Lost() ? GWQ_CANCELLED : GWQ_READ_FAILED;
  }

 private:
  int ms_;
};

int ListenUntilSilence(Endpoint endpoint) {
  const int silence_ms = g_drain_ms.load(std::memory_order_relaxed);
  if (silence_ms != kUntilNextSecond) {
    SilenceReceiver receiver(silence_ms);
    return RunExchange(kListen, endpoint, {}, kDrainEnd, &receiver);
  }
  AnswerText<1024> scratch;
  return Exchange(kListen, endpoint, {}, kDrainEnd, {scratch.data(), scratch.length()});
}

}  // namespace

int Drain(Endpoint endpoint) {
  const int result = ListenUntilSilence(endpoint);
  if (result != GWQ_NOT_OPENED) ForgetFailure();  // silence is what a drain waits for
  return result;
}

}  // namespace gwq

using namespace gwq;

int GWQ_SetDrainMs(int ms) {
  if (!Within(ms, kUntilNextSecond, kLongestDrainMs)) return GWQ_BAD_ARGUMENT;
  g_drain_ms.store(ms, std::memory_order_relaxed);
  return GWQ_OK;
}
