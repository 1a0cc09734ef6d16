#include "customer/signature.h"

#include <cstddef>

#include "customer/canvas.h"

namespace gwq::terminal {

std::vector<std::uint8_t> SignaturePng(const std::vector<PenPoint>& points) {
  Canvas canvas(kSignatureWidth, kSignatureHeight);
  for (std::size_t i = 1; i < points.size(); ++i) {
    const PenPoint& from = points[i - 1];
    const PenPoint& to = points[i];
    if (from.pressure > 0) canvas.Line(from.x, from.y, to.x, to.y, 1 + from.pressure / 400, 0);
  }
  return canvas.Png();
}

}  // namespace gwq::terminal
