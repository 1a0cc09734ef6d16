// SPDX-License-Identifier: MIT
// status.h, compiled as C.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

const char* CauseInC(const char* function, int status, int language);
const char* RemedyInC(const char* function, int status, int language);

#ifdef __cplusplus
}
#endif
