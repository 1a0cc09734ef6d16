// SPDX-License-Identifier: MIT
// What to do about a status.
#pragma once

namespace gwq {

// As GwqStatusRemedyOf of status.h, whose tables of pointers would be relocated at every load.
const char* RemedyOf(const char* function, int status, int language);

}  // namespace gwq
