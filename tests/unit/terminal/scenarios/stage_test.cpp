// SPDX-License-Identifier: MIT
// Scenarios as they are played, with a clock that the test moves.
#include "scenarios/stage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "faults/faulty_line.h"
#include "store/file_store.h"
#include "support/temp_dir.h"
#include "wire/frames.h"

namespace gwq::terminal::test {

using namespace device;
using namespace faults;
using namespace store;
using namespace scenarios;
namespace {

using testing::ElementsAre;
using namespace std::chrono_literals;

constexpr std::string_view kShowPage = "\033[2AUTF8\x02<68>\x03";

class StageRig {
 public:
  explicit StageRig(const std::string& members)
      : stage_(
            ParseScenario(
                R"({"name": "n", "description": "d", "expect": [{"exit_status": 0}], )" + members + "}", ""),
            (directory_ / "history").string(), [this] { return now_; }, [this] { ++wakes; }),
        store_((directory_ / "files").string()),
        files_(stage_.Watch(store_)),
        customer_(stage_.MakeCustomer()),
        unit_(Line::kUsb, *customer_, {}, stage_.Sink(), {files_.get(), {}, nullptr}),
        line_(MakeLine()) {}

  void Begin() {
    stage_.Begin({[this] { actions += "unplug "; }, [this] { actions += "plug "; },
                  [this](const auto& action) {
                    action(unit_, now_);
                    line_.Advance(now_);
                  }});
  }
  void Send(std::string_view command) {
    std::string report(command);
    report.resize(1024);
    line_.Receive({reinterpret_cast<const std::uint8_t*>(report.data()), report.size()}, now_);
  }
  // Keeps the deadlines of both.
  void Wait(Time time) {
    for (const Time end = now_ + time; now_ < end;) {
      ++now_;
      line_.Advance(now_);
      stage_.Advance(now_);
    }
  }
  std::optional<Bytes> TakeAnswer() { return line_.TakeAnswer(); }
  [[nodiscard]] std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const Event& event : ReadHistory((directory_ / "history").string()))
      names.push_back(std::to_string(event.at.count()) + " " + std::to_string(static_cast<int>(event.kind)) +
                      " " + event.name);
    return names;
  }
  [[nodiscard]] History Events() const { return ReadHistory((directory_ / "history").string()); }
  Stage& Played() { return stage_; }
  FileSystem& Files() { return *files_; }

  std::string actions;
  int wakes = 0;

 private:
  FaultyLine MakeLine() {
    if (stage_.Slowness() == nullptr) return FaultyLine(unit_);
    return {unit_, Hostility({}, 0), *stage_.Slowness()};
  }

  gwq::test::TempDir directory_;
  Time now_{5000};
  Stage stage_;
  FileStore store_;
  std::unique_ptr<FileSystem> files_;
  std::unique_ptr<Customer> customer_;
  Device unit_;
  FaultyLine line_;
};

TEST(Stage, WritesDownCommandsAndScreensFromTheBeginningOn) {
  StageRig rig(R"("timeout_s": 9)");
  rig.Send(wire::kGetVersion);
  rig.Begin();
  rig.Wait(10ms);
  rig.Send(kShowPage);
  rig.Wait(1s);
  EXPECT_THAT(rig.Names(), ElementsAre("10 1 HTML", "10 0 html", "210 0 idle"));
  EXPECT_NE(rig.Events()[1].text.find("Confirm"), std::string::npos);
}

TEST(Stage, WritesDownPinsWithoutTheirDigits) {
  StageRig rig(R"("customer": {"pin_entries": [{"pin": "8642"}]})");
  rig.Begin();
  rig.Send("\x82");
  rig.Wait(1s);
  EXPECT_THAT(rig.Names(), ElementsAre("0 1 PIN entry", "0 2 ", "200 3 "));
  for (const Event& event : rig.Events())
    EXPECT_EQ((event.name + event.text).find("8642"), std::string::npos);
}

TEST(Stage, WritesDownFilesThatAreStoredAndNoOthers) {
  StageRig rig(R"("timeout_s": 9)");
  rig.Begin();
  const Bytes content(7);
  EXPECT_EQ(StoreFile(rig.Files(), "/tmp/a", content), FileResult::kDone);
  EXPECT_NE(StoreFile(rig.Files(), "../a", content), FileResult::kDone);
  ASSERT_THAT(rig.Names(), ElementsAre("0 4 /tmp/a"));
  EXPECT_EQ(rig.Events()[0].size, 7U);
}

TEST(Stage, MakesEventsComeAtTheirTime) {
  StageRig rig(R"("events": [{"after_ms": 20, "plug": true}, {"after_ms": 10, "unplug": true}])");
  rig.Wait(100ms);
  EXPECT_FALSE(rig.Played().NextDeadline());
  rig.Begin();
  EXPECT_EQ(rig.Played().NextDeadline(), Time(5110));
  rig.Wait(9ms);
  EXPECT_EQ(rig.actions, "");
  rig.Wait(1ms);
  EXPECT_EQ(rig.actions, "unplug ");
  rig.Wait(1s);
  EXPECT_EQ(rig.actions, "unplug plug ");
}

TEST(Stage, MakesEventsComeBehindWhatTheyWaitFor) {
  StageRig rig(R"("events": [{"when": "screen html", "time": 2, "after_ms": 10, "unplug": true},
                             {"when": "command GETVERSION", "plug": true}])");
  rig.Begin();
  rig.Send(kShowPage);
  rig.Wait(1s);
  EXPECT_EQ(rig.actions, "");
  EXPECT_EQ(rig.wakes, 0);
  rig.Send(kShowPage);
  EXPECT_EQ(rig.wakes, 1);
  rig.Wait(10ms);
  EXPECT_EQ(rig.actions, "unplug ");
  rig.Send(wire::kGetVersion);
  rig.Send(wire::kGetVersion);
  rig.Wait(1s);
  EXPECT_EQ(rig.actions, "unplug plug ");
}

TEST(Stage, EventsWaitForTheCableToo) {
  StageRig rig(R"("events": [{"when": "unplugged", "after_ms": 10, "plug": true}])");
  rig.Begin();
  rig.Played().Note({Event::Kind::kUnplugged, {}, {}, 0, {}});
  rig.Wait(10ms);
  EXPECT_EQ(rig.actions, "plug ");
}

TEST(Stage, ACustomerWhoWalksAwayDoesNothingMore) {
  StageRig rig(R"("events": [{"when": "screen html", "after_ms": 100, "walk_away": true}])");
  rig.Begin();
  rig.Send(kShowPage);
  rig.Wait(1s);
  EXPECT_FALSE(rig.TakeAnswer());
  rig.Send("\x82");
  rig.Wait(1s);
  EXPECT_FALSE(rig.TakeAnswer());
  EXPECT_THAT(rig.Names(), ElementsAre("0 1 HTML", "0 0 html", "1000 1 PIN entry", "1000 2 "));
}

TEST(Stage, ACustomerWhoWalksAwayKeysNoPinTheyHadBegun) {
  StageRig rig(R"("events": [{"when": "PIN asked", "after_ms": 100, "walk_away": true}])");
  rig.Begin();
  rig.Send("\x82");
  rig.Wait(1s);
  EXPECT_FALSE(rig.TakeAnswer());
}

TEST(Stage, SlowsEachAnswerDownUntilItIsToldOtherwise) {
  StageRig rig(R"("events": [{"slow_ms": 300}, {"after_ms": 1000, "slow_ms": 0}])");
  rig.Begin();
  rig.Wait(1ms);
  rig.Send(wire::kGetVersion);
  rig.Wait(299ms);
  EXPECT_FALSE(rig.TakeAnswer());
  rig.Wait(1ms);
  EXPECT_TRUE(rig.TakeAnswer());
  rig.Wait(1s);
  rig.Send(wire::kGetVersion);
  EXPECT_TRUE(rig.TakeAnswer());
}

}  // namespace
}  // namespace gwq::terminal::test
