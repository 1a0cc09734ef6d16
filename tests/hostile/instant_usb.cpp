// SPDX-License-Identifier: MIT
#include "hostile/instant_usb.h"

#include <libusb-1.0/libusb.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <optional>
#include <utility>

#include "support/test_clock.h"
#include "usb_ids.h"

struct libusb_device {};

struct libusb_device_handle {
  int plugging;  // which one it was opened in
};

namespace gwq::test {
namespace {

using terminal::Bytes;
using terminal::Time;
using terminal::faults::TransferFate;

constexpr std::size_t kReport = 1024;
constexpr std::size_t kMaxReports = 4096;
constexpr std::int64_t kAbsenceMs = 700;

class Bus {
 public:
  explicit Bus(terminal::faults::FaultyLine& line) : line_(line), start_ms_(NowMs()) {}

  [[nodiscard]] bool IsPlugged() {
    if (NowMs() < absent_until_ms_) return false;
    absent_until_ms_ = 0;
    return true;
  }
  [[nodiscard]] int Plugging() const { return plugging_; }

  int Out(int plugging, const unsigned char* data, int length, int* moved, unsigned timeout_ms) {
    if (!IsPlugged() || plugging != plugging_) return LIBUSB_ERROR_NO_DEVICE;
    const terminal::faults::Transfer transfer = line_.NextOut();
    if (transfer.fate == TransferFate::kUnplugs) return Unplug();
    if (transfer.fate == TransferFate::kFails) return LIBUSB_ERROR_PIPE;
    const bool hangs = transfer.fate == TransferFate::kHangs;
    *moved = hangs ? static_cast<int>(transfer.part * length) : length;
    Receive({data, static_cast<std::size_t>(*moved)});
    if (!hangs) return 0;
    Pass(NowMs() + timeout_ms);
    traffic_.stalled_ms += timeout_ms;
    return LIBUSB_ERROR_TIMEOUT;
  }

  int In(int plugging, unsigned char* data, int length, int* moved, unsigned timeout_ms) {
    if (!IsPlugged() || plugging != plugging_) return LIBUSB_ERROR_NO_DEVICE;
    const TransferFate fate = line_.NextIn().fate;
    if (fate == TransferFate::kUnplugs) return Unplug();
    if (fate == TransferFate::kFails) return LIBUSB_ERROR_PIPE;
    const std::int64_t until = NowMs() + timeout_ms;
    while (fate != TransferFate::kHangs && reports_.empty() && PassToDeadline(until)) {
    }
    if (fate == TransferFate::kHangs || reports_.empty()) {
      Pass(until);
      return LIBUSB_ERROR_TIMEOUT;
    }
    *moved = std::min(static_cast<int>(kReport), length);
    std::copy_n(reports_.front().begin(), *moved, data);
    reports_.pop_front();
    ++traffic_.reports;
    return *moved < static_cast<int>(kReport) ? LIBUSB_ERROR_OVERFLOW : 0;
  }

  Traffic TakeTraffic() { return std::exchange(traffic_, {}); }

 private:
  [[nodiscard]] Time DeviceTime() const { return Time(NowMs() - start_ms_); }

  int Unplug() {
    absent_until_ms_ = NowMs() + kAbsenceMs;
    ++plugging_;
    reports_.clear();
    return LIBUSB_ERROR_NO_DEVICE;
  }

  void Receive(std::span<const unsigned char> bytes) {
    for (; !bytes.empty(); bytes = bytes.subspan(std::min(bytes.size(), kReport)))
      line_.Receive(bytes.first(std::min(bytes.size(), kReport)), DeviceTime());
    Collect();
  }

  void Pass(std::int64_t until_ms) {
    AdvanceMs(until_ms - NowMs());
    line_.Advance(DeviceTime());
    Collect();
  }

  // False when nothing will happen before `until_ms`.
  bool PassToDeadline(std::int64_t until_ms) {
    const std::optional<Time> deadline = line_.NextDeadline();
    if (!deadline || deadline->count() + start_ms_ > until_ms) return false;
    Pass(std::max<std::int64_t>(deadline->count() + start_ms_, NowMs()));
    return true;
  }

  void Collect() {
    if (line_.TakeWithdrawal()) reports_.clear();
    while (const std::optional<Bytes> answer = line_.TakeAnswer()) {
      for (std::size_t at = 0; at < answer->size(); at += kReport) {
        const auto first = answer->begin() + static_cast<std::ptrdiff_t>(at);
        Bytes report(first, first + static_cast<std::ptrdiff_t>(std::min(kReport, answer->size() - at)));
        report.resize(kReport);
        if (reports_.size() >= kMaxReports) reports_.pop_front();
        reports_.push_back(std::move(report));
      }
    }
  }

  terminal::faults::FaultyLine& line_;
  std::int64_t start_ms_;
  std::deque<Bytes> reports_;
  std::int64_t absent_until_ms_ = 0;
  int plugging_ = 0;
  Traffic traffic_;
};

struct State {
  std::unique_ptr<Bus> bus;
  std::function<void()> hook;
  libusb_device device;
  int open = 0;
  int lists = 0;
};

// Made on first use: the load hook comes early.
State& The() {
  static State s_state;
  return s_state;
}

int Move(libusb_device_handle* handle, unsigned char endpoint, unsigned char* data, int length, int* moved,
         unsigned timeout_ms) {
  *moved = 0;
  if (The().hook) The().hook();
  if ((endpoint & 0x80U) != 0) return The().bus->In(handle->plugging, data, length, moved, timeout_ms);
  return The().bus->Out(handle->plugging, data, length, moved, timeout_ms);
}

}  // namespace

void PlugInstantTerminal(terminal::faults::FaultyLine& line) {
  The().bus = std::make_unique<Bus>(line);
}

void OnInstantTransfer(std::function<void()> hook) {
  The().hook = std::move(hook);
}

Traffic TakeInstantTraffic() {
  return The().bus->TakeTraffic();
}

int InstantUsbLeftovers() {
  return The().open + The().lists;
}

}  // namespace gwq::test

using gwq::test::Move;
using gwq::test::The;

extern "C" {

int libusb_init(libusb_context**) {
  return 0;
}

void libusb_exit(libusb_context*) {}

ssize_t libusb_get_device_list(libusb_context*, libusb_device*** list) {
  const bool there = The().bus != nullptr && The().bus->IsPlugged();
  *list = new libusb_device* [2] { there ? &The().device : nullptr, nullptr };
  ++The().lists;
  return there ? 1 : 0;
}

void libusb_free_device_list(libusb_device** list, int) {
  delete[] list;
  --The().lists;
}

int libusb_get_device_descriptor(libusb_device*, libusb_device_descriptor* descriptor) {
  *descriptor = {};
  descriptor->idVendor = static_cast<std::uint16_t>(gwq::kUsbIdentities[0].vid);
  descriptor->idProduct = static_cast<std::uint16_t>(gwq::kUsbIdentities[0].pid);
  return 0;
}

std::uint8_t libusb_get_bus_number(libusb_device*) {
  return 1;
}

std::uint8_t libusb_get_device_address(libusb_device*) {
  return 5;
}

int libusb_get_port_numbers(libusb_device*, std::uint8_t* ports, int room) {
  if (room < 1) return LIBUSB_ERROR_OVERFLOW;
  ports[0] = 1;
  return 1;
}

int libusb_open(libusb_device*, libusb_device_handle** handle) {
  *handle = new libusb_device_handle{The().bus->Plugging()};
  ++The().open;
  return 0;
}

void libusb_close(libusb_device_handle* handle) {
  delete handle;
  --The().open;
}

int libusb_kernel_driver_active(libusb_device_handle*, int) {
  return 1;
}

int libusb_detach_kernel_driver(libusb_device_handle*, int) {
  return 0;
}

int libusb_claim_interface(libusb_device_handle*, int) {
  return 0;
}

int libusb_bulk_transfer(libusb_device_handle* handle, unsigned char endpoint, unsigned char* data,
                         int length, int* transferred, unsigned timeout_ms) {
  return Move(handle, endpoint, data, length, transferred, timeout_ms);
}

int libusb_interrupt_transfer(libusb_device_handle* handle, unsigned char endpoint, unsigned char* data,
                              int length, int* transferred, unsigned timeout_ms) {
  return Move(handle, endpoint, data, length, transferred, timeout_ms);
}

}  // extern "C"
