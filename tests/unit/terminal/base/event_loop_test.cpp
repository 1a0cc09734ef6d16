// SPDX-License-Identifier: MIT
// The loop with real descriptors; its deadlines have passed, or come within milliseconds.
#include "base/event_loop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>
#include <thread>

#include "base/errors.h"
#include "base/unique_fd.h"

namespace gwq::terminal::test {
namespace {

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    Checked(pipe(ends.data()), "pipe");
    out.Reset(ends[0]);
    in.Reset(ends[1]);
  }
  void Write() const { EXPECT_EQ(write(in.Get(), "x", 1), 1); }
  void Read() const {
    char byte = 0;
    EXPECT_EQ(read(out.Get(), &byte, 1), 1);
  }
  UniqueFd out;
  UniqueFd in;
};

// Due at once until it has been told so often.
class Due final : public Timed {
 public:
  Due(EventLoop& loop, int times, std::string& seen) : loop_(loop), left_(times), seen_(seen) {}
  std::optional<Time> NextDeadline() override { return left_ > 0 ? std::optional(at) : std::nullopt; }
  void Advance(Time now) override {
    EXPECT_GE(now, at);
    seen_ += 't';
    if (--left_ == 0 && stops) loop_.Stop();
  }
  Time at{0};
  bool stops = false;

 private:
  EventLoop& loop_;
  int left_;
  std::string& seen_;
};

class EventLoopTest : public testing::Test {
 protected:
  Clock clock_;
  EventLoop loop_;
  Pipe pipe_;
  std::string seen_;
};

TEST_F(EventLoopTest, TellsThatADescriptorCanBeRead) {
  const auto watch = loop_.OnReady(pipe_.out.Get(), [this](unsigned ready) {
    EXPECT_EQ(ready, EventLoop::kIn);
    pipe_.Read();
    loop_.Stop();
  });
  pipe_.Write();
  loop_.Run(clock_);
}

TEST_F(EventLoopTest, TellsOnlyWhatIsWanted) {
  auto watch = loop_.OnReady(pipe_.in.Get(), [this](unsigned ready) {
    seen_ += ready == EventLoop::kOut ? "w" : "?";
    loop_.Stop();
  });
  Due due(loop_, 1, seen_);
  due.stops = true;
  loop_.Add(due);
  loop_.Run(clock_);
  EXPECT_EQ(seen_, "t") << "a pipe that can be written";
  watch.Want(EventLoop::kOut);
  loop_.Run(clock_);
  EXPECT_EQ(seen_, "tw");
}

TEST_F(EventLoopTest, ServesWhatIsDueBeforeDescriptors) {
  const auto watch = loop_.OnReady(pipe_.out.Get(), [this](unsigned) {
    seen_ += 'r';
    loop_.Stop();
  });
  pipe_.Write();
  Due due(loop_, 2, seen_);
  loop_.Add(due);
  loop_.Run(clock_);
  EXPECT_EQ(seen_, "ttr");
}

TEST_F(EventLoopTest, WaitsForADeadline) {
  Due due(loop_, 1, seen_);
  due.at = clock_.Now() + Time{5};
  due.stops = true;
  loop_.Add(due);
  loop_.Run(clock_);
  EXPECT_EQ(seen_, "t");
}

TEST_F(EventLoopTest, AsksAgainForDeadlinesWhenAnotherThreadWakesIt) {
  int waits = 0;
  loop_.BeforeEachWait([&] {
    if (++waits == 2) loop_.Stop();
  });
  std::thread other([this] { loop_.Wake(); });
  loop_.Run(clock_);
  other.join();
  EXPECT_EQ(waits, 2);
}

TEST_F(EventLoopTest, RunsNoLongerThanItMay) {
  const Time begin = clock_.Now();
  EXPECT_FALSE(loop_.RunFor(clock_, Time{20}));
  EXPECT_GE(clock_.Now() - begin, Time{20});
  const auto watch = loop_.OnReady(pipe_.out.Get(), [this](unsigned) { loop_.Stop(); });
  pipe_.Write();
  EXPECT_TRUE(loop_.RunFor(clock_, Time{10'000}));
}

TEST_F(EventLoopTest, ThrowsWhatAnActionThrows) {
  const auto watch = loop_.OnReady(pipe_.out.Get(), [](unsigned) { throw std::runtime_error("gone"); });
  pipe_.Write();
  EXPECT_THROW(loop_.Run(clock_), std::runtime_error);
}

TEST_F(EventLoopTest, LetsAWatchEndInItsOwnAction) {
  std::string name = "a text that is too long for a string's own place";
  EventLoop::Watch watch;
  watch = loop_.OnReady(pipe_.out.Get(), [this, &watch, name](unsigned) {
    watch = {};
    seen_ += name;
    loop_.Stop();
  });
  pipe_.Write();
  loop_.Run(clock_);
  EXPECT_EQ(seen_, name);
}

}  // namespace
}  // namespace gwq::terminal::test
