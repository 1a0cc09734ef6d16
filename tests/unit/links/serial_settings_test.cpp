// SPDX-License-Identifier: MIT
// Opening, setting up, restoring and closing the serial device.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>

#include <gwq/links/serial.h>
#include "support/fake_tty.h"
#include "support/log_capture.h"
#include "support/named.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

bool Same(const struct termio& a, const struct termio& b) {
  return a.c_iflag == b.c_iflag && a.c_oflag == b.c_oflag && a.c_cflag == b.c_cflag &&
         a.c_lflag == b.c_lflag && a.c_line == b.c_line && std::memcmp(a.c_cc, b.c_cc, sizeof a.c_cc) == 0;
}

// Settings that a pseudo-terminal keeps and that differ from the link's in every word.
struct termio OddSettings(const FakeTty& tty) {
  struct termio settings = tty.Settings();
  settings.c_iflag = ISTRIP | INLCR | IGNCR | ICRNL | IXON | IXOFF | BRKINT | PARMRK;
  settings.c_oflag = OPOST | ONLCR;
  settings.c_cflag = B2400 | CS8 | CREAD | HUPCL | CSTOPB;
  settings.c_lflag = ISIG | ICANON | ECHO | ECHOE | NOFLSH | XCASE;
  settings.c_cc[VINTR] = 0x11;
  settings.c_cc[VQUIT] = 0x12;
  settings.c_cc[VERASE] = 0x13;
  settings.c_cc[VKILL] = 0x14;
  settings.c_cc[VMIN] = 9;
  settings.c_cc[VTIME] = 8;
  return settings;
}

struct SpeedCase {
  int baud;
  unsigned code;
};

std::string NameOf(const SpeedCase& each) {
  return (each.baud < 0 ? "Minus" : "") + std::to_string(std::abs(each.baud));
}

class SerialSpeed : public testing::TestWithParam<SpeedCase> {};

TEST_P(SerialSpeed, BaudSelectsItsCodeAndUnknownOnesMean9600) {
  FakeTty tty;
  ASSERT_EQ(ICC_OpenLinuxCom(tty.Path().c_str(), GetParam().baud), 0);
  ASSERT_EQ(tty.Applied().size(), 1U);
  EXPECT_EQ(tty.Applied()[0].c_cflag, GetParam().code | CS8 | CREAD | CLOCAL);
  ICC_CloseLinuxCom();
}

INSTANTIATE_TEST_SUITE_P(Bauds, SerialSpeed,
                         testing::Values(SpeedCase{300, 0x7}, SpeedCase{1200, 0x9}, SpeedCase{2400, 0xB},
                                         SpeedCase{4800, 0xC}, SpeedCase{9600, 0xD}, SpeedCase{19200, 0xE},
                                         SpeedCase{38400, 0xF}, SpeedCase{57600, 0x1001},
                                         SpeedCase{115200, 0x1002}, SpeedCase{600, 0xD},
                                         SpeedCase{57601, 0xD}, SpeedCase{57599, 0xD}, SpeedCase{0, 0xD},
                                         SpeedCase{-9600, 0xD}, SpeedCase{230400, 0xD}, SpeedCase{299, 0xD}),
                         kByName);

TEST(SerialSettings, OpenAsksForRawModeAndKeepsTheRestAsSaved) {
  FakeTty tty;
  tty.SetSettings(OddSettings(tty));
  const struct termio saved = tty.Settings();
  ASSERT_EQ(ICC_OpenLinuxCom(tty.Path().c_str(), 115200), 0);
  ASSERT_EQ(tty.Applied().size(), 1U);
  const struct termio asked = tty.Applied()[0];
  EXPECT_EQ(asked.c_iflag, saved.c_iflag & 0xFA1F);
  EXPECT_EQ(asked.c_iflag & (ISTRIP | INLCR | IGNCR | ICRNL | IXON), 0);
  EXPECT_EQ(asked.c_iflag & (IXOFF | BRKINT | PARMRK), IXOFF | BRKINT | PARMRK);
  EXPECT_EQ(asked.c_oflag, saved.c_oflag & ~OPOST);
  EXPECT_EQ(asked.c_cflag, B115200 | 0x08B0);
  EXPECT_EQ(asked.c_lflag, saved.c_lflag & 0xFF74);
  EXPECT_EQ(asked.c_lflag & (ECHOE | XCASE), ECHOE | XCASE);
  EXPECT_EQ(asked.c_line, saved.c_line);
  struct termio control = saved;
  control.c_cc[VQUIT] = 0x7F;
  control.c_cc[VMIN] = 0;
  control.c_cc[VTIME] = 1;
  EXPECT_EQ(std::memcmp(asked.c_cc, control.c_cc, sizeof asked.c_cc), 0);
  ICC_CloseLinuxCom();
}

TEST(SerialSettings, CloseAppliesTheSavedSettingsAgain) {
  FakeTty tty;
  tty.SetSettings(OddSettings(tty));
  const struct termio saved = tty.Settings();
  ASSERT_EQ(ICC_OpenLinuxCom(tty.Path().c_str(), 9600), 0);
  EXPECT_EQ(ICC_CloseLinuxCom(), 0);
  ASSERT_EQ(tty.Applied().size(), 2U);
  EXPECT_TRUE(Same(tty.Applied()[1], saved));
  EXPECT_TRUE(Same(tty.Settings(), saved));
  EXPECT_THAT(tty.Calls(), ElementsAre("open " + tty.Path() + " " + std::to_string(O_RDWR), "TCGETA",
                                       "TCSETAF", "TCSETAF", "close"));
}

TEST(SerialSettings, CloseWithoutOpenDoesNothingAndSucceeds) {
  const FakeTty tty;
  EXPECT_EQ(ICC_CloseLinuxCom(), 0);
  EXPECT_EQ(ICC_CloseLinuxCom(), 0);
  EXPECT_THAT(tty.Calls(), IsEmpty());
}

TEST(SerialSettings, CloseSucceedsWhenTheSettingsCannotBeRestored) {
  FakeTty tty;
  ASSERT_EQ(ICC_OpenLinuxCom(tty.Path().c_str(), 9600), 0);
  tty.FailIoctl(TCSETAF);
  EXPECT_EQ(ICC_CloseLinuxCom(), 0);
  EXPECT_EQ(tty.Calls().back(), "close");
}

TEST(SerialSettings, ReopenClosesTheFormerPortAndLeavesItsSettings) {
  FakeTty first;
  FakeTty second;
  ASSERT_EQ(ICC_OpenLinuxCom(first.Path().c_str(), 9600), 0);
  ASSERT_EQ(ICC_OpenLinuxCom(second.Path().c_str(), 9600), 0);
  EXPECT_THAT(first.Calls(), ElementsAre("open " + first.Path() + " 2", "TCGETA", "TCSETAF", "close"));
  ICC_CloseLinuxCom();
  EXPECT_EQ(first.Applied().size(), 1U);
  EXPECT_EQ(second.Applied().size(), 2U);
}

TEST(SerialSettings, ReopenOfTheSamePortSavesTheSettingsItFinds) {
  FakeTty tty;
  ASSERT_EQ(ICC_OpenLinuxCom(tty.Path().c_str(), 9600), 0);
  const struct termio raw = tty.Settings();
  ASSERT_EQ(ICC_OpenLinuxCom(tty.Path().c_str(), 300), 0);
  ICC_CloseLinuxCom();
  EXPECT_TRUE(Same(tty.Settings(), raw));
}

TEST(SerialSettings, DeviceThatCannotBeOpenedGivesMinus3AndNothingIsOpen) {
  EXPECT_EQ(ICC_OpenLinuxCom("/nonexistent/ttyS0", 9600), -3);
  EXPECT_EQ(ICC_CancelLinuxComRead(), -7);
}

TEST(SerialSettings, NullPathGivesMinus3) {
  EXPECT_EQ(ICC_OpenLinuxCom(nullptr, 9600), -3);
  EXPECT_EQ(ICC_CancelLinuxComRead(), -7);
}

TEST(SerialSettings, FailedReopenHasClosedTheFormerPort) {
  FakeTty tty;
  ASSERT_EQ(ICC_OpenLinuxCom(tty.Path().c_str(), 9600), 0);
  EXPECT_EQ(ICC_OpenLinuxCom("/nonexistent/ttyS0", 9600), -3);
  EXPECT_EQ(tty.Calls().back(), "close");
  EXPECT_EQ(ICC_CancelLinuxComRead(), -7);
}

TEST(SerialSettings, SettingsThatCannotBeReadGiveMinus1AndCloseThePort) {
  FakeTty tty;
  tty.FailIoctl(TCGETA);
  EXPECT_EQ(ICC_OpenLinuxCom(tty.Path().c_str(), 9600), -1);
  EXPECT_THAT(tty.Calls(), ElementsAre("open " + tty.Path() + " 2", "TCGETA", "close"));
  EXPECT_EQ(ICC_CancelLinuxComRead(), -7);
}

TEST(SerialSettings, SettingsThatCannotBeAppliedGiveMinus1AndCloseThePort) {
  FakeTty tty;
  tty.FailIoctl(TCSETAF);
  EXPECT_EQ(ICC_OpenLinuxCom(tty.Path().c_str(), 9600), -1);
  EXPECT_THAT(tty.Calls(), ElementsAre("open " + tty.Path() + " 2", "TCGETA", "TCSETAF", "close"));
  EXPECT_EQ(ICC_CancelLinuxComRead(), -7);
}

TEST(SerialSettings, FileThatIsNoTerminalGivesMinus1) {
  EXPECT_EQ(ICC_OpenLinuxCom("/dev/null", 9600), -1);
  EXPECT_EQ(ICC_CancelLinuxComRead(), -7);
}

TEST(SerialSettings, SetComAttrAndRestoreComAttrRefuseMinus1Alone) {
  EXPECT_EQ(SetComAttr(-1, 9600), -2);
  EXPECT_EQ(RestoreComAttr(-1), -2);
  EXPECT_EQ(SetComAttr(-5, 9600), -1);
  EXPECT_EQ(RestoreComAttr(-5), -1);
}

TEST(SerialSettings, SetComAttrAndRestoreComAttrWorkOnAnyDescriptor) {
  FakeTty tty;
  const struct termio saved = tty.Settings();
  const int fd = open(tty.Path().c_str(), O_RDWR);
  EXPECT_EQ(SetComAttr(fd, 4800), 0);
  EXPECT_EQ(tty.Settings().c_cflag & CBAUD, static_cast<unsigned>(B4800));
  EXPECT_EQ(RestoreComAttr(fd), 0);
  EXPECT_TRUE(Same(tty.Settings(), saved));
  close(fd);
}

TEST(SerialSettings, FailedSetUpKeepsTheSettingsReadJustBefore) {
  FakeTty failing;
  failing.SetSettings(OddSettings(failing));
  const struct termio read_before = failing.Settings();
  failing.FailIoctl(TCSETAF);
  ASSERT_EQ(ICC_OpenLinuxCom(failing.Path().c_str(), 9600), -1);
  FakeTty other;
  const int fd = open(other.Path().c_str(), O_RDWR);
  EXPECT_EQ(RestoreComAttr(fd), 0);
  ASSERT_EQ(other.Applied().size(), 1U);
  EXPECT_TRUE(Same(other.Applied()[0], read_before));
  close(fd);
}

TEST(SerialSettings, SetComFdTakesADescriptorWithoutTouchingItsSettings) {
  FakeTty tty;
  const int fd = open(tty.Path().c_str(), O_RDWR);
  SetComFd(fd);
  EXPECT_TRUE(tty.Applied().empty());
  EXPECT_EQ(ICC_CancelLinuxComRead(), 0);
  EXPECT_EQ(SendDataToTransPort(BytesOf("hi").data(), 2), 2);
  EXPECT_EQ(tty.Received(), BytesOf("hi"));
  SetComFd(-1);
  EXPECT_EQ(ICC_CancelLinuxComRead(), -7);
  EXPECT_EQ(ICC_CloseLinuxCom(), 0);
  EXPECT_EQ(fcntl(fd, F_GETFD) >= 0, true) << "not the link's any more";
  close(fd);
}

TEST(SerialSettings, OnlyMinus1CountsAsNotOpen) {
  SetComFd(-2);
  unsigned char byte = 0;
  EXPECT_EQ(ICC_CancelLinuxComRead(), 0);
  EXPECT_EQ(SendDataToTransPort(&byte, 1), 0);
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, 0, nullptr), -6);
  SetComFd(-1);
}

TEST(SerialSettings, OpenFlushesWhatHasComeBefore) {
  FakeTty tty;
  ASSERT_EQ(ICC_OpenLinuxCom(tty.Path().c_str(), 9600), 0);
  tty.Send("stale");
  while (tty.Waiting() < 5) continue;
  ASSERT_EQ(ICC_OpenLinuxCom(tty.Path().c_str(), 9600), 0);
  EXPECT_EQ(tty.Waiting(), 0);
  ICC_CloseLinuxCom();
}

TEST(SerialSettings, OpenLogsThePathAndNothingElse) {
  const LogCapture log;
  ICC_OpenLinuxCom("/nonexistent/ttyS0", 9600);
  FakeTty tty;
  ICC_OpenLinuxCom(tty.Path().c_str(), 9600);
  ICC_CloseLinuxCom();
  EXPECT_THAT(log.Messages(), ElementsAre("ICC_OpenLinuxCom szTtyName=/nonexistent/ttyS0",
                                          "ICC_OpenLinuxCom szTtyName=" + tty.Path()));
}

}  // namespace
}  // namespace gwq::test
