// SPDX-License-Identifier: MIT
// The part of the command line that is about recordings.
#pragma once

#include <string>
#include <vector>

#include "recording/options.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace gwq::terminal {

struct RawRecording {
  RecordOptions record;
  ReplayOptions replay;
  std::string device;
};

void AddRecordOptions(CLI::App& app, RawRecording& raw);
CLI::Option* AddReplayFile(CLI::App& app, RawRecording& raw);
void AddReplayOptions(CLI::App& app, RawRecording& raw);

[[nodiscard]] RecordOptions InterpretRecord(const RawRecording& raw);
[[nodiscard]] ReplayOptions InterpretReplay(const RawRecording& raw);

}  // namespace gwq::terminal
