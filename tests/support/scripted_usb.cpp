// SPDX-License-Identifier: MIT
#include "support/scripted_usb.h"

#include <gtest/gtest.h>
#include <libusb-1.0/libusb.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <deque>
#include <mutex>
#include <optional>

#include "support/test_clock.h"
#include "usb_ids.h"

struct libusb_device {
  gwq::test::UsbDevice traits;
};

struct libusb_device_handle {
  gwq::test::UsbDevice traits;
  bool claimed = false;
};

namespace gwq::test {
namespace {

struct Step {
  bool expected;  // out, else an answer
  Bytes bytes;
  int empty = 0;
  int result = 0;
};

struct OutPlan {
  int count;
  int result;
};

constexpr int kOutTimeoutMs = 1000;

std::string Described(const Step& step) {
  return std::string(step.expected ? "expected from the host: " : "answer not fetched: ") +
         Readable(step.bytes);
}

}  // namespace

struct ScriptedUsb::State {
  mutable std::mutex mutex;
  std::vector<UsbDevice> devices;
  std::optional<ssize_t> listing;
  int init_result = 0;
  std::optional<int> claim;
  bool unplugged = false;
  bool conversation = false;
  std::deque<Step> steps;
  std::deque<OutPlan> out_plans;
  std::function<void(const Transfer&)> hook;
  int ins = 0;
  int outs = 0;
  Bytes sent;
  std::vector<std::string> calls;
  std::vector<std::string> faults;
  std::vector<std::unique_ptr<libusb_device_handle>> handles;
  std::vector<std::unique_ptr<libusb_device*[]>> lists;

  void Call(std::string text) { calls.push_back(std::move(text)); }
  void Fault(std::string text) { faults.push_back(std::move(text)); }

  libusb_device_handle* Handle(libusb_device_handle* handle, const char* where) {
    for (const auto& open : handles) {
      if (open.get() == handle) return handle;
    }
    Fault(std::string(where) + " on a handle that is not open");
    return nullptr;
  }

  [[nodiscard]] bool IsListed(const libusb_device* device) const {
    for (const auto& list : lists) {
      for (libusb_device** each = list.get(); *each != nullptr; ++each) {
        if (*each == device) return true;
      }
    }
    return false;
  }

  ssize_t List(libusb_device*** out) {
    const auto count = listing.value_or(unplugged ? 0 : static_cast<ssize_t>(devices.size()));
    *out = nullptr;
    if (count < 0) return count;
    const std::size_t size = listing || unplugged ? 0 : devices.size();
    auto list = std::make_unique<libusb_device*[]>(size + 1);
    for (std::size_t i = 0; i < size; ++i) list[i] = new libusb_device{devices[i]};
    *out = list.get();
    lists.push_back(std::move(list));
    return count;
  }

  void Free(libusb_device** list, int unreference) {
    const auto found =
        std::find_if(lists.begin(), lists.end(), [list](const auto& l) { return l.get() == list; });
    if (found == lists.end()) return Fault("a list freed that is not there");
    if (unreference != 1) Fault("a list freed without unreferencing");
    for (libusb_device** each = list; *each != nullptr; ++each) delete *each;
    lists.erase(found);
  }

  // The host's bytes against what was expected of it.
  void Check(const Bytes& bytes) {
    if (!conversation || bytes.empty()) return;
    if (steps.empty()) return Fault("sent beyond the end of the conversation: " + Readable(bytes));
    Step& step = steps.front();
    if (!step.expected) {
      return Fault("sent " + Readable(bytes) + "\n    while this waited to be read: " + Readable(step.bytes));
    }
    const auto differ = std::mismatch(bytes.begin(), bytes.end(), step.bytes.begin(), step.bytes.end());
    if (differ.first == bytes.end()) {
      step.bytes.erase(step.bytes.begin(), step.bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size()));
      if (step.bytes.empty()) steps.pop_front();
      return;
    }
    Fault("the host sent the wrong bytes, first at offset " + std::to_string(differ.first - bytes.begin()) +
          "\n    expected " + Readable(step.bytes) + "\n    sent     " + Readable(bytes));
    steps.pop_front();
  }

  int Out(const unsigned char* data, int length, int* moved) {
    if (unplugged) return LIBUSB_ERROR_NO_DEVICE;
    OutPlan plan{length, 0};
    if (!out_plans.empty()) {
      plan = out_plans.front();
      out_plans.pop_front();
    }
    *moved = std::min(plan.count, length);
    const Bytes bytes(data, data + *moved);
    sent.insert(sent.end(), bytes.begin(), bytes.end());
    Check(bytes);
    if (*moved == 0 && plan.result == LIBUSB_ERROR_TIMEOUT) AdvanceMs(kOutTimeoutMs);
    return plan.result;
  }

  static int Nothing(unsigned timeout_ms) {
    AdvanceMs(timeout_ms);
    return LIBUSB_ERROR_TIMEOUT;
  }

  int In(unsigned char* data, int length, unsigned timeout_ms, int* moved) {
    if (unplugged) return LIBUSB_ERROR_NO_DEVICE;
    if (steps.empty() || steps.front().expected) return Nothing(timeout_ms);
    if (steps.front().empty > 0) {
      --steps.front().empty;
      return Nothing(timeout_ms);
    }
    const Step step = std::move(steps.front());
    steps.pop_front();
    *moved = std::min(static_cast<int>(step.bytes.size()), length);
    std::copy_n(step.bytes.begin(), *moved, data);
    return step.result;
  }
};

namespace {

// Neither needs an initialiser: the load hook comes before them.
constinit std::mutex g_current_mutex;
constinit std::shared_ptr<ScriptedUsb::State>* g_current = nullptr;
constinit std::atomic<int> g_inits = 0;
constinit std::atomic<int> g_exits = 0;
constinit thread_local int t_inside = 0;

struct Inside {
  Inside() { ++t_inside; }
  ~Inside() { --t_inside; }
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;
};

std::shared_ptr<ScriptedUsb::State> Current() {
  const std::lock_guard lock(g_current_mutex);
  return g_current == nullptr ? nullptr : *g_current;
}

std::string Ids(const UsbDevice& device) {
  char text[16];
  std::snprintf(text, sizeof text, "%04x:%04x", static_cast<unsigned>(device.vid) & 0xFFFFU,
                static_cast<unsigned>(device.pid) & 0xFFFFU);
  return text;
}

std::string TransferCall(bool in, unsigned char endpoint, int length, unsigned timeout_ms) {
  char text[64];
  std::snprintf(text, sizeof text, "%s 0x%02x %d %ums", in ? "in" : "out", endpoint, length, timeout_ms);
  return text;
}

// What a transfer of either kind is asked for.
struct Request {
  unsigned char endpoint;
  unsigned char* data;
  int length;
  unsigned timeout_ms;
  std::string kind = {};
};

int Move(libusb_device_handle* handle, const Request& request, int* transferred) {
  const Inside inside;
  const bool in = (request.endpoint & 0x80U) != 0;
  *transferred = 0;
  const auto usb = Current();
  if (usb == nullptr) return LIBUSB_ERROR_NO_DEVICE;
  std::unique_lock lock(usb->mutex);
  usb->Call(request.kind + TransferCall(in, request.endpoint, request.length, request.timeout_ms));
  const Transfer transfer{in, in ? usb->ins++ : usb->outs++};
  if (const auto hook = usb->hook) {
    lock.unlock();
    hook(transfer);
    lock.lock();
  }
  if (usb->Handle(handle, "transfer") == nullptr) return LIBUSB_ERROR_NO_DEVICE;
  if (!handle->claimed) usb->Fault("a transfer on an interface that is not claimed");
  const int result = in ? usb->In(request.data, request.length, request.timeout_ms, transferred)
                        : usb->Out(request.data, request.length, transferred);
  *transferred = usb->claim.value_or(*transferred);
  usb->claim.reset();
  return result;
}

}  // namespace

ScriptedUsb::ScriptedUsb() : state_(std::make_shared<State>()) {
  const std::lock_guard lock(g_current_mutex);
  g_current = &state_;
}

ScriptedUsb::~ScriptedUsb() {
  {
    const std::lock_guard lock(g_current_mutex);
    g_current = nullptr;
  }
  const std::lock_guard lock(state_->mutex);
  for (const std::string& fault : state_->faults) ADD_FAILURE() << fault;
  for (const Step& step : state_->steps) ADD_FAILURE() << Described(step);
  EXPECT_EQ(state_->out_plans.size(), 0U) << "planned transfers out that were not made";
  EXPECT_EQ(state_->handles.size(), 0U) << "devices left open";
  EXPECT_EQ(state_->lists.size(), 0U) << "device lists not freed";
}

ScriptedUsb& ScriptedUsb::Plug(const UsbDevice& device) {
  const std::lock_guard lock(state_->mutex);
  state_->devices.push_back(device);
  return *this;
}

ScriptedUsb& ScriptedUsb::PlugTerminal() {
  return Plug({.vid = kUsbIdentities[0].vid, .pid = kUsbIdentities[0].pid});
}

void ScriptedUsb::Unplug() {
  const std::lock_guard lock(state_->mutex);
  state_->unplugged = true;
}

void ScriptedUsb::FailInit(int result) {
  const std::lock_guard lock(state_->mutex);
  state_->init_result = result;
}

void ScriptedUsb::FailListing(ssize_t result) {
  const std::lock_guard lock(state_->mutex);
  state_->listing = result;
}

ScriptedUsb& ScriptedUsb::Expect(const Bytes& bytes) {
  const std::lock_guard lock(state_->mutex);
  state_->conversation = true;
  if (!bytes.empty()) state_->steps.push_back({.expected = true, .bytes = bytes});
  return *this;
}

ScriptedUsb& ScriptedUsb::ExpectCommand(std::string_view command) {
  for (const Bytes& report : CutIntoReports(BytesOf(command))) Expect(report);
  return *this;
}

ScriptedUsb& ScriptedUsb::Answer(const Bytes& bytes, int empty) {
  const std::lock_guard lock(state_->mutex);
  state_->steps.push_back({.expected = false, .bytes = bytes, .empty = empty});
  return *this;
}

ScriptedUsb& ScriptedUsb::AnswerReport(std::string_view text, int empty) {
  return Answer(PaddedToReports(BytesOf(text)), empty);
}

ScriptedUsb& ScriptedUsb::AnswerWithResult(const Bytes& bytes, int result) {
  const std::lock_guard lock(state_->mutex);
  state_->steps.push_back({.expected = false, .bytes = bytes, .result = result});
  return *this;
}

ScriptedUsb& ScriptedUsb::NextOutMoves(int count, int result) {
  const std::lock_guard lock(state_->mutex);
  state_->out_plans.push_back({count, result});
  return *this;
}

ScriptedUsb& ScriptedUsb::NextClaims(int count) {
  const std::lock_guard lock(state_->mutex);
  state_->claim = count;
  return *this;
}

void ScriptedUsb::OnTransfer(std::function<void(const Transfer&)> hook) {
  const std::lock_guard lock(state_->mutex);
  state_->hook = std::move(hook);
}

Bytes ScriptedUsb::Sent() const {
  const std::lock_guard lock(state_->mutex);
  return state_->sent;
}

std::vector<std::string> ScriptedUsb::Calls() const {
  const std::lock_guard lock(state_->mutex);
  return state_->calls;
}

int ScriptedUsb::Count(std::string_view prefix) const {
  const std::lock_guard lock(state_->mutex);
  return static_cast<int>(
      std::count_if(state_->calls.begin(), state_->calls.end(),
                    [prefix](const std::string& call) { return call.starts_with(prefix); }));
}

bool ScriptedUsb::Finished() const {
  const std::lock_guard lock(state_->mutex);
  return state_->steps.empty();
}

int UsbInits() {
  return g_inits;
}

int UsbExits() {
  return g_exits;
}

bool InsideScriptedUsb() {
  return t_inside > 0;
}

}  // namespace gwq::test

using gwq::test::Current;
using gwq::test::Ids;
using gwq::test::Inside;

extern "C" {

int libusb_init(libusb_context** context) {
  const Inside inside;
  int result = 0;
  if (const auto usb = Current()) {
    const std::lock_guard lock(usb->mutex);
    usb->Call("init");
    result = usb->init_result;
  }
  if (context == nullptr && result == 0) ++gwq::test::g_inits;
  return result;
}

void libusb_exit(libusb_context* context) {
  const Inside inside;
  if (const auto usb = Current()) {
    const std::lock_guard lock(usb->mutex);
    usb->Call("exit");
  }
  if (context == nullptr) ++gwq::test::g_exits;
}

ssize_t libusb_get_device_list(libusb_context*, libusb_device*** list) {
  const Inside inside;
  const auto usb = Current();
  if (usb == nullptr) return 0;
  const std::lock_guard lock(usb->mutex);
  usb->Call("list");
  return usb->List(list);
}

void libusb_free_device_list(libusb_device** list, int unreference) {
  const Inside inside;
  const auto usb = Current();
  if (usb == nullptr) return;
  const std::lock_guard lock(usb->mutex);
  usb->Call("free_list");
  usb->Free(list, unreference);
}

int libusb_get_device_descriptor(libusb_device* device, libusb_device_descriptor* descriptor) {
  const Inside inside;
  // Filled even on failure: whoever does not look at the result would take it for a match.
  *descriptor = {};
  descriptor->idVendor = static_cast<std::uint16_t>(device->traits.vid);
  descriptor->idProduct = static_cast<std::uint16_t>(device->traits.pid);
  return device->traits.descriptor_result;
}

std::uint8_t libusb_get_bus_number(libusb_device* device) {
  return static_cast<std::uint8_t>(device->traits.bus);
}

std::uint8_t libusb_get_device_address(libusb_device* device) {
  return static_cast<std::uint8_t>(device->traits.address);
}

int libusb_get_port_numbers(libusb_device* device, std::uint8_t* ports, int room) {
  const auto& way = device->traits.ports;
  const auto depth = std::find(way.begin(), way.end(), std::uint8_t{0}) - way.begin();
  if (depth > room) return LIBUSB_ERROR_OVERFLOW;
  std::copy_n(way.begin(), depth, ports);
  return static_cast<int>(depth);
}

int libusb_open(libusb_device* device, libusb_device_handle** handle) {
  const Inside inside;
  const auto usb = Current();
  if (usb == nullptr) return LIBUSB_ERROR_OTHER;
  const std::lock_guard lock(usb->mutex);
  if (!usb->IsListed(device)) {
    usb->Fault("a device opened that is in no list");
    return LIBUSB_ERROR_OTHER;
  }
  usb->Call("open " + Ids(device->traits));
  if (device->traits.open_result != 0) return device->traits.open_result;
  usb->handles.push_back(std::make_unique<libusb_device_handle>(libusb_device_handle{device->traits}));
  *handle = usb->handles.back().get();
  return 0;
}

void libusb_close(libusb_device_handle* handle) {
  const Inside inside;
  const auto usb = Current();
  if (usb == nullptr) return;
  const std::lock_guard lock(usb->mutex);
  usb->Call("close");
  if (usb->Handle(handle, "close") == nullptr) return;
  std::erase_if(usb->handles, [handle](const auto& open) { return open.get() == handle; });
}

int libusb_kernel_driver_active(libusb_device_handle* handle, int interface) {
  const Inside inside;
  const auto usb = Current();
  if (usb == nullptr) return LIBUSB_ERROR_OTHER;
  const std::lock_guard lock(usb->mutex);
  usb->Call("driver_active " + std::to_string(interface));
  return usb->Handle(handle, "driver_active") == nullptr ? LIBUSB_ERROR_OTHER : handle->traits.driver_active;
}

int libusb_detach_kernel_driver(libusb_device_handle* handle, int interface) {
  const Inside inside;
  const auto usb = Current();
  if (usb == nullptr) return LIBUSB_ERROR_OTHER;
  const std::lock_guard lock(usb->mutex);
  usb->Call("detach " + std::to_string(interface));
  return usb->Handle(handle, "detach") == nullptr ? LIBUSB_ERROR_OTHER : handle->traits.detach_result;
}

int libusb_attach_kernel_driver(libusb_device_handle*, int interface) {
  const Inside inside;
  const auto usb = Current();
  if (usb == nullptr) return LIBUSB_ERROR_OTHER;
  const std::lock_guard lock(usb->mutex);
  usb->Call("attach " + std::to_string(interface));
  return 0;
}

int libusb_claim_interface(libusb_device_handle* handle, int interface) {
  const Inside inside;
  const auto usb = Current();
  if (usb == nullptr) return LIBUSB_ERROR_OTHER;
  const std::lock_guard lock(usb->mutex);
  usb->Call("claim " + std::to_string(interface));
  if (usb->Handle(handle, "claim") == nullptr) return LIBUSB_ERROR_OTHER;
  handle->claimed = handle->traits.claim_result == 0;
  return handle->traits.claim_result;
}

int libusb_release_interface(libusb_device_handle*, int interface) {
  const Inside inside;
  const auto usb = Current();
  if (usb == nullptr) return LIBUSB_ERROR_OTHER;
  const std::lock_guard lock(usb->mutex);
  usb->Call("release " + std::to_string(interface));
  return 0;
}

int libusb_bulk_transfer(libusb_device_handle* handle, unsigned char endpoint, unsigned char* data,
                         int length, int* transferred, unsigned timeout_ms) {
  return gwq::test::Move(handle, {endpoint, data, length, timeout_ms}, transferred);
}

int libusb_interrupt_transfer(libusb_device_handle* handle, unsigned char endpoint, unsigned char* data,
                              int length, int* transferred, unsigned timeout_ms) {
  return gwq::test::Move(handle, {endpoint, data, length, timeout_ms, "interrupt "}, transferred);
}

}  // extern "C"
