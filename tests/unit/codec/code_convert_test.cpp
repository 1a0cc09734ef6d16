// SPDX-License-Identifier: MIT
// The conversions by name: their outputs, and that no descriptor of iconv is left behind.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <iconv.h>

#include <atomic>
#include <random>

#include <gwq/codec/encodings.h>
#include "support/bytes.h"
#include "support/guarded_buffer.h"
#include "support/iconv_text.h"

namespace {

std::atomic<int> g_open = 0;

}  // namespace

// The C library's own, with the open descriptors counted.
extern "C" iconv_t iconv_open(const char* tocode, const char* fromcode) {
  static const auto s_pNext = reinterpret_cast<decltype(&iconv_open)>(dlsym(RTLD_NEXT, "iconv_open"));
  iconv_t handle = s_pNext(tocode, fromcode);
  // NOLINTNEXTLINE(performance-no-int-to-ptr): iconv's own mark of failure
  if (handle != reinterpret_cast<iconv_t>(-1)) ++g_open;
  return handle;
}

extern "C" int iconv_close(iconv_t cd) {
  static const auto s_pNext = reinterpret_cast<decltype(&iconv_close)>(dlsym(RTLD_NEXT, "iconv_close"));
  --g_open;
  return s_pNext(cd);
}

namespace gwq::test {
namespace {

constexpr std::uint8_t kUntouched = 0x5A;

struct Converted {
  int result;
  Bytes out;

  // The text as far as its first zero byte.
  [[nodiscard]] std::string Text() const { return {out.begin(), std::find(out.begin(), out.end(), 0)}; }
};

class CodeConvert : public testing::Test {
 protected:
  CodeConvert() : open_before_(g_open) {}
  ~CodeConvert() override { EXPECT_EQ(g_open, open_before_) << "conversion descriptors left open"; }

  static Converted Convert(const char* from, const char* to, std::string_view text, std::size_t size) {
    GuardedBuffer in(BytesOf(text));
    GuardedBuffer out(size, kUntouched);
    const int result =
        code_convert(from, to, in.text(), static_cast<int>(in.size()), out.text(), static_cast<int>(size));
    return {result, out.Content()};
  }
  static Converted ToGb(std::string_view text, std::size_t size) {
    GuardedBuffer in(BytesOf(text));
    GuardedBuffer out(size, kUntouched);
    const int result = u2g(in.text(), static_cast<int>(in.size()), out.text(), static_cast<int>(size));
    return {result, out.Content()};
  }
  static Converted ToUtf8(std::string_view text, std::size_t size) {
    GuardedBuffer in(BytesOf(text));
    GuardedBuffer out(size, kUntouched);
    const int result = g2u(in.text(), static_cast<int>(in.size()), out.text(), static_cast<int>(size));
    return {result, out.Content()};
  }

 private:
  int open_before_;
};

TEST_F(CodeConvert, TextIsConvertedAndTheRestZeroed) {
  const Converted gb = ToGb("一a", 8);
  EXPECT_EQ(gb.result, 0);
  EXPECT_EQ(gb.out, (Bytes{0xD2, 0xBB, 'a', 0, 0, 0, 0, 0}));
  const Converted utf8 = ToUtf8("\xD2\xBB", 5);
  EXPECT_EQ(utf8.result, 0);
  EXPECT_EQ(utf8.out, (Bytes{0xE4, 0xB8, 0x80, 0, 0}));
}

TEST_F(CodeConvert, NamesArePassedToIconv) {
  const Converted latin = Convert("ISO-8859-1", "UTF-8", "\xE9", 4);
  EXPECT_EQ(latin.result, 0);
  EXPECT_EQ(latin.out, (Bytes{0xC3, 0xA9, 0, 0}));
}

TEST_F(CodeConvert, CharactersBeyondGbkTravelAsFourBytes) {
  const std::string text = "\xF0\x9F\x98\x80";
  const Converted gb = ToGb(text, 16);
  EXPECT_EQ(gb.result, 0);
  EXPECT_EQ(gb.Text(), "\x94\x39\xFC\x36");
  EXPECT_EQ(ToUtf8(gb.Text(), 16).Text(), text);
}

TEST_F(CodeConvert, EveryOutputSizeFrom0UpIsRespected) {
  const std::string text = "一二a三";
  const Bytes gb = {0xD2, 0xBB, 0xB6, 0xFE, 'a', 0xC8, 0xFD};
  for (std::size_t size = 0; size <= gb.size() + 2; ++size) {
    const Converted converted = ToGb(text, size);
    EXPECT_EQ(converted.result, size < gb.size() ? -1 : 0) << size;
    const std::size_t whole = size == 1 || size == 3 || size == 6 ? size - 1 : std::min(size, gb.size());
    Bytes expected(gb.begin(), gb.begin() + static_cast<std::ptrdiff_t>(whole));
    expected.resize(size, 0);
    EXPECT_EQ(converted.out, expected) << size;
  }
}

TEST_F(CodeConvert, TextThatFillsTheOutputHasNoTerminator) {
  const Converted converted = ToUtf8("abc", 3);
  EXPECT_EQ(converted.result, 0);
  EXPECT_EQ(converted.out, BytesOf("abc"));
}

TEST_F(CodeConvert, EmptyTextIs0AndTheOutputZeroed) {
  const Converted converted = ToGb("", 3);
  EXPECT_EQ(converted.result, 0);
  EXPECT_EQ(converted.out, Bytes(3, 0));
  EXPECT_EQ(ToGb("", 0).result, 0);
}

TEST_F(CodeConvert, InvalidTextIsMinus1AndWhatCameBeforeStays) {
  const Converted converted = ToGb("ab\xFFz", 6);
  EXPECT_EQ(converted.result, -1);
  EXPECT_EQ(converted.out, (Bytes{'a', 'b', 0, 0, 0, 0}));
}

TEST_F(CodeConvert, TruncatedCharacterIsMinus1) {
  EXPECT_EQ(ToGb("a\xE4\xB8", 6).result, -1);
  EXPECT_EQ(ToUtf8("a\xD2", 6).result, -1);
  EXPECT_EQ(ToUtf8("a\xD2", 6).out, (Bytes{'a', 0, 0, 0, 0, 0}));
}

TEST_F(CodeConvert, UnknownNamesAreMinus1) {
  EXPECT_EQ(Convert("no such code", "utf-8", "a", 4).result, -1);
  EXPECT_EQ(Convert("utf-8", "no such code", "a", 4).result, -1);
}

TEST_F(CodeConvert, NullNamesAreMinus1) {
  EXPECT_EQ(Convert(nullptr, "utf-8", "a", 4).result, -1);
  EXPECT_EQ(Convert("utf-8", nullptr, "a", 4).result, -1);
}

TEST_F(CodeConvert, NullTextIsEmptyAndNullOutputHasNoRoom) {
  char out[] = "xy";
  EXPECT_EQ(u2g(nullptr, 5, out, 2), 0);
  EXPECT_EQ(std::string(out, 2), std::string(2, '\0'));
  EXPECT_EQ(u2g("a", 1, nullptr, 5), -1);
}

TEST_F(CodeConvert, NegativeLengthsAreNone) {
  char out[] = "xy";
  EXPECT_EQ(u2g("a", -1, out, 2), 0);
  EXPECT_EQ(u2g("a", 1, out, -1), -1);
}

TEST_F(CodeConvert, ManyFailuresLeaveNoDescriptorOpen) {
  const int before = g_open;
  for (int i = 0; i < 2000; ++i) EXPECT_EQ(ToGb("\xFF", 4).result, -1);
  EXPECT_EQ(g_open, before);
}

TEST_F(CodeConvert, ZeroBytesInTheTextAreConvertedToo) {
  const std::string text("a\0b", 3);
  EXPECT_EQ(ToGb(text, 5).out, (Bytes{'a', 0, 'b', 0, 0}));
}

class RandomText {
 public:
  explicit RandomText(unsigned seed) : random_(seed) {}

  std::string operator()() {
    std::string text;
    for (unsigned left = Below(40); left > 0; --left) Append(text, Point());
    return text;
  }

 private:
  unsigned Below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
  unsigned Point() {
    switch (Below(4)) {
      case 0:
        return 1 + Below(0x7F);
      case 1:
        return 0x80 + Below(0x780);
      case 2:
        return 0x4E00 + Below(20902);
      default:
        return 0x10000 + Below(0x100000);
    }
  }
  static void Append(std::string& text, unsigned point) {
    const auto tail = [&](unsigned shift) { text += static_cast<char>(0x80U | (point >> shift & 0x3FU)); };
    if (point < 0x80) {
      text += static_cast<char>(point);
    } else if (point < 0x800) {
      text += static_cast<char>(0xC0U | point >> 6U);
      tail(0);
    } else if (point < 0x10000) {
      text += static_cast<char>(0xE0U | point >> 12U);
      tail(6);
      tail(0);
    } else {
      text += static_cast<char>(0xF0U | point >> 18U);
      tail(12);
      tail(6);
      tail(0);
    }
  }

  std::mt19937 random_;
};

TEST_F(CodeConvert, RandomUtf8TextComesBackFromGb18030) {
  RandomText text(1);
  for (int round = 0; round < 500; ++round) {
    const std::string utf8 = text();
    const Converted gb = ToGb(utf8, 4 * utf8.size() + 1);
    ASSERT_EQ(gb.result, 0);
    const Converted back = ToUtf8(gb.Text(), utf8.size() + 1);
    ASSERT_EQ(back.result, 0);
    ASSERT_EQ(back.Text(), utf8);
  }
}

TEST_F(CodeConvert, RandomBytesNeverWriteBesideTheOutput) {
  std::mt19937 random(2);
  for (int round = 0; round < 2000; ++round) {
    std::string bytes(random() % 30, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    const std::size_t size = random() % 30;
    EXPECT_EQ(ToGb(bytes, size).out.size(), size);
    EXPECT_EQ(ToUtf8(bytes, size).out.size(), size);
  }
}

TEST(AnsiToUtf8, DoesNothing) {
  char out[] = "kept";
  EXPECT_EQ(ANSIToUTF8("text", 4, out), 0);
  EXPECT_EQ(ANSIToUTF8(nullptr, 0, nullptr), 0);
  EXPECT_STREQ(out, "kept");
}

}  // namespace
}  // namespace gwq::test
