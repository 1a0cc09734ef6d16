// SPDX-License-Identifier: MIT
// What GWQ_GetFailure tells of a call that failed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libusb-1.0/libusb.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csetjmp>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>

#include <gwq/extra.h>
#include <gwq/gwq.h>
#include <gwq/status.h>
#include "links/internal/remedy.h"
#include "support/as_user.h"
#include "support/device_calls.h"
#include "support/fake_tty.h"
#include "support/scripted_usb.h"
#include "support/temp_dir.h"
#include "support/test_clock.h"
#include "usb_ids.h"

namespace gwq::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr int kBaud = 9600;
constexpr UsbDevice kFirst{
    .vid = kUsbIdentities[0].vid, .pid = kUsbIdentities[0].pid, .bus = 3, .address = 17, .ports = {1, 4, 2}};
constexpr std::string_view kDone = "\x02\xAA\x03";

GwqFailure LastFailure() {
  GwqFailure failure;
  std::fill_n(reinterpret_cast<unsigned char*>(&failure), sizeof failure, 0xEE);
  EXPECT_EQ(GWQ_GetFailure(&failure), GWQ_OK);
  return failure;
}

bool IsZero(const GwqFailure& failure) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(&failure);
  return std::all_of(bytes, bytes + sizeof failure, [](unsigned char byte) { return byte == 0; });
}

int SetLength(int length = 6) {
  return GWQ_SetPinLen(0, kBaud, length);
}

class FailureTold : public testing::Test {
 protected:
  FailureTold() {
    ResetClock();
    SetTime(1'700'000'000);
    Succeed();
  }
  // Clears what an earlier test has left to the thread.
  static void Succeed() {
    ScriptedUsb usb;
    usb.PlugTerminal();
    ASSERT_EQ(SetLength(), GWQ_OK);
    ASSERT_TRUE(IsZero(LastFailure()));
  }
};

TEST_F(FailureTold, NowhereToTellItIsABadArgument) {
  EXPECT_EQ(GWQ_GetFailure(nullptr), GWQ_BAD_ARGUMENT);
}

TEST_F(FailureTold, NothingFailedIsAllZero) {
  EXPECT_TRUE(IsZero(LastFailure()));
}

TEST_F(FailureTold, ArgumentOutOfRange) {
  EXPECT_EQ(SetLength(15), GWQ_BAD_ARGUMENT);
  const GwqFailure failure = LastFailure();
  EXPECT_EQ(failure.status, GWQ_BAD_ARGUMENT);
  EXPECT_STREQ(failure.function, "GWQ_SetPinLen");
  EXPECT_EQ(failure.step, GWQ_STEP_ARGUMENT);
  EXPECT_EQ(failure.error_source, GWQ_ERROR_NONE);
  EXPECT_STREQ(failure.advice[GWQ_ENGLISH], GwqStatusRemedyOf("GWQ_SetPinLen", -1, GWQ_ENGLISH));
  EXPECT_STREQ(failure.advice[GWQ_CHINESE], GwqStatusRemedyOf("GWQ_SetPinLen", -1, GWQ_CHINESE));
}

TEST_F(FailureTold, SuccessClearsIt) {
  EXPECT_EQ(SetLength(15), GWQ_BAD_ARGUMENT);
  Succeed();
}

TEST_F(FailureTold, CallsThatComputeOrCannotFailChangeNothing) {
  EXPECT_EQ(SetLength(15), GWQ_BAD_ARGUMENT);
  std::array<unsigned char, 16> packed{};
  unsigned char body = 'a';
  PackData(&body, 1, packed.data());
  EXPECT_EQ(ICC_CloseLinuxHid(), GWQ_OK);
  EXPECT_EQ(GWQ_SetOutputRoom(-1), GWQ_BAD_ARGUMENT);
  EXPECT_STREQ(LastFailure().function, "GWQ_SetPinLen");
}

TEST_F(FailureTold, NoTerminalIsPluggedIn) {
  const ScriptedUsb usb;
  EXPECT_EQ(SetLength(), GWQ_NOT_OPENED);
  const GwqFailure failure = LastFailure();
  EXPECT_EQ(failure.step, GWQ_STEP_FIND);
  EXPECT_EQ(failure.error, 0);
  EXPECT_EQ(failure.bus, 0);
  EXPECT_STREQ(failure.port_path, "");
  EXPECT_THAT(failure.advice[GWQ_ENGLISH], StartsWith("No terminal is plugged in"));
  EXPECT_THAT(failure.advice[GWQ_CHINESE], StartsWith("没有插上终端"));
}

TEST_F(FailureTold, DevicesThatCannotBeListed) {
  ScriptedUsb usb;
  usb.FailListing(LIBUSB_ERROR_NO_MEM);
  EXPECT_EQ(SetLength(), GWQ_NOT_OPENED);
  const GwqFailure failure = LastFailure();
  EXPECT_EQ(failure.step, GWQ_STEP_FIND);
  EXPECT_EQ(failure.error_source, GWQ_ERROR_LIBUSB);
  EXPECT_EQ(failure.error, LIBUSB_ERROR_NO_MEM);
  EXPECT_STREQ(failure.error_text, libusb_strerror(LIBUSB_ERROR_NO_MEM));
  EXPECT_THAT(failure.advice[GWQ_ENGLISH], HasSubstr(failure.error_text));
}

// The second identity, which is not there either, does not hide it.
TEST_F(FailureTold, NoPermissionWithTheRuleToAdd) {
  ScriptedUsb usb;
  UsbDevice device = kFirst;
  device.open_result = LIBUSB_ERROR_ACCESS;
  usb.Plug(device);
  EXPECT_EQ(SetLength(), GWQ_NOT_OPENED);
  const GwqFailure failure = LastFailure();
  EXPECT_EQ(failure.step, GWQ_STEP_PERMISSION);
  EXPECT_EQ(failure.error_source, GWQ_ERROR_LIBUSB);
  EXPECT_EQ(failure.error, LIBUSB_ERROR_ACCESS);
  EXPECT_EQ(failure.bus, 3);
  EXPECT_EQ(failure.address, 17);
  EXPECT_EQ(failure.vendor, kFirst.vid);
  EXPECT_EQ(failure.product, kFirst.pid);
  EXPECT_STREQ(failure.port_path, "3-1.4.2");
  EXPECT_THAT(failure.advice[GWQ_ENGLISH], HasSubstr("/dev/bus/usb/003/017: install the udev rule"));
  EXPECT_THAT(failure.advice[GWQ_CHINESE], HasSubstr("/dev/bus/usb/003/017：请安装 udev 规则"));
}

TEST_F(FailureTold, DeepestPortPathFits) {
  ScriptedUsb usb;
  UsbDevice device = kFirst;
  device.open_result = LIBUSB_ERROR_IO;
  device.bus = 255;
  device.ports = {255, 254, 253, 252, 251, 250, 249};
  usb.Plug(device);
  EXPECT_EQ(SetLength(), GWQ_NOT_OPENED);
  EXPECT_STREQ(LastFailure().port_path, "255-255.254.253.252.251.250.249");
  EXPECT_EQ(LastFailure().step, GWQ_STEP_OPEN);
}

TEST_F(FailureTold, DeviceThatVanishesWhileItIsOpened) {
  ScriptedUsb usb;
  UsbDevice device = kFirst;
  device.open_result = LIBUSB_ERROR_NO_DEVICE;
  usb.Plug(device);
  EXPECT_EQ(SetLength(), GWQ_NOT_OPENED);
  EXPECT_EQ(LastFailure().step, GWQ_STEP_FIND);
  EXPECT_THAT(LastFailure().advice[GWQ_ENGLISH], HasSubstr("vanished"));
}

TEST_F(FailureTold, DeviceThatAnotherProgramHolds) {
  ScriptedUsb usb;
  UsbDevice device = kFirst;
  device.claim_result = LIBUSB_ERROR_BUSY;
  usb.Plug(device);
  EXPECT_EQ(SetLength(), GWQ_NOT_OPENED);
  const GwqFailure failure = LastFailure();
  EXPECT_EQ(failure.step, GWQ_STEP_CLAIM);
  EXPECT_EQ(failure.error, LIBUSB_ERROR_BUSY);
  EXPECT_EQ(failure.kernel_driver, 0);
  EXPECT_EQ(failure.holder, 0) << "there is no such device file";
  EXPECT_THAT(failure.advice[GWQ_ENGLISH], StartsWith("Another program holds the device"));
}

TEST_F(FailureTold, KernelDriverThatCannotBeDetached) {
  ScriptedUsb usb;
  UsbDevice device = kFirst;
  device.driver_active = 1;
  device.detach_result = LIBUSB_ERROR_NOT_SUPPORTED;
  device.claim_result = LIBUSB_ERROR_BUSY;
  usb.Plug(device);
  EXPECT_EQ(SetLength(), GWQ_NOT_OPENED);
  const GwqFailure failure = LastFailure();
  EXPECT_EQ(failure.step, GWQ_STEP_CLAIM);
  EXPECT_EQ(failure.error, LIBUSB_ERROR_NOT_SUPPORTED);
  EXPECT_EQ(failure.kernel_driver, 1);
  EXPECT_THAT(failure.advice[GWQ_ENGLISH], StartsWith("The kernel's driver could not be detached"));
  EXPECT_THAT(failure.advice[GWQ_CHINESE], StartsWith("无法从终端分离内核驱动"));
}

TEST_F(FailureTold, SecondIdentityThatFailsIsTheDeviceTold) {
  ScriptedUsb usb;
  usb.Plug({.vid = kUsbIdentities[1].vid,
            .pid = kUsbIdentities[1].pid,
            .claim_result = LIBUSB_ERROR_BUSY,
            .address = 9});
  EXPECT_EQ(SetLength(), GWQ_NOT_OPENED);
  EXPECT_EQ(LastFailure().step, GWQ_STEP_CLAIM);
  EXPECT_EQ(LastFailure().product, kUsbIdentities[1].pid);
  EXPECT_EQ(LastFailure().address, 9);
}

TEST_F(FailureTold, UnitThatDoesNotAnswerIsToldWithItsPlace) {
  ScriptedUsb usb;
  usb.Plug(kFirst);
  EXPECT_EQ(GWQ_ResetKey(0, kBaud), GWQ_READ_FAILED);
  const GwqFailure failure = LastFailure();
  EXPECT_STREQ(failure.function, "GWQ_ResetKey");
  EXPECT_EQ(failure.step, GWQ_STEP_WAIT);
  EXPECT_EQ(failure.error, 0);
  EXPECT_STREQ(failure.port_path, "3-1.4.2");
  EXPECT_STREQ(failure.advice[GWQ_ENGLISH], GwqStatusRemedyOf("GWQ_ResetKey", -11, GWQ_ENGLISH));
}

TEST_F(FailureTold, UnitThatIsUnpluggedWhileItIsWaitedFor) {
  ScriptedUsb usb;
  usb.Plug(kFirst);
  usb.OnTransfer([&usb](const Transfer& transfer) {
    if (!transfer.in) usb.OnTransfer([&usb](const Transfer&) { usb.Unplug(); });
  });
  EXPECT_EQ(GWQ_ResetKey(0, kBaud), GWQ_READ_FAILED);
  EXPECT_EQ(LastFailure().step, GWQ_STEP_WAIT);
  EXPECT_EQ(LastFailure().error, LIBUSB_ERROR_NO_DEVICE);
  EXPECT_THAT(LastFailure().advice[GWQ_ENGLISH], HasSubstr(libusb_strerror(LIBUSB_ERROR_NO_DEVICE)));
}

// The engine counts a failed transfer as sent and waits for the answer; the transfer is the cause.
TEST_F(FailureTold, CommandThatIsNotTakenIsTheCauseOfTheMissingAnswer) {
  ScriptedUsb usb;
  usb.Plug(kFirst);
  for (int attempt = 0; attempt < 5; ++attempt) usb.NextOutMoves(0, LIBUSB_ERROR_PIPE);
  EXPECT_EQ(GWQ_ResetKey(0, kBaud), GWQ_READ_FAILED);
  EXPECT_EQ(LastFailure().step, GWQ_STEP_SEND);
  EXPECT_EQ(LastFailure().error, LIBUSB_ERROR_PIPE);
}

TEST_F(FailureTold, RefusalIsAnAnswerAndTheDrainBeforeItIsForgotten) {
  ScriptedUsb usb;
  usb.Plug(kFirst).ExpectCommand("\x1BR\r\n").AnswerReport("\x15");
  EXPECT_EQ(GWQ_ResetKey(0, kBaud), GWQ_REFUSED);
  EXPECT_EQ(LastFailure().step, GWQ_STEP_ANSWER);
  EXPECT_EQ(LastFailure().error, 0);
}

TEST_F(FailureTold, StatusWordOfThePadIsAFailure) {
  ScriptedUsb usb;
  std::array<unsigned char, 64> frame{};
  unsigned char body[] = {0x12, 0x34};
  const int length = PackData(body, 2, frame.data());
  ASSERT_GT(length, 0);
  usb.Plug(kFirst);
  usb.OnTransfer([&](const Transfer& transfer) {
    if (!transfer.in) usb.Answer(Bytes(frame.begin(), frame.begin() + length));
  });
  int type = 0;
  const int status = PN_GetEnType(0, nullptr, kBaud, &type);
  ASSERT_GT(status, 0);
  EXPECT_EQ(LastFailure().status, status);
  EXPECT_EQ(LastFailure().step, GWQ_STEP_ANSWER);
}

// The screen is closed after the failure, and this closing fails as well.
TEST_F(FailureTold, CleaningUpDoesNotHideTheCause) {
  ScriptedUsb usb;
  usb.Plug(kFirst);
  int outs = 0;
  usb.OnTransfer([&](const Transfer& transfer) {
    if (!transfer.in && ++outs == 3) usb.Unplug();
  });
  unsigned key = 0;
  EXPECT_EQ(GWQ_StartInfo(0, kBaud, 1, "text", &key), GWQ_READ_FAILED);
  EXPECT_STREQ(LastFailure().function, "GWQ_StartInfo");
  EXPECT_EQ(LastFailure().step, GWQ_STEP_SEND);
  EXPECT_EQ(LastFailure().error, LIBUSB_ERROR_NO_DEVICE);
}

TEST_F(FailureTold, FailureThatACallOvercomesIsNotTold) {
  ScriptedUsb usb;
  usb.Plug(kFirst);
  for (int attempt = 0; attempt < 5; ++attempt) usb.NextOutMoves(0, LIBUSB_ERROR_PIPE);  // the card
  usb.OnTransfer([&](const Transfer& transfer) {
    if (!transfer.in && transfer.index == 6) usb.Answer("B1F");
  });
  unsigned rating = 0;
  EXPECT_EQ(GWQ_StartEvaluator(0, kBaud, "name", "1", 1, nullptr, 5, &rating), GWQ_OK);
  EXPECT_TRUE(IsZero(LastFailure()));
}

// The library has a table of its own.
TEST(Remedy, IsThatOfTheHeaderForEveryStatusAndFunction) {
  const auto compare = [](const char* function) {
    for (int status = -420; status <= 3; ++status) {
      for (const int language : {GWQ_ENGLISH, GWQ_CHINESE}) {
        EXPECT_STREQ(RemedyOf(function, status, language), GwqStatusRemedyOf(function, status, language))
            << function << ' ' << status;
      }
    }
  };
  const auto compare_each = [&compare](const auto&... rows) { (compare(rows.name), ...); };
  std::apply(compare_each, kTerminalCalls);
  std::apply(compare_each, kFileCalls);
  std::apply(compare_each, kTransactionCalls);
  for (const char* const function :
       {"GetBase46FromFile", "WriteBase64ToFile", "PN_GetPin GetPinblockShowString", ""}) {
    compare(function);
  }
}

TEST_F(FailureTold, MissingFileWithTheSystemsError) {
  ScriptedUsb usb;
  usb.Plug(kFirst);
  EXPECT_EQ(MP_DownHeadFile(nullptr, nullptr, kBaud, "/nowhere/face.jpg", nullptr), GWQ_NO_FILE);
  const GwqFailure failure = LastFailure();
  EXPECT_EQ(failure.step, GWQ_STEP_LOCAL_FILE);
  EXPECT_EQ(failure.bus, 0) << "it is not about the terminal";
  EXPECT_EQ(failure.error_source, GWQ_ERROR_SYSTEM);
  EXPECT_EQ(failure.error, ENOENT);
  EXPECT_STREQ(failure.error_text, "No such file or directory");
  EXPECT_THAT(failure.advice[GWQ_ENGLISH], HasSubstr("No such file or directory"));
}

TEST_F(FailureTold, DirectoryInPlaceOfAFile) {
  EXPECT_EQ(HIDDownLoad("/tmp", 4), GWQ_NO_LOCAL_FILE);
  EXPECT_EQ(LastFailure().step, GWQ_STEP_LOCAL_FILE);
  EXPECT_EQ(LastFailure().error, EISDIR);
}

TEST_F(FailureTold, FileThatCannotBeWrittenWhereAPullEnds) {
  ScriptedUsb usb;
  usb.Plug(kFirst).Answer(PaddedToReports(BytesOf(std::string_view("\x02\x01\x00\x00\x00\x00", 6))));
  char command[] = "\x1B[0PULLFILE\x02/tmp/hw.png\x03";
  char path[] = "/nowhere/hw.png";
  EXPECT_EQ(TransProcHW(sizeof command - 1, command, 3000, path), GWQ_READ_FAILED);
  EXPECT_EQ(LastFailure().step, GWQ_STEP_LOCAL_FILE);
  EXPECT_EQ(LastFailure().error, ENOENT);
}

TEST_F(FailureTold, SerialPortThatIsNotThere) {
  EXPECT_EQ(GWQ_SetPinLen(4321, kBaud, 6), GWQ_NOT_OPENED);
  const GwqFailure failure = LastFailure();
  EXPECT_EQ(failure.step, GWQ_STEP_FIND);
  EXPECT_EQ(failure.error_source, GWQ_ERROR_SYSTEM);
  EXPECT_EQ(failure.error, ENOENT);
  EXPECT_STREQ(failure.tty, "/dev/ttyS4320");
  EXPECT_THAT(failure.advice[GWQ_ENGLISH], StartsWith("/dev/ttyS4320 is not there"));
}

TEST_F(FailureTold, SerialPortThatThisUserMayNotOpen) {
  const TempDir directory;
  const std::string path = directory / "line";
  WriteFile(path, "");
  ASSERT_EQ(chmod(directory.Path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(path.c_str(), 0400), 0);
  const AsOrdinaryUser user;
  if (!user.Holds()) GTEST_SKIP() << "root may open everything";
  EXPECT_EQ(ICC_OpenLinuxCom(path.c_str(), kBaud), GWQ_NOT_OPENED);
  EXPECT_EQ(LastFailure().step, GWQ_STEP_PERMISSION);
  EXPECT_EQ(LastFailure().error, EACCES);
  EXPECT_THAT(LastFailure().advice[GWQ_ENGLISH], HasSubstr("dialout"));
}

TEST_F(FailureTold, FileInPlaceOfASerialPort) {
  const TempDir directory;
  WriteFile(directory / "line", "");
  EXPECT_EQ(ICC_OpenLinuxCom((directory / "line").c_str(), kBaud), GWQ_LINK_UNUSABLE);
  EXPECT_EQ(LastFailure().step, GWQ_STEP_OPEN);
  EXPECT_EQ(LastFailure().error, ENOTTY);
}

TEST_F(FailureTold, SerialLineThatFailsWhileItIsReadOrWritten) {
  FakeTty tty("/dev/ttyS41");
  tty.FailReads();
  EXPECT_EQ(GWQ_ResetKey(42, kBaud), GWQ_READ_FAILED);
  EXPECT_EQ(LastFailure().step, GWQ_STEP_WAIT);
  EXPECT_EQ(LastFailure().error_source, GWQ_ERROR_SYSTEM);
  EXPECT_STREQ(LastFailure().tty, "/dev/ttyS41");
  tty.NextWritesMove({-1});
  EXPECT_EQ(GWQ_SetPinLen(42, kBaud, 6), GWQ_SEND_FAILED);
  EXPECT_EQ(LastFailure().step, GWQ_STEP_SEND);
  EXPECT_NE(LastFailure().error, 0);
}

TEST_F(FailureTold, LinkThatIsNotOpenIsAnArgument) {
  unsigned char byte = 0;
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, 1, nullptr), GWQ_LINK_BAD_ARGUMENT);
  EXPECT_STREQ(LastFailure().function, "ICC_ReadLinuxCom");
  EXPECT_EQ(LastFailure().step, GWQ_STEP_ARGUMENT);
  EXPECT_EQ(ICC_WriteLinuxHid(&byte, 1), GWQ_LINK_NO_DEVICE);
  EXPECT_EQ(LastFailure().step, GWQ_STEP_ARGUMENT);
}

// The counts of a link are no failures.
TEST_F(FailureTold, LinkFunctionsCountAsCalls) {
  ScriptedUsb usb;
  usb.Plug(kFirst);
  EXPECT_EQ(ICC_OpenLinuxHid(1, 2), GWQ_LINK_NO_DEVICE);
  EXPECT_STREQ(LastFailure().function, "ICC_OpenLinuxHid");
  ASSERT_EQ(ICC_OpenLinuxHid(kFirst.vid, kFirst.pid), GWQ_OK);
  std::array<unsigned char, 1024> report{};
  EXPECT_EQ(ICC_WriteLinuxHid(report.data(), 1024), 1024);
  EXPECT_TRUE(IsZero(LastFailure()));
  ICC_CloseLinuxHid();
}

// ------------------------------------------------------------------ calls within calls

int g_asked = 0;

int AsksAndAccepts(unsigned char*, int) {
  ++g_asked;
  EXPECT_EQ(SetLength(15), GWQ_BAD_ARGUMENT);
  return 0;
}

TEST_F(FailureTold, CallInAPredicateIsPartOfTheOuterOne) {
  ScriptedUsb usb;
  usb.Plug(kFirst).Answer(kDone);
  std::array<char, 2048> answer{};
  int length = 64;
  char command[] = "x";
  EXPECT_EQ(TransProcByEnd(0, kBaud, command, 1, answer.data(), &length, &AsksAndAccepts, 1000), GWQ_OK);
  EXPECT_EQ(g_asked, 1);
  EXPECT_TRUE(IsZero(LastFailure()));
}

std::jmp_buf g_outside;

int JumpsOut(unsigned char*, int) {
  std::longjmp(g_outside, 1);  // NOLINT: what a host may do
}

TEST_F(FailureTold, CallAfterAJumpOutOfAPredicateCountsAgain) {
  ScriptedUsb usb;
  usb.Plug(kFirst).Answer(kDone);
  std::array<char, 2048> answer{};
  int length = 64;
  char command[] = "x";
  if (setjmp(g_outside) == 0) {
    TransProcByEnd(0, kBaud, command, 1, answer.data(), &length, &JumpsOut, 1000);
    FAIL() << "came back";
  }
  EXPECT_EQ(SetLength(15), GWQ_BAD_ARGUMENT);
  EXPECT_STREQ(LastFailure().function, "GWQ_SetPinLen");
  EXPECT_EQ(SetLength(), GWQ_OK) << "closes what the jump left open";
}

// ------------------------------------------------------------------ threads

TEST_F(FailureTold, EachThreadHasItsOwn) {
  const ScriptedUsb usb;
  EXPECT_EQ(SetLength(15), GWQ_BAD_ARGUMENT);
  std::thread([] {
    EXPECT_TRUE(IsZero(LastFailure()));
    EXPECT_EQ(GWQ_ResetKey(0, kBaud), GWQ_NOT_OPENED);
    EXPECT_STREQ(LastFailure().function, "GWQ_ResetKey");
  }).join();
  EXPECT_STREQ(LastFailure().function, "GWQ_SetPinLen");
}

TEST_F(FailureTold, ManyThreadsFailAndAskAtOnce) {
  const ScriptedUsb usb;
  constexpr int kCalls = 200;
  const auto run = [](int port, int step) {
    for (int i = 0; i < kCalls; ++i) {
      EXPECT_EQ(GWQ_ResetKey(port, kBaud), GWQ_NOT_OPENED);
      EXPECT_EQ(LastFailure().step, step);
      EXPECT_EQ(LastFailure().tty[0] != '\0', port > 0);
    }
  };
  std::thread on_usb(run, 0, GWQ_STEP_FIND);
  std::thread on_serial(run, 4321, GWQ_STEP_FIND);
  on_usb.join();
  on_serial.join();
}

}  // namespace
}  // namespace gwq::test
