// SPDX-License-Identifier: MIT
#include "picture/signature.h"

#include <cstddef>
#include <span>

#include "picture/drawing.h"

namespace gwq::terminal::picture {
namespace {

constexpr double kThinnest = 1.4;
constexpr double kPerPressure = 3.6 / device::kMaxPressure;
constexpr int kSteps = 16;  // of a curve, each as wide as the pen is there

struct Spot {
  double x;
  double y;
  double width;
};

Spot SpotOf(const device::PenPoint& point) {
  return {static_cast<double>(point.x), static_cast<double>(point.y),
          kThinnest + point.pressure * kPerPressure};
}

Spot Between(const Spot& from, const Spot& to, double part) {
  return {from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part,
          from.width + (to.width - from.width) * part};
}

void DrawLine(cairo_t* context, const Spot& from, const Spot& to) {
  cairo_set_line_width(context, (from.width + to.width) / 2);
  cairo_move_to(context, from.x, from.y);
  cairo_line_to(context, to.x, to.y);
  cairo_stroke(context);
}

// Bends towards `corner`.
void DrawCurve(cairo_t* context, const Spot& from, const Spot& corner, const Spot& to) {
  Spot last = from;
  for (int i = 1; i <= kSteps; ++i) {
    const double part = static_cast<double>(i) / kSteps;
    const Spot next = Between(Between(from, corner, part), Between(corner, to, part), part);
    DrawLine(context, last, next);
    last = next;
  }
}

// Curves from the middle of one line to the middle of the next, so that no corner shows.
void DrawStroke(cairo_t* context, std::span<const device::PenPoint> points) {
  Spot last = SpotOf(points.front());
  for (std::size_t i = 1; i + 1 < points.size(); ++i) {
    const Spot corner = SpotOf(points[i]);
    const Spot middle = Between(corner, SpotOf(points[i + 1]), 0.5);
    DrawCurve(context, last, corner, middle);
    last = middle;
  }
  DrawCurve(context, last, Between(last, SpotOf(points.back()), 0.5), SpotOf(points.back()));
}

}  // namespace

std::vector<std::uint8_t> SignaturePng(const std::vector<device::PenPoint>& points) {
  const Drawing drawing(device::kSignatureWidth, device::kSignatureHeight, Rgb(0xFFFFFF));
  drawing.SetColour(Rgb(0x000000));
  cairo_set_line_cap(drawing.Context(), CAIRO_LINE_CAP_ROUND);
  std::size_t start = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const bool ends = points[i].pressure == 0 || i + 1 == points.size();
    if (!ends) continue;
    DrawStroke(drawing.Context(), std::span(points).subspan(start, i + 1 - start));
    start = i + 1;
  }
  return drawing.Png();
}

}  // namespace gwq::terminal::picture
