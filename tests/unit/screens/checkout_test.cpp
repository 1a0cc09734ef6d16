// SPDX-License-Identifier: MIT
// The checkout screen.
#include <gwq/screens/checkout.h>

#include <climits>
#include <cstdlib>

#include "support/failing_memory.h"
#include "support/iconv_text.h"
#include "unit/screens/screens_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CheckOut : public FilesRig {
 protected:
  int Run(const char* first = "<", const char* second = ">", int timeout = 30) {
    std::fill_n(result_.data(), result_.size(), std::uint8_t{0x55});
    return MP_CheckOut_All(nullptr, nullptr, 9600, timeout, first, second, result_.text());
  }
  void ExpectResult(std::string_view text) {
    EXPECT_EQ(Readable(result_.First(text.size() + 1)), Readable(Concat(BytesOf(text), {0})));
    EXPECT_EQ(result_.Content()[text.size() + 1], 0x55) << "not one byte more";
  }

  GuardedBuffer result_{2047, 0x55};
};

TEST_F(CheckOut, ResultIsTheAnswerWithoutItsCode) {
  usb_.ExpectCommand(wire::kCheckOut).Answer(wire::kCheckedOut, 3);
  const LogCapture log;
  EXPECT_EQ(Run(), 0);
  ExpectResult("ok");
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("MP_CheckOut_All", "iRet:0\r\n", "result=ok", "MP_CheckOut_All  iRet:0"));
}

struct ShortAnswer {
  std::string_view answer;
  int status;
};

std::string NameOf(const ShortAnswer& each) {
  return Readable(BytesOf(each.answer));
}

class CheckOutFailures : public CheckOut, public testing::WithParamInterface<ShortAnswer> {};

TEST_P(CheckOutFailures, AreTheTerminalsShortAnswers) {
  usb_.ExpectCommand(wire::kCheckOut).Answer(GetParam().answer);
  const LogCapture log;
  EXPECT_EQ(Run(), GetParam().status);
  EXPECT_TRUE(result_.AllAre(0x55));
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("MP_CheckOut_All", "iRet:0\r\n",
                          std::string("MP_CheckOut_All  iRet:").append(std::to_string(GetParam().status))));
}

INSTANTIATE_TEST_SUITE_P(All, CheckOutFailures,
                         testing::Values(ShortAnswer{wire::kRefused, -14},
                                         ShortAnswer{wire::kCheckOutTimedOut, -2},
                                         ShortAnswer{wire::kCheckOutCancelled, -23},
                                         ShortAnswer{"\x02w\x03more\x03", -23}));

struct Answer {
  std::string_view answer;
  std::string_view result;
};

std::string NameOf(const Answer& each) {
  return Readable(BytesOf(each.answer));
}

class CheckOutAnswers : public CheckOut, public testing::WithParamInterface<Answer> {};

TEST_P(CheckOutAnswers, OfAnyOtherShapeAreResults) {
  usb_.ExpectCommand(wire::kCheckOut).Answer(GetParam().answer);
  EXPECT_EQ(Run(), 0);
  ExpectResult(GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(All, CheckOutAnswers,
                         testing::Values(Answer{"\x03", ""}, Answer{"\x02\x03", ""}, Answer{"\x02X\x03", ""},
                                         Answer{"\x02\xAA\x03", ""}, Answer{"\x02W\x03", ""},
                                         Answer{"\x02Ux\x03", "x"}, Answer{"\x02wx\x03", "x"},
                                         Answer{"\x02"
                                                "fx\x03",
                                                "x"},
                                         Answer{"w\x03\x03", ""},
                                         Answer{"\x02"
                                                "A%s\x03",
                                                "%s"}));

TEST_F(CheckOut, LongestAnswerIsGivenWhole) {
  usb_.ExpectCommand(wire::kCheckOut).Answer(Bytes(1023, 'x')).Answer(Bytes(1024, 'y'));
  EXPECT_EQ(Run(), 0);
  ExpectResult(std::string(1021, 'x').append(std::string(1023, 'y')));
}

TEST_F(CheckOut, AnswerOfAZeroReportIsAnEmptyResult) {
  usb_.ExpectCommand(wire::kCheckOut).Answer(Bytes(1024, 0));
  EXPECT_EQ(Run(), 0);
  ExpectResult("");
}

TEST_F(CheckOut, UsbIsDrainedFirst) {
  usb_.Answer("B0F").ExpectCommand(wire::kCheckOut).Answer(wire::kCheckedOut);
  EXPECT_EQ(Run(), 0);
  ExpectResult("ok");
}

TEST_F(CheckOut, BadArgumentsAreRefusedBeforeAnythingIsSent) {
  const LogCapture log;
  EXPECT_EQ(Run(nullptr), -1);
  EXPECT_EQ(Run(""), -1);
  EXPECT_EQ(Run("<", nullptr), -1);
  for (const int timeout : {0, 1000, -1, INT_MIN, INT_MAX}) EXPECT_EQ(Run("<", ">", timeout), -1);
  EXPECT_EQ(MP_CheckOut_All(nullptr, nullptr, 9600, 30, "<", ">", nullptr), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_TRUE(result_.AllAre(0x55));
  const auto all = log.Messages();
  ASSERT_EQ(all.size(), 18U);
  EXPECT_EQ(all[0], "MP_CheckOut_All");
  EXPECT_EQ(all[1], InGbk("参数错误"));
  EXPECT_EQ(all[1], "\xB2\xCE\xCA\xFD\xB4\xED\xCE\xF3");
}

TEST_F(CheckOut, TimesAtTheirBoundsAndAnEmptySecondTextAreSent) {
  for (const auto& [timeout, number] : {std::pair{1, "1"}, {999, "999"}}) {
    usb_.ExpectCommand(std::string("\x1B[2YCCHECKOUTALLUTF8\x02").append(number).append("##3<\x03"));
    usb_.Answer(wire::kCheckedOut);
    EXPECT_EQ(Run("<", "", timeout), 0);
  }
}

class TextsOfSize : public CheckOut, public testing::WithParamInterface<std::size_t> {};

TEST_P(TextsOfSize, AreSentWhole) {
  const std::string text = LongText(GetParam());
  usb_.ExpectCommand(
          std::string("\x1B[2YCCHECKOUTALLUTF8\x02").append("30##").append(Split(text)).append("\x03"))
      .Answer(wire::kCheckedOut);
  EXPECT_EQ(Run(text.c_str(), ""), 0);
  usb_.ExpectCommand(std::string("\x1B[2YCCHECKOUTALLUTF8\x02")
                         .append("30#")
                         .append(Split(text))
                         .append("#")
                         .append(Split(text))
                         .append("\x03"))
      .Answer(wire::kCheckedOut);
  EXPECT_EQ(Run(text.c_str(), text.c_str()), 0);
}

INSTANTIATE_TEST_SUITE_P(Sizes, TextsOfSize, testing::Values(1, 497, 1024, 60U << 10U, 1U << 20U));

TEST_F(CheckOut, NoMemoryIsMinus24AndNothingIsSent) {
  usb_.ExpectCommand(wire::kCheckOut).Answer(wire::kCheckedOut);
  const int requests = RequestsOf([this] { EXPECT_EQ(Run(), 0); });
  EXPECT_GT(requests, 0);
  const int sent = usb_.Count("out");
  for (int granted = 0; granted < requests; ++granted) {
    const OutOfMemory wanting(granted);
    EXPECT_EQ(Run(), -24) << granted;
    EXPECT_TRUE(result_.AllAre(0x55));
  }
  EXPECT_EQ(usb_.Count("out"), sent);
}

TEST_F(CheckOut, AbsentTerminalIsMinus3FromTheDrain) {
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(Run(), -3);
  EXPECT_THAT(OwnMessages(log), ElementsAre("MP_CheckOut_All"));
}

TEST_F(CheckOut, TerminalThatIsGoneByThenIsMinus3) {
  Fail(Failure::kNotOpened, 0);
  const LogCapture log;
  EXPECT_EQ(Run(), -3);
  EXPECT_THAT(OwnMessages(log), ElementsAre("MP_CheckOut_All", "iRet:-3\r\n", "MP_CheckOut_All  iRet:-3"));
}

TEST_F(CheckOut, SilenceIsMinus11AfterTheTimeAnd3Seconds) {
  usb_.ExpectCommand("\x1B[2YCCHECKOUTALLUTF8\x02\x32#3>#3<\x03");
  const LogCapture log;
  EXPECT_EQ(Run("<", ">", 2), -11);
  EXPECT_EQ(Elapsed(), kDrainSeconds + 6) << "more than 2 + 3 whole seconds";
  EXPECT_TRUE(result_.AllAre(0x55));
  EXPECT_THAT(OwnMessages(log), ElementsAre("MP_CheckOut_All", "iRet:-11\r\n", "MP_CheckOut_All  iRet:-11"));
}

TEST_F(CheckOut, CancelledWaitIsMinus23) {
  usb_.ExpectCommand(wire::kCheckOut);
  CancelReading(1);
  EXPECT_EQ(Run(), -23);
}

TEST_F(CheckOut, CommandThatCannotBeSentIsMinus10) {
  usb_.ExpectCommand(wire::kCheckOut);
  FailSending(0);
  EXPECT_EQ(Run(), -10);
}

}  // namespace
}  // namespace gwq::test
