// SPDX-License-Identifier: MIT
// Faults of the terminal's files, from a JSON file. All members may be missing.
//
//   {
//     "refuse": ["HIDCHANGE", "data:2"],   // answered by STX 'U' ETX
//     "fail": ["end"],                     // answered by STX 0xAA '1' ETX
//     "ignore": ["start"],                 // not answered
//     "storage_limit": 1000000,            // bytes in all the terminal's files
//     "accept_cut_packets": true,          // packets without length or payload count as good
//     "pull": {
//       "bad_check": ["data:1", "end"],    // wrong check bytes
//       "announce_length": 256001,         // in the header of the first packet
//       "packet_type": 4,                  // in the header of the first packet
//       "stop_after_reports": 3,           // then silence
//       "empty_packets_first": [0, 1]      // types of packets that come before the file's
//     }
//   }
//
// A step such as "data" means each time, "data:2" the second time; the names of
// the steps stand in device/file_faults.h. Comments in the manner of C++ are allowed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/json_script.h"
#include "device/files/file_faults.h"

namespace gwq::terminal::faults {

struct FaultScript {
  device::FileFaults faults;
  std::optional<std::uint64_t> storage_limit;
};

// These throw std::runtime_error, telling what is wrong.
[[nodiscard]] FaultScript ReadFaults(const Json& script);
[[nodiscard]] FaultScript ParseFaults(const std::string& json);

// The same from a file, which the message names.
[[nodiscard]] FaultScript LoadFaults(const std::string& path);

}  // namespace gwq::terminal::faults
