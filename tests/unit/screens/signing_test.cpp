// SPDX-License-Identifier: MIT
// Signing documents, with and without a spoken prompt.
#include <gwq/screens/signing.h>

#include <climits>
#include <optional>
#include <thread>

#include <gwq/extra.h>
#include "files/internal/output_room.h"
#include "unit/screens/failing_system.h"
#include "unit/screens/signing_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// How the two functions differ.
struct Kind {
  const char* name;
  bool voice;
  std::string bad_argument;
  std::string too_late;
  std::string cancelled;
  std::string failed;
  std::vector<std::string> done;
  std::string success;
};

const Kind kPlainKind{.name = "Plain",
                      .voice = false,
                      .bad_argument = "param Error,return\n",
                      .too_late = "ERR_TIMEOUT,return\n",
                      .cancelled = "ERR_CANCAL,return\n",
                      .failed = "ERR_FAILD,return\n",
                      .done = {},
                      .success = "MP_SignPDF Success , End"};
const Kind kVoiceKind{.name = "Voice",
                      .voice = true,
                      .bad_argument = InGbk("参数错误"),
                      .too_late = InGbk("电子签名超时"),
                      .cancelled = InGbk("电子签名取消"),
                      .failed = InGbk("电子签名返回失败"),
                      .done = {InGbk("启动电子签名成功")},
                      .success = "MP_SignPDF_Voice Success, end"};

class SigningCalls : public SigningRig {
 protected:
  int Plain(int timeout = 30) {
    return MP_SignPDF(nullptr, link_, 9600, timeout, documents_.data(), location_.data(), picture_,
                      data_ ? data_->text() : nullptr);
  }
  int Voice(int timeout = 30) {
    return MP_SignPDF_Voice(nullptr, link_, 9600, timeout, documents_.data(), location_.data(), voice_,
                            picture_, data_ ? data_->text() : nullptr);
  }
};

class Sign : public SigningCalls, public testing::WithParamInterface<Kind> {
 protected:
  int Run(int timeout = 30) { return GetParam().voice ? Voice(timeout) : Plain(timeout); }

  // Everything up to the wait for the customer.
  void ExpectOpening() {
    if (GetParam().voice) Exchange(wire::kSetVoice);
    ExpectDocuments();
    usb_.ExpectCommand(wire::kSignDocuments);
  }
  void ExpectSignature(std::string_view strokes = "strokes") {
    ExpectPull(wire::kPullPicture, "picture");
    ExpectPull(wire::kPullStrokes, strokes);
  }
  // The transfers of the opening, when the drain is a single one in.
  static int OpeningOuts() { return (GetParam().voice ? 1 : 0) + 2 * 4 + 1; }
  // One of the drain, and an answer to all but the last one out.
  static int OpeningIns() { return 1 + OpeningOuts() - 1; }

  void ExpectNothingFetched() {
    EXPECT_TRUE(data_->AllAre(0));
    EXPECT_FALSE(std::filesystem::exists(Path("sig.png")));
    EXPECT_FALSE(std::filesystem::exists(Path("hw.data")));
  }
};

INSTANTIATE_TEST_SUITE_P(Kinds, Sign, testing::Values(kPlainKind, kVoiceKind), kByName);

// ------------------------------------------------------------------ the whole way

TEST_P(Sign, DrainsPushesAsksAndFetchesInThisOrder) {
  LeaveSomething();
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(ReadFile(Path("sig.png")), "picture");
  EXPECT_EQ(ReadFile(Path("hw.data")), "strokes");
  EXPECT_EQ(data_->Content(), kStrokes);
  EXPECT_EQ(SleptMs().front(), 200) << "before the first pull";
}

TEST_P(Sign, LogsItsStepsInOrder) {
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  const LogCapture log;
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(OwnMessages(log).front(), "pushFileToZ11") << "nothing before it";
  std::vector<std::string> expected = {kPushed, kAnswered};
  for (const std::string& message : GetParam().done) expected.push_back(message);
  expected.insert(expected.end(), {"Get signData Path=" + Path("hw.data"), SizeLog(7), GetParam().success});
  EXPECT_EQ(MessagesAfter(log, kList), expected);
}

TEST_P(Sign, TextInTheDataBufferIsClearedOnlyWithoutVoice) {
  Bytes before = BytesOf("an older text, longer than what comes");
  const std::size_t length = before.size();
  before.insert(before.end(), {0, 0x55, 0x55});
  data_.emplace(before);
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  EXPECT_EQ(Run(), 0);
  Bytes after = before;
  if (!GetParam().voice) std::fill_n(after.begin(), length, std::uint8_t{0});
  std::copy_n("strokes", 7, after.begin());
  EXPECT_EQ(data_->Content(), after) << "and nothing behind the text";
}

TEST_P(Sign, StrokesAreCopiedWholeWithoutATerminator) {
  const std::string strokes = FileContent(100'000);
  data_.emplace(strokes.size(), std::uint8_t{0});
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature(strokes);
  const LogCapture log;
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(data_->Content(), BytesOf(strokes));
  EXPECT_THAT(OwnMessages(log), testing::Contains(SizeLog(100'000)));
}

TEST_P(Sign, NoStrokesAreAnEmptyFileAndNoBytes) {
  data_.emplace(BytesOf(std::string("ab\0x", 4)));
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature("");
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(data_->Content(), BytesOf(std::string(GetParam().voice ? "ab\0x" : "\0\0\0x", 4)));
}

TEST_P(Sign, DataBufferAndLinkMayBeMissing) {
  data_.reset();
  link_ = nullptr;
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(ReadFile(Path("hw.data")), "strokes");
}

// ------------------------------------------------------------------ where the files go

TEST_P(Sign, StrokesGoBesideThePicture) {
  std::filesystem::create_directories(directory_ / "home/u");
  picture_path_ = Path("home/u/sig.png");
  picture_ = picture_path_.data();
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(ReadFile(Path("home/u/hw.data")), "strokes");
}

TEST_P(Sign, PictureInTheRootHasItsStrokesThere) {
  const FilesElsewhere root(directory_.Path(), {"/sig.png", "/hw.data"});
  char picture[] = "/sig.png";
  picture_ = picture;
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  const LogCapture log;
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(ReadFile(Path("sig.png")), "picture");
  EXPECT_EQ(ReadFile(Path("hw.data")), "strokes");
  EXPECT_THAT(OwnMessages(log), testing::Contains("Get signData Path=/hw.data"));
}

TEST_P(Sign, PictureWithoutADirectoryHasItsStrokesInTheRoot) {
  const FilesElsewhere root(directory_.Path(), {"/hw.data"});
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::create_directory(directory_ / "here");
  std::filesystem::current_path(directory_ / "here");
  char picture[] = "sig.png";
  picture_ = picture;
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  const LogCapture log;
  EXPECT_EQ(Run(), 0);
  std::filesystem::current_path(before);
  EXPECT_EQ(ReadFile(Path("here/sig.png")), "picture");
  EXPECT_EQ(ReadFile(Path("hw.data")), "strokes");
  EXPECT_THAT(OwnMessages(log), testing::Contains("Get signData Path=/hw.data"));
}

TEST_P(Sign, WithoutAPictureOnlyTheStrokesAreFetched) {
  const FilesElsewhere root(directory_.Path(), {"/hw.data"});
  char empty[] = "";
  for (char* picture : {static_cast<char*>(nullptr), empty}) {
    picture_ = picture;
    ExpectOpening();
    usb_.Answer(wire::kDone);
    ExpectPull(wire::kPullStrokes, "strokes");
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(data_->Content(), kStrokes);
    EXPECT_EQ(ReadFile(Path("hw.data")), "strokes");
    EXPECT_EQ(SleptMs().front(), 200);
    std::filesystem::remove(Path("hw.data"));
  }
}

TEST_P(Sign, PathThatNoSystemOpensIsMinus14) {
  picture_path_ = std::string(5000, 'x') + "/sig.png";
  picture_ = picture_path_.data();
  ExpectOpening();
  usb_.Answer(wire::kDone);
  usb_.ExpectCommand(wire::kPullPicture).AnswerReport("\x02\x01");
  const LogCapture log;
  EXPECT_EQ(Run(), -14);
  EXPECT_EQ(OwnMessages(log).back(), InGbk("[GWQ_CallShowPDF]获取签名图片失败 nRet=-11"));
  ExpectNothingFetched();
}

// ------------------------------------------------------------------ answers

TEST_P(Sign, CustomersWhoDoNotSignEndItAndTheScreenIsClosed) {
  struct Row {
    std::string_view answer;
    int status;
    std::string log;
  };
  for (const Row& row : {Row{wire::kCustomerTooLate, -2, GetParam().too_late},
                         Row{wire::kCustomerCancelled, -23, GetParam().cancelled},
                         Row{wire::kRefused, -14, GetParam().failed}}) {
    ExpectOpening();
    usb_.Answer(row.answer).ExpectCommand(wire::kCloseInformation);
    const LogCapture log;
    EXPECT_EQ(Run(), row.status);
    EXPECT_THAT(MessagesAfter(log, kList), ElementsAre(kPushed, kAnswered, row.log));
    ExpectNothingFetched();
    EXPECT_TRUE(usb_.Finished());
  }
  EXPECT_THAT(SleptMs(), IsEmpty());
}

TEST_P(Sign, EveryOtherAnswerGoesOnToThePull) {
  for (const Bytes& answer : OtherAnswers()) {
    ExpectOpening();
    usb_.Answer(answer);
    ExpectSignature();
    EXPECT_EQ(Run(), 0) << Readable(answer);
    EXPECT_EQ(data_->Content(), kStrokes) << Readable(answer);
  }
}

TEST_P(Sign, AnswersThatFillTheBufferGoOnToThePull) {
  for (const std::uint8_t fill : {std::uint8_t{'n'}, std::uint8_t{0}}) {
    ExpectOpening();
    usb_.Answer(Bytes(1023, fill));
    for (int i = 0; i < 4; ++i) usb_.Answer(Bytes(1024, fill));
    ExpectSignature();
    EXPECT_EQ(Run(), 0);
  }
}

TEST_P(Sign, AnswerMayComeInPiecesOrInAReport) {
  ExpectOpening();
  usb_.Answer("\x02").Answer("\x66", 3).Answer("\x03", 100).ExpectCommand(wire::kCloseInformation);
  EXPECT_EQ(Run(), -23);
  ExpectOpening();
  usb_.AnswerReport(wire::kCustomerCancelled, 7).ExpectCommand(wire::kCloseInformation);
  EXPECT_EQ(Run(), -23);
}

TEST_P(Sign, CancelledWaitGoesOnToThePull) {
  LeaveSomething();
  ExpectOpening();
  ExpectSignature();
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.in && transfer.index == OpeningIns()) CancelRead();
  });
  const LogCapture log;
  EXPECT_EQ(Run(), 0);
  EXPECT_THAT(OwnMessages(log), testing::Contains("TransProc nRet=-23\n"));
  EXPECT_EQ(data_->Content(), kStrokes);
}

TEST_P(Sign, TerminalThatVanishesDuringTheWaitIsMinus14) {
  LeaveSomething();
  ExpectOpening();
  usb_.OnTransfer([this](const Transfer& transfer) {
    if (transfer.in && transfer.index == OpeningIns()) usb_.Unplug();
  });
  const LogCapture log;
  EXPECT_EQ(Run(), -14);
  EXPECT_EQ(OwnMessages(log).back(), InGbk("[GWQ_CallShowPDF]获取签名图片失败 nRet=-3"));
}

// ------------------------------------------------------------------ failing to fetch

TEST_P(Sign, BrokenPictureIsMinus14WithoutClosing) {
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectBrokenPull(wire::kPullPicture);
  const LogCapture log;
  EXPECT_EQ(Run(), -14);
  EXPECT_EQ(OwnMessages(log).back(), InGbk("[GWQ_CallShowPDF]获取签名图片失败 nRet=-14"));
  ExpectNothingFetched();
}

TEST_P(Sign, BrokenStrokesAreMinus14WithoutClosing) {
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectPull(wire::kPullPicture, "picture");
  ExpectBrokenPull(wire::kPullStrokes);
  const LogCapture log;
  EXPECT_EQ(Run(), -14);
  EXPECT_EQ(OwnMessages(log).back(), InGbk("[GWQ_CallShowPDF]获取矢量数据失败 nRet=-14"));
  EXPECT_EQ(ReadFile(Path("sig.png")), "picture") << "stays";
  EXPECT_TRUE(data_->AllAre(0));
}

TEST_P(Sign, StrokesThatCannotBeOpenedAreMinus14) {
  data_.emplace(BytesOf(std::string("before\0", 7)));
  LeaveSomething();
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature();
  const int last_acknowledgement = OpeningOuts() + 2 * 3 - 1;
  usb_.OnTransfer([this, last_acknowledgement](const Transfer& transfer) {
    if (!transfer.in && transfer.index == last_acknowledgement) std::filesystem::remove(Path("hw.data"));
  });
  const LogCapture log;
  EXPECT_EQ(Run(), -14);
  EXPECT_EQ(OwnMessages(log).back(), InGbk("[GWQ_CallShowPDF]打开矢量数据文件失败"));
  EXPECT_EQ(data_->Content(), BytesOf(std::string("before\0", 7))) << "not even cleared";
}

// ------------------------------------------------------------------ before the customer is asked

TEST_P(Sign, ArgumentsThatDoNotHoldAreMinus1BeforeTheDrain) {
  const LogCapture log;
  for (const int timeout : {0, 1000, -1, INT_MIN, INT_MAX}) EXPECT_EQ(Run(timeout), -1) << timeout;
  location_.clear();
  EXPECT_EQ(Run(), -1);
  location_ = "p1,x2";
  documents_.clear();
  EXPECT_EQ(Run(), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_EQ(log.Messages(), std::vector<std::string>(7, GetParam().bad_argument));
  ExpectNothingFetched();
}

TEST_F(SigningCalls, NullTextsAreMinus1BeforeTheDrain) {
  char* const paths = documents_.data();
  char* const place = location_.data();
  char* const data = data_->text();
  EXPECT_EQ(MP_SignPDF(nullptr, link_, 9600, 30, nullptr, place, picture_, data), -1);
  EXPECT_EQ(MP_SignPDF(nullptr, link_, 9600, 30, paths, nullptr, picture_, data), -1);
  EXPECT_EQ(MP_SignPDF_Voice(nullptr, link_, 9600, 30, nullptr, place, voice_, picture_, data), -1);
  EXPECT_EQ(MP_SignPDF_Voice(nullptr, link_, 9600, 30, paths, nullptr, voice_, picture_, data), -1);
  const LogCapture log;
  EXPECT_EQ(MP_SignPDF_Voice(nullptr, link_, 9600, 30, paths, place, nullptr, picture_, data), -1);
  EXPECT_THAT(log.Messages(), ElementsAre(InGbk("参数错误")));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_P(Sign, AbsentTerminalIsMinus3FromTheDrain) {
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(Run(), -3);
  EXPECT_THAT(OwnMessages(log), IsEmpty());
}

TEST_P(Sign, FailedPushIsLoggedAndReturned) {
  documents_ = Path("missing.pdf");
  if (GetParam().voice) Exchange(wire::kSetVoice);
  const LogCapture log;
  EXPECT_EQ(Run(), -15);
  EXPECT_THAT(OwnMessages(log), ElementsAre("pushFileToZ11", "File Not Exist", "szFileNameListGBK=",
                                            "pushFileToZ11 nRet = -15", "pushFileToZ11  nRet= -15"));
  documents_ = MakeFile("a.pdf");
  if (GetParam().voice) Exchange(wire::kSetVoice);
  Exchange(wire::kModeChange, wire::kFailed);
  EXPECT_EQ(Run(), -2);
  ExpectNothingFetched();
}

TEST_P(Sign, TimesAtTheirBoundsAreSentAndWaitedFor) {
  for (const int seconds : {1, 999}) {
    SetTime(kStart);
    LeaveSomething();
    if (GetParam().voice) Exchange(wire::kSetVoice);
    ExpectDocuments();
    usb_.ExpectCommand(std::string("\x1B[2YCNEWSTARTSIGN\x02") + "0|" + std::to_string(seconds) +
                       "|p1,x2|/tmp/a.pdf|/tmp/b.pdf\x03");
    ExpectSignature();
    const LogCapture log;
    EXPECT_EQ(Run(seconds), 0) << "silence goes on to the pull as well";
    EXPECT_THAT(OwnMessages(log), testing::Contains("TransProc nRet=-11\n"));
    EXPECT_EQ(Elapsed(), seconds + 3 + 1) << "more than the seconds and three";
  }
}

TEST_P(Sign, LongLocationAndLongListAreSentWhole) {
  const std::filesystem::path before = std::filesystem::current_path();
  MakeFile("a");
  std::filesystem::current_path(directory_.Path());
  documents_.clear();
  location_ = std::string(5000, 'l');
  std::string places;
  if (GetParam().voice) Exchange(wire::kSetVoice);
  for (int i = 0; i < 255; ++i) {
    ExpectPush(255, "/tmp/a");
    documents_.append("./a|");
    places.append(i == 0 ? "/tmp/a" : "|/tmp/a");
  }
  usb_.ExpectCommand(std::string("\x1B[2YCNEWSTARTSIGN\x02") + "0|30|" + location_ + "|" + places + "\x03")
      .Answer(wire::kCustomerCancelled);
  usb_.ExpectCommand(wire::kCloseInformation);
  EXPECT_EQ(Run(), -23);
  std::filesystem::current_path(before);
}

TEST_P(Sign, ChineseNamesAreGbkInTheListAndTheLocationIsSentAsItIs) {
  documents_ = MakeFile("合同.pdf");
  location_ = "位置";
  if (GetParam().voice) Exchange(wire::kSetVoice);
  ExpectPush(255, "/tmp/合同.pdf");
  Exchange(std::string("\x1B[2YCNEWSTARTSIGN\x02") + "0|30|位置|/tmp/\xBA\xCF\xCD\xAC.pdf\x03",
           wire::kCustomerCancelled);
  usb_.ExpectCommand(wire::kCloseInformation);
  EXPECT_EQ(Run(), -23);
}

TEST_P(Sign, NoMemoryForTheCommandIsMinus24) {
  location_ = std::string(100'000, 'l');
  if (GetParam().voice) Exchange(wire::kSetVoice);
  ExpectDocuments();
  const NoMemoryFor blocks(100'000);
  EXPECT_EQ(Run(), -24);
  ExpectNothingFetched();
}

// ------------------------------------------------------------------ the spoken prompt

TEST_F(SigningCalls, VoiceThatIsNotUtf8IsMinus1AfterTheDrain) {
  voice_text_ = "ok\xFF";
  voice_ = voice_text_.data();
  const LogCapture log;
  EXPECT_EQ(Voice(), -1);
  EXPECT_THAT(OwnMessages(log), ElementsAre("setSignVoice\tFail   nRet= -1"));
  EXPECT_EQ(usb_.Count("in"), kDrainReads);
  EXPECT_EQ(usb_.Count("out"), 0);
}

TEST_F(SigningCalls, VoiceMayBeEmpty) {
  voice_text_.clear();
  Exchange("\x1B[2YCSETVOICECONTENT\x02\x03");
  Exchange(wire::kModeChange, wire::kFailed);
  EXPECT_EQ(Voice(), -2);
}

TEST_F(SigningCalls, AnswerToTheVoiceDoesNotMatter) {
  for (const std::string_view answer : {wire::kRefused, wire::kCustomerCancelled, std::string_view("\x03")}) {
    Exchange(wire::kSetVoice, answer);
    Exchange(wire::kModeChange, wire::kFailed);
    EXPECT_EQ(Voice(), -2);
  }
}

TEST_F(SigningCalls, SilenceToTheVoiceIsMinus11AfterThreeSeconds) {
  usb_.ExpectCommand(wire::kSetVoice);
  const LogCapture log;
  EXPECT_EQ(Voice(), -11);
  EXPECT_THAT(OwnMessages(log), ElementsAre("setSignVoice\tFail   nRet= -11"));
  EXPECT_EQ(Elapsed(), kDrainSeconds + 3 + 1);
}

TEST_F(SigningCalls, CancelledVoiceIsReturned) {
  usb_.ExpectCommand(wire::kSetVoice);
  CancelTheWait();
  EXPECT_EQ(Voice(), -23);
}

TEST_F(SigningCalls, LongVoiceIsSentWhole) {
  voice_text_.clear();
  std::string gbk;
  for (int i = 0; i < 20'000; ++i) {
    voice_text_ += "请";
    gbk += "\xC7\xEB";
  }
  voice_ = voice_text_.data();
  Exchange(std::string("\x1B[2YCSETVOICECONTENT\x02") + gbk + "\x03");
  Exchange(wire::kModeChange, wire::kFailed);
  EXPECT_EQ(Voice(), -2);
}

// Two bytes of UTF-8 become four.
TEST_F(SigningCalls, VoiceThatGrowsIsSentWhole) {
  voice_text_.clear();
  std::string gb18030;
  for (int i = 0; i < 5000; ++i) {
    voice_text_ += "\u00E7";
    gb18030 += "\x81\x30\x8A\x34";
  }
  voice_ = voice_text_.data();
  Exchange(std::string("\x1B[2YCSETVOICECONTENT\x02") + gb18030 + "\x03");
  Exchange(wire::kModeChange, wire::kFailed);
  EXPECT_EQ(Voice(), -2);
}

TEST_F(SigningCalls, NoMemoryForTheVoiceIsMinus24) {
  voice_text_ = std::string(5000, 'v');
  voice_ = voice_text_.data();
  for (const std::size_t limit : {std::size_t{2 * 5000 + 255}, std::size_t{2 * 5000 + 256}}) {
    const NoMemoryFor blocks(limit);  // for the text, and for the command alone
    const LogCapture log;
    EXPECT_EQ(Voice(), -24);
    EXPECT_THAT(OwnMessages(log), ElementsAre("setSignVoice\tFail   nRet= -24"));
  }
  EXPECT_EQ(usb_.Count("out"), 0);
}

// ------------------------------------------------------------------ outputs whose size is told

TEST_P(Sign, StrokesThatFillTheRoomToldAreCopied) {
  ASSERT_EQ(GWQ_SetOutputRoom(7), 0);
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature("strokes");
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(GWQ_SetOutputRoom(0), 0);
}

TEST_P(Sign, StrokesBeyondTheRoomToldAreMinus24AndStandInTheirFile) {
  Bytes before = BytesOf("kept");
  before.push_back(0);
  data_.emplace(before);
  ASSERT_EQ(GWQ_SetOutputRoom(6), 0);
  ExpectOpening();
  usb_.Answer(wire::kDone);
  ExpectSignature("strokes");
  EXPECT_EQ(Run(), -24);
  EXPECT_EQ(data_->Content(), before);
  EXPECT_EQ(ReadFile(Path("hw.data")), "strokes");
  EXPECT_EQ(GWQ_SetOutputRoom(0), 0);
}

TEST(OutputRoom, IsNotNegativeAndEachThreadsOwn) {
  EXPECT_EQ(GWQ_SetOutputRoom(-1), -1);
  EXPECT_TRUE(FitsOutputRoom(1U << 30U)) << "as the contract has it";
  ASSERT_EQ(GWQ_SetOutputRoom(10), 0);
  EXPECT_EQ(GWQ_SetOutputRoom(-1), -1);
  EXPECT_TRUE(FitsOutputRoom(10));
  EXPECT_FALSE(FitsOutputRoom(11)) << "a number that is refused changes nothing";
  std::thread([] { EXPECT_TRUE(FitsOutputRoom(1U << 30U)); }).join();
  EXPECT_EQ(GWQ_SetOutputRoom(0), 0);
  EXPECT_TRUE(FitsOutputRoom(1U << 30U));
}

// A customer must not sign a shorter list.
TEST_P(Sign, ListThatCannotBeSentWholeIsMinus1BeforeTheDrain) {
  for (const std::string& paths : {MakeFile("a.pdf") + "|" + MakeFile("b\xFF.pdf"), std::string(1024, 'p')}) {
    const int result =
        GetParam().voice
            ? MP_SignPDF_Voice(nullptr, nullptr, 9600, 30, paths.c_str(), "1", "v", "/x/sig.png", nullptr)
            : MP_SignPDF(nullptr, nullptr, 9600, 30, paths.c_str(), "1", "/x/sig.png", nullptr);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(
        MP_Sign_With_TZG(nullptr, nullptr, 9600, 30, paths.c_str(), "1", "v", "/x/sig.png", 0, 3, nullptr),
        -1);
  }
  EXPECT_THAT(usb_.Calls(), testing::IsEmpty());
}

}  // namespace
}  // namespace gwq::test
