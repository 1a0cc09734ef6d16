#include "screens/document_steps.h"

#include <array>
#include <cstring>

#include "codec/encodings.h"
#include "diag/log.h"
#include "files/push.h"
#include "frame/port.h"

namespace gwq {

bool Given(const char* text) {
  return text != nullptr && *text != '\0';
}

bool IsScreenTimeout(int seconds) {
  return seconds >= 1 && seconds <= 999;
}

int WaitMs(int seconds) {
  constexpr int kMarginMs = 3000;
  return seconds * 1000 + kMarginMs;
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

void CloseScreen(int baud) {
  CommandText<8> command;
  Tell({0, baud}, command << "\x1B[2C", kSendTimeoutMs);
}

}  // namespace gwq
