// SPDX-License-Identifier: MIT
// The PIN block with the pad's settings checked and made in front of it, by both functions that do so.
#include <climits>
#include <tuple>

#include <gwq/pinpad/entry.h>
#include "support/fake_tty.h"
#include "unit/pinpad/pinpad_rig.h"

namespace gwq::test {
namespace {

using testing::IsEmpty;

constexpr int kBaud = 9600;
constexpr int kTimeout = 30;
constexpr const char* kAccount = "1234567890123456789";
constexpr const char* kShown = "Key your PIN";
const Bytes kBlock = {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0};

enum class Style { kPlain, kShowing };

std::string NameOf(Style style) {
  return style == Style::kPlain ? "Plain" : "Showing";
}

// In the order in which they are sent.
enum Step { kType, kLength, kMode, kSound, kAccountStep, kFactor, kEntry, kEnd };

struct Request {
  int algorithm = 1;
  int sound_mode = 1;
  int pin_type = 1;
  const char* account = kAccount;
  int length = 6;
};

class PinBlockRig : public PinPadRig {
 protected:
  explicit PinBlockRig(Style style) : style_(style) {}

  [[nodiscard]] bool Shows() const { return style_ == Style::kShowing; }
  [[nodiscard]] int Either(int plain, int showing) const { return Shows() ? showing : plain; }

  int Call(const Request& request, int port = 0) {
    length_ = request.length;
    char* const account = request.account == nullptr ? nullptr : In(request.account);
    if (Shows()) {
      return PN_GetPinBlockShowString(port, nullptr, kBaud, kTimeout, request.algorithm, request.sound_mode,
                                      request.pin_type, account, factor_.text(), block_.data(), &length_,
                                      In(kShown));
    }
    return PN_GetPinBlock(port, nullptr, kBaud, kTimeout, request.algorithm, request.sound_mode,
                          request.pin_type, account, factor_.text(), block_.data(), &length_);
  }

  // What the pad is sent for a usual call of type 1.
  [[nodiscard]] std::string_view Body(Step step) const {
    static constexpr std::string_view kBodies[] = {wire::kGetEnType, wire::kGetPinLen,    wire::kSetPinMode1,
                                                   wire::kSetSound2, wire::kAccountField, wire::kReadFactor};
    return step == kEntry ? EntryBody() : kBodies[step];
  }
  [[nodiscard]] std::string_view EntryBody() const {
    return Shows() ? wire::kEnterPinShowing : wire::kEnterPin30;
  }
  void Accepts(Step first, Step end) {
    static const Bytes kData[] = {{1}, {6}, {}, {}, {}, BytesOf("FACTOR"), kBlock};
    for (int step = first; step < end; ++step) Accepted(Body(static_cast<Step>(step)), kData[step]);
  }
  // From the factor on, for any type.
  void AcceptsEntry() { Accepts(kFactor, kEnd); }

  [[nodiscard]] Lines Opening(const Request& request) const {
    const std::string account = request.account == nullptr ? "(null)" : request.account;
    if (Shows()) {
      return {"[PN_GetPinBlockShowString]",
              "iBaud:9600",
              "nTimeout:30",
              "iAlgoType:" + std::to_string(request.algorithm),
              "nModex:" + std::to_string(request.sound_mode),
              "iPinType:" + std::to_string(request.pin_type),
              "szAccountNo:" + account,
              std::string("szShowString:") + kShown};
    }
    std::string line = "iAlgoType=" + std::to_string(request.algorithm);
    line.append(",nModex=").append(std::to_string(request.sound_mode));
    line.append(",iPinType=").append(std::to_string(request.pin_type));
    line.append(",szAccountNo=").append(account).append(",pnPinLen=").append(std::to_string(request.length));
    return {"PN_GetPinBlock", line};
  }

  // The lines of the steps before this one, each of which went well.
  [[nodiscard]] Lines LogBefore(Step end, const Request& request = {}) const {
    static const char* const kLines[] = {"[PN_GetEnType] iRet=0", "[PN_GetPinLen] iRet=0",
                                         "[PN_SetPinMoe] iRet=0", "[PN_SetSoundType] iRet=0",
                                         "[PN_SetAccount] iRet=0"};
    Lines lines = Opening(request);
    if (!Shows()) lines.emplace_back("TransProcOnlyRead iRet=-11");
    for (int step = kType; step < end && step < kFactor; ++step) {
      if (step == kAccountStep && request.pin_type != 1) continue;
      lines.emplace_back(kLines[step]);
    }
    return lines;
  }
  [[nodiscard]] Lines EntryLog() const {
    return Shows() ? Lines{"GetPinblockShowString", "TransProc iRet=0", "UnPackData iRet=0",
                           "GetPinblockShowString iRet=0", "[out]Return:0"}
                   : Lines{"PN_GetPin", "TransProcByEnd iRet=0", "UnPackData iRet=0", "PN_GetPin iRet=0",
                           "PN_GetPinBlock iRet=0"};
  }
  [[nodiscard]] static std::string Returned(int code) { return "[out]Return:" + std::to_string(code); }
  // What tells of a failed setting.
  [[nodiscard]] std::string ErrorOf(const char* setting, int code) const {
    return Shows() ? Returned(code) : std::string("[").append(setting).append("] ERROR");
  }
  static Lines Joined(Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
  }

  void ExpectBlock() {
    ExpectBytes(block_, kBlock);
    EXPECT_EQ(length_, static_cast<int>(kBlock.size()));
  }
  void ExpectNoBlock(const Request& request = {}) {
    EXPECT_TRUE(block_.AllAre(kFill));
    EXPECT_EQ(length_, request.length);
  }

  GuardedBuffer factor_{1021, kFill};
  GuardedBuffer block_{1021, kFill};
  int length_ = kUntouched;

 private:
  Style style_;
};

class PinBlock : public PinBlockRig, public testing::WithParamInterface<Style> {
 protected:
  PinBlock() : PinBlockRig(GetParam()) {}

  // Everything for a request that is not bound to an account.
  void ExpectEntryOfType(std::string_view mode, std::uint8_t length,
                         std::string_view sound = wire::kSetSound2) {
    Accepted(wire::kGetEnType, {1});
    Accepted(wire::kGetPinLen, {length});
    Accepted(mode);
    Accepted(sound);
    AcceptsEntry();
  }
  void ExpectRefusedUnsent(const Request& request) {
    const LogCapture log;
    EXPECT_EQ(Call(request), -1);
    const Lines returned = Shows() ? Lines{Returned(-1)} : Lines{};
    EXPECT_EQ(log.Messages(), Joined(Opening(request), returned));
    ExpectNoBlock(request);
  }
};

INSTANTIATE_TEST_SUITE_P(Both, PinBlock, testing::Values(Style::kPlain, Style::kShowing), kByName);

TEST_P(PinBlock, BoundToAnAccountTakesSevenCommandsInOrder) {
  Accepts(kType, kEnd);
  const LogCapture log;
  EXPECT_EQ(Call({}), 0);
  ExpectBlock();
  ExpectText(factor_, "FACTOR");
  EXPECT_EQ(OwnMessages(log), Joined(LogBefore(kEntry), EntryLog()));
  EXPECT_EQ(usb_.Count("in"), 7 + Either(3, 2) * kDrainReads) << "drained: first, the length, the entry";
}

TEST_P(PinBlock, GoesToUsbWhateverThePort) {
  const FakeTty tty("/dev/ttyS41");
  Accepts(kType, kEnd);
  EXPECT_EQ(Call({}, 42), 0);
  EXPECT_THAT(tty.Calls(), IsEmpty());
}

TEST_P(PinBlock, OfType5And6IgnoresTheAccount) {
  for (const char* account : {static_cast<const char*>(nullptr), "not a number", kAccount}) {
    const Request request{.pin_type = 5, .account = account};
    ExpectEntryOfType(wire::kSetPinMode5, 6);
    const LogCapture log;
    EXPECT_EQ(Call(request), 0);
    EXPECT_EQ(OwnMessages(log), Joined(LogBefore(kEntry, request), EntryLog()));
    ExpectEntryOfType(wire::kSetPinMode6, 6);
    EXPECT_EQ(Call({.pin_type = 6, .account = account}), 0);
  }
}

TEST_P(PinBlock, LengthsFrom4To14AreTaken) {
  for (const std::uint8_t length : {std::uint8_t{4}, std::uint8_t{14}}) {
    ExpectEntryOfType(wire::kSetPinMode5, length);
    EXPECT_EQ(Call({.pin_type = 5, .length = length}), 0);
    Accepted(wire::kGetEnType, {1});
    Accepted(wire::kGetPinLen, {length});
    Accepts(kMode, kEnd);
    EXPECT_EQ(Call({.length = length}), 0);
  }
}

TEST_P(PinBlock, TypeAndLengthOutOfRangeAreRefusedBeforeAnythingIsSent) {
  for (const int type : {0, 2, 3, 4, 7, -1, INT_MIN, INT_MAX}) ExpectRefusedUnsent({.pin_type = type});
  for (const int length : {3, 15, 0, -4, INT_MIN, INT_MAX}) {
    ExpectRefusedUnsent({.pin_type = 1, .length = length});
    ExpectRefusedUnsent({.pin_type = 5, .length = length});
  }
  for (const int length : {4, 5, 7, 14, 0}) ExpectRefusedUnsent({.pin_type = 6, .length = length});
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_TRUE(factor_.AllAre(kFill));
}

TEST_P(PinBlock, NullOutputsAreRefusedBeforeAnythingIsSent) {
  int length = 6;
  const auto call = [this](char* factor, void* block, int* size) {
    return Shows() ? PN_GetPinBlockShowString(0, nullptr, kBaud, kTimeout, 1, 1, 5, nullptr, factor, block,
                                              size, nullptr)
                   : PN_GetPinBlock(0, nullptr, kBaud, kTimeout, 1, 1, 5, nullptr, factor, block, size);
  };
  EXPECT_EQ(call(nullptr, block_.data(), &length), -1);
  EXPECT_EQ(call(factor_.text(), nullptr, &length), -1);
  EXPECT_EQ(call(factor_.text(), block_.data(), nullptr), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_P(PinBlock, SoundModeIsSentPlusOne) {
  ExpectEntryOfType(wire::kSetPinMode5, 6, wire::kSetSound3);
  EXPECT_EQ(Call({.sound_mode = 2, .pin_type = 5}), 0);
  ExpectEntryOfType(wire::kSetPinMode5, 6, wire::kSetSound1);
  EXPECT_EQ(Call({.sound_mode = 0, .pin_type = 5}), 0);
  ExpectEntryOfType(wire::kSetPinMode5, 6, wire::kSetSound0);
  EXPECT_EQ(Call({.sound_mode = -1, .pin_type = 5}), 0);
}

TEST_P(PinBlock, SoundModeAbove2IsRefusedAtOnceOrBehindTheEntryMode) {
  for (const int mode : {3, INT_MAX}) {
    const Request request{.sound_mode = mode};
    const LogCapture log;
    if (Shows()) Accepts(kType, kSound);
    EXPECT_EQ(Call(request), -1);
    const Lines expected =
        Shows() ? Joined(LogBefore(kSound, request), {"PN_SetSoundType err times > 2", Returned(-1)})
                : Opening(request);
    EXPECT_EQ(OwnMessages(log), expected);
  }
  EXPECT_EQ(usb_.Count("out"), Either(0, 6));
}

TEST_P(PinBlock, OtherTypeInThePadIsMinus1) {
  for (const Bytes& type : {Bytes{2}, Bytes{}, Bytes{0xFF}}) {
    Accepted(wire::kGetEnType, type);
    const LogCapture log;
    EXPECT_EQ(Call({}), -1);
    EXPECT_EQ(OwnMessages(log), Joined(LogBefore(kType), {"[PN_GetEnType] iRet=0", "[PN_GetEnType] ERROR"}));
  }
}

// The value that the type is preset to.
TEST_P(PinBlock, PadThatTellsNoTypeMatchesMinus1) {
  Accepted(wire::kGetEnType);
  Accepts(kLength, kEnd);
  EXPECT_EQ(Call({.algorithm = -1}), 0);
}

TEST_P(PinBlock, OtherLengthInThePadIsMinus1) {
  Accepts(kType, kLength);
  Accepted(wire::kGetPinLen, {4});
  const LogCapture log;
  EXPECT_EQ(Call({}), -1);
  EXPECT_EQ(OwnMessages(log), Joined(LogBefore(kMode), {ErrorOf("PN_GetPinLen", -1)}));
  ExpectNoBlock();
}

TEST_P(PinBlock, FactorOfTwoCharactersIsNone) {
  for (const Bytes& factor : {Bytes{}, BytesOf("FA"), Bytes{'F', 'A', 0, 'T', 'O', 'R'}}) {
    Accepts(kType, kFactor);
    Accepted(wire::kReadFactor, factor);
    const LogCapture log;
    EXPECT_EQ(Call({}), -14);
    EXPECT_EQ(OwnMessages(log), Joined(LogBefore(kFactor), {"[PN_GetPinPadFactor] ERROR"}));
    ExpectNoBlock();
  }
}

TEST_P(PinBlock, FactorOfThreeCharactersWillDo) {
  Accepts(kType, kFactor);
  Accepted(wire::kReadFactor, BytesOf("FAC"));
  Accepts(kEntry, kEnd);
  EXPECT_EQ(Call({}), 0);
  ExpectText(factor_, "FAC");
}

TEST_P(PinBlock, FactorStaysWhenTheEntryFails) {
  Accepts(kType, kEntry);
  Exchange(EntryBody(), BytesOf("\x03"));
  EXPECT_EQ(Call({}), -22);
  ExpectText(factor_, "FACTOR");
  ExpectNoBlock();
}

TEST_P(PinBlock, NullAccountIsMinus21BehindTheSound) {
  const Request request{.account = nullptr};
  Accepts(kType, kAccountStep);
  const LogCapture log;
  EXPECT_EQ(Call(request), -21);
  const char* const line = Shows() ? "szAccountNo == NULL" : "ERR_ACCOUNT !!!";
  EXPECT_EQ(OwnMessages(log), Joined(LogBefore(kAccountStep, request), {line}));
}

TEST_P(PinBlock, AccountWithAnythingButDigitsIsMinus21BehindTheSound) {
  for (const char* account :
       {"12345678901234567x9", "a", " 1", "1 ", "-1", "123456789012/", "123456789012:", "\xA3\xB1"}) {
    const Request request{.account = account};
    Accepts(kType, kAccountStep);
    const LogCapture log;
    EXPECT_EQ(Call(request), -21) << account;
    const Lines line = Shows() ? Lines{"Account Format Error !!!"} : Lines{};
    EXPECT_EQ(OwnMessages(log), Joined(LogBefore(kAccountStep, request), line));
  }
  EXPECT_TRUE(factor_.AllAre(kFill));
}

// ---------------------------------------------------------------- the account on the wire

class PinBlockAccount : public PinBlockRig, public testing::WithParamInterface<std::tuple<Style, int>> {
 protected:
  PinBlockAccount() : PinBlockRig(std::get<0>(GetParam())) {}
};

INSTANTIATE_TEST_SUITE_P(Digits, PinBlockAccount,
                         testing::Combine(testing::Values(Style::kPlain, Style::kShowing),
                                          testing::Range(0, 31)),
                         kByNames);

TEST_P(PinBlockAccount, IsSentAsTwelveDigitsOrEmpty) {
  const std::string digits =
      std::string("123456789012345678901234567890").substr(0, std::size_t(std::get<1>(GetParam())));
  std::string field(wire::kEmptyAccountField);
  if (digits.size() == 12) field += digits;
  if (digits.size() > 12) field += digits.substr(digits.size() - 13, 12);
  Accepts(kType, kAccountStep);
  Accepted(field);
  AcceptsEntry();
  EXPECT_EQ(Call({.account = digits.c_str()}), 0);
  ExpectBlock();
}

// ---------------------------------------------------------------- every step failing

// How a step goes wrong; the exchange's failures, and the pad's own.
enum class Wrong { kRefused, kDamaged, kNotSent, kSilent, kCancelled, kNotOpened };

struct Case {
  Step step;
  Wrong wrong;
};

std::string NameOf(const Case& each) {
  static const char* const kSteps[] = {"Type", "Length", "Mode", "Sound", "Account", "Factor", "Entry"};
  static const char* const kWrongs[] = {"Refused", "Damaged", "NotSent", "Silent", "Cancelled", "NotOpened"};
  return std::string(kSteps[each.step]) + kWrongs[static_cast<int>(each.wrong)];
}

std::vector<Case> Cases() {
  std::vector<Case> cases;
  for (int step = kType; step < kEnd; ++step) {
    for (int wrong = 0; wrong < 6; ++wrong)
      cases.push_back({static_cast<Step>(step), static_cast<Wrong>(wrong)});
  }
  return cases;
}

class PinBlockStep : public PinBlockRig, public testing::WithParamInterface<std::tuple<Style, Case>> {
 protected:
  PinBlockStep() : PinBlockRig(std::get<0>(GetParam())) {}

  // Makes the step go wrong and tells the code that the step's own function then returns.
  int GoesWrong(const Case& each) {
    const std::string_view body = Body(each.step);
    switch (each.wrong) {
      case Wrong::kRefused:
        Refused(body);
        return each.step == kType ? 0x6A82 : Refusal(each.step);
      case Wrong::kDamaged:
        Exchange(body, BytesOf("\x02\x03"));
        return each.step == kType ? -8 : Refusal(each.step);
      default:
        break;
    }
    const Failure how = kFailures[static_cast<int>(each.wrong) - static_cast<int>(Wrong::kNotSent)];
    if (how == Failure::kNotOpened && each.step == kType && Shows()) usb_.FailListing(-1);
    Fails(body, how);
    return StatusOf(how);
  }
  static int Refusal(Step step) { return step == kEntry ? -2 : -14; }

  [[nodiscard]] int ResultOf(Step step, int code) const {
    if (step == kEntry) return code;
    return step == kMode ? Either(-14, -1) : -14;
  }
  [[nodiscard]] Lines LogOf(const Case& each, int code) const {
    static const char* const kSettings[] = {"PN_GetEnType", "", "PN_SetPinMoe", "PN_SetSoundType",
                                            "PN_SetAccount"};
    if (each.step == kFactor) return {"[PN_GetPinPadFactor] ERROR"};
    if (each.step == kEntry) return EntryLogOf(each.wrong, code);
    const char* const setting = kSettings[each.step];
    Lines lines{std::string("[").append(setting).append("] iRet=").append(std::to_string(code))};
    if (each.step != kType) lines.push_back(ErrorOf(setting, code));
    return lines;
  }
  [[nodiscard]] Lines EntryLogOf(Wrong wrong, int code) const {
    Lines lines = EntryLog();
    lines.resize(2);
    if (wrong == Wrong::kRefused) lines.emplace_back("UnPackData iRet=27266");
    if (wrong == Wrong::kDamaged) lines.emplace_back("UnPackData iRet=-8");
    if (lines.size() == 2)
      lines.back() = (Shows() ? "TransProc iRet=" : "TransProcByEnd iRet=") + std::to_string(code);
    lines.push_back(Shows() ? Returned(code) : "PN_GetPinBlock iRet=" + std::to_string(code));
    return lines;
  }
};

INSTANTIATE_TEST_SUITE_P(Failing, PinBlockStep,
                         testing::Combine(testing::Values(Style::kPlain, Style::kShowing),
                                          testing::ValuesIn(Cases())),
                         kByNames);

TEST_P(PinBlockStep, EndsTheCallButForTheLengthThatIsOnlyCompared) {
  const Case each = std::get<1>(GetParam());
  Accepts(kType, each.step);
  const int code = GoesWrong(each);
  const bool goes_on = each.step == kLength;
  const bool link_is_gone = each.wrong == Wrong::kNotOpened;
  if (goes_on && !link_is_gone) Accepts(kMode, kEnd);
  const LogCapture log;
  const int result = Call({});
  Lines expected = LogBefore(each.step);
  if (goes_on) {
    expected.push_back("[PN_GetPinLen] iRet=" + std::to_string(code));
    const Lines all = LogBefore(kEntry);
    const Lines rest =
        link_is_gone ? LogOf({kMode, each.wrong}, code) : Joined({all.end() - 3, all.end()}, EntryLog());
    EXPECT_EQ(result, link_is_gone ? ResultOf(kMode, code) : 0);
    EXPECT_EQ(OwnMessages(log), Joined(expected, rest));
    return;
  }
  EXPECT_EQ(result, ResultOf(each.step, code));
  EXPECT_EQ(OwnMessages(log), Joined(expected, LogOf(each, code)));
  ExpectNoBlock();
  EXPECT_EQ(factor_.AllAre(kFill), each.step != kEntry);
}

class PlainPinBlock : public PinBlockRig {
 protected:
  PlainPinBlock() : PinBlockRig(Style::kPlain) {}
};

TEST_F(PlainPinBlock, LinkThatCannotBeOpenedEndsItAtTheDrain) {
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(Call({}), -3);
  EXPECT_EQ(OwnMessages(log), Joined(Opening({}), {"TransProcOnlyRead iRet=-3"}));
}

}  // namespace
}  // namespace gwq::test
