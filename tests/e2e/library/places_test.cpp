// SPDX-License-Identifier: MIT
// Where the terminal is, who holds it, and what a call that does not get it failed of.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include <gwq/extra.h>
#include "e2e/library/library.h"
#include "usb_ids.h"

namespace gwq::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

void TellTerminal(int signal) {
  const char* pid = std::getenv("GWQ_TERMINAL_PID");  // NOLINT(concurrency-mt-unsafe)
  ASSERT_NE(nullptr, pid) << "not run under gwq-terminal";
  ASSERT_EQ(0, kill(std::atoi(pid), signal));
}

// Another process, which opens and claims the terminal and keeps it.
class Holder {
 public:
  Holder() {
    std::array<int, 2> ready{};
    EXPECT_EQ(pipe(ready.data()), 0);
    pid_ = fork();
    if (pid_ == 0) Hold(ready[1]);
    char done = 'n';
    EXPECT_EQ(read(ready[0], &done, 1), 1);
    EXPECT_EQ(done, 'y');
    close(ready[0]);
    close(ready[1]);
  }
  ~Holder() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;

  [[nodiscard]] int Pid() const { return pid_; }

 private:
  [[noreturn]] static void Hold(int ready) {
    const Library lib;
    const auto open = lib.Get<ICC_OpenLinuxHid>();
    const char done = open(kUsbIdentities[0].vid, kUsbIdentities[0].pid) == GWQ_OK ? 'y' : 'n';
    if (write(ready, &done, 1) == 1) pause();
    _exit(0);
  }

  pid_t pid_;
};

class Places : public testing::Test {
 public:
  [[nodiscard]] int Count() const { return find_(nullptr, 0); }
  [[nodiscard]] GwqTerminalPlace Place() const {
    GwqTerminalPlace place{};
    EXPECT_EQ(find_(&place, 1), 1);
    return place;
  }
  [[nodiscard]] GwqFailure Failure() const {
    GwqFailure failure{};
    EXPECT_EQ(get_(&failure), GWQ_OK);
    return failure;
  }

 protected:
  Library lib_;

 private:
  decltype(&GWQ_FindTerminals) find_ = lib_.Get<GWQ_FindTerminals>();
  decltype(&GWQ_GetFailure) get_ = lib_.Get<GWQ_GetFailure>();
};

TEST_F(Places, FreeTerminalIsFoundWhereItIsPluggedIn) {
  const GwqTerminalPlace place = Place();
  EXPECT_EQ(place.vendor, kUsbIdentities[0].vid);
  EXPECT_EQ(place.product, kUsbIdentities[0].pid);
  EXPECT_GT(place.bus, 0);
  EXPECT_GT(place.address, 0);
  EXPECT_THAT(place.port_path, StartsWith(std::to_string(place.bus) + "-"));
  EXPECT_EQ(place.may_open, 1);
  EXPECT_EQ(place.holder, 0);
}

TEST_F(Places, TerminalThatAnotherProcessHoldsIsToldWithItsNameAndSoIsTheFailure) {
  const GwqTerminalPlace free = Place();
  {
    const Holder holder;
    const GwqTerminalPlace place = Place();
    EXPECT_EQ(place.holder, holder.Pid());
    EXPECT_STREQ(place.holder_name, "e2e_library");
    EXPECT_EQ(lib_.set_pin_len(0, 9600, 6), GWQ_NOT_OPENED);
    const GwqFailure failure = Failure();
    EXPECT_STREQ(failure.function, "GWQ_SetPinLen");
    EXPECT_EQ(failure.step, GWQ_STEP_CLAIM);
    EXPECT_EQ(failure.holder, holder.Pid());
    EXPECT_EQ(failure.bus, free.bus);
    EXPECT_EQ(failure.address, free.address);
    EXPECT_STREQ(failure.port_path, free.port_path);
    EXPECT_THAT(failure.advice[0], HasSubstr("process " + std::to_string(holder.Pid()) + " (e2e_library)"));
  }
  EXPECT_EQ(lib_.set_pin_len(0, 9600, 6), GWQ_OK);
  EXPECT_EQ(Failure().status, GWQ_OK);
  EXPECT_EQ(Place().holder, 0);
}

TEST_F(Places, OwnCallIsTheHolderWhileItRuns) {
  std::array<char, 4096> answer{};
  int length = 2048;
  char command[] = "\x1B[0GETVERSION";
  static Places* test = nullptr;
  static int holder = 0;
  test = this;
  const auto look = [](unsigned char*, int) {
    holder = test->Place().holder;
    return 0;
  };
  EXPECT_EQ(lib_.trans_proc_by_end(0, 9600, command, 0, answer.data(), &length, look, 2000), GWQ_OK);
  EXPECT_EQ(holder, getpid());
}

TEST_F(Places, UnpluggedTerminalIsNotFoundUntilItIsBack) {
  TellTerminal(SIGUSR1);
  for (int i = 0; i < 100 && Count() != 0; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(Count(), 0);
  EXPECT_EQ(lib_.set_pin_len(0, 9600, 6), GWQ_NOT_OPENED);
  EXPECT_EQ(Failure().step, GWQ_STEP_FIND);
  EXPECT_THAT(Failure().advice[0], StartsWith("No terminal is plugged in"));
  TellTerminal(SIGUSR2);
  for (int i = 0; i < 100 && Count() == 0; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(Count(), 1);
}

}  // namespace
}  // namespace gwq::test
