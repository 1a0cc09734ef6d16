// SPDX-License-Identifier: MIT
// The terminal's build date, and what follows from it.
#include <gwq/pinpad/counter.h>
#include "support/guarded_buffer.h"
#include "support/terminal_rig.h"
#include "wire/frames.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CounterVersion : public TerminalRig {
 protected:
  int GetDate(int port = 0) { return GWQ_GetVerBuildDate(port, '9', 9600, date_.text()); }

  // Exactly this text, no terminator behind it.
  void ExpectDate(std::string_view date) {
    EXPECT_EQ(date_.Content(), Concat(BytesOf(date), Bytes(9 - date.size(), 0x55)));
  }

  GuardedBuffer date_{9, 0x55};
};

TEST_F(CounterVersion, DateStandsBehindTheBar) {
  usb_.ExpectCommand(wire::kGetVersion).Answer(wire::kVersion20231114, 3);
  const LogCapture log;
  EXPECT_EQ(GetDate(), 0);
  ExpectDate("20231114");
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("-- GWQ_GetVerBuildDate --", "szData=V1.2|20231114", "VerBuildDate=20231114"));
  EXPECT_EQ(usb_.Count("in"), 4) << "no drain";
}

TEST_F(CounterVersion, PortIsIgnored) {
  for (const int port : {1, 42, -1}) {
    usb_.ExpectCommand(wire::kGetVersion).Answer(wire::kVersion20231114);
    EXPECT_EQ(GetDate(port), 0);
  }
}

TEST_F(CounterVersion, NullOutputIsRefusedBeforeAnythingIsSent) {
  const LogCapture log;
  EXPECT_EQ(GWQ_GetVerBuildDate(0, 0, 9600, nullptr), -1);
  EXPECT_THAT(log.Messages(), ElementsAre("-- GWQ_GetVerBuildDate --"));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(CounterVersion, UnknownCommandGivesMinus14) {
  usb_.ExpectCommand(wire::kGetVersion).Answer(wire::kUnknownCommand);
  const LogCapture log;
  EXPECT_EQ(GetDate(), -14);
  ExpectDate("");
  EXPECT_THAT(OwnMessages(log), ElementsAre("-- GWQ_GetVerBuildDate --"));
}

TEST_F(CounterVersion, SilenceGivesMinus11After2Seconds) {
  usb_.ExpectCommand(wire::kGetVersion);
  EXPECT_EQ(GetDate(), -11);
  EXPECT_EQ(Elapsed(), 3);
  ExpectDate("");
}

TEST_F(CounterVersion, AbsentTerminalGivesMinus3) {
  usb_.Unplug();
  EXPECT_EQ(GetDate(), -3);
  ExpectDate("");
}

struct VersionCase {
  const char* name;
  std::string answer;
  std::string date;
};

class CounterDate : public CounterVersion, public testing::WithParamInterface<VersionCase> {};

TEST_P(CounterDate, IsCutFromTheAnswer) {
  usb_.ExpectCommand(wire::kGetVersion).Answer(GetParam().answer);
  EXPECT_EQ(GetDate(), 0);
  ExpectDate(GetParam().date);
}

INSTANTIATE_TEST_SUITE_P(Answers, CounterDate,
                         testing::Values(VersionCase{"NineCharacters", "\x02V|202311149\x03", "20231114"},
                                         VersionCase{"SevenCharacters", "\x02V|2023111\x03", "2023111"},
                                         VersionCase{"FirstBarCounts", "\x02V|2023|1114\x03", "2023|111"},
                                         VersionCase{"BarFirst", "\x02|20231113\x03", "20231113"},
                                         VersionCase{"BarLast", "\x02V1.2|\x03", ""},
                                         VersionCase{"NoBarSkipsOneCharacter",
                                                     "\x02"
                                                     "20231114\x03",
                                                     "0231114"},
                                         VersionCase{"OneCharacter", "\x02V\x03", ""},
                                         VersionCase{"BarAlone", "\x02|\x03", ""},
                                         VersionCase{"NoData", "\x02\x03", ""},
                                         VersionCase{"EtxAlone", "\x03", ""},
                                         VersionCase{"OtherMarks", "V|20231114\x03", "20231114"},
                                         VersionCase{"UnknownWithMore", "\x02UU|20240101\x03", "20240101"}),
                         kByName);

TEST_F(CounterVersion, LongestAnswerDoesNoHarm) {
  usb_.ExpectCommand(wire::kGetVersion);
  for (int i = 0; i < 3; ++i) usb_.Answer(Bytes(1024, 'v'));
  usb_.Answer(Bytes(1023, 'v')).Answer(Bytes(1024, '|'));
  EXPECT_EQ(GetDate(), 0);
  ExpectDate("||||||||");
}

TEST_F(CounterVersion, AnswerOfZerosHasNoDate) {
  usb_.ExpectCommand(wire::kGetVersion);
  for (int i = 0; i < 4; ++i) usb_.Answer(Bytes(1024, 0));
  EXPECT_EQ(GetDate(), 0);
  ExpectDate("");
}

struct Utf8Case {
  const char* name;
  std::string answer;
  int result;
};

class CounterUtf8 : public CounterVersion, public testing::WithParamInterface<Utf8Case> {};

TEST_P(CounterUtf8, FollowsFromTheDate) {
  usb_.ExpectCommand(wire::kGetVersion).Answer(GetParam().answer);
  EXPECT_EQ(CheckUtf8version(), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Answers, CounterUtf8,
    testing::Values(Utf8Case{"DayAfter", std::string(wire::kVersion20231114), 1},
                    Utf8Case{"LastDay", "\x02|20231113\x03", 0}, Utf8Case{"Later", "\x02|99999999\x03", 1},
                    Utf8Case{"YearAlone", "\x02|2024\x03", 0}, Utf8Case{"NoNumber", "\x02|nonsense\x03", 0},
                    Utf8Case{"Negative", "\x02|-9999999\x03", 0}, Utf8Case{"Nothing", "\x02|\x03", 0},
                    Utf8Case{"Unknown", std::string(wire::kUnknownCommand), 0}),
    kByName);

TEST_F(CounterVersion, Utf8CheckLogsTheNumber) {
  usb_.ExpectCommand(wire::kGetVersion).Answer(wire::kVersion20231114);
  const LogCapture log;
  EXPECT_EQ(CheckUtf8version(), 1);
  EXPECT_EQ(log.Messages().back(), "nVerDate:20231114");
}

TEST_F(CounterVersion, Utf8CheckOfAnAbsentTerminalIs0AndLogsNoNumber) {
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(CheckUtf8version(), 0);
  for (const std::string& message : log.Messages()) EXPECT_EQ(message.find("nVerDate"), std::string::npos);
}

}  // namespace
}  // namespace gwq::test
