// SPDX-License-Identifier: MIT
// What a terminal may say, well-formed or not, made from a fuzzer's input.
#pragma once

#include "input.h"
#include "machine.h"

namespace gwq::fuzz {

// One byte of how (bits 0 to 2 the kind, 4 a wrong length, 5 a wrong check, 6 zeros up to a whole
// report, 7 eight times the content), then the content.
Bytes ComposeAnswer(Input input);

}  // namespace gwq::fuzz
