// SPDX-License-Identifier: MIT
// What the terminal and the customer's page tell each other: JSON texts with a "type".
//
//   terminal -> page
//     unit    signature: {width, height, max_points, ...}, max_digits, max_stars, ...   first, and once
//     screen  number, kind, title, text, ..., keys, time_left_ms   what is shown
//     entry   number, what, keyed, ..., time_left_ms                the PIN pad; number 0: no entry
//     trace   lines: [{time_ms, from, text}]
//     files   paths: ["/tmp/hw.png"]
//     link    plugged, pluggable, faults: "seed=7,drop=1,..."
//   page -> terminal
//     act     screen, kind (key, digits, sign, confirm, cancel, walk_away), text, strokes: [[x, y, pressure, ms]]
//     press   entry, key ("0" to "9", back, clear, enter, cancel)
//     plug    plugged
//     faults  rates: "drop=100"
//
// The page names what it answers by its number, so that a late answer never meets another
// screen. Of a PIN it only ever learns how many digits there are. page/types.d.ts has all
// members of each message.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "device/pad/entry_state.h"
#include "device/screens/customer.h"
#include "device/trace.h"
#include "faults/fault_rates.h"

namespace gwq::terminal::web {

inline constexpr std::size_t kMaxRequestSize = std::size_t{1} << 18;
inline constexpr std::size_t kMaxTraceLines = 300;  // that a page shows

struct ShownScreen {
  std::uint64_t number = 0;
  device::Screen screen;
  Time time_left{0};  // 0: it stays
};

// What a page has to know of the unit before it shows anything.
[[nodiscard]] std::string UnitMessage();
[[nodiscard]] std::string ScreenMessage(const ShownScreen& shown);
[[nodiscard]] std::string EntryMessage(const std::optional<device::EntryState>& entry, Time now);
[[nodiscard]] std::string TraceMessage(const std::vector<device::TraceEvent>& events);
[[nodiscard]] std::string FilesMessage(const std::vector<std::string>& paths);
[[nodiscard]] std::string LinkMessage(bool plugged, bool pluggable, const faults::FaultRates& rates);

struct ActRequest {
  std::uint64_t screen = 0;
  device::ScreenAction action;
};
struct PressRequest {
  std::uint64_t entry = 0;
  device::PadKey key;
};
struct PlugRequest {
  bool plugged = false;
};
struct FaultsRequest {
  faults::FaultRates rates;
};
using PageRequest = std::variant<ActRequest, PressRequest, PlugRequest, FaultsRequest>;

// Nothing when it is none, or asks for what no customer can do.
[[nodiscard]] std::optional<PageRequest> ReadPageRequest(std::string_view message);

}  // namespace gwq::terminal::web
