// SPDX-License-Identifier: MIT
// Drains that last as long as the host says: exact times, on both links.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libusb-1.0/libusb.h>

#include <gwq/diag/log.h>
#include <gwq/extra.h>
#include <gwq/frame/load.h>
#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include <gwq/links/serial.h>
#include "frame/internal/ask.h"
#include "support/fake_tty.h"
#include "support/log_capture.h"
#include "support/monotonic_clock.h"
#include "support/scripted_usb.h"
#include "support/temp_dir.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

constexpr Endpoint kUsb{.port = 0, .baud = 9600};
constexpr Endpoint kSerial{.port = 42, .baud = 9600};
constexpr char kDevice[] = "/dev/ttyS41";

std::vector<std::string> TransfersIn(const ScriptedUsb& usb) {
  std::vector<std::string> calls = usb.Calls();
  std::erase_if(calls, [](const std::string& call) { return !call.starts_with("in "); });
  return calls;
}

class DrainFor : public testing::Test {
 protected:
  DrainFor() {
    ResetClock();
    SetTime(1'700'000'000);
  }
  ~DrainFor() override { GWQ_SetDrainMs(0); }
  DrainFor(const DrainFor&) = delete;
  DrainFor& operator=(const DrainFor&) = delete;

  // Drains for `ms` of silence; the time that it takes.
  static std::int64_t Took(Endpoint endpoint, int ms, int status = GWQ_READ_FAILED) {
    EXPECT_EQ(GWQ_SetDrainMs(ms), 0);
    const std::int64_t start = MonotonicNowMs();
    EXPECT_EQ(Drain(endpoint), status);
    return MonotonicNowMs() - start;
  }
};

// ------------------------------------------------------------------ the setting

TEST_F(DrainFor, AnythingOutOfRangeIsRefusedAndChangesNothing) {
  ScriptedUsb usb;
  usb.PlugTerminal();
  EXPECT_EQ(GWQ_SetDrainMs(1), 0);
  EXPECT_EQ(GWQ_SetDrainMs(1000), 0);
  EXPECT_EQ(GWQ_SetDrainMs(30), 0);
  EXPECT_EQ(GWQ_SetDrainMs(-1), GWQ_BAD_ARGUMENT);
  EXPECT_EQ(GWQ_SetDrainMs(1001), GWQ_BAD_ARGUMENT);
  Drain(kUsb);
  EXPECT_THAT(TransfersIn(usb), ElementsAre("in 0x81 1024 30ms"));
}

TEST_F(DrainFor, ZeroIsUntilTheClocksSecondChanges) {
  ScriptedUsb usb;
  usb.PlugTerminal();
  GWQ_SetDrainMs(20);
  EXPECT_EQ(Took(kUsb, 0), 1000);
  EXPECT_THAT(TransfersIn(usb), testing::AllOf(testing::SizeIs(5), testing::Each("in 0x81 1024 200ms")));
}

struct IniCase {
  const char* name;
  const char* content;
  int ms;  // 0 for as without it
};

void PrintTo(const IniCase& ini, std::ostream* out) {
  *out << ini.name;
}

class DrainIni : public DrainFor, public testing::WithParamInterface<IniCase> {};

TEST_P(DrainIni, IsReadWhenTheLibraryIsLoaded) {
  const std::filesystem::path ini = ModuleDirectory() / "GWQ_LOG.ini";
  WriteFile(ini, GetParam().content);
  test_init();
  std::filesystem::remove(ini);
  ICC_UINIT_LIBUSB();
  SetDebugFlag(0);
  ScriptedUsb usb;
  usb.PlugTerminal();
  const std::int64_t start = NowMs();
  EXPECT_EQ(Drain(kUsb), GWQ_READ_FAILED);
  EXPECT_EQ(NowMs() - start, GetParam().ms == 0 ? 1000 : GetParam().ms);
}

INSTANTIATE_TEST_SUITE_P(
    Each, DrainIni,
    testing::Values(IniCase{"Set", "[Gwq]\nLog=0\nDrainMs=20\n", 20},
                    IniCase{"Before", "[Gwq]\nDrainMs = 1 \nLog=0\n", 1},
                    IniCase{"SectionOrder", "[Other]\nDrainMs=7\n[Gwq]\nDrainMs=999\n", 999},
                    IniCase{"Longest", "[Gwq]\nDrainMs=1000\n", 1000},
                    IniCase{"OtherSection", "[Gwq]\nLog=0\n[Other]\nDrainMs=20\n", 0},
                    IniCase{"None", "[Gwq]\nLog=0\n", 0}, IniCase{"Zero", "[Gwq]\nDrainMs=0\n", 0},
                    IniCase{"TooLong", "[Gwq]\nDrainMs=1001\n", 0},
                    IniCase{"Negative", "[Gwq]\nDrainMs=-5\n", 0},
                    IniCase{"Huge", "[Gwq]\nDrainMs=4294967316\n", 0},
                    IniCase{"WithUnit", "[Gwq]\nDrainMs=20 ms\n", 0},
                    IniCase{"Fraction", "[Gwq]\nDrainMs=20.5\n", 0},
                    IniCase{"Word", "[Gwq]\nDrainMs=short\n", 0}, IniCase{"Empty", "[Gwq]\nDrainMs=\n", 0}),
    [](const auto& each) { return std::string(each.param.name); });

// ------------------------------------------------------------------ USB

class DrainForOnUsb : public DrainFor {
 protected:
  DrainForOnUsb() { usb_.PlugTerminal(); }

  // Brings `text` by each of the first `count` transfers in, `ms` after its beginning.
  void Arrives(int count, int ms, std::string_view text = "stale") {
    for (int i = 0; i < count; ++i) usb_.AnswerReport(text);
    usb_.OnTransfer([count, ms](const Transfer& transfer) {
      if (transfer.in && transfer.index < count) AdvanceMs(ms);
    });
  }

  ScriptedUsb usb_;
};

TEST_F(DrainForOnUsb, SilenceEndsItWithTheStatusOfATimeOut) {
  const LogCapture log;
  EXPECT_EQ(Took(kUsb, 20), 20);
  EXPECT_THAT(usb_.Calls(), ElementsAre("list", StartsWith("open "), "driver_active 0", "claim 0",
                                        "in 0x81 1024 20ms", "close", "free_list"));
  EXPECT_THAT(log.Messages(),
              ElementsAre(" TransProcOnlyRead  nPort=0", StartsWith("\nOpen Device:"),
                          "libusb_get_device_list:1", "find target device!!", "libusb_open success ,nRet=0",
                          "driver_active  Cnt1=0\n", "libusb_claim_interface  nRet=0\n",
                          "Open device success!  End\n", StartsWith("ICC_OpenTransPort: PID="),
                          "\nClose Device Begin", "Close Device Success! End\n"));
}

TEST_F(DrainForOnUsb, OneMillisecondIsEnough) {
  EXPECT_EQ(Took(kUsb, 1), 1);
  EXPECT_THAT(TransfersIn(usb_), ElementsAre("in 0x81 1024 1ms"));
}

TEST_F(DrainForOnUsb, AThousandAreWaitedForInPiecesThatACancelCanEnd) {
  EXPECT_EQ(Took(kUsb, 1000), 1000);
  EXPECT_THAT(TransfersIn(usb_), testing::AllOf(testing::SizeIs(5), testing::Each("in 0x81 1024 200ms")));
}

TEST_F(DrainForOnUsb, EachByteBeginsTheSilenceFromItsStart) {
  Arrives(3, 15);
  EXPECT_EQ(Took(kUsb, 20), 3 * 15 + 20);
  EXPECT_THAT(TransfersIn(usb_), testing::AllOf(testing::SizeIs(4), testing::Each("in 0x81 1024 20ms")));
}

TEST_F(DrainForOnUsb, AnEmptyReportIsSilence) {
  usb_.AnswerWithResult({}, 0);
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.index == 0) AdvanceMs(7);
  });
  EXPECT_EQ(Took(kUsb, 20), 20);
  EXPECT_THAT(TransfersIn(usb_), ElementsAre("in 0x81 1024 20ms", "in 0x81 1024 13ms"));
}

TEST_F(DrainForOnUsb, StaleAnswersAreThrownAwayAlsoBehindAnEndOfAnswer) {
  usb_.Answer("\x02old\x03").Answer("F").AnswerReport("a report").Answer("G");
  EXPECT_EQ(Took(kUsb, 20), 20);
  EXPECT_TRUE(usb_.Finished());

  usb_.ExpectCommand("new").Answer("\x02new\x03");
  char answer[64 + 1024] = {};
  int length = 64;
  char command[] = "new";
  EXPECT_EQ(TransProc(0, 9600, command, 3, answer, &length, 1000), 0);
  EXPECT_STREQ(answer, "\x02new\x03");
}

TEST_F(DrainForOnUsb, BytesThatKeepComingEndItAfterASecond) {
  Arrives(100, 15);
  EXPECT_EQ(Took(kUsb, 20), 67 * 15) << "the report on its way at a second is the last";
  EXPECT_EQ(TransfersIn(usb_).back(), "in 0x81 1024 10ms");
  while (!usb_.Finished()) Took(kUsb, 20);
}

TEST_F(DrainForOnUsb, AClockThatIsSetDoesNotMoveTheEnd) {
  usb_.OnTransfer([](const Transfer&) { SetBackBy(3600); });
  EXPECT_EQ(Took(kUsb, 20), 20);
  EXPECT_EQ(usb_.Count("in "), 1);
}

TEST_F(DrainForOnUsb, ACancelEndsIt) {
  usb_.OnTransfer([](const Transfer&) { CancelRead(); });
  EXPECT_EQ(Took(kUsb, 1000, GWQ_CANCELLED), 200);
  EXPECT_EQ(Took(kUsb, 20, GWQ_CANCELLED), 20);
}

TEST_F(DrainForOnUsb, TransfersThatFailAtOnceDoNotShortenItAndDoNotSpin) {
  usb_.OnTransfer([this](const Transfer&) { usb_.Unplug(); });
  EXPECT_EQ(Took(kUsb, 30), 30);
  EXPECT_THAT(SleptMs(), ElementsAre(20, 10));
}

TEST_F(DrainFor, NoDeviceIsNotOpenedAtOnce) {
  const ScriptedUsb usb;
  EXPECT_EQ(Took(kUsb, 20, GWQ_NOT_OPENED), 0);
  EXPECT_EQ(DrainFirst(kUsb), GWQ_NOT_OPENED);
}

TEST_F(DrainForOnUsb, ACallLogsTheStatusOfATimeOutAndGoesOn) {
  usb_.Answer("\x02old\x03");
  GWQ_SetDrainMs(20);
  const LogCapture log;
  EXPECT_EQ(DrainFirst(kUsb, DrainLog::kLogged), GWQ_OK);
  EXPECT_EQ(log.Messages().back(), "TransProcOnlyRead iRet=-11");
}

TEST_F(DrainForOnUsb, AHostsOwnReadTakesItsTimeAsBefore) {
  GWQ_SetDrainMs(20);
  char answer[64 + 1024] = {};
  int length = 64;
  const std::int64_t start = NowMs();
  EXPECT_EQ(TransProcOnlyRead(0, 9600, answer, &length, 100), GWQ_READ_FAILED);
  EXPECT_EQ(NowMs() - start, 1000);
}

TEST_F(DrainForOnUsb, APredicateMayDrainOnTheOpenLink) {
  usb_.Answer("first").Answer("stale");
  GWQ_SetDrainMs(20);
  char answer[64 + 1024] = {};
  int length = 64;
  char command[] = "x";
  const auto drains_once = [](unsigned char*, int count) {
    EXPECT_EQ(count, 5);
    EXPECT_EQ(Drain(kUsb), GWQ_READ_FAILED);
    return 0;
  };
  EXPECT_EQ(TransProcByEnd(0, 9600, command, 1, answer, &length, drains_once, 1000), 0);
  EXPECT_STREQ(answer, "first");
  EXPECT_TRUE(usb_.Finished());
}

// ------------------------------------------------------------------ serial

class DrainForOnSerial : public DrainFor {
 protected:
  // The device speaks by each of the first `count` polls, `ms` after its beginning.
  void Arrives(int count, int ms, std::string_view text = "stale") {
    tty_.OnPoll([this, count, ms, text](int) {
      if (polls_++ >= count) return;
      AdvanceMs(ms);
      tty_.Send(text);
    });
  }

  int polls_ = 0;
  ScriptedUsb usb_;
  FakeTty tty_{kDevice};
};

TEST_F(DrainForOnSerial, SilenceEndsItWithTheStatusOfATimeOut) {
  const LogCapture log;
  EXPECT_EQ(Took(kSerial, 20), 20);
  EXPECT_THAT(tty_.Calls(), ElementsAre("open /dev/ttyS41 2", "TCGETA", "TCSETAF", "TCSETAF", "close"));
  const std::vector<std::string> silent = log.Messages();
  EXPECT_EQ(Took(kSerial, 0), 1000);
  std::vector<std::string> twice = silent;
  twice.insert(twice.end(), silent.begin(), silent.end());
  EXPECT_EQ(log.Messages(), twice) << "the same lines as without it";
}

TEST_F(DrainForOnSerial, TheLinesOwnTenthOfASecondIsNotWaited) {
  EXPECT_EQ(Took(kSerial, 1), 1);
}

TEST_F(DrainForOnSerial, AThousandAreWaitedForInPiecesThatACancelCanEnd) {
  std::vector<int> waits;
  tty_.OnPoll([&waits](int timeout_ms) { waits.push_back(timeout_ms); });
  EXPECT_EQ(Took(kSerial, 1000), 1000);
  EXPECT_THAT(waits, testing::AllOf(testing::SizeIs(5), testing::Each(200)));
}

TEST_F(DrainForOnSerial, EachByteBeginsTheSilenceFromItsStart) {
  Arrives(3, 15);
  EXPECT_EQ(Took(kSerial, 20), 3 * 15 + 20);
  EXPECT_EQ(tty_.Waiting(), 0);
}

TEST_F(DrainForOnSerial, StaleAnswersAreThrownAwayHoweverLong) {
  const std::string text(3000, 'F');
  Arrives(1, 0, text);
  EXPECT_EQ(Took(kSerial, 20), 20);
  EXPECT_EQ(tty_.Waiting(), 0);
}

TEST_F(DrainForOnSerial, BytesThatKeepComingEndItAfterASecond) {
  Arrives(1000, 10);
  EXPECT_EQ(Took(kSerial, 20), 1000);
}

TEST_F(DrainForOnSerial, ACancelIsAFailedReadAsInEveryExchangeOnASerialPort) {
  tty_.OnPoll([](int) { CancelRead(); });
  EXPECT_EQ(Took(kSerial, 1000), 200);
}

TEST_F(DrainForOnSerial, ALineThatFailsEndsItAtOnce) {
  tty_.FailReads();
  EXPECT_EQ(Took(kSerial, 20), 0);
}

TEST_F(DrainForOnSerial, APortThatDoesNotOpenIsNotOpened) {
  EXPECT_EQ(Took({.port = 100001, .baud = 9600}, 20, GWQ_NOT_OPENED), 0);
}

TEST_F(DrainForOnSerial, ALineThatHasHungUpDoesNotSpin) {
  tty_.OnPoll([this](int) { tty_.HangUp(); });
  EXPECT_EQ(Took(kSerial, 20), 20);
  EXPECT_THAT(SleptMs(), ElementsAre(20));
}

}  // namespace
}  // namespace gwq::test
