// SPDX-License-Identifier: MIT
// Who gets in to the customer's page: few connections, and briefly those that have not shown the token.
#pragma once

#include <gio/gio.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string_view>
#include <vector>

#include "base/gobject_ptr.h"
#include "base/unique_fd.h"

namespace gwq::terminal::web {

struct DoorLimits {
  std::size_t connections = 64;
  std::size_t strangers = 16;  // of these, without the token; the next one displaces the oldest
  std::chrono::milliseconds patience{10'000};  // how long a stranger may stay
};

// Accepts by itself, because libsoup stops listening for good once it runs out of descriptors.
// A visitor is known by its address, which stays valid until its connection is freed.
class PageDoor {
 public:
  using Welcome = std::function<void(GSocketConnection*, GSocketAddress* visitor)>;

  // Listens at `port` of 127.0.0.1 and, where the system has it, ::1; 0 for a free port. Works in this
  // thread's default GLib context. Throws std::system_error when it cannot listen.
  PageDoor(std::uint16_t port, DoorLimits limits, Welcome welcome);
  PageDoor(const PageDoor&) = delete;
  PageDoor& operator=(const PageDoor&) = delete;
  ~PageDoor();

  [[nodiscard]] std::uint16_t Port() const { return port_; }

  // The visitor has shown the token and is a stranger no longer.
  void Admit(GSocketAddress* visitor);
  // Sends `answer` as far as it fits at once, and ends the connection.
  void TurnAway(GSocketAddress* visitor, std::string_view answer);
  // The visitor's descriptor; -1 when its connection is gone.
  [[nodiscard]] int FdOf(GSocketAddress* visitor) const;

 private:
  struct SourceEnd {
    void operator()(GSource* source) const {
      g_source_destroy(source);
      g_source_unref(source);
    }
  };
  using SourcePtr = std::unique_ptr<GSource, SourceEnd>;

  struct Visitor {
    GSocketConnection* connection = nullptr;  // owned by who was given it
    GObjectPtr<GSocketAddress> address;
    SourcePtr patience;  // none for who is no stranger
  };

  void Watch();
  void Pause();
  void Accept(int listener);
  void TurnAwayUnseen(int listener);
  void LetIn(UniqueFd socket);
  void LimitStrangers();
  static void HangUp(Visitor& visitor);
  [[nodiscard]] const Visitor* Find(GSocketAddress* address) const;
  [[nodiscard]] Visitor* Find(GSocketAddress* address);
  static void Gone(gpointer door, GObject* connection);

  const DoorLimits limits_;
  const Welcome welcome_;
  std::uint16_t port_ = 0;
  std::vector<UniqueFd> listeners_;
  UniqueFd reserve_;
  std::vector<SourcePtr> watches_;
  SourcePtr pause_;
  std::list<Visitor> visitors_;  // in the order they came
};

}  // namespace gwq::terminal::web
