// SPDX-License-Identifier: MIT
#include "links/internal/terminal_places.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>

#include <gwq/status_codes.h>
#include "links/internal/device_holder.h"
#include "usb_ids.h"

namespace gwq {
namespace {

constexpr int kHexadecimal = 16;
constexpr int kDecimal = 10;

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

// The entries of the kernel's list of USB devices.
class UsbEntries {
 public:
  explicit UsbEntries(const char* root) {
    std::snprintf(path_.data(), path_.size(), "%s/sys/bus/usb/devices", root);
    entries_.reset(opendir(path_.data()));
  }

  // NULL after the last one.
  const char* Next() {
    const dirent* const entry =
        entries_ == nullptr ? nullptr : readdir(entries_.get());  // NOLINT(concurrency-mt-unsafe): our own
    return entry == nullptr ? nullptr : static_cast<const char*>(entry->d_name);
  }

  // 0 for an attribute that is not there, as where the device has just been unplugged.
  [[nodiscard]] int Number(const char* entry, const char* attribute, int base) const {
    std::array<char, 1024> path{};
    std::array<char, 32> text{};
    std::snprintf(path.data(), path.size(), "%s/%.255s/%s", path_.data(), entry, attribute);
    std::FILE* const file = std::fopen(path.data(), "re");
    if (file == nullptr) return 0;
    const bool read = std::fgets(text.data(), static_cast<int>(text.size()), file) != nullptr;
    std::fclose(file);
    return read ? static_cast<int>(std::strtol(text.data(), nullptr, base)) : 0;
  }

 private:
  std::array<char, 256> path_{};
  Directory entries_;
};

bool IsIdentity(int vendor, int product) {
  return std::any_of(std::begin(kUsbIdentities), std::end(kUsbIdentities), [=](const UsbIdentity& identity) {
    return identity.vid == vendor && identity.pid == product;
  });
}

// Bus 0 where the entry is no terminal.
GwqTerminalPlace PlaceOf(const UsbEntries& entries, const char* entry) {
  GwqTerminalPlace place{};
  if (std::strchr(entry, ':') != nullptr) return place;  // an interface
  place.vendor = entries.Number(entry, "idVendor", kHexadecimal);
  if (place.vendor == 0) return place;
  place.product = entries.Number(entry, "idProduct", kHexadecimal);
  if (!IsIdentity(place.vendor, place.product)) return place;
  place.address = entries.Number(entry, "devnum", kDecimal);
  place.bus = entries.Number(entry, "busnum", kDecimal);
  std::snprintf(place.port_path, sizeof place.port_path, "%.31s", entry);
  return place;
}

bool IsBefore(const GwqTerminalPlace& one, const GwqTerminalPlace& other) {
  return one.bus != other.bus ? one.bus < other.bus : one.address < other.address;
}

// Keeps the first ones in order; `count` are there.
void Insert(const GwqTerminalPlace& place, std::span<GwqTerminalPlace> places, std::size_t count) {
  const auto used = places.first(std::min(count, places.size()));
  const auto at = std::upper_bound(used.begin(), used.end(), place, &IsBefore);
  const auto index = static_cast<std::size_t>(at - used.begin());
  if (index == places.size()) return;
  const auto end = places.begin() + static_cast<std::ptrdiff_t>(std::min(count + 1, places.size()));
  std::move_backward(places.begin() + static_cast<std::ptrdiff_t>(index), end - 1, end);
  places[index] = place;
}

// As the kernel decides when the device is opened: by the effective user. Most hosts have no other,
// and access is also understood by what plays a system's files to a program.
bool MayOpen(const char* node) {
  constexpr int kMode = R_OK | W_OK;
  const bool is_real = geteuid() == getuid() && getegid() == getgid();
  return (is_real ? access(node, kMode) : faccessat(AT_FDCWD, node, kMode, AT_EACCESS)) == 0;
}

void AddAccess(const char* root, GwqTerminalPlace& place) {
  const NodePath node = UsbNode(place.bus, place.address, root);
  place.may_open = MayOpen(node.data()) ? 1 : 0;
  const Holder holder = FindHolder(node.data());
  place.holder = holder.pid;
  std::memcpy(place.holder_name, holder.name.data(), sizeof place.holder_name);
}

}  // namespace

int ListTerminals(const char* root, std::span<GwqTerminalPlace> places) {
  UsbEntries entries(root);
  std::size_t count = 0;
  while (const char* const entry = entries.Next()) {
    const GwqTerminalPlace place = PlaceOf(entries, entry);
    if (place.bus == 0) continue;
    Insert(place, places, count);
    ++count;
  }
  for (GwqTerminalPlace& place : places.first(std::min(count, places.size()))) AddAccess(root, place);
  return static_cast<int>(count);
}

}  // namespace gwq

using namespace gwq;

int GWQ_FindTerminals(GwqTerminalPlace* places, int room) {
  if (room < 0 || (places == nullptr && room > 0)) return GWQ_BAD_ARGUMENT;
  return ListTerminals("", {places, static_cast<std::size_t>(room)});
}
