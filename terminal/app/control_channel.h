// SPDX-License-Identifier: MIT
// The line between the supervisor, which runs the command, and the server, which
// is the terminal. Either side learns from it that the other has died.
//
//   server -> supervisor   "ready" with variables (ReadyMessage), "failed REASON"
//   supervisor -> server   the options (options_message.h), then "unplug", "replug", "done"
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/unique_fd.h"

namespace gwq::terminal::app {

// What the command's environment is to have: names and values.
using Variables = std::vector<std::pair<std::string, std::string>>;

[[nodiscard]] std::string ReadyMessage(const Variables& variables);
[[nodiscard]] Variables ReadReadyMessage(const std::string& message);

class ControlChannel {
 public:
  explicit ControlChannel(UniqueFd socket) : socket_(std::move(socket)) {}

  // Two connected ends.
  static std::pair<ControlChannel, ControlChannel> Pair();

  [[nodiscard]] int Fd() const { return socket_.Get(); }

  // False when the other side is gone. Of a message of more than 64 KB, only these are sent.
  bool Send(const std::string& message) const;

  // Waits for a message; nothing when the other side is gone.
  [[nodiscard]] std::optional<std::string> Receive() const;

  void Close() { socket_.Reset(); }

 private:
  UniqueFd socket_;
};

}  // namespace gwq::terminal::app
