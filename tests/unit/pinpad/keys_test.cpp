// SPDX-License-Identifier: MIT
// Factor, public key, digest and working keys.
#include <gwq/pinpad/keys.h>

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
const char* const kDrained = "TransProcOnlyRead iRet=-11";

std::string Hex(const Bytes& bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string hex;
  for (const std::uint8_t byte : bytes) hex += {kDigits[byte >> 4U], kDigits[byte & 0x0FU]};
  return hex;
}

// So many bytes from 1 on, none of them zero.
Bytes Counting(std::size_t count, std::uint8_t first = 1) {
  Bytes bytes(count);
  std::uint8_t next = first;
  for (std::uint8_t& byte : bytes) {
    byte = next;
    next = next == 0xFF ? std::uint8_t{1} : static_cast<std::uint8_t>(next + 1);
  }
  return bytes;
}

// ---------------------------------------------------------------- factor

class Factor : public PinPadRig {
 protected:
  int Read() { return PN_GetPinPadFactor(0, nullptr, kBaud, factor_.text()); }
  int Create(int type, int port = 0) {
    return PN_CreateAndGetPinPadFactor(port, nullptr, kBaud, type, factor_.text());
  }
  int Obtain(char* type) { return PN_ObtainFactor(0, nullptr, kBaud, type, factor_.text()); }

  GuardedBuffer factor_{1021, kFill};
};

TEST_F(Factor, IsCopiedWithATerminatorAndNoMore) {
  for (const Bytes& factor : {BytesOf("FACTOR"), Bytes{}, Bytes{0x00, 0xFF, 0x41}, Bytes(1017, 'x')}) {
    GuardedBuffer out(1021, kFill);
    Accepted(wire::kReadFactor, factor);
    EXPECT_EQ(PN_GetPinPadFactor(0, nullptr, kBaud, out.text()), 0);
    ExpectBytes(out, factor);
  }
}

TEST_F(Factor, OfType1IsMadeAndThenRead) {
  Accepted(wire::kMakeFactor1, BytesOf("not looked at"));
  Accepted(wire::kReadFactor, BytesOf("FACTOR"));
  const LogCapture log;
  EXPECT_EQ(Create(1), 0);
  ExpectText(factor_, "FACTOR");
  EXPECT_THAT(OwnMessages(log), IsEmpty());
  EXPECT_EQ(usb_.Count("in"), 2) << "not drained";
}

TEST_F(Factor, OfType1IsMadeOnASerialPort) {
  FakeTty tty("/dev/ttyS41");
  tty.Respond([](const Bytes&) { return TextOf(wire::PinPadAnswer(0, BytesOf("FACTOR"))); });
  EXPECT_EQ(Create(1, 42), 0);
  EXPECT_EQ(tty.Received(),
            Concat(wire::PinPadFrame(wire::kMakeFactor1), wire::PinPadFrame(wire::kReadFactor)));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(Factor, OfAnyOtherTypeIsMadeAndReadInOne) {
  for (const int type : {2, 0, 3, -1, INT_MAX}) {
    Accepted(wire::kMakeFactor2, BytesOf("FACTOR"));
    EXPECT_EQ(Create(type), 0);
  }
  ExpectText(factor_, "FACTOR");
}

TEST_F(Factor, RefusedFirstStepIsNotFollowedByReading) {
  Refused(wire::kMakeFactor1);
  EXPECT_EQ(Create(1), -14);
  Exchange(wire::kMakeFactor1, BytesOf("\x02\x03"));
  EXPECT_EQ(Create(1), -14);
  EXPECT_EQ(usb_.Count("out"), 2);
  EXPECT_TRUE(factor_.AllAre(kFill));
}

TEST_F(Factor, RefusedSecondStepIsMinus14) {
  Accepted(wire::kMakeFactor1, BytesOf("FACTOR"));
  Refused(wire::kReadFactor);
  EXPECT_EQ(Create(1), -14);
  EXPECT_TRUE(factor_.AllAre(kFill));
}

TEST_F(Factor, NullOutputIsRefusedBeforeAnythingIsSent) {
  EXPECT_EQ(PN_GetPinPadFactor(0, nullptr, kBaud, nullptr), -1);
  EXPECT_EQ(PN_CreateAndGetPinPadFactor(0, nullptr, kBaud, 1, nullptr), -1);
  EXPECT_EQ(PN_CreateAndGetPinPadFactor(0, nullptr, kBaud, 2, nullptr), -1);
  EXPECT_EQ(PN_ObtainFactor(0, nullptr, kBaud, In("1"), nullptr), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(Factor, IsObtainedByATypeOfText) {
  for (const char* type : {"2", "2x", "22"}) {
    Accepted(wire::kMakeFactor2, BytesOf("FACTOR"));
    EXPECT_EQ(Obtain(In(type)), 0) << type;
  }
  for (const char* type : {"1", "", "0", "12", " 2"}) {
    Accepted(wire::kMakeFactor1);
    Accepted(wire::kReadFactor, BytesOf("FACTOR"));
    EXPECT_EQ(Obtain(In(type)), 0) << type;
  }
}

TEST_F(Factor, IsObtainedOfType1WithoutAText) {
  Accepted(wire::kMakeFactor1);
  Accepted(wire::kReadFactor, BytesOf("FACTOR"));
  const LogCapture log;
  EXPECT_EQ(Obtain(nullptr), 0);
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("PN_ObtainFactor", "szWKType=(null)", kDrained, "PN_ObtainFactor iRet=0"));
}

class FactorStepFailure : public Factor, public testing::WithParamInterface<std::tuple<int, Failure>> {};

INSTANTIATE_TEST_SUITE_P(Steps, FactorStepFailure,
                         testing::Combine(testing::Values(0, 1), testing::ValuesIn(kFailures)), kByNames);

TEST_P(FactorStepFailure, OfType1PassesThrough) {
  const auto& [step, how] = GetParam();
  if (step == 1) Accepted(wire::kMakeFactor1);
  Fails(step == 0 ? wire::kMakeFactor1 : wire::kReadFactor, how);
  const LogCapture log;
  EXPECT_EQ(Obtain(In("1")), StatusOf(how));
  EXPECT_EQ(OwnMessages(log), (Lines{"PN_ObtainFactor", "szWKType=1", kDrained,
                                     "PN_ObtainFactor iRet=" + std::to_string(StatusOf(how))}));
  EXPECT_EQ(Elapsed(), how == Failure::kSilent ? 1 + 3 : 1) << "the drain, and more than 2 seconds";
  EXPECT_TRUE(factor_.AllAre(kFill));
}

// ---------------------------------------------------------------- public key

class PublicKey : public PinPadRig {
 protected:
  int Obtain(int algorithm, int bits) {
    return PN_ObtainPublicKey(0, nullptr, kBaud, algorithm, bits, key_.text());
  }

  GuardedBuffer key_{2041, kFill};
};

TEST_F(PublicKey, OfAlgorithm1IsWithoutItsExponent) {
  const Bytes modulus = Counting(128, 0x81);
  Accepted(wire::kPublicKey1024, Concat(modulus, {0x01, 0x00, 0x01}));
  EXPECT_EQ(Obtain(1, 1024), 0);
  ExpectText(key_, Hex(modulus));
}

TEST_F(PublicKey, OfAlgorithm2IsWhole) {
  Accepted(wire::kPublicKey256, {0x00, 0xAB, 0xFF});
  EXPECT_EQ(Obtain(2, 256), 0);
  ExpectText(key_, "00ABFF");
}

TEST_F(PublicKey, OfNoMoreThanAnExponentIsEmpty) {
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{3}}) {
    GuardedBuffer key(1, kFill);
    Accepted(wire::kPublicKey1024, Counting(size));
    EXPECT_EQ(PN_ObtainPublicKey(0, nullptr, kBaud, 1, 1024, key.text()), 0);
    ExpectText(key, "");
  }
}

TEST_F(PublicKey, LongestAnswerStaysInItsRoom) {
  Accepted(wire::kPublicKey256, Counting(1017));
  EXPECT_EQ(Obtain(2, 256), 0);
  ExpectText(key_, Hex(Counting(1017)));
}

TEST_F(PublicKey, LengthIsSentInBytesAsOneByte) {
  struct Length {
    int bits;
    std::string sent;
  };
  for (const Length& length :
       {Length{256, "\x20"}, Length{1024, "\x80"}, Length{2048, "\x01"}, Length{0, ""}, Length{7, ""},
        Length{1031, "\x80"}, Length{4096, ""}, Length{2056, "\x01"}, Length{-8, "\xFF"}, Length{-7, ""}}) {
    Accepted("\x30\x02\x02" + length.sent, {0xAB});
    EXPECT_EQ(Obtain(2, length.bits), 0) << length.bits;
  }
}

TEST_F(PublicKey, OfAnotherAlgorithmOrForNullIsRefusedBeforeTheDrain) {
  const LogCapture log;
  for (const int algorithm : {0, 3, -1, INT_MAX, 257}) EXPECT_EQ(Obtain(algorithm, 1024), -1);
  EXPECT_EQ(PN_ObtainPublicKey(0, nullptr, kBaud, 1, 1024, nullptr), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_EQ(log.Messages().at(1), "PN_ObtainPublicKey  iAlgoType=3,iKeyLen=1024");
  EXPECT_EQ(log.Messages().size(), 6U);
  EXPECT_TRUE(key_.AllAre(kFill));
}

// ---------------------------------------------------------------- digest

class Digest : public PinPadRig {
 protected:
  int Obtain(int algorithm, std::string_view data) {
    return PN_ObtainDigest(0, nullptr, kBaud, algorithm, In(data), digest_.text());
  }

  GuardedBuffer digest_{1021, kFill};
};

TEST_F(Digest, IsCopiedInBytesWithATerminator) {
  for (const Bytes& digest : {Bytes{0x00, 0xD1, 0x00}, Bytes{}, Bytes(1017, 0xD1)}) {
    GuardedBuffer out(1021, kFill);
    Accepted(wire::kDigestOfAbc, digest);
    EXPECT_EQ(PN_ObtainDigest(0, nullptr, kBaud, 4, In("abc"), out.text()), 0);
    ExpectBytes(out, digest);
  }
}

TEST_F(Digest, DataIsSentWholeWithTheLowByteOfItsLength) {
  struct Data {
    std::size_t size;
    std::string head;
    bool sent;
  };
  for (const Data& data : {Data{0, "", false}, Data{1, "\x01", true}, Data{255, "\xFF", true},
                           Data{256, "", false}, Data{300, "\x2C", true}, Data{5000, "\x88", true}}) {
    const std::string text(data.size, 'd');
    Accepted("\x30\x15\x04" + data.head + (data.sent ? text : std::string()), {0xD1});
    EXPECT_EQ(Obtain(4, text), 0) << data.size;
  }
}

TEST_F(Digest, AlgorithmIsSentAsItsLowByteAndZeroEndsTheBody) {
  Accepted("\x30\x15", {0xD1});
  EXPECT_EQ(Obtain(0, "abc"), 0);
  Accepted("\x30\x15", {0xD1});
  EXPECT_EQ(Obtain(256, "abc"), 0);
  Accepted(wire::kDigestOfAbc, {0xD1});
  EXPECT_EQ(Obtain(0x104, "abc"), 0);
  Accepted("\x30\x15\xFF\x01x", {0xD1});
  EXPECT_EQ(Obtain(-1, "x"), 0);
}

TEST_F(Digest, NullPointersAreRefusedBeforeTheDrain) {
  EXPECT_EQ(PN_ObtainDigest(0, nullptr, kBaud, 4, nullptr, digest_.text()), -1);
  EXPECT_EQ(PN_ObtainDigest(0, nullptr, kBaud, 4, In("abc"), nullptr), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

// ---------------------------------------------------------------- working key

constexpr std::string_view kKey = wire::kPadKeyHex;

// What follows the key in the body.
std::string FactorAndVerifyKey() {
  return std::string(wire::kFactor).append(wire::kVerifyKey);
}

std::string TextsLog(std::string_view key) {
  return std::string("szPinPadFactor=")
      .append(wire::kFactor)
      .append(",encWKData=")
      .append(key)
      .append(",szVerifyKey=")
      .append(wire::kVerifyKey);
}

class WorkingKey : public PinPadRig {
 protected:
  int Load(std::string_view key, char* type = nullptr, std::string_view factor = wire::kFactor,
           std::string_view verify = wire::kVerifyKey) {
    return PN_DownloadPinPadWK(0, nullptr, kBaud, In(factor), type, In(key), In(verify));
  }
  void Confirmed(std::string_view body) {
    const bool type2 = body.substr(1, 1) == "\x39";
    Exchange(body, wire::PinPadAnswer(type2 ? wire::kKeyType2Confirmed : wire::kKeyType1Confirmed, {0x00}));
  }
  static std::string Body(std::string_view length, const Bytes& key,
                          std::string_view behind = FactorAndVerifyKey()) {
    return std::string("\x30\x04").append(length).append(TextOf(key)).append(behind);
  }
};

TEST_F(WorkingKey, OfType1GoesWithFactorAndVerifyKey) {
  for (const char* type : {"1", "", "0", "x2"}) {
    Confirmed(wire::kLoadKeyType1);
    EXPECT_EQ(Load(kKey, In(type)), 0) << type;
  }
  Confirmed(wire::kLoadKeyType1);
  EXPECT_EQ(Load(kKey, nullptr), 0);
}

TEST_F(WorkingKey, OfType2HasItsOwnCommand) {
  for (const char* type : {"2", "21"}) {
    Confirmed(wire::kLoadKeyType2);
    EXPECT_EQ(Load(kKey, In(type)), 0) << type;
  }
}

TEST_F(WorkingKey, DigitsMayBeOfEitherCase) {
  Confirmed(wire::kLoadKeyType1);
  EXPECT_EQ(Load("112233445566778899aabbccddeeff01"), 0);
}

TEST_F(WorkingKey, IsDrainedTwice) {
  Confirmed(wire::kLoadKeyType1);
  EXPECT_EQ(Load(kKey), 0);
  EXPECT_EQ(usb_.Count("in"), 2 * kDrainReads + 1);
}

TEST_F(WorkingKey, TextsMayBeEmptyAndTheFactorNull) {
  Confirmed("\x30\x04\x01\x11");
  EXPECT_EQ(Load("11", nullptr, "", ""), 0);
  Confirmed("\x30\x04\x01\x11VERIFY");
  EXPECT_EQ(PN_DownloadPinPadWK(0, nullptr, kBaud, nullptr, In("1"), In("11"), In("VERIFY")), 0);
}

TEST_F(WorkingKey, NullKeyOrVerifyKeyIsRefusedBeforeTheDrainAndLogged) {
  const LogCapture log;
  EXPECT_EQ(PN_DownloadPinPadWK(0, nullptr, kBaud, In("F"), In("1"), nullptr, In("V")), -1);
  EXPECT_EQ(PN_DownloadPinPadWK(0, nullptr, kBaud, In("F"), In("1"), In("11"), nullptr), -1);
  EXPECT_THAT(log.Messages(),
              ElementsAre("PN_DownloadPinPadWK", "szPinPadFactor=F,encWKData=(null),szVerifyKey=V",
                          "PN_DownloadPinPadWK", "szPinPadFactor=F,encWKData=11,szVerifyKey=(null)"));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

struct Sizes {
  std::size_t bytes;
  std::string length;
};

std::string NameOf(const Sizes& each) {
  return std::to_string(each.bytes);
}

class WorkingKeyOfSize : public WorkingKey, public testing::WithParamInterface<Sizes> {};

TEST_P(WorkingKeyOfSize, TellsItInOneByte) {
  const Bytes key = Counting(GetParam().bytes);
  Confirmed(Body(GetParam().length, key));
  EXPECT_EQ(Load(Hex(key)), 0);
}

INSTANTIATE_TEST_SUITE_P(Bytes, WorkingKeyOfSize,
                         testing::Values(Sizes{1, "\x01"}, Sizes{8, "\x08"}, Sizes{112, "\x70"},
                                         Sizes{233, "\xE9"}, Sizes{235, "\xEB"}, Sizes{255, "\xFF"},
                                         Sizes{256, "\x01"}, Sizes{257, "\x01"}, Sizes{1000, "\xE8"}),
                         kByName);

TEST_F(WorkingKey, BodyEndsBeforeItsFirstZeroByte) {
  Confirmed("\x30\x04\x10\x11\x22");
  EXPECT_EQ(Load("112200445566778899AABBCCDDEEFF01"), 0);
  Confirmed("\x30\x04\x10");
  EXPECT_EQ(Load("002233445566778899AABBCCDDEEFF01"), 0);
  Confirmed("\x30\x04");
  EXPECT_EQ(Load(""), 0) << "a length of 0";
  Confirmed("\x30\x04");
  EXPECT_EQ(Load(Hex(Counting(512))), 0) << "a length of 512";
}

TEST_F(WorkingKey, LastDigitOfAnOddNumberIsLeftOut) {
  Confirmed("\x30\x04\x01\x11" + FactorAndVerifyKey());
  EXPECT_EQ(Load("112"), 0);
  Confirmed("\x30\x04");
  EXPECT_EQ(Load("1"), 0);
}

TEST_F(WorkingKey, EndsAtWhatIsNoHexadecimalDigit) {
  Confirmed("\x30\x04\x03\x11");
  EXPECT_EQ(Load("11xx33"), 0) << "what is not converted reads as zero";
  Confirmed("\x30\x04\x02");
  EXPECT_EQ(Load("1g22"), 0);
}

TEST_F(WorkingKey, OverlongTextsDoNotHurt) {
  Confirmed(Body("\x01", {0x11}, std::string(3000, 'F') + std::string(3000, 'V')));
  EXPECT_EQ(Load("11", nullptr, std::string(3000, 'F'), std::string(3000, 'V')), 0);
}

// ---------------------------------------------------------------- structured record

struct Record {
  std::uint16_t told;
  std::size_t sent;
};

std::string NameOf(const Record& each) {
  return std::to_string(each.told);
}

class WorkingKeyRecord : public WorkingKey, public testing::WithParamInterface<Record> {
 protected:
  const Bytes c1_ = Counting(64);
  const Bytes c2_ = Counting(136, 0x55);
  const Bytes c3_ = Counting(32, 0xC0);
};

TEST_P(WorkingKeyRecord, IsSentWithTheMeaningfulBytesOfItsMiddlePart) {
  const auto& [told, sent] = GetParam();
  const Bytes prefix{static_cast<std::uint8_t>(told), static_cast<std::uint8_t>(told >> 8U)};
  const Bytes record = Concat(Concat(Concat(prefix, c1_), c2_), c3_);
  const Bytes c2(c2_.begin(), c2_.begin() + static_cast<std::ptrdiff_t>(sent));
  Confirmed(Body("\x70", Concat(Concat(c1_, c2), c3_)));
  const LogCapture log;
  EXPECT_EQ(Load(Hex(record)), 0);
  EXPECT_THAT(
      OwnMessages(log),
      ElementsAre("PN_DownloadPinPadWK", TextsLog(Hex(record)), kDrained, "c1:  LEN=64   HEX: " + Hex(c1_),
                  "c2:  LEN=136   HEX: " + Hex(c2_), "c3:  LEN=32   HEX: " + Hex(c3_), kDrained,
                  "TransProc  iRet=0,", "UnPackData  iRet=12292,", "UnPackData  szRes[0]=0,",
                  "PN_DownloadPinPadWK iRet=0"));
}

INSTANTIATE_TEST_SUITE_P(ToldBytes, WorkingKeyRecord,
                         testing::Values(Record{16, 16}, Record{0, 0}, Record{1, 1}, Record{136, 136},
                                         Record{137, 136}, Record{200, 136}, Record{0x1000, 136},
                                         Record{0xFFFF, 136}),
                         kByName);

TEST_F(WorkingKey, RecordIsCutAtItsFirstZeroByteToo) {
  Bytes record = Concat({16, 0}, Counting(232));
  record[2 + 10] = 0;
  Confirmed(Body("\x70", Counting(10), ""));
  EXPECT_EQ(Load(Hex(record)), 0);
}

// ---------------------------------------------------------------- what the pad answers

struct Confirmation {
  const char* name;
  unsigned status;
  Bytes data;
  int result_of_type1;
  int result_of_type2;
};

class WorkingKeyAnswer : public WorkingKey, public testing::WithParamInterface<Confirmation> {
 protected:
  void ExpectResult(unsigned confirmed, int result) {
    const LogCapture log;
    const bool of_type1 = confirmed == wire::kKeyType1Confirmed;
    Exchange(of_type1 ? wire::kLoadKeyType1 : wire::kLoadKeyType2,
             wire::PinPadAnswer(GetParam().status, GetParam().data));
    EXPECT_EQ(Load(kKey, In(of_type1 ? "1" : "2")), result);
    Lines expected{"UnPackData  iRet=" + std::to_string(GetParam().status) + ","};
    const bool has_result = GetParam().status == confirmed && !GetParam().data.empty();
    if (has_result) expected.push_back("UnPackData  szRes[0]=" + std::to_string(GetParam().data[0]) + ",");
    const bool at_once = has_result && GetParam().data[0] >= 1 && GetParam().data[0] <= 3;
    if (!at_once) expected.push_back("PN_DownloadPinPadWK iRet=" + std::to_string(result));
    const Lines own = OwnMessages(log);
    EXPECT_EQ(Lines(own.begin() + 5, own.end()), expected);
  }
};

TEST_P(WorkingKeyAnswer, DecidesTheResult) {
  ExpectResult(wire::kKeyType1Confirmed, GetParam().result_of_type1);
  ExpectResult(wire::kKeyType2Confirmed, GetParam().result_of_type2);
}

INSTANTIATE_TEST_SUITE_P(Answers, WorkingKeyAnswer,
                         testing::Values(Confirmation{"Type1Done", 0x3004, {0x00}, 0, 0x3004},
                                         Confirmation{"Type2Done", 0x3039, {0x00}, 0x3039, 0},
                                         Confirmation{"Type1Result1", 0x3004, {0x01}, -1, 0x3004},
                                         Confirmation{"Type1Result2", 0x3004, {0x02}, -8, 0x3004},
                                         Confirmation{"Type1Result3", 0x3004, {0x03}, -8, 0x3004},
                                         Confirmation{"Type1Result4", 0x3004, {0x04, 0x01}, 4, 0x3004},
                                         Confirmation{"Type1Result255", 0x3004, {0xFF}, 255, 0x3004},
                                         Confirmation{"Type2Result1", 0x3039, {0x01}, 0x3039, -1},
                                         Confirmation{"Type2Result2", 0x3039, {0x02, 0x00}, 0x3039, -8},
                                         Confirmation{"Type2Result3", 0x3039, {0x03}, 0x3039, -8},
                                         Confirmation{"Type1WithoutResult", 0x3004, {}, 3, 0x3004},
                                         Confirmation{"Type2WithoutResult", 0x3039, {}, 0x3039, 3},
                                         Confirmation{"Status0", 0, {}, 0, 0},
                                         Confirmation{"Status0WithData", 0, {0x01}, 0, 0},
                                         Confirmation{"OtherStatus", 0x6A82, {0x01}, 0x6A82, 0x6A82},
                                         Confirmation{"Status3", 3, {}, 3, 3},
                                         Confirmation{"StatusFFFF", 0xFFFF, {}, 65535, 65535}),
                         kByName);

}  // namespace
}  // namespace gwq::test
