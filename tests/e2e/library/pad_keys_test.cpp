// SPDX-License-Identifier: MIT
// Working keys, digests and data of the PIN pad, checked by what the bank computes itself.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "e2e/library/pad_rig.h"

namespace gwq::test {
namespace {

constexpr int kRsa = 1;
constexpr int kSm2 = 2;

class Keys : public Pad {
 protected:
  std::string NewFactor(int type = 1) {
    std::string factor;
    EXPECT_EQ(0, CreateFactor(type, factor));
    return factor;
  }

  std::string PadsKey(int algorithm, int bits) {
    std::string public_key;
    EXPECT_EQ(0, PublicKey(algorithm, bits, public_key));
    return public_key;
  }

  std::string VerifyKey(Algorithm algorithm) const { return example::VerifyKey(key, algorithm); }

  // The pad enciphers its blocks under `key` now.
  void ExpectInUse(Algorithm algorithm) {
    ASSERT_EQ(0, SetMode(5));
    EXPECT_EQ("1234", PinIn(Block(), algorithm).value_or("no PIN under this key"));
  }

  void SetTo(Algorithm algorithm) {
    ASSERT_EQ(0, SetType(static_cast<int>(algorithm)));
    ASSERT_EQ(0, Frame("\x30\x12\x04").status);
    key = example::NewKey();
  }
};

using PadKeys = Keys;
using PadRefusesKeys = Keys;

TEST_F(PadKeys, AreLoadedUnderRsaOf1024BitsWithTheTextOne) {
  SetTo(Algorithm::kTripleDes);
  const std::string modulus = PadsKey(kRsa, 1024);
  EXPECT_EQ(256U, modulus.size());
  EXPECT_EQ(
      0, LoadKey(NewFactor(), "1", example::EncipherForRsa(key, modulus), VerifyKey(Algorithm::kTripleDes)));
  ExpectInUse(Algorithm::kTripleDes);
}

TEST_F(PadKeys, AreLoadedUnderRsaOf2048BitsWithTheTextTwo) {
  SetTo(Algorithm::kSm4);
  const std::string modulus = PadsKey(kRsa, 2048);
  EXPECT_EQ(512U, modulus.size());
  std::string factor;
  ASSERT_EQ(0, ObtainFactor("2", factor));
  EXPECT_EQ(0, LoadKey(factor, "2", example::EncipherForRsa(key, modulus), VerifyKey(Algorithm::kSm4)));
  ExpectInUse(Algorithm::kSm4);
}

TEST_F(PadKeys, AreLoadedAsAnSm2Record) {
  SetTo(Algorithm::kSm4);
  const std::string point = PadsKey(kSm2, 256);
  EXPECT_EQ(128U, point.size());
  std::string factor;
  ASSERT_EQ(0, ObtainFactor("1", factor));
  EXPECT_EQ(0, LoadKey(factor, "1", example::EncipherForSm2(key, point), VerifyKey(Algorithm::kSm4)));
  ExpectInUse(Algorithm::kSm4);
}

TEST_F(PadKeys, AreLoadedUnderTheMasterKey) {
  SetTo(Algorithm::kTripleDes);
  const auto [new_key, form] = NewKeyUnderMaster(Algorithm::kTripleDes);
  key = new_key;
  EXPECT_EQ(0, LoadKey(NewFactor(2), "1", ToHex(form), VerifyKey(Algorithm::kTripleDes)));
  ExpectInUse(Algorithm::kTripleDes);
}

TEST_F(PadRefusesKeys, ForAnotherFactorAndKeepsTheOldOne) {
  Prepare(Algorithm::kTripleDes, 4);
  const std::string factor = NewFactor();
  ASSERT_NE(factor, NewFactor());
  const auto [other, form] = NewKeyUnderMaster(Algorithm::kTripleDes);
  EXPECT_EQ(GWQ_BAD_ARGUMENT,
            LoadKey(factor, "1", ToHex(form), example::VerifyKey(other, Algorithm::kTripleDes)));
  ExpectInUse(Algorithm::kTripleDes);
}

TEST_F(PadRefusesKeys, WithAnotherVerifyKeyAndKeepsTheOldOne) {
  Prepare(Algorithm::kSm4, 4);
  const auto [other, form] = NewKeyUnderMaster(Algorithm::kSm4);
  std::string verify = example::VerifyKey(other, Algorithm::kSm4);
  verify.back() = verify.back() == '0' ? '1' : '0';
  EXPECT_EQ(GWQ_BAD_FRAME, LoadKey(NewFactor(), "2", ToHex(form), verify));
  ExpectInUse(Algorithm::kSm4);
}

TEST_F(PadRefusesKeys, ThatItCannotDecipher) {
  SetTo(Algorithm::kSm4);
  std::string record = example::EncipherForSm2(key, PadsKey(kSm2, 256));
  record.back() = record.back() == '1' ? '2' : '1';
  EXPECT_EQ(GWQ_BAD_FRAME, LoadKey(NewFactor(), "1", record, VerifyKey(Algorithm::kSm4)));
}

TEST_F(PadRefusesKeys, WhenTheyAreNull) {
  const auto load = [this](const char* encrypted, const char* verify) {
    return Call<PN_DownloadPinPadWK>("", "1", encrypted, verify);
  };
  EXPECT_EQ(GWQ_BAD_ARGUMENT, load(nullptr, "000000"));
  EXPECT_EQ(GWQ_BAD_ARGUMENT, load("1234", nullptr));
}

TEST_F(PadRefusesKeys, ItDoesNotHave) {
  std::string public_key;
  EXPECT_EQ(kNoSuchKeyStatus, PublicKey(kRsa, 512, public_key));
  EXPECT_EQ(GWQ_BAD_ARGUMENT, PublicKey(3, 1024, public_key));
  EXPECT_EQ("", public_key);
}

class PadDigests : public Pad {
 protected:
  int Digest(int algorithm, const std::string& text, std::string& digest) {
    std::array<char, 1024> bytes{};
    const int status = Call<PN_ObtainDigest>(algorithm, text.c_str(), bytes.data());
    digest.assign(bytes.data(), bytes.size());
    return status;
  }

  void ExpectSame(const EVP_MD* kind, int algorithm, const std::string& text) {
    std::string expected(EVP_MAX_MD_SIZE, '\0');
    unsigned size = 0;
    ASSERT_EQ(1, EVP_Digest(text.data(), text.size(), reinterpret_cast<unsigned char*>(expected.data()),
                            &size, kind, nullptr));
    expected.resize(size);
    std::string digest;
    ASSERT_EQ(0, Digest(algorithm, text, digest));
    EXPECT_EQ(ToHex(expected), ToHex(digest.substr(0, size)));
    EXPECT_EQ(std::string::npos, digest.find_first_not_of('\0', size)) << "more than a digest";
  }
};

TEST_F(PadDigests, AreThoseOfSha1Sha256AndSm3) {
  ExpectSame(EVP_sha1(), 1, "abc");
  ExpectSame(EVP_sha256(), 2, "6225880123456789");
  ExpectSame(EVP_sm3(), 3, std::string(255, 'x'));
}

TEST_F(PadDigests, OfAnUnknownKindOrOfMoreThanALengthByteTellsGiveThePadsStatus) {
  std::string digest;
  EXPECT_EQ(kBadArgumentStatus, Digest(9, "abc", digest));
  EXPECT_EQ(kBadArgumentStatus, Digest(1, std::string(257, 'x'), digest));
  EXPECT_EQ(std::string::npos, digest.find_first_not_of('\0'));
}

class PadData : public Pad {
 protected:
  // Vector and data in hexadecimal, as the terminal's file has them.
  std::string Opened(const std::string& file, Algorithm algorithm) {
    const bool sm4 = algorithm == Algorithm::kSm4;
    const std::string bytes = FromHex(file);
    const std::size_t block = sm4 ? 16 : 8;
    return Deciphered(sm4 ? EVP_sm4_cbc() : EVP_des_ede_cbc(), key, bytes.substr(block),
                      bytes.substr(0, block));
  }
};

TEST_F(PadData, OfAFewBytesComeBackEncipheredAsFileAndAsAnswer) {
  Prepare(Algorithm::kTripleDes, 6);
  const std::string text("amount\0 1,250.00", 16);
  std::string file;
  std::string answer;
  ASSERT_EQ(0, StringBlock(kTripleDes, text, file, answer));
  EXPECT_EQ(text, Opened(file, Algorithm::kTripleDes));
  EXPECT_EQ(file, answer);
}

TEST_F(PadData, OfThousandsOfBytesComeBackWholeInTheFileAndCutInTheAnswer) {
  constexpr std::size_t kMaxAnswered = 4000;
  Prepare(Algorithm::kSm4, 6);
  std::string text;
  for (int i = 0; i < 300; ++i) text += std::to_string(i) + " of many;";
  std::string file;
  std::string answer;
  ASSERT_EQ(0, StringBlock(kSm4, text, file, answer));
  EXPECT_EQ(text, Opened(file, Algorithm::kSm4));
  EXPECT_EQ(file.substr(0, kMaxAnswered), answer);
}

TEST_F(PadData, WithoutAFileToFetchAreRefused) {
  std::string file;
  std::string answer;
  EXPECT_EQ(GWQ_REFUSED, StringBlock(7, "text", file, answer));
  EXPECT_EQ("", file + answer);
}

}  // namespace
}  // namespace gwq::test
