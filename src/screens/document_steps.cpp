#include "screens/document_steps.h"

#include <array>
#include <cstring>

#include "codec/encodings.h"
#include "diag/log.h"
#include "files/push.h"
#include "frame/port.h"

namespace gwq {

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

int PushDocuments(const char* paths, std::span<char> list) {
  std::array<char, 4096> places{};
  const int result = pushFileToZ11(paths, places.data());
  u2g(places.data(), static_cast<int>(std::strlen(places.data())), list.data(),
      static_cast<int>(list.size() - 1));
  ICC_DPrintLogToFile("szFileNameListGBK=%s", list.data());
  ICC_DPrintLogToFile("pushFileToZ11 nRet = %d", result);
  if (result != GWQ_OK) ICC_DPrintLogToFile("pushFileToZ11  nRet= %d", result);
  return result;
}

}  // namespace gwq
