// SPDX-License-Identifier: MIT
// Opening the terminal on standard output, and switching its auxiliary port on and off.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstring>

#include <gwq/links/aux_port.h>
#include <gwq/links/serial.h>
#include "support/fake_tty.h"
#include "support/iconv_text.h"
#include "support/log_capture.h"
#include "support/named.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Standard output is this file for its lifetime, during which the test must not assert.
class StandardOutputIs {
 public:
  explicit StandardOutputIs(const std::string& path) {
    std::fflush(stdout);
    const int fd = static_cast<int>(syscall(SYS_openat, AT_FDCWD, path.c_str(), O_RDWR | O_NOCTTY));
    dup2(fd, STDOUT_FILENO);
    syscall(SYS_close, fd);
  }
  ~StandardOutputIs() {
    std::fflush(stdout);
    dup2(former_, STDOUT_FILENO);
    syscall(SYS_close, former_);
  }
  StandardOutputIs(const StandardOutputIs&) = delete;
  StandardOutputIs& operator=(const StandardOutputIs&) = delete;

 private:
  int former_ = dup(STDOUT_FILENO);
};

int OpenAuxOn(const std::string& path, int type, int port, int baud, int lock) {
  const StandardOutputIs terminal(path);
  return ICC_OpenLinuxAux(type, port, baud, lock);
}

int Write(std::string_view text) {
  Bytes bytes = BytesOf(text);
  return ICC_WriteLinuxAux(bytes.data(), static_cast<int>(bytes.size()));
}

std::string Received(const FakeTty& tty) {
  const Bytes bytes = tty.Received();
  return {bytes.begin(), bytes.end()};
}

bool Same(const struct termio& a, const struct termio& b) {
  return a.c_iflag == b.c_iflag && a.c_oflag == b.c_oflag && a.c_cflag == b.c_cflag &&
         a.c_lflag == b.c_lflag && a.c_line == b.c_line && std::memcmp(a.c_cc, b.c_cc, sizeof a.c_cc) == 0;
}

struct Dialect {
  const char* name;
  int type;
  int port;
  int baud;
  const char* on;
  const char* wrapped;  // the payload "A|" as it is sent
  const char* off;
  bool locks = true;
};

constexpr const char* kFirstTail = "\033[/54l\033[/53h\033[/50h";
constexpr const char* kFirstWrapped = "\033[/51hA|\033[/51l";
constexpr const char* kFirstOff = "\033[/51l\033[/50l";

class AuxDialects : public testing::TestWithParam<Dialect> {
 protected:
  static std::string On() {
    const bool is_first = GetParam().wrapped == kFirstWrapped;
    std::string on = GetParam().on;
    if (is_first) on += kFirstTail;
    return on;
  }
};

TEST_P(AuxDialects, WithoutLockSwitchOnWrapAndSwitchOff) {
  const Dialect& dialect = GetParam();
  const FakeTty tty;
  ASSERT_EQ(OpenAuxOn(tty.Path(), dialect.type, dialect.port, dialect.baud, 0), 0);
  EXPECT_EQ(Received(tty), On());
  EXPECT_EQ(Write("A|"), 2);
  EXPECT_EQ(Received(tty), On().append(dialect.wrapped));
  EXPECT_EQ(ICC_CloseLinuxAux(0), 0);
  EXPECT_EQ(Received(tty), On().append(dialect.wrapped).append(dialect.off));
}

TEST_P(AuxDialects, WithLockTheKeyboardIsLockedAndUnlocked) {
  const Dialect& dialect = GetParam();
  const FakeTty tty;
  ASSERT_EQ(OpenAuxOn(tty.Path(), dialect.type, dialect.port, dialect.baud, -1), 0);
  const std::string opened = On().append(dialect.locks ? "\033[2h" : "");
  EXPECT_EQ(Received(tty), opened);
  EXPECT_EQ(ICC_CloseLinuxAux(7), 0);
  EXPECT_EQ(Received(tty), std::string(opened).append(dialect.off).append("\033[2l"));
}

INSTANTIATE_TEST_SUITE_P(
    Aux, AuxDialects,
    testing::Values(Dialect{"First", 1, 1, 9600, "\033!0;0;0;0Y", kFirstWrapped, kFirstOff},
                    Dialect{"First4800", 1, 2, 4800, "\033!1;0;0;0Z", kFirstWrapped, kFirstOff},
                    Dialect{"First2400", 1, 3, 2400, "\033!2;0;0;0X", kFirstWrapped, kFirstOff},
                    Dialect{"First1200", 1, 4, 1200, "\033!3;0;0;0V", kFirstWrapped, kFirstOff},
                    Dialect{"First600", 1, 5, 600, "\033!5;0;0;0Y", kFirstWrapped, kFirstOff},
                    Dialect{"First300", 1, 1, 300, "\033!6;0;0;0Y", kFirstWrapped, kFirstOff},
                    Dialect{"First19200", 1, 1, 19200, "\033!10;0;0;0Y", kFirstWrapped, kFirstOff},
                    Dialect{"First38400", 1, 1, 38400, "\033!11;0;0;0Y", kFirstWrapped, kFirstOff},
                    Dialect{"First115200", 1, 1, 115200, "\033!12;0;0;0Y", kFirstWrapped, kFirstOff},
                    Dialect{"First57600", 1, 1, 57600, "\033!0;0;0;0Y", kFirstWrapped, kFirstOff},
                    Dialect{"FourthSpeaksAsFirst", 4, 3, 19200, "\033!10;0;0;0X", kFirstWrapped, kFirstOff},
                    Dialect{"ZeroSpeaksAsFirst", 0, 1, -1, "\033!0;0;0;0Y", kFirstWrapped, kFirstOff},
                    Dialect{"NegativeSpeaksAsFirst", -5, 2147483647, 0, "\033!0;0;0;0Y", kFirstWrapped,
                            kFirstOff},
                    Dialect{"Second", 2, 1, 9600, "\033[0>", "A|", "\033[<", false},
                    Dialect{"SecondPort2", 2, 2, 9600, "\033[1>", "A|", "\033[<", false},
                    Dialect{"SecondPort4", 2, 4, 115200, "\033[3>", "A|", "\033[<", false},
                    Dialect{"SecondPort5", 2, 5, 9600, "\033[0>", "A|", "\033[<", false},
                    Dialect{"Third", 3, 1, 9600, "\033[/1;1;8;3;1;0M", "\033[/|A||", "\033[/M"},
                    Dialect{"Third4800", 3, 2, 4800, "\033[/2;1;7;3;1;0M", "\033[/|A||", "\033[/M"},
                    Dialect{"Third2400", 3, 3, 2400, "\033[/3;1;6;3;1;0M", "\033[/|A||", "\033[/M"},
                    Dialect{"Third1200", 3, 4, 1200, "\033[/4;1;5;3;1;0M", "\033[/|A||", "\033[/M"},
                    Dialect{"Third600", 3, 5, 600, "\033[/1;1;4;3;1;0M", "\033[/|A||", "\033[/M"},
                    Dialect{"Third300", 3, 1, 300, "\033[/1;1;3;3;1;0M", "\033[/|A||", "\033[/M"},
                    Dialect{"Third19200", 3, 1, 19200, "\033[/1;1;9;3;1;0M", "\033[/|A||", "\033[/M"},
                    Dialect{"Third38400", 3, 1, 38400, "\033[/1;1;8;3;1;0M", "\033[/|A||", "\033[/M"},
                    Dialect{"Third115200", 3, 1, 115200, "\033[/1;1;8;3;1;0M", "\033[/|A||", "\033[/M"},
                    Dialect{"Third57600", 3, 1, 57600, "\033[/1;1;8;3;1;0M", "\033[/|A||", "\033[/M"},
                    Dialect{"Fifth", 5, 1, 9600, "\033!45;1m\033!b", "A|", "\033!P"},
                    Dialect{"FifthPort2", 5, 2, 300, "\033!54;1m\033!b", "A|", "\033!P"},
                    Dialect{"FifthPort3", 5, 3, 9600, "\033!60;1m\033!b", "A|", "\033!P"},
                    Dialect{"FifthPort4", 5, 4, 9600, "\033!45;1m\033!b", "A|", "\033!P"},
                    Dialect{"FifthPort99", 5, 99, 9600, "\033!45;1m\033!b", "A|", "\033!P"}),
    kByName);

TEST(AuxOpen, LineIsSetUpAsTheSerialLinkWouldAndRestoredAtClose) {
  FakeTty tty;
  struct termio before = tty.Settings();
  before.c_lflag = ISIG | ICANON | ECHO | ECHOE | NOFLSH;
  before.c_cc[VQUIT] = 0x12;
  tty.SetSettings(before);
  ASSERT_EQ(ICC_OpenLinuxCom(tty.Path().c_str(), 57600), 0);
  ICC_CloseLinuxCom();
  ASSERT_EQ(OpenAuxOn(tty.Path(), 1, 1, 57600, 0), 0);
  EXPECT_EQ(ICC_CloseLinuxAux(0), 0);
  const auto applied = tty.Applied();
  ASSERT_EQ(applied.size(), 4U);
  EXPECT_TRUE(Same(applied[2], applied[0]));
  EXPECT_EQ(applied[2].c_cflag & CBAUD, unsigned{B57600});
  EXPECT_TRUE(Same(applied[3], applied[1]));
  EXPECT_EQ(tty.Settings().c_lflag, before.c_lflag);
}

TEST(AuxOpen, OpensForReadingAndWritingAndSendsInOneWriteEach) {
  const FakeTty tty;
  ASSERT_EQ(OpenAuxOn(tty.Path(), 4, 3, 19200, 1), 0);
  ICC_CloseLinuxAux(1);
  EXPECT_THAT(tty.Calls(), ElementsAre("open " + tty.Path() + " 2", "TCGETA", "TCSETAF", "write 29",
                                       "write 4", "write 12", "write 4", "TCSETAF", "close"));
}

TEST(AuxOpen, LogsInOrder) {
  const FakeTty tty;
  const LogCapture log;
  ASSERT_EQ(OpenAuxOn(tty.Path(), 1, 2, 9600, 1), 0);
  ICC_CloseLinuxAux(1);
  EXPECT_THAT(log.Messages(),
              ElementsAre("ClearInvisibleCharInStr  \n", "LinuxOpenPort szTtyName =" + tty.Path() + "\r\n",
                          "LinuxOpenPort 1, 2, 9600, 1\r\n", "SetTerm  RET_SUCCESS\n",
                          InGbk("ICC_OpenLinux : 打开终端\n"), "Star_GetOpenAuxCmd  SUCCESS!\n",
                          InGbk("VK_OpenAuxPort : 打开辅口，锁住键盘\n"),
                          InGbk(" VK_CloseAuxPort ：关闭辅口 ，解锁键盘\n"), " ResetAux \n",
                          InGbk("ICC_CloseLinux :关闭终端\n")));
}

TEST(AuxOpen, LogsNoLockWhereThereIsNone) {
  const FakeTty tty;
  const LogCapture log;
  ASSERT_EQ(OpenAuxOn(tty.Path(), 3, 1, 9600, 0), 0);
  ICC_CloseLinuxAux(0);
  EXPECT_THAT(
      log.Messages(),
      ElementsAre("ClearInvisibleCharInStr  \n", "LinuxOpenPort szTtyName =" + tty.Path() + "\r\n",
                  "LinuxOpenPort 3, 1, 9600, 0\r\n", "SetTerm  RET_SUCCESS\n",
                  InGbk("ICC_OpenLinux : 打开终端\n"), " ResetAux \n", InGbk("ICC_CloseLinux :关闭终端\n")));
}

TEST(AuxOpen, StandardOutputThatIsNoTerminalGivesMinus3) {
  const LogCapture log;
  EXPECT_EQ(OpenAuxOn("/dev/null", 1, 1, 9600, 1), -3);
  EXPECT_THAT(log.Messages(), ElementsAre("ClearInvisibleCharInStr  \n", "LinuxOpenPort szTtyName =\r\n",
                                          "LinuxOpenPort 1, 1, 9600, 1\r\n"));
  EXPECT_EQ(ICC_CancelLinuxAuxRead(), -7);
}

TEST(AuxOpen, PortBelow1RestoresAndClosesTheTerminalAndGivesMinus1) {
  for (const int port : {0, -1}) {
    FakeTty tty;
    const LogCapture log;
    EXPECT_EQ(OpenAuxOn(tty.Path(), 1, port, 9600, 1), -1);
    EXPECT_THAT(tty.Calls(),
                ElementsAre("open " + tty.Path() + " 2", "TCGETA", "TCSETAF", "TCSETAF", "close"));
    EXPECT_EQ(log.Messages().back(), " ResetAux \n");
    EXPECT_THAT(tty.Received(), IsEmpty());
    EXPECT_EQ(ICC_CancelLinuxAuxRead(), -7);
  }
}

TEST(AuxOpen, SettingsThatFailGiveMinus1AndCloseTheTerminal) {
  for (const auto request : std::initializer_list<unsigned long>{TCGETA, TCSETAF}) {
    FakeTty tty;
    tty.FailIoctl(request);
    const LogCapture log;
    EXPECT_EQ(OpenAuxOn(tty.Path(), 1, 1, 9600, 1), -1);
    EXPECT_EQ(tty.Calls().back(), "close");
    EXPECT_THAT(tty.Received(), IsEmpty());
    EXPECT_EQ(log.Messages().size(), 3U);
    EXPECT_EQ(ICC_CancelLinuxAuxRead(), -7);
  }
}

TEST(AuxOpen, SwitchingOnIsNotChecked) {
  FakeTty tty;
  tty.NextWritesMove({-1, -1});
  EXPECT_EQ(OpenAuxOn(tty.Path(), 1, 1, 9600, 1), 0);
  tty.NextWritesMove({-1, -1});
  EXPECT_EQ(ICC_CloseLinuxAux(1), 0);
}

TEST(AuxOpen, ReopenClosesTheFormerTerminalAndLeavesItsSettings) {
  const FakeTty first;
  const FakeTty second;
  ASSERT_EQ(ICC_OpenLinux(first.Path().c_str(), 9600), 0);
  ASSERT_EQ(OpenAuxOn(second.Path(), 2, 1, 9600, 0), 0);
  EXPECT_THAT(first.Calls(), ElementsAre("open " + first.Path() + " 2", "TCGETA", "TCSETAF", "close"));
  EXPECT_EQ(ICC_OpenLinux("/nonexistent/tty", 9600), -3);
  EXPECT_EQ(second.Calls().back(), "close");
  EXPECT_EQ(second.Applied().size(), 1U);
  EXPECT_EQ(ICC_OpenLinux(nullptr, 9600), -3);
}

TEST(AuxOpen, HasADescriptorAndSettingsOfItsOwnBesideTheSerialLink) {
  FakeTty serial;
  FakeTty aux;
  ASSERT_EQ(ICC_OpenLinuxCom(serial.Path().c_str(), 9600), 0);
  struct termio before = aux.Settings();
  before.c_cc[VQUIT] = 0x12;
  aux.SetSettings(before);
  ASSERT_EQ(ICC_OpenLinux(aux.Path().c_str(), 9600), 0);
  ICC_CloseLinuxCom();
  EXPECT_EQ(ICC_CancelLinuxAuxRead(), 0);
  EXPECT_NE(serial.Settings().c_cc[VQUIT], 0x12);
  ICC_CloseLinux();
  EXPECT_EQ(aux.Settings().c_cc[VQUIT], 0x12);
}

TEST(AuxClose, WithoutOpenDoesNothingAndSucceeds) {
  const LogCapture log;
  EXPECT_EQ(ICC_CloseLinuxAux(1), 0);
  EXPECT_EQ(ICC_CloseLinux(), 0);
  EXPECT_THAT(log.Messages(), IsEmpty());
}

TEST(AuxClose, OfTheLineAloneLeavesTheAuxiliaryPortOn) {
  const FakeTty tty;
  ASSERT_EQ(OpenAuxOn(tty.Path(), 5, 1, 9600, 0), 0);
  const std::string opened = Received(tty);
  EXPECT_EQ(ICC_CloseLinux(), 0);
  EXPECT_EQ(Received(tty), opened);
  EXPECT_EQ(ICC_CancelLinuxAuxRead(), -7);
}

TEST(AuxSwitch, PortBelow1GivesMinus2AndLeavesTheDialect) {
  ASSERT_EQ(VK_OpenAuxPort(3, 1, 9600, 0), 0);
  EXPECT_EQ(VK_OpenAuxPort(1, 0, 9600, 0), -2);
  EXPECT_EQ(g_AuxOp.nType, 3);
}

TEST(AuxSwitch, FillsTheRecordAnew) {
  static_assert(offsetof(GwqAuxOp, nType) == 0 && offsetof(GwqAuxOp, szPrefix) == 4);
  static_assert(offsetof(GwqAuxOp, nPrefixLen) == 1028 && offsetof(GwqAuxOp, szSuffix) == 1032);
  static_assert(offsetof(GwqAuxOp, nSuffixLen) == 2056 && sizeof(GwqAuxOp) == 2060);
  std::memset(&g_AuxOp, 0x55, sizeof g_AuxOp);
  EXPECT_EQ(VK_OpenAuxPort(4, 1, 9600, 0), 0);
  EXPECT_EQ(g_AuxOp.nType, 4);
  EXPECT_STREQ(g_AuxOp.szPrefix, "\033[/51h");
  EXPECT_EQ(g_AuxOp.nPrefixLen, 6);
  EXPECT_STREQ(g_AuxOp.szSuffix, "\033[/51l");
  EXPECT_EQ(g_AuxOp.nSuffixLen, 6);
  EXPECT_EQ(VK_OpenAuxPort(2, 1, 9600, 0), 0);
  GwqAuxOp none{};
  none.nType = 2;
  EXPECT_EQ(std::memcmp(&g_AuxOp, &none, sizeof none), 0);
}

TEST(AuxSwitch, OffTurnsAnUnknownDialectInto1) {
  for (const int type : {4, 0, 6, -1}) {
    VK_OpenAuxPort(type, 1, 9600, 0);
    EXPECT_EQ(VK_CloseAuxPort(0), 0);
    EXPECT_EQ(g_AuxOp.nType, 1);
  }
  for (const int type : {1, 2, 3, 5}) {
    VK_OpenAuxPort(type, 1, 9600, 0);
    EXPECT_EQ(VK_CloseAuxPort(0), 0);
    EXPECT_EQ(g_AuxOp.nType, type);
  }
}

TEST(AuxSwitch, WithoutATerminalSucceedsAndSaysWhatItWouldDo) {
  const LogCapture log;
  EXPECT_EQ(VK_OpenAuxPort(5, 1, 9600, 1), 0);
  EXPECT_EQ(VK_CloseAuxPort(1), 0);
  EXPECT_THAT(log.Messages(), ElementsAre(InGbk("VK_OpenAuxPort : 打开辅口，锁住键盘\n"),
                                          InGbk(" VK_CloseAuxPort ：关闭辅口 ，解锁键盘\n")));
}

TEST(AuxSettings, SetTermAndResetAuxRefuseMinus1Alone) {
  const LogCapture log;
  EXPECT_EQ(SetTerm(-1, 9600), -2);
  EXPECT_EQ(ResetAux(-1), -2);
  EXPECT_EQ(SetTerm(-5, 9600), -1);
  EXPECT_EQ(ResetAux(-5), -1);
  EXPECT_THAT(log.Messages(), ElementsAre(" ResetAux \n", " ResetAux \n"));
}

TEST(AuxSettings, SetAuxFdTakesADescriptorWithoutTouchingItsSettings) {
  const FakeTty tty;
  const int fd = open(tty.Path().c_str(), O_RDWR);
  const LogCapture log;
  SetAuxFd(fd);
  EXPECT_EQ(VK_SendDataToTransPort(BytesOf("hi").data(), 2), 2);
  EXPECT_EQ(Received(tty), "hi");
  EXPECT_TRUE(tty.Applied().empty());
  SetAuxFd(-1);
  EXPECT_EQ(ICC_CancelLinuxAuxRead(), -7);
  EXPECT_THAT(log.Messages(), ElementsAre("SetAuxFd  setg_AuxFd\n", "SetAuxFd  setg_AuxFd\n"));
  close(fd);
}

TEST(ClearInvisible, RemovesBlanksTabsAndLineEnds) {
  const LogCapture log;
  for (const auto& [text, cleared] : {std::pair{"/dev/pts/3", "/dev/pts/3"},
                                      {" /dev \t/tty\r\n1 ", "/dev/tty1"},
                                      {"\v\f\x01", "\v\f\x01"},
                                      {" \t\r\n", ""},
                                      {"", ""}}) {
    std::string copy = text;
    ClearInvisibleCharInStr(copy.data());
    EXPECT_STREQ(copy.c_str(), cleared);
  }
  ClearInvisibleCharInStr(nullptr);
  EXPECT_THAT(log.Messages(), testing::SizeIs(6));
  EXPECT_THAT(log.Messages(), testing::Each("ClearInvisibleCharInStr  \n"));
}

}  // namespace
}  // namespace gwq::test
