// SPDX-License-Identifier: MIT
#include <gwq/pinpad/keys.h>

#include <algorithm>
#include <span>
#include <string_view>

#include <gwq/codec/text_forms.h>
#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "codec/internal/split_form.h"
#include "frame/internal/arguments.h"
#include "pinpad/internal/pad_command.h"

namespace gwq {
namespace {

constexpr std::size_t kMaxBodySize = 65535;  // the largest length of a frame

int ReadFactor(Endpoint endpoint, const PadCommand& command, char* factor) {
  PadAnswer answer;
  const int result = AskPad(endpoint, PadBody(command), answer);
  if (result == GWQ_OK) answer.CopyTo(factor);
  return result;
}

int CreateFactor(Endpoint endpoint, int type, char* factor) {
  if (type != 1) return ReadFactor(endpoint, pad::kCreateFactor2, factor);
  PadAnswer created;
  const int result = AskPad(endpoint, PadBody(pad::kCreateFactor1), created);
  return result == GWQ_OK ? ReadFactor(endpoint, pad::kReadFactor, factor) : result;
}

// Contract: every text that does not begin with "2" means type 1.
int WorkingKeyType(const char* text) {
  return text != nullptr && *text == '2' ? 2 : 1;
}

// Leaves out the exponent of an RSA key, its last three bytes.
std::span<const unsigned char> KeyBytes(int algorithm, std::span<const unsigned char> data) {
  constexpr std::size_t kExponentSize = 3;
  if (algorithm != 1) return data;
  return data.first(data.size() - std::min(data.size(), kExponentSize));
}

// An SM2 ciphertext as the host prepares it: the size of C2, then C1, C2 and C3 in fixed fields.
class Sm2Record {
 public:
  static constexpr std::size_t kSize = 234;
  static constexpr int kLengthByte = 0x70;

  explicit Sm2Record(std::span<const unsigned char> bytes) : bytes_(bytes) {}

  void AppendTo(PadBody& body) const {
    LogPart("c1:", C1());
    LogPart("c2:", C2());
    LogPart("c3:", C3());
    body.Text(AsText(C1())).Text(AsText(C2().first(SizeOfC2()))).Text(AsText(C3()));
  }

 private:
  static void LogPart(const char* label, std::span<const unsigned char> part) {
    ICC_DPrintDataHexToFile(label, part.data(), static_cast<int>(part.size()));
  }
  [[nodiscard]] std::size_t SizeOfC2() const {
    const std::size_t size = bytes_[0] + 256U * bytes_[1];
    return std::min(size, C2().size());
  }
  [[nodiscard]] std::span<const unsigned char> C1() const { return bytes_.subspan(2, 64); }
  [[nodiscard]] std::span<const unsigned char> C2() const { return bytes_.subspan(66, 136); }
  [[nodiscard]] std::span<const unsigned char> C3() const { return bytes_.subspan(202, 32); }

  std::span<const unsigned char> bytes_;
};

// Contract: the length byte of a key of 256 bytes is 1, and that of an SM2 record 0x70.
void AppendKey(std::span<const unsigned char> key, PadBody& body) {
  constexpr std::size_t kSizeSentAsOne = 256;
  if (key.size() == Sm2Record::kSize) {
    body.Byte(Sm2Record::kLengthByte);
    return Sm2Record(key).AppendTo(body);
  }
  body.Byte(key.size() == kSizeSentAsOne ? 1 : static_cast<int>(key.size())).Text(AsText(key));
}

struct WorkingKey {
  std::string_view enciphered;  // hexadecimal
  std::string_view factor;
  std::string_view verify_key;

  [[nodiscard]] std::size_t Room() const {
    constexpr std::size_t kCommandLengthAndEnd = 4;
    return kCommandLengthAndEnd + enciphered.size() / 2 + factor.size() + verify_key.size();
  }
};

// False without memory.
bool AppendWorkingKey(const WorkingKey& wk, PadBody& body) {
  SecretHeap<unsigned char> key(wk.enciphered.size() / 2);
  if (!key || !body) return false;
  AsciiToHex(wk.enciphered.data(), static_cast<int>(2 * key.size()), key.data());
  AppendKey({key.data(), key.size()}, body);
  body.Text(wk.factor).Text(wk.verify_key);
  return true;
}

// The pad confirms a key load with the command's own code as status word, and a result as data.
// Contract: a confirmation without a result is 3, and any other status word is returned as it is.
int ResultOfLoad(int command, const PadAnswer& answer) {
  constexpr int kConfirmedWithoutResult = 3;
  int result = answer.status();
  if (result == command && answer.data().empty()) result = kConfirmedWithoutResult;
  if (answer.status() == command && !answer.data().empty()) {
    result = answer.data()[0];
    ICC_DPrintLogToFile("UnPackData  szRes[0]=%d,", result);
    // Contract: these results become codes, and the log gets no line with the status.
    if (result == 1) return GWQ_BAD_ARGUMENT;
    if (result == 2 || result == 3) return GWQ_BAD_FRAME;
  }
  ICC_DPrintLogToFile("PN_DownloadPinPadWK iRet=%d", result);
  return result;
}

}  // namespace

int PN_GetPinPadFactor(int iPortNo, const char* /*szReserved*/, int iBaudRate, char* szPinPadFactor) {
  if (szPinPadFactor == nullptr) return GWQ_BAD_ARGUMENT;
  return ReadFactor({iPortNo, iBaudRate}, pad::kReadFactor, szPinPadFactor);
}

int PN_CreateAndGetPinPadFactor(int iPortNo, const char* /*szReserved*/, int iBaudRate, int iFactorType,
                                char* szPinPadFactor) {
  if (szPinPadFactor == nullptr) return GWQ_BAD_ARGUMENT;
  return CreateFactor({iPortNo, iBaudRate}, iFactorType, szPinPadFactor);
}

// Contract: USB, also in the calls below; their port argument is ignored.
int PN_ObtainFactor(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate, const char* szWKType,
                    char* szPinPadFactor) {
  ICC_DPrintLogToFile("PN_ObtainFactor");
  ICC_DPrintLogToFile("szWKType=%s", szWKType);
  if (szPinPadFactor == nullptr) return GWQ_BAD_ARGUMENT;
  if (const int status = DrainFirst({0, iBaudRate}, DrainLog::kLogged); status != GWQ_OK) return status;
  const int result = CreateFactor({0, iBaudRate}, WorkingKeyType(szWKType), szPinPadFactor);
  ICC_DPrintLogToFile("PN_ObtainFactor iRet=%d", result);
  return result;
}

int PN_ObtainPublicKey(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate, int iAlgoType, int iKeyLen,
                       char* szPublicKey) {
  constexpr int kBitsSentAsOne = 2048;
  ICC_DPrintLogToFile("PN_ObtainPublicKey  iAlgoType=%d,iKeyLen=%d", iAlgoType, iKeyLen);
  if ((iAlgoType != 1 && iAlgoType != 2) || szPublicKey == nullptr) return GWQ_BAD_ARGUMENT;
  if (const int status = DrainFirst({0, iBaudRate}, DrainLog::kLogged); status != GWQ_OK) return status;
  PadBody body(pad::kReadPublicKey);
  // Contract: 2048 bits are sent as 1, every other length as a number of bytes.
  body.Byte(iAlgoType).Byte(iKeyLen == kBitsSentAsOne ? 1 : iKeyLen / 8);
  PadAnswer answer;
  const int result = AskPad({0, iBaudRate}, body, answer);
  if (result != GWQ_OK) return result;
  const auto key = KeyBytes(iAlgoType, answer.data());
  HexToAscii(key.data(), static_cast<int>(key.size()), szPublicKey);
  ICC_DPrintLogToFile("PN_ObtainPublicKey iRet=%d", GWQ_OK);
  return GWQ_OK;
}

int PN_ObtainDigest(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate, int iHashAlgo,
                    const char* szData, char* pDigest) {
  ICC_DPrintLogToFile("PN_ObtainDigest  iHashAlgo=%d", iHashAlgo);
  if (szData == nullptr || pDigest == nullptr) return GWQ_BAD_ARGUMENT;
  const std::string_view data(szData);
  const std::size_t room = data.size() + 5;
  if (room > kMaxBodySize) return GWQ_BAD_ARGUMENT;
  PadBody body(pad::kDigest, room);
  // Contract: of the length only the low byte is sent.
  body.Byte(iHashAlgo).Byte(static_cast<int>(data.size())).Text(data);
  PadAnswer answer;
  const int result = AskPad({0, iBaudRate}, body, answer);
  if (result != GWQ_OK) return result;
  ICC_DPrintLogToFile("PN_ObtainDigest iRet=%d", GWQ_OK);
  answer.CopyTo(pDigest);
  return GWQ_OK;
}

int PN_DownloadPinPadWK(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate,
                        const char* szPinPadFactor, const char* szWKType, const char* encWKData,
                        const char* szVerifyKey) {
  ICC_DPrintLogToFile("PN_DownloadPinPadWK");
  ICC_DPrintLogToFile("szPinPadFactor=%s,encWKData=%s,szVerifyKey=%s", szPinPadFactor, encWKData,
                      szVerifyKey);
  if (szVerifyKey == nullptr || encWKData == nullptr) return GWQ_BAD_ARGUMENT;
  const PadCommand& command = WorkingKeyType(szWKType) == 2 ? pad::kLoadKey2 : pad::kLoadKey1;
  if (const int status = DrainFirst({0, iBaudRate}, DrainLog::kLogged); status != GWQ_OK) return status;
  const WorkingKey wk{encWKData, OrEmpty(szPinPadFactor), szVerifyKey};
  if (wk.Room() > kMaxBodySize) return GWQ_BAD_ARGUMENT;
  PadBody body(command, wk.Room());
  if (!AppendWorkingKey(wk, body)) return GWQ_BAD_ARGUMENT;
  PadAnswer answer;
  const int result = AskPad({0, iBaudRate}, body, answer);
  return result == GWQ_OK ? ResultOfLoad(command.code, answer) : result;
}

}  // namespace gwq
