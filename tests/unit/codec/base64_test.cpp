// SPDX-License-Identifier: MIT
// Base64 against OpenSSL's, and the decoder's own way of counting.
#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <random>

#include <gwq/codec/encodings.h>
#include "support/bytes.h"
#include "support/guarded_buffer.h"

namespace gwq::test {
namespace {

constexpr std::uint8_t kUntouched = 0x5A;

std::string OpenSslBase64(const Bytes& bytes) {
  std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
  const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes.data(),
                                     static_cast<int>(bytes.size()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

Bytes RandomBytes(std::mt19937& random, std::size_t count) {
  Bytes bytes(count);
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
  return bytes;
}

struct Encoded {
  int result;
  Bytes out;
};

Encoded Encode(const Bytes& bytes, std::size_t cap) {
  GuardedBuffer in(bytes);
  GuardedBuffer out(cap, kUntouched);
  return {EncryptBase64(in.data(), static_cast<int>(in.size()), out.text(), static_cast<int>(cap)),
          out.Content()};
}

Encoded Decode(std::string_view text, std::size_t cap) {
  GuardedBuffer in(BytesOf(text));
  GuardedBuffer out(cap, kUntouched);
  return {DecryptBase64(in.text(), static_cast<int>(in.size()), out.data(), static_cast<int>(cap)),
          out.Content()};
}

void ExpectDecoded(std::string_view text, const Bytes& expected) {
  const Encoded decoded = Decode(text, expected.size() + 2);
  EXPECT_EQ(decoded.result, static_cast<int>(expected.size())) << text;
  EXPECT_EQ(decoded.out, Concat(expected, {kUntouched, kUntouched})) << text;
}

TEST(EncryptBase64, LastGroupIsPadded) {
  EXPECT_EQ(Encode(BytesOf("Man"), 4).out, BytesOf("TWFu"));
  EXPECT_EQ(Encode(BytesOf("Ma"), 4).out, BytesOf("TWE="));
  EXPECT_EQ(Encode(BytesOf("M"), 4).out, BytesOf("TQ=="));
}

TEST(EncryptBase64, IsWhatOpenSslMakesOfRandomBytes) {
  std::mt19937 random(1);
  for (std::size_t count = 0; count < 300; ++count) {
    const Bytes bytes = RandomBytes(random, count);
    const std::string expected = OpenSslBase64(bytes);
    const Encoded encoded = Encode(bytes, expected.size() + 1);
    ASSERT_EQ(encoded.result, static_cast<int>(expected.size()));
    ASSERT_EQ(encoded.out, Concat(BytesOf(expected), {kUntouched})) << "no terminator";
  }
}

TEST(EncryptBase64, EveryCapacityBelowTheNeedIsMinus1AndWritesNothing) {
  for (std::size_t count = 1; count <= 10; ++count) {
    const std::size_t need = 4 * ((count + 2) / 3);
    for (std::size_t cap = 0; cap <= need; ++cap) {
      const Encoded encoded = Encode(Bytes(count, 'x'), cap);
      EXPECT_EQ(encoded.result, cap < need ? -1 : static_cast<int>(need));
      if (encoded.result < 0) {
        EXPECT_EQ(encoded.out, Bytes(cap, kUntouched));
      }
    }
  }
}

TEST(EncryptBase64, NoBytesAreNoText) {
  EXPECT_EQ(Encode({}, 0).result, 0);
  EXPECT_EQ(Encode({}, 3).out, Bytes(3, kUntouched));
}

TEST(EncryptBase64, NullAndNegativeCapacityAreMinus1) {
  const unsigned char bytes[] = "abc";
  char out[4];
  EXPECT_EQ(EncryptBase64(nullptr, 3, out, 4), -1);
  EXPECT_EQ(EncryptBase64(bytes, 3, nullptr, 4), -1);
  EXPECT_EQ(EncryptBase64(bytes, 0, out, -1), -1);
}

TEST(DecryptBase64, RandomBytesComeBackFromOpenSslsText) {
  std::mt19937 random(2);
  for (std::size_t count = 0; count < 300; ++count) {
    const Bytes bytes = RandomBytes(random, count);
    ExpectDecoded(OpenSslBase64(bytes), bytes);
  }
}

TEST(DecryptBase64, PaddingEndsTheText) {
  ExpectDecoded("TWE=", BytesOf("Ma"));
  ExpectDecoded("TQ==", BytesOf("M"));
  ExpectDecoded("TQ==TWFu", BytesOf("M"));
  ExpectDecoded("====", {});
  ExpectDecoded("T===", {});
  ExpectDecoded("=WFu", {});
  ExpectDecoded("TW=u", BytesOf("M"));
}

TEST(DecryptBase64, GroupsOfFewerThanFourAtTheEndAreIgnored) {
  ExpectDecoded("TWFuTQ", BytesOf("Man"));
  ExpectDecoded("TWFuT", BytesOf("Man"));
  ExpectDecoded("TWFuTWE", BytesOf("Man"));
  ExpectDecoded("TWF", {});
  ExpectDecoded("", {});
}

TEST(DecryptBase64, CharactersOutsideTheAlphabetGiveTheBitsOfMinus1) {
  ExpectDecoded("T\nFu", {0xFF, 0xF1, 0x6E});
  ExpectDecoded("****", {0xFF, 0xFF, 0xFF});
  ExpectDecoded("AAA*", {0x00, 0x00, 0xFF});
  ExpectDecoded("\xFFZZZ", {0xFD, 0x96, 0x59});
}

// The literal rule, byte by byte: "=" returns the count, then a count beyond the capacity is refused.
Encoded ExpectedDecoding(std::string_view text, std::size_t cap) {
  Encoded expected{0, Bytes(cap, kUntouched)};
  std::size_t count = 0;
  for (std::size_t at = 0; at + 4 <= text.size(); at += 4) {
    for (std::size_t k = 0; k < 3; ++k) {
      const char current = text[at + k];
      const char next = text[at + k + 1];
      expected.result = static_cast<int>(count);
      if (current == '=' || next == '=') return expected;
      expected.result = -1;
      if (count > cap) return expected;
      const int value =
          GetIndexFromBase64Table(current) * (4 << (2 * k)) | GetIndexFromBase64Table(next) >> (4 - 2 * k);
      if (count < cap) expected.out[count] = static_cast<std::uint8_t>(value);
      ++count;
    }
  }
  expected.result = static_cast<int>(count);
  return expected;
}

TEST(DecryptBase64, RandomTextIsDecodedByTheLiteralRuleIntoEveryCapacity) {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::mt19937 random(3);
  for (int round = 0; round < 400; ++round) {
    std::string text(random() % 60, 'A');
    for (char& c : text) c = kDigits[random() % kDigits.size()];
    for (auto damaged = random() % 3; damaged != 0 && !text.empty(); --damaged) {
      text[random() % text.size()] = random() % 2 == 0 ? '=' : static_cast<char>(random());
    }
    for (std::size_t cap = 0; cap <= text.size(); ++cap) {
      const Encoded expected = ExpectedDecoding(text, cap);
      const Encoded decoded = Decode(text, cap);
      ASSERT_EQ(decoded.result, expected.result) << text << " into " << cap;
      ASSERT_EQ(decoded.out, expected.out) << text << " into " << cap;
    }
  }
}

TEST(DecryptBase64, CapacityIsRefusedOnlyWhenTheCountHasPassedIt) {
  for (const char* text : {"TWFu", "TWE=", "TQ==", "TWFuTWFu", "TWFuTWE=", "TWFuTQ==", "TWFuTWFuTWF"}) {
    for (std::size_t cap = 0; cap <= 10; ++cap) {
      EXPECT_EQ(Decode(text, cap).result, ExpectedDecoding(text, cap).result) << text << " into " << cap;
    }
  }
}

TEST(DecryptBase64, OneByteBeyondTheCapacityIsCountedAndNotStored) {
  const Encoded decoded = Decode("TWFu", 2);
  EXPECT_EQ(decoded.result, 3);
  EXPECT_EQ(decoded.out, BytesOf("Ma"));
}

TEST(DecryptBase64, TwoBytesBeyondTheCapacityAreMinus1) {
  const Encoded decoded = Decode("TWFu", 1);
  EXPECT_EQ(decoded.result, -1);
  EXPECT_EQ(decoded.out, BytesOf("M"));
}

TEST(DecryptBase64, NullTextIsEmptyAndNullOutputHasNoRoom) {
  unsigned char out = 7;
  EXPECT_EQ(DecryptBase64(nullptr, 4, &out, 1), 0);
  EXPECT_EQ(DecryptBase64("TWFu", 4, nullptr, 3), -1);
  EXPECT_EQ(DecryptBase64("TWFu", -4, &out, 1), 0);
  EXPECT_EQ(out, 7);
}

TEST(GetIndexFromBase64Table, EveryCharacterHasItsPlaceInTheAlphabet) {
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (int c = -128; c <= 127; ++c) {
    const std::size_t at = alphabet.find(static_cast<char>(c));
    const int expected = c == '=' ? 0 : at == std::string::npos ? -1 : static_cast<int>(at);
    EXPECT_EQ(GetIndexFromBase64Table(static_cast<char>(c)), expected) << c;
  }
}

TEST(EncryptBase64, OfNoBytesIsNoTextWhateverThePointers) {
  char out[4] = "abc";
  EXPECT_EQ(EncryptBase64(nullptr, 0, out, 4), 0);
  EXPECT_EQ(EncryptBase64(nullptr, 0, nullptr, 0), 0);
  EXPECT_EQ(EncryptBase64(nullptr, -5, out, 4), 0);
  EXPECT_STREQ(out, "abc");
  EXPECT_EQ(EncryptBase64(nullptr, 1, out, 4), -1);
}

}  // namespace
}  // namespace gwq::test
