#include "screens/internal/document_steps.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <gwq/codec/encodings.h>
#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include "files/internal/path_list.h"
#include "files/internal/transfer.h"

namespace gwq {
namespace {

constexpr std::size_t kListSize = 1024;  // as the push copies the caller's list
constexpr std::string_view kPlace = "/tmp/";

}  // namespace

void LogIfAny(const char* text) {
  if (text != nullptr) ICC_DPrintLogToFile("%s", text);
}

int Begin(Endpoint endpoint, bool arguments_hold, const char* complaint) {
  if (!arguments_hold) {
    LogIfAny(complaint);
    return GWQ_BAD_ARGUMENT;
  }
  return DrainFirst(endpoint);
}

bool DocumentsFit(const char* paths, std::size_t room) {
  std::array<char, kListSize> names{};
  const std::string_view list(paths);
  if (list.size() >= names.size()) return false;
  list.copy(names.data(), list.size());
  TerminalPaths places;
  PathList rest(names.data());
  while (const char* path = rest.Next()) {
    places << (places.size() == 0 ? "" : "|") << kPlace << BaseName(path);
  }
  SecretArray<char, 4096> converted;
  return u2g(places.data(), places.size(), converted.data(),
             static_cast<int>(std::min(room, converted.size()))) == 0;
}

int PushDocuments(const char* paths, std::span<char> list) {
  TerminalPaths places;
  const int result = PushList(paths, places);
  const int size = result == GWQ_OK ? places.size() : 0;
  u2g(places.data(), size, list.data(), static_cast<int>(list.size() - 1));
  ICC_DPrintLogToFile("szFileNameListGBK=%s", list.data());
  ICC_DPrintLogToFile("pushFileToZ11 nRet = %d", result);
  if (result != GWQ_OK) ICC_DPrintLogToFile("pushFileToZ11  nRet= %d", result);
  return result;
}

}  // namespace gwq
