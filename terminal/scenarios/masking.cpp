// SPDX-License-Identifier: MIT
#include "scenarios/masking.h"

#include <algorithm>
#include <cstddef>

#include "customer/agreeable.h"

namespace gwq::terminal::scenarios {
namespace {

constexpr std::size_t kMinKey = 16;  // digits
constexpr std::size_t kMinSecret = 4;

void CoverKeys(std::string& text) {
  constexpr const char* kHex = "0123456789abcdefABCDEF";
  for (std::size_t at = text.find_first_of(kHex); at != std::string::npos;
       at = text.find_first_of(kHex, at)) {
    const std::size_t end = std::min(text.find_first_not_of(kHex, at), text.size());
    if (end - at >= kMinKey) text.replace(at, end - at, end - at, '*');
    at = end;
  }
}

void Cover(std::string& text, const std::string& secret) {
  for (std::size_t at = text.find(secret); at != std::string::npos; at = text.find(secret, at))
    text.replace(at, secret.size(), secret.size(), '*');
}

// JSON knows how.
std::string AsUtf8(const std::string& text) {
  const std::string json = Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
  return Json::parse(json).get<std::string>();
}

}  // namespace

// Whatever else a script is, its parser says.
std::set<std::string> SecretsOf(const Json& customer) {
  std::set<std::string> secrets{customer::AgreeableCustomer::kPin};
  const Json flat = customer.flatten();
  for (const auto& leaf : flat.items()) {
    const std::string& path = leaf.key();
    const bool secret = path.ends_with("/pin") || path.ends_with("/number") || path.ends_with("/digits");
    if (!secret || !leaf.value().is_string()) continue;
    const auto digits = leaf.value().get<std::string>();
    if (digits.size() >= kMinSecret) secrets.insert(digits);
  }
  return secrets;
}

// The longest first, so that none is left over behind the stars of a shorter one.
std::string Masked(const std::string& text, const std::set<std::string>& secrets) {
  std::string masked = text;
  CoverKeys(masked);
  std::vector<std::string> ordered(secrets.begin(), secrets.end());
  std::stable_sort(ordered.begin(), ordered.end(),
                   [](const auto& one, const auto& other) { return one.size() > other.size(); });
  for (const std::string& secret : ordered) Cover(masked, secret);
  std::replace_if(
      masked.begin(), masked.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' && c != '\n'; },
      ' ');
  return AsUtf8(masked);
}

}  // namespace gwq::terminal::scenarios
