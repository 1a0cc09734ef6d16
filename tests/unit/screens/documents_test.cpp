// SPDX-License-Identifier: MIT
// Showing documents, and asking for agreement.
#include <gwq/screens/documents.h>

#include <climits>

#include "unit/screens/signing_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Documents : public SigningRig {
 protected:
  static int Show(const std::string& paths, int timeout = 30) {
    return MP_ShowPDF(nullptr, nullptr, 9600, timeout, paths.c_str());
  }
  int Confirm(const std::string& paths, int timeout = 30) {
    decision_ = kUntouched;
    return MP_ConfirmPDF(nullptr, nullptr, 9600, timeout, paths.c_str(), &decision_);
  }
  // The messages of one pushed file, and of the list behind the last one.
  static std::vector<std::string> PushMessages(const std::string& path, const std::string& place,
                                               std::size_t size) {
    return {"szFilePathGBK=" + path,
            "szDevicePathGBK=" + place,
            "Z11DownLoadFile Z11ChangeMode nRet=0",
            "Z11DownLoadFile Z11StartDownload nRet=0",
            " Z11SendFile szFilePath=" + path,
            " Z11SendFile nCount=" + std::to_string(size),
            "Z11DownLoadFile Z11SendFile nRet=0",
            "Z11EndDownload szTempName=" + place,
            "cmdEnd type=255\r\n",
            "Z11DownLoadFile Z11EndDownload nRet=0"};
  }

  int decision_ = kUntouched;
};

// ------------------------------------------------------------------ showing

TEST_F(Documents, ShownOnesAreDrainedPushedAndNamedInThisOrder) {
  const std::string paths = MakeDocuments();
  LeaveSomething();
  ExpectDocuments();
  usb_.ExpectCommand(wire::kShowDocuments);
  EXPECT_EQ(Show(paths), 0);
  EXPECT_EQ(usb_.Count("in"), 1 + 2 * 4) << "the drain and the pushes; the screen is not waited for";
}

TEST_F(Documents, ShowingLogsThePushAndTheList) {
  const std::string path = MakeFile("a.pdf");
  ExpectPush(255, "/tmp/a.pdf");
  usb_.ExpectCommand(
      "\x1B[2YCNEWSHOWFILE\x02"
      "0|30|/tmp/a.pdf\x03");
  const LogCapture log;
  EXPECT_EQ(Show(path), 0);
  std::vector<std::string> expected = {"pushFileToZ11"};
  for (const std::string& message : PushMessages(path, "/tmp/a.pdf", 7)) expected.push_back(message);
  expected.insert(expected.end(), {"szFileNameListGBK=/tmp/a.pdf", "pushFileToZ11 nRet = 0"});
  EXPECT_EQ(OwnMessages(log), expected);
}

TEST_F(Documents, ShowingWithoutPathOrTimeIsMinus1InSilence) {
  const std::string path = MakeFile("a.pdf");
  const LogCapture log;
  EXPECT_EQ(MP_ShowPDF(nullptr, nullptr, 9600, 30, nullptr), -1);
  EXPECT_EQ(Show(""), -1);
  for (const int timeout : {0, 1000, -1, INT_MIN, INT_MAX}) EXPECT_EQ(Show(path, timeout), -1) << timeout;
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_THAT(log.Messages(), IsEmpty());
}

TEST_F(Documents, TimesAtTheirBoundsAreSent) {
  const std::string path = MakeFile("a.pdf");
  ExpectPush(255, "/tmp/a.pdf");
  usb_.ExpectCommand(
      "\x1B[2YCNEWSHOWFILE\x02"
      "0|1|/tmp/a.pdf\x03");
  EXPECT_EQ(Show(path, 1), 0);
  ExpectPush(255, "/tmp/a.pdf");
  Exchange(
      "\x1B[2YCNEWSTARTFILE\x02"
      "0|999|/tmp/a.pdf\x03");
  EXPECT_EQ(Confirm(path, 999), 0);
}

TEST_F(Documents, ChineseNamesAreGbkInTheList) {
  const std::string path = MakeFile("合同.pdf");
  ExpectPush(255, "/tmp/合同.pdf");
  usb_.ExpectCommand(
      "\x1B[2YCNEWSHOWFILE\x02"
      "0|30|/tmp/\xBA\xCF\xCD\xAC.pdf\x03");
  const LogCapture log;
  EXPECT_EQ(Show(path), 0);
  EXPECT_THAT(OwnMessages(log), testing::Contains("szFileNameListGBK=/tmp/\xBA\xCF\xCD\xAC.pdf"));
}

// A customer must not agree to a shorter list.
TEST_F(Documents, ListThatIsNotUtf8IsRefusedBeforeAnythingIsSent) {
  const std::string paths = MakeFile("a.pdf") + "|" + MakeFile("b\xFF.pdf");
  const LogCapture log;
  EXPECT_EQ(Show(paths), -1);
  EXPECT_THAT(OwnMessages(log), IsEmpty());
  EXPECT_EQ(Confirm(paths), -1);
  EXPECT_EQ(decision_, 2);
  EXPECT_THAT(OwnMessages(log), ElementsAre("param Error,return\n"));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(Documents, ListThatFillsItsRoomIsShownWhole) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(directory_.Path());
  const std::string name = std::string(93, 'n');
  const std::string last = std::string(29, 'l');
  MakeFile(name);
  MakeFile(last);
  std::string paths;
  std::string places;
  for (int i = 0; i < 10; ++i) {
    ExpectPush(255, "/tmp/" + name);
    paths.append("./").append(name).append("|");
    places.append("/tmp/").append(name).append("|");
  }
  ExpectPush(255, "/tmp/" + last);
  places.append("/tmp/").append(last);
  ASSERT_EQ(places.size(), 1024U);
  usb_.ExpectCommand("\x1B[2YCNEWSHOWFILE\x02" + std::string("0|30|") + places + "\x03");
  EXPECT_EQ(Show(paths + "./" + last), 0);
  EXPECT_EQ(Show(paths + "./" + last + "l"), -1) << "one byte more";
  std::filesystem::current_path(before);
}

TEST_F(Documents, ListLongerThanItsRoomOnTheScreenIsRefusedBeforeAnythingIsSent) {
  std::string paths;
  for (int i = 0; i < 171; ++i) paths.append("./a|");  // 171 places of 6 bytes and a "|"
  EXPECT_EQ(Show(paths), -1);
  EXPECT_EQ(Confirm(paths), -1);
  EXPECT_EQ(Show(std::string(1024, 'p')), -1) << "more than the push takes";
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(Documents, ShowingReturnsTheStatusOfItsSend) {
  const std::string path = MakeFile("a.pdf");
  ExpectPush(255, "/tmp/a.pdf");
  usb_.ExpectCommand(
      "\x1B[2YCNEWSHOWFILE\x02"
      "0|30|/tmp/a.pdf\x03");
  FailSending(4);
  EXPECT_EQ(Show(path), -10);
}

TEST_F(Documents, AbsentTerminalIsMinus3FromTheDrain) {
  const std::string path = MakeFile("a.pdf");
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(Show(path), -3);
  EXPECT_EQ(Confirm(path), -3);
  EXPECT_EQ(decision_, kUntouched);
  EXPECT_THAT(OwnMessages(log), IsEmpty()) << "nothing is pushed";
}

TEST_F(Documents, OtherResultsOfTheDrainDoNotMatter) {
  const std::string path = MakeFile("a.pdf");
  CancelReading(0);
  ExpectPush(255, "/tmp/a.pdf");
  usb_.ExpectCommand(
      "\x1B[2YCNEWSHOWFILE\x02"
      "0|30|/tmp/a.pdf\x03");
  EXPECT_EQ(Show(path), 0);
}

TEST_F(Documents, MissingDocumentIsMinus15) {
  const LogCapture log;
  EXPECT_EQ(Show(Path("missing.pdf")), -15);
  EXPECT_THAT(OwnMessages(log), ElementsAre("pushFileToZ11", "File Not Exist", "szFileNameListGBK=",
                                            "pushFileToZ11 nRet = -15", "pushFileToZ11  nRet= -15"));
  EXPECT_EQ(Confirm(Path("missing.pdf")), -15);
  EXPECT_EQ(decision_, 2);
  EXPECT_EQ(usb_.Count("out"), 0);
}

TEST_F(Documents, FailedPushIsReturned) {
  const std::string path = MakeFile("a.pdf");
  Exchange(wire::kModeChange, wire::kFailed);
  EXPECT_EQ(Show(path), -2);
  Exchange(wire::kModeChange, wire::kRefused);
  EXPECT_EQ(Confirm(path), -14);
  EXPECT_EQ(decision_, 2);
}

// ------------------------------------------------------------------ confirming

TEST_F(Documents, ConfirmedOnesAreDrainedPushedAndAskedForInThisOrder) {
  const std::string paths = MakeDocuments();
  LeaveSomething();
  ExpectDocuments();
  Exchange(wire::kConfirmDocuments);
  EXPECT_EQ(Confirm(paths), 0);
  EXPECT_EQ(decision_, 0);
}

struct Decision {
  const char* name;
  std::string_view answer;
  int decision;
  int status;
};

class ConfirmAnswer : public Documents, public testing::WithParamInterface<Decision> {};

TEST_P(ConfirmAnswer, GivesDecisionAndStatusAndClosesNothing) {
  const std::string paths = MakeDocuments();
  ExpectDocuments();
  Exchange(wire::kConfirmDocuments, GetParam().answer);
  const LogCapture log;
  EXPECT_EQ(Confirm(paths), GetParam().status);
  EXPECT_EQ(decision_, GetParam().decision);
  EXPECT_THAT(MessagesAfter(log, "szFileNameListGBK=/tmp/a.pdf|/tmp/b.pdf"),
              ElementsAre("pushFileToZ11 nRet = 0", "TransProc nRet=0\n"));
}

INSTANTIATE_TEST_SUITE_P(Answers, ConfirmAnswer,
                         testing::Values(Decision{"Agreed", wire::kDone, 0, 0},
                                         Decision{"Declined", wire::kCustomerCancelled, 1, 0},
                                         Decision{"TooLate", wire::kCustomerTooLate, 2, -2},
                                         Decision{"Failed", wire::kRefused, 2, -14}),
                         kByName);

TEST_F(Documents, OtherAnswersLeaveTheDecisionAsItWas) {
  const std::string paths = MakeDocuments();
  for (const Bytes& answer : OtherAnswers()) {
    ExpectDocuments();
    usb_.ExpectCommand(wire::kConfirmDocuments).Answer(answer);
    EXPECT_EQ(Confirm(paths), 0) << Readable(answer);
    EXPECT_EQ(decision_, kUntouched) << Readable(answer);
  }
}

TEST_F(Documents, AnswerMayComeInPiecesOrInAReport) {
  const std::string paths = MakeDocuments();
  ExpectDocuments();
  usb_.ExpectCommand(wire::kConfirmDocuments).Answer("\x02").Answer("\x66", 3).Answer("\x03", 100);
  EXPECT_EQ(Confirm(paths), 0);
  EXPECT_EQ(decision_, 1);
  ExpectDocuments();
  usb_.ExpectCommand(wire::kConfirmDocuments).AnswerReport(wire::kCustomerCancelled, 2);
  EXPECT_EQ(Confirm(paths), 0);
  EXPECT_EQ(decision_, 1);
}

TEST_F(Documents, AnswerBeyondItsBufferIsNoneOfTheKnown) {
  const std::string paths = MakeDocuments();
  ExpectDocuments();
  usb_.ExpectCommand(wire::kConfirmDocuments).Answer(Bytes(1023, 'n')).Answer(Bytes(1024, 'n'));
  EXPECT_EQ(Confirm(paths), 0);
  EXPECT_EQ(decision_, kUntouched);
  ExpectDocuments();
  usb_.ExpectCommand(wire::kConfirmDocuments).Answer(Bytes(1024, 0));
  EXPECT_EQ(Confirm(paths), 0);
  EXPECT_EQ(decision_, kUntouched);
}

TEST_F(Documents, SilenceIsMinus11ThreeSecondsAfterTheCustomersTime) {
  const std::string paths = MakeDocuments();
  ExpectDocuments();
  usb_.ExpectCommand(wire::kConfirmDocuments);
  const LogCapture log;
  EXPECT_EQ(Confirm(paths), -11);
  EXPECT_EQ(decision_, 2);
  EXPECT_EQ(Elapsed(), kDrainSeconds + 30 + 3 + 1) << "more than 33 whole seconds";
  EXPECT_EQ(OwnMessages(log).back(), "TransProc nRet=-11\n");
}

TEST_F(Documents, CancelledWaitIsMinus23) {
  const std::string paths = MakeDocuments();
  ExpectDocuments();
  usb_.ExpectCommand(wire::kConfirmDocuments);
  CancelTheWait();
  EXPECT_EQ(Confirm(paths), -23);
  EXPECT_EQ(decision_, 2);
}

TEST_F(Documents, ConfirmingWithoutPathOrTimeIsMinus1AndUndecided) {
  const std::string path = MakeFile("a.pdf");
  const LogCapture log;
  int decision = kUntouched;
  EXPECT_EQ(MP_ConfirmPDF(nullptr, nullptr, 9600, 30, nullptr, &decision), -1);
  EXPECT_EQ(decision, 2);
  EXPECT_EQ(Confirm(""), -1);
  EXPECT_EQ(decision_, 2);
  for (const int timeout : {0, 1000, -1, INT_MIN, INT_MAX}) {
    EXPECT_EQ(Confirm(path, timeout), -1) << timeout;
    EXPECT_EQ(decision_, 2);
  }
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_EQ(log.Messages(), std::vector<std::string>(7, "param Error,return\n"));
}

TEST_F(Documents, PlaceForTheDecisionMayBeMissing) {
  const std::string paths = MakeDocuments();
  ExpectDocuments();
  Exchange(wire::kConfirmDocuments, wire::kCustomerTooLate);
  EXPECT_EQ(MP_ConfirmPDF(nullptr, nullptr, 9600, 30, paths.c_str(), nullptr), -2);
  EXPECT_EQ(MP_ConfirmPDF(nullptr, nullptr, 9600, 0, nullptr, nullptr), -1);
}

}  // namespace
}  // namespace gwq::test
