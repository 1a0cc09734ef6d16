// SPDX-License-Identifier: MIT
// Evaluation, information, HTML, keypad and checkout screens: what is shown, and
// what the host is told.
#include <gtest/gtest.h>

#include <map>

#include "unit/terminal/device/screens/screen_rig.h"

namespace gwq::terminal::test {

using namespace device;
namespace {

using Kind = ScreenAction::Kind;

constexpr const char* kCard = "\033[4H\x02Li Lei|0123|5|0123.jpg\x03";
const std::string kChinese = "\xE4\xBD\xA0\xE5\xA5\xBD";  // in UTF-8
const std::string kChineseGbk = "\xC4\xE3\xBA\xC3";       // the same in GBK

std::string Information(std::string_view text) {
  return std::string("\033[2A\x02").append(SplitText(text)).append("\x03");
}
std::string Html(std::string_view word, std::string_view page) {
  return std::string("\033[2").append(word).append("\x02").append(SplitText(page)).append("\x03");
}
std::string PageFile(int seconds, std::string_view extra) {
  return "\033[2YCSTARTINFOHTMLEXUTF8\x02" + std::to_string(seconds) + "#" + SplitText(extra) + "#\x03";
}
std::string Checkout(int seconds, std::string_view first, std::string_view second) {
  return "\033[2YCCHECKOUTALLUTF8\x02" + std::to_string(seconds) + "#" + SplitText(second) + "#" +
         SplitText(first) + "\x03";
}

TEST(Evaluation, EachKeyIsTold) {
  for (const std::string_view start : {wire::kStartRating, wire::kStartCounterRating}) {
    ScreenRig rig;
    const std::map<std::string, std::string_view> answers{
        {"0", wire::kKey0}, {"1", wire::kKey1}, {"2", wire::kKey2}, {"3", wire::kKey3}};
    for (const auto& [key, answer] : answers) EXPECT_EQ(rig.Ask(start, Does(Kind::kKey, key)), answer);
    EXPECT_EQ(rig.Ask(start, Does(Kind::kConfirm)), wire::kKey3);
    EXPECT_EQ(rig.Ask(start, Does(Kind::kCancel)), wire::kKey0);
  }
}

TEST(Evaluation, OverSerialIsTheSame) {
  ScreenRig rig(Line::kSerial);
  EXPECT_EQ(rig.Ask(wire::kStartCounterRating, Does(Kind::kKey, "2")), wire::kKey2);
}

TEST(Evaluation, TimesOutAsTheHostSaid) {
  ScreenRig rig;
  rig.rig.Send("\033[4;7T");
  EXPECT_EQ(rig.AskNobody(wire::kStartRating, 7), wire::kKey0);
}

TEST(Evaluation, ShowsTheTellersCard) {
  ScreenRig rig;
  rig.Put("/mnt/sdcard/media/headphoto/0123.jpg");
  rig.rig.Send(kCard);
  EXPECT_EQ(rig.Now().kind, ScreenKind::kIdle);
  const Screen screen = rig.Shown(wire::kStartCounterRating);
  EXPECT_EQ(screen.kind, ScreenKind::kEvaluation);
  ASSERT_EQ(screen.keys.size(), 4U);
  ASSERT_TRUE(screen.teller);
  EXPECT_EQ(screen.teller->name, "Li Lei");
  EXPECT_EQ(screen.teller->number, "0123");
  EXPECT_EQ(screen.teller->stars, 5);
  EXPECT_EQ(screen.teller->photo, "0123.jpg");
  EXPECT_EQ(screen.teller->photo_path, "/mnt/sdcard/media/headphoto/0123.jpg");
}

TEST(Evaluation, TakesTheCardOfSetEvalInfoToo) {
  ScreenRig rig;
  rig.rig.Send("\033[4SETEVALINFOUTF8\x02" + kChinese + "|7|0|" + kChineseGbk + ".jpg\x03");
  const Screen screen = rig.Shown(wire::kStartRating);
  ASSERT_TRUE(screen.teller);
  EXPECT_EQ(screen.teller->name, kChinese);
  EXPECT_EQ(screen.teller->photo, kChinese + ".jpg");
  EXPECT_EQ(screen.teller->photo_path, "");
}

TEST(TellerCard, IsShownUntilItsTimeIsUpWithoutAnyAnswer) {
  ScreenRig rig;
  rig.rig.Send("\033[4;9T");
  const Screen screen = rig.Shown("\033[4OPINFODPUTF8\x02Li Lei|0123|5|0123.jpg\x03");
  EXPECT_EQ(screen.kind, ScreenKind::kTellerCard);
  EXPECT_FALSE(screen.AsksCustomer());
  ASSERT_TRUE(screen.teller);
  EXPECT_EQ(screen.teller->number, "0123");
  EXPECT_TRUE(rig.rig.customer.screens.empty());
  rig.rig.Wait(8999ms);
  EXPECT_EQ(rig.Now().kind, ScreenKind::kTellerCard);
  rig.rig.Wait(1ms);
  EXPECT_EQ(rig.Now().kind, ScreenKind::kIdle);
  EXPECT_EQ(rig.rig.Answer(), "(none)");
}

TEST(TellerCard, DamagedOneIsLeftAlone) {
  for (const char* fields : {"", "a|b", "a|b|7|c", "a|b||c", "a|b|12|c", "a|b|-1|c"}) {
    ScreenRig rig;
    EXPECT_EQ(rig.rig.Ask(std::string("\033[4OPINFODPUTF8\x02").append(fields).append("\x03")), "(none)");
    EXPECT_EQ(rig.Now().kind, ScreenKind::kIdle) << fields;
  }
}

TEST(Information, ShowsTheTextAndTellsTheKey) {
  ScreenRig rig;
  const Screen screen = rig.Shown(Information("one\ntwo"));
  EXPECT_EQ(screen.kind, ScreenKind::kInformation);
  EXPECT_EQ(screen.text, "one\ntwo");
  EXPECT_EQ(rig.Ask(Information("x"), Does(Kind::kKey, "0")), wire::kKey0);
  EXPECT_EQ(rig.Ask(Information("x"), Does(Kind::kKey, "1")), wire::kKey1);
  EXPECT_EQ(rig.Ask(Information("x"), Does(Kind::kConfirm)), wire::kKey0);
  EXPECT_EQ(rig.Ask(Information("x"), Does(Kind::kCancel)), wire::kKey1);
  rig.rig.Send("\033[2;5T");
  EXPECT_EQ(rig.AskNobody(Information("x"), 5), wire::kKey3);
}

TEST(Information, IsReadInBothEncodings) {
  ScreenRig rig;
  EXPECT_EQ(rig.Shown(Information(kChinese)).text, kChinese);
  EXPECT_EQ(rig.Shown(Information(kChineseGbk)).text, kChinese);
  EXPECT_EQ(rig.Shown(Information("a\xFF\xFFz")).text, "a??z");
}

TEST(Information, DamagedTextIsRefused) {
  ScreenRig rig;
  EXPECT_EQ(rig.rig.Ask("\033[2A\x02"
                        "123\x03"),
            wire::kRefused);
  EXPECT_EQ(rig.rig.Ask("\033[2A\x02ZZ\x03"), wire::kRefused);
  EXPECT_EQ(rig.Now().kind, ScreenKind::kIdle);
}

TEST(Information, KeyThatIsNotThereLeavesTheTimeOut) {
  ScreenRig rig;
  rig.rig.customer.responses = {Does(Kind::kKey, "2")};
  rig.rig.Send(Information("x"));
  rig.rig.Wait(29999ms);
  EXPECT_EQ(rig.rig.Answer(), "(none)");
  rig.rig.Wait(1ms);
  EXPECT_EQ(rig.rig.Answer(), wire::kKey3);
}

TEST(Screens, CustomerWhoIsTooLateIsTimedOut) {
  ScreenRig rig;
  rig.rig.Send("\033[2;5T");
  rig.rig.customer.responses = {Does(Kind::kConfirm, {}, 5000ms)};
  rig.rig.Send(Information("x"));
  rig.rig.Wait(5000ms);
  EXPECT_EQ(rig.rig.Answer(), wire::kKey3);
  rig.rig.Wait(60s);
  EXPECT_EQ(rig.rig.Answer(), "(none)");
}

TEST(Screens, AnyAnswerCanBeProvoked) {
  ScreenRig rig;
  const std::string odd("\x02\xFE\x00?", 4);
  EXPECT_EQ(rig.Ask(wire::kStartRating, Does(Kind::kAnswer, odd)), odd);
  EXPECT_EQ(rig.Ask(wire::kStartRating, Does(Kind::kAnswer, "")), "(none)");
}

TEST(Html, TellsTheKeyAndShowsTheCountDownOnce) {
  ScreenRig rig;
  EXPECT_EQ(rig.rig.Ask("\033[2SETHTMLBTNTIME\x02"
                        "15\x03"),
            "(none)");
  const Screen screen = rig.Shown(Html("AUTF8", "<html>a</html>"));
  EXPECT_EQ(screen.kind, ScreenKind::kHtml);
  EXPECT_EQ(screen.text, "<html>a</html>");
  EXPECT_EQ(screen.countdown, 15);
  EXPECT_EQ(rig.Shown(Html("AUTF8", "b")).countdown, 0);
  EXPECT_EQ(rig.Ask(Html("AUTF8", "b"), Does(Kind::kConfirm)), wire::kKey0);
  EXPECT_EQ(rig.Ask(Html("AUTF8", "b"), Does(Kind::kCancel)), wire::kKey1);
  rig.rig.Send("\033[2;3T");
  EXPECT_EQ(rig.AskNobody(Html("AUTF8", "b"), 3), wire::kKey3);
  EXPECT_FALSE(rig.store.files.contains("/tmp/capture.png"));
}

TEST(Html, OnlyShownIsNotAnswered) {
  ScreenRig rig;
  rig.rig.Send("\033[2;3T");
  const Screen screen = rig.Shown(Html("SHOWHTMLUTF8", "<p>" + kChinese));
  EXPECT_EQ(screen.text, "<p>" + kChinese);
  EXPECT_FALSE(screen.AsksCustomer());
  rig.rig.Wait(3s);
  EXPECT_EQ(rig.Now().kind, ScreenKind::kIdle);
  EXPECT_EQ(rig.rig.Answer(), "(none)");
  EXPECT_EQ(rig.rig.Ask("\033[2SHOWHTMLUTF8\x02?\x03"), "(none)");
}

TEST(Html, OfAMegabyteIsShown) {
  for (const std::size_t size : {std::size_t{1} << 20, (std::size_t{2} << 20)}) {
    ScreenRig rig;
    std::string page = "<html>" + std::string(size - 6, 'a');
    const Screen screen = rig.Shown(Html("AUTF8", page));
    EXPECT_TRUE(screen.text == page);
  }
}

TEST(Html, MoreThanTheTerminalTakesIsRefusedAndItGoesOn) {
  ScreenRig rig;
  EXPECT_EQ(rig.rig.Ask(Html("AUTF8", std::string((std::size_t{2} << 20) + 1024, 'a'))), wire::kRefused);
  EXPECT_EQ(rig.Now().kind, ScreenKind::kIdle);
  EXPECT_EQ(rig.Ask(wire::kStartRating, Does(Kind::kConfirm)), wire::kKey3);
}

TEST(Html, ScreenshotIsKeptOfTheScreenAsItStood) {
  ScreenRig rig;
  rig.Put("/tmp/capture.png", "an older one");
  EXPECT_EQ(rig.Ask(Html("STARTSCREENSHOTUTF8", "the page"), Does(Kind::kConfirm)), wire::kKey0);
  EXPECT_EQ(rig.store.files.at("/tmp/capture.png"), "picture of the page, Confirm pressed");
  EXPECT_EQ(rig.Ask(Html("STARTSCREENSHOTUTF8", "it"), Does(Kind::kCancel)), wire::kKey1);
  EXPECT_EQ(rig.store.files.at("/tmp/capture.png"), "picture of it, Cancel pressed");
  EXPECT_EQ(rig.Ask(Html("STARTSCREENSHOTUTF8", "it"), Does(Kind::kAnswer, "B9F")), "B9F");
  EXPECT_EQ(rig.store.files.at("/tmp/capture.png"), "picture of it, no key pressed");
}

TEST(Html, NobodyLeavesNoScreenshot) {
  ScreenRig rig;
  rig.rig.Send("\033[2;3T");
  EXPECT_EQ(rig.AskNobody(Html("STARTSCREENSHOTUTF8", "p"), 3), wire::kKey3);
  EXPECT_FALSE(rig.store.files.contains("/tmp/capture.png"));
}

TEST(PageFile, TellsWhatTheCustomerDid) {
  ScreenRig rig;
  rig.Put("/tmp/infoviewerex.html", "<html></html>");
  const Screen screen = rig.Shown(PageFile(20, "extra"));
  EXPECT_EQ(screen.kind, ScreenKind::kHtml);
  EXPECT_EQ(screen.documents, std::vector<std::string>{"/tmp/infoviewerex.html"});
  EXPECT_EQ(screen.second_text, "extra");
  EXPECT_EQ(rig.Ask(PageFile(20, ""), Does(Kind::kConfirm)), wire::kPageConfirmed);
  EXPECT_EQ(rig.Ask(PageFile(20, ""), Does(Kind::kCancel)), "BcancelF");
  EXPECT_EQ(rig.AskNobody(PageFile(20, ""), 20), wire::kKey0);
}

TEST(PageFile, ThatIsMissingIsRefused) {
  ScreenRig rig;
  EXPECT_EQ(rig.rig.Ask(PageFile(20, "")), wire::kRefused);
}

TEST(Keypad, TellsTheDigitsInBothModes) {
  ScreenRig rig;
  for (const std::string_view start : {wire::kKeypadMode0, wire::kKeypadMode1}) {
    EXPECT_EQ(rig.Ask(start, Does(Kind::kDigits, "1234")), wire::kKeyed1234);
    EXPECT_EQ(rig.Ask(start, Does(Kind::kConfirm)), "AF");
    EXPECT_EQ(rig.Ask(start, Does(Kind::kCancel)), "AF");
  }
  EXPECT_FALSE(rig.Shown(wire::kKeypadMode0).hides_digits);
  EXPECT_TRUE(rig.Shown(wire::kKeypadMode1).hides_digits);
  EXPECT_EQ(rig.rig.Trace().find("1234"), std::string::npos);
}

TEST(Keypad, TimesOutInSilence) {
  ScreenRig rig;
  rig.rig.Send("\033[5;4T");
  EXPECT_EQ(rig.AskNobody(wire::kKeypadMode0, 4), "(none)");
}

TEST(Keypad, LeavesTheCountersCommandsAlone) {
  ScreenRig rig;
  EXPECT_EQ(rig.rig.Ask("\033F00\r\n"), wire::kRefused);  // a PIN block without a key
  EXPECT_EQ(rig.Now().kind, ScreenKind::kIdle);
}

TEST(Checkout, HasCancelAndTimeOutTheOtherWayRound) {
  ScreenRig rig;
  const Screen screen = rig.Shown(Checkout(20, "first", kChinese));
  EXPECT_EQ(screen.kind, ScreenKind::kCheckout);
  EXPECT_EQ(screen.text, "first");
  EXPECT_EQ(screen.second_text, kChinese);
  EXPECT_EQ(rig.Ask(Checkout(20, "a", ""), Does(Kind::kConfirm)), wire::kCheckedOut);
  EXPECT_EQ(rig.Ask(Checkout(20, "a", ""), Does(Kind::kCancel)), wire::kCheckOutCancelled);
  EXPECT_EQ(rig.AskNobody(Checkout(20, "a", ""), 20), wire::kCheckOutTimedOut);
  EXPECT_EQ(rig.rig.Ask("\033[2YCCHECKOUTALLUTF8\x02"
                        "20#4#41\x03"),
            wire::kRefused);
}

TEST(Screens, CloseCommandsCloseTheirOwn) {
  const std::map<std::string, std::string_view> closes{
      {std::string(wire::kStartRating), wire::kCloseEvaluation},
      {Information("x"), wire::kCloseInformation},
      {std::string(wire::kKeypadMode0), wire::kCloseKeypad}};
  for (const auto& [start, close] : closes) {
    for (const auto& [other_start, other_close] : closes) {
      ScreenRig rig;
      const ScreenKind kind = rig.Shown(start).kind;
      EXPECT_EQ(rig.rig.Ask(other_close), "(none)");
      EXPECT_EQ(rig.Now().kind, other_close == close ? ScreenKind::kIdle : kind);
    }
  }
}

TEST(Screens, ClosedOneIsNeverAnswered) {
  ScreenRig rig;
  rig.rig.customer.responses = {Does(Kind::kConfirm, {}, 500ms)};
  rig.rig.Send(wire::kStartRating);
  rig.rig.Send(wire::kCloseEvaluation);
  rig.rig.Wait(60s);
  EXPECT_EQ(rig.rig.Answer(), "(none)");
}

TEST(Screens, NewOneReplacesTheOneThatWaits) {
  ScreenRig rig;
  rig.rig.customer.responses = {Does(Kind::kKey, "1", 500ms), Does(Kind::kKey, "2", 800ms)};
  rig.rig.Send(wire::kStartRating);
  rig.rig.Send(wire::kStartRating);
  rig.rig.Wait(60s);
  EXPECT_EQ(rig.rig.Answer(), wire::kKey2);
  EXPECT_EQ(rig.rig.Answer(), "(none)");
}

TEST(Screens, CloseProgramWithdrawsTheScreenAndItsAnswer) {
  ScreenRig rig;
  rig.rig.customer.responses = {Does(Kind::kConfirm, {}, 500ms), Does(Kind::kConfirm, {}, 100ms)};
  rig.rig.Send(wire::kStartRating);
  EXPECT_EQ(rig.rig.Ask(wire::kCloseProgram), wire::kDone);
  rig.rig.Wait(60s);
  EXPECT_EQ(rig.rig.Answer(), "(none)");
  rig.rig.Send(wire::kStartRating);
  rig.rig.Wait(100ms);
  EXPECT_EQ(rig.rig.Ask(wire::kCloseProgram), wire::kDone);
}

TEST(Screens, CloseProgramEndsAPinEntryToo) {
  ScreenRig rig;
  rig.rig.customer.actions = {Keys("1234", 500ms)};
  rig.rig.Send("\x82");
  EXPECT_EQ(rig.rig.Ask(wire::kCloseProgram), wire::kDone);
  rig.rig.Wait(60s);
  EXPECT_EQ(rig.rig.Answer(), "(none)");
}

TEST(Screens, CanBeObserved) {
  ScreenRig rig;
  Device& device = rig.rig.device();
  EXPECT_EQ(rig.Now().title, "Welcome");
  EXPECT_EQ(device.ScreenClosesAt(), std::nullopt);
  const auto before = device.ScreenChanges();
  rig.rig.Wait(1s);
  rig.rig.Send("\033[2;8T");
  EXPECT_EQ(device.ScreenChanges(), before);
  EXPECT_EQ(rig.Shown(Information("x")).time_left, 8s);
  EXPECT_EQ(device.ScreenClosesAt(), 9s);
  EXPECT_EQ(device.ScreenChanges(), before + 1);
  rig.rig.Wait(8s);
  EXPECT_EQ(device.ScreenChanges(), before + 2);
  EXPECT_EQ(device.ScreenClosesAt(), std::nullopt);
}

TEST(Screens, StayNoLongerThan999Seconds) {
  ScreenRig rig;
  rig.rig.Send("\033[2;999999T");
  EXPECT_EQ(rig.AskNobody(Information("x"), 999), wire::kKey3);
  rig.rig.Send("\033[2;0T");
  EXPECT_EQ(rig.rig.Ask(Information("x")), wire::kKey3);
}

TEST(Screens, AgreeableCustomerAnswersEveryOne) {
  ScreenRig rig;
  rig.Put("/tmp/infoviewerex.html");
  rig.Put("/tmp/a.pdf");
  const std::map<std::string, std::string_view> answers{{std::string(wire::kStartRating), wire::kKey3},
                                                        {Information("x"), wire::kKey0},
                                                        {Html("AUTF8", "x"), wire::kKey0},
                                                        {PageFile(9, ""), wire::kPageConfirmed},
                                                        {std::string(wire::kKeypadMode0), wire::kKeyed1234},
                                                        {"\033[2YCNEWSTARTFILE\x02"
                                                         "0|9|/tmp/a.pdf\x03",
                                                         wire::kDone},
                                                        {"\033[2YCNEWSTARTSIGN\x02"
                                                         "0|9|here|/tmp/a.pdf\x03",
                                                         wire::kDone},
                                                        {Checkout(9, "a", "b"), wire::kCheckedOut}};
  for (const auto& [start, answer] : answers) {
    rig.rig.Send(start);
    rig.rig.Wait(200ms);
    EXPECT_EQ(rig.rig.Answer(), answer) << start.substr(1, 30);
  }
}

TEST(Description, IsToldItemByItem) {
  Rig rig;
  EXPECT_EQ(rig.Ask(wire::kGetItem6),
            "\x02"
            "20240601\x03");
  EXPECT_EQ(rig.Ask(wire::kGetProductionDate),
            "\x02"
            "20240601\x03");
  EXPECT_EQ(rig.Ask(wire::kGetModel), "\x02GWQ-VT\x03");
  EXPECT_EQ(rig.Ask(wire::kGetFirmware), "\x02V1.0.0|20240615\x03");
  for (const char* other : {"\033[0GETGLOBALCONFIG\x02"
                            "9\x03",
                            "\033[0GETVERSION\x02"
                            "4\x03"})
    EXPECT_EQ(rig.Ask(other), wire::kRefused);
}

TEST(Description, SettingsThatHostsCannotChangeSurviveAFirmwareUpdate) {
  Settings settings;
  settings.model = "M2";
  settings.tzg = false;
  ScreenRig rig(Line::kUsb, settings);
  rig.Put("/mnt/sdcard/media/data/update.dat", "V2|20250101\n");
  rig.rig.Send(NamedCommand("UPDATE", "/mnt/sdcard/media/data/update.dat"));
  EXPECT_EQ(rig.rig.Ask(wire::kGetFirmware), "\x02V2|20250101\x03");
  EXPECT_EQ(rig.rig.Ask(wire::kGetModel), "\x02M2\x03");
  EXPECT_EQ(rig.rig.Ask(wire::kSupportsTzg), wire::kRefused);
}

}  // namespace
}  // namespace gwq::terminal::test
