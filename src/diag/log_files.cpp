// SPDX-License-Identifier: MIT
#include "diag/internal/log_files.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <span>
#include <string_view>

#include <gwq/diag/log.h>
#include "diag/internal/clock_text.h"

namespace gwq {
namespace {

constexpr std::size_t kPathSize = 256;
constexpr std::size_t kPurgedPathSize = 260;
constexpr int kDaysKept = 15;
constexpr mode_t kDirectoryMode = 0777;
constexpr mode_t kFileMode = 0600;  // the log contains keys and PINs

template <std::size_t N>
using LogPathOf = std::array<char, N>;
using LogPath = LogPathOf<kPathSize>;

std::string_view LoaderReportedFile() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&GetModuleCurPath), &info) == 0) return {};
  return info.dli_fname == nullptr ? std::string_view{} : info.dli_fname;
}

// The library's file: the relative path that the loader reports, and its absolute form at load
// time.
struct RelativeFile {
  std::array<char, kPathSize> reported;
  std::array<char, 2 * kPathSize> absolute;
};
RelativeFile g_relative{};

std::string_view OwnFile() {
  const std::string_view reported = LoaderReportedFile();
  return !reported.empty() && reported == g_relative.reported.data() ? g_relative.absolute.data() : reported;
}

// The current directory if the loader reports none.
std::string_view OwnDirectory() {
  const std::string_view file = OwnFile();
  const std::size_t slash = file.rfind('/');
  return slash == std::string_view::npos ? "./" : file.substr(0, slash + 1);
}

// Empty if it does not fit: a truncated path would name another file.
template <std::size_t N = kPathSize>
LogPathOf<N> InOwnDirectory(std::string_view name) {
  const std::string_view directory = OwnDirectory();
  LogPathOf<N> path{};
  if (directory.size() + name.size() < path.size()) {
    directory.copy(path.data(), directory.size());
    name.copy(path.data() + directory.size(), name.size());
  }
  return path;
}

LogPath TodaysPath() {
  const std::tm today = LocalDate();
  std::array name = std::to_array("Log/Gwq_Volkarn/VK_YYYYMMDD.log");
  const std::span<char> date = std::span(name).subspan(std::strlen("Log/Gwq_Volkarn/VK_"));
  WriteDigits(today.tm_year + 1900, date.first(4));
  WriteDigits(today.tm_mon + 1, date.subspan(4, 2));
  WriteDigits(today.tm_mday, date.subspan(6, 2));
  return InOwnDirectory(name.data());
}

void MakeDirectories() {
  mkdir(InOwnDirectory("Log/").data(), kDirectoryMode);
  mkdir(InOwnDirectory("Log/Gwq_Volkarn").data(), kDirectoryMode);
}

// Refuses a file of another user, and takes other users' access to this user's file away.
bool MakePrivate(int fd) {
  struct stat file {};
  if (fstat(fd, &file) != 0) return false;
  if (!S_ISREG(file.st_mode) || file.st_uid != geteuid()) {
    errno = EACCES;
    return false;
  }
  return (file.st_mode & 0777U & ~kFileMode) == 0 || fchmod(fd, kFileMode) == 0;
}

int OpenToAppend(const LogPath& path) {
  const int fd =
      open(path.data(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kFileMode);
  if (fd < 0 || MakePrivate(fd)) return fd;
  const int error = errno;
  close(fd);
  errno = error;
  return -1;
}

struct NameDate {
  int year = 0;
  int month = 0;
  int day = 0;

  [[nodiscard]] bool Incomplete() const { return year == 0 || month == 0 || day == 0; }
  [[nodiscard]] int Days() const { return GetAbsDays(year, month, day); }
};

// Contract: fields that the name lacks keep their values, so that a file with any other name is
// dated by the entry before it, and removed if it is the first one.
void ReadDateFromName(const char* name, NameDate& date) {
  static_cast<void>(std::sscanf(name, "VK_%04d%02d%02d.log", &date.year, &date.month, &date.day));
}

void RemoveIn(const char* directory, const char* name) {
  std::array<char, kPurgedPathSize + sizeof(dirent::d_name) + 1> path{};
  const int length = std::snprintf(path.data(), path.size(), "%s/%s", directory, name);
  if (length < static_cast<int>(path.size())) std::remove(path.data());
}

bool IsLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

using Directory = std::unique_ptr<DIR, int (*)(DIR*)>;

void PurgeDirectory(DIR* directory, const char* path, int today) {
  NameDate date;
  while (const dirent* entry = readdir(directory)) {
    if (entry->d_type != DT_REG) continue;
    ReadDateFromName(entry->d_name, date);
    if (date.Incomplete() || today - date.Days() > kDaysKept) RemoveIn(path, entry->d_name);
  }
}

}  // namespace

void RememberOwnPath() {
  const std::string_view reported = LoaderReportedFile();
  std::array<char, kPathSize> current{};
  if (reported.empty() || reported.front() == '/' || reported.size() >= g_relative.reported.size()) return;
  if (getcwd(current.data(), current.size()) == nullptr) return;
  reported.copy(g_relative.reported.data(), reported.size());
  std::snprintf(g_relative.absolute.data(), g_relative.absolute.size(), "%s/%s", current.data(),
                g_relative.reported.data());
}

int OpenTodaysLog() {
  const LogPath path = TodaysPath();
  const int fd = OpenToAppend(path);
  if (fd >= 0 || errno != ENOENT) return fd;
  MakeDirectories();
  return OpenToAppend(path);
}

}  // namespace gwq

using namespace gwq;

void GetModuleCurPath(char* path) {
  if (path != nullptr) std::strcpy(path, InOwnDirectory("").data());
}

// Contract: the size is ignored; `path` needs room for the directory and the name.
int GetFullPath(const char* name, char* path, int /*size*/) {
  if (name == nullptr || path == nullptr) return 0;
  const LogPath directory = InOwnDirectory("");
  std::strcpy(path, directory.data());
  if (directory[0] != '\0') std::strcat(path, name);
  return static_cast<int>(std::strlen(path));
}

char* pGetLogPath() {
  static LogPath s_szLogPath{};
  MakeDirectories();
  s_szLogPath = TodaysPath();
  return s_szLogPath.data();
}

// Contract: month and day are not checked: a month below 2 adds no days, a day of 0 subtracts one.
int GetAbsDays(int year, int month, int day) {
  static constexpr std::array kMonthDays{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const long long n = static_cast<long long>(year) - 1;
  long long days = 365 * n + n / 4 - n / 100 + n / 400;
  for (int m = 1; m < month && m <= static_cast<int>(kMonthDays.size()); ++m) {
    days += kMonthDays[static_cast<std::size_t>(m - 1)];
    if (m == 2 && IsLeapYear(year)) ++days;
  }
  return static_cast<int>(days + day - 1);
}

// Contract: prints its name to standard output.
void DelOutTimeLogFile() {
  std::puts("DelOutTimeLogFile");
  const std::tm today = LocalDate();
  const auto path = InOwnDirectory<kPurgedPathSize>("Log/Gwq_Volkarn");
  const Directory directory(opendir(path.data()), &closedir);
  if (!directory) {
    // Contract: writes nothing at load, because the log is switched on after the purge.
    ICC_DPrintLogToFile("open dir error...");
    return;
  }
  PurgeDirectory(directory.get(), path.data(),
                 GetAbsDays(today.tm_year + 1900, today.tm_mon + 1, today.tm_mday));
}

// Contract: the size is ignored; `path` needs room for five bytes.
void GetTempPath(int /*size*/, char* path) {
  if (path != nullptr) std::strcpy(path, "/tmp");
}
