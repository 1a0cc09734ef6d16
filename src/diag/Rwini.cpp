// SPDX-License-Identifier: MIT
// Preconditions are checked in every build: glibc declares __assert_fail only without NDEBUG.
#undef NDEBUG

#include <gwq/diag/Rwini.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include "diag/internal/profile.h"

namespace {

constexpr std::size_t kLineSize = 100;
constexpr std::size_t kMaxSectionLength = 29;
constexpr std::size_t kMaxKeyLength = 31;
constexpr std::string_view kWhiteSpace = " \t\r\n\v\f";
// Contract: "|" and "^" end a key, too.
constexpr std::string_view kKeyEnds = "=|^ \t";

using IniFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// assert() would report this function and its line, not the caller's.
void Require(bool condition, const char* text, int line = __builtin_LINE(),
             const char* function = __builtin_FUNCTION()) {
  if (!condition) __assert_fail(text, "Rwini.cpp", static_cast<unsigned>(line), function);
}

std::string_view WithoutLeadingBlanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
  return text;
}

void CutTrailingBlanks(char* text) {
  const std::size_t last = std::string_view(text).find_last_not_of(kWhiteSpace);
  text[last == std::string_view::npos ? 0 : last + 1] = '\0';
}

void CopyText(char* out, std::string_view text) {
  text.copy(out, text.size());
  out[text.size()] = '\0';
}

// Contract: text after the header is ignored.
bool IsSectionHeader(std::string_view line, std::string_view section) {
  if (!line.starts_with('[')) return false;
  line.remove_prefix(1);
  if (!line.starts_with(section)) return false;
  line.remove_prefix(section.size());
  return line.starts_with(']');
}

// Contract: only "#" begins a comment, and only inside the section.
bool IsKeyLine(std::string_view line, std::string_view key) {
  if (line.starts_with('#') || line.find('=') == std::string_view::npos) return false;
  return line.substr(0, line.find_first_of(kKeyEnds)) == key;
}

// Contract: an empty value leaves `out` as it is, and one that is all blanks is copied untrimmed.
void CopyValue(std::string_view line, char* out) {
  std::string_view value = line;
  value.remove_prefix(line.find('=') + 1);
  value = value.substr(0, value.find('\n'));
  if (value.empty()) return;
  char raw[kLineSize];
  char trimmed[kLineSize];
  CopyText(raw, value);
  CopyText(out, *a_trim(trimmed, raw) != '\0' ? trimmed : raw);
}

// The next line without its leading blanks.
// Contract: a physical line of more than 99 bytes is read in pieces, each of which counts as a
// line.
bool NextLine(std::FILE* file, char (&buffer)[kLineSize], std::string_view& line) {
  if (std::fgets(buffer, kLineSize, file) == nullptr) return false;
  line = WithoutLeadingBlanks(buffer);
  return true;
}

bool FindSection(std::FILE* file, std::string_view section) {
  char buffer[kLineSize];
  std::string_view line;
  while (NextLine(file, buffer, line)) {
    if (IsSectionHeader(line, section)) return true;
  }
  return false;
}

bool FindKey(std::FILE* file, std::string_view key, char* value) {
  char buffer[kLineSize];
  std::string_view line;
  while (NextLine(file, buffer, line)) {
    if (line.starts_with('[')) return false;
    if (!IsKeyLine(line, key)) continue;
    CopyValue(line, value);
    return true;
  }
  return false;
}

int ReadValue(std::FILE* file, const char* section, const char* key, char* value) {
  if (std::strlen(section) > kMaxSectionLength || std::strlen(key) > kMaxKeyLength) return -1;
  return FindSection(file, section) && FindKey(file, key, value) ? 0 : -1;
}

}  // namespace

namespace gwq {

int ReadProfileQuietly(const char* file, const char* section, const char* key, char* value) {
  const IniFile ini(std::fopen(file, "r"), &std::fclose);
  return ini ? ReadValue(ini.get(), section, key, value) : -1;
}

}  // namespace gwq

char* l_trim(char* szOutput, const char* szInput) {
  Require(szInput != nullptr, "szInput != NULL");
  Require(szOutput != nullptr, "szOutput != NULL");
  Require(szOutput != szInput, "szOutput != szInput");
  CopyText(szOutput, WithoutLeadingBlanks(szInput));
  return szOutput;
}

char* r_trim(char* szOutput, const char* szInput) {
  Require(szInput != nullptr, "szInput != NULL");
  Require(szOutput != nullptr, "szOutput != NULL");
  Require(szOutput != szInput, "szOutput != szInput");
  CopyText(szOutput, szInput);
  CutTrailingBlanks(szOutput);
  return szOutput;
}

// Contract: equal buffers are refused by l_trim, whose name the message then shows.
char* a_trim(char* szOutput, const char* szInput) {
  Require(szInput != nullptr, "szInput != NULL");
  Require(szOutput != nullptr, "szOutput != NULL");
  l_trim(szOutput, szInput);
  CutTrailingBlanks(szOutput);
  return szOutput;
}

// Contract: a file that cannot be opened is reported on standard output.
int GetProfileString(const char* file, const char* section, const char* key, char* value) {
  if (file == nullptr || section == nullptr || key == nullptr || value == nullptr) return -1;
  const IniFile ini(std::fopen(file, "r"), &std::fclose);
  if (!ini) {
    std::printf("openfile [%s] error [%s]\n", file, std::strerror(errno));  // NOLINT(concurrency-mt-unsafe)
    return -1;
  }
  return ReadValue(ini.get(), section, key, value);
}
