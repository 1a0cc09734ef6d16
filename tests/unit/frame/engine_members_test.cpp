// SPDX-License-Identifier: MIT
// What distinguishes the members of the exchange family.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include "support/fake_tty.h"
#include "support/guarded_buffer.h"
#include "support/log_capture.h"
#include "support/named.h"
#include "support/scripted_usb.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;

int UntilBang(unsigned char* data, int count) {
  return count > 0 && data[count - 1] == '!' ? 0 : 1;
}

struct Case {
  const char* name;
  int (*call)(int port, char* answer, int* length);
  const char* complete;    // an answer that its predicate accepts
  const char* incomplete;  // one that another member's would
  int read_failure;
};

constexpr char kCommand[] = "cmd";

char* Command() {
  static char s_command[sizeof kCommand];
  std::copy(std::begin(kCommand), std::end(kCommand), s_command);
  return s_command;
}

constexpr int kTimeoutMs = 1000;

const Case kReading[] = {
    {"TransProc",
     [](int port, char* answer, int* length) {
       return TransProc(port, 9600, Command(), 3, answer, length, kTimeoutMs);
     },
     "a\x03", "aF", -11},
    {"TransProcByEnd",
     [](int port, char* answer, int* length) {
       return TransProcByEnd(port, 9600, Command(), 3, answer, length, &UntilBang, kTimeoutMs);
     },
     "a!", "a\x03", -11},
    {"TransProcForEva",
     [](int port, char* answer, int* length) {
       return TransProcForEva(port, 9600, Command(), 3, answer, length, kTimeoutMs);
     },
     "aF", "a\x03", -9},
    {"TransProcForInfo",
     [](int port, char* answer, int* length) {
       return TransProcForInfo(port, 9600, Command(), 3, answer, length, kTimeoutMs);
     },
     "aF", "a\x03", -11},
    {"TransProcOnlyRead",
     [](int port, char* answer, int* length) {
       return TransProcOnlyRead(port, 9600, answer, length, kTimeoutMs);
     },
     "aF", "a\x03", -11},
};

const Case kSending[] = {
    {"TransProcOnlyWrite",
     [](int port, char* answer, int* length) {
       return TransProcOnlyWrite(port, 9600, Command(), 3, answer, length, kTimeoutMs);
     },
     "", "", 0},
    {"TransProcOnlySend",
     [](int port, char*, int*) { return TransProcOnlySend(port, 9600, Command(), 3, kTimeoutMs); }, "", "",
     0},
};

class Member : public testing::TestWithParam<Case> {
 protected:
  Member() {
    SetTime(1'700'000'000);
    usb_.PlugTerminal();
  }
  int Call(int port = 0) { return GetParam().call(port, answer_.text(), &length_); }
  bool OnlyReads() const { return std::string(GetParam().name) == "TransProcOnlyRead"; }
  void ExpectCommand() {
    if (!OnlyReads()) usb_.ExpectCommand(kCommand);
  }

  ScriptedUsb usb_;
  GuardedBuffer answer_{16 + 1024};
  int length_ = 16;
};

class ReadingMember : public Member {};
class SendingMember : public Member {};

INSTANTIATE_TEST_SUITE_P(All, ReadingMember, testing::ValuesIn(kReading), kByName);
INSTANTIATE_TEST_SUITE_P(All, SendingMember, testing::ValuesIn(kSending), kByName);

TEST_P(ReadingMember, GivesAnAnswerThatItsPredicateAccepts) {
  ExpectCommand();
  usb_.Answer(GetParam().complete);
  EXPECT_EQ(Call(), 0);
  EXPECT_EQ(length_, 2);
  EXPECT_EQ(answer_.First(2), BytesOf(GetParam().complete));
}

TEST_P(ReadingMember, WaitsOnForWhatItsPredicateDoesNotAccept) {
  ExpectCommand();
  usb_.Answer(GetParam().incomplete);
  EXPECT_EQ(Call(), GetParam().read_failure);
  EXPECT_EQ(length_, 16);
}

TEST_P(ReadingMember, CancelledUsbReadGivesMinus23) {
  ExpectCommand();
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.in) CancelRead();
  });
  EXPECT_EQ(Call(), -23);
  EXPECT_EQ(length_, 16);
}

TEST_P(ReadingMember, CancelledSerialReadGivesItsReadFailure) {
  FakeTty tty("/dev/ttyS41");
  tty.OnRead([](int) { CancelRead(); });
  EXPECT_EQ(Call(42), GetParam().read_failure);
  EXPECT_EQ(length_, 16);
}

TEST_P(ReadingMember, SerialReadErrorGivesItsReadFailure) {
  FakeTty tty("/dev/ttyS41");
  tty.FailReads();
  EXPECT_EQ(Call(42), GetParam().read_failure);
}

TEST_P(ReadingMember, LinkThatDoesNotOpenGivesMinus3) {
  usb_.Unplug();
  EXPECT_EQ(Call(), -3);
  EXPECT_EQ(length_, 16);
}

TEST_P(ReadingMember, LogsItsLines) {
  ExpectCommand();
  usb_.Answer(GetParam().complete);
  const LogCapture log;
  EXPECT_EQ(Call(), 0);
  std::vector<std::string> own;
  for (const std::string& message : log.Messages()) {
    if (message.find("ransPro") != std::string::npos || message.starts_with("ICC_")) own.push_back(message);
  }
  if (OnlyReads()) {
    EXPECT_THAT(own,
                ElementsAre(" TransProcOnlyRead  nPort=0", testing::StartsWith("ICC_OpenTransPort: PID=")));
  } else {
    EXPECT_THAT(own, ElementsAre(" TransProc  nPort=0", testing::StartsWith("ICC_OpenTransPort: PID="),
                                 " TransProc  nPor2=0"));
  }
}

TEST_P(SendingMember, SendsAndReadsNothing) {
  usb_.ExpectCommand(kCommand);
  EXPECT_EQ(Call(), 0);
  EXPECT_EQ(usb_.Count("in"), 0);
  EXPECT_EQ(length_, 16);
  EXPECT_TRUE(answer_.AllAre(0));
}

TEST_P(SendingMember, SendsOnASerialPort) {
  const FakeTty tty("/dev/ttyS0");
  EXPECT_EQ(Call(1), 0);
  EXPECT_EQ(tty.Received(), BytesOf(kCommand));
}

TEST_P(SendingMember, LinkThatDoesNotOpenGivesMinus3) {
  usb_.Unplug();
  EXPECT_EQ(Call(), -3);
}

TEST_P(SendingMember, CancelWithTheReportGivesMinus10) {
  usb_.ExpectCommand(kCommand).OnTransfer([](const Transfer&) { CancelRead(); });
  EXPECT_EQ(Call(), -10);
}

TEST_P(SendingMember, LogsItsOneLine) {
  usb_.ExpectCommand(kCommand);
  const LogCapture log;
  EXPECT_EQ(Call(), 0);
  EXPECT_EQ(log.Messages().front(), "TransProc nPort=0 \n");
  int own = 0;
  for (const std::string& message : log.Messages())
    own += message.find("TransProc ") != std::string::npos ? 1 : 0;
  EXPECT_EQ(own, 1);
}

}  // namespace
}  // namespace gwq::test
