// SPDX-License-Identifier: MIT
// What a customer writes on the pad.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace gwq::terminal::device {

struct PenPoint {
  int x = 0;         // pixels from the left of the signing area
  int y = 0;         // pixels from its top
  int pressure = 0;  // 1 to kMaxPressure; 0 where the pen leaves the pad
  int time_ms = 0;   // since the pen first touched it
};

inline constexpr int kSignatureWidth = 480;
inline constexpr int kSignatureHeight = 160;
inline constexpr int kMaxPressure = 1023;
inline constexpr std::size_t kMaxPenPoints = 10'000;  // of one signature

// Always the same one, of three strokes.
[[nodiscard]] std::vector<PenPoint> DefaultSignature();

// A line for each point: "x,y,pressure,time_ms".
[[nodiscard]] std::string StrokeText(const std::vector<PenPoint>& points);

}  // namespace gwq::terminal::device
