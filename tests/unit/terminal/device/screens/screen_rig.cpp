// SPDX-License-Identifier: MIT
#include "unit/terminal/device/screens/screen_rig.h"

#include <utility>

namespace gwq::terminal::test {

using namespace device;

std::vector<std::uint8_t> TellingPainter::Signature(const std::vector<PenPoint>& points) const {
  return ToBytes("signature of " + std::to_string(points.size()) + " points");
}
std::vector<std::uint8_t> TellingPainter::Picture(const Screen& screen, const ScreenKey* pressed) const {
  return ToBytes("picture of " + screen.text + ", " + (pressed == nullptr ? "no key" : pressed->label) +
                 " pressed");
}

ScreenAction Does(ScreenAction::Kind kind, std::string text, Time after) {
  return {kind, std::move(text), {}, after};
}
ScreenAction Leaves() {
  return {ScreenAction::Kind::kWalkAway, {}, {}, {}};
}

std::string ScreenRig::Ask(std::string_view command, ScreenAction action) {
  const Time after = action.after;
  rig.customer.responses = {std::move(action)};
  rig.Send(command);
  rig.Wait(after - 50ms);
  EXPECT_EQ(rig.Answer(), "(none)") << "before the customer did anything";
  rig.Wait(50ms);
  std::string answer = rig.Answer();
  EXPECT_EQ(rig.Answer(), "(none)") << "a second answer";
  EXPECT_EQ(Now().kind, ScreenKind::kIdle);
  return answer;
}

std::string ScreenRig::AskNobody(std::string_view command, int seconds) {
  rig.customer.responses = {Leaves()};
  rig.Send(command);
  rig.Wait(std::chrono::seconds(seconds) - 50ms);
  EXPECT_EQ(rig.Answer(), "(none)") << "before the time was up";
  EXPECT_NE(Now().kind, ScreenKind::kIdle);
  rig.Wait(50ms);
  EXPECT_EQ(Now().kind, ScreenKind::kIdle);
  return rig.Answer();
}

Screen ScreenRig::Shown(std::string_view command) {
  rig.customer.responses = {Leaves()};
  rig.Send(command);
  EXPECT_EQ(rig.Answer(), "(none)");
  return Now();
}

std::string SplitText(std::string_view text) {
  return Split(ToBytes(text));
}

}  // namespace gwq::terminal::test
