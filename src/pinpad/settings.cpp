#include <gwq/pinpad/settings.h>

#include <cstring>
#include <string_view>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "frame/internal/arguments.h"
#include "pinpad/internal/framed.h"

namespace gwq {
namespace {

constexpr int kSettingTimeoutMs = 2000;
constexpr int kDeviceIdTimeoutMs = 3000;
constexpr std::size_t kLongestDeviceId = 20;

// What distinguishes one setting from another.
struct Setting {
  int command;
  bool drains_usb;
  bool passes_status;  // the pad's own status word goes to the caller, in place of -14
};

constexpr Setting kGetType{.command = 0x3033, .drains_usb = false, .passes_status = true};
constexpr Setting kSetType{.command = 0x3010, .drains_usb = false, .passes_status = true};
constexpr Setting kGetLength{.command = 0x3035, .drains_usb = true, .passes_status = false};
constexpr Setting kSetLength{.command = 0x3012, .drains_usb = true, .passes_status = false};
constexpr Setting kSetEndRule{.command = 0x3013, .drains_usb = true, .passes_status = false};
constexpr Setting kSetFill{.command = 0x3011, .drains_usb = true, .passes_status = false};
constexpr Setting kSetMode{.command = 0x3032, .drains_usb = false, .passes_status = false};
constexpr Setting kSetSound{.command = 0x3014, .drains_usb = false, .passes_status = false};
constexpr Setting kSetAccount{.command = 0x3016, .drains_usb = false, .passes_status = false};
constexpr int kReadDeviceId = 0x3018;

int AskSetting(Line line, const Setting& setting, const PadBody& body, PadAnswer& answer) {
  if (setting.drains_usb && line.port == 0) Drain(line);
  if (const int result = AskPad(line, body, kSettingTimeoutMs, answer); result != GWQ_OK) return result;
  return setting.passes_status ? answer.status() : RefusedUnlessDone(answer.status());
}

int Put(Line line, const Setting& setting, int value) {
  PadBody body(setting.command);
  PadAnswer answer;
  return AskSetting(line, setting, body << value, answer);
}

int Get(Line line, const Setting& setting, PadAnswer& answer) {
  return AskSetting(line, setting, PadBody(setting.command), answer);
}

int ReadDeviceId(int baud, char* device_id) {
  PadAnswer answer;
  const int result = AskPad({0, baud}, PadBody(kReadDeviceId), kDeviceIdTimeoutMs, answer);
  ICC_DPrintLogToFile("PN_ReadDeviceId  iRet=%d", result);
  if (result != GWQ_OK) return result;
  ICC_DPrintLogToFile("szRecv =%.*s", static_cast<int>(answer.raw().size()), answer.raw().data());
  if (answer.status() != GWQ_OK) {
    ICC_DPrintLogToFile("UnPackData ERROR iRet=%d", answer.status());
    return GWQ_REFUSED;
  }
  CopyOut(answer.data(), device_id);
  ICC_DPrintLogToFile("UnPackData  szRes=%s", device_id);
  return GWQ_OK;
}

bool IsDeviceId(const char* text) {
  return Given(text) && std::strlen(text) <= kLongestDeviceId;
}

int SendDeviceId(int baud, const char* device_id) {
  CommandText<256> command;
  AnswerText<1024> answer;
  command << "\x1B[0BJPOSTSETSN\x02" << device_id << "\x03";
  const int result = Ask({0, baud}, command, answer, &EndOfRead2, kDeviceIdTimeoutMs);
  ICC_DPrintLogToFile("PN_WriteDeviceId  iRet=%d", result);
  if (result != GWQ_OK) return result == GWQ_NOT_OPENED ? GWQ_NOT_OPENED : GWQ_REFUSED;
  if (answer.text().starts_with(kDoneAnswer)) return GWQ_OK;
  ICC_DPrintLogToFile("PN_WriteDeviceId  iRet=%d", GWQ_REFUSED);
  return GWQ_REFUSED;
}

// Logs what one of several settings in a row came to.
bool LoggedSuccess(const char* log, int result) {
  ICC_DPrintLogToFile(log, result);
  return result == GWQ_OK;
}

}  // namespace
}  // namespace gwq

int PN_GetEnType(int iPortNo, const char* /*szReserved*/, int iBaudRate, int* piEnType) {
  if (piEnType == nullptr) return GWQ_BAD_ARGUMENT;
  gwq::PadAnswer answer;
  const int result = gwq::Get({iPortNo, iBaudRate}, gwq::kGetType, answer);
  if (result == GWQ_OK && !answer.data().empty()) *piEnType = answer.data()[0];
  return result;
}

int PN_SetEnType(int iPortNo, const char* /*szReserved*/, int iBaudRate, int iEnType) {
  return gwq::Put({iPortNo, iBaudRate}, gwq::kSetType, iEnType);
}

int PN_GetPinLen(int iPortNo, const char* /*szReserved*/, int iBaudRate, int* piPinLen) {
  if (piPinLen == nullptr) return GWQ_BAD_ARGUMENT;
  gwq::PadAnswer answer;
  if (const int result = gwq::Get({iPortNo, iBaudRate}, gwq::kGetLength, answer); result != GWQ_OK) {
    return result;
  }
  if (answer.data().empty()) return GWQ_REFUSED;
  *piPinLen = answer.data()[0];
  return GWQ_OK;
}

int PN_SetPinLen(int iPortNo, const char* /*szReserved*/, int iBaudRate, int iPinLen) {
  return gwq::Put({iPortNo, iBaudRate}, gwq::kSetLength, iPinLen & 0x0F);
}

int PN_SetEndRule(int iPortNo, const char* /*szReserved*/, int iBaudRate, int iEndRule) {
  return gwq::Put({iPortNo, iBaudRate}, gwq::kSetEndRule, iEndRule);
}

int PN_SetFillType(int iPortNo, const char* /*szReserved*/, int iBaudRate, const char* szFill) {
  const bool fills_with_f = szFill != nullptr && *szFill == 'F';
  return gwq::Put({iPortNo, iBaudRate}, gwq::kSetFill, fills_with_f ? 0xFF : 0x00);
}

int PN_SetPinMoe(int iPortNo, const char* /*szReserved*/, int iBaudRate, int iPinMode) {
  return gwq::Put({iPortNo, iBaudRate}, gwq::kSetMode, iPinMode);
}

int PN_SetSoundType(int iPortNo, const char* /*szReserved*/, int iBaudRate, int iSoundType) {
  return gwq::Put({iPortNo, iBaudRate}, gwq::kSetSound, iSoundType);
}

int PN_SetAccount(int iPortNo, const char* /*szReserved*/, int iBaudRate, const unsigned char* pAccount,
                  int iAccountLen) {
  if (pAccount == nullptr && iAccountLen > 0) return GWQ_BAD_ARGUMENT;
  gwq::PadBody body(gwq::kSetAccount.command);
  body << iAccountLen;
  if (iAccountLen > 0) {
    body << std::string_view(reinterpret_cast<const char*>(pAccount), static_cast<std::size_t>(iAccountLen));
  }
  gwq::PadAnswer answer;
  return gwq::AskSetting({iPortNo, iBaudRate}, gwq::kSetAccount, body, answer);
}

int PN_ReadDeviceId(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate, char* szDeviceId) {
  ICC_DPrintLogToFile("PN_ReadDeviceId ");
  if (szDeviceId == nullptr) return GWQ_BAD_ARGUMENT;
  if (gwq::Drain({0, iBaudRate}) == GWQ_NOT_OPENED) return GWQ_NOT_OPENED;
  return gwq::ReadDeviceId(iBaudRate, szDeviceId);
}

int PN_WriteDeviceId(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate, const char* szDeviceId) {
  ICC_DPrintLogToFile("PN_WriteDeviceId  DeviceId=%s", szDeviceId);
  if (!gwq::IsDeviceId(szDeviceId)) {
    ICC_DPrintLogToFile("PN_WriteDeviceId  ERR_PARAMS");
    return GWQ_BAD_ARGUMENT;
  }
  if (gwq::DrainLogged(iBaudRate) == GWQ_NOT_OPENED) return GWQ_NOT_OPENED;
  return gwq::SendDeviceId(iBaudRate, szDeviceId);
}

int PN_SetPinPadParameter(int /*iPortNo*/, const char* szReserved, int iBaudRate, int iAlgoType, int iPinLen,
                          int iPinRule, const char* szFill) {
  ICC_DPrintLogToFile("PN_SetPinPadParameter iAlgoType=%d,iPinLen=%d,iPinRule=%d", iAlgoType, iPinLen,
                      iPinRule);
  if (gwq::DrainLogged(iBaudRate) == GWQ_NOT_OPENED) return GWQ_NOT_OPENED;
  int result = PN_SetEnType(0, szReserved, iBaudRate, iAlgoType);
  if (!gwq::LoggedSuccess("PN_SetEnType iRet=%d", result)) return result;
  result = PN_SetPinLen(0, szReserved, iBaudRate, iPinLen);
  if (!gwq::LoggedSuccess("PN_SetPinLen iRet=%d", result)) return result;
  result = PN_SetEndRule(0, szReserved, iBaudRate, iPinRule);
  if (!gwq::LoggedSuccess("PN_SetEndRule iRet=%d", result)) return result;
  result = PN_SetFillType(0, szReserved, iBaudRate, szFill);
  ICC_DPrintLogToFile("PN_SetFillType iRet=%d", result);
  ICC_DPrintLogToFile("PN_SetPinPadParameter iRet=%d", result);
  return result;
}
