#include "screens/internal/document_steps.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <gwq/codec/encodings.h>
#include <gwq/diag/log.h>
#include <gwq/files/push.h>
#include <gwq/frame/port.h>
#include "files/internal/path_list.h"

namespace gwq {
namespace {

constexpr std::size_t kListSize = 1024;    // as the push copies the caller's list
constexpr std::size_t kPlacesSize = 4096;  // as it tells the terminal's
constexpr std::string_view kPlace = "/tmp/";

}  // namespace

void LogIfAny(const char* text) {
  if (text != nullptr) ICC_DPrintLogToFile("%s", text);
}

int Begin(Line line, bool arguments_hold, const char* complaint) {
  if (!arguments_hold) {
    LogIfAny(complaint);
    return GWQ_BAD_ARGUMENT;
  }
  return Drain(line) == GWQ_NOT_OPENED ? GWQ_NOT_OPENED : GWQ_OK;
}

bool DocumentsFit(const char* paths, std::size_t room) {
  std::array<char, kListSize> names{};
  const std::string_view list(paths);
  if (list.size() >= names.size()) return false;
  list.copy(names.data(), list.size());
  CommandText<kPlacesSize> places;
  PathList rest(names.data());
  while (const char* path = rest.Next()) {
    places << (places.size() == 0 ? "" : "|") << kPlace << BaseName(path);
  }
  SecretArray<char, kPlacesSize> converted;
  return u2g(places.data(), places.size(), converted.data(), static_cast<int>(std::min(room, kPlacesSize))) ==
         0;
}

int PushDocuments(const char* paths, std::span<char> list) {
  std::array<char, kPlacesSize> places{};
  const int result = pushFileToZ11(paths, places.data());
  u2g(places.data(), static_cast<int>(std::strlen(places.data())), list.data(),
      static_cast<int>(list.size() - 1));
  ICC_DPrintLogToFile("szFileNameListGBK=%s", list.data());
  ICC_DPrintLogToFile("pushFileToZ11 nRet = %d", result);
  if (result != GWQ_OK) ICC_DPrintLogToFile("pushFileToZ11  nRet= %d", result);
  return result;
}

}  // namespace gwq
