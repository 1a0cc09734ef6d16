/* SPDX-License-Identifier: MIT */
// PINs by way of working keys that are prepared for one pad.
#pragma once

#include <string>

#include "bank_pad.h"

namespace example {

inline constexpr int kPinDigits = 6;

// Prepares a working key for the pad on USB and loads it.
Key LoadWorkingKey(int baud, Algorithm algorithm);

// Lets the customer key a PIN, and recovers it from the block as the bank would.
std::string EnterPin(int baud, const std::string& account, const Key& key, Algorithm algorithm);

}  // namespace example
