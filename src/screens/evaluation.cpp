#include <gwq/screens/evaluation.h>

#include <array>
#include <cstring>

#include <gwq/codec/encodings.h>
#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "frame/internal/operation.h"
#include "frame/internal/turn.h"
#include "screens/internal/screen.h"

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

// False when there is no room for it.
template <std::size_t N>
bool PhotoByNumber(const Teller& teller, CommandText<N>& photo) {
  photo << OrEmpty(teller.number) << ".jpg";
  return !photo.IsCut();
}

// The photo's name as the MP_ functions send it: in GBK, though their command words say UTF-8. A long one is cut.
using ConvertedPhoto = CommandText<256 + 1>;
bool ConvertPhoto(const Teller& teller, ConvertedPhoto& photo) {
  constexpr std::size_t kSize = 256;
  if (teller.photo == nullptr) return PhotoByNumber(teller, photo);
  SecretArray<char, kSize> gbk;
  // A character takes at most four bytes; more of the name cannot matter.
  const std::size_t length = strnlen(teller.photo, 4 * kSize);
  u2g(teller.photo, static_cast<int>(length), gbk.data(), static_cast<int>(kSize));
  photo << std::string_view(gbk.data(), strnlen(gbk.data(), kSize));
  return true;
}

// As GWQ_StartEvaluator sends it.
using PlainPhoto = CommandText<1024 + 1>;
bool TakePhoto(const Teller& teller, PlainPhoto& photo) {
  if (teller.photo == nullptr) return PhotoByNumber(teller, photo);
  photo << teller.photo;
  return !photo.IsCut();
}

// False when the card does not fit into a command: cut, it would show something else.
bool FillCard(Text& command, std::string_view word, const Teller& teller, std::string_view photo) {
  command << word << "\x02" << OrEmpty(teller.name) << "|" << OrEmpty(teller.number) << "|" << teller.stars
          << "|" << photo << "\x03";
  return !command.IsCut();
}

// What a failed send becomes in the MP_ functions; the GWQ_ functions return it as it is.
int SendStatus(int result) {
  return result == GWQ_OK || result == GWQ_NOT_OPENED ? result : static_cast<int>(GWQ_REFUSED);
}

bool CardHolds(const Teller& teller) {
  return StarsHold(teller.stars) && teller.name != nullptr;
}

bool FillConvertedCard(Text& command, std::string_view word, const Teller& teller) {
  ConvertedPhoto photo;
  return CardHolds(teller) && ConvertPhoto(teller, photo) && FillCard(command, word, teller, photo.text());
}

bool FillPlainCard(Text& command, std::string_view word, const Teller& teller) {
  PlainPhoto photo;
  return TakePhoto(teller, photo) && FillCard(command, word, teller, photo.text());
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
  gwq::Text card;
  if (!gwq::FillConvertedCard(card, "\x1B[4OPINFODPUTF8", teller)) return GWQ_BAD_ARGUMENT;
  const gwq::Line line{0, iBaudRate};
  if (gwq::Drain(line) == GWQ_NOT_OPENED) return GWQ_NOT_OPENED;
  if (const int result = SetScreenTimeout(line, gwq::kScreen, iTimeout); result != GWQ_OK) return result;
  return gwq::SendStatus(Tell(line, card, gwq::kSendTimeoutMs));
}

int MP_SetEvaluateInfo(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, const char* szTellerName,
                       const char* szTellerNo, int iStarLevel, const char* szPhotoName) {
  ICC_DPrintLogToFile("MP_SetEvaluateInfo");
  const gwq::Teller teller{szTellerName, szTellerNo, iStarLevel, szPhotoName};
  gwq::Text card;
  if (!gwq::FillConvertedCard(card, "\x1B[4SETEVALINFOUTF8", teller)) return GWQ_BAD_ARGUMENT;
  const gwq::Line line{0, iBaudRate};
  if (gwq::Drain(line) == GWQ_NOT_OPENED) return GWQ_NOT_OPENED;
  return gwq::SendStatus(Tell(line, card, gwq::kSendTimeoutMs));
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
  const gwq::Teller teller{szTellerName, szTellerNo, iStarLevel, szPhotoName};
  gwq::Text card;
  if (!gwq::FillPlainCard(card, "\x1B[4H", teller)) return GWQ_BAD_ARGUMENT;
  const gwq::Line line{iPortNo, iBaudRate};
  if (iPortNo == 0) gwq::Drain(line);
  Tell(line, card, gwq::kSendTimeoutMs);
  if (const int result = SetScreenTimeout(line, gwq::kScreen, iTimeout); result != GWQ_OK) return result;
  return gwq::AwaitRating(line, "\x1B[4R", iTimeout, [=](std::string_view answer) {
    const auto rating = gwq::MeaningOf(gwq::kRatings, answer);
    if (rating && pnRating != nullptr) *pnRating = static_cast<unsigned>(*rating);
  });
}
