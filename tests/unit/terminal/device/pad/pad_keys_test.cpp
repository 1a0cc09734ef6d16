// SPDX-License-Identifier: MIT
// The PIN pad's keys: a host makes a working key ready under the pad's public key,
// and the pad deciphers it for real.
#include <gtest/gtest.h>

#include "device/pad/key_pairs.h"
#include "unit/terminal/device/files/file_rig.h"
#include "unit/terminal/device/pad/pad_rig.h"

namespace gwq::terminal::test {

using namespace device;
namespace {

constexpr int kNoSuchKey = 0x6A88;
const ByteList kLoaded{0};
const ByteList kWrongFactor{1};
const ByteList kUndecipherable{2};
const ByteList kWrongVerifyKey{3};

// How a working key travels.
struct Way {
  int algorithm;    // of the public key
  int key_length;   // byte in the question for it
  int load_length;  // byte in the load
};
constexpr Way kRsa1024{1, 0x80, 0x80};
constexpr Way kRsa2048{1, 0x01, 0x01};
constexpr Way kSm2{2, 0x20, 0x70};

ByteList PublicKey(Rig& rig, const Way& way) {
  const PadAnswer answer = AskPad(rig, Body({0x30, 0x02, way.algorithm, way.key_length}));
  EXPECT_EQ(answer.status, 0);
  return answer.data;
}

ByteList Under(Rig& rig, const Way& way, std::string_view key_hex) {
  const ByteList key = PublicKey(rig, way);
  return way.algorithm == 1 ? UnderRsa(key, FromHex(key_hex)) : UnderSm2(key, FromHex(key_hex));
}

// The pad's confirmation byte.
ByteList Load(Rig& rig, const ByteList& body) {
  const PadAnswer answer = AskPad(rig, body);
  EXPECT_EQ(answer.status, body[0] * 256 + body[1]);
  return answer.data;
}

// Which key the pad now has shows in a PIN block.
std::string ClearPinBlock(Rig& rig, int type, std::string_view key_hex) {
  rig.customer.actions = {Keys("123456")};
  rig.Send(PadFrame({0x30, 0x05, 30}));
  rig.Wait(100ms);
  const ByteList block = ReadPadAnswer(rig.Answer()).data;
  return ToHex(type == kSm4Type ? Sm4(key_hex, block, false, true)
                                : PlainDes(FromHex(key_hex), block, false));
}

TEST(PadFactor, IsReadTheSameUntilANewOneIsMade) {
  Rig rig;
  const std::string first = Factor(rig);
  EXPECT_EQ(first.size(), 16U);
  EXPECT_EQ(first.find_first_not_of("0123456789ABCDEF"), std::string::npos);
  EXPECT_EQ(Factor(rig), first);
  const PadAnswer made = AskPad(rig, {0x30, 0x03});
  EXPECT_EQ(made.status, 0);
  EXPECT_TRUE(made.data.empty());
  const std::string second = Factor(rig);
  EXPECT_NE(second, first);
  const PadAnswer third = AskPad(rig, {0x30, 0x3A});
  EXPECT_EQ(third.status, 0);
  EXPECT_NE(ToText(third.data), second);
  EXPECT_EQ(Factor(rig), ToText(third.data));
}

TEST(PadPublicKey, HasTheFormOfItsAlgorithm) {
  Rig rig;
  const ByteList rsa = PublicKey(rig, kRsa1024);
  ASSERT_EQ(rsa.size(), 131U);
  EXPECT_GE(rsa[0], 0x80);
  EXPECT_EQ(ToHex(rsa).substr(256), "010001");
  EXPECT_EQ(PublicKey(rig, kRsa1024), rsa);
  EXPECT_EQ(PublicKey(rig, kRsa2048).size(), 259U);
  EXPECT_EQ(PublicKey(rig, kSm2).size(), 64U);
}

TEST(PadPublicKey, OfAnotherLengthOrAlgorithmIsNotThere) {
  Rig rig;
  for (const std::string_view tail :
       {"", "\x01", "\x02", "\x01\x20", "\x02\x80", "\x02\x01", "\x03\x80", "\x01\x02"}) {
    const ByteList body = Body({0x30, 0x02}, tail);
    EXPECT_EQ(AskPad(rig, body).status, kNoSuchKey) << ToHex(body);
  }
}

TEST(PadDigest, IsTheOneOfItsNumber) {
  Rig rig;
  EXPECT_EQ(ToHex(AskPad(rig, Body({0x30, 0x15, 1, 3}, "abc")).data),
            "A9993E364706816ABA3E25717850C26C9CD0D89D");
  EXPECT_EQ(ToHex(AskPad(rig, Body({0x30, 0x15, 2, 3}, "abc")).data),
            "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD");
  EXPECT_EQ(ToHex(AskPad(rig, Body({0x30, 0x15, 3, 3}, "abc")).data),
            "66C7F0F462EEEDD9D1F2D46BDC10E4E24167C4875CF2F7A2297DA02B8F4BA8E0");
  EXPECT_EQ(ToHex(AskPad(rig, Body({0x30, 0x15, 1})).data), "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709");
}

TEST(PadDigest, OfAnUnknownNumberOrAWrongLengthIsRefused) {
  Rig rig;
  for (const ByteList& body : {Body({0x30, 0x15}), Body({0x30, 0x15, 4, 3}, "abc"),
                               Body({0x30, 0x15, 1, 4}, "abc"), Body({0x30, 0x15, 1, 2}, "abc")}) {
    EXPECT_EQ(AskPad(rig, body).status, 0x6A80) << ToHex(body);
  }
}

TEST(PadLoad, TakesAKeyUnderEveryPublicKeyByBothCommands) {
  MemoryFiles pairs;
  for (const Way& way : {kRsa1024, kRsa2048, kSm2}) {
    for (const int code : {0x04, 0x39}) {
      for (const std::string_view key : {kDesHex, kDes24Hex}) {
        Rig rig(Line::kUsb, {}, {nullptr, {}, &pairs});
        const ByteList under = Under(rig, way, key);
        const std::string verify = VerifyKey(kTripleDesType, key);
        EXPECT_EQ(Load(rig, LoadBody(code, way.load_length, under, Factor(rig), verify)), kLoaded)
            << way.load_length << " " << code;
        EXPECT_EQ(ClearPinBlock(rig, kTripleDesType, key), "06123456FFFFFFFF");
      }
    }
  }
}

TEST(PadLoad, TakesAnSm4KeyWhenThatTypeIsSet) {
  for (const Way& way : {kRsa1024, kSm2}) {
    Rig rig;
    ASSERT_EQ(AskPad(rig, {0x30, 0x10, kSm4Type}).status, 0);
    const ByteList under = Under(rig, way, kSm4Hex);
    EXPECT_EQ(Load(rig, LoadBody(0x39, way.load_length, under, Factor(rig), VerifyKey(kSm4Type, kSm4Hex))),
              kLoaded);
    EXPECT_EQ(ClearPinBlock(rig, kSm4Type, kSm4Hex), "06123456FFFFFFFF");
  }
}

TEST(PadLoad, TakesAKeyUnderMasterKey0) {
  for (const std::string_view key : {kDesHex, kDes24Hex}) {
    Rig rig;
    LoadPadKey(rig, kTripleDesType, key);
    EXPECT_EQ(ClearPinBlock(rig, kTripleDesType, key), "06123456FFFFFFFF");
  }
  Rig rig;
  LoadPadKey(rig, kSm4Type, kSm4Hex);
  EXPECT_EQ(ClearPinBlock(rig, kSm4Type, kSm4Hex), "06123456FFFFFFFF");
}

TEST(PadLoad, FollowsTheMasterKeyThatTheCounterCommandsLoad) {
  Rig rig;
  ASSERT_EQ(rig.Ask(MasterKeyCommand(0, kFactoryHex, kMasterHex)), wire::kKeyAccepted);
  const ByteList under = PlainDes(FromHex(kMasterHex), FromHex(kDesHex), true);
  EXPECT_EQ(Load(rig, LoadBody(0x04, 0x10, under, Factor(rig), VerifyKey(kTripleDesType, kDesHex))), kLoaded);
  ASSERT_EQ(rig.Ask(MasterKeyCommand(0, kMasterHex, "133457799BBCDFF1")), wire::kKeyAccepted);
  ASSERT_EQ(AskPad(rig, {0x30, 0x10, kSm4Type}).status, 0);
  EXPECT_EQ(Load(rig, LoadBody(0x04, 0x10, under, Factor(rig), "000000")), kUndecipherable)
      << "a master key of 8 bytes is none for SM4";
}

TEST(PadLoad, HasTheKeysOfBothTypesSideBySide) {
  Rig rig;
  LoadPadKey(rig, kTripleDesType, kDesHex);
  LoadPadKey(rig, kSm4Type, kSm4Hex);
  EXPECT_EQ(ClearPinBlock(rig, kSm4Type, kSm4Hex), "06123456FFFFFFFF");
  ASSERT_EQ(AskPad(rig, {0x30, 0x10}).status, 0);
  EXPECT_EQ(ClearPinBlock(rig, kTripleDesType, kDesHex), "06123456FFFFFFFF");
}

TEST(PadLoad, WithAWrongFactorIsRefused) {
  Rig rig;
  const std::string verify = VerifyKey(kTripleDesType, kDesHex);
  const ByteList under = Under(rig, kRsa1024, kDesHex);
  EXPECT_EQ(Load(rig, LoadBody(0x04, 0x80, under, "0123456789ABCDEF", verify)), kWrongFactor)
      << "none was made";
  const std::string factor = Factor(rig);
  ASSERT_EQ(AskPad(rig, {0x30, 0x03}).status, 0);
  EXPECT_EQ(Load(rig, LoadBody(0x04, 0x80, under, factor, verify)), kWrongFactor);
  EXPECT_EQ(Load(rig, LoadBody(0x39, 0x80, under, "", verify)), kWrongFactor);
  EXPECT_EQ(Load(rig, LoadBody(0x39, 0x70, Under(rig, kSm2, kDes24Hex), factor, verify)), kWrongFactor);
  EXPECT_EQ(Load(rig, LoadBody(0x39, 0x80, under, Factor(rig), verify)), kLoaded);
}

TEST(PadLoad, ThatCannotBeDecipheredIsRefused) {
  Rig rig;
  const std::string verify = VerifyKey(kTripleDesType, kDesHex);
  const std::string factor = Factor(rig);
  for (const Way& way : {kRsa1024, kSm2}) {
    ByteList under = Under(rig, way, kDesHex);
    under[100] = under[100] == 1 ? 2 : 1;
    EXPECT_EQ(Load(rig, LoadBody(0x04, way.load_length, under, factor, verify)), kUndecipherable);
  }
  EXPECT_EQ(Load(rig, LoadBody(0x04, 0x01, ByteList(256, 0x5A), factor, verify)), kUndecipherable)
      << "no pair yet";
  EXPECT_EQ(Load(rig, LoadBody(0x04, 0x80, Under(rig, kRsa1024, "0123456789ABCDEF"), factor, verify)),
            kUndecipherable)
      << "a key of 8 bytes";
  EXPECT_EQ(Load(rig, LoadBody(0x04, 0x11, ByteList(17, 1), factor, verify)), kUndecipherable);
  EXPECT_EQ(Load(rig, LoadBody(0x04, 0x70, ByteList(112, 0xFF), factor, verify)), kUndecipherable);
}

TEST(PadLoad, WhoseKeyBytesAreCutAtAZeroIsRefused) {
  Rig rig;
  const std::string factor = Factor(rig);
  for (const Way& way : {kRsa1024, kSm2}) {
    ByteList under = Under(rig, way, kDesHex);
    under[60] = 0;
    EXPECT_EQ(Load(rig, LoadBody(0x04, way.load_length, under, factor, "123456")), kUndecipherable);
  }
  EXPECT_EQ(Load(rig, {0x30, 0x04}), kUndecipherable);
  EXPECT_EQ(Load(rig, {0x30, 0x39, 0x10}), kUndecipherable);
}

TEST(PadLoad, WithAWrongVerifyKeyIsRefusedAndTheOldKeyStays) {
  Rig rig;
  LoadPadKey(rig, kTripleDesType, kDesHex);
  const ByteList under = Under(rig, kRsa1024, kDes24Hex);
  const std::string right = ToHex(PlainDes(FromHex(kDes24Hex), ByteList(8), true));
  for (const std::string& verify :
       {std::string(), std::string("000000"), right.substr(0, 4), right.substr(0, 5), right.substr(0, 7),
        right + "00", std::string("xyzxyz"), VerifyKey(kTripleDesType, kDesHex)}) {
    EXPECT_EQ(Load(rig, LoadBody(0x04, 0x80, under, Factor(rig), verify)), kWrongVerifyKey) << verify;
  }
  EXPECT_EQ(ClearPinBlock(rig, kTripleDesType, kDesHex), "06123456FFFFFFFF");
  EXPECT_EQ(Load(rig, LoadBody(0x04, 0x80, under, Factor(rig), right)), kLoaded);
}

TEST(PadPair, IsKeptInAFileAndTheSameTheNextTime) {
  MemoryFiles files;
  const ByteList under = [&] {
    Rig rig(Line::kUsb, {}, {nullptr, {}, &files});
    EXPECT_TRUE(files.files.empty());
    return Under(rig, kRsa1024, kDesHex);
  }();
  ByteList sm2;
  {
    Rig rig(Line::kUsb, {}, {nullptr, {}, &files});
    sm2 = PublicKey(rig, kSm2);
    EXPECT_EQ(Load(rig, LoadBody(0x04, 0x80, under, Factor(rig), VerifyKey(kTripleDesType, kDesHex))),
              kLoaded);
  }
  EXPECT_EQ(files.files.size(), 2U);
  EXPECT_TRUE(files.files.contains("/rsa1024.pem"));
  Rig rig(Line::kUsb, {}, {nullptr, {}, &files});
  EXPECT_EQ(PublicKey(rig, kSm2), sm2);
  EXPECT_EQ(KeyPairs(&files).BadFile(), std::nullopt);
}

TEST(PadPair, OfAnotherKindInAFileIsFound) {
  MemoryFiles files;
  Rig rig(Line::kUsb, {}, {nullptr, {}, &files});
  PublicKey(rig, kSm2);
  PublicKey(rig, kRsa1024);
  MemoryFiles wrong;
  wrong.files["/rsa2048.pem"] = files.files["/rsa1024.pem"];
  EXPECT_EQ(KeyPairs(&wrong).BadFile(), "rsa2048.pem");
  wrong.files = {{"/rsa1024.pem", files.files["/sm2.pem"]}};
  EXPECT_EQ(KeyPairs(&wrong).BadFile(), "rsa1024.pem");
  wrong.files = {{"/sm2.pem", "no key"}};
  EXPECT_EQ(KeyPairs(&wrong).BadFile(), "sm2.pem");
}

TEST(PadPair, ThatCannotBeKeptIsMadeAllTheSame) {
  MemoryFiles files;
  files.writable = false;
  Rig rig(Line::kUsb, {}, {nullptr, {}, &files});
  EXPECT_EQ(PublicKey(rig, kSm2), PublicKey(rig, kSm2));
}

TEST(PadKeys, AreTracedWithoutKeyAndFactor) {
  Rig rig;
  const std::string factor = Factor(rig);
  const ByteList under = PlainDes(FromHex(kFactoryHex), FromHex(kDesHex), true);
  Load(rig, LoadBody(0x04, 0x10, under, factor, "000000"));
  EXPECT_EQ(rig.Trace(),
            "host: PIN-pad frame (12 bytes)\n"
            "host: read factor\n"
            "terminal: answer: PIN-pad status 0000\n"
            "host: PIN-pad frame (90 bytes)\n"
            "host: load working key (39 bytes, masked)\n"
            "note: wrong verify key\n"
            "terminal: answer: PIN-pad status 3004\n");
}

}  // namespace
}  // namespace gwq::terminal::test
