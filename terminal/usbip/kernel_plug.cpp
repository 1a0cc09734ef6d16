// SPDX-License-Identifier: MIT
#include "usbip/kernel_plug.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <array>
#include <cstdio>
#include <stdexcept>
#include <thread>
#include <utility>

#include "base/errors.h"
#include "usbip/usbip_protocol.h"

namespace gwq::terminal::usbip {
namespace {

constexpr Time kLookEvery{20};
constexpr Time kLetGoLimit{5000};

// The first is ours and does not block; the second is the kernel's.
std::pair<UniqueFd, UniqueFd> MakePair() {
  std::array<int, 2> ends{};
  Checked(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), "socketpair");
  std::pair<UniqueFd, UniqueFd> pair{UniqueFd(ends[0]), UniqueFd(ends[1])};
  Checked(fcntl(ends[0], F_SETFL, O_NONBLOCK), "O_NONBLOCK");
  return pair;
}

}  // namespace

KernelPlug::KernelPlug(Vhci kernel, usb::UsbId id, usb::UsbTerminal& terminal, EventLoop& loop,
                       const Clock& clock)
    : kernel_(std::move(kernel)), device_(id, terminal), loop_(loop), clock_(clock) {
  loop.BeforeEachWait([this] { Settle(); });
  loop.Add(*this);
}

// A command that is started next must not see the old device.
KernelPlug::~KernelPlug() {
  PullOut();
  if (connection_) Leave();
  const Time limit = clock_.Now() + kLetGoLimit;
  while (place_ && !kernel_.IsGone(place_->port, place_->device) && clock_.Now() < limit)
    std::this_thread::sleep_for(kLookEvery);
}

void KernelPlug::PullOut() {
  in_ = false;
  pulled_ = true;
  device_.PullOut();
}

void KernelPlug::AwaitReady(Time limit) {
  awaited_ = true;
  if (!loop_.RunFor(clock_, limit))
    throw std::runtime_error("the kernel does not take the terminal within " +
                             std::to_string(std::chrono::duration_cast<std::chrono::seconds>(limit).count()) +
                             " s: see what dmesg says of vhci_hcd and usb");
}

std::optional<Time> KernelPlug::NextDeadline() {
  if (!awaited_ && !IsLeaving()) return std::nullopt;
  return looks_at_;
}

void KernelPlug::Advance(Time now) {
  looks_at_ = now + kLookEvery;
  if (IsLeaving() && kernel_.IsGone(place_->port, place_->device)) place_.reset();
  if (!awaited_ || !connection_ || !kernel_.IsReady(kernel_.DeviceAt(place_->port))) return;
  awaited_ = false;
  loop_.Stop();
}

void KernelPlug::Settle() {
  if (connection_ && !connection_->Settle()) Leave();
  if (in_ && !place_) Attach();
}

void KernelPlug::Attach() {
  auto [ours, kernels] = MakePair();
  device_.PlugIn();
  pulled_ = false;
  auto connection = std::make_unique<UsbIpConnection>(std::move(ours), device_, loop_, clock_);
  if (!connection->Import()) throw std::logic_error("the terminal is plugged in elsewhere");
  place_ = Place{kernel_.Attach(kernels.Get(), kDeviceId), {}};
  kernel_end_ = std::move(kernels);
  connection_ = std::move(connection);
}

// The kernel takes the end of the connection for an unplugging. Not before it has let go of the device the
// terminal is plugged in again: nobody should find both.
void KernelPlug::Leave() {
  place_->device = kernel_.DeviceAt(place_->port);
  connection_.reset();
  kernel_end_.Reset();
  if (pulled_) return;
  in_ = false;
  std::fprintf(stderr, "gwq-terminal: the kernel has detached the terminal\n");
}

}  // namespace gwq::terminal::usbip
