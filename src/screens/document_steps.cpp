// SPDX-License-Identifier: MIT
#include "screens/internal/document_steps.h"

#include <algorithm>
#include <array>

#include <gwq/codec/encodings.h>
#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include "files/internal/path_list.h"
#include "files/internal/transfer.h"

namespace gwq {
namespace {

constexpr std::size_t kListSize = 1024;  // of PushList's copy of the caller's list
constexpr std::string_view kDirectory = "/tmp/";

}  // namespace

void LogIfSet(const char* text) {
  if (text != nullptr) ICC_DPrintLogToFile("%s", text);
}

int CheckAndDrain(Endpoint endpoint, bool valid, const char* complaint) {
  if (!valid) {
    LogIfSet(complaint);
    return GWQ_BAD_ARGUMENT;
  }
  return DrainFirst(endpoint);
}

bool DocumentsFit(const char* paths, std::size_t room) {
  std::array<char, kListSize> names{};
  const std::string_view list(paths);
  if (list.size() >= names.size()) return false;
  list.copy(names.data(), list.size());
  TerminalPaths on_terminal;
  PathList rest(names.data());
  while (const char* path = rest.Next()) {
    on_terminal << (on_terminal.size() == 0 ? "" : "|") << kDirectory << BaseName(path);
  }
  SecretArray<char, 4096> converted;
  return u2g(on_terminal.data(), on_terminal.size(), converted.data(),
             static_cast<int>(std::min(room, converted.size()))) == 0;
}

int PushDocuments(const char* paths, std::span<char> list) {
  TerminalPaths on_terminal;
  const int result = PushList(paths, on_terminal);
  const int size = result == GWQ_OK ? on_terminal.size() : 0;
  u2g(on_terminal.data(), size, list.data(), static_cast<int>(list.size() - 1));
  ICC_DPrintLogToFile("szFileNameListGBK=%s", list.data());
  ICC_DPrintLogToFile("pushFileToZ11 nRet = %d", result);
  if (result != GWQ_OK) ICC_DPrintLogToFile("pushFileToZ11  nRet= %d", result);
  return result;
}

}  // namespace gwq
