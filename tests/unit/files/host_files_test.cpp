// SPDX-License-Identifier: MIT
// Files on the host: names, sizes, whole-file reading and writing, Base64 of files.
#include <gwq/files/host_files.h>

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <utility>

#include "support/bytes.h"
#include "support/full_device.h"
#include "support/guarded_buffer.h"
#include "support/log_capture.h"
#include "support/temp_dir.h"

namespace {

// What happens to a file between asking for its size and opening it.
std::function<void()>& BeforeOpening() {
  static std::function<void()> s_before;
  return s_before;
}

}  // namespace

extern "C" std::FILE* fopen(const char* filename, const char* modes) {
  static const auto s_pNext =
      reinterpret_cast<std::FILE* (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "fopen"));
  if (const auto before = std::exchange(BeforeOpening(), nullptr)) before();
  return s_pNext(filename, modes);
}

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint8_t kUntouched = 0x55;

using NameFunction = void (*)(const char*, char*);

struct NameCase {
  const char* path;
  const char* name;  // null: the output is left alone
};

void ExpectNames(NameFunction function, const std::vector<NameCase>& cases) {
  for (const NameCase& each : cases) {
    GuardedBuffer out(16, kUntouched);
    function(each.path, out.text());
    const Bytes written = each.name == nullptr ? Bytes{} : Concat(BytesOf(each.name), {0});
    EXPECT_EQ(out.Content(), Concat(written, Bytes(16 - written.size(), kUntouched)))
        << (each.path == nullptr ? "NULL" : each.path);
  }
}

TEST(FileName, IsWhatStandsBehindTheLastSlash) {
  ExpectNames(&GetFileName, {{"/a/b.pdf", "b.pdf"},
                             {"/b", "b"},
                             {"a/", ""},
                             {"//x", "x"},
                             {"b.pdf", nullptr},
                             {"a\\b", nullptr},
                             {"", nullptr},
                             {nullptr, nullptr}});
}

// Every name is shorter than its path, which it overlaps in place.
TEST(FileName, MayReplaceItsPath) {
  for (std::size_t before = 0; before < 40; ++before) {
    for (std::size_t length = 0; length < 40; ++length) {
      std::string name;
      for (std::size_t i = 0; i < length; ++i) name += static_cast<char>('a' + i % 26);
      const std::string directory(before, 'd');
      std::string path = directory + "/" + name;
      GetFileName(path.data(), path.data());
      EXPECT_STREQ(path.c_str(), name.c_str());
      path = directory + "\\" + name;
      GetFileNameEx(path.data(), path.data());
      EXPECT_STREQ(path.c_str(), name.c_str());
      path = directory + "." + name;
      GetFileExtendName(path.data(), path.data());
      EXPECT_STREQ(path.c_str(), name.c_str());
    }
  }
}

TEST(FileName, NullOutputChangesNothing) {
  GetFileName("/a/b", nullptr);
  GetFileNameEx("a\\b", nullptr);
  GetFileExtendName("a.b", nullptr);
  GetFileExtenName("a.b", nullptr);
}

TEST(FileNameEx, IsWhatStandsBehindTheLastBackslash) {
  ExpectNames(&GetFileNameEx, {{"C:\\a\\b.pdf", "b.pdf"},
                               {"a\\", ""},
                               {"\\a/b", "a/b"},
                               {"/a/b", nullptr},
                               {"", nullptr},
                               {nullptr, nullptr}});
}

TEST(FileExtension, IsWhatStandsBehindTheLastDotOrEmpty) {
  for (const NameFunction function : {&GetFileExtendName, &GetFileExtenName}) {
    ExpectNames(function, {{"/a/b.pdf", "pdf"},
                           {"a.b.c", "c"},
                           {".dat", "dat"},
                           {"a.", ""},
                           {"/a.d/b", "d/b"},
                           {"none", ""},
                           {"", ""},
                           {nullptr, ""}});
  }
}

class HostFiles : public testing::Test {
 protected:
  ~HostFiles() override { BeforeOpening() = nullptr; }

  std::string Make(std::string_view content) {
    WriteFile(path_, content);
    return path_;
  }

  TempDir directory_;
  std::string path_ = directory_ / "file";
};

// ------------------------------------------------------------------ size

TEST_F(HostFiles, SizeIsTheFilesOrMinus1) {
  EXPECT_EQ(get_file_size(Make("").c_str()), 0);
  EXPECT_EQ(get_file_size(Make("1234567890").c_str()), 10);
  EXPECT_EQ(get_file_size((directory_ / "missing").c_str()), -1);
  EXPECT_EQ(get_file_size(""), -1);
  EXPECT_EQ(get_file_size(nullptr), -1);
}

TEST_F(HostFiles, SizeBeyondTheResultIsTheLargestThatFits) {
  Make("");
  std::filesystem::resize_file(path_, 3'000'000'000U);
  EXPECT_EQ(get_file_size(path_.c_str()), INT_MAX);
}

// ------------------------------------------------------------------ writing

TEST_F(HostFiles, BytesAreWrittenAnew) {
  Make("something longer");
  const Bytes bytes = {0, 1, 0xFF};
  EXPECT_EQ(WriteFileData(path_.c_str(), bytes.data(), 3), 1);
  EXPECT_EQ(BytesOf(ReadFile(path_)), bytes);
}

TEST_F(HostFiles, NoBytesMakeAnEmptyFile) {
  Make("old");
  EXPECT_EQ(WriteFileData(path_.c_str(), nullptr, 5), 0) << "bytes that are not there";
  EXPECT_EQ(ReadFile(path_), "old");
  EXPECT_EQ(WriteFileData(path_.c_str(), nullptr, 0), 1);
  EXPECT_EQ(std::filesystem::file_size(path_), 0U);
  const unsigned char byte = 'x';
  EXPECT_EQ(WriteFileData(path_.c_str(), &byte, 0), 1);
  EXPECT_EQ(WriteFileData(path_.c_str(), &byte, -1), 1);
  EXPECT_EQ(std::filesystem::file_size(path_), 0U);
}

TEST_F(HostFiles, FileThatCannotBeCreatedIs0) {
  const unsigned char byte = 'x';
  EXPECT_EQ(WriteFileData((directory_ / "missing/file").c_str(), &byte, 1), 0);
  EXPECT_EQ(WriteFileData(directory_.Path().c_str(), &byte, 1), 0) << "a directory";
  EXPECT_EQ(WriteFileData(nullptr, &byte, 1), 0);
}

TEST_F(HostFiles, FullDiskIs0) {
  if (!gwq::test::HasFullDevice()) GTEST_SKIP() << "there is no /dev/full";
  const Bytes large(100'000, 'x');
  EXPECT_EQ(WriteFileData("/dev/full", large.data(), 1), 0) << "seen when the file is closed";
  EXPECT_EQ(WriteFileData("/dev/full", large.data(), 100'000), 0);
}

// ------------------------------------------------------------------ reading

TEST_F(HostFiles, WholeFileIsRead) {
  Make(std::string("a\0b\n", 4));
  GuardedBuffer buffer(4);
  EXPECT_EQ(ReadFileData(buffer.data(), path_.c_str(), "rb"), 4);
  EXPECT_EQ(buffer.Content(), (Bytes{'a', 0, 'b', '\n'}));
}

TEST_F(HostFiles, NothingIsReadFromWhatIsNoFile) {
  GuardedBuffer buffer(1, kUntouched);
  EXPECT_EQ(ReadFileData(buffer.data(), Make("").c_str(), "rb"), 0);
  EXPECT_EQ(ReadFileData(buffer.data(), (directory_ / "missing").c_str(), "rb"), 0);
  EXPECT_EQ(ReadFileData(buffer.data(), directory_.Path().c_str(), "rb"), 0);
  EXPECT_EQ(ReadFileData(buffer.data(), nullptr, "rb"), 0);
  EXPECT_TRUE(buffer.AllAre(kUntouched));
}

TEST_F(HostFiles, NullBufferOrModeReadsNothing) {
  Make("x");
  unsigned char byte = 7;
  EXPECT_EQ(ReadFileData(nullptr, path_.c_str(), "rb"), 0);
  EXPECT_EQ(ReadFileData(&byte, path_.c_str(), nullptr), 0);
  EXPECT_EQ(byte, 7);
}

TEST_F(HostFiles, ModeIsPassedToFopen) {
  Make("old");
  GuardedBuffer buffer(3);
  EXPECT_EQ(ReadFileData(buffer.data(), path_.c_str(), "wb"), 0);
  EXPECT_EQ(ReadFile(path_), "") << "the mode emptied it";
}

TEST_F(HostFiles, FileThatGrowsWhileItIsReadIsReadAsFarAsItWas) {
  Make("12345");
  BeforeOpening() = [this] { std::filesystem::resize_file(path_, 5000); };
  GuardedBuffer buffer(5);
  EXPECT_EQ(ReadFileData(buffer.data(), path_.c_str(), "rb"), 5);
  EXPECT_EQ(buffer.Content(), BytesOf("12345"));
}

TEST_F(HostFiles, FileThatShrinksWhileItIsReadIsReadAsFarAsItIs) {
  Make("12345");
  BeforeOpening() = [this] { std::filesystem::resize_file(path_, 2); };
  GuardedBuffer buffer(5, kUntouched);
  EXPECT_EQ(ReadFileData(buffer.data(), path_.c_str(), "rb"), 2);
  EXPECT_EQ(buffer.First(2), BytesOf("12"));
}

// ------------------------------------------------------------------ a file as Base64

TEST_F(HostFiles, Base64OfAFileAndItsLength) {
  Make("Ma");
  GuardedBuffer out(10, kUntouched);
  int length = 10;
  const LogCapture log;
  EXPECT_EQ(GetBase46FromFile(path_.c_str(), out.text(), &length), 0);
  EXPECT_EQ(length, 4);
  EXPECT_EQ(out.Content(), Concat(BytesOf("TWE="), Bytes(6, 0))) << "the whole capacity is zeroed";
  EXPECT_THAT(log.Messages(), ElementsAre("GetBase46FromFile nBaseLen=4 \r\n"));
}

TEST_F(HostFiles, Base64ThatJustFitsHasNoTerminator) {
  Make("Man");
  GuardedBuffer out(4);
  int length = 4;
  EXPECT_EQ(GetBase46FromFile(path_.c_str(), out.text(), &length), 0);
  EXPECT_EQ(out.Content(), BytesOf("TWFu"));
}

TEST_F(HostFiles, Base64ThatDoesNotFitTellsTheSize) {
  Make("1234567890");
  GuardedBuffer out(8, kUntouched);
  int length = 8;
  const LogCapture log;
  EXPECT_EQ(GetBase46FromFile(path_.c_str(), out.text(), &length), -2);
  EXPECT_EQ(length, 16);
  EXPECT_TRUE(out.AllAre(kUntouched));
  EXPECT_THAT(log.Messages(), ElementsAre("GetBase46FromFile szBase == NULL"));
}

TEST_F(HostFiles, Base64WithoutOutputTellsTheSize) {
  Make("1234567890");
  int length = 100;
  EXPECT_EQ(GetBase46FromFile(path_.c_str(), nullptr, &length), -2);
  EXPECT_EQ(length, 16);
}

TEST_F(HostFiles, Base64WithANegativeCapacityTellsTheSize) {
  Make("123");
  char out = 'k';
  int length = -1;
  EXPECT_EQ(GetBase46FromFile(path_.c_str(), &out, &length), -2);
  EXPECT_EQ(length, 4);
  EXPECT_EQ(out, 'k');
}

TEST_F(HostFiles, Base64OfAMissingFileIsMinus15) {
  char out[8] = "kept";
  int length = 8;
  const LogCapture log;
  EXPECT_EQ(GetBase46FromFile((directory_ / "missing").c_str(), out, &length), -15);
  EXPECT_EQ(GetBase46FromFile(nullptr, out, &length), -15);
  EXPECT_EQ(length, 8);
  EXPECT_STREQ(out, "kept");
  EXPECT_THAT(log.Messages(), IsEmpty());
}

TEST_F(HostFiles, Base64WithoutALengthIsMinus2) {
  char out[8] = "kept";
  EXPECT_EQ(GetBase46FromFile(Make("x").c_str(), out, nullptr), -2);
  EXPECT_STREQ(out, "kept");
}

TEST_F(HostFiles, Base64OfAnEmptyFileOrADirectoryIsMinus2) {
  std::string out(8192, 'k');
  int length = 8192;
  EXPECT_EQ(GetBase46FromFile(Make("").c_str(), out.data(), &length), -2);
  EXPECT_EQ(GetBase46FromFile(directory_.Path().c_str(), out.data(), &length), -2);
  EXPECT_EQ(length, 8192);
  EXPECT_EQ(out, std::string(8192, 'k'));
}

TEST_F(HostFiles, Base64OfAFileThatGrowsIsThatOfWhatItWas) {
  Make("Man");
  BeforeOpening() = [this] { std::filesystem::resize_file(path_, 5000); };
  GuardedBuffer out(4);
  int length = 4;
  EXPECT_EQ(GetBase46FromFile(path_.c_str(), out.text(), &length), 0);
  EXPECT_EQ(out.Content(), BytesOf("TWFu"));
}

TEST_F(HostFiles, Base64OfAFileThatShrinksIsThatOfWhatIsLeft) {
  Make("Man");
  BeforeOpening() = [this] { std::filesystem::resize_file(path_, 1); };
  GuardedBuffer out(4);
  int length = 4;
  EXPECT_EQ(GetBase46FromFile(path_.c_str(), out.text(), &length), 0);
  EXPECT_EQ(out.Content(), BytesOf("TQ=="));
}

TEST_F(HostFiles, Base64OfAFileThatVanishesIsMinus2) {
  Make("Man");
  BeforeOpening() = [this] { std::filesystem::remove(path_); };
  char out[8] = "kept";
  int length = 8;
  EXPECT_EQ(GetBase46FromFile(path_.c_str(), out, &length), -2);
  EXPECT_STREQ(out, "kept");
}

TEST_F(HostFiles, Base64WhoseLengthCannotBeCountedIsMinus24) {
  Make("");
  int length = 0;
  const LogCapture log;
  for (const std::uintmax_t size : {1'610'612'734U, 2'147'483'647U, 3'000'000'000U}) {
    std::filesystem::resize_file(path_, size);
    EXPECT_EQ(GetBase46FromFile(path_.c_str(), nullptr, &length), -24) << size;
    EXPECT_EQ(length, 0);
    EXPECT_EQ(log.Messages().back(), "GetBase46FromFile NULL == pData");
  }
  std::filesystem::resize_file(path_, 1'610'612'733U);
  EXPECT_EQ(GetBase46FromFile(path_.c_str(), nullptr, &length), -2);
  EXPECT_EQ(length, 2'147'483'644);
}

// ------------------------------------------------------------------ Base64 to a file

TEST_F(HostFiles, Base64TextIsWrittenAsBytes) {
  EXPECT_EQ(WriteBase64ToFile(path_.c_str(), "TWFuAP8=", 8), 0);
  EXPECT_EQ(BytesOf(ReadFile(path_)), (Bytes{'M', 'a', 'n', 0, 0xFF}));
}

TEST_F(HostFiles, Base64TextReplacesTheFile) {
  Make("something longer");
  EXPECT_EQ(WriteBase64ToFile(path_.c_str(), "TQ==", 4), 0);
  EXPECT_EQ(ReadFile(path_), "M");
}

TEST_F(HostFiles, Base64TextIsTakenAsFarAsItsLength) {
  EXPECT_EQ(WriteBase64ToFile(path_.c_str(), "TWFuTWFu", 7), 0);
  EXPECT_EQ(ReadFile(path_), "Man");
}

TEST_F(HostFiles, TextWithoutBytesMakesNoFile) {
  for (const char* text : {"", "TWF", "====", "=WFu"}) {
    EXPECT_EQ(WriteBase64ToFile(path_.c_str(), text, static_cast<int>(std::strlen(text))), 0) << text;
    EXPECT_FALSE(std::filesystem::exists(path_)) << text;
  }
}

TEST_F(HostFiles, BadArgumentsAreMinus2AndMakeNoFile) {
  EXPECT_EQ(WriteBase64ToFile(nullptr, "TWFu", 4), -2);
  EXPECT_EQ(WriteBase64ToFile(path_.c_str(), nullptr, 4), -2);
  EXPECT_EQ(WriteBase64ToFile(path_.c_str(), "TWFu", -1), -2);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(HostFiles, FileThatCannotBeWrittenIsNotReported) {
  EXPECT_EQ(WriteBase64ToFile((directory_ / "missing/file").c_str(), "TWFu", 4), 0);
}

TEST_F(HostFiles, FileComesBackThroughBase64) {
  std::string content(5000, '\0');
  for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 7 + i / 256);
  Make(content);
  std::string text(7000, '\0');
  int length = 7000;
  ASSERT_EQ(GetBase46FromFile(path_.c_str(), text.data(), &length), 0);
  ASSERT_EQ(WriteBase64ToFile((directory_ / "copy").c_str(), text.c_str(), length), 0);
  EXPECT_EQ(ReadFile(directory_ / "copy"), content);
}

}  // namespace
}  // namespace gwq::test
