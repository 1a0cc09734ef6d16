// SPDX-License-Identifier: MIT
#include "links/internal/remedy.h"

#include <cstdint>

#include <gwq/status.h>

namespace gwq {
namespace {

// The numbers are places in kTexts.
struct Remedy {
  std::int16_t status;
  std::uint16_t functions;  // separated by single spaces; an empty text: all others
  std::uint16_t texts[2];   // by enum GwqLanguage
};

#include "links/remedies.inc"

const Remedy& Find(const char* function, int status) {
  for (const Remedy& remedy : kRemedies) {
    if (remedy.status != status) continue;
    const char* const functions = kTexts + remedy.functions;
    if (*functions == '\0' || GwqListHolds(functions, function) != 0) return remedy;
  }
  return status > 0 ? kOfValue : kOfUnknown;
}

}  // namespace

const char* RemedyOf(const char* function, int status, int language) {
  return kTexts + Find(function, status).texts[language == GWQ_CHINESE ? 1 : 0];
}

}  // namespace gwq
