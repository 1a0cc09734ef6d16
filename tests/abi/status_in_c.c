/* SPDX-License-Identifier: MIT */
// The texts as a program in C gets them.
#include "abi/status_in_c.h"

#include <gwq/status.h>

const char* CauseInC(const char* function, int status, int language) {
  return GwqStatusCauseOf(function, status, language);
}

const char* RemedyInC(const char* function, int status, int language) {
  return GwqStatusRemedyOf(function, status, language);
}
