#include "screens/evaluation.h"

#include <array>
#include <cstring>

#include "codec/encodings.h"
#include "diag/log.h"
#include "frame/operation.h"
#include "frame/turn.h"
#include "screens/screen.h"

namespace gwq {
namespace {

using Text = CommandText<1024>;
constexpr Channel kScreen = Channel::kEvaluation;

// The device's 0 is the caller's 4.
constexpr std::array kRatings{Meaning{"B1F", 1}, Meaning{"B2F", 2}, Meaning{"B3F", 3}, Meaning{"B0F", 4}};

struct Teller {
  const char* name;
  const char* number;
  int stars;
  const char* photo;
};

bool StarsHold(int level) {
  return Within(level, 0, 6);
}

template <std::size_t N>
void PhotoByNumber(const Teller& teller, CommandText<N>& photo) {
  photo << OrEmpty(teller.number) << ".jpg";
}

// The photo's name as the MP_ functions send it: in GBK, though their command words say UTF-8.
using ConvertedPhoto = CommandText<256 + 1>;
void ConvertPhoto(const Teller& teller, ConvertedPhoto& photo) {
  constexpr std::size_t kSize = 256;
  if (teller.photo == nullptr) return PhotoByNumber(teller, photo);
  SecretArray<char, kSize> gbk;
  // A character takes at most four bytes; more of the name cannot matter.
  const std::size_t length = strnlen(teller.photo, 4 * kSize);
  u2g(teller.photo, static_cast<int>(length), gbk.data(), static_cast<int>(kSize));
  photo << std::string_view(gbk.data(), strnlen(gbk.data(), kSize));
}

// As GWQ_StartEvaluator sends it.
using PlainPhoto = CommandText<1024 + 1>;
void TakePhoto(const Teller& teller, PlainPhoto& photo) {
  if (teller.photo == nullptr) return PhotoByNumber(teller, photo);
  photo << teller.photo;
}

int SendCard(Line line, std::string_view word, const Teller& teller, std::string_view photo) {
  Text command;
  command << word << "\x02" << OrEmpty(teller.name) << "|" << OrEmpty(teller.number) << "|" << teller.stars
          << "|" << photo << "\x03";
  return Tell(line, command, kSendTimeoutMs);
}

// What a failed send becomes in the MP_ functions; the GWQ_ functions return it as it is.
int SendStatus(int result) {
  return result == GWQ_OK || result == GWQ_NOT_OPENED ? result : static_cast<int>(GWQ_REFUSED);
}

bool CardHolds(const Teller& teller) {
  return StarsHold(teller.stars) && teller.name != nullptr;
}

int SendConvertedCard(Line line, std::string_view word, const Teller& teller) {
  ConvertedPhoto photo;
  ConvertPhoto(teller, photo);
  return SendStatus(SendCard(line, word, teller, photo.text()));
}

void TakeRating(std::string_view answer, char* value) {
  if (value == nullptr) return;
  if (const auto rating = MeaningOf(kRatings, answer)) *value = static_cast<char>('0' + *rating);
  ICC_DPrintLogToFile("szEvalValue=%.1s", value);
}

// Waits for the customer's key on a screen that is set up; `word` starts the rating.
template <typename Take>
int AwaitRating(Line line, std::string_view word, int timeout_s, Take take) {
  const WaitingScreen screen(line, kScreen);
  Text command;
  AnswerText<1024> answer;
  const int result = Ask(line, command << word, answer, &EndOfRead3, WaitMs(timeout_s, kAnswerMarginMs));
  if (result == GWQ_OK) take(answer.text());
  return result;
}

}  // namespace
}  // namespace gwq

int MP_StartElectronicCard(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int iTimeout,
                           const char* szTellerName, const char* szTellerNo, int iStarLevel,
                           const char* szPhotoName) {
  ICC_DPrintLogToFile("MP_StartElectronicCard");
  const gwq::Teller teller{szTellerName, szTellerNo, iStarLevel, szPhotoName};
  if (!gwq::CardHolds(teller)) return GWQ_BAD_ARGUMENT;
  const gwq::Line line{0, iBaudRate};
  if (gwq::Drain(line) == GWQ_NOT_OPENED) return GWQ_NOT_OPENED;
  if (const int result = SetScreenTimeout(line, gwq::kScreen, iTimeout); result != GWQ_OK) return result;
  return gwq::SendConvertedCard(line, "\x1B[4OPINFODPUTF8", teller);
}

int MP_SetEvaluateInfo(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, const char* szTellerName,
                       const char* szTellerNo, int iStarLevel, const char* szPhotoName) {
  ICC_DPrintLogToFile("MP_SetEvaluateInfo");
  const gwq::Teller teller{szTellerName, szTellerNo, iStarLevel, szPhotoName};
  if (!gwq::CardHolds(teller)) return GWQ_BAD_ARGUMENT;
  const gwq::Line line{0, iBaudRate};
  if (gwq::Drain(line) == GWQ_NOT_OPENED) return GWQ_NOT_OPENED;
  return gwq::SendConvertedCard(line, "\x1B[4SETEVALINFOUTF8", teller);
}

int MP_StartEvaluate(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int iTimeout, char* szEvalValue) {
  const gwq::Operation operation;
  ICC_DPrintLogToFile("MP_StartEvaluate");
  const gwq::Line line{0, iBaudRate};
  if (gwq::Drain(line) == GWQ_NOT_OPENED) return GWQ_NOT_OPENED;
  const int result = gwq::SendStatus(SetScreenTimeout(line, gwq::kScreen, iTimeout));
  if (result != GWQ_OK) return result;
  return gwq::AwaitRating(line, "\x1B[4STARTEVALUTF8", iTimeout,
                          [=](std::string_view answer) { gwq::TakeRating(answer, szEvalValue); });
}

int MP_CancleEvaluate(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate) {
  ICC_DPrintLogToFile("MP_CancleEvaluate");
  gwq::CancelOperations();
  CancelRead();
  const gwq::CancelsWhileWaiting cancels;
  ICC_DPrintLogToFile("nRet=%d", gwq::Drain({0, iBaudRate}));
  return GWQ_OK;
}

int GWQ_StartEvaluator(int iPortNo, int iBaudRate, const char* szTellerName, const char* szTellerNo,
                       int iStarLevel, const char* szPhotoName, int iTimeout, unsigned int* pnRating) {
  const gwq::Operation operation;
  if (!gwq::StarsHold(iStarLevel) || !gwq::IsCustomerTimeout(iTimeout)) return GWQ_BAD_ARGUMENT;
  const gwq::Line line{iPortNo, iBaudRate};
  if (iPortNo == 0) gwq::Drain(line);
  const gwq::Teller teller{szTellerName, szTellerNo, iStarLevel, szPhotoName};
  gwq::PlainPhoto photo;
  gwq::TakePhoto(teller, photo);
  SendCard(line, "\x1B[4H", teller, photo.text());
  if (const int result = SetScreenTimeout(line, gwq::kScreen, iTimeout); result != GWQ_OK) return result;
  return gwq::AwaitRating(line, "\x1B[4R", iTimeout, [=](std::string_view answer) {
    const auto rating = gwq::MeaningOf(gwq::kRatings, answer);
    if (rating && pnRating != nullptr) *pnRating = static_cast<unsigned>(*rating);
  });
}
