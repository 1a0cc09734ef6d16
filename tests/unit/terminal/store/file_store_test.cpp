// SPDX-License-Identifier: MIT
// The store in a real directory, with everything that could lead out of it.
#include "store/file_store.h"
#include "support/as_user.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "store/initial_files.h"
#include "support/temp_dir.h"
#include "unit/terminal/device/files/file_rig.h"

namespace gwq::terminal::test {

using namespace device;
using namespace store;
namespace {

namespace fs = std::filesystem;
using gwq::test::ReadFile;
using gwq::test::TempDir;
using gwq::test::WriteFile;

std::span<const std::uint8_t> AsBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

FileResult Store(FileSystem& files, const std::string& path, std::string_view content) {
  const auto writer = files.Create();
  if (!writer || !writer->Append(AsBytes(content))) return FileResult::kFailed;
  return writer->StoreAs(path);
}

std::string Content(FileSystem& files, const std::string& path) {
  const auto file = files.Open(path);
  if (!file) return "(none)";
  Bytes content(file->Size() + 10);
  content.resize(file->Read(content).value_or(0));
  return ToText(content);
}

// A store in a directory of its own, with something beside it to be kept safe.
class StoreTest : public testing::Test {
 protected:
  StoreTest() { WriteFile(dir_ / "secret", "secret"); }

  [[nodiscard]] fs::path Root() const { return dir_ / "store"; }
  void Make(const std::string& directory) const { fs::create_directories(Root() / directory); }
  void ExpectSecretKept() const {
    EXPECT_EQ(ReadFile(dir_ / "secret"), "secret");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir_.Path()), {}), 2);
  }

  TempDir dir_;
};

TEST_F(StoreTest, KeepsAFileUnderItsPath) {
  FileStore files(Root());
  EXPECT_EQ(Store(files, "/mnt/sdcard/media/张三 1.jpg", "face"), FileResult::kDone);
  EXPECT_EQ(Content(files, "/mnt/sdcard/media/张三 1.jpg"), "face");
  EXPECT_EQ(Content(files, "//mnt//sdcard/media/张三 1.jpg"), "face");
  EXPECT_EQ(ReadFile(Root() / "mnt/sdcard/media/张三 1.jpg"), "face");
  EXPECT_EQ(Store(files, "/mnt/sdcard/media/张三 1.jpg", "new"), FileResult::kDone);
  EXPECT_EQ(Content(files, "/mnt/sdcard/media/张三 1.jpg"), "new");
}

TEST_F(StoreTest, ShowsAFileOnlyWhenItIsWhole) {
  FileStore files(Root());
  {
    const auto writer = files.Create();
    ASSERT_TRUE(writer->Append(AsBytes("half")));
    EXPECT_EQ(files.List("/.incoming"), std::vector<std::string>{});
    EXPECT_EQ(std::distance(fs::directory_iterator(Root() / ".incoming"), {}), 1);
  }
  EXPECT_TRUE(fs::is_empty(Root() / ".incoming"));
}

TEST_F(StoreTest, LeavesNothingOfItsOwnBehind) {
  { const FileStore files(Root()); }
  EXPECT_TRUE(fs::is_empty(Root()));
}

TEST_F(StoreTest, MayShareItsDirectory) {
  FileStore files(Root());
  {
    FileStore other(Root());
    EXPECT_EQ(Store(other, "/tmp/x", "x"), FileResult::kDone);
  }
  EXPECT_EQ(Content(files, "/tmp/x"), "x");
  EXPECT_EQ(Store(files, "/tmp/y", "y"), FileResult::kDone);
}

TEST_F(StoreTest, RemovesWhatAnEarlierRunLeftHalfWritten) {
  Make(".incoming");
  WriteFile(Root() / ".incoming/1.1", "half");
  const FileStore files(Root());
  EXPECT_TRUE(fs::is_empty(Root() / ".incoming"));
}

TEST_F(StoreTest, ListsPlainFilesInOrder) {
  FileStore files(Root());
  for (const char* name : {"b", "a", "c d"}) Store(files, std::string("/tmp/") + name, "x");
  Make("tmp/directory");
  fs::create_symlink("a", Root() / "tmp/link");
  EXPECT_EQ(files.List("/tmp"), (std::vector<std::string>{"a", "b", "c d"}));
  EXPECT_EQ(files.List("/missing"), std::vector<std::string>{});
  EXPECT_EQ(files.List("/tmp/a"), std::vector<std::string>{});
  EXPECT_EQ(files.List("/.."), std::vector<std::string>{});
}

TEST_F(StoreTest, RemovesAFile) {
  FileStore files(Root());
  Store(files, "/tmp/x", "x");
  EXPECT_EQ(files.Remove("/tmp/x"), FileResult::kDone);
  EXPECT_EQ(files.Remove("/tmp/x"), FileResult::kNotThere);
  EXPECT_EQ(files.Remove("/tmp"), FileResult::kNotThere);
  EXPECT_EQ(files.Remove("/nowhere/x"), FileResult::kNotThere);
  EXPECT_EQ(files.Remove("/tmp/../tmp/x"), FileResult::kBadPath);
}

TEST_F(StoreTest, HasNoPathsThatLeadOutOfIt) {
  FileStore files(Root());
  const std::vector<std::string> paths{"",
                                       "/",
                                       "//",
                                       "secret",
                                       "../secret",
                                       "/../secret",
                                       "/tmp/../../secret",
                                       "/tmp/..",
                                       "/.",
                                       "/tmp/./x",
                                       std::string("/x\0/../../secret", 15),
                                       "/.incoming/x",
                                       "//.incoming/x",
                                       (dir_ / "secret").string().substr(1),
                                       "/" + std::string(256, 'x'),
                                       "/x" + std::string(5000, '/')};
  for (const std::string& path : paths) {
    EXPECT_EQ(Store(files, path, "mine"), FileResult::kBadPath) << path;
    EXPECT_EQ(Content(files, path), "(none)") << path;
    EXPECT_EQ(files.Remove(path), FileResult::kBadPath) << path;
  }
  EXPECT_EQ(Store(files, (dir_ / "secret").string(), "mine"), FileResult::kDone);
  ExpectSecretKept();
}

TEST_F(StoreTest, FollowsNoLinksToFiles) {
  Make("tmp");
  fs::create_symlink(dir_ / "secret", Root() / "tmp/link");
  fs::create_symlink(dir_ / "new", Root() / "tmp/dangling");
  FileStore files(Root());
  EXPECT_EQ(Content(files, "/tmp/link"), "(none)");
  EXPECT_EQ(files.Remove("/tmp/link"), FileResult::kNotThere);
  EXPECT_EQ(Store(files, "/tmp/link", "mine"), FileResult::kDone);
  EXPECT_EQ(Store(files, "/tmp/dangling", "mine"), FileResult::kDone);
  EXPECT_EQ(Content(files, "/tmp/link"), "mine");
  EXPECT_FALSE(fs::is_symlink(Root() / "tmp/link"));
  ExpectSecretKept();
}

TEST_F(StoreTest, FollowsNoLinksToDirectories) {
  Make("");
  fs::create_symlink(dir_.Path(), Root() / "tmp");
  fs::create_symlink("..", Root() / "up");
  FileStore files(Root());
  for (const std::string path : {"/tmp/secret", "/up/secret", "/tmp/store/x"}) {
    EXPECT_EQ(Content(files, path), "(none)") << path;
    EXPECT_EQ(files.Remove(path), FileResult::kNotThere) << path;
    EXPECT_EQ(Store(files, path, "mine"), FileResult::kFailed) << path;
  }
  EXPECT_EQ(files.List("/tmp"), std::vector<std::string>{});
  ExpectSecretKept();
}

TEST_F(StoreTest, WritesNothingThroughALinkInPlaceOfItsOwnDirectory) {
  Make("");
  fs::create_symlink(dir_.Path(), Root() / ".incoming");
  FileStore files(Root());
  EXPECT_EQ(files.Create(), nullptr);
  ExpectSecretKept();
}

TEST_F(StoreTest, ReadsPlainFilesOnly) {
  Make("tmp/directory");
  ASSERT_EQ(mkfifo((Root() / "tmp/pipe").c_str(), 0600), 0);
  FileStore files(Root());
  EXPECT_EQ(Content(files, "/tmp/directory"), "(none)");
  EXPECT_EQ(Content(files, "/tmp/pipe"), "(none)");
}

TEST_F(StoreTest, DoesNotReplaceADirectory) {
  Make("tmp/directory");
  FileStore files(Root());
  EXPECT_EQ(Store(files, "/tmp/directory", "x"), FileResult::kFailed);
  EXPECT_EQ(Store(files, "/tmp", "x"), FileResult::kFailed);
  EXPECT_TRUE(fs::is_empty(Root() / ".incoming"));
}

TEST_F(StoreTest, DoesNotStoreBelowAFile) {
  FileStore files(Root());
  Store(files, "/tmp/x", "x");
  EXPECT_EQ(Store(files, "/tmp/x/y", "y"), FileResult::kFailed);
  EXPECT_EQ(Content(files, "/tmp/x"), "x");
}

TEST_F(StoreTest, LimitsEachFile) {
  FileStore files(Root(), {10, 1000});
  EXPECT_EQ(Store(files, "/x", "1234567890"), FileResult::kDone);
  EXPECT_EQ(Store(files, "/y", "12345678901"), FileResult::kFailed);
  const auto writer = files.Create();
  EXPECT_TRUE(writer->Append(AsBytes("123456")));
  EXPECT_FALSE(writer->Append(AsBytes("78901")));
  EXPECT_FALSE(writer->Append(AsBytes("7")));
  EXPECT_EQ(writer->StoreAs("/y"), FileResult::kFailed);
  EXPECT_EQ(Content(files, "/y"), "(none)");
}

TEST_F(StoreTest, LimitsAllFilesTogether) {
  Make("tmp/deep/er");
  WriteFile(Root() / "tmp/deep/er/old", "1234567890");
  FileStore files(Root(), {100, 30});
  const auto first = files.Create();
  const auto second = files.Create();
  EXPECT_TRUE(first->Append(AsBytes("1234567890")));
  EXPECT_TRUE(second->Append(AsBytes("123456789")));
  EXPECT_FALSE(second->Append(AsBytes("01")));
  EXPECT_EQ(first->StoreAs("/x"), FileResult::kDone);
}

TEST_F(StoreTest, HasRoomAgainAfterRemovingAndDropping) {
  FileStore files(Root(), {100, 10});
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Store(files, "/x", "1234567890"), FileResult::kDone);
    EXPECT_EQ(Store(files, "/y", "1"), FileResult::kFailed);
    EXPECT_EQ(files.Remove("/x"), FileResult::kDone);
    EXPECT_TRUE(files.Create()->Append(AsBytes("1234567890")));
  }
}

TEST_F(StoreTest, FailsWithoutHarmWhereItMayNotWrite) {
  Make("tmp");
  WriteFile(Root() / "tmp/x", "old");
  fs::permissions(Root(), fs::perms(0755));
  fs::permissions(Root() / "tmp", fs::perms(0555));
  {
    FileStore files(Root());
    const gwq::test::AsOrdinaryUser user;
    ASSERT_TRUE(user.Holds());
    EXPECT_EQ(Store(files, "/tmp/y", "y"), FileResult::kFailed);
    EXPECT_EQ(files.Remove("/tmp/x"), FileResult::kFailed);
    EXPECT_EQ(Content(files, "/tmp/x"), "old");
  }
  fs::permissions(Root() / "tmp", fs::perms::owner_all);
}

TEST_F(StoreTest, NeedsADirectory) {
  EXPECT_THROW(FileStore(dir_ / "secret"), std::system_error);
  EXPECT_THROW(FileStore(dir_ / "secret/below"), std::system_error);
}

TEST_F(StoreTest, BeginsWithASignatureAndAScreen) {
  FileStore files(Root());
  PutInitialFiles(files);
  EXPECT_EQ(files.List("/tmp"), (std::vector<std::string>{"capture.png", "hw.png", "hw.txt"}));
  EXPECT_EQ(Content(files, "/tmp/hw.png").substr(0, 8), "\x89PNG\r\n\x1A\n");
}

TEST_F(StoreTest, KeepsASignatureThatIsThereAlready) {
  Make("tmp");
  WriteFile(Root() / "tmp/hw.png", "mine");
  FileStore files(Root());
  PutInitialFiles(files);
  EXPECT_EQ(Content(files, "/tmp/hw.png"), "mine");
}

TEST_F(StoreTest, ServesATerminal) {
  FileStore files(Root());
  Rig rig(Line::kUsb, {}, {&files, {}});
  const std::string content = RandomContent(10'000'000);
  ASSERT_EQ(rig.Ask(wire::kModeChange), wire::kDone);
  ASSERT_EQ(rig.Ask(wire::kPushStart), wire::kDone);
  for (std::size_t i = 0; i < content.size(); i += 200000)
    ASSERT_EQ(rig.Ask(Packet(2, content.substr(i, 200000))), wire::kDone);
  ASSERT_EQ(rig.Ask(EndPacket(0, "big.jpg")), wire::kDone);
  EXPECT_TRUE(ReadFile(Root() / "mnt/internal_sd/media/picture/big.jpg") == content);
}

TEST_F(StoreTest, IsSafeFromATerminalsHost) {
  FileStore files(Root());
  for (const char* path : {"/../secret", "/tmp/../../secret", "../secret"}) {
    Rig rig(Line::kUsb, {}, {&files, {}});
    EXPECT_EQ(rig.Ask(NamedCommand("PULLFILE", path)), wire::kRefused);
    EXPECT_EQ(rig.Ask(NamedCommand("SPECQUERYFILE", path)), wire::kRefused);
    ASSERT_EQ(rig.Ask(wire::kModeChange), wire::kDone);
    ASSERT_EQ(rig.Ask(wire::kPushStart), wire::kDone);
    EXPECT_EQ(rig.Ask(EndPacket(255, path)), wire::kRefused);
  }
  ExpectSecretKept();
}

}  // namespace
}  // namespace gwq::terminal::test
