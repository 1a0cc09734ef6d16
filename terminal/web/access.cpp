// SPDX-License-Identifier: MIT
#include "web/access.h"

#include <openssl/crypto.h>
#include <sys/random.h>

#include <array>

#include "base/errors.h"

namespace gwq::terminal::web {
namespace {

constexpr std::string_view kScheme = "http://";

}  // namespace

std::string Access::NewToken() {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::array<std::uint8_t, 16> bytes{};
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) ThrowErrno("getrandom");
  std::string token;
  for (const std::uint8_t byte : bytes) (token += kDigits[byte / 16]) += kDigits[byte % 16];
  return token;
}

bool Access::IsOurs(std::string_view authority) const {
  const std::size_t colon = authority.rfind(':');
  if (colon == std::string_view::npos || authority.substr(colon + 1) != std::to_string(port_)) return false;
  const std::string_view name = authority.substr(0, colon);
  return name == "127.0.0.1" || name == "[::1]" || name == "localhost";
}

std::optional<std::string> Access::PathOf(const PageAsked& asked) const {
  if (!asked.host || !IsOurs(*asked.host)) return std::nullopt;
  if (asked.opens_socket && !asked.origin) return std::nullopt;
  if (asked.origin) {
    const bool same =
        asked.origin->starts_with(kScheme) && asked.origin->substr(kScheme.size()) == *asked.host;
    if (!same) return std::nullopt;
  }
  const std::size_t rest = token_.size() + 2;  // "/TOKEN/"
  if (asked.path.size() < rest || asked.path[0] != '/' || asked.path[rest - 1] != '/') return std::nullopt;
  if (CRYPTO_memcmp(asked.path.data() + 1, token_.data(), token_.size()) != 0) return std::nullopt;
  return std::string(asked.path.substr(rest));
}

}  // namespace gwq::terminal::web
