// SPDX-License-Identifier: MIT
// Values of the settings, the terminal's serial number, and the four settings in one call.
#include <gwq/pinpad/settings.h>

#include <climits>
#include <functional>
#include <tuple>

#include "support/fake_tty.h"
#include "unit/pinpad/pinpad_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kBaud = 9600;

int SetAccount(std::string account, int length) {
  return PN_SetAccount(0, nullptr, kBaud, reinterpret_cast<unsigned char*>(account.data()), length);
}

int SetFillType(std::string fill) {
  return PN_SetFillType(0, nullptr, kBaud, fill.data());
}

struct Value {
  const char* name;
  std::function<int()> call;
  std::string body;
};

class SettingValue : public PinPadRig, public testing::WithParamInterface<Value> {};

TEST_P(SettingValue, IsSentAsItsLowByteUnlessThatIsZero) {
  Accepted(GetParam().body);
  EXPECT_EQ(GetParam().call(), 0);
}

std::string With(std::string_view command, char value) {
  return std::string(command) + value;
}

INSTANTIATE_TEST_SUITE_P(
    Values, SettingValue,
    testing::Values(
        Value{"EnType0", [] { return PN_SetEnType(0, nullptr, kBaud, 0); }, std::string(wire::kSetEnType0)},
        Value{"EnType256", [] { return PN_SetEnType(0, nullptr, kBaud, 256); },
              std::string(wire::kSetEnType0)},
        Value{"EnType257", [] { return PN_SetEnType(0, nullptr, kBaud, 257); },
              std::string(wire::kSetEnType1)},
        Value{"EnTypeMinus1", [] { return PN_SetEnType(0, nullptr, kBaud, -1); },
              With(wire::kSetEnType0, '\xFF')},
        Value{"PinLen0", [] { return PN_SetPinLen(0, nullptr, kBaud, 0); }, std::string(wire::kSetPinLen0)},
        Value{"PinLen15", [] { return PN_SetPinLen(0, nullptr, kBaud, 15); },
              With(wire::kSetPinLen0, '\x0F')},
        Value{"PinLen16", [] { return PN_SetPinLen(0, nullptr, kBaud, 16); }, std::string(wire::kSetPinLen0)},
        Value{"PinLen22", [] { return PN_SetPinLen(0, nullptr, kBaud, 22); }, std::string(wire::kSetPinLen6)},
        Value{"PinLenMinus1", [] { return PN_SetPinLen(0, nullptr, kBaud, -1); },
              With(wire::kSetPinLen0, '\x0F')},
        Value{"EndRule0", [] { return PN_SetEndRule(0, nullptr, kBaud, 0); },
              std::string(wire::kSetEndRule0)},
        Value{"EndRule512", [] { return PN_SetEndRule(0, nullptr, kBaud, 512); },
              std::string(wire::kSetEndRule0)},
        Value{"EndRule255", [] { return PN_SetEndRule(0, nullptr, kBaud, 255); },
              With(wire::kSetEndRule0, '\xFF')},
        Value{"PinMode0", [] { return PN_SetPinMoe(0, nullptr, kBaud, 0); }, std::string(wire::kSetPinMode0)},
        Value{"PinMode261", [] { return PN_SetPinMoe(0, nullptr, kBaud, 261); },
              std::string(wire::kSetPinMode5)},
        Value{"Sound0", [] { return PN_SetSoundType(0, nullptr, kBaud, 0); }, std::string(wire::kSetSound0)},
        Value{"SoundIntMin", [] { return PN_SetSoundType(0, nullptr, kBaud, INT_MIN); },
              std::string(wire::kSetSound0)},
        Value{"FillFGivesOnes", [] { return SetFillType("F"); }, std::string(wire::kFillWithOnes)},
        Value{"FillBeginningWithFGivesOnes", [] { return SetFillType("F0"); },
              std::string(wire::kFillWithOnes)},
        Value{"FillSmallFGivesZeros", [] { return SetFillType("f"); }, std::string(wire::kFillWithZeros)},
        Value{"Fill0GivesZeros", [] { return SetFillType("0"); }, std::string(wire::kFillWithZeros)},
        Value{"FillOfEmptyTextGivesZeros", [] { return SetFillType(""); }, std::string(wire::kFillWithZeros)},
        Value{"FillOfNullGivesZeros", [] { return PN_SetFillType(0, nullptr, kBaud, nullptr); },
              std::string(wire::kFillWithZeros)}),
    kByName);

INSTANTIATE_TEST_SUITE_P(
    Accounts, SettingValue,
    testing::Values(Value{"Of19Digits", [] { return SetAccount("1234567890123456789", 19); },
                          std::string(wire::kAccount19)},
                    Value{"FewerThanThereAre", [] { return SetAccount("1234567890", 4); },
                          "\x30\x16\x04"
                          "1234"},
                    Value{"CutAtAZeroByte", [] { return SetAccount(std::string("12\0\64\65", 5), 5); },
                          "\x30\x16\x05"
                          "12"},
                    Value{"BeginningWithAZeroByte", [] { return SetAccount(std::string("\0\64\65", 3), 3); },
                          "\x30\x16\x03"},
                    Value{"OfLength0", [] { return SetAccount("123", 0); }, "\x30\x16"},
                    Value{"Of255Bytes", [] { return SetAccount(std::string(255, '7'), 255); },
                          "\x30\x16\xFF" + std::string(252, '7')},
                    Value{"Of252Bytes", [] { return SetAccount(std::string(252, '7'), 252); },
                          "\x30\x16\xFC" + std::string(252, '7')},
                    Value{"Of256BytesWhoseLengthIsAZeroByte",
                          [] { return SetAccount(std::string(256, '7'), 256); }, "\x30\x16"},
                    Value{"Of300Bytes", [] { return SetAccount(std::string(300, '7'), 300); },
                          "\x30\x16\x2C" + std::string(252, '7')},
                    Value{"NullOfLength0", [] { return PN_SetAccount(0, nullptr, kBaud, nullptr, 0); },
                          "\x30\x16"}),
    kByName);

class Settings : public PinPadRig {};

TEST_F(Settings, AccountIsNotReadBeyondItsLength) {
  GuardedBuffer account(BytesOf("12345"));
  Accepted(
      "\x30\x16\x05"
      "12345");
  EXPECT_EQ(PN_SetAccount(0, nullptr, kBaud, account.data(), 5), 0);
}

TEST_F(Settings, NullOutputsAndAccountAreRefusedBeforeAnythingIsSent) {
  EXPECT_EQ(PN_GetEnType(0, nullptr, kBaud, nullptr), -1);
  EXPECT_EQ(PN_GetPinLen(0, nullptr, kBaud, nullptr), -1);
  EXPECT_EQ(PN_ReadDeviceId(0, nullptr, kBaud, nullptr), -1);
  EXPECT_EQ(PN_SetAccount(0, nullptr, kBaud, nullptr, 1), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

struct Read {
  const char* name;
  Bytes data;
  int number;
};

class SettingRead : public PinPadRig, public testing::WithParamInterface<Read> {};

TEST_P(SettingRead, IsTheFirstDataByte) {
  int type = kUntouched;
  int length = kUntouched;
  Accepted(wire::kGetEnType, GetParam().data);
  EXPECT_EQ(PN_GetEnType(0, nullptr, kBaud, &type), 0);
  Accepted(wire::kGetPinLen, GetParam().data);
  EXPECT_EQ(PN_GetPinLen(0, nullptr, kBaud, &length), 0);
  EXPECT_EQ(type, GetParam().number);
  EXPECT_EQ(length, GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(Values, SettingRead,
                         testing::Values(Read{"Zero", {0x00}, 0}, Read{"One", {0x01}, 1},
                                         Read{"FirstOfSeveral", {0x06, 0x07, 0x08}, 6},
                                         Read{"Above127", {0xFF}, 255}),
                         kByName);

TEST_F(Settings, AnswerWithoutDataLeavesTheTypeAndFailsTheLength) {
  int number = kUntouched;
  Accepted(wire::kGetEnType);
  EXPECT_EQ(PN_GetEnType(0, nullptr, kBaud, &number), 0);
  Accepted(wire::kGetPinLen);
  EXPECT_EQ(PN_GetPinLen(0, nullptr, kBaud, &number), -14);
  EXPECT_EQ(number, kUntouched);
}

// ---------------------------------------------------------------- serial number

class DeviceId : public PinPadRig {
 protected:
  int Read() { return PN_ReadDeviceId(0, nullptr, kBaud, id_.text()); }
  int Write(std::string_view id) { return PN_WriteDeviceId(0, nullptr, kBaud, In(id)); }

  GuardedBuffer id_{1021, kFill};
};

TEST_F(DeviceId, IsCopiedWithATerminatorAndNoMore) {
  Accepted(wire::kReadDeviceId, BytesOf("SN-20231114"));
  EXPECT_EQ(Read(), 0);
  ExpectText(id_, "SN-20231114");
}

TEST_F(DeviceId, OfNoBytesIsEmpty) {
  Accepted(wire::kReadDeviceId);
  EXPECT_EQ(Read(), 0);
  ExpectText(id_, "");
}

TEST_F(DeviceId, WithAZeroByteIsCopiedWhole) {
  Accepted(wire::kReadDeviceId, {0x41, 0x00, 0x42});
  EXPECT_EQ(Read(), 0);
  ExpectBytes(id_, {0x41, 0x00, 0x42});
}

TEST_F(DeviceId, LongestAnswerStaysInItsRoom) {
  Accepted(wire::kReadDeviceId, Bytes(1017, 'x'));
  EXPECT_EQ(Read(), 0);
  ExpectBytes(id_, Bytes(1017, 'x'));
}

TEST_F(DeviceId, DeclaredLengthBeyondTheAnswerGivesWhatArrived) {
  // Declares 1000 bytes and brings "AB" and the check.
  Exchange(wire::kReadDeviceId, BytesOf("\x02"
                                        "03>8"
                                        "0000"
                                        "4142"
                                        "03"
                                        "\x03"));
  EXPECT_EQ(Read(), 0);
  ExpectText(id_, "AB\x03");
}

TEST_F(DeviceId, IsWrittenAsAText) {
  ExchangeText(wire::kWriteDeviceId, BytesOf(wire::kDone));
  const LogCapture log;
  EXPECT_EQ(Write("SN-20231114"), 0);
  EXPECT_EQ(usb_.Count("in"), kDrainReads + 1);
  EXPECT_THAT(OwnMessages(log), ElementsAre("PN_WriteDeviceId  DeviceId=SN-20231114",
                                            "TransProcOnlyRead iRet=-11", "PN_WriteDeviceId  iRet=0"));
}

TEST_F(DeviceId, IsWrittenOnUsbWhateverThePort) {
  const FakeTty tty("/dev/ttyS41");
  ExchangeText(wire::kWriteDeviceId, BytesOf(wire::kDone));
  EXPECT_EQ(PN_WriteDeviceId(42, In("ignored"), 0, In("SN-20231114")), 0);
  EXPECT_THAT(tty.Calls(), IsEmpty());
}

TEST_F(DeviceId, OfOneAndOf20CharactersAreWritten) {
  for (const std::size_t length : {std::size_t{1}, std::size_t{20}}) {
    const std::string id(length, '9');
    ExchangeText("\x1B[0BJPOSTSETSN\x02" + id + "\x03", BytesOf(wire::kDone));
    EXPECT_EQ(Write(id), 0);
  }
}

TEST_F(DeviceId, OfWrongLengthIsRefusedBeforeTheLinkIsOpened) {
  const LogCapture log;
  const std::string id21(21, '9');
  EXPECT_EQ(Write(id21), -1);
  EXPECT_EQ(Write(""), -1);
  EXPECT_THAT(log.Messages(),
              ElementsAre("PN_WriteDeviceId  DeviceId=" + id21, "PN_WriteDeviceId  ERR_PARAMS",
                          "PN_WriteDeviceId  DeviceId=", "PN_WriteDeviceId  ERR_PARAMS"));
  EXPECT_EQ(PN_WriteDeviceId(0, nullptr, kBaud, nullptr), -1);
  EXPECT_EQ(log.Messages().back(), "PN_WriteDeviceId  ERR_PARAMS");
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(DeviceId, AnswerThatOnlyBeginsWithDoneWillDo) {
  ExchangeText(wire::kWriteDeviceId, BytesOf("\x02\xAA\x03more\x03"));
  EXPECT_EQ(Write("SN-20231114"), 0);
}

class DeviceIdAnswer : public DeviceId, public testing::WithParamInterface<std::string> {};

TEST_P(DeviceIdAnswer, OtherThanDoneIsMinus14) {
  ExchangeText(wire::kWriteDeviceId, BytesOf(GetParam()));
  const LogCapture log;
  EXPECT_EQ(Write("SN-20231114"), -14);
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("PN_WriteDeviceId  DeviceId=SN-20231114", "TransProcOnlyRead iRet=-11",
                          "PN_WriteDeviceId  iRet=0", "PN_WriteDeviceId  iRet=-14"));
}

INSTANTIATE_TEST_SUITE_P(Answers, DeviceIdAnswer,
                         testing::Values(std::string(wire::kUnknownCommand), std::string(wire::kFailed),
                                         "\x03", "\x02\x03", "x\x02\xAA\x03", "\x02\xAAx\x03",
                                         std::string(1024, '\0')));

class DeviceIdFailure : public DeviceId, public testing::WithParamInterface<Failure> {};

TEST_P(DeviceIdFailure, IsMinus14UnlessTheLinkCouldNotBeOpened) {
  FailsText(wire::kWriteDeviceId, GetParam());
  const LogCapture log;
  EXPECT_EQ(Write("SN-20231114"), GetParam() == Failure::kNotOpened ? -3 : -14);
  EXPECT_EQ(OwnMessages(log), (Lines{"PN_WriteDeviceId  DeviceId=SN-20231114", "TransProcOnlyRead iRet=-11",
                                     "PN_WriteDeviceId  iRet=" + std::to_string(StatusOf(GetParam()))}));
  const bool silent = GetParam() == Failure::kSilent;
  EXPECT_EQ(Elapsed(), silent ? 1 + 4 : 1) << "the drain, and more than 3 whole seconds";
}

INSTANTIATE_TEST_SUITE_P(All, DeviceIdFailure, testing::ValuesIn(kFailures), kByName);

// ---------------------------------------------------------------- all four

class Parameters : public PinPadRig {
 protected:
  static constexpr std::string_view kBodies[] = {wire::kSetEnType1, wire::kSetPinLen6, wire::kSetEndRule2,
                                                 wire::kFillWithOnes};
  static constexpr const char* kNames[] = {"PN_SetEnType", "PN_SetPinLen", "PN_SetEndRule", "PN_SetFillType"};

  int Set() { return PN_SetPinPadParameter(7, nullptr, kBaud, 1, 6, 2, In("F")); }
  void AcceptedUpTo(std::size_t step) {
    for (std::size_t i = 0; i < step; ++i) Accepted(kBodies[i]);
  }
  // Up to the step that ends the call, with its result.
  static Lines LogUpTo(std::size_t step, int result) {
    Lines lines{"PN_SetPinPadParameter iAlgoType=1,iPinLen=6,iPinRule=2", "TransProcOnlyRead iRet=-11"};
    for (std::size_t i = 0; i <= step; ++i) {
      lines.push_back(std::string(kNames[i]).append(" iRet=").append(std::to_string(i < step ? 0 : result)));
    }
    if (step == 3) lines.push_back("PN_SetPinPadParameter iRet=" + std::to_string(result));
    return lines;
  }
};

TEST_F(Parameters, AreSetInOrderOnUsbWhateverThePort) {
  const FakeTty tty("/dev/ttyS6");
  AcceptedUpTo(4);
  const LogCapture log;
  EXPECT_EQ(Set(), 0);
  EXPECT_EQ(OwnMessages(log), LogUpTo(3, 0));
  EXPECT_EQ(usb_.Count("in"), 4 * kDrainReads + 4) << "the first step alone is not drained";
  EXPECT_THAT(tty.Calls(), IsEmpty());
}

TEST_F(Parameters, OfZeroAreLeftOut) {
  for (const auto body : {wire::kSetEnType0, wire::kSetPinLen0, wire::kSetEndRule0, wire::kFillWithZeros}) {
    Accepted(body);
  }
  EXPECT_EQ(PN_SetPinPadParameter(0, nullptr, kBaud, 0, 0, 0, nullptr), 0);
}

class ParameterStep : public Parameters, public testing::WithParamInterface<std::size_t> {};

INSTANTIATE_TEST_SUITE_P(Steps, ParameterStep, testing::Values(0, 1, 2, 3));

TEST_P(ParameterStep, ThatIsRefusedEndsTheCall) {
  AcceptedUpTo(GetParam());
  Refused(kBodies[GetParam()]);
  const int result = GetParam() == 0 ? 0x6A82 : -14;
  const LogCapture log;
  EXPECT_EQ(Set(), result);
  EXPECT_EQ(OwnMessages(log), LogUpTo(GetParam(), result));
}

TEST_P(ParameterStep, ThatIsDamagedEndsTheCall) {
  AcceptedUpTo(GetParam());
  Exchange(kBodies[GetParam()], BytesOf("\x02\x03"));
  EXPECT_EQ(Set(), GetParam() == 0 ? -8 : -14);
}

class ParameterFailure : public Parameters,
                         public testing::WithParamInterface<std::tuple<std::size_t, Failure>> {};

INSTANTIATE_TEST_SUITE_P(Steps, ParameterFailure,
                         testing::Combine(testing::Values(0, 1, 2, 3), testing::ValuesIn(kFailures)),
                         kByNames);

TEST_P(ParameterFailure, EndsTheCallWithTheExchangesStatus) {
  const auto& [step, how] = GetParam();
  AcceptedUpTo(step);
  Fails(kBodies[step], how);
  const LogCapture log;
  EXPECT_EQ(Set(), StatusOf(how));
  EXPECT_EQ(OwnMessages(log), LogUpTo(step, StatusOf(how)));
}

}  // namespace
}  // namespace gwq::test
