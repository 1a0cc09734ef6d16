// SPDX-License-Identifier: MIT
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

using CounterCommand = Command<1024>;
// A whole buffer in split form, and the letter and line end around it.
using KeyCommand = Command<1024 + 8>;
using CounterAnswer = AnswerText<1024>;

bool IsKeyIndex(int index) {
  return Within(index, 0, 15);
}

int EntryTimeoutMs(int seconds) {
  return WaitMs(seconds, 3000);
}

// ESC [ 1 ; value letter
int SetEntry(Endpoint endpoint, int value, std::string_view letter) {
  CounterCommand command(Channel::kPinPad, ";");
  return Tell(endpoint, command.Text(value, letter), kCommandTimeoutMs);
}

// The data of a key command: indexes, then key bytes.
// Contract: a key ends before its first zero byte; the rest of it does not reach the pad.
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

  // Contract: a record of more than 512 bytes does not fit in split form and is left out; the
  // command is sent without it.
  void AppendSplitTo(KeyCommand& command) const {
    SecretArray<char, kSize> split;
    const int length =
        HexAsc1Split(bytes_.data(), static_cast<int>(size_), split.data(), static_cast<int>(split.size()));
    command.Text(std::string_view(split.data(), static_cast<std::size_t>(length)));
  }

 private:
  static constexpr std::size_t kSize = 1024;
  SecretArray<unsigned char, kSize> bytes_;
  std::size_t size_ = 0;
};

// Sends a key command and reads its one-byte acknowledgement.
int SendKeyCommand(Endpoint endpoint, KeyCommand& command) {
  CounterAnswer answer;
  const int result = Ask(endpoint, command, answer, &EndOfCondition4, kCommandTimeoutMs);
  if (result != GWQ_OK) return result;
  // Contract: the acknowledgement is exactly one byte; "\xAA\r\n" is GWQ_REFUSED.
  return answer.text() == kAcknowledged ? GWQ_OK : GWQ_REFUSED;
}

int SendKeyRecord(Endpoint endpoint, std::string_view letter, const KeyRecord& record) {
  KeyCommand command(letter);
  record.AppendSplitTo(command);
  return SendKeyCommand(endpoint, command.Text(kLineEnd));
}

// PIN entry on the pad; the destructor ends the entry mode on every path.
class PinEntry {
 public:
  explicit PinEntry(Endpoint endpoint) : endpoint_(endpoint) {}
  ~PinEntry() {
    SecretText<4> end;
    Tell(endpoint_, end << kEndEntry, kCommandTimeoutMs);
  }
  PinEntry(const PinEntry&) = delete;
  PinEntry& operator=(const PinEntry&) = delete;

 private:
  Endpoint endpoint_;
};

// Copies the PIN without the CR at the end of the answer. False when `capacity` is too small.
// Contract: the log gets the PIN in clear, and the output no terminator.
bool CopyPin(const CounterAnswer& answer, char* pin, int capacity) {
  const std::string_view digits = answer.text().substr(0, std::max<std::size_t>(answer.text().size(), 1) - 1);
  if (capacity < static_cast<int>(digits.size())) return false;
  digits.copy(pin, digits.size());
  ICC_DPrintLogToFile("[GWQ_ReadPin] Pin=%.*s", static_cast<int>(digits.size()), digits.data());
  return true;
}

int EnterClearPin(Endpoint endpoint, int mode, int timeout_s, char* pin, int capacity) {
  SecretText<4> command;
  command << (mode == 0 ? "\x82" : "\x81");
  int result = GWQ_OK;
  {
    const PinEntry entry(endpoint);
    CounterAnswer answer;
    result = Ask(endpoint, command, answer, &EndOfConditionD, EntryTimeoutMs(timeout_s));
    if (result == GWQ_OK && !CopyPin(answer, pin, capacity)) return GWQ_TOO_SMALL;
  }
  ICC_DPrintLogToFile("[GWQ_ReadPin] nRet=%d", result);
  return result;
}

// Writes the block as hexadecimal text.
// Contract: after an answer that is not the expected one the output gets 1024 characters "0",
// because the whole scratch buffer is converted.
int ConvertPinBlock(const CounterAnswer& answer, char* pin_block) {
  SecretArray<char, 1024> scratch;
  int length = static_cast<int>(scratch.size());
  const auto bytes = answer.bytes();
  const int result = CheckAndGetResponseForTY(0x02, 0x03, bytes.data(), static_cast<int>(bytes.size()),
                                              reinterpret_cast<unsigned char*>(scratch.data()), &length);
  AsciiToHexStr(scratch.data(), length, pin_block, static_cast<int>(scratch.size()));
  return result;
}

bool IsValidPinBlockCall(int digit1, int digit2, int timeout_s, const char* pin_block) {
  return Within(digit1, 0, 1) && Within(digit2, 0, 3) && IsCustomerTimeout(timeout_s) && pin_block != nullptr;
}

// Contract: the pad's entry mode is ended on every path once the entry command has been sent, but
// not after a failure before that.
int ReadPinBlock(Endpoint endpoint, int timeout_s, CounterCommand& command, char* pin_block) {
  ICC_DPrintLogToFile("port:%d timeout:%d", endpoint.port, EntryTimeoutMs(timeout_s));
  DrainUsb(endpoint);
  if (const int result = SetEntry(endpoint, timeout_s, "T"); result != GWQ_OK) return result;
  const PinEntry entry(endpoint);
  CounterAnswer answer;
  const int result = Ask(endpoint, command, answer, &EndOfRead2, EntryTimeoutMs(timeout_s));
  return result == GWQ_OK ? ConvertPinBlock(answer, pin_block) : result;
}

// At most 8 characters after the first "|".
// Contract: without "|" the date begins at the second character.
std::string_view BuildDateIn(std::string_view data) {
  const std::size_t bar = data.find('|');
  const std::size_t start = (bar == std::string_view::npos ? 0 : bar) + 1;
  return start > data.size() ? std::string_view("") : data.substr(start, 8);
}

int ReadBuildDate(int baud, char* out) {
  constexpr int kTimeoutMs = 2000;
  ICC_DPrintLogToFile("-- GWQ_GetVerBuildDate --");
  if (out == nullptr) return GWQ_BAD_ARGUMENT;
  Command<256> command(Channel::kDevice, "GETVERSION");
  AnswerText<4096> answer;
  const int result = Ask({0, baud}, command, answer, &EndOfRead2, kTimeoutMs);
  if (result != GWQ_OK) return result;
  if (answer.text() == kRefusalAnswer) return GWQ_REFUSED;
  const std::string_view data = WithoutMarks(answer.text());
  ICC_DPrintLogToFile("szData=%.*s", static_cast<int>(data.size()), data.data());
  const std::string_view date = BuildDateIn(data);
  // Contract: no terminator is written; the caller passes a zeroed buffer.
  date.copy(out, date.size());
  ICC_DPrintLogToFile("VerBuildDate=%.*s", static_cast<int>(date.size()), date.data());
  return GWQ_OK;
}

}  // namespace

int GWQ_SetPinLen(int iPortNo, int iBaudRate, int iPinLen) {
  ICC_DPrintLogToFile("[GWQ_SetPinLen] iPortNo=%d iBaudRate=%d iPinLen=%d", iPortNo, iBaudRate, iPinLen);
  if (!Within(iPinLen, 1, 14)) return GWQ_BAD_ARGUMENT;
  const Endpoint endpoint{iPortNo, iBaudRate};
  DrainUsb(endpoint);
  return SetEntry(endpoint, iPinLen, "L");
}

// Contract: the log gets both keys in clear.
int GWQ_UpdateMKey(int iPortNo, int iBaudRate, int MKeyIndex, const char* NewMKey, const char* OldMKey) {
  ICC_DPrintLogToFile("[GWQ_UpdateMKey] MKeyIndex=%d NewMKey=%s OldMKey=%s", MKeyIndex, NewMKey, OldMKey);
  if (!IsKeyIndex(MKeyIndex) || NewMKey == nullptr || OldMKey == nullptr) return GWQ_BAD_ARGUMENT;
  const Endpoint endpoint{iPortNo, iBaudRate};
  DrainUsb(endpoint);
  KeyRecord record;
  return SendKeyRecord(endpoint, "M", record.Index(MKeyIndex).Key(OldMKey).Key(NewMKey));
}

int GWQ_ResetKey(int iPortNo, int iBaudRate) {
  const Endpoint endpoint{iPortNo, iBaudRate};
  DrainUsb(endpoint);
  KeyCommand command("R");
  return SendKeyCommand(endpoint, command.Text(kLineEnd));
}

int GWQ_DownLoadWKey(int iPortNo, int iBaudRate, int MKeyIndex, int WKeyIndex, const char* WKey) {
  if (!IsKeyIndex(MKeyIndex) || !IsKeyIndex(WKeyIndex) || WKey == nullptr) return GWQ_BAD_ARGUMENT;
  const Endpoint endpoint{iPortNo, iBaudRate};
  DrainUsb(endpoint);
  KeyRecord record;
  return SendKeyRecord(endpoint, "S", record.Index(MKeyIndex).Index(WKeyIndex).Key(WKey));
}

int GWQ_ActiveWKey(int iPortNo, int iBaudRate, int MKeyIndex, int WKeyIndex) {
  if (!IsKeyIndex(MKeyIndex) || !IsKeyIndex(WKeyIndex)) return GWQ_BAD_ARGUMENT;
  const Endpoint endpoint{iPortNo, iBaudRate};
  DrainUsb(endpoint);
  KeyRecord record;
  return SendKeyRecord(endpoint, "A", record.Index(MKeyIndex).Index(WKeyIndex));
}

int GWQ_ReadPin(int iPortNo, int iBaudRate, int iMode, int iTimeout, char* pPin, int iPinBufLen) {
  const Operation operation;
  ICC_DPrintLogToFile("[GWQ_ReadPin]");
  if (!Within(iMode, 0, 1) || !IsCustomerTimeout(iTimeout)) return GWQ_BAD_ARGUMENT;
  if (!Within(iPinBufLen, 0, 2048) || pPin == nullptr) return GWQ_BAD_ARGUMENT;
  const Endpoint endpoint{iPortNo, iBaudRate};
  DrainUsb(endpoint);
  if (const int result = SetEntry(endpoint, 0, "X"); result != GWQ_OK) return result;
  if (const int result = SetEntry(endpoint, iTimeout, "T"); result != GWQ_OK) return result;
  return EnterClearPin(endpoint, iMode, iTimeout, pPin, iPinBufLen);
}

int GWQ_ReadPinDES(int iPortNo, int iBaudRate, int iCmdDigit1, int iCmdDigit2, int iTimeout,
                   char* pPinBlock) {
  const Operation operation;
  ICC_DPrintLogToFile("[GWQ_ReadPinDES]");
  if (!IsValidPinBlockCall(iCmdDigit1, iCmdDigit2, iTimeout, pPinBlock)) return GWQ_BAD_ARGUMENT;
  CounterCommand command("F");
  return ReadPinBlock({iPortNo, iBaudRate}, iTimeout, command.Text(iCmdDigit1, iCmdDigit2, kLineEnd),
                      pPinBlock);
}

int GWQ_ReadPinAnsi(int iPortNo, int iBaudRate, int iCmdDigit1, int iCmdDigit2, int iTimeout,
                    const char* szAccount, char* pPinBlock) {
  const Operation operation;
  ICC_DPrintLogToFile("GWQ_ReadPinAnsi");
  if (!IsValidPinBlockCall(iCmdDigit1, iCmdDigit2, iTimeout, pPinBlock)) return GWQ_BAD_ARGUMENT;
  if (szAccount == nullptr) return GWQ_BAD_ARGUMENT;
  CounterCommand command("I");
  // Contract: an empty account is sent as "000000"; any other text is sent unchecked.
  command.Text(iCmdDigit1, iCmdDigit2, *szAccount == '\0' ? "000000" : szAccount, kLineEnd);
  return ReadPinBlock({iPortNo, iBaudRate}, iTimeout, command, pPinBlock);
}

// Contract: USB, without a drain; the port argument is ignored.
int GWQ_GetVerBuildDate(int /*iPort*/, char /*cReserved*/, int iBaudRate, char* szDate) {
  return ReadBuildDate(iBaudRate, szDate);
}

}  // namespace gwq

using namespace gwq;

int CheckUtf8version() {
  constexpr int kLastDateWithoutUtf8 = 20231113;
  char date[32] = {};
  if (ReadBuildDate(0, date) != GWQ_OK) return 0;
  const int number = std::atoi(date);
  ICC_DPrintLogToFile("nVerDate:%d", number);
  return number > kLastDateWithoutUtf8 ? 1 : 0;
}
