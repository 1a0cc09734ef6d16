// SPDX-License-Identifier: MIT
// HTML pages with every answer that the customer can give.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "e2e/library/png.h"
#include "e2e/library/screens_rig.h"

namespace gwq::test {
namespace {

using testing::HasSubstr;

constexpr char kPage[] = "<html><body><h1>利率 Rates</h1></body></html>";
constexpr char kPageFile[] = "/tmp/infoviewerex.html";
constexpr int kWait = 1;
constexpr int kShowOnly = 0;

class Pages : public ScreenSession {
 protected:
  int Show(int seconds, int mode, const std::string& page, int& result) {
    result = kUntouched;
    return lib.Get<MP_StartInfoHtml>()(nullptr, nullptr, kBaud, seconds, mode, page.c_str(), &result, 3);
  }

  int Capture(int seconds, int mode, const std::string& page, const std::string& picture, int& result) {
    result = kUntouched;
    return lib.Get<MP_StartInfoHtmlScreenshot>()(nullptr, kLink, kBaud, seconds, mode, page.c_str(),
                                                 picture.c_str(), &result);
  }

  std::string ShowFile(int seconds, const std::string& page, int status) {
    std::array<char, 2048> result{"untouched"};
    EXPECT_EQ(status, lib.Get<MP_StartInfoHtmlEx>()(nullptr, nullptr, kBaud, seconds, "补充 more",
                                                    page.c_str(), result.data()));
    return result.data();
  }

  void ExpectShown(int seconds, int status, int result) {
    int got = 0;
    EXPECT_EQ(status, Show(seconds, kWait, kPage, got));
    EXPECT_EQ(result, got);
  }

  void ExpectCaptured(int seconds, int status, int result) {
    int got = 0;
    const std::string picture = Local("none.png");
    EXPECT_EQ(status, Capture(seconds, kWait, kPage, picture, got));
    EXPECT_EQ(result, got);
    EXPECT_FALSE(std::filesystem::exists(picture)) << "a picture without a confirmation";
  }

  void ExpectEveryKey() {
    ExpectShown(kSeconds, 0, 0);
    ExpectShown(kSeconds, 0, 1);
    ExpectShown(1, 0, 2);
    ExpectShown(kSeconds, GWQ_REFUSED, kUntouched);
    ExpectShown(kSeconds, GWQ_REFUSED, kUntouched);
  }

  void ExpectLargePage() {
    int result = 0;
    const std::string page = "<html>" + std::string(1U << 20U, 'x') + "</html>";
    EXPECT_EQ(0, Show(kSeconds, kWait, page, result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(0, Show(kSeconds, kShowOnly, page, result));
    EXPECT_EQ(0, result);
  }

  void ExpectPictureOfTheConfirmedPage() {
    int result = 0;
    EXPECT_EQ(0, Capture(kSeconds, kWait, kPage, Local("page.png"), result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(ReadFile(OnTerminal("/tmp/capture.png")), ReadFile(Local("page.png")));
    EXPECT_TRUE(DecodePng(Local("page.png")).HasInk());
  }

  void ExpectEveryKeyOfACapture() {
    ExpectCaptured(kSeconds, 0, 1);
    ExpectCaptured(1, 0, 2);
    ExpectCaptured(kSeconds, GWQ_REFUSED, kUntouched);
  }

  void ExpectEveryAnswerToAFile() {
    EXPECT_EQ("ok", ShowFile(kSeconds, kPage, 0));
    EXPECT_EQ(kPage, ReadFile(OnTerminal(kPageFile)));
    EXPECT_EQ("cancel", ShowFile(kSeconds, "只是文字 text", 0));
    EXPECT_EQ(
        "<pre><p style=\"font-size:32px;word-break:break-all;word-wrap:break-word\">只是文字 text</p></pre>",
        ReadFile(OnTerminal(kPageFile)));
    EXPECT_EQ("\xB3\xAC\xCA\xB1", ShowFile(1, "<html>", GWQ_NO_ANSWER)) << "the word for a time-out";
    EXPECT_THAT(ReadFile(OnTerminal(kPageFile)), HasSubstr("break-word\"><html></p>"));
    EXPECT_EQ("hello", ShowFile(kSeconds, kPage, 0));
    EXPECT_EQ("", ShowFile(kSeconds, kPage, 0)) << "an answer of one byte";
    EXPECT_EQ("U", ShowFile(kSeconds, kPage, 0)) << "a refusal: a report fills the buffer, whatever its end";
  }
};

TEST_F(Pages, GiveEveryAnswer) {
  int result = 0;
  EXPECT_EQ(GWQ_BAD_ARGUMENT, Show(kSeconds, kWait, "", result));
  EXPECT_EQ(2, result);
  EXPECT_EQ(GWQ_BAD_ARGUMENT, Capture(kSeconds, kWait, kPage, "", result));
  EXPECT_EQ(2, result);
  EXPECT_EQ("untouched", ShowFile(1000, kPage, GWQ_BAD_ARGUMENT));
  ExpectEveryKey();
  ExpectLargePage();
  ExpectPictureOfTheConfirmedPage();
  ExpectEveryKeyOfACapture();
  EXPECT_EQ(0, Capture(kSeconds, kShowOnly, kPage, Local("none.png"), result));
  EXPECT_EQ(0, result);
  ExpectEveryAnswerToAFile();
  EXPECT_EQ(0, OpenLinks());
}

}  // namespace
}  // namespace gwq::test
