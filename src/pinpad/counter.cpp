#include <gwq/pinpad/counter.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <gwq/codec/packet.h>
#include <gwq/codec/text_forms.h>
#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include "codec/internal/secret.h"
#include "frame/internal/arguments.h"
#include "frame/internal/ask.h"
#include "frame/internal/operation.h"

namespace gwq {
namespace {

constexpr int kCommandTimeoutMs = 3000;
constexpr std::string_view kAcknowledged = "\xAA";
constexpr std::string_view kEndEntry = "\x83";

using Text = CommandText<1024>;
// The letter and line end stand around a whole buffer of split form.
using KeyCommand = CommandText<1024 + 8>;
using Answer = AnswerText<1024>;

bool IsKeyIndex(int index) {
  return Within(index, 0, 15);
}

int EntryTimeoutMs(int seconds) {
  return WaitMs(seconds, 3000);
}

void DrainUsb(Line line) {
  if (line.port == 0) Drain(line);
}

int TellText(Line line, std::string_view text) {
  Text command;
  return Tell(line, command << text, kCommandTimeoutMs);
}

// What goes into a key command: indexes, then key bytes, each key ending before its first zero byte.
class KeyRecord {
 public:
  KeyRecord& Index(int index) {
    bytes_[size_++] = static_cast<unsigned char>(index);
    return *this;
  }

  KeyRecord& Key(const char* hex_text) {
    SecretArray<unsigned char, kSize> key;
    const std::size_t digits = std::min(std::strlen(hex_text), 2 * (kSize - 1));
    HexStrToAscii(hex_text, static_cast<int>(digits), key.data(), static_cast<int>(kSize - 1));
    const std::size_t length = std::strlen(reinterpret_cast<const char*>(key.data()));
    const std::size_t taken = std::min(length, kSize - size_);
    std::memcpy(bytes_.data() + size_, key.data(), taken);
    size_ += taken;
    return *this;
  }

  // In split form; a record of more than 512 bytes does not fit and is left out whole.
  void SplitInto(KeyCommand& command) const {
    SecretArray<char, kSize> split;
    const int length =
        HexAsc1Split(bytes_.data(), static_cast<int>(size_), split.data(), static_cast<int>(split.size()));
    command << std::string_view(split.data(), static_cast<std::size_t>(length));
  }

 private:
  static constexpr std::size_t kSize = 1024;
  SecretArray<unsigned char, kSize> bytes_;
  std::size_t size_ = 0;
};

// Sends a key command and awaits its one-byte acknowledgement.
int SendKeyCommand(Line line, KeyCommand& command) {
  Answer answer;
  const int result = Ask(line, command, answer, &EndOfCondition4, kCommandTimeoutMs);
  if (result != GWQ_OK) return result;
  return answer.text() == kAcknowledged ? GWQ_OK : GWQ_REFUSED;
}

int SendKeyRecord(Line line, std::string_view letter, const KeyRecord& record) {
  KeyCommand command;
  command << "\x1B" << letter;
  record.SplitInto(command);
  command << "\r\n";
  return SendKeyCommand(line, command);
}

// PIN entry on the pad; leaving the scope makes the pad leave entry mode, whatever the outcome.
class PinEntry {
 public:
  explicit PinEntry(Line line) : line_(line) {}
  ~PinEntry() { TellText(line_, kEndEntry); }
  PinEntry(const PinEntry&) = delete;
  PinEntry& operator=(const PinEntry&) = delete;

 private:
  Line line_;
};

int SetEntryTimeout(Line line, int seconds) {
  Text command;
  return Tell(line, command << "\x1B[1;" << seconds << "T", kCommandTimeoutMs);
}

// Copies the PIN without the CR that closes the answer; false when there is no room for it.
bool TakePin(const Answer& answer, char* pin, int capacity) {
  const std::string_view digits = answer.text().substr(0, std::max<std::size_t>(answer.text().size(), 1) - 1);
  if (capacity < static_cast<int>(digits.size())) return false;
  digits.copy(pin, digits.size());
  ICC_DPrintLogToFile("[GWQ_ReadPin] Pin=%.*s", static_cast<int>(digits.size()), digits.data());
  return true;
}

int EnterClearPin(Line line, int mode, int timeout_s, char* pin, int capacity) {
  Text command;
  command << (mode == 0 ? "\x82" : "\x81");
  int result = GWQ_OK;
  {
    const PinEntry entry(line);
    Answer answer;
    result = Ask(line, command, answer, &EndOfConditionD, EntryTimeoutMs(timeout_s));
    if (result == GWQ_OK && !TakePin(answer, pin, capacity)) return GWQ_TOO_SMALL;
  }
  ICC_DPrintLogToFile("[GWQ_ReadPin] nRet=%d", result);
  return result;
}

// The block's bytes as hexadecimal text. After an answer that is not the expected one the whole zeroed
// scratch buffer is converted, which callers rely on.
int TakePinBlock(const Answer& answer, char* pin_block) {
  SecretArray<char, 1024> scratch;
  int length = static_cast<int>(scratch.size());
  const auto bytes = answer.bytes();
  const int result = CheckAndGetResponseForTY(0x02, 0x03, bytes.data(), static_cast<int>(bytes.size()),
                                              reinterpret_cast<unsigned char*>(scratch.data()), &length);
  AsciiToHexStr(scratch.data(), length, pin_block, static_cast<int>(scratch.size()));
  return result;
}

bool PinBlockArgumentsHold(int digit1, int digit2, int timeout_s, const char* pin_block) {
  return Within(digit1, 0, 1) && Within(digit2, 0, 3) && IsCustomerTimeout(timeout_s) && pin_block != nullptr;
}

// `command` is the letter of the PIN-block command with its digits and fields.
int ReadPinBlock(Line line, int timeout_s, Text& command, char* pin_block) {
  ICC_DPrintLogToFile("port:%d timeout:%d", line.port, EntryTimeoutMs(timeout_s));
  DrainUsb(line);
  if (const int result = SetEntryTimeout(line, timeout_s); result != GWQ_OK) return result;
  const PinEntry entry(line);
  Answer answer;
  const int result = Ask(line, command, answer, &EndOfRead2, EntryTimeoutMs(timeout_s));
  return result == GWQ_OK ? TakePinBlock(answer, pin_block) : result;
}

// At most 8 characters behind the first "|", which counts as standing first when there is none.
std::string_view BuildDateIn(std::string_view data) {
  const std::size_t bar = data.find('|');
  const std::size_t start = (bar == std::string_view::npos ? 0 : bar) + 1;
  return start > data.size() ? std::string_view("") : data.substr(start, 8);
}

}  // namespace
}  // namespace gwq

int GWQ_SetPinLen(int iPortNo, int iBaudRate, int iPinLen) {
  ICC_DPrintLogToFile("[GWQ_SetPinLen] iPortNo=%d iBaudRate=%d iPinLen=%d", iPortNo, iBaudRate, iPinLen);
  if (!gwq::Within(iPinLen, 1, 14)) return GWQ_BAD_ARGUMENT;
  const gwq::Line line{iPortNo, iBaudRate};
  gwq::DrainUsb(line);
  gwq::Text command;
  return Tell(line, command << "\x1B[1;" << iPinLen << "L", gwq::kCommandTimeoutMs);
}

int GWQ_UpdateMKey(int iPortNo, int iBaudRate, int MKeyIndex, const char* NewMKey, const char* OldMKey) {
  ICC_DPrintLogToFile("[GWQ_UpdateMKey] MKeyIndex=%d NewMKey=%s OldMKey=%s", MKeyIndex, NewMKey, OldMKey);
  if (!gwq::IsKeyIndex(MKeyIndex) || NewMKey == nullptr || OldMKey == nullptr) return GWQ_BAD_ARGUMENT;
  const gwq::Line line{iPortNo, iBaudRate};
  gwq::DrainUsb(line);
  gwq::KeyRecord record;
  return gwq::SendKeyRecord(line, "M", record.Index(MKeyIndex).Key(OldMKey).Key(NewMKey));
}

int GWQ_ResetKey(int iPortNo, int iBaudRate) {
  const gwq::Line line{iPortNo, iBaudRate};
  gwq::DrainUsb(line);
  gwq::KeyCommand command;
  return gwq::SendKeyCommand(line, command << "\x1BR\r\n");
}

int GWQ_DownLoadWKey(int iPortNo, int iBaudRate, int MKeyIndex, int WKeyIndex, const char* WKey) {
  if (!gwq::IsKeyIndex(MKeyIndex) || !gwq::IsKeyIndex(WKeyIndex) || WKey == nullptr) return GWQ_BAD_ARGUMENT;
  const gwq::Line line{iPortNo, iBaudRate};
  gwq::DrainUsb(line);
  gwq::KeyRecord record;
  return gwq::SendKeyRecord(line, "S", record.Index(MKeyIndex).Index(WKeyIndex).Key(WKey));
}

int GWQ_ActiveWKey(int iPortNo, int iBaudRate, int MKeyIndex, int WKeyIndex) {
  if (!gwq::IsKeyIndex(MKeyIndex) || !gwq::IsKeyIndex(WKeyIndex)) return GWQ_BAD_ARGUMENT;
  const gwq::Line line{iPortNo, iBaudRate};
  gwq::DrainUsb(line);
  gwq::KeyRecord record;
  return gwq::SendKeyRecord(line, "A", record.Index(MKeyIndex).Index(WKeyIndex));
}

int GWQ_ReadPin(int iPortNo, int iBaudRate, int iMode, int iTimeout, char* pPin, int iPinBufLen) {
  const gwq::Operation operation;
  ICC_DPrintLogToFile("[GWQ_ReadPin]");
  if (!gwq::Within(iMode, 0, 1) || !gwq::IsCustomerTimeout(iTimeout)) return GWQ_BAD_ARGUMENT;
  if (!gwq::Within(iPinBufLen, 0, 2048) || pPin == nullptr) return GWQ_BAD_ARGUMENT;
  const gwq::Line line{iPortNo, iBaudRate};
  gwq::DrainUsb(line);
  if (const int result = gwq::TellText(line, "\x1B[1;0X"); result != GWQ_OK) return result;
  if (const int result = gwq::SetEntryTimeout(line, iTimeout); result != GWQ_OK) return result;
  return gwq::EnterClearPin(line, iMode, iTimeout, pPin, iPinBufLen);
}

int GWQ_ReadPinDES(int iPortNo, int iBaudRate, int iCmdDigit1, int iCmdDigit2, int iTimeout,
                   char* pPinBlock) {
  const gwq::Operation operation;
  ICC_DPrintLogToFile("[GWQ_ReadPinDES]");
  if (!gwq::PinBlockArgumentsHold(iCmdDigit1, iCmdDigit2, iTimeout, pPinBlock)) return GWQ_BAD_ARGUMENT;
  gwq::Text command;
  command << "\033F" << iCmdDigit1 << iCmdDigit2 << "\r\n";
  return gwq::ReadPinBlock({iPortNo, iBaudRate}, iTimeout, command, pPinBlock);
}

int GWQ_ReadPinAnsi(int iPortNo, int iBaudRate, int iCmdDigit1, int iCmdDigit2, int iTimeout,
                    const char* szAccount, char* pPinBlock) {
  const gwq::Operation operation;
  ICC_DPrintLogToFile("GWQ_ReadPinAnsi");
  if (!gwq::PinBlockArgumentsHold(iCmdDigit1, iCmdDigit2, iTimeout, pPinBlock)) return GWQ_BAD_ARGUMENT;
  if (szAccount == nullptr) return GWQ_BAD_ARGUMENT;
  gwq::Text command;
  command << "\033I" << iCmdDigit1 << iCmdDigit2 << (*szAccount == '\0' ? "000000" : szAccount) << "\r\n";
  return gwq::ReadPinBlock({iPortNo, iBaudRate}, iTimeout, command, pPinBlock);
}

int GWQ_GetVerBuildDate(int /*iPort*/, char /*cReserved*/, int iBaudRate, char* szDate) {
  constexpr int kVersionTimeoutMs = 2000;
  ICC_DPrintLogToFile("-- GWQ_GetVerBuildDate --");
  if (szDate == nullptr) return GWQ_BAD_ARGUMENT;
  gwq::CommandText<256> command;
  gwq::AnswerText<4096> answer;
  const int result =
      Ask({0, iBaudRate}, command << "\x1B[0GETVERSION", answer, &EndOfRead2, kVersionTimeoutMs);
  if (result != GWQ_OK) return result;
  if (answer.text() == gwq::kRefusalAnswer) return GWQ_REFUSED;
  const std::string_view data = gwq::WithoutMarks(answer.text());
  ICC_DPrintLogToFile("szData=%.*s", static_cast<int>(data.size()), data.data());
  const std::string_view date = gwq::BuildDateIn(data);
  date.copy(szDate, date.size());
  ICC_DPrintLogToFile("VerBuildDate=%.*s", static_cast<int>(date.size()), date.data());
  return GWQ_OK;
}

int CheckUtf8version() {
  constexpr int kLastDateWithoutUtf8 = 20231113;
  char date[32] = {};
  if (GWQ_GetVerBuildDate(0, '\0', 0, date) != GWQ_OK) return 0;
  const int number = std::atoi(date);
  ICC_DPrintLogToFile("nVerDate:%d", number);
  return number > kLastDateWithoutUtf8 ? 1 : 0;
}
