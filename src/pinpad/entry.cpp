// SPDX-License-Identifier: MIT
#include <gwq/pinpad/entry.h>

#include <array>
#include <cstring>
#include <span>
#include <string_view>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "frame/internal/arguments.h"
#include "frame/internal/operation.h"
#include "pinpad/internal/pad_command.h"

namespace gwq {
namespace {

constexpr std::size_t kShownTextRoom = 40960;

// The pad refuses an entry by a first byte instead of a frame.
// Contract: a frame begins with STX, which is 2 as well; every refusal in a frame is
// GWQ_NO_ANSWER, as if the customer had entered nothing.
int EntryRefusal(const PadAnswer& answer) {
  if (answer.raw().empty()) return answer.status();
  switch (answer.raw().front()) {
    case 1:
      return GWQ_PIN_REFUSAL_1;
    case 2:
      return GWQ_NO_ANSWER;
    case 3:
      return GWQ_PIN_REFUSAL_3;
    default:
      return GWQ_REFUSED;
  }
}

// Reads the PIN block that the customer enters within `seconds`; logs success with `done_log`.
int EnterPin(Endpoint endpoint, const PadBody& body, int seconds, const char* done_log, char* block,
             int* length) {
  if (block == nullptr || length == nullptr) return GWQ_BAD_ARGUMENT;
  PadAnswer answer;
  const int result = AskPad(endpoint, body, answer, seconds);
  if (result != GWQ_OK) return result;
  if (answer.status() != GWQ_OK) return EntryRefusal(answer);
  // Logged before the copy, which leaves parts of the block in registers: a function with variable
  // arguments saves these on the stack.
  ICC_DPrintLogToFile(done_log, GWQ_OK);
  *length = static_cast<int>(answer.data().size());
  answer.CopyTo(block);
  return GWQ_OK;
}

int EnterPlainPin(Endpoint endpoint, int timeout_s, int* length, char* block) {
  ICC_DPrintLogToFile("PN_GetPin");
  PadBody body(pad::kEnterPin);
  return EnterPin(endpoint, body.Byte(timeout_s), timeout_s, "PN_GetPin iRet=%d", block, length);
}

// As EnterPlainPin, with a text on the screen.
int EnterPinShowing(int baud, int timeout_s, const char* shown, int* length, char* block) {
  ICC_DPrintLogToFile("GetPinblockShowString");
  PadBody body(pad::kEnterPinShowing, kShownTextRoom);
  body.Byte(timeout_s).Text(OrEmpty(shown));
  return EnterPin({0, baud}, body, timeout_s, "GetPinblockShowString iRet=%d", block, length);
}

bool AllDigits(std::string_view text) {
  return text.find_first_not_of("0123456789") == std::string_view::npos;
}

// The twelve digits before the check digit, or all of fewer, right-aligned after zero bytes.
// Contract: the command ends before these, so that an account of fewer than twelve digits reaches
// the pad as an empty one.
class AccountField {
 public:
  static constexpr int kSize = 12;

  explicit AccountField(std::string_view digits) {
    if (digits.size() > kSize) digits = digits.substr(digits.size() - 1 - kSize, kSize);
    digits.copy(bytes_.data() + (kSize - digits.size()), digits.size());
  }
  [[nodiscard]] std::string_view text() const { return {bytes_.data(), bytes_.size()}; }

 private:
  SecretArray<char, kSize> bytes_;
};

// PN_GetPinBlock and PN_GetPinBlockShowString.
// Contract: they log a failure differently, and return some failures as different codes.
enum class Style { kPlain, kShowing };

// The arguments of one call, which is a list of steps; the first step that fails ends it.
struct PinBlockCall {
  Style style;
  Endpoint endpoint;
  int timeout_s;
  int algorithm;
  int sound_mode;
  int pin_type;
  const char* account;
  char* factor;
  char* block;
  int* length;
  const char* shown;

  [[nodiscard]] bool Shows() const { return style == Style::kShowing; }
};
using Step = int (*)(const PinBlockCall& call);

constexpr int kBoundToAccount = 1;
constexpr int kMaxSoundMode = 2;

int LogReturn(int code) {
  ICC_DPrintLogToFile("[out]Return:%d", code);
  return code;
}

// Logs a setting that failed with `code`. Returns `result`.
int LogFailedSetting(const PinBlockCall& call, const char* setting, int code, int result) {
  if (call.Shows()) {
    LogReturn(code);
  } else {
    ICC_DPrintLogToFile("[%s] ERROR", setting);
  }
  return result;
}

bool PinLengthFits(int type, int length) {
  if (type == 6) return length == 6;
  return (type == kBoundToAccount || type == 5) && Within(length, 4, 14);
}

int CheckTypeAndLength(const PinBlockCall& call) {
  if (PinLengthFits(call.pin_type, *call.length)) return GWQ_OK;
  return call.Shows() ? LogReturn(GWQ_BAD_ARGUMENT) : GWQ_BAD_ARGUMENT;
}

// Contract: only a mode above 2 is an error; a negative one goes to the pad.
int CheckSoundMode(const PinBlockCall& call) {
  if (call.sound_mode <= kMaxSoundMode) return GWQ_OK;
  if (!call.Shows()) return GWQ_BAD_ARGUMENT;
  ICC_DPrintLogToFile("PN_SetSoundType err times > 2");
  return LogReturn(GWQ_BAD_ARGUMENT);
}

int DrainStep(const PinBlockCall& call) {
  return DrainFirst(call.endpoint, DrainLog::kLogged);
}

int CompareType(const PinBlockCall& call) {
  PadAnswer answer;
  const int result = AskPad(call.endpoint, PadBody(pad::kGetType), answer);
  ICC_DPrintLogToFile("[PN_GetEnType] iRet=%d", result);
  if (result != GWQ_OK) return GWQ_REFUSED;
  const int type = answer.data().empty() ? -1 : answer.data()[0];
  if (type == call.algorithm) return GWQ_OK;
  ICC_DPrintLogToFile("[PN_GetEnType] ERROR");
  return GWQ_BAD_ARGUMENT;
}

// Contract: when the pad's length cannot be read, the call goes on with the caller's.
int CompareLength(const PinBlockCall& call) {
  PadAnswer answer;
  int result = AskPad(call.endpoint, PadBody(pad::kGetLength), answer);
  if (result == GWQ_OK && answer.data().empty()) result = GWQ_REFUSED;
  ICC_DPrintLogToFile("[PN_GetPinLen] iRet=%d", result);
  if (result != GWQ_OK || answer.data()[0] == *call.length) return GWQ_OK;
  return LogFailedSetting(call, "PN_GetPinLen", GWQ_BAD_ARGUMENT, GWQ_BAD_ARGUMENT);
}

int SetMode(const PinBlockCall& call) {
  const int result = SetPad(call.endpoint, pad::kSetMode, call.pin_type);
  ICC_DPrintLogToFile("[PN_SetPinMoe] iRet=%d", result);
  if (result == GWQ_OK) return GWQ_OK;
  return LogFailedSetting(call, "PN_SetPinMoe", result, call.Shows() ? GWQ_BAD_ARGUMENT : GWQ_REFUSED);
}

int SetSound(const PinBlockCall& call) {
  const int result = SetPad(call.endpoint, pad::kSetSound, call.sound_mode + 1);
  ICC_DPrintLogToFile("[PN_SetSoundType] iRet=%d", result);
  return result == GWQ_OK ? GWQ_OK : LogFailedSetting(call, "PN_SetSoundType", result, GWQ_REFUSED);
}

int CheckAccount(const PinBlockCall& call) {
  if (call.pin_type != kBoundToAccount) return GWQ_OK;
  if (call.account == nullptr) {
    ICC_DPrintLogToFile(call.Shows() ? "szAccountNo == NULL" : "ERR_ACCOUNT !!!");
    return GWQ_BAD_ACCOUNT;
  }
  if (AllDigits(call.account)) return GWQ_OK;
  if (call.Shows()) ICC_DPrintLogToFile("Account Format Error !!!");
  return GWQ_BAD_ACCOUNT;
}

int SetAccount(const PinBlockCall& call) {
  if (call.pin_type != kBoundToAccount) return GWQ_OK;
  PadBody body(pad::kSetAccount);
  body.Byte(AccountField::kSize).Text(AccountField(call.account).text());
  PadAnswer answer;
  const int result = AskPad(call.endpoint, body, answer);
  ICC_DPrintLogToFile("[PN_SetAccount] iRet=%d", result);
  return result == GWQ_OK ? GWQ_OK : LogFailedSetting(call, "PN_SetAccount", result, GWQ_REFUSED);
}

int FetchFactor(const PinBlockCall& call) {
  constexpr std::size_t kMaxEmptyFactor = 2;
  PadAnswer answer;
  const int result = AskPad(call.endpoint, PadBody(pad::kReadFactor), answer);
  if (result == GWQ_OK) answer.CopyTo(call.factor);
  if (result == GWQ_OK && std::strlen(call.factor) > kMaxEmptyFactor) return GWQ_OK;
  ICC_DPrintLogToFile("[PN_GetPinPadFactor] ERROR");
  return GWQ_REFUSED;
}

int ReadBlock(const PinBlockCall& call) {
  const int result = EnterPlainPin(call.endpoint, call.timeout_s, call.length, call.block);
  ICC_DPrintLogToFile("PN_GetPinBlock iRet=%d", result);
  return result;
}

int ReadBlockShowing(const PinBlockCall& call) {
  return LogReturn(EnterPinShowing(call.endpoint.baud, call.timeout_s, call.shown, call.length, call.block));
}

// Contract: the showing call does not drain, and checks the sound mode after three exchanges.
constexpr auto kPlainSteps =
    std::to_array<Step>({CheckTypeAndLength, CheckSoundMode, DrainStep, CompareType, CompareLength, SetMode,
                         SetSound, CheckAccount, SetAccount, FetchFactor, ReadBlock});
constexpr auto kShowingSteps =
    std::to_array<Step>({CheckTypeAndLength, CompareType, CompareLength, SetMode, CheckSoundMode, SetSound,
                         CheckAccount, SetAccount, FetchFactor, ReadBlockShowing});

int RunSteps(std::span<const Step> steps, const PinBlockCall& call) {
  for (const Step step : steps) {
    if (const int result = step(call); result != GWQ_OK) return result;
  }
  return GWQ_OK;
}

bool HasOutputs(const PinBlockCall& call) {
  return call.factor != nullptr && call.block != nullptr && call.length != nullptr;
}

void LogArguments(const PinBlockCall& call) {
  ICC_DPrintLogToFile("iBaud:%d", call.endpoint.baud);
  ICC_DPrintLogToFile("nTimeout:%d", call.timeout_s);
  ICC_DPrintLogToFile("iAlgoType:%d", call.algorithm);
  ICC_DPrintLogToFile("nModex:%d", call.sound_mode);
  ICC_DPrintLogToFile("iPinType:%d", call.pin_type);
  ICC_DPrintLogToFile("szAccountNo:%s", call.account);
  ICC_DPrintLogToFile("szShowString:%s", call.shown);
}

}  // namespace

int PN_GetPin(int iPortNo, const char* /*szReserved*/, int iBaudRate, int iTimeout, int* piPinLen,
              char* szPinBlock) {
  const Operation operation;
  return EnterPlainPin({iPortNo, iBaudRate}, iTimeout, piPinLen, szPinBlock);
}

// Contract: USB, also in the two calls below; their port argument is ignored.
int GetPinblockShowString(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate,
                          unsigned char* pPinBlock, int* pnPinLen, int nTimeout, const char* szShowString) {
  const Operation operation;
  return EnterPinShowing(iBaudRate, nTimeout, szShowString, pnPinLen, reinterpret_cast<char*>(pPinBlock));
}

int PN_GetPinBlock(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate, int iTimeout, int iAlgoType,
                   int nModex, int iPinType, const char* szAccountNo, char* szPinPadFactor, void* pPinBlock,
                   int* pnPinLen) {
  const Operation operation;
  const PinBlockCall call{.style = Style::kPlain,
                          .endpoint = {0, iBaudRate},
                          .timeout_s = iTimeout,
                          .algorithm = iAlgoType,
                          .sound_mode = nModex,
                          .pin_type = iPinType,
                          .account = szAccountNo,
                          .factor = szPinPadFactor,
                          .block = static_cast<char*>(pPinBlock),
                          .length = pnPinLen,
                          .shown = nullptr};
  ICC_DPrintLogToFile("PN_GetPinBlock");
  if (!HasOutputs(call)) return GWQ_BAD_ARGUMENT;
  ICC_DPrintLogToFile("iAlgoType=%d,nModex=%d,iPinType=%d,szAccountNo=%s,pnPinLen=%d", iAlgoType, nModex,
                      iPinType, szAccountNo, *pnPinLen);
  return RunSteps(kPlainSteps, call);
}

int PN_GetPinBlockShowString(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate, int nTimeout,
                             int iAlgoType, int nModex, int iPinType, const char* szAccountNo,
                             char* szPinPadFactor, void* pPinBlock, int* pnPinLen, const char* szShowString) {
  const Operation operation;
  const PinBlockCall call{.style = Style::kShowing,
                          .endpoint = {0, iBaudRate},
                          .timeout_s = nTimeout,
                          .algorithm = iAlgoType,
                          .sound_mode = nModex,
                          .pin_type = iPinType,
                          .account = szAccountNo,
                          .factor = szPinPadFactor,
                          .block = static_cast<char*>(pPinBlock),
                          .length = pnPinLen,
                          .shown = szShowString};
  ICC_DPrintLogToFile("[PN_GetPinBlockShowString]");
  LogArguments(call);
  if (!HasOutputs(call)) return LogReturn(GWQ_BAD_ARGUMENT);
  return RunSteps(kShowingSteps, call);
}

}  // namespace gwq
