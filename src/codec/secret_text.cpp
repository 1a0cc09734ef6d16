// SPDX-License-Identifier: MIT
#include "codec/internal/secret_text.h"

#include <cstring>

namespace gwq {

std::size_t SecretLength(const char* text) {
  return std::strlen(text);
}

}  // namespace gwq
