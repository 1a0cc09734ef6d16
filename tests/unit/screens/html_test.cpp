// SPDX-License-Identifier: MIT
// Pages on the information screen. What the library opens as "/tmp/infoviewerex.html" is a file of
// the test here.
#include <gwq/screens/html.h>

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdarg>
#include <cstdlib>
#include <functional>

#include "support/failing_memory.h"
#include "support/iconv_text.h"
#include "unit/screens/screens_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kPageName[] = "/tmp/infoviewerex.html";
std::string g_page_file;

const char* PlaceOf(const char* path) {
  return path != nullptr && std::string_view(path) == kPageName ? g_page_file.c_str() : path;
}

constexpr int kUntouched = 77;
constexpr char kPage[] = "hi";

class Html : public FilesRig {
 protected:
  Html() { g_page_file = Path("infoviewerex.html"); }

  int Show(int mode, const char* page = kPage, int timeout = 30, int countdown = 7) {
    return MP_StartInfoHtml(nullptr, nullptr, 9600, timeout, mode, page, &display_, countdown);
  }
  int Capture(int mode, const char* page = kPage, int timeout = 30) {
    return MP_StartInfoHtmlScreenshot(nullptr, "9", 9600, timeout, mode, page, picture_.c_str(), &display_);
  }

  void ExpectVersion() { usb_.ExpectCommand(wire::kGetVersion).Answer(wire::kVersion20231114); }
  void ExpectSetUp() { usb_.ExpectCommand(wire::kCloseInformation).ExpectCommand(wire::kInformationTime30); }
  void ExpectAsked(std::string_view answer) {
    ExpectVersion();
    ExpectSetUp();
    usb_.ExpectCommand(wire::kCountdown7).ExpectCommand(wire::kAskPage).Answer(answer, 3);
  }
  void ExpectCaptured(std::string_view answer) {
    ExpectSetUp();
    usb_.ExpectCommand(wire::kCapturePage).Answer(answer, 3);
  }
  void ExpectPicture(std::string_view content) {
    usb_.ExpectCommand(wire::kPullCapture);
    for (const Bytes& packet : {wire::TransferPacket(2, BytesOf(content)), wire::TransferPacket(3, {})}) {
      usb_.Answer(PaddedToReports(packet)).ExpectCommand(wire::kAccepted);
    }
  }

  int display_ = kUntouched;
  std::string picture_ = Path("picture.png");
};

// ------------------------------------------------------------------ answer keys

struct Key {
  std::string_view answer;
  int status;
  int display;
};

std::string NameOf(const Key& each) {
  return Readable(BytesOf(each.answer));
}

class HtmlKeys : public Html, public testing::WithParamInterface<Key> {};

TEST_P(HtmlKeys, ReachTheCaller) {
  ExpectAsked(GetParam().answer);
  EXPECT_EQ(Show(1), GetParam().status);
  EXPECT_EQ(display_, GetParam().display);
}

TEST_P(HtmlKeys, ReachTheCallerOfAScreenshot) {
  ExpectCaptured(GetParam().answer);
  if (GetParam().display == 0) ExpectPicture("picture");
  EXPECT_EQ(Capture(1), GetParam().status);
  EXPECT_EQ(display_, GetParam().display);
  EXPECT_EQ(ReadFile(picture_), GetParam().display == 0 ? "picture" : "") << "fetched for key 0 alone";
}

INSTANTIATE_TEST_SUITE_P(All, HtmlKeys,
                         testing::Values(Key{"B0F", 0, 0}, Key{"B1F", 0, 1}, Key{"B3F", 0, 2},
                                         Key{"B2F", -14, kUntouched}, Key{"B4F", -14, kUntouched},
                                         Key{"F", -14, kUntouched}, Key{"0F", -14, kUntouched},
                                         Key{"AB0F", -14, kUntouched}, Key{"B1xF", -14, kUntouched},
                                         Key{"B3FxF", 0, 2}));

// ------------------------------------------------------------------ MP_StartInfoHtml

TEST_F(Html, AskingLogsItsLinesInOrder) {
  ExpectAsked(wire::kKey3);
  const LogCapture log;
  EXPECT_EQ(Show(1), 0);
  EXPECT_THAT(
      OwnMessages(log),
      ElementsAre("MP_StartInfoHtml", "nModex=1", "nCountdownSec=7", "-- GWQ_GetVerBuildDate --",
                  "szData=V1.2|20231114", "VerBuildDate=20231114", "nVerDate:20231114", "isUtf8=1",
                  "BtntimeTip nRet:0", "MP_StartInfoHtml *pnDisplayResult = 2", "MP_StartInfoHtml nRet = 0"));
}

TEST_F(Html, UnknownKeyLogsTheUnchangedResult) {
  ExpectAsked(wire::kKey2);
  const LogCapture log;
  EXPECT_EQ(Show(-1), -14) << "any mode but 0 asks";
  const auto own = OwnMessages(log);
  EXPECT_THAT(std::vector(own.end() - 2, own.end()),
              ElementsAre("MP_StartInfoHtml *pnDisplayResult = 77", "MP_StartInfoHtml nRet = -14"));
}

TEST_F(Html, AskingPausesAroundTheCountdown) {
  ExpectAsked(wire::kKey0);
  usb_.OnTransfer([](const Transfer& transfer) {
    constexpr int kCountdown = 3;
    if (transfer.in || transfer.index < kCountdown) return;
    EXPECT_EQ(SleptMs(), std::vector<std::int64_t>(transfer.index == kCountdown ? 1 : 2, 100));
  });
  EXPECT_EQ(Show(1), 0);
  EXPECT_THAT(SleptMs(), ElementsAre(100, 100));
}

TEST_F(Html, PageIsShownWithoutWaiting) {
  ExpectVersion();
  ExpectSetUp();
  usb_.ExpectCommand(wire::kShowPage);
  const LogCapture log;
  EXPECT_EQ(Show(0), 0);
  EXPECT_EQ(display_, 0);
  EXPECT_EQ(Elapsed(), kDrainSeconds);
  EXPECT_THAT(SleptMs(), IsEmpty());
  const auto own = OwnMessages(log);
  EXPECT_EQ(own.size(), 9U);
  EXPECT_EQ(own.back(), "MP_StartInfoHtml nRet = 0");
}

TEST_F(Html, NoPageIsMinus1AndResult2BeforeAnythingIsSent) {
  const LogCapture log;
  for (const char* page : {static_cast<const char*>(nullptr), ""}) {
    display_ = kUntouched;
    EXPECT_EQ(Show(1, page), -1);
    EXPECT_EQ(display_, 2);
  }
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_THAT(log.Messages(), ElementsAre("MP_StartInfoHtml", "nModex=1", "nCountdownSec=7",
                                          "MP_StartInfoHtml", "nModex=1", "nCountdownSec=7"));
}

TEST_F(Html, OldTerminalGetsTheSameWords) {
  usb_.ExpectCommand(wire::kGetVersion).Answer("\x02V1.2|20231113\x03");
  ExpectSetUp();
  usb_.ExpectCommand(wire::kShowPage);
  const LogCapture log;
  EXPECT_EQ(Show(0), 0);
  EXPECT_THAT(OwnMessages(log), testing::Contains("isUtf8=0"));
}

TEST_F(Html, UsbIsDrainedBehindTheVersion) {
  ExpectVersion();
  usb_.Answer("B1F");
  ExpectSetUp();
  usb_.ExpectCommand(wire::kCountdown7).ExpectCommand(wire::kAskPage).Answer(wire::kKey3);
  EXPECT_EQ(Show(1), 0);
  EXPECT_EQ(display_, 2);
}

TEST_F(Html, AbsentTerminalIsMinus3FromTheDrain) {
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(Show(1), -3);
  EXPECT_EQ(OwnMessages(log).back(), "isUtf8=0") << "no result is logged";
  EXPECT_EQ(Capture(1), -3);
  EXPECT_EQ(display_, kUntouched);
  EXPECT_EQ(usb_.Count("list"), 6) << "version, and two drains";
}

TEST_F(Html, SettingsThatCannotBeSentDoNotMatter) {
  for (const int failing : {1, 2, 3}) {
    ScriptedUsb usb;
    usb.PlugTerminal().ExpectCommand(wire::kGetVersion).Answer(wire::kVersion20231114);
    usb.ExpectCommand(wire::kCloseInformation).ExpectCommand(wire::kInformationTime30);
    usb.ExpectCommand(wire::kCountdown7).ExpectCommand(wire::kAskPage).Answer(wire::kKey1);
    usb.OnTransfer([failing](const Transfer& transfer) {
      if (!transfer.in && transfer.index == failing) CancelRead();
    });
    const LogCapture log;
    EXPECT_EQ(Show(1), 0);
    EXPECT_EQ(display_, 1);
    EXPECT_THAT(OwnMessages(log),
                testing::Contains(failing == 3 ? "BtntimeTip nRet:-10" : "BtntimeTip nRet:0"));
  }
}

TEST_F(Html, PageThatCannotBeSentIsReturnedAsItIs) {
  ExpectVersion();
  ExpectSetUp();
  usb_.ExpectCommand(wire::kShowPage);
  FailSending(3);
  EXPECT_EQ(Show(0), -10);
  EXPECT_EQ(display_, kUntouched);
}

TEST_F(Html, SilenceIsMinus11AfterTheTimeAnd2Seconds) {
  ExpectVersion();
  usb_.ExpectCommand(wire::kCloseInformation).ExpectCommand("\x1B[2;2T");
  usb_.ExpectCommand(wire::kCountdown7).ExpectCommand(wire::kAskPage);
  const LogCapture log;
  EXPECT_EQ(Show(1, kPage, 2), -11);
  EXPECT_EQ(Elapsed(), kDrainSeconds + 5) << "more than 2 + 2 whole seconds";
  EXPECT_EQ(display_, kUntouched);
  const auto own = OwnMessages(log);
  EXPECT_THAT(std::vector(own.end() - 2, own.end()),
              ElementsAre("BtntimeTip nRet:0", "MP_StartInfoHtml nRet = -11"));
}

TEST_F(Html, CancelledWaitIsMinus23) {
  ExpectVersion();
  ExpectSetUp();
  usb_.ExpectCommand(wire::kCountdown7).ExpectCommand(wire::kAskPage);
  CancelReading(5);
  EXPECT_EQ(Show(1), -23);
  EXPECT_EQ(display_, kUntouched);
}

TEST_F(Html, TakesAnyTimes) {
  for (const int seconds : {0, 1000, -1, INT_MIN, INT_MAX}) {
    const std::string number = std::to_string(seconds);
    ExpectVersion();
    usb_.ExpectCommand(wire::kCloseInformation)
        .ExpectCommand(std::string("\x1B[2;").append(number).append("T"));
    usb_.ExpectCommand(std::string("\x1B[2SETHTMLBTNTIME\x02").append(number).append("\x03"));
    usb_.ExpectCommand(wire::kAskPage).Answer(wire::kKey0);
    EXPECT_EQ(Show(1, kPage, seconds, seconds), 0);
  }
}

TEST_F(Html, ResultMayBeNull) {
  ExpectAsked(wire::kKey0);
  EXPECT_EQ(MP_StartInfoHtml(nullptr, nullptr, 9600, 30, 1, kPage, nullptr, 7), 0);
  EXPECT_EQ(MP_StartInfoHtml(nullptr, nullptr, 9600, 30, 1, "", nullptr, 7), -1);
  ExpectCaptured(wire::kKey1);
  EXPECT_EQ(MP_StartInfoHtmlScreenshot(nullptr, "9", 9600, 30, 1, kPage, picture_.c_str(), nullptr), 0);
}

TEST_F(Html, NoMemoryIsMinus24AndTheResult2UnlessTheFirstBufferFails) {
  ExpectAsked(wire::kKey0);
  const int to_show = RequestsOf([this] { EXPECT_EQ(Show(1), 0); });
  ExpectCaptured(wire::kKey1);
  const int to_capture = RequestsOf([this] { EXPECT_EQ(Capture(1), 0); });
  const int listed = usb_.Count("list");
  EXPECT_GT(to_show, 1);
  EXPECT_GT(to_capture, 1);
  for (int granted = 0; granted < to_show; ++granted) {
    const OutOfMemory wanting(granted);
    display_ = kUntouched;
    ExpectVersion();
    EXPECT_EQ(Show(1), -24);
    EXPECT_EQ(display_, granted == 0 ? kUntouched : 2) << granted;
  }
  for (int granted = 0; granted < to_capture; ++granted) {
    const OutOfMemory wanting(granted);
    display_ = kUntouched;
    EXPECT_EQ(Capture(1), -24);
    EXPECT_EQ(display_, granted == 0 ? kUntouched : 2) << granted;
  }
  EXPECT_EQ(usb_.Count("list"), listed + to_show) << "the versions alone";
}

// Runs a call on a stack of 256 KB.
void OnASmallStack(const std::function<void()>& call) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256U << 10U), 0);
  pthread_t thread{};
  const auto run = [](void* function) -> void* {
    (*static_cast<const std::function<void()>*>(function))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&call)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

class PageOfSize : public Html, public testing::WithParamInterface<std::size_t> {};

TEST_P(PageOfSize, IsSentWholeInEveryWay) {
  const std::string page = LongText(GetParam());
  const std::string fields = Split(page).append("\x03");
  ExpectVersion();
  ExpectSetUp();
  usb_.ExpectCommand(std::string("\x1B[2SHOWHTMLUTF8\x02").append(fields));
  ExpectVersion();
  ExpectSetUp();
  usb_.ExpectCommand(wire::kCountdown7);
  usb_.ExpectCommand(std::string("\x1B[2AUTF8\x02").append(fields)).Answer(wire::kKey1);
  ExpectSetUp();
  usb_.ExpectCommand(std::string("\x1B[2SHOWHTMLUTF8\x02").append(fields));
  ExpectSetUp();
  usb_.ExpectCommand(std::string("\x1B[2STARTSCREENSHOTUTF8\x02").append(fields)).Answer(wire::kKey1);
  OnASmallStack([&] {
    EXPECT_EQ(Show(0, page.c_str()), 0);
    EXPECT_EQ(Show(1, page.c_str()), 0);
    EXPECT_EQ(Capture(0, page.c_str()), 0);
    EXPECT_EQ(Capture(1, page.c_str()), 0);
  });
  EXPECT_EQ(display_, 1);
}

INSTANTIATE_TEST_SUITE_P(Sizes, PageOfSize, testing::Values(1, 497, 498, 1024, 60U << 10U, 1U << 20U));

// ------------------------------------------------------------------ MP_StartInfoHtmlScreenshot

TEST_F(Html, ScreenshotIsFetchedAndLogged) {
  ExpectCaptured(wire::kKey0);
  ExpectPicture("picture");
  const LogCapture log;
  EXPECT_EQ(Capture(1), 0);
  EXPECT_EQ(ReadFile(picture_), "picture");
  EXPECT_THAT(OwnMessages(log), ElementsAre("MP_StartInfoHtmlScreenshot", "nModex=1", InGbk("获取截图成功"),
                                            "MP_StartInfoHtmlScreenshot *pnDisplayResult = 0",
                                            "MP_StartInfoHtmlScreenshot nRet = 0"));
  EXPECT_THAT(SleptMs(), ElementsAre(200, 10)) << "before the fetch, and between its reports";
}

TEST_F(Html, ScreenshotThatCannotBeFetchedIsMinus14AndTheResultUnchanged) {
  struct Row {
    std::function<void()> script;
    std::string log;
  };
  const auto refused = [this] {
    usb_.ExpectCommand(wire::kPullCapture).Answer(Bytes(1024, 0)).ExpectCommand(wire::kRejected);
  };
  const auto silent = [this] { usb_.ExpectCommand(wire::kPullCapture); };
  for (const Row& row : {Row{refused, "获取截图失败 nRet=-14"}, Row{silent, "获取截图失败 nRet=-11"}}) {
    ExpectCaptured(wire::kKey0);
    row.script();
    const LogCapture log;
    EXPECT_EQ(Capture(1), -14);
    EXPECT_EQ(display_, kUntouched);
    EXPECT_THAT(OwnMessages(log), ElementsAre("MP_StartInfoHtmlScreenshot", "nModex=1", InGbk(row.log),
                                              "MP_StartInfoHtmlScreenshot *pnDisplayResult = 77",
                                              "MP_StartInfoHtmlScreenshot nRet = -14"));
  }
}

TEST_F(Html, ScreenshotWaits3SecondsForTheFetch) {
  ExpectCaptured(wire::kKey0);
  usb_.ExpectCommand(wire::kPullCapture);
  EXPECT_EQ(Capture(1), -14);
  EXPECT_EQ(Elapsed(), kDrainSeconds + 4) << "begun in the same second as the wait for the key";
}

TEST_F(Html, ScreenshotIsShownWithoutWaiting) {
  ExpectSetUp();
  usb_.ExpectCommand(wire::kShowPage);
  const LogCapture log;
  EXPECT_EQ(Capture(0), 0);
  EXPECT_EQ(display_, 0);
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("MP_StartInfoHtmlScreenshot", "nModex=0", "MP_StartInfoHtmlScreenshot nRet = 0"));
}

TEST_F(Html, ScreenshotNeedsAPageAndAPath) {
  const char* null = nullptr;
  const LogCapture log;
  for (const auto& [page, path] : {std::pair{null, "p"}, {"", "p"}, {"hi", null}, {"hi", ""}}) {
    display_ = kUntouched;
    EXPECT_EQ(MP_StartInfoHtmlScreenshot(nullptr, "9", 9600, 30, 1, page, path, &display_), -1);
    EXPECT_EQ(display_, 2);
  }
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  const auto all = log.Messages();
  ASSERT_EQ(all.size(), 12U);
  EXPECT_EQ(all.back(), "MP_StartInfoHtmlScreenshot  ERR_PARAMS");
}

TEST_F(Html, ScreenshotTakesNoLinkString) {
  ExpectCaptured(wire::kKey0);
  ExpectPicture("picture");
  EXPECT_EQ(MP_StartInfoHtmlScreenshot(nullptr, nullptr, 9600, 30, 1, kPage, picture_.c_str(), &display_), 0);
}

TEST_F(Html, SilentScreenshotIsMinus11AfterTheTimeAnd2Seconds) {
  usb_.ExpectCommand(wire::kCloseInformation).ExpectCommand("\x1B[2;2T").ExpectCommand(wire::kCapturePage);
  EXPECT_EQ(Capture(1, kPage, 2), -11);
  EXPECT_EQ(Elapsed(), kDrainSeconds + 5);
  EXPECT_EQ(display_, kUntouched);
}

// ------------------------------------------------------------------ MP_StartInfoHtmlEx

constexpr char kHtmlPage[] = "<html>x</html>";

class HtmlFile : public Html {
 protected:
  int Run(const char* page = kHtmlPage, const char* extra = "<>", int timeout = 30) {
    std::fill_n(result_.data(), result_.size(), std::uint8_t{0x55});
    return MP_StartInfoHtmlEx(nullptr, nullptr, 115200, timeout, extra, page, result_.text());
  }

  void ExpectFile(std::string_view page) { ExpectPush(255, kPageName, page); }
  void ExpectShown(std::string_view answer) { usb_.ExpectCommand(wire::kShowPageFile).Answer(answer, 3); }
  void ExpectResult(std::string_view text) {
    EXPECT_EQ(Readable(result_.First(text.size() + 1)), Readable(Concat(BytesOf(text), {0})));
    EXPECT_EQ(result_.Content()[text.size() + 1], 0x55) << "not one byte more";
  }
  static std::string Wrapped(std::string_view text) {
    return std::string("<pre><p style=\"font-size:32px;word-break:break-all;word-wrap:break-word\">")
        .append(text)
        .append("</p></pre>");
  }
  // Without the push's own.
  static std::vector<std::string> Lines(const LogCapture& log) {
    std::vector<std::string> lines = OwnMessages(log);
    std::erase_if(lines, [](const std::string& line) {
      return line.starts_with("Z11") || line.starts_with(" Z11") || line.starts_with("cmdEnd");
    });
    return lines;
  }

  GuardedBuffer result_{2047, 0x55};
};

TEST_F(HtmlFile, PageIsPushedShownAndAnswered) {
  ExpectFile(kHtmlPage);
  ExpectShown("BokF");
  const LogCapture log;
  EXPECT_EQ(Run(), 0);
  ExpectResult("ok");
  EXPECT_THAT(Lines(log), ElementsAre("iRet:0", "result=ok"));
}

TEST_F(HtmlFile, PageStaysInAFileOfItsOwners) {
  ExpectFile(kHtmlPage);
  ExpectShown("BokF");
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(ReadFile(g_page_file), kHtmlPage);
  struct stat status {};
  ASSERT_EQ(stat(g_page_file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(HtmlFile, LinkUnderThePagesNameIsReplacedAndNotFollowed) {
  const std::string precious = MakeFile("precious", "precious");
  std::filesystem::create_symlink(precious, g_page_file);
  ExpectFile(kHtmlPage);
  ExpectShown("BokF");
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(ReadFile(precious), "precious");
  EXPECT_FALSE(std::filesystem::is_symlink(g_page_file));
}

TEST_F(HtmlFile, PageThatCannotBeWrittenIsMinus1AndNotPushed) {
  std::filesystem::create_directory(g_page_file);
  const LogCapture log;
  EXPECT_EQ(Run(), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_THAT(Lines(log), ElementsAre("GWQDownLoadFile ERROR=-1"));
  EXPECT_TRUE(result_.AllAre(0x55));
}

TEST_F(HtmlFile, WhatIsNotHtmlIsWrapped) {
  struct Row {
    std::string page;
    bool html;
  };
  for (const Row& row : {Row{"hello", false}, Row{"<html", false}, Row{"<html>no end", false},
                         Row{"no beginning</html>", false}, Row{"<HTML></HTML>", false},
                         Row{"<htm l></html>", false}, Row{"</html><html", true},
                         Row{"<!DOCTYPE html><html lang=\"zh\">王</html>\n", true}, Row{"王%s%n", false}}) {
    ExpectFile(row.html ? row.page : Wrapped(row.page));
    ExpectShown("BokF");
    EXPECT_EQ(Run(row.page.c_str()), 0);
    EXPECT_EQ(ReadFile(g_page_file), row.html ? row.page : Wrapped(row.page));
  }
}

class FileOfSize : public HtmlFile, public testing::WithParamInterface<std::size_t> {};

TEST_P(FileOfSize, IsPushedWhole) {
  const std::string page = LongText(GetParam());
  ExpectFile(Wrapped(page));
  ExpectShown("BokF");
  OnASmallStack([&] { EXPECT_EQ(Run(page.c_str()), 0); });
}

INSTANTIATE_TEST_SUITE_P(Sizes, FileOfSize, testing::Values(1, 1024, 60U << 10U, 1U << 20U));

struct Extra {
  std::size_t size;
  bool fits;
};

std::string NameOf(const Extra& each) {
  return std::to_string(each.size);
}

class ExtraText : public HtmlFile, public testing::WithParamInterface<Extra> {};

TEST_P(ExtraText, IsSentWholeOrNotAtAll) {
  const std::string extra = LongText(GetParam().size);
  ExpectFile(kHtmlPage);
  usb_.ExpectCommand(std::string("\x1B[2YCSTARTINFOHTMLEXUTF8\x02")
                         .append("30#")
                         .append(GetParam().fits ? Split(extra) : "")
                         .append("#\x03"))
      .Answer("BokF");
  EXPECT_EQ(Run(kHtmlPage, extra.c_str()), 0);
}

INSTANTIATE_TEST_SUITE_P(Sizes, ExtraText,
                         testing::Values(Extra{0, true}, Extra{1, true}, Extra{127, true}, Extra{128, true},
                                         Extra{129, false}, Extra{1U << 20U, false}));

TEST_F(HtmlFile, CustomersTimeOutIsMinus2AndItsGbkWord) {
  for (const char* answer : {"B0F", "B0xyzF"}) {
    ExpectFile(kHtmlPage);
    ExpectShown(answer);
    const LogCapture log;
    EXPECT_EQ(Run(), -2);
    ExpectResult("\xB3\xAC\xCA\xB1");
    EXPECT_THAT(Lines(log), ElementsAre("iRet:0"));
  }
}

TEST_F(HtmlFile, OtherAnswersAreGivenWithoutTheirFirstAndLastCharacter) {
  for (const auto& [answer, result] :
       {std::pair{"B1F", "1"}, {"b0F", "0"}, {"AB0F", "B0"}, {"F", ""}, {"BF", ""}, {"B%sF", "%s"}}) {
    ExpectFile(kHtmlPage);
    ExpectShown(answer);
    EXPECT_EQ(Run(), 0);
    ExpectResult(result);
  }
}

TEST_F(HtmlFile, LongestAnswerIsGivenWhole) {
  ExpectFile(kHtmlPage);
  usb_.ExpectCommand(wire::kShowPageFile).Answer(Bytes(1023, 'x')).Answer(Bytes(1024, 'y'));
  EXPECT_EQ(Run(), 0);
  ExpectResult(std::string(1022, 'x').append(std::string(1023, 'y')));
}

TEST_F(HtmlFile, BadArgumentsAreRefusedBeforeAnythingIsWrittenOrSent) {
  EXPECT_EQ(Run(nullptr), -1);
  EXPECT_EQ(Run(""), -1);
  EXPECT_EQ(Run(kHtmlPage, nullptr), -1);
  for (const int timeout : {0, 1000, -1, INT_MIN, INT_MAX}) EXPECT_EQ(Run(kHtmlPage, "", timeout), -1);
  EXPECT_EQ(MP_StartInfoHtmlEx(nullptr, nullptr, 9600, 30, "", kHtmlPage, nullptr), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(g_page_file));
  EXPECT_TRUE(result_.AllAre(0x55));
}

TEST_F(HtmlFile, TimesAtTheirBoundsAreSent) {
  for (const auto& [timeout, number] : {std::pair{1, "1"}, {999, "999"}}) {
    ExpectFile(kHtmlPage);
    usb_.ExpectCommand(std::string("\x1B[2YCSTARTINFOHTMLEXUTF8\x02").append(number).append("##\x03"))
        .Answer("BokF");
    EXPECT_EQ(Run(kHtmlPage, "", timeout), 0);
  }
}

TEST_F(HtmlFile, PushThatFailsIsLoggedAndReturned) {
  usb_.ExpectCommand(wire::kModeChange).Answer(wire::kRefused);
  const LogCapture log;
  EXPECT_EQ(Run(), -14);
  usb_.Unplug();
  EXPECT_EQ(Run(), -3);
  EXPECT_THAT(Lines(log), ElementsAre("GWQDownLoadFile ERROR=-14", "GWQDownLoadFile ERROR=-3"));
  EXPECT_TRUE(result_.AllAre(0x55));
}

TEST_F(HtmlFile, NothingIsDrained) {
  usb_.ExpectCommand(wire::kModeChange).Answer(wire::kRefused);
  EXPECT_EQ(Run(), -14);
  EXPECT_EQ(usb_.Count("in"), 1);
}

TEST_F(HtmlFile, SilenceIsMinus11AfterTheTimeAnd3Seconds) {
  ExpectFile(kHtmlPage);
  usb_.ExpectCommand("\x1B[2YCSTARTINFOHTMLEXUTF8\x02\x32##\x03");
  const LogCapture log;
  EXPECT_EQ(Run(kHtmlPage, "", 2), -11);
  EXPECT_EQ(Elapsed(), 6) << "more than 2 + 3 whole seconds";
  EXPECT_THAT(Lines(log), ElementsAre("iRet:-11"));
  EXPECT_TRUE(result_.AllAre(0x55));
}

TEST_F(HtmlFile, CancelledWaitIsMinus23) {
  ExpectFile(kHtmlPage);
  usb_.ExpectCommand(wire::kShowPageFile);
  CancelReading(5);
  EXPECT_EQ(Run(), -23);
  EXPECT_TRUE(result_.AllAre(0x55));
}

}  // namespace
}  // namespace gwq::test

extern "C" {

int __real_open(const char* path, int flags, ...);
int __real_unlink(const char* path);
std::FILE* __real_fopen(const char* path, const char* mode);

int __wrap_open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return __real_open(gwq::test::PlaceOf(path), flags, mode);
}

int __wrap_unlink(const char* path) {
  return __real_unlink(gwq::test::PlaceOf(path));
}

std::FILE* __wrap_fopen(const char* path, const char* mode) {
  return __real_fopen(gwq::test::PlaceOf(path), mode);
}

}  // extern "C"
