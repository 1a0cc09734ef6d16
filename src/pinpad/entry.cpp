#include <gwq/pinpad/entry.h>

#include <array>
#include <cstring>
#include <span>
#include <string_view>

#include <gwq/diag/log.h>
#include <gwq/pinpad/keys.h>
#include <gwq/pinpad/settings.h>
#include <gwq/status_codes.h>
#include "frame/internal/arguments.h"
#include "frame/internal/operation.h"
#include "pinpad/internal/framed.h"

namespace gwq {
namespace {

constexpr int kEnterPin = 0x3005;
constexpr int kEnterPinShowing = 0x4030;
constexpr std::size_t kShownTextRoom = 40960;
constexpr int kEntryMarginMs = 2000;

struct EntryLogs {
  const char* exchanged;
  const char* done;
};
constexpr EntryLogs kEntryLogs{.exchanged = "TransProcByEnd iRet=%d", .done = "PN_GetPin iRet=%d"};
constexpr EntryLogs kShowingLogs{.exchanged = "TransProc iRet=%d", .done = "GetPinblockShowString iRet=%d"};

// The pad refuses an entry by a first byte that is no frame's; for a frame that first byte is STX, 2.
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

int EnterPin(Line line, const PadBody& body, int seconds, const EntryLogs& logs, char* block, int* length) {
  if (block == nullptr || length == nullptr) return GWQ_BAD_ARGUMENT;
  PadFrame frame(body);
  if (!frame) return GWQ_BAD_ARGUMENT;
  if (line.port == 0) Drain(line);
  PadAnswer answer;
  const int result = AskPad(line, frame, WaitMs(seconds, kEntryMarginMs), answer);
  ICC_DPrintLogToFile(logs.exchanged, result);
  if (result != GWQ_OK) return result;
  ICC_DPrintLogToFile("UnPackData iRet=%d", answer.status());
  if (answer.status() != GWQ_OK) return EntryRefusal(answer);
  // Logged before the block is copied: registers that copying leaves filled would be saved by a function with
  // variable arguments.
  ICC_DPrintLogToFile(logs.done, GWQ_OK);
  *length = static_cast<int>(answer.data().size());
  CopyOut(answer.data(), block);
  return GWQ_OK;
}

bool AllDigits(std::string_view text) {
  return text.find_first_not_of("0123456789") == std::string_view::npos;
}

// The twelve digits before the check digit, or all of them right-aligned behind zero bytes, at the first of
// which the command then ends.
class AccountField {
 public:
  static constexpr int kSize = 12;

  explicit AccountField(std::string_view digits) {
    if (digits.size() > kSize) digits = digits.substr(digits.size() - 1 - kSize, kSize);
    digits.copy(bytes_.data() + (kSize - digits.size()), digits.size());
  }
  unsigned char* data() { return reinterpret_cast<unsigned char*>(bytes_.data()); }

 private:
  SecretArray<char, kSize> bytes_;
};

// The two calls differ in how they tell of a failure, and in what some failures are to the caller.
enum class Style { kPlain, kShowing };

// One call, from the checks to the PIN block, as a row of steps of which the first that fails ends it.
struct PinBlockCall {
  Style style;
  Line line;
  const char* reserved;
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
constexpr int kHighestSoundMode = 2;

int LoggedReturn(int code) {
  ICC_DPrintLogToFile("[out]Return:%d", code);
  return code;
}

// A setting failed with `code`, which is `result` to the caller.
int SettingFailed(const PinBlockCall& call, const char* setting, int code, int result) {
  if (call.Shows()) {
    LoggedReturn(code);
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
  return call.Shows() ? LoggedReturn(GWQ_BAD_ARGUMENT) : GWQ_BAD_ARGUMENT;
}

int CheckSoundMode(const PinBlockCall& call) {
  if (call.sound_mode <= kHighestSoundMode) return GWQ_OK;
  if (!call.Shows()) return GWQ_BAD_ARGUMENT;
  ICC_DPrintLogToFile("PN_SetSoundType err times > 2");
  return LoggedReturn(GWQ_BAD_ARGUMENT);
}

int DrainFirst(const PinBlockCall& call) {
  return DrainLogged(call.line.baud) == GWQ_NOT_OPENED ? GWQ_NOT_OPENED : GWQ_OK;
}

int CompareType(const PinBlockCall& call) {
  int type = -1;
  const int result = PN_GetEnType(0, call.reserved, call.line.baud, &type);
  ICC_DPrintLogToFile("[PN_GetEnType] iRet=%d", result);
  if (result != GWQ_OK) return GWQ_REFUSED;
  if (type == call.algorithm) return GWQ_OK;
  ICC_DPrintLogToFile("[PN_GetEnType] ERROR");
  return GWQ_BAD_ARGUMENT;
}

// A pad that does not tell its length is taken at the caller's word.
int CompareLength(const PinBlockCall& call) {
  int length = 0;
  const int result = PN_GetPinLen(0, call.reserved, call.line.baud, &length);
  ICC_DPrintLogToFile("[PN_GetPinLen] iRet=%d", result);
  if (result != GWQ_OK || length == *call.length) return GWQ_OK;
  return SettingFailed(call, "PN_GetPinLen", GWQ_BAD_ARGUMENT, GWQ_BAD_ARGUMENT);
}

int SetMode(const PinBlockCall& call) {
  const int result = PN_SetPinMoe(0, call.reserved, call.line.baud, call.pin_type);
  ICC_DPrintLogToFile("[PN_SetPinMoe] iRet=%d", result);
  if (result == GWQ_OK) return GWQ_OK;
  return SettingFailed(call, "PN_SetPinMoe", result, call.Shows() ? GWQ_BAD_ARGUMENT : GWQ_REFUSED);
}

int SetSound(const PinBlockCall& call) {
  const int result = PN_SetSoundType(0, call.reserved, call.line.baud, call.sound_mode + 1);
  ICC_DPrintLogToFile("[PN_SetSoundType] iRet=%d", result);
  return result == GWQ_OK ? GWQ_OK : SettingFailed(call, "PN_SetSoundType", result, GWQ_REFUSED);
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
  AccountField field(call.account);
  const int result = PN_SetAccount(0, call.reserved, call.line.baud, field.data(), AccountField::kSize);
  ICC_DPrintLogToFile("[PN_SetAccount] iRet=%d", result);
  return result == GWQ_OK ? GWQ_OK : SettingFailed(call, "PN_SetAccount", result, GWQ_REFUSED);
}

int ReadFactor(const PinBlockCall& call) {
  constexpr std::size_t kLongestEmptyFactor = 2;
  const int result = PN_GetPinPadFactor(0, call.reserved, call.line.baud, call.factor);
  if (result == GWQ_OK && std::strlen(call.factor) > kLongestEmptyFactor) return GWQ_OK;
  ICC_DPrintLogToFile("[PN_GetPinPadFactor] ERROR");
  return GWQ_REFUSED;
}

int ReadBlock(const PinBlockCall& call) {
  const int result = PN_GetPin(0, call.reserved, call.line.baud, call.timeout_s, call.length, call.block);
  ICC_DPrintLogToFile("PN_GetPinBlock iRet=%d", result);
  return result;
}

int ReadBlockShowing(const PinBlockCall& call) {
  return LoggedReturn(GetPinblockShowString(0, call.reserved, call.line.baud,
                                            reinterpret_cast<unsigned char*>(call.block), call.length,
                                            call.timeout_s, call.shown));
}

constexpr auto kPlainSteps =
    std::to_array<Step>({CheckTypeAndLength, CheckSoundMode, DrainFirst, CompareType, CompareLength, SetMode,
                         SetSound, CheckAccount, SetAccount, ReadFactor, ReadBlock});
constexpr auto kShowingSteps =
    std::to_array<Step>({CheckTypeAndLength, CompareType, CompareLength, SetMode, CheckSoundMode, SetSound,
                         CheckAccount, SetAccount, ReadFactor, ReadBlockShowing});

int Run(std::span<const Step> steps, const PinBlockCall& call) {
  for (const Step step : steps) {
    if (const int result = step(call); result != GWQ_OK) return result;
  }
  return GWQ_OK;
}

bool HasOutputs(const PinBlockCall& call) {
  return call.factor != nullptr && call.block != nullptr && call.length != nullptr;
}

void LogArguments(const PinBlockCall& call) {
  ICC_DPrintLogToFile("iBaud:%d", call.line.baud);
  ICC_DPrintLogToFile("nTimeout:%d", call.timeout_s);
  ICC_DPrintLogToFile("iAlgoType:%d", call.algorithm);
  ICC_DPrintLogToFile("nModex:%d", call.sound_mode);
  ICC_DPrintLogToFile("iPinType:%d", call.pin_type);
  ICC_DPrintLogToFile("szAccountNo:%s", call.account);
  ICC_DPrintLogToFile("szShowString:%s", call.shown);
}

}  // namespace
}  // namespace gwq

int PN_GetPin(int iPortNo, const char* /*szReserved*/, int iBaudRate, int iTimeout, int* piPinLen,
              char* szPinBlock) {
  const gwq::Operation operation;
  ICC_DPrintLogToFile("PN_GetPin");
  gwq::PadBody body(gwq::kEnterPin);
  return gwq::EnterPin({iPortNo, iBaudRate}, body << iTimeout, iTimeout, gwq::kEntryLogs, szPinBlock,
                       piPinLen);
}

int GetPinblockShowString(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate,
                          unsigned char* pPinBlock, int* pnPinLen, int nTimeout, const char* szShowString) {
  const gwq::Operation operation;
  ICC_DPrintLogToFile("GetPinblockShowString");
  gwq::PadBody body(gwq::kEnterPinShowing, gwq::kShownTextRoom);
  body << nTimeout << gwq::OrEmpty(szShowString);
  return gwq::EnterPin({0, iBaudRate}, body, nTimeout, gwq::kShowingLogs, reinterpret_cast<char*>(pPinBlock),
                       pnPinLen);
}

int PN_GetPinBlock(int /*iPortNo*/, const char* szReserved, int iBaudRate, int iTimeout, int iAlgoType,
                   int nModex, int iPinType, const char* szAccountNo, char* szPinPadFactor, void* pPinBlock,
                   int* pnPinLen) {
  const gwq::Operation operation;
  const gwq::PinBlockCall call{.style = gwq::Style::kPlain,
                               .line = {0, iBaudRate},
                               .reserved = szReserved,
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
  if (!gwq::HasOutputs(call)) return GWQ_BAD_ARGUMENT;
  ICC_DPrintLogToFile("iAlgoType=%d,nModex=%d,iPinType=%d,szAccountNo=%s,pnPinLen=%d", iAlgoType, nModex,
                      iPinType, szAccountNo, *pnPinLen);
  return gwq::Run(gwq::kPlainSteps, call);
}

int PN_GetPinBlockShowString(int /*iPortNo*/, const char* szReserved, int iBaudRate, int nTimeout,
                             int iAlgoType, int nModex, int iPinType, const char* szAccountNo,
                             char* szPinPadFactor, void* pPinBlock, int* pnPinLen, const char* szShowString) {
  const gwq::Operation operation;
  const gwq::PinBlockCall call{.style = gwq::Style::kShowing,
                               .line = {0, iBaudRate},
                               .reserved = szReserved,
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
  gwq::LogArguments(call);
  if (!gwq::HasOutputs(call)) return gwq::LoggedReturn(GWQ_BAD_ARGUMENT);
  return gwq::Run(gwq::kShowingSteps, call);
}
