// SPDX-License-Identifier: MIT
// A terminal whose customer, files and pictures the test sees.
#pragma once

#include <string>
#include <string_view>

#include "unit/terminal/device/files/file_rig.h"

namespace gwq::terminal::test {

using namespace device;

// Pictures that tell what they show.
class TellingPainter final : public Painter {
 public:
  [[nodiscard]] std::vector<std::uint8_t> Signature(const std::vector<PenPoint>& points) const override;
  [[nodiscard]] std::vector<std::uint8_t> Picture(const Screen& screen,
                                                  const ScreenKey* pressed) const override;
};

ScreenAction Does(ScreenAction::Kind kind, std::string text = {}, Time after = 100ms);
ScreenAction Leaves();

class ScreenRig {
 public:
  explicit ScreenRig(Line line = Line::kUsb, Settings settings = {}, FileSystem* keys = nullptr)
      : rig(line, std::move(settings), {&store, {}, keys}, &painter) {}

  // What the terminal answers to a command once the customer has done `action`;
  // nothing may be answered before.
  std::string Ask(std::string_view command, ScreenAction action);
  // The same when nobody is there, and the screen closes after `seconds`.
  std::string AskNobody(std::string_view command, int seconds);
  // Shows a screen that stays for now, and returns it.
  Screen Shown(std::string_view command);
  void Put(const std::string& path, std::string_view content = "x") { store.files[path] = content; }
  const Screen& Now() { return rig.device().CurrentScreen(); }

  MemoryFiles store;
  TellingPainter painter;
  Rig rig;
};

std::string SplitText(std::string_view text);

}  // namespace gwq::terminal::test
