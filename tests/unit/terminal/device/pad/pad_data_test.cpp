// SPDX-License-Identifier: MIT
// Data that the terminal enciphers, deciphered here with the same key.
#include <gtest/gtest.h>

#include <algorithm>

#include "unit/terminal/device/files/file_rig.h"
#include "unit/terminal/device/pad/pad_rig.h"

namespace gwq::terminal::test {
namespace {

const std::string kFile = "/tmp/encdata.txt";

std::string Command(int algorithm, std::string_view hex) {
  return std::string("\033[1GETENCDATA\x02")
      .append(std::to_string(algorithm) + "|" + std::to_string(hex.size()) + "|")
      .append(hex)
      .append("\x03");
}

// Cipher-block chaining undone block by block, and the padding taken off.
std::string Decipher(int type, std::string_view key_hex, const ByteList& enciphered) {
  const std::size_t block = type == kSm4Type ? 16 : 8;
  ByteList clear =
      type == kSm4Type ? Sm4(key_hex, enciphered, false) : PlainDes(FromHex(key_hex), enciphered, false);
  for (std::size_t i = block; i < clear.size(); ++i) clear[i] ^= enciphered[i - block];
  const std::size_t padding = clear.back();
  EXPECT_GE(padding, 1U);
  EXPECT_LE(padding, block);
  const std::span<const std::uint8_t> text = std::span(clear).subspan(block);
  return ToText(text.first(text.size() - std::min(padding, text.size())));
}

TEST(EncipheredData, IsInTheAnswerAndInTheFile) {
  struct Case {
    int type;
    std::string_view key;
  };
  for (const auto& [type, key] :
       {Case{kTripleDesType, kDesHex}, Case{kTripleDesType, kDes24Hex}, Case{kSm4Type, kSm4Hex}}) {
    FileRig host;
    LoadPadKey(host.rig, type, key);
    for (const std::size_t size : {0U, 1U, 7U, 8U, 15U, 16U, 17U, 1000U}) {
      const std::string text = RandomContent(size);
      const std::string answer = host.Ask(Command(type, ToHex(ToBytes(text))));
      ASSERT_EQ(answer.substr(0, 2), "\x02\xAA");
      ASSERT_EQ(answer.back(), '\x03');
      EXPECT_EQ(answer.substr(2, answer.size() - 3), host.store.files.at(kFile));
      EXPECT_EQ(Decipher(type, key, FromHex(host.store.files.at(kFile))), text);
    }
  }
}

TEST(EncipheredData, DiffersEachTime) {
  FileRig host;
  LoadPadKey(host.rig, kSm4Type, kSm4Hex);
  EXPECT_NE(host.Ask(Command(kSm4Type, "41")), host.Ask(Command(kSm4Type, "41")));
}

TEST(EncipheredData, ThatIsLongStandsWholeInTheFileOnly) {
  FileRig host;
  LoadPadKey(host.rig, kTripleDesType, kDesHex);
  const std::string text = RandomContent(20000);
  const std::string answer = host.Ask(Command(kTripleDesType, ToHex(ToBytes(text))));
  EXPECT_EQ(answer.size(), 4003U);
  EXPECT_EQ(answer.substr(2, 4000), host.store.files.at(kFile).substr(0, 4000));
  EXPECT_EQ(Decipher(kTripleDesType, kDesHex, FromHex(host.store.files.at(kFile))), text);
}

TEST(EncipheredData, IsPulledByTheHost) {
  FileRig host;
  LoadPadKey(host.rig, kTripleDesType, kDesHex);
  host.Ask(Command(kTripleDesType, "48656C6C6F"));
  const auto pulled = host.Pull(kFile);
  ASSERT_TRUE(pulled.complete);
  EXPECT_EQ(Decipher(kTripleDesType, kDesHex, FromHex(pulled.content)), "Hello");
}

TEST(EncipheredData, NeedsTheWorkingKeyOfItsAlgorithm) {
  FileRig host;
  EXPECT_EQ(host.Ask(Command(kTripleDesType, "41")), wire::kRefused);
  LoadPadKey(host.rig, kTripleDesType, kDesHex);
  EXPECT_EQ(host.Ask(Command(kSm4Type, "41")), wire::kRefused);
}

TEST(EncipheredData, ThatFailsLeavesNoFile) {
  FileRig host;
  LoadPadKey(host.rig, kTripleDesType, kDesHex);
  for (const std::string bad : {"\033[1GETENCDATA\0020|2|4x\x03", "\033[1GETENCDATA\0020|3|414\x03",
                                "\033[1GETENCDATA\0020|4|41\x03", "\033[1GETENCDATA\0022|2|41\x03"}) {
    host.Ask(Command(kTripleDesType, "41"));
    EXPECT_EQ(host.Ask(bad), wire::kFailed) << bad;
    EXPECT_FALSE(host.store.files.contains(kFile));
  }
  host.store.writable = false;
  EXPECT_EQ(host.Ask(Command(kTripleDesType, "41")), wire::kFailed);
  Rig without_storage;
  LoadPadKey(without_storage, kTripleDesType, kDesHex);
  EXPECT_EQ(without_storage.Ask(Command(kTripleDesType, "41")), wire::kFailed);
}

TEST(EncipheredData, IsTracedWithoutTheData) {
  FileRig host;
  LoadPadKey(host.rig, kTripleDesType, kDesHex);
  const std::size_t before = host.rig.Trace().size();
  host.Ask(Command(kTripleDesType, "4142434445"));
  EXPECT_EQ(host.rig.Trace().substr(before),
            "host: GETENCDATA, algorithm 0 (10 characters, masked)\n"
            "terminal: answer: enciphered data (32 characters)\n");
}

}  // namespace
}  // namespace gwq::terminal::test
