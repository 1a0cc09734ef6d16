// SPDX-License-Identifier: MIT
// Signing documents in TZG mode.
#include <sys/stat.h>

#include <climits>

#include <gwq/screens/signing.h>
#include "unit/screens/failing_system.h"
#include "unit/screens/signing_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Tzg : public SigningRig {
 protected:
  Tzg() { std::filesystem::create_directory(directory_ / "tmp"); }

  int Run(int flag = 0, int length = 3, int timeout = 30) {
    return MP_Sign_With_TZG(nullptr, link_, 9600, timeout, documents_.c_str(), location_.c_str(), voice_,
                            picture_, flag, length, data_ ? data_->text() : nullptr);
  }

  // Everything up to the wait for the customer.
  void ExpectOpening() {
    Exchange(wire::kSupportsTzg);
    ExpectDocuments();
    usb_.ExpectCommand(wire::kSetVoiceAsItIs).ExpectCommand(wire::kSignInTzgMode);
  }
  void ExpectSignature() {
    ExpectPull(wire::kPullPicture, "picture");
    ExpectPull(wire::kPullStrokes, "strokes");
  }
  // What tells a call to the variant with a voice, and ends it with -2.
  void ExpectHandedOver() {
    Exchange(wire::kSetVoice);
    Exchange(wire::kModeChange, wire::kFailed);
  }
  std::vector<std::string> ArgumentMessages() {
    return {"[MP_Sign_With_TZG]", "nTimeout = 30",         "szFilePath = " + documents_,
            "szLocation = p1,x2", "szVoiceContent = 请签", "szSignPath = " + picture_path_,
            "nOperFlag = 0",      "nSignLen = 3"};
  }

  FilesElsewhere elsewhere_{directory_.Path(), {"/tmp/data.txt"}};
  std::string strokes_path_ = Path("tmp/data.txt");
};

// ------------------------------------------------------------------ the whole way

TEST_F(Tzg, DrainsQueriesPushesSpeaksAsksAndFetchesInThisOrder) {
  LeaveSomething();
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(ReadFile(Path("sig.png")), "picture");
  EXPECT_EQ(ReadFile(strokes_path_), "strokes");
  EXPECT_FALSE(std::filesystem::exists(Path("hw.data")));
  EXPECT_EQ(data_->Content(), kStrokes);
  EXPECT_EQ(SleptMs().front(), 200);
}

TEST_F(Tzg, LogsItsArgumentsAndItsStepsInOrder) {
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  const LogCapture log;
  EXPECT_EQ(Run(), 0);
  std::vector<std::string> expected = ArgumentMessages();
  expected.emplace_back("pushFileToZ11");
  std::vector<std::string> own = OwnMessages(log);
  own.resize(expected.size());
  EXPECT_EQ(own, expected);
  EXPECT_THAT(MessagesAfter(log, kList), ElementsAre(kPushed, kAnswered, SizeLog(7)));
}

TEST_F(Tzg, DataBufferIsNotCleared) {
  data_.emplace(BytesOf(std::string("an older text\0", 14)));
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(data_->Content(), BytesOf(std::string("strokesr text\0", 14)));
}

TEST_F(Tzg, DataBufferLinkAndPictureMayBeMissing) {
  data_.reset();
  link_ = nullptr;
  picture_ = nullptr;
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectPull(wire::kPullStrokes, "strokes");
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(ReadFile(strokes_path_), "strokes");
}

TEST_F(Tzg, MissingTextsAreEmptyOnes) {
  Exchange(wire::kSupportsTzg);
  usb_.ExpectCommand("\x1B[2YCSETVOICECONTENT\x02\x03");
  Exchange(
      "\x1B[2YCNEWSTARTZGTSIGN\x02"
      "0|30|0|3||\x03",
      wire::kCustomerCancelled);
  usb_.ExpectCommand(wire::kCloseInformation);
  EXPECT_EQ(MP_Sign_With_TZG(nullptr, link_, 9600, 30, "", nullptr, nullptr, nullptr, 0, 3, nullptr), -23);
  Exchange(wire::kSupportsTzg);
  EXPECT_EQ(MP_Sign_With_TZG(nullptr, link_, 9600, 30, nullptr, nullptr, nullptr, nullptr, 0, 3, nullptr), -1)
      << "of the push";
}

TEST_F(Tzg, LongTextsAreSentWhole) {
  location_ = std::string(5000, 'l');
  voice_text_ = std::string(7000, 'v');
  voice_ = voice_text_.data();
  Exchange(wire::kSupportsTzg);
  ExpectDocuments();
  usb_.ExpectCommand(std::string("\x1B[2YCSETVOICECONTENT\x02").append(voice_text_).append("\x03"));
  Exchange(std::string("\x1B[2YCNEWSTARTZGTSIGN\x02")
               .append("0|30|0|3|")
               .append(location_)
               .append("|/tmp/a.pdf|/tmp/b.pdf\x03"),
           wire::kCustomerCancelled);
  usb_.ExpectCommand(wire::kCloseInformation);
  EXPECT_EQ(Run(), -23);
}

TEST_F(Tzg, NoMemoryForTheVoiceOrTheCommandIsMinus24) {
  location_ = std::string(100'000, 'l');
  Exchange(wire::kSupportsTzg);
  ExpectDocuments();
  usb_.ExpectCommand(wire::kSetVoiceAsItIs);
  const NoMemoryFor blocks(100'000);
  EXPECT_EQ(Run(), -24);
  voice_text_ = std::string(100'000, 'v');
  voice_ = voice_text_.data();
  Exchange(wire::kSupportsTzg);
  ExpectDocuments();
  EXPECT_EQ(Run(), -24);
}

// ------------------------------------------------------------------ which mode

TEST_F(Tzg, ModeIsTheLengthAndOneMoreForTheFlag1) {
  struct Row {
    int flag;
    int length;
    std::string_view sent;
  };
  for (const Row& row : {Row{0, 2, "0|2"}, Row{0, 3, "0|3"}, Row{0, 4, "0|4"}, Row{1, 2, "1|3"},
                         Row{1, 3, "1|4"}, Row{2, 2, "2|2"}, Row{-1, 4, "-1|4"}}) {
    Exchange(wire::kSupportsTzg);
    ExpectDocuments();
    usb_.ExpectCommand(wire::kSetVoiceAsItIs);
    Exchange(std::string("\x1B[2YCNEWSTARTZGTSIGN\x02")
                 .append("0|30|")
                 .append(row.sent)
                 .append("|p1,x2|/tmp/a.pdf|/tmp/b.pdf\x03"),
             wire::kCustomerCancelled);
    usb_.ExpectCommand(wire::kCloseInformation);
    EXPECT_EQ(Run(row.flag, row.length), -23) << row.sent;
  }
}

TEST_F(Tzg, OtherModesAreHandedOverWithoutAQuery) {
  struct Row {
    int flag;
    int length;
  };
  for (const Row& row : {Row{1, 1}, Row{0, 1}, Row{0, 5}, Row{1, 4}, Row{0, 0}, Row{1, 0}, Row{0, -1},
                         Row{1, INT_MAX}, Row{0, INT_MAX}, Row{1, INT_MIN}, Row{2, 1}}) {
    LeaveSomething();
    LeaveSomething();
    ExpectHandedOver();
    EXPECT_EQ(Run(row.flag, row.length), -2) << row.flag << " " << row.length;
  }
}

TEST_F(Tzg, TerminalThatDoesNotSupportItIsHandedOver) {
  std::vector<Bytes> answers = OtherAnswers();
  for (const auto answer : {wire::kRefused, wire::kCustomerCancelled, wire::kCustomerTooLate}) {
    answers.push_back(BytesOf(answer));
  }
  for (const Bytes& answer : answers) {
    usb_.ExpectCommand(wire::kSupportsTzg).Answer(answer);
    ExpectHandedOver();
    EXPECT_EQ(Run(), -2) << Readable(answer);
  }
}

TEST_F(Tzg, SilenceToTheQueryIsHandedOverAfterOneSecond) {
  LeaveSomething();
  usb_.ExpectCommand(wire::kSupportsTzg);
  ExpectHandedOver();
  EXPECT_EQ(Run(), -2);
  EXPECT_EQ(Elapsed(), 1 + 1 + kDrainSeconds) << "more than one whole second, and the second drain";
}

TEST_F(Tzg, CallHandedOverRunsToItsEndWithTheSameArguments) {
  LeaveSomething();
  LeaveSomething();
  Exchange(wire::kSetVoice);
  ExpectDocuments();
  Exchange(wire::kSignDocuments);
  ExpectSignature();
  const LogCapture log;
  EXPECT_EQ(Run(1, 1), 0);
  EXPECT_EQ(OwnMessages(log).back(), "MP_SignPDF_Voice Success, end");
  EXPECT_EQ(ReadFile(Path("sig.png")), "picture");
  EXPECT_EQ(ReadFile(Path("hw.data")), "strokes");
  EXPECT_EQ(data_->Content(), kStrokes);
  EXPECT_FALSE(std::filesystem::exists(strokes_path_));
}

TEST_F(Tzg, CallHandedOverIsCheckedThere) {
  LeaveSomething();
  location_.clear();
  const LogCapture log;
  EXPECT_EQ(Run(1, 1), -1);
  EXPECT_EQ(OwnMessages(log).back(), InGbk("参数错误"));
  EXPECT_EQ(usb_.Count("out"), 0);
}

TEST_F(Tzg, TimesOutOfRangeAreMinus1InEveryMode) {
  for (const int timeout : {0, 1000, -1, INT_MIN, INT_MAX}) {
    for (const int length : {1, 3}) {
      const LogCapture log;
      EXPECT_EQ(Run(0, length, timeout), -1) << timeout;
      EXPECT_EQ(log.Messages().size(), 9U);
      EXPECT_EQ(log.Messages().back(), InGbk("参数错误"));
    }
  }
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

// ------------------------------------------------------------------ answers

TEST_F(Tzg, CustomersWhoDoNotSignEndItAndTheScreenIsClosed) {
  struct Row {
    std::string_view answer;
    int status;
    const char* log;
  };
  for (const Row& row : {Row{wire::kCustomerTooLate, -2, "ERR_TIMEOUT,return\n"},
                         Row{wire::kCustomerCancelled, -23, "ERR_CANCAL,return\n"},
                         Row{wire::kRefused, -14, "ERR_FAILD,return\n"}}) {
    ExpectOpening();
    usb_.Answer(row.answer).ExpectCommand(wire::kCloseInformation);
    const LogCapture log;
    EXPECT_EQ(Run(), row.status);
    EXPECT_THAT(MessagesAfter(log, kList), ElementsAre(kPushed, kAnswered, row.log));
    EXPECT_TRUE(data_->AllAre(0));
    EXPECT_FALSE(std::filesystem::exists(strokes_path_));
  }
}

TEST_F(Tzg, SilenceIsMinus14AndTheScreenIsClosed) {
  LeaveSomething();
  ExpectOpening();
  usb_.OnTransfer([this](const Transfer& transfer) {
    if (!transfer.in && transfer.index == 11) usb_.ExpectCommand(wire::kCloseInformation);
  });
  const LogCapture log;
  EXPECT_EQ(Run(), -14);
  EXPECT_THAT(MessagesAfter(log, kList), ElementsAre(kPushed, "TransProc nRet=-11\n"));
  EXPECT_EQ(Elapsed(), 30 + 3 + 1);
}

TEST_F(Tzg, AnswerOfNothingButZerosIsMinus14AndTheScreenIsClosed) {
  ExpectOpening();
  for (int i = 0; i < 4; ++i) usb_.Answer(Bytes(1024, 0));
  usb_.ExpectCommand(wire::kCloseInformation);
  EXPECT_EQ(Run(), -14);
}

TEST_F(Tzg, HalfAnAnswerGoesOnToThePull) {
  ExpectOpening();
  usb_.Answer("\x02");
  ExpectSignature();
  const LogCapture log;
  EXPECT_EQ(Run(), 0);
  EXPECT_THAT(OwnMessages(log), testing::Contains("TransProc nRet=-11\n"));
}

TEST_F(Tzg, EveryOtherAnswerGoesOnToThePull) {
  for (const Bytes& answer : OtherAnswers()) {
    ExpectOpening();
    usb_.Answer(answer);
    ExpectSignature();
    EXPECT_EQ(Run(), 0) << Readable(answer);
  }
}

// ------------------------------------------------------------------ failures on the way

TEST_F(Tzg, AbsentTerminalIsMinus3FromTheDrain) {
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(Run(), -3);
  EXPECT_EQ(Run(1, 1), -3);
  std::vector<std::string> first = OwnMessages(log);
  first.resize(8);
  EXPECT_EQ(first, ArgumentMessages());
  EXPECT_EQ(OwnMessages(log).size(), 16U);
}

TEST_F(Tzg, FailedPushIsLoggedAndReturned) {
  documents_ = Path("missing.pdf");
  Exchange(wire::kSupportsTzg);
  const LogCapture log;
  EXPECT_EQ(Run(), -15);
  EXPECT_EQ(OwnMessages(log).back(), "pushFileToZ11  nRet= -15");
}

TEST_F(Tzg, VoiceThatIsNotSentDoesNotMatter) {
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  FailSending(9);
  EXPECT_EQ(Run(), 0);
}

TEST_F(Tzg, BrokenPictureIsMinus14) {
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectBrokenPull(wire::kPullPicture);
  const LogCapture log;
  EXPECT_EQ(Run(), -14);
  EXPECT_EQ(OwnMessages(log).back(), InGbk("[GWQ_CallShowPDF]获取签名图片失败 nRet=-14"));
}

TEST_F(Tzg, BrokenStrokesAreMinus14) {
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectPull(wire::kPullPicture, "picture");
  ExpectBrokenPull(wire::kPullStrokes);
  const LogCapture log;
  EXPECT_EQ(Run(), -14);
  EXPECT_EQ(OwnMessages(log).back(), InGbk("[GWQ_CallShowPDF]获取矢量数据失败 nRet=-14"));
  EXPECT_TRUE(data_->AllAre(0));
}

// ------------------------------------------------------------------ the file in /tmp

TEST_F(Tzg, StrokesAreInAFileOfThisUserAlone) {
  WriteFile(strokes_path_, "an older and longer file");
  std::filesystem::permissions(strokes_path_, std::filesystem::perms::all);
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  EXPECT_EQ(Run(), 0);
  struct stat status {};
  ASSERT_EQ(stat(strokes_path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  EXPECT_EQ(ReadFile(strokes_path_), "strokes");
}

TEST_F(Tzg, LinkInPlaceOfTheFileIsNotFollowed) {
  const std::string target = MakeFile("target", "untouched");
  std::filesystem::create_symlink(target, strokes_path_);
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(ReadFile(target), "untouched");
  EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(strokes_path_)));
}

TEST_F(Tzg, NameThatIsTakenIsMinus14) {
  std::filesystem::create_directories(strokes_path_ + "/something");
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectPull(wire::kPullPicture, "picture");
  const LogCapture log;
  EXPECT_EQ(Run(), -14);
  EXPECT_EQ(OwnMessages(log).back(), InGbk("[GWQ_CallShowPDF]获取矢量数据失败 nRet=-11"));
}

}  // namespace
}  // namespace gwq::test
