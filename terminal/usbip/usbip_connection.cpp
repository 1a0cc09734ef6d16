// SPDX-License-Identifier: MIT
#include "usbip/usbip_connection.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace gwq::terminal::usbip {
namespace {

constexpr Time kPatience{10'000};                            // with who imports nothing
constexpr std::size_t kMaxUnsent = std::size_t{256} << 10U;  // no more is read until there is less

}  // namespace

UsbIpConnection::UsbIpConnection(UniqueFd socket, UsbIpPlug& plug, EventLoop& loop, const Clock& clock)
    : clock_(clock), socket_(std::move(socket)), session_(plug), deadline_(clock.Now() + kPatience) {
  watch_ = loop.OnReady(socket_.Get(), [this](unsigned ready) {
    if ((ready & ~EventLoop::kOut) != 0) Read();
  });
}

std::optional<Time> UsbIpConnection::Deadline() const {
  if (session_.IsImported()) return std::nullopt;
  return deadline_;
}

void UsbIpConnection::Read() {
  std::array<std::uint8_t, 65536> buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init)
  const ssize_t count = recv(socket_.Get(), buffer.data(), buffer.size(), 0);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (count <= 0) return session_.End();
  const bool was_imported = session_.IsImported();
  session_.Receive(std::span(buffer).first(static_cast<std::size_t>(count)));
  if (was_imported && !session_.IsImported()) deadline_ = clock_.Now() + kPatience;
  if (!session_.Complaint().empty())
    std::fprintf(stderr, "gwq-terminal: USB/IP connection closed: %s\n", session_.Complaint().c_str());
}

bool UsbIpConnection::Settle() {
  const Bytes replies = session_.TakeReplies();
  unsent_.insert(unsent_.end(), replies.begin(), replies.end());
  if (!Send() || (session_.IsOver() && unsent_.empty())) return false;
  const bool reads = !session_.IsOver() && unsent_.size() < kMaxUnsent;
  watch_.Want((reads ? EventLoop::kIn : 0U) | (unsent_.empty() ? 0U : EventLoop::kOut));
  return true;
}

// False when the client is gone.
bool UsbIpConnection::Send() {
  while (!unsent_.empty()) {
    const ssize_t count = send(socket_.Get(), unsent_.data(), unsent_.size(), MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno == EAGAIN;
    unsent_.erase(unsent_.begin(), unsent_.begin() + count);
  }
  return true;
}

}  // namespace gwq::terminal::usbip
