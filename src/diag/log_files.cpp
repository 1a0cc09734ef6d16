#include "diag/internal/log_files.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include <gwq/diag/log.h>
#include "diag/internal/clock_text.h"

namespace gwq {
namespace {

constexpr std::size_t kPathSize = 256;
constexpr std::size_t kPurgedPathSize = 260;
constexpr int kDaysKept = 15;
constexpr mode_t kDirectoryMode = 0777;
constexpr mode_t kFileMode = 0600;  // keys and PINs stand in it

template <std::size_t N>
using PathOf = std::array<char, N>;
using Path = PathOf<kPathSize>;

std::string_view FileToldByLoader() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&GetModuleCurPath), &info) == 0) return {};
  return info.dli_fname == nullptr ? std::string_view{} : info.dli_fname;
}

// The library's file as the loader tells it, relative, and where that was when the library was loaded.
struct RelativeFile {
  std::array<char, kPathSize> told;
  std::array<char, 2 * kPathSize> absolute;
};
RelativeFile g_relative{};

std::string_view OwnFile() {
  const std::string_view told = FileToldByLoader();
  return !told.empty() && told == g_relative.told.data() ? g_relative.absolute.data() : told;
}

// The current directory stands in when the loader reports no directory.
std::string_view OwnDirectory() {
  const std::string_view file = OwnFile();
  const std::size_t slash = file.rfind('/');
  return slash == std::string_view::npos ? "./" : file.substr(0, slash + 1);
}

// Empty when it does not fit: a path that is cut would name something else.
template <std::size_t N = kPathSize>
PathOf<N> InOwnDirectory(std::string_view name) {
  const std::string_view directory = OwnDirectory();
  PathOf<N> path{};
  if (directory.size() + name.size() < path.size()) {
    directory.copy(path.data(), directory.size());
    name.copy(path.data() + directory.size(), name.size());
  }
  return path;
}

void CopyText(const Path& path, char* out) {
  std::strcpy(out, path.data());
}

Path TodaysPath() {
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

// The file is this user's alone: one that others made is not written to, one that others may read is closed to them.
bool IsOwn(int fd) {
  struct stat file {};
  if (fstat(fd, &file) != 0) return false;
  if (!S_ISREG(file.st_mode) || file.st_uid != geteuid()) {
    errno = EACCES;
    return false;
  }
  return (file.st_mode & 0777U & ~kFileMode) == 0 || fchmod(fd, kFileMode) == 0;
}

int OpenToAppend(const Path& path) {
  const int fd =
      open(path.data(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kFileMode);
  if (fd < 0 || IsOwn(fd)) return fd;
  const int error = errno;
  close(fd);
  errno = error;
  return -1;
}

struct Date {
  int year = 0;
  int month = 0;
  int day = 0;

  [[nodiscard]] bool Incomplete() const { return year == 0 || month == 0 || day == 0; }
  [[nodiscard]] int Days() const { return GetAbsDays(year, month, day); }
};

// Fields that the name does not give keep their values: a file whose name is no log's is judged by the
// date of the one read before it.
void ReadDateFromName(const char* name, Date& date) {
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
  Date date;
  while (const dirent* entry = readdir(directory)) {
    if (entry->d_type != DT_REG) continue;
    ReadDateFromName(entry->d_name, date);
    if (date.Incomplete() || today - date.Days() > kDaysKept) RemoveIn(path, entry->d_name);
  }
}

}  // namespace

void RememberOwnPath() {
  const std::string_view told = FileToldByLoader();
  std::array<char, kPathSize> current{};
  if (told.empty() || told.front() == '/' || told.size() >= g_relative.told.size()) return;
  if (getcwd(current.data(), current.size()) == nullptr) return;
  told.copy(g_relative.told.data(), told.size());
  std::snprintf(g_relative.absolute.data(), g_relative.absolute.size(), "%s/%s", current.data(),
                g_relative.told.data());
}

int OpenTodaysLog() {
  const Path path = TodaysPath();
  const int fd = OpenToAppend(path);
  if (fd >= 0 || errno != ENOENT) return fd;
  MakeDirectories();
  return OpenToAppend(path);
}

}  // namespace gwq

void GetModuleCurPath(char* path) {
  if (path != nullptr) gwq::CopyText(gwq::InOwnDirectory(""), path);
}

int GetFullPath(const char* name, char* path, int /*size*/) {
  if (name == nullptr || path == nullptr) return 0;
  const gwq::Path directory = gwq::InOwnDirectory("");
  std::strcpy(path, directory.data());
  if (directory[0] != '\0') std::strcat(path, name);
  return static_cast<int>(std::strlen(path));
}

char* pGetLogPath() {
  static gwq::Path s_szLogPath{};
  gwq::MakeDirectories();
  s_szLogPath = gwq::TodaysPath();
  return s_szLogPath.data();
}

int GetAbsDays(int year, int month, int day) {
  static constexpr std::array kMonthDays{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const long long n = static_cast<long long>(year) - 1;
  long long days = 365 * n + n / 4 - n / 100 + n / 400;
  for (int m = 1; m < month && m <= static_cast<int>(kMonthDays.size()); ++m) {
    days += kMonthDays[static_cast<std::size_t>(m - 1)];
    if (m == 2 && gwq::IsLeapYear(year)) ++days;
  }
  return static_cast<int>(days + day - 1);
}

void DelOutTimeLogFile() {
  std::puts("DelOutTimeLogFile");
  const std::tm today = gwq::LocalDate();
  const auto path = gwq::InOwnDirectory<gwq::kPurgedPathSize>("Log/Gwq_Volkarn");
  const gwq::Directory directory(opendir(path.data()), &closedir);
  if (!directory) {
    ICC_DPrintLogToFile("open dir error...");
    return;
  }
  gwq::PurgeDirectory(directory.get(), path.data(),
                      GetAbsDays(today.tm_year + 1900, today.tm_mon + 1, today.tm_mday));
}

void GetTempPath(int /*size*/, char* path) {
  if (path != nullptr) std::strcpy(path, "/tmp");
}
