// SPDX-License-Identifier: MIT
// Cancelling from a second thread: the canceller's own exchange comes after the cancelled one has
// closed its link.
#include <atomic>
#include <optional>
#include <thread>

#include <gwq/screens/evaluation.h>
#include <gwq/screens/terminal_control.h>
#include "support/fake_tty.h"
#include "support/turns.h"
#include "unit/screens/screens_rig.h"

namespace gwq::test {
namespace {

using testing::AnyOf;

int CancelRating() {
  return MP_CancleEvaluate(nullptr, nullptr, 9600);
}

int CancelOperation() {
  return MP_CancelCurrentOperation(nullptr, nullptr, 9600, 0);
}

class CancelThreads : public FilesRig {
 protected:
  ~CancelThreads() override { Join(); }

  int Rate(int timeout) { return MP_StartEvaluate(nullptr, nullptr, 9600, timeout, &value_); }

  // Runs in a second thread; once only.
  void Start(int (*cancel)()) {
    if (canceller_.joinable()) return;
    canceller_ = std::thread([this, cancel] {
      cancel_result_ = cancel();
      returned_ = true;
    });
  }
  // From the first read of the rating on, with some real time for the canceller in each read.
  void StartWhileRatingWaits(int (*cancel)()) {
    usb_.OnTransfer([this, cancel](const Transfer& transfer) {
      if (!transfer.in || transfer.index < kDrainReads) return;
      Start(cancel);
      ReallySleepMs(1);
    });
  }
  int Join() {
    if (canceller_.joinable()) canceller_.join();
    return cancel_result_;
  }

  // The commands that went out, in order.
  [[nodiscard]] std::vector<std::string> Commands() const {
    std::vector<std::string> commands;
    const std::string sent = TextOf(usb_.Sent());
    for (std::size_t at = 0; at < sent.size(); at += kReportBytes) commands.emplace_back(sent.c_str() + at);
    return commands;
  }

  char value_ = 'x';
  std::atomic<bool> returned_ = false;

 private:
  std::thread canceller_;
  std::atomic<int> cancel_result_ = 1;
};

TEST_F(CancelThreads, WaitingRatingEndsAndTheDrainFollowsOnceItsLinkIsClosed) {
  StartWhileRatingWaits(&CancelRating);
  EXPECT_EQ(Rate(999), -23);
  EXPECT_EQ(Join(), 0);
  EXPECT_EQ(value_, 'x');
  EXPECT_TRUE(TakesTurns(usb_.Calls()));
  EXPECT_THAT(Commands(), testing::ElementsAre("\x1B[4;999T", wire::kStartRating, wire::kCloseEvaluation));
  EXPECT_EQ(usb_.Count("list"), 5) << "drain, time-out, rating, close, and the canceller's drain";
}

TEST_F(CancelThreads, WaitingRatingEndsAndTheProgramIsClosedOnceItsLinkIs) {
  usb_.OnTransfer([this](const Transfer& transfer) {
    if (!transfer.in && transfer.index == 2) usb_.Answer(wire::kDone);
    if (!transfer.in || transfer.index < kDrainReads) return;
    Start(&CancelOperation);
    ReallySleepMs(1);
  });
  EXPECT_EQ(Rate(999), -23);
  EXPECT_EQ(Join(), 0);
  EXPECT_TRUE(TakesTurns(usb_.Calls()));
  const auto commands = Commands();
  ASSERT_EQ(commands.size(), 4U);
  EXPECT_EQ(commands[1], wire::kStartRating);
  EXPECT_THAT(std::vector(commands.begin() + 2, commands.end()),
              testing::UnorderedElementsAre(wire::kCloseEvaluation, wire::kCloseProgram));
}

TEST_F(CancelThreads, CancellerWaitsAsLongAsTheLinkIsOpen) {
  for (int (*const cancel)() : {&CancelRating, &CancelOperation}) {
    ScriptedUsb usb;
    usb.PlugTerminal();
    returned_ = false;
    usb.OnTransfer([&](const Transfer& transfer) {
      if (!transfer.in || transfer.index != kDrainReads) return;
      Start(cancel);
      ReallySleepMs(50);
      EXPECT_FALSE(returned_);
      EXPECT_EQ(usb.Count("list"), 3) << "the canceller has opened nothing";
      EXPECT_EQ(usb.Count("out"), 2) << "and sent nothing";
    });
    Rate(999);
    Join();
    EXPECT_TRUE(TakesTurns(usb.Calls()));
    EXPECT_EQ(usb.Count("close"), usb.Count("open"));
  }
}

// A moment of a rating.
struct Moment {
  bool in;
  int index;
};

std::string NameOf(const Moment& moment) {
  return (moment.in ? "In" : "Out") + std::to_string(moment.index);
}

class CancelAtMoment : public CancelThreads, public testing::WithParamInterface<Moment> {
 protected:
  // The engine has the request once the link's line about it is in the log.
  [[nodiscard]] bool Requested() const {
    return std::ranges::any_of(log_.Messages(), [](const std::string& message) {
      return message.starts_with("[ICC_CancelLinuxHidRead]");
    });
  }

  LogCapture log_;
};

TEST_P(CancelAtMoment, EndsTheWholeCall) {
  usb_.OnTransfer([this](const Transfer& transfer) {
    if (transfer.in != GetParam().in || transfer.index != GetParam().index) return;
    Start(&CancelRating);
    EXPECT_TRUE(Eventually([this] { return Requested(); }));
    ReallySleepMs(10);
    EXPECT_FALSE(returned_) << "the link is open";
  });
  EXPECT_THAT(Rate(999), AnyOf(-10, -14, -23));
  EXPECT_EQ(Join(), 0);
  EXPECT_LT(Elapsed(), 10) << "not by its time-out";
  EXPECT_TRUE(TakesTurns(usb_.Calls()));
}

INSTANTIATE_TEST_SUITE_P(OfARating, CancelAtMoment,
                         testing::Values(Moment{true, 0}, Moment{true, 4},    // of the drain
                                         Moment{false, 0}, Moment{false, 1},  // while a command goes out
                                         Moment{true, 5}, Moment{true, 10}));

TEST_F(CancelThreads, RatingOnASerialPortEndsAndUsbIsDrained) {
  FakeTty tty("/dev/ttyS41");
  tty.OnRead([this](int) {
    Start(&CancelRating);
    ReallySleepMs(1);
  });
  unsigned rating = 77;
  EXPECT_EQ(GWQ_StartEvaluator(42, 9600, "Li", "0123", 5, nullptr, 999, &rating), -11);
  EXPECT_EQ(Join(), 0);
  EXPECT_EQ(rating, 77U);
  EXPECT_LT(Elapsed(), 999) << "not by its time-out";
  EXPECT_EQ(usb_.Count("list"), 1);
}

TEST_F(CancelThreads, CancelsAtAnyMomentDoNoHarm) {
  constexpr int kRounds = 100;
  std::atomic<bool> stop = false;
  std::thread canceller([&stop] {
    while (!stop) {
      EXPECT_EQ(CancelRating(), 0);
      EXPECT_THAT(CancelOperation(), AnyOf(-10, -11, -23));
    }
  });
  for (int i = 0; i < kRounds; ++i) {
    EXPECT_THAT(Rate(1), AnyOf(-10, -11, -14, -23));
    EXPECT_EQ(value_, 'x');
  }
  stop = true;
  canceller.join();
  EXPECT_TRUE(TakesTurns(usb_.Calls()));
}

}  // namespace
}  // namespace gwq::test
