// SPDX-License-Identifier: MIT
#include <gwq/screens/evaluation.h>

#include <array>
#include <cstring>
#include <string_view>

#include <gwq/codec/encodings.h>
#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "frame/internal/cancel.h"
#include "frame/internal/operation.h"
#include "frame/internal/turn.h"
#include "screens/internal/screen.h"

namespace gwq {
namespace {

using EvaluationCommand = Command<1024>;
constexpr Channel kScreen = Channel::kEvaluation;

// Contract: the terminal's 0 is the caller's 4.
constexpr std::array kRatings{Meaning{"B1F", 1}, Meaning{"B2F", 2}, Meaning{"B3F", 3}, Meaning{"B0F", 4}};

struct Teller {
  const char* name;
  const char* number;
  int stars;
  const char* photo;
};

bool IsStarLevel(int level) {
  return Within(level, 0, 6);
}

// False when it does not fit.
template <std::size_t N>
bool SetPhotoByNumber(const Teller& teller, SecretText<N>& photo) {
  photo << OrEmpty(teller.number) << ".jpg";
  return !photo.IsCut();
}

// Contract: the MP_ functions send the photo's name in GBK, although their command words say UTF-8,
// and cut a long one; GWQ_StartEvaluator sends it unconverted and refuses a long one.
using ConvertedPhoto = SecretText<256 + 1>;
bool SetConvertedPhoto(const Teller& teller, ConvertedPhoto& photo) {
  constexpr std::size_t kSize = 256;
  if (teller.photo == nullptr) return SetPhotoByNumber(teller, photo);
  SecretArray<char, kSize> gbk;
  // A character has at most four bytes, so that the rest of the name cannot fit.
  const std::size_t length = strnlen(teller.photo, 4 * kSize);
  u2g(teller.photo, static_cast<int>(length), gbk.data(), static_cast<int>(kSize));
  photo << std::string_view(gbk.data(), strnlen(gbk.data(), kSize));
  return true;
}

using PlainPhoto = SecretText<1024 + 1>;
bool SetPlainPhoto(const Teller& teller, PlainPhoto& photo) {
  if (teller.photo == nullptr) return SetPhotoByNumber(teller, photo);
  photo << teller.photo;
  return !photo.IsCut();
}

// False when the card does not fit into the command: a part of it would show something else.
bool FillCard(EvaluationCommand& command, const Teller& teller, std::string_view photo) {
  return !command.Fields('|', OrEmpty(teller.name), OrEmpty(teller.number), teller.stars, photo).IsCut();
}

// Contract: the MP_ functions return GWQ_REFUSED for a failed send, the GWQ_ functions its status.
int SendStatus(int result) {
  return result == GWQ_OK || result == GWQ_NOT_OPENED ? result : static_cast<int>(GWQ_REFUSED);
}

bool FillConvertedCard(EvaluationCommand& command, const Teller& teller) {
  ConvertedPhoto photo;
  if (!IsStarLevel(teller.stars) || teller.name == nullptr) return false;
  return SetConvertedPhoto(teller, photo) && FillCard(command, teller, photo.text());
}

bool FillPlainCard(EvaluationCommand& command, const Teller& teller) {
  PlainPhoto photo;
  return SetPlainPhoto(teller, photo) && FillCard(command, teller, photo.text());
}

// Contract: an answer that is no rating leaves the output as it was, and the call succeeds.
void StoreRating(std::string_view answer, char* value) {
  if (value == nullptr) return;
  if (const auto rating = MeaningOf(kRatings, answer)) *value = static_cast<char>('0' + *rating);
  ICC_DPrintLogToFile("szEvalValue=%.1s", value);
}

// Starts the rating with the command `word` and waits for the customer's key.
template <typename Store>
int AwaitRating(Endpoint endpoint, std::string_view word, int timeout_s, Store store) {
  const WaitingScreen screen(endpoint, kScreen);
  EvaluationCommand command(kScreen, word);
  AnswerText<1024> answer;
  const int result = Ask(endpoint, command, answer, &EndOfRead3, WaitMs(timeout_s, kAnswerMarginMs));
  if (result == GWQ_OK) store(answer.text());
  return result;
}

}  // namespace

int MP_StartElectronicCard(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int iTimeout,
                           const char* szTellerName, const char* szTellerNo, int iStarLevel,
                           const char* szPhotoName) {
  ICC_DPrintLogToFile("MP_StartElectronicCard");
  const Teller teller{szTellerName, szTellerNo, iStarLevel, szPhotoName};
  EvaluationCommand card(kScreen, "OPINFODPUTF8");
  if (!FillConvertedCard(card, teller)) return GWQ_BAD_ARGUMENT;
  const Endpoint endpoint{0, iBaudRate};
  if (const int status = DrainFirst(endpoint); status != GWQ_OK) return status;
  // Contract: a failure to set the time-out is returned unchanged, unlike in MP_StartEvaluate.
  if (const int result = SetScreenTimeout(endpoint, kScreen, iTimeout); result != GWQ_OK) return result;
  return SendStatus(Tell(endpoint, card, kSendTimeoutMs));
}

int MP_SetEvaluateInfo(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, const char* szTellerName,
                       const char* szTellerNo, int iStarLevel, const char* szPhotoName) {
  ICC_DPrintLogToFile("MP_SetEvaluateInfo");
  const Teller teller{szTellerName, szTellerNo, iStarLevel, szPhotoName};
  EvaluationCommand card(kScreen, "SETEVALINFOUTF8");
  if (!FillConvertedCard(card, teller)) return GWQ_BAD_ARGUMENT;
  const Endpoint endpoint{0, iBaudRate};
  if (const int status = DrainFirst(endpoint); status != GWQ_OK) return status;
  return SendStatus(Tell(endpoint, card, kSendTimeoutMs));
}

// Contract: the range of the time-out is not checked, unlike in GWQ_StartEvaluator.
int MP_StartEvaluate(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int iTimeout, char* szEvalValue) {
  const Operation operation;
  ICC_DPrintLogToFile("MP_StartEvaluate");
  const Endpoint endpoint{0, iBaudRate};
  if (const int status = DrainFirst(endpoint); status != GWQ_OK) return status;
  const int result = SendStatus(SetScreenTimeout(endpoint, kScreen, iTimeout));
  if (result != GWQ_OK) return result;
  return AwaitRating(endpoint, "STARTEVALUTF8", iTimeout,
                     [=](std::string_view answer) { StoreRating(answer, szEvalValue); });
}

// Contract: always GWQ_OK; the status of the drain is only logged.
int MP_CancleEvaluate(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate) {
  ICC_DPrintLogToFile("MP_CancleEvaluate");
  CancelOperations();
  CancelRead();
  const CancelsWhileWaiting cancels;
  ICC_DPrintLogToFile("nRet=%d", Drain({0, iBaudRate}));
  return GWQ_OK;
}

int GWQ_StartEvaluator(int iPortNo, int iBaudRate, const char* szTellerName, const char* szTellerNo,
                       int iStarLevel, const char* szPhotoName, int iTimeout, unsigned int* pnRating) {
  const Operation operation;
  if (!IsStarLevel(iStarLevel) || !IsCustomerTimeout(iTimeout)) return GWQ_BAD_ARGUMENT;
  const Teller teller{szTellerName, szTellerNo, iStarLevel, szPhotoName};
  EvaluationCommand card(kScreen, "H");
  if (!FillPlainCard(card, teller)) return GWQ_BAD_ARGUMENT;
  const Endpoint endpoint{iPortNo, iBaudRate};
  DrainUsb(endpoint);
  // Contract: whether the card arrives does not count.
  Tell(endpoint, card, kSendTimeoutMs);
  if (const int result = SetScreenTimeout(endpoint, kScreen, iTimeout); result != GWQ_OK) return result;
  return AwaitRating(endpoint, "R", iTimeout, [=](std::string_view answer) {
    const auto rating = MeaningOf(kRatings, answer);
    if (rating && pnRating != nullptr) *pnRating = static_cast<unsigned>(*rating);
  });
}

}  // namespace gwq
