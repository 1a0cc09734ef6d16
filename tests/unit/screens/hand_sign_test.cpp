// SPDX-License-Identifier: MIT
// Signing one page by hand.
#include <climits>

#include <gwq/screens/signing.h>
#include "unit/screens/signing_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class HandSign : public SigningRig {
 protected:
  int Run(const std::string& document, int timeout = 30, int port = 0) {
    return GWQ_StartSign(port, 9600, timeout, document.c_str(), Path("sig.png").c_str(),
                         Path("strokes.txt").c_str());
  }
  void ExpectOpening() {
    ExpectPush(255, "/tmp/infoviewer.pdf");
    usb_.ExpectCommand(wire::kCloseInformation).ExpectCommand(wire::kHandSign);
  }
  void ExpectSignature() {
    ExpectPull(wire::kPullPicture, "picture");
    ExpectPull(wire::kPullStrokes, "strokes");
  }

  std::string document_ = MakeFile("page.pdf");
};

TEST_F(HandSign, DrainsPushesClosesAsksAndFetchesInThisOrder) {
  LeaveSomething();
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  EXPECT_EQ(Run(document_), 0);
  EXPECT_EQ(ReadFile(Path("sig.png")), "picture");
  EXPECT_EQ(ReadFile(Path("strokes.txt")), "strokes");
  EXPECT_EQ(SleptMs().front(), 200);
}

TEST_F(HandSign, LogsThePushAndTheAnswer) {
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  const LogCapture log;
  EXPECT_EQ(Run(document_), 0);
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("Z11DownLoadFile Z11ChangeMode nRet=0", "Z11DownLoadFile Z11StartDownload nRet=0",
                          " Z11SendFile szFilePath=" + document_, " Z11SendFile nCount=7",
                          "Z11DownLoadFile Z11SendFile nRet=0",
                          "Z11EndDownload szTempName=/tmp/infoviewer.pdf", "cmdEnd type=255\r\n",
                          "Z11DownLoadFile Z11EndDownload nRet=0", InGbk("启动签名返回：0\r\n")));
}

TEST_F(HandSign, PortIsAlwaysUsb) {
  for (const int port : {1, 7, -1}) {
    ExpectOpening();
    usb_.Answer(wire::kDone);
    ExpectSignature();
    EXPECT_EQ(Run(document_, 30, port), 0);
  }
}

TEST_F(HandSign, ExtensionDecidesTypeAndPlace) {
  struct Row {
    const char* name;
    std::string_view place;
    std::string_view type;
  };
  for (const Row& row :
       {Row{"a.pdf", "/tmp/infoviewer.pdf", "3"}, Row{"a.jpg", "/tmp/infoviewer.jpg", "2"},
        Row{"a.htm", "/tmp/infoviewer.html", "1"}, Row{"a.html", "/tmp/infoviewer.html", "1"},
        Row{"a.pdfx", "/tmp/infoviewer.pdf", "3"}, Row{"a.b.jpg", "/tmp/infoviewer.jpg", "2"},
        Row{".pdf", "/tmp/infoviewer.pdf", "3"}}) {
    ExpectPush(255, row.place);
    usb_.ExpectCommand(wire::kCloseInformation);
    Exchange(std::string("\x1B[2HANDSIGN\x02").append(row.type).append("|30\x03"), wire::kRefused);
    EXPECT_EQ(Run(MakeFile(row.name)), -14) << row.name;
  }
}

TEST_F(HandSign, OtherExtensionsAreMinus1) {
  for (const char* name : {"a.jpeg", "a.HTML", "a.PDF", "a.Jpg", "a.", "a", "a.pd", "a.ht", "pdf",
                           "a.pdf.txt", "a.xpdf", "a. pdf"}) {
    EXPECT_EQ(Run(MakeFile(name)), -1) << name;
  }
  EXPECT_EQ(Run(MakeFile("dir.d/pdf")), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(HandSign, MissingPathsAndTimesOutOfRangeAreMinus1InSilence) {
  const LogCapture log;
  for (const int timeout : {0, 1000, -1, INT_MIN, INT_MAX}) EXPECT_EQ(Run(document_, timeout), -1) << timeout;
  const char* const page = document_.c_str();
  for (const char* none : {static_cast<const char*>(nullptr), ""}) {
    EXPECT_EQ(GWQ_StartSign(0, 9600, 30, none, "p", "s"), -1);
    EXPECT_EQ(GWQ_StartSign(0, 9600, 30, page, none, "s"), -1);
    EXPECT_EQ(GWQ_StartSign(0, 9600, 30, page, "p", none), -1);
  }
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_THAT(log.Messages(), IsEmpty());
}

TEST_F(HandSign, DrainsResultDoesNotMatter) {
  usb_.Unplug();
  EXPECT_EQ(Run(document_), -3);
  EXPECT_EQ(usb_.Count("list"), 2 * 2) << "the drain, and the push that fails";
}

TEST_F(HandSign, FailedPushIsReturned) {
  Exchange(wire::kModeChange, wire::kFailed);
  EXPECT_EQ(Run(document_), -2);
  Exchange(wire::kModeChange);
  Exchange(wire::kPushStart);
  EXPECT_EQ(Run(Path("missing.pdf")), -1);
}

TEST_F(HandSign, CloseThatIsNotSentDoesNotMatter) {
  ExpectOpening();
  usb_.Answer(wire::kRefused);
  FailSending(4);
  EXPECT_EQ(Run(document_), -14);
}

TEST_F(HandSign, AnswersThatDoNotBeginWithDoneAreMinus14) {
  std::vector<Bytes> answers = OtherAnswers();
  for (const auto answer : {wire::kRefused, wire::kCustomerCancelled, wire::kCustomerTooLate}) {
    answers.push_back(BytesOf(answer));
  }
  answers.push_back(Bytes(1024, 0));
  for (const Bytes& answer : answers) {
    ExpectOpening();
    usb_.Answer(answer);
    const LogCapture log;
    EXPECT_EQ(Run(document_), -14) << Readable(answer);
    EXPECT_EQ(OwnMessages(log).back(), InGbk("启动签名返回：0\r\n"));
  }
}

TEST_F(HandSign, AnswerMayHaveMoreBehindDone) {
  ExpectOpening();
  usb_.Answer("\x02\xAA\x03more\x03");
  ExpectSignature();
  EXPECT_EQ(Run(document_), 0);
}

TEST_F(HandSign, SilenceGoesOnToThePullTwoSecondsAfterTheCustomersTime) {
  for (const int seconds : {1, 999}) {
    SetTime(kStart);
    LeaveSomething();
    ExpectPush(255, "/tmp/infoviewer.pdf");
    usb_.ExpectCommand(wire::kCloseInformation);
    usb_.ExpectCommand(
        std::string("\x1B[2HANDSIGN\x02").append("3|").append(std::to_string(seconds)).append("\x03"));
    ExpectSignature();
    const LogCapture log;
    EXPECT_EQ(Run(document_, seconds), 0);
    EXPECT_EQ(OwnMessages(log).back(), InGbk("启动签名返回：-11\r\n"));
    EXPECT_EQ(Elapsed(), seconds + 2 + 1);
  }
}

TEST_F(HandSign, FailedPictureIsReturnedAndTheStrokesAreNotAskedFor) {
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectBrokenPull(wire::kPullPicture);
  const LogCapture log;
  EXPECT_EQ(Run(document_), -14);
  EXPECT_EQ(OwnMessages(log).back(), InGbk("[GWQ_CallShowPDF]获取签名图片失败 nRet=-14"));
  EXPECT_FALSE(std::filesystem::exists(Path("strokes.txt")));
}

TEST_F(HandSign, FailedStrokesAreReturnedAsTheyAre) {
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectPull(wire::kPullPicture, "picture");
  usb_.ExpectCommand(wire::kPullStrokes);
  const LogCapture log;
  EXPECT_EQ(Run(document_), -11);
  EXPECT_EQ(OwnMessages(log).back(), InGbk("[GWQ_CallShowPDF]获取矢量数据失败 nRet=-11"));
  EXPECT_EQ(ReadFile(Path("sig.png")), "picture");
}

}  // namespace
}  // namespace gwq::test
