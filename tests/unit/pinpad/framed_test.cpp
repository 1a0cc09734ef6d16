// SPDX-License-Identifier: MIT
// What the commands that are one framed exchange have in common, and how each of them takes its answer.
#include <functional>
#include <tuple>

#include <gwq/pinpad/entry.h>
#include <gwq/pinpad/keys.h>
#include <gwq/pinpad/settings.h>
#include "support/fake_tty.h"
#include "unit/pinpad/pinpad_rig.h"

namespace gwq::test {
namespace {

using testing::IsEmpty;

constexpr int kBaud = 9600;

// How a function takes an answer that is not a good one.
enum class Refusal { kStatusUnchanged, kMinus14, kByFirstByte };

class FramedRig;

struct Command {
  const char* name;
  std::function<int(FramedRig& rig, int port)> call;
  std::string_view body;
  Bytes data{};  // of a good answer
  unsigned good_status = 0;
  int timeout_s = 2;
  int drains = 0;
  bool any_port = true;  // else USB whatever the port
  Refusal refusal = Refusal::kMinus14;
  // The log of a call that succeeds; of one whose exchange fails; of one whose answer is refused. "#" stands
  // for the failing code.
  Lines success{};
  Lines not_exchanged{};
  Lines refused{};
};

class FramedRig : public PinPadRig {
 public:
  char* Text(std::string_view text) { return In(text); }

  GuardedBuffer out_{2041, kFill};
  int number_ = kUntouched;

 protected:
  int Call(const Command& command, int port = 0) { return command.call(*this, port); }
  void ExpectOutputsUntouched() const {
    EXPECT_TRUE(out_.AllAre(kFill));
    EXPECT_EQ(number_, kUntouched);
  }

  // Without a drain there is no transfer before the first exchange in which the device could vanish.
  void FailsFirst(const Command& command, Failure how) {
    Fails(command.body, how);
    if (how == Failure::kNotOpened && command.drains == 0) usb_.FailListing(-1);
  }

  static Lines With(const Lines& lines, int code) {
    Lines filled;
    for (std::string line : lines) {
      const std::size_t at = line.find('#');
      if (at != std::string::npos) line.replace(at, 1, std::to_string(code));
      filled.push_back(line);
    }
    return filled;
  }
};

const char* const kDrained = "TransProcOnlyRead iRet=-11";

std::vector<Command> Settings() {
  return {
      {.name = "GetEnType",
       .call = [](FramedRig& rig, int port) { return PN_GetEnType(port, nullptr, kBaud, &rig.number_); },
       .body = wire::kGetEnType,
       .data = {0x01},
       .refusal = Refusal::kStatusUnchanged},
      {.name = "SetEnType",
       .call = [](FramedRig&, int port) { return PN_SetEnType(port, nullptr, kBaud, 1); },
       .body = wire::kSetEnType1,
       .refusal = Refusal::kStatusUnchanged},
      {.name = "GetPinLen",
       .call = [](FramedRig& rig, int port) { return PN_GetPinLen(port, nullptr, kBaud, &rig.number_); },
       .body = wire::kGetPinLen,
       .data = {0x06},
       .drains = 1},
      {.name = "SetPinLen",
       .call = [](FramedRig&, int port) { return PN_SetPinLen(port, nullptr, kBaud, 6); },
       .body = wire::kSetPinLen6,
       .drains = 1},
      {.name = "SetEndRule",
       .call = [](FramedRig&, int port) { return PN_SetEndRule(port, nullptr, kBaud, 2); },
       .body = wire::kSetEndRule2,
       .drains = 1},
      {.name = "SetFillType",
       .call = [](FramedRig& rig, int port) { return PN_SetFillType(port, nullptr, kBaud, rig.Text("F")); },
       .body = wire::kFillWithOnes,
       .drains = 1},
      {.name = "SetPinMoe",
       .call = [](FramedRig&, int port) { return PN_SetPinMoe(port, nullptr, kBaud, 5); },
       .body = wire::kSetPinMode5},
      {.name = "SetSoundType",
       .call = [](FramedRig&, int port) { return PN_SetSoundType(port, nullptr, kBaud, 2); },
       .body = wire::kSetSound2},
      {.name = "SetAccount",
       .call =
           [](FramedRig& rig, int port) {
             auto* const account = reinterpret_cast<unsigned char*>(rig.Text("1234567890123456789"));
             return PN_SetAccount(port, nullptr, kBaud, account, 19);
           },
       .body = wire::kAccount19},
      {.name = "ReadDeviceId",
       .call = [](FramedRig& rig,
                  int port) { return PN_ReadDeviceId(port, nullptr, kBaud, rig.out_.text()); },
       .body = wire::kReadDeviceId,
       .data = BytesOf("SN-1"),
       .timeout_s = 3,
       .drains = 1,
       .any_port = false,
       .success = {"PN_ReadDeviceId ", "PN_ReadDeviceId  iRet=0",
                   "szRecv =\x02"
                   "0006"
                   "0000"
                   "534>2=31"
                   "01\x03",
                   "UnPackData  szRes=SN-1"},
       .not_exchanged = {"PN_ReadDeviceId ", "PN_ReadDeviceId  iRet=#"},
       .refused = {"PN_ReadDeviceId ", "PN_ReadDeviceId  iRet=0", "szRecv =", "UnPackData ERROR iRet=#"}},
  };
}

std::vector<Command> Keys() {
  const std::string load_texts =
      std::string("szPinPadFactor=").append(wire::kFactor).append(",encWKData=").append(wire::kPadKeyHex) +
      std::string(",szVerifyKey=").append(wire::kVerifyKey);
  return {
      {.name = "GetPinPadFactor",
       .call = [](FramedRig& rig,
                  int port) { return PN_GetPinPadFactor(port, nullptr, kBaud, rig.out_.text()); },
       .body = wire::kReadFactor,
       .data = BytesOf("FACTOR")},
      {.name = "CreateFactorOfType2",
       .call = [](FramedRig& rig,
                  int port) { return PN_CreateAndGetPinPadFactor(port, nullptr, kBaud, 2, rig.out_.text()); },
       .body = wire::kMakeFactor2,
       .data = BytesOf("FACTOR")},
      {.name = "ObtainFactorOfType2",
       .call = [](FramedRig& rig,
                  int port) { return PN_ObtainFactor(port, nullptr, kBaud, rig.Text("2"), rig.out_.text()); },
       .body = wire::kMakeFactor2,
       .data = BytesOf("FACTOR"),
       .drains = 1,
       .any_port = false,
       .success = {"PN_ObtainFactor", "szWKType=2", kDrained, "PN_ObtainFactor iRet=0"},
       .not_exchanged = {"PN_ObtainFactor", "szWKType=2", kDrained, "PN_ObtainFactor iRet=#"},
       .refused = {"PN_ObtainFactor", "szWKType=2", kDrained, "PN_ObtainFactor iRet=-14"}},
      {.name = "ObtainPublicKey",
       .call = [](FramedRig& rig,
                  int port) { return PN_ObtainPublicKey(port, nullptr, kBaud, 1, 1024, rig.out_.text()); },
       .body = wire::kPublicKey1024,
       .data = Bytes(131, 0xAB),
       .timeout_s = 6,
       .drains = 1,
       .any_port = false,
       .refusal = Refusal::kStatusUnchanged,
       .success = {"PN_ObtainPublicKey  iAlgoType=1,iKeyLen=1024", kDrained, "TransProc iRet=0",
                   "UnPackData iRet=0", "PN_ObtainPublicKey iRet=0"},
       .not_exchanged = {"PN_ObtainPublicKey  iAlgoType=1,iKeyLen=1024", kDrained, "TransProc iRet=#"},
       .refused = {"PN_ObtainPublicKey  iAlgoType=1,iKeyLen=1024", kDrained, "TransProc iRet=0",
                   "UnPackData iRet=#"}},
      {.name = "ObtainDigest",
       .call =
           [](FramedRig& rig, int port) {
             return PN_ObtainDigest(port, nullptr, kBaud, 4, rig.Text("abc"), rig.out_.text());
           },
       .body = wire::kDigestOfAbc,
       .data = Bytes(32, 0xD1),
       .timeout_s = 3,
       .drains = 1,
       .any_port = false,
       .refusal = Refusal::kStatusUnchanged,
       .success = {"PN_ObtainDigest  iHashAlgo=4", kDrained, "TransProc iRet=0", "UnPackData iRet=0",
                   "PN_ObtainDigest iRet=0"},
       .not_exchanged = {"PN_ObtainDigest  iHashAlgo=4", kDrained, "TransProc iRet=#"},
       .refused = {"PN_ObtainDigest  iHashAlgo=4", kDrained, "TransProc iRet=0", "UnPackData iRet=#"}},
      {.name = "DownloadPinPadWK",
       .call =
           [](FramedRig& rig, int port) {
             return PN_DownloadPinPadWK(port, nullptr, kBaud, rig.Text(wire::kFactor), rig.Text("1"),
                                        rig.Text(wire::kPadKeyHex), rig.Text(wire::kVerifyKey));
           },
       .body = wire::kLoadKeyType1,
       .data = {0x00},
       .good_status = wire::kKeyType1Confirmed,
       .timeout_s = 4,
       .drains = 2,
       .any_port = false,
       .refusal = Refusal::kStatusUnchanged,
       .success = {"PN_DownloadPinPadWK", load_texts, kDrained, kDrained, "TransProc  iRet=0,",
                   "UnPackData  iRet=12292,", "UnPackData  szRes[0]=0,", "PN_DownloadPinPadWK iRet=0"},
       .not_exchanged = {"PN_DownloadPinPadWK", load_texts, kDrained, kDrained, "TransProc  iRet=#,"},
       .refused = {"PN_DownloadPinPadWK", load_texts, kDrained, kDrained, "TransProc  iRet=0,",
                   "UnPackData  iRet=#,", "PN_DownloadPinPadWK iRet=#"}},
  };
}

std::vector<Command> Entries() {
  const Bytes block = {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0};
  return {
      {.name = "GetPin",
       .call = [](FramedRig& rig,
                  int port) { return PN_GetPin(port, nullptr, kBaud, 30, &rig.number_, rig.out_.text()); },
       .body = wire::kEnterPin30,
       .data = block,
       .timeout_s = 32,
       .drains = 1,
       .refusal = Refusal::kByFirstByte,
       .success = {"PN_GetPin", "TransProcByEnd iRet=0", "UnPackData iRet=0", "PN_GetPin iRet=0"},
       .not_exchanged = {"PN_GetPin", "TransProcByEnd iRet=#"},
       .refused = {"PN_GetPin", "TransProcByEnd iRet=0", "UnPackData iRet=#"}},
      {.name = "GetPinblockShowString",
       .call =
           [](FramedRig& rig, int port) {
             return GetPinblockShowString(port, nullptr, kBaud, rig.out_.data(), &rig.number_, 30,
                                          rig.Text("Key your PIN"));
           },
       .body = wire::kEnterPinShowing,
       .data = block,
       .timeout_s = 32,
       .drains = 1,
       .any_port = false,
       .refusal = Refusal::kByFirstByte,
       .success = {"GetPinblockShowString", "TransProc iRet=0", "UnPackData iRet=0",
                   "GetPinblockShowString iRet=0"},
       .not_exchanged = {"GetPinblockShowString", "TransProc iRet=#"},
       .refused = {"GetPinblockShowString", "TransProc iRet=0", "UnPackData iRet=#"}},
  };
}

std::vector<Command> Commands() {
  std::vector<Command> all = Settings();
  for (const Command& command : Keys()) all.push_back(command);
  for (const Command& command : Entries()) all.push_back(command);
  return all;
}

class FramedCommand : public FramedRig, public testing::WithParamInterface<Command> {
 protected:
  const Command& command_ = GetParam();
  const Bytes good_ = wire::PinPadAnswer(command_.good_status, command_.data);
};

INSTANTIATE_TEST_SUITE_P(All, FramedCommand, testing::ValuesIn(Commands()), kByName);

TEST_P(FramedCommand, SendsItsFrameAndReadsUntilEtx) {
  Exchange(command_.body, good_);
  const LogCapture log;
  EXPECT_EQ(Call(command_), 0);
  EXPECT_EQ(usb_.Count("in"), command_.drains * kDrainReads + 1);
  EXPECT_EQ(Elapsed(), command_.drains) << "drains alone take time";
  EXPECT_EQ(OwnMessages(log), command_.success);
}

TEST_P(FramedCommand, DrainsTakePlaceBeforeAnythingIsSent) {
  Exchange(command_.body, good_);
  bool sent = false;
  int reads_before = 0;
  usb_.OnTransfer([&](const Transfer& transfer) {
    sent = sent || !transfer.in;
    reads_before += transfer.in && !sent ? 1 : 0;
  });
  EXPECT_EQ(Call(command_), 0);
  EXPECT_EQ(reads_before, command_.drains * kDrainReads);
}

TEST_P(FramedCommand, ReadsAnAnswerInPieces) {
  const auto half = good_.begin() + static_cast<std::ptrdiff_t>(good_.size() / 2);
  Sent(TextOf(wire::PinPadFrame(command_.body)));
  usb_.Answer(Bytes(good_.begin(), half)).Answer(Bytes(half, good_.end() - 1), 2).Answer("\x03", 1);
  EXPECT_EQ(Call(command_), 0);
}

TEST_P(FramedCommand, SkipsNoiseInFrontOfAnAnswer) {
  Exchange(command_.body, Concat(BytesOf("noise"), good_));
  EXPECT_EQ(Call(command_), 0);
}

TEST_P(FramedCommand, TakesAnAnswerInAWholeReport) {
  Exchange(command_.body, PaddedToReports(good_));
  EXPECT_EQ(Call(command_), 0);
}

TEST_P(FramedCommand, GoesToTheSerialPortOrToUsbWhateverThePort) {
  FakeTty tty("/dev/ttyS41");
  int reads = 0;
  tty.OnRead([&reads](int) { ++reads; });
  tty.Respond([this](const Bytes&) { return TextOf(good_); });
  if (!command_.any_port) Exchange(command_.body, good_);
  EXPECT_EQ(Call(command_, 42), 0);
  if (command_.any_port) {
    EXPECT_EQ(tty.Received(), wire::PinPadFrame(command_.body));
    EXPECT_EQ(reads, 1) << "not drained";
    EXPECT_THAT(usb_.Calls(), IsEmpty());
  } else {
    EXPECT_THAT(tty.Calls(), IsEmpty());
  }
}

TEST_P(FramedCommand, SilenceEndsItAfterItsTimeOut) {
  Fails(command_.body, Failure::kSilent);
  EXPECT_EQ(Call(command_), -11);
  EXPECT_EQ(Elapsed(), command_.drains + command_.timeout_s + 1) << "more than so many whole seconds";
}

TEST_P(FramedCommand, AnswerWithoutEtxIsNoAnswer) {
  Exchange(command_.body, Bytes(good_.begin(), good_.end() - 1));
  EXPECT_EQ(Call(command_), -11);
  ExpectOutputsUntouched();
}

TEST_P(FramedCommand, EndsAnAnswerAtItsFirstEtx) {
  Exchange(command_.body, Concat(good_, good_));
  EXPECT_EQ(Call(command_), 0);
}

class FramedFailure : public FramedRig, public testing::WithParamInterface<std::tuple<Command, Failure>> {};

INSTANTIATE_TEST_SUITE_P(All, FramedFailure,
                         testing::Combine(testing::ValuesIn(Commands()), testing::ValuesIn(kFailures)),
                         kByNames);

TEST_P(FramedFailure, PassesThroughAndLeavesOutputsUntouched) {
  const auto& [command, how] = GetParam();
  FailsFirst(command, how);
  const LogCapture log;
  EXPECT_EQ(Call(command), StatusOf(how));
  ExpectOutputsUntouched();
  if (how == Failure::kNotOpened && command.drains > 0) {
    EXPECT_TRUE(Failed());
  } else {
    EXPECT_EQ(OwnMessages(log), With(command.not_exchanged, StatusOf(how)));
  }
}

struct BadAnswer {
  const char* name;
  Bytes answer;
  int unpacked;
};

Bytes WrongCheck() {
  Bytes answer = wire::PinPadAnswer(0, {0x12, 0x34});
  answer[answer.size() - 2] ^= 1U;
  return answer;
}

Bytes Without(std::size_t at, std::size_t count) {
  Bytes answer = wire::PinPadAnswer(0, {0x12, 0x34});
  const auto first = answer.begin() + static_cast<std::ptrdiff_t>(at);
  answer.erase(first, first + static_cast<std::ptrdiff_t>(count));
  return answer;
}

std::vector<BadAnswer> BadAnswers() {
  return {{"Status1", wire::PinPadAnswer(1), 1},
          {"Status3", wire::PinPadAnswer(3), 3},
          {"StatusWithData", wire::PinPadAnswer(0x6A82, {0x12, 0x34}), 0x6A82},
          {"StatusFFFF", wire::PinPadAnswer(0xFFFF), 0xFFFF},
          {"WrongCheck", WrongCheck(), -8},
          {"OddLength", Without(10, 1), -8},
          {"MissingDataByte", Without(9, 2), -8},
          {"EmptyFrame", BytesOf("\x02\x03"), -8},
          {"NoStx", Without(0, 1), -8},
          {"FullReportWithoutEtx", Concat({0x02}, Bytes(1023, '0')), -8},
          {"ZeroReport", Bytes(1024, 0), -8},
          {"EtxAlone", BytesOf("\x03"), -8},
          {"Unknown", BytesOf(wire::kUnknownCommand), -8}};
}

class FramedBadAnswer : public FramedRig, public testing::WithParamInterface<std::tuple<Command, BadAnswer>> {
 protected:
  static int Expected(const Command& command, const BadAnswer& bad) {
    if (command.refusal == Refusal::kStatusUnchanged) return bad.unpacked;
    if (command.refusal == Refusal::kMinus14) return -14;
    switch (bad.answer.front()) {
      case 0x00:
        return bad.unpacked;  // as text it is empty
      case 0x02:
        return -2;
      case 0x03:
        return -22;
      default:
        return -14;
    }
  }
};

INSTANTIATE_TEST_SUITE_P(All, FramedBadAnswer,
                         testing::Combine(testing::ValuesIn(Commands()), testing::ValuesIn(BadAnswers())),
                         [](const auto& each) {
                           std::string name = std::get<0>(each.param).name;
                           return name.append("Gets").append(std::get<1>(each.param).name);
                         });

TEST_P(FramedBadAnswer, DecidesTheResultAndLeavesOutputsUntouched) {
  const auto& [command, bad] = GetParam();
  Exchange(command.body, bad.answer);
  const LogCapture log;
  EXPECT_EQ(Call(command), Expected(command, bad));
  ExpectOutputsUntouched();
  const std::string answer = TextOf(bad.answer);
  Lines expected = With(command.refused, bad.unpacked);
  for (std::string& line : expected) {
    if (line == "szRecv =") line += answer.substr(0, answer.find('\0'));
  }
  EXPECT_EQ(OwnMessages(log), expected);
}

TEST(PinPadFrame, IsBuiltAsItStands) {
  EXPECT_EQ(wire::PinPadFrame(wire::kReadDeviceId), BytesOf(wire::kReadDeviceIdFrame));
  EXPECT_EQ(wire::PinPadAnswer(0, {0x12, 0x34}), BytesOf(wire::kAnswer1234Frame));
}

// Those that look at the drain end when it could not open the link.
struct Drained {
  const char* name;
  std::function<int(FramedRig& rig)> call;
  Lines log;
};

class FramedDrain : public FramedRig, public testing::WithParamInterface<Drained> {};

TEST_P(FramedDrain, LinkThatCannotBeOpenedEndsTheCall) {
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(GetParam().call(*this), -3);
  EXPECT_EQ(usb_.Count("list"), 2) << "one exchange, with both identities";
  EXPECT_EQ(OwnMessages(log), GetParam().log);
  ExpectOutputsUntouched();
}

const char* const kNotOpened = "TransProcOnlyRead iRet=-3";

INSTANTIATE_TEST_SUITE_P(
    All, FramedDrain,
    testing::Values(
        Drained{"ReadDeviceId",
                [](FramedRig& rig) { return PN_ReadDeviceId(5, nullptr, kBaud, rig.out_.text()); },
                {"PN_ReadDeviceId "}},
        Drained{"WriteDeviceId",
                [](FramedRig& rig) { return PN_WriteDeviceId(5, nullptr, kBaud, rig.Text("SN")); },
                {"PN_WriteDeviceId  DeviceId=SN", kNotOpened}},
        Drained{
            "SetPinPadParameter",
            [](FramedRig& rig) { return PN_SetPinPadParameter(5, nullptr, kBaud, 1, 6, 2, rig.Text("F")); },
            {"PN_SetPinPadParameter iAlgoType=1,iPinLen=6,iPinRule=2", kNotOpened}},
        Drained{
            "ObtainFactor",
            [](FramedRig& rig) { return PN_ObtainFactor(5, nullptr, kBaud, rig.Text("1"), rig.out_.text()); },
            {"PN_ObtainFactor", "szWKType=1", kNotOpened}},
        Drained{"ObtainPublicKey",
                [](FramedRig& rig) { return PN_ObtainPublicKey(5, nullptr, kBaud, 2, 256, rig.out_.text()); },
                {"PN_ObtainPublicKey  iAlgoType=2,iKeyLen=256", kNotOpened}},
        Drained{"ObtainDigest",
                [](FramedRig& rig) {
                  return PN_ObtainDigest(5, nullptr, kBaud, 4, rig.Text("abc"), rig.out_.text());
                },
                {"PN_ObtainDigest  iHashAlgo=4", kNotOpened}},
        Drained{"DownloadPinPadWK",
                [](FramedRig& rig) {
                  return PN_DownloadPinPadWK(5, nullptr, kBaud, rig.Text("F"), rig.Text("1"), rig.Text("11"),
                                             rig.Text("V"));
                },
                {"PN_DownloadPinPadWK", "szPinPadFactor=F,encWKData=11,szVerifyKey=V", kNotOpened}}),
    kByName);

TEST_F(FramedRig, DrainsResultDoesNotMatterToTheOthers) {
  // Drained by a cancelled read, then answered.
  CancelReading(0);
  Accepted(wire::kSetEndRule2);
  EXPECT_EQ(PN_SetEndRule(0, nullptr, kBaud, 2), 0);
  Accepted(wire::kReadDeviceId, BytesOf("SN"));
  EXPECT_EQ(PN_ReadDeviceId(0, nullptr, kBaud, out_.text()), 0);
}

}  // namespace
}  // namespace gwq::test
