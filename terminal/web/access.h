// SPDX-License-Identifier: MIT
// Who may see the customer's page. It answers for a person, so that only the one who was
// told its address may; other programs' web pages in the same browser may not.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace gwq::terminal::web {

struct PageAsked {
  std::string_view path;
  std::optional<std::string_view> host;
  std::optional<std::string_view> origin;
  bool opens_socket = false;
};

class Access {
 public:
  Access(std::string token, std::uint16_t port) : token_(std::move(token)), port_(port) {}

  // 128 bits from the system's generator, in hexadecimal; throws std::system_error without them.
  [[nodiscard]] static std::string NewToken();

  // The path behind the token, such as "app.js". Nothing when the token is wrong, when the
  // request was not meant for this address, or when another site's page made it. A browser
  // always tells who opens a socket.
  [[nodiscard]] std::optional<std::string> PathOf(const PageAsked& asked) const;

 private:
  [[nodiscard]] bool IsOurs(std::string_view authority) const;

  std::string token_;
  std::uint16_t port_;
};

}  // namespace gwq::terminal::web
