// SPDX-License-Identifier: MIT
// What happens to the turn when a thread leaves an exchange by a way of its own, and to exchanges
// within exchanges.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csetjmp>
#include <stdexcept>
#include <thread>

#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include "support/fake_tty.h"
#include "support/guarded_buffer.h"
#include "support/scripted_usb.h"
#include "support/test_clock.h"
#include "support/turns.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;

int Exchange(GwqEndOfRead end = &EndOfRead2, int port = 0) {
  char command[] = "cmd";
  std::array<char, 64 + 1024> answer{};
  int length = 64;
  return TransProcByEnd(port, 9600, command, 3, answer.data(), &length, end, 999'000);
}

class EngineTurn : public testing::Test {
 protected:
  EngineTurn() {
    SetTime(1'700'000'000);
    usb_.PlugTerminal();
    s_test = this;
  }
  ~EngineTurn() override { s_test = nullptr; }

  // Every transfer takes some real time, so that a wait of many transfers is one.
  void TransfersTakeTime() {
    usb_.OnTransfer([this](const Transfer& transfer) {
      if (transfer.in && transfer.index > 2) waiting_ = true;
      ReallySleepMs(1);
    });
  }

  void ExpectNextExchangeWorks() {
    usb_.OnTransfer({});
    usb_.Answer("\x03");
    EXPECT_EQ(Exchange(), 0);
    EXPECT_TRUE(TakesTurns(usb_.Calls()));
  }

  static inline EngineTurn* s_test = nullptr;

  ScriptedUsb usb_;
  std::atomic<bool> waiting_ = false;
};

// ------------------------------------------------------------------ threads that end

#ifdef GWQ_TEST_HAS_ASAN
// A cancelled thread leaves its frames without AddressSanitizer's knowledge, which takes what runs
// on its stack afterwards for overflows. Destructors run in the order of their keys, and this one
// comes before the library's.
void ForgetFrames(void* /*none*/) {
  pthread_attr_t attributes;
  void* lowest = nullptr;
  std::size_t size = 0;
  pthread_getattr_np(pthread_self(), &attributes);
  pthread_attr_getstack(&attributes, &lowest, &size);
  pthread_attr_destroy(&attributes);
  ASAN_UNPOISON_MEMORY_REGION(lowest, size);
}

const pthread_key_t kFrames = [] {
  pthread_key_t key{};
  pthread_key_create(&key, &ForgetFrames);
  return key;
}();
#endif

void* ExchangeInThread(void* end) {
#ifdef GWQ_TEST_HAS_ASAN
  pthread_setspecific(kFrames, &kFrames);
#endif
  Exchange(reinterpret_cast<GwqEndOfRead>(end));
  return nullptr;
}

void* ThreadArgument(GwqEndOfRead end) {
  return reinterpret_cast<void*>(end);
}

TEST_F(EngineTurn, CancelledThreadEndsSoonAndGivesItBack) {
  TransfersTakeTime();
  pthread_t thread{};
  ASSERT_EQ(pthread_create(&thread, nullptr, &ExchangeInThread, ThreadArgument(&EndOfRead2)), 0);
  ASSERT_TRUE(Eventually(waiting_));
  ASSERT_EQ(pthread_cancel(thread), 0);
  void* result = nullptr;
  pthread_join(thread, &result);
  EXPECT_EQ(result, PTHREAD_CANCELED);
  EXPECT_LT(usb_.Count("in"), 4000) << "not by its time-out";
  EXPECT_EQ(usb_.Count("close"), 1);
  ExpectNextExchangeWorks();
}

TEST_F(EngineTurn, ThreadThatForbidsItsCancelIsNotCancelled) {
  TransfersTakeTime();
  const auto exchange = [](void* /*none*/) -> void* {
    static int s_status = 1;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    s_status = Exchange();
    return &s_status;
  };
  pthread_t thread{};
  ASSERT_EQ(pthread_create(&thread, nullptr, exchange, nullptr), 0);
  ASSERT_TRUE(Eventually(waiting_));
  ASSERT_EQ(pthread_cancel(thread), 0);
  ReallySleepMs(20);
  usb_.Answer("\x03");
  void* result = nullptr;
  pthread_join(thread, &result);
  ASSERT_NE(result, PTHREAD_CANCELED);
  EXPECT_EQ(*static_cast<int*>(result), 0);
}

int EndsItsThread(unsigned char* /*data*/, int /*count*/) {
  pthread_exit(nullptr);
}

TEST_F(EngineTurn, ThreadThatEndsInItsPredicateGivesItBack) {
  pthread_t thread{};
  ASSERT_EQ(pthread_create(&thread, nullptr, &ExchangeInThread, ThreadArgument(&EndsItsThread)), 0);
  pthread_join(thread, nullptr);
  EXPECT_EQ(usb_.Count("close"), 1);
  ExpectNextExchangeWorks();
}

TEST_F(EngineTurn, ExchangeLeavesTheThreadsCancelStateAsItWas) {
  usb_.Answer("\x03");
  EXPECT_EQ(Exchange(), 0);
  int state = -1;
  pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &state);
  EXPECT_EQ(state, PTHREAD_CANCEL_ENABLE);
}

// ------------------------------------------------------------------ predicates that do not return

int Throws(unsigned char* /*data*/, int /*count*/) {
  throw std::runtime_error("from the host");
}

std::jmp_buf s_out;

int Jumps(unsigned char* /*data*/, int /*count*/) {
  std::longjmp(s_out, 1);  // NOLINT(cert-err52-cpp): hosts in C do so
}

void JumpOut() {
  if (setjmp(s_out) == 0) Exchange(&Jumps);  // NOLINT(cert-err52-cpp)
}

// A frame between this thread's exchange and its caller.
[[gnu::noinline]] int ExchangeFurtherDown() {
  volatile char room[4096] = {};
  room[0] = 'x';
  return Exchange() + (room[0] == 'x' ? 0 : 1);
}

TEST_F(EngineTurn, PredicateThatThrowsLeavesItToTheNextExchange) {
  EXPECT_THROW(Exchange(&Throws), std::runtime_error);
  ExpectNextExchangeWorks();
}

TEST_F(EngineTurn, PredicateThatJumpsLeavesItToTheNextExchange) {
  JumpOut();
  ExpectNextExchangeWorks();
}

TEST_F(EngineTurn, ExchangeFurtherDownTheStackWorksAfterAJump) {
  JumpOut();
  usb_.Answer("\x03");
  EXPECT_EQ(ExchangeFurtherDown(), 0);
  ExpectNextExchangeWorks();
}

TEST_F(EngineTurn, AnotherThreadTakesItFromAPredicateThatIsGone) {
  JumpOut();
  usb_.Answer("\x03");
  const auto start = std::chrono::steady_clock::now();
  int status = 1;
  std::thread([&status] { status = Exchange(); }).join();
  EXPECT_EQ(status, 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
  EXPECT_TRUE(TakesTurns(usb_.Calls()));
  ExpectNextExchangeWorks();
}

// Stays away longer than others wait for it, and comes back.
int StaysAway(unsigned char* /*data*/, int /*count*/) {
  ReallySleepMs(2500);
  return 0;
}

TEST_F(EngineTurn, ExchangeWhosePredicateStaysAwayFailsWhenAnotherThreadHasGoneOn) {
  usb_.Answer("x").Answer("\x03");
  int away = 1;
  std::thread thread([&away] { away = Exchange(&StaysAway); });
  ASSERT_TRUE(Eventually([this] { return usb_.Count("in") == 1; }));
  EXPECT_EQ(Exchange(), 0);
  thread.join();
  EXPECT_EQ(away, -11);
  EXPECT_TRUE(TakesTurns(usb_.Calls()));
  EXPECT_EQ(usb_.Count("close"), 2);
}

TEST_F(EngineTurn, PredicateMayTakeItsTimeWhenNobodyWaits) {
  usb_.Answer("x");
  EXPECT_EQ(Exchange(&StaysAway), 0);
}

// ------------------------------------------------------------------ exchanges of predicates

int s_inner_status = 1;

int Asks(unsigned char* data, int count) {
  if (s_inner_status == 1 && count == 1) {
    s_inner_status = 2;
    s_inner_status = Exchange(&EndOfConditionD);
  }
  return EndOfRead2(data, count);
}

TEST_F(EngineTurn, ExchangeOfAPredicateGoesOnOverTheOpenLink) {
  s_inner_status = 1;
  usb_.Answer("a").Answer("b\r").Answer("c\x03");
  EXPECT_EQ(Exchange(&Asks), 0);
  EXPECT_EQ(s_inner_status, 0);
  EXPECT_EQ(usb_.Count("open"), 1);
  EXPECT_EQ(usb_.Count("out"), 2);
  EXPECT_EQ(usb_.Count("close"), 1);
  ExpectNextExchangeWorks();
}

TEST_F(EngineTurn, OuterReadCanBeCancelledAfterTheInnerOne) {
  s_inner_status = 1;
  usb_.Answer("a").Answer("b\r");
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.in && transfer.index == 5) CancelRead();
  });
  EXPECT_EQ(Exchange(&Asks), -23);
  EXPECT_EQ(s_inner_status, 0);
}

int s_serial_status = 1;

int AsksOnSerial(unsigned char* /*data*/, int /*count*/) {
  s_serial_status = Exchange(&EndOfRead2, 42);
  return 1;
}

TEST_F(EngineTurn, ExchangeOfAPredicateOnAnotherPortEndsTheOuterOne) {
  FakeTty tty("/dev/ttyS41");
  tty.Respond([](const Bytes&) { return std::string("\x03"); });
  usb_.Answer("a");
  EXPECT_EQ(Exchange(&AsksOnSerial), -11);
  EXPECT_EQ(s_serial_status, 0);
  EXPECT_EQ(usb_.Count("close"), 1);
  ExpectNextExchangeWorks();
}

// ------------------------------------------------------------------ fork

// ThreadSanitizer ends a child of a process with threads.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define GWQ_TEST_NO_FORK
#endif
#endif

#ifndef GWQ_TEST_NO_FORK
// Exit status 0 when the exchange works in the child, within some seconds.
int ExchangeInChild() {
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);
    _exit(Exchange(&EndOfCondition4) == 0 ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

TEST_F(EngineTurn, ChildOfAProcessWhoseOtherThreadExchangesStartsWithItFree) {
  std::atomic<bool> forked = false;
  const pid_t parent = getpid();
  usb_.OnTransfer([&](const Transfer& transfer) {
    if (!transfer.in) return;
    usb_.Answer("\x03");
    waiting_ = true;
    while (!forked && getpid() == parent) ReallySleepMs(1);
  });
  int status = 1;
  std::thread other([&status] { status = Exchange(); });
  ASSERT_TRUE(Eventually(waiting_));
  EXPECT_EQ(ExchangeInChild(), 0);
  forked = true;
  other.join();
  EXPECT_EQ(status, 0) << "the parent's exchange goes on";
}
#endif

}  // namespace
}  // namespace gwq::test
