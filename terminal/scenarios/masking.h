// SPDX-License-Identifier: MIT
// Keeps secrets out of reports.
#pragma once

#include <set>
#include <string>

#include "base/json_script.h"

namespace gwq::terminal::scenarios {

// The PINs and numbers of four digits or more that a customer keys, the agreeable one's PIN too.
[[nodiscard]] std::set<std::string> SecretsOf(const Json& customer);

// The text with stars in the place of each of them, and of each run of 16 hexadecimal digits or
// more, which may be a key. Control characters but line ends become spaces, and what is no UTF-8
// the replacement character.
[[nodiscard]] std::string Masked(const std::string& text, const std::set<std::string>& secrets);

}  // namespace gwq::terminal::scenarios
