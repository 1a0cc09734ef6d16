// SPDX-License-Identifier: MIT
#include <gwq/pinpad/settings.h>

#include <cstring>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "codec/internal/split_form.h"
#include "frame/internal/arguments.h"
#include "pinpad/internal/device_id.h"
#include "pinpad/internal/pad_command.h"

namespace gwq {
namespace {

constexpr int kDeviceIdTimeoutMs = 3000;
constexpr std::size_t kMaxDeviceIdSize = 20;

int ExchangeDeviceId(int baud, char* device_id) {
  PadAnswer answer;
  const int result = AskPad({0, baud}, PadBody(pad::kReadDeviceId), answer);
  ICC_DPrintLogToFile("PN_ReadDeviceId  iRet=%d", result);
  if (result != GWQ_OK) return result;
  ICC_DPrintLogToFile("szRecv =%.*s", static_cast<int>(answer.raw().size()), answer.raw().data());
  if (answer.status() != GWQ_OK) {
    ICC_DPrintLogToFile("UnPackData ERROR iRet=%d", answer.status());
    return GWQ_REFUSED;
  }
  answer.CopyTo(device_id);
  ICC_DPrintLogToFile("UnPackData  szRes=%s", device_id);
  return GWQ_OK;
}

int SendDeviceId(int baud, const char* device_id) {
  Command<256> command(Channel::kDevice, "BJPOSTSETSN");
  AnswerText<1024> answer;
  const int result = Ask({0, baud}, command.Fields('|', device_id), answer, &EndOfRead2, kDeviceIdTimeoutMs);
  ICC_DPrintLogToFile("PN_WriteDeviceId  iRet=%d", result);
  if (result != GWQ_OK) return result == GWQ_NOT_OPENED ? GWQ_NOT_OPENED : GWQ_REFUSED;
  if (answer.text().starts_with(kDoneAnswer)) return GWQ_OK;
  ICC_DPrintLogToFile("PN_WriteDeviceId  iRet=%d", GWQ_REFUSED);
  return GWQ_REFUSED;
}

// Contract: every fill other than "F" is a zero byte, which ends the body before it; the pad gets
// the command without an argument.
int FillByte(const char* fill) {
  return fill != nullptr && *fill == 'F' ? 0xFF : 0x00;
}

// Logs the result of one of several settings. Returns whether it is success.
bool LogSetting(const char* log, int result) {
  ICC_DPrintLogToFile(log, result);
  return result == GWQ_OK;
}

}  // namespace

int ReadDeviceId(int baud, char* device_id) {
  ICC_DPrintLogToFile("PN_ReadDeviceId ");
  if (device_id == nullptr) return GWQ_BAD_ARGUMENT;
  if (const int status = DrainFirst({0, baud}); status != GWQ_OK) return status;
  return ExchangeDeviceId(baud, device_id);
}

int PN_GetEnType(int iPortNo, const char* /*szReserved*/, int iBaudRate, int* piEnType) {
  if (piEnType == nullptr) return GWQ_BAD_ARGUMENT;
  PadAnswer answer;
  const int result = AskPad({iPortNo, iBaudRate}, PadBody(pad::kGetType), answer);
  if (result == GWQ_OK && !answer.data().empty()) *piEnType = answer.data()[0];
  return result;
}

int PN_SetEnType(int iPortNo, const char* /*szReserved*/, int iBaudRate, int iEnType) {
  return SetPad({iPortNo, iBaudRate}, pad::kSetType, iEnType);
}

int PN_GetPinLen(int iPortNo, const char* /*szReserved*/, int iBaudRate, int* piPinLen) {
  if (piPinLen == nullptr) return GWQ_BAD_ARGUMENT;
  PadAnswer answer;
  if (const int result = AskPad({iPortNo, iBaudRate}, PadBody(pad::kGetLength), answer); result != GWQ_OK) {
    return result;
  }
  // Contract: no data is GWQ_REFUSED here and success in PN_GetEnType, whose output is not changed.
  if (answer.data().empty()) return GWQ_REFUSED;
  *piPinLen = answer.data()[0];
  return GWQ_OK;
}

// Contract: only the low four bits are sent; 17 sets a length of 1.
int PN_SetPinLen(int iPortNo, const char* /*szReserved*/, int iBaudRate, int iPinLen) {
  return SetPad({iPortNo, iBaudRate}, pad::kSetLength, iPinLen & 0x0F);
}

int PN_SetEndRule(int iPortNo, const char* /*szReserved*/, int iBaudRate, int iEndRule) {
  return SetPad({iPortNo, iBaudRate}, pad::kSetEndRule, iEndRule);
}

int PN_SetFillType(int iPortNo, const char* /*szReserved*/, int iBaudRate, const char* szFill) {
  return SetPad({iPortNo, iBaudRate}, pad::kSetFill, FillByte(szFill));
}

int PN_SetPinMoe(int iPortNo, const char* /*szReserved*/, int iBaudRate, int iPinMode) {
  return SetPad({iPortNo, iBaudRate}, pad::kSetMode, iPinMode);
}

int PN_SetSoundType(int iPortNo, const char* /*szReserved*/, int iBaudRate, int iSoundType) {
  return SetPad({iPortNo, iBaudRate}, pad::kSetSound, iSoundType);
}

int PN_SetAccount(int iPortNo, const char* /*szReserved*/, int iBaudRate, const unsigned char* pAccount,
                  int iAccountLen) {
  if (pAccount == nullptr && iAccountLen > 0) return GWQ_BAD_ARGUMENT;
  PadBody body(pad::kSetAccount);
  body.Byte(iAccountLen).Text(AsText(BytesOf(pAccount, iAccountLen)));
  PadAnswer answer;
  return AskPad({iPortNo, iBaudRate}, body, answer);
}

// Contract: USB, also in the two calls below; their port argument is ignored.
int PN_ReadDeviceId(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate, char* szDeviceId) {
  return ReadDeviceId(iBaudRate, szDeviceId);
}

int PN_WriteDeviceId(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate, const char* szDeviceId) {
  ICC_DPrintLogToFile("PN_WriteDeviceId  DeviceId=%s", szDeviceId);
  if (!IsSet(szDeviceId) || std::strlen(szDeviceId) > kMaxDeviceIdSize) {
    ICC_DPrintLogToFile("PN_WriteDeviceId  ERR_PARAMS");
    return GWQ_BAD_ARGUMENT;
  }
  if (const int status = DrainFirst({0, iBaudRate}, DrainLog::kLogged); status != GWQ_OK) return status;
  return SendDeviceId(iBaudRate, szDeviceId);
}

int PN_SetPinPadParameter(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate, int iAlgoType,
                          int iPinLen, int iPinRule, const char* szFill) {
  ICC_DPrintLogToFile("PN_SetPinPadParameter iAlgoType=%d,iPinLen=%d,iPinRule=%d", iAlgoType, iPinLen,
                      iPinRule);
  if (const int status = DrainFirst({0, iBaudRate}, DrainLog::kLogged); status != GWQ_OK) return status;
  int result = SetPad({0, iBaudRate}, pad::kSetType, iAlgoType);
  if (!LogSetting("PN_SetEnType iRet=%d", result)) return result;
  result = SetPad({0, iBaudRate}, pad::kSetLength, iPinLen & 0x0F);
  if (!LogSetting("PN_SetPinLen iRet=%d", result)) return result;
  result = SetPad({0, iBaudRate}, pad::kSetEndRule, iPinRule);
  if (!LogSetting("PN_SetEndRule iRet=%d", result)) return result;
  result = SetPad({0, iBaudRate}, pad::kSetFill, FillByte(szFill));
  ICC_DPrintLogToFile("PN_SetFillType iRet=%d", result);
  ICC_DPrintLogToFile("PN_SetPinPadParameter iRet=%d", result);
  return result;
}

}  // namespace gwq
