// SPDX-License-Identifier: MIT
#include "device/screens/pen.h"

#include <cmath>
#include <cstddef>

namespace gwq::terminal::device {
namespace {

constexpr int kSampleMs = 8;
constexpr int kPenUpMs = 120;
constexpr double kTurn = 6.283185307179586;

// One stroke: loops along a line that leans, like writing.
struct Stroke {
  int samples;
  double x, y;    // where it starts
  double dx, dy;  // how far it goes
  double loops, height;
};

void Add(std::vector<PenPoint>& points, const Stroke& stroke) {
  int time = points.empty() ? 0 : points.back().time_ms + kPenUpMs;
  for (int i = 0; i <= stroke.samples; ++i) {
    const double part = static_cast<double>(i) / stroke.samples;
    const double angle = part * stroke.loops * kTurn;
    const double x = stroke.x + stroke.dx * part + stroke.height * 0.4 * std::sin(angle * 2);
    const double y = stroke.y + stroke.dy * part - stroke.height * std::sin(angle);
    const int pressure = i == stroke.samples ? 0 : 400 + static_cast<int>(300 * std::cos(angle));
    points.push_back({static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)), pressure, time});
    time += kSampleMs;
  }
}

}  // namespace

std::vector<PenPoint> DefaultSignature() {
  std::vector<PenPoint> points;
  Add(points, {90, 50, 100, 150, -10, 3, 45});
  Add(points, {120, 210, 95, 190, -15, 5, 30});
  Add(points, {40, 60, 140, 370, -12, 0.5, 6});
  return points;
}

std::string StrokeText(const std::vector<PenPoint>& points) {
  std::string text;
  for (const PenPoint& point : points) {
    text += std::to_string(point.x) + "," + std::to_string(point.y) + "," + std::to_string(point.pressure) +
            "," + std::to_string(point.time_ms) + "\n";
  }
  return text;
}

}  // namespace gwq::terminal::device
