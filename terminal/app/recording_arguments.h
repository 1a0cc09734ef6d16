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

namespace gwq::terminal::app {

struct RawRecording {
  recording::RecordOptions record;
  recording::ReplayOptions replay;
  std::string device;
};

void AddRecordOptions(CLI::App& app, RawRecording& raw);
CLI::Option* AddReplayFile(CLI::App& app, RawRecording& raw);
void AddReplayOptions(CLI::App& app, RawRecording& raw);

[[nodiscard]] recording::RecordOptions InterpretRecord(const RawRecording& raw);
[[nodiscard]] recording::ReplayOptions InterpretReplay(const RawRecording& raw);

}  // namespace gwq::terminal::app
