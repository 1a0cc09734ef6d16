// SPDX-License-Identifier: MIT
// The firmware's version, and closing what the terminal shows. Two threads: cancel_threads_test.cpp.
#include <gwq/screens/terminal_control.h>

#include "unit/screens/screens_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;

// ------------------------------------------------------------------ MP_GetFirmwareVersion

constexpr char kMark[] = "[MP_GetFirmwareVersion]2025.01.16 v02";

class FirmwareVersion : public FilesRig {
 protected:
  int Get() {
    for (GuardedBuffer* out : {&common_, &private_})
      std::fill_n(out->data(), out->size(), std::uint8_t{0x55});
    return MP_GetFirmwareVersion(nullptr, nullptr, 1, 2, common_.text(), private_.text());
  }
  void Answer(std::string_view answer, int empty = 0) {
    usb_.ExpectCommand(wire::kGetFirmwareVersion).Answer(answer, empty);
  }
  static void ExpectOutput(const GuardedBuffer& out, std::string_view text) {
    EXPECT_EQ(Readable(out.First(text.size() + 1)), Readable(Concat(BytesOf(text), {0})));
    EXPECT_EQ(out.Content()[text.size() + 1], 0x55) << "not one byte more";
  }
  [[nodiscard]] bool OutputsAreUntouched() const { return common_.AllAre(0x55) && private_.AllAre(0x55); }

  GuardedBuffer common_{2046, 0x55};
  GuardedBuffer private_{2046, 0x55};
};

TEST_F(FirmwareVersion, IsCutAtItsBar) {
  Answer(wire::kFirmwareVersion, 3);
  const LogCapture log;
  EXPECT_EQ(Get(), 0);
  ExpectOutput(common_, "V1.2");
  ExpectOutput(private_, "P20231114");
  EXPECT_THAT(
      OwnMessages(log),
      ElementsAre(kMark, "TransProc nRet:0", "szRes=\x02V1.2|P20231114\x03", "strlen(szRes)=16", "resLen=16",
                  "szVersionTemp=V1.2|P20231114", "nVersionLength=14", "nIndex=4", "szCommonVersion = V1.2",
                  "szPrivateVersion = P20231114", "[MP_GetFirmwareVersion] Success End"));
}

struct Version {
  std::string_view answer;
  std::string_view common_part;
  std::string_view private_part;
};

std::string NameOf(const Version& each) {
  return Readable(BytesOf(each.answer));
}

class FirmwareVersions : public FirmwareVersion, public testing::WithParamInterface<Version> {};

TEST_P(FirmwareVersions, OfTwoPartsAreTaken) {
  Answer(GetParam().answer);
  EXPECT_EQ(Get(), 0);
  ExpectOutput(common_, GetParam().common_part);
  ExpectOutput(private_, GetParam().private_part);
}

INSTANTIATE_TEST_SUITE_P(All, FirmwareVersions,
                         testing::Values(Version{"\x02"
                                                 "a|b\x03",
                                                 "a", "b"},
                                         Version{"\x02"
                                                 "a|b|c\x03",
                                                 "a", "b|c"},
                                         Version{"\x02"
                                                 "a||\x03",
                                                 "a", "|"},
                                         Version{"\x02U\x03|P\x03", "U\x03", "P"},
                                         // As far behind the refusal as 3 is in the alphabet.
                                         Version{"\x02X1.2|P3\x03", "X1.2", "P3"},
                                         Version{"\x02%s|%n\x03", "%s", "%n"}));

struct NoVersion {
  std::string_view answer;
  int index;
};

std::string NameOf(const NoVersion& each) {
  return Readable(BytesOf(each.answer));
}

class NoFirmwareVersions : public FirmwareVersion, public testing::WithParamInterface<NoVersion> {};

TEST_P(NoFirmwareVersions, AreMinus14) {
  Answer(GetParam().answer);
  const LogCapture log;
  EXPECT_EQ(Get(), -14);
  EXPECT_TRUE(OutputsAreUntouched());
  const auto own = OwnMessages(log);
  EXPECT_EQ(own.size(), 9U);
  EXPECT_THAT(
      std::vector(own.end() - 2, own.end()),
      ElementsAre(std::string("nIndex=").append(std::to_string(GetParam().index)), "nIndex Error iRet:-14"));
}

INSTANTIATE_TEST_SUITE_P(All, NoFirmwareVersions,
                         testing::Values(NoVersion{"\x02V1.2\x03", -1}, NoVersion{"\x02|P3\x03", 0},
                                         NoVersion{"\x02V1.2|\x03", 4}, NoVersion{"\x02|\x03", 0},
                                         NoVersion{wire::kRefused, -1}, NoVersion{"\x02\x03", -1},
                                         NoVersion{"\x03", -1}, NoVersion{"|\x03", -1},
                                         NoVersion{"|V1.2P3\x03", -1}));

TEST_F(FirmwareVersion, AnswerOfAZeroReportIsMinus14) {
  usb_.ExpectCommand(wire::kGetFirmwareVersion).Answer(Bytes(1024, 0));
  EXPECT_EQ(Get(), -14);
  EXPECT_TRUE(OutputsAreUntouched());
}

TEST_F(FirmwareVersion, LongestAnswerIsTakenWhole) {
  usb_.ExpectCommand(wire::kGetFirmwareVersion).Answer(Concat(Bytes(1021, 'x'), BytesOf("|y")));
  usb_.Answer(Bytes(1024, 'y'));
  EXPECT_EQ(Get(), 0);
  ExpectOutput(common_, std::string(1020, 'x'));
  ExpectOutput(private_, std::string(1024, 'y'));
}

TEST_F(FirmwareVersion, SilenceIsMinus401AfterASecond) {
  usb_.ExpectCommand(wire::kGetFirmwareVersion);
  const LogCapture log;
  EXPECT_EQ(Get(), -401);
  EXPECT_EQ(Elapsed(), 2) << "more than 1 whole second";
  EXPECT_TRUE(OutputsAreUntouched());
  EXPECT_THAT(OwnMessages(log), ElementsAre(kMark, "TransProc nRet:-11", "ERR_TIMEOUT iRet:-401", "End"));
}

TEST_F(FirmwareVersion, AbsentTerminalIsMinus3) {
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(Get(), -3);
  EXPECT_THAT(OwnMessages(log), ElementsAre(kMark, "TransProc nRet:-3", "ERR_OPEN, End"));
}

TEST_F(FirmwareVersion, OtherFailuresAreMinus14) {
  usb_.ExpectCommand(wire::kGetFirmwareVersion).ExpectCommand(wire::kGetFirmwareVersion);
  FailSending(0);
  const LogCapture log;
  EXPECT_EQ(Get(), -14);
  CancelReading(2);
  EXPECT_EQ(Get(), -14);
  const char* end = "[MP_GetFirmwareVersion] Error End!";
  EXPECT_THAT(OwnMessages(log),
              ElementsAre(kMark, "TransProc nRet:-10", end, kMark, "TransProc nRet:-23", end));
  EXPECT_TRUE(OutputsAreUntouched());
}

TEST_F(FirmwareVersion, NothingIsDrained) {
  Answer(wire::kFirmwareVersion);
  EXPECT_EQ(Get(), 0);
  EXPECT_EQ(usb_.Count("in"), 1);
}

TEST_F(FirmwareVersion, OutputsMayBeNull) {
  Answer(wire::kFirmwareVersion);
  EXPECT_EQ(MP_GetFirmwareVersion(nullptr, nullptr, 0, 0, nullptr, nullptr), 0);
}

// ------------------------------------------------------------------ MP_CancelCurrentOperation

class CancelOperation : public FilesRig {
 protected:
  static int Cancel() { return MP_CancelCurrentOperation(nullptr, nullptr, 9600, 0); }
};

TEST_F(CancelOperation, ClosesTheProgramBetweenItsPauses) {
  usb_.ExpectCommand(wire::kCloseProgram).Answer(wire::kDone, 3);
  usb_.OnTransfer([](const Transfer&) { EXPECT_THAT(SleptMs(), ElementsAre(200, 300)); });
  const LogCapture log;
  EXPECT_EQ(Cancel(), 0);
  EXPECT_THAT(SleptMs(), ElementsAre(200, 300, 100));
  EXPECT_THAT(OwnMessages(log), ElementsAre("after CancelRead "));
  EXPECT_EQ(usb_.Count("in"), 4) << "nothing is drained";
}

TEST_F(CancelOperation, AnyAnswerIs0) {
  for (const std::string_view answer : {wire::kRefused, wire::kFailed, std::string_view("\x03")}) {
    usb_.ExpectCommand(wire::kCloseProgram).Answer(answer);
    EXPECT_EQ(Cancel(), 0);
  }
}

TEST_F(CancelOperation, LongAnswerIsReadUpTo4096Bytes) {
  usb_.ExpectCommand(wire::kCloseProgram);
  for (int i = 0; i < 3; ++i) usb_.Answer(Bytes(1024, 'x'));
  usb_.Answer(Bytes(1023, 'x')).Answer(Bytes(1024, 'x'));
  EXPECT_EQ(Cancel(), 0);
}

TEST_F(CancelOperation, SilenceIsMinus11AfterTwoSeconds) {
  usb_.ExpectCommand(wire::kCloseProgram);
  EXPECT_EQ(Cancel(), -11);
  EXPECT_EQ(Elapsed(), 3) << "begun half a second into the first; more than 2 whole seconds";
  EXPECT_EQ(SleptMs().back(), 100);
}

TEST_F(CancelOperation, FailuresAreTheExchanges) {
  usb_.ExpectCommand(wire::kCloseProgram);
  FailSending(0);
  EXPECT_EQ(Cancel(), -10);
  usb_.Unplug();
  EXPECT_EQ(Cancel(), -3);
  EXPECT_THAT(SleptMs(), ElementsAre(200, 300, 100, 200, 300, 100));
}

}  // namespace
}  // namespace gwq::test
