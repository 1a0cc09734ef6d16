// SPDX-License-Identifier: MIT
// What the pages are told, and when; and what comes of what they ask for.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "unit/terminal/device/screens/screen_rig.h"
#include "web/messages.h"
#include "web/page_feed.h"
#include "web/page_requests.h"

namespace gwq::terminal::test {

using namespace device;
using namespace faults;
using namespace web;
namespace {

using Json = nlohmann::json;

constexpr const char* kStartEvaluation = "\033[4STARTEVALUTF8";

struct FeedRig {
  FeedRig() {
    screens.rig.customer.responses = {Leaves(), Leaves()};
    terminal.use = [this](const auto& action) { action(screens.rig.device(), screens.rig.now); };
    terminal.is_plugged = [this] { return plugged; };
    terminal.set_rates = [this](const FaultRates& rates) { set_rates.push_back(rates); };
  }

  static Json Parsed(const std::vector<std::string>& messages) {
    Json parsed = Json::array();
    for (const std::string& message : messages) parsed.push_back(Json::parse(message));
    return parsed;
  }
  static std::vector<std::string> Types(const Json& messages) {
    std::vector<std::string> types;
    for (const Json& message : messages) types.push_back(message.at("type"));
    return types;
  }
  Json News() { return Parsed(feed.News()); }
  std::vector<std::string> NewTypes() { return Types(News()); }
  void Happen(const char* text) { trace.Sink()({Noted{text}, 0ms}); }

  ScreenRig screens;
  bool plugged = true;
  std::vector<FaultRates> set_rates;
  PageTrace trace{[] {}};
  PageTerminal terminal;
  PageFeed feed{terminal, trace};
};

using Types = std::vector<std::string>;

TEST(PageFeed, TellsEachThingWhenItIsNew) {
  FeedRig rig;
  EXPECT_EQ(rig.NewTypes(), (Types{"screen", "entry", "link", "files", "trace"}));
  EXPECT_EQ(rig.NewTypes(), Types{});
  rig.screens.rig.Send(kStartEvaluation);
  EXPECT_EQ(rig.NewTypes(), Types{"screen"});
  rig.plugged = false;
  EXPECT_EQ(rig.NewTypes(), Types{"link"});
  rig.Happen("x");
  EXPECT_EQ(rig.NewTypes(), Types{"trace"});
  rig.screens.Put("/tmp/a.pdf");
  EXPECT_EQ(rig.NewTypes(), Types{}) << "files are read only when something happened";
  rig.Happen("x");
  EXPECT_EQ(rig.NewTypes(), (Types{"files", "trace"}));
}

TEST(PageFeed, ShowsAgainWithTheTimeThatIsLeft) {
  FeedRig rig;
  rig.screens.rig.Send(kStartEvaluation);
  const int at_first = rig.News().at(0).at("time_left_ms");
  rig.screens.rig.Wait(3s);
  EXPECT_EQ(rig.NewTypes(), Types{});
  const Json again = FeedRig::Parsed(rig.feed.ShownAgain());
  EXPECT_EQ(FeedRig::Types(again), (Types{"screen", "entry"}));
  EXPECT_EQ(again.at(0).at("time_left_ms"), at_first - 3000);
}

TEST(PageFeed, APageThatOpensLearnsTheLatestLines) {
  FeedRig rig;
  for (std::size_t i = 0; i < kMaxTraceLines + 5; ++i) rig.Happen(std::to_string(i).c_str());
  (void)rig.feed.News();
  const Json background = FeedRig::Parsed(rig.feed.Background());
  EXPECT_EQ(FeedRig::Types(background), (Types{"link", "files", "trace"}));
  const Json& lines = background.at(2).at("lines");
  ASSERT_EQ(lines.size(), kMaxTraceLines);
  EXPECT_EQ(lines.front().at("text"), "5");
}

TEST(PageRequests, AnActMeetsOnlyItsScreen) {
  FeedRig rig;
  rig.screens.rig.Send(kStartEvaluation);
  const std::uint64_t number = rig.screens.rig.device().ScreenChanges();
  CarryOut(ActRequest{number - 1, Does(ScreenAction::Kind::kConfirm)}, rig.terminal);
  EXPECT_EQ(rig.screens.rig.Answer(), "(none)");
  CarryOut(ActRequest{number, Does(ScreenAction::Kind::kConfirm)}, rig.terminal);
  EXPECT_EQ(rig.screens.rig.Answer(), "B3F");
}

TEST(PageRequests, FaultsAreSetAndTold) {
  FeedRig rig;
  (void)rig.feed.News();
  CarryOut(FaultsRequest{ParseRates("seed=7,drop=100")}, rig.terminal);
  ASSERT_EQ(rig.set_rates.size(), 1U);
  EXPECT_EQ(rig.set_rates[0].PercentOf(Fault::kDrop), 100);
  EXPECT_EQ(rig.NewTypes(), Types{"link"});
}

TEST(PageRequests, ATerminalWithoutAPlugStaysPluggedIn) {
  FeedRig rig;
  CarryOut(PlugRequest{false}, rig.terminal);
  EXPECT_TRUE(rig.plugged);
  rig.terminal.plug = [&rig](bool plugged) { rig.plugged = plugged; };
  CarryOut(PlugRequest{false}, rig.terminal);
  EXPECT_FALSE(rig.plugged);
}

}  // namespace
}  // namespace gwq::terminal::test
