// SPDX-License-Identifier: MIT
// What a page says to the terminal.
#include <string_view>
#include <variant>

#include "device/screens/pen.h"
#include "require.h"
#include "web/messages.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using gwq::terminal::web::ActRequest;
  const auto request = gwq::terminal::web::ReadPageRequest({reinterpret_cast<const char*>(data), size});
  if (!request || !std::holds_alternative<ActRequest>(*request)) return 0;
  for (const auto& point : std::get<ActRequest>(*request).action.strokes)
    gwq::fuzz::Require(point.x >= 0 && point.x < gwq::terminal::device::kSignatureWidth && point.y >= 0 &&
                           point.y < gwq::terminal::device::kSignatureHeight,
                       "a point beside the screen");
  return 0;
}
