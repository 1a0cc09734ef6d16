// SPDX-License-Identifier: MIT
// Files at well-known places.
#include "files/internal/private_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/as_user.h"
#include "support/temp_dir.h"

namespace gwq::test {
namespace {

class PrivateFile : public testing::Test {
 protected:
  [[nodiscard]] bool Create() const {
    PrivateTempFile place(path_.c_str());
    EXPECT_TRUE(!place || place.path() == path_);
    return static_cast<bool>(place);
  }

  [[nodiscard]] struct stat Status() const {
    struct stat status {};
    EXPECT_EQ(lstat(path_.c_str(), &status), 0);
    return status;
  }
  void ExpectEmptyAndPrivate() const {
    const struct stat status = Status();
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_EQ(status.st_uid, geteuid());
    EXPECT_EQ(status.st_size, 0);
  }

  TempDir directory_;
  std::filesystem::path path_ = directory_ / "data.txt";
};

TEST_F(PrivateFile, IsEmptyAndItsOwnersAlone) {
  EXPECT_TRUE(Create());
  ExpectEmptyAndPrivate();
}

TEST_F(PrivateFile, IsItsOwnersAloneWhateverTheMask) {
  const mode_t mask = umask(0);
  EXPECT_TRUE(Create());
  umask(mask);
  ExpectEmptyAndPrivate();
}

TEST_F(PrivateFile, ReplacesAFileThatAnyoneMayRead) {
  WriteFile(path_, "old");
  ASSERT_EQ(chmod(path_.c_str(), 0666), 0);
  EXPECT_TRUE(Create());
  ExpectEmptyAndPrivate();
}

TEST_F(PrivateFile, ReplacesASymbolicLinkAndLeavesWhatItPointsTo) {
  const auto target = directory_ / "target";
  WriteFile(target, "precious");
  std::filesystem::create_symlink(target, path_);
  EXPECT_TRUE(Create());
  ExpectEmptyAndPrivate();
  EXPECT_EQ(ReadFile(target), "precious");
}

TEST_F(PrivateFile, ReplacesALinkThatPointsNowhere) {
  std::filesystem::create_symlink(directory_ / "nothing", path_);
  EXPECT_TRUE(Create());
  ExpectEmptyAndPrivate();
  EXPECT_FALSE(std::filesystem::exists(directory_ / "nothing"));
}

TEST_F(PrivateFile, ReplacesASecondNameOfAFileAndLeavesTheFirst) {
  const auto first = directory_ / "first";
  WriteFile(first, "precious");
  std::filesystem::create_hard_link(first, path_);
  EXPECT_TRUE(Create());
  ExpectEmptyAndPrivate();
  EXPECT_EQ(ReadFile(first), "precious");
}

TEST_F(PrivateFile, ReplacesAPipe) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0666), 0);
  EXPECT_TRUE(Create());
  ExpectEmptyAndPrivate();
}

TEST_F(PrivateFile, IsNotCreatedInPlaceOfADirectory) {
  std::filesystem::create_directory(path_);
  EXPECT_FALSE(Create());
  EXPECT_TRUE(std::filesystem::is_directory(path_));
}

// A place whose name another user holds, with this process as an ordinary user; not all machines
// have two users.
TEST_F(PrivateFile, NameThatAnotherUserHoldsIsLeftToItAndAFileOfAnotherNameStandsInForAWhile) {
  if (geteuid() != 0) return;
  WriteFile(path_, "another's");
  ASSERT_EQ(chmod(directory_.Path().c_str(), 01777), 0);
  std::string stand_in;
  {
    const AsOrdinaryUser user;
    ASSERT_TRUE(user.Holds());
    PrivateTempFile place(path_.c_str());
    ASSERT_TRUE(place);
    stand_in = place.path();
    EXPECT_NE(stand_in, path_);
    struct stat status {};
    ASSERT_EQ(lstat(stand_in.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_EQ(status.st_uid, geteuid());
    File file = place.Open();
    ASSERT_NE(file, nullptr);
  }
  EXPECT_FALSE(std::filesystem::exists(stand_in));
  EXPECT_EQ(ReadFile(path_), "another's");
}

TEST_F(PrivateFile, NeedsADirectoryAndAName) {
  EXPECT_FALSE(PrivateTempFile((directory_ / "none/data.txt").c_str()));
  EXPECT_FALSE(PrivateTempFile(""));
}

TEST_F(PrivateFile, HoldsWhatIsWrittenToItAndStays) {
  WriteFile(path_, "something longer");
  {
    PrivateTempFile place(path_.c_str());
    File file = place.Open();
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(std::fwrite("a\0b", 1, 3, file.get()), 3U);
  }
  EXPECT_EQ(ReadFile(path_), std::string("a\0b", 3));
}

}  // namespace
}  // namespace gwq::test
