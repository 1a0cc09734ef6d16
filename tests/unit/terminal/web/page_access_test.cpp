// SPDX-License-Identifier: MIT
// Who may see the customer's page, and what a page may ask for.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>

#include "unit/terminal/device/rig.h"
#include "web/access.h"
#include "web/customer_page.h"
#include "web/messages.h"

namespace gwq::terminal::test {

using namespace device;
using namespace faults;
using namespace web;
namespace {

constexpr std::string_view kToken = "0123456789abcdef0123456789abcdef";

std::optional<std::string> Ask(std::string_view path, std::optional<std::string_view> host,
                               std::optional<std::string_view> origin = {}, bool socket = false) {
  return Access(std::string(kToken), 4321).PathOf({path, host, origin, socket});
}

std::string At(std::string_view rest) {
  return std::string("/").append(kToken).append("/").append(rest);
}

TEST(PageAccess, LetsInWhoKnowsTheToken) {
  EXPECT_EQ(Ask(At(""), "127.0.0.1:4321"), "");
  EXPECT_EQ(Ask(At("app.js"), "[::1]:4321"), "app.js");
  EXPECT_EQ(Ask(At("file/tmp/hw.png"), "localhost:4321"), "file/tmp/hw.png");
}

TEST(PageAccess, LetsInNobodyElse) {
  for (const char* path : {"", "/", "/0123", "/0123456789abcdef0123456789abcdef", "//",
                           "/0123456789abcdef0123456789abcdee/", "/0123456789ABCDEF0123456789ABCDEF/",
                           "/x/0123456789abcdef0123456789abcdef/", "0123456789abcdef0123456789abcdef//"}) {
    EXPECT_FALSE(Ask(path, "127.0.0.1:4321")) << path;
  }
}

TEST(PageAccess, IsOnlyForThisAddress) {
  for (const char* host :
       {"", "127.0.0.1", "127.0.0.1:80", "evil.example:4321", "127.0.0.1.evil.example:4321",
        "127.0.0.1:4321:4321", "::1:4321", "0.0.0.0:4321", "127.0.0.1:04321"}) {
    EXPECT_FALSE(Ask(At(""), host)) << host;
  }
  EXPECT_FALSE(Ask(At(""), std::nullopt));
}

TEST(PageAccess, IsForNoPageOfAnotherSite) {
  EXPECT_TRUE(Ask(At(""), "127.0.0.1:4321", "http://127.0.0.1:4321"));
  for (const char* origin :
       {"", "null", "http://evil.example", "https://127.0.0.1:4321", "http://127.0.0.1:80",
        "http://127.0.0.1:43210", "http://localhost:4321", "127.0.0.1:4321"}) {
    EXPECT_FALSE(Ask(At(""), "127.0.0.1:4321", origin)) << origin;
    EXPECT_FALSE(Ask(At("socket"), "127.0.0.1:4321", origin, true)) << origin;
  }
}

TEST(PageAccess, ASocketNeedsAnOrigin) {
  EXPECT_FALSE(Ask(At("socket"), "127.0.0.1:4321", {}, true));
  EXPECT_EQ(Ask(At("socket"), "127.0.0.1:4321", "http://127.0.0.1:4321", true), "socket");
}

TEST(PageAccess, EveryTokenIsNew) {
  const std::string token = Access::NewToken();
  EXPECT_EQ(token.size(), 32U);
  EXPECT_EQ(token.find_first_not_of("0123456789abcdef"), std::string::npos);
  EXPECT_NE(token, Access::NewToken());
}

template <typename Request>
std::optional<Request> Read(std::string_view message) {
  const auto request = ReadPageRequest(message);
  if (!request || !std::holds_alternative<Request>(*request)) return std::nullopt;
  return std::get<Request>(*request);
}

TEST(PageMessages, AnActNamesItsScreen) {
  const auto key = Read<ActRequest>(R"({"type":"act","screen":7,"kind":"key","text":"2"})");
  ASSERT_TRUE(key);
  EXPECT_EQ(key->screen, 7U);
  EXPECT_EQ(key->action.kind, ScreenAction::Kind::kKey);
  EXPECT_EQ(key->action.text, "2");
  EXPECT_EQ(Read<ActRequest>(R"({"type":"act","kind":"cancel"})")->screen, 0U);
  EXPECT_EQ(Read<ActRequest>(R"({"type":"act","kind":"digits","text":"42"})")->action.text, "42");
}

TEST(PageMessages, TheLastPointOfASignatureLiftsThePen) {
  const auto sign =
      Read<ActRequest>(R"({"type":"act","kind":"sign","strokes":[[0,0,1,0],[479,159,1023,8]]})");
  ASSERT_TRUE(sign);
  ASSERT_EQ(sign->action.strokes.size(), 2U);
  EXPECT_EQ(sign->action.strokes[1].x, 479);
  EXPECT_EQ(sign->action.strokes[1].pressure, 0);
}

// A signature of `count` points, all alike.
std::optional<ActRequest> Sign(std::size_t count, int x, int y, int pressure, int time) {
  const std::vector<nlohmann::json> points(count, {x, y, pressure, time});
  return Read<ActRequest>(nlohmann::json{{"type", "act"}, {"kind", "sign"}, {"strokes", points}}.dump());
}

TEST(PageMessages, TheUnitsLimitsAreThoseOfWhatIsTaken) {
  const nlohmann::json unit = nlohmann::json::parse(UnitMessage());
  const nlohmann::json& field = unit.at("signature");
  const int width = field.at("width");
  const int height = field.at("height");
  const int pressure = field.at("max_pressure");
  const int time = field.at("max_time_ms");
  const std::size_t points = field.at("max_points");
  EXPECT_TRUE(Sign(points, width - 1, height - 1, pressure, time));
  EXPECT_FALSE(Sign(points + 1, width - 1, height - 1, pressure, time));
  EXPECT_FALSE(Sign(1, width, 0, 0, 0));
  EXPECT_FALSE(Sign(1, 0, height, 0, 0));
  EXPECT_FALSE(Sign(1, 0, 0, pressure + 1, 0));
  EXPECT_FALSE(Sign(1, 0, 0, 0, time + 1));
  const std::string start = R"({"type":"act","kind":"digits","text":")";
  const std::string digits(unit.at("max_digits").get<std::size_t>(), '7');
  EXPECT_TRUE(ReadPageRequest(start + digits + "\"}"));
  EXPECT_FALSE(ReadPageRequest(start + digits + "7\"}"));
}

TEST(PageMessages, WhatNoCustomerCanDoIsNotTaken) {
  for (const char* message : {"",
                              "null",
                              "[]",
                              "{",
                              R"({"type":"act"})",
                              R"({"type":"act","kind":"answer","text":"B2F"})",
                              R"({"type":"act","kind":"digits","text":"4 2"})",
                              R"({"type":"act","kind":"digits","text":"123456789012345678901234567890123"})",
                              R"({"type":"act","kind":"sign"})",
                              R"({"type":"act","kind":"sign","strokes":[]})",
                              R"({"type":"act","kind":"sign","strokes":[[480,0,1,0]]})",
                              R"({"type":"act","kind":"sign","strokes":[[0,-1,1,0]]})",
                              R"({"type":"act","kind":"sign","strokes":[[0,0,1]]})",
                              R"({"type":"press","entry":1,"key":"12"})",
                              R"({"type":"press","entry":1,"key":"x"})",
                              R"({"type":"plug"})",
                              R"({"type":"plug","plugged":1})",
                              R"({"type":"faults"})",
                              R"({"type":"faults","rates":""})",
                              R"({"type":"faults","rates":"drop"})",
                              R"({"type":"faults","rates":"drop=101"})",
                              R"({"type":"faults","rates":"drop=nan"})",
                              R"({"type":"faults","rates":["drop"]})",
                              "{\"type\":\"act\",\"kind\":\"key\",\"text\":\"\xFF\"}"}) {
    EXPECT_FALSE(ReadPageRequest(message)) << message;
  }
  std::string rates = R"({"type":"faults","rates":"drop=1)";
  for (int i = 0; i < 200; ++i) rates += ",drop=1";
  EXPECT_FALSE(ReadPageRequest(rates + "\"}"));
}

TEST(PageMessages, FaultsAreAsAtTheCommandLine) {
  const auto faults = Read<FaultsRequest>(R"({"type":"faults","rates":"seed=7,drop=100,cut=0.5"})");
  ASSERT_TRUE(faults);
  EXPECT_EQ(faults->rates.PercentOf(Fault::kDrop), 100);
  EXPECT_EQ(faults->rates.PercentOf(Fault::kCut), 0.5);
  EXPECT_EQ(faults->rates.PercentOf(Fault::kDelay), 0);
  const std::string told = LinkMessage(true, false, faults->rates);
  EXPECT_NE(told.find("\"faults\":\"seed=7,drop=100,"), std::string::npos) << told;
}

TEST(PageMessages, HugeOnesAreNotTaken) {
  const std::string cancel = R"({"type":"act","kind":"cancel"})";
  EXPECT_TRUE(ReadPageRequest(cancel + std::string((1U << 18U) - cancel.size(), ' ')));
  EXPECT_FALSE(ReadPageRequest(cancel + std::string((1U << 18U) - cancel.size() + 1, ' ')));
  EXPECT_FALSE(ReadPageRequest(std::string(100'000, '[')));
  std::string deep;
  for (int i = 0; i < 20'000; ++i) deep += R"({"type":)";
  EXPECT_FALSE(ReadPageRequest(deep));
  std::string points = R"({"type":"act","kind":"sign","strokes":[[1,1,1,1])";
  for (int i = 0; i < 10'000; ++i) points += ",[1,1,1,1]";
  EXPECT_FALSE(ReadPageRequest(points + "]}"));
}

// Each member in turn is of every type that JSON has.
TEST(PageMessages, WrongTypesAreNotTaken) {
  for (const char* text : {R"({"type":"act","screen":1,"kind":"key","text":"1"})",
                           R"({"type":"act","screen":1,"kind":"sign","strokes":[[1,1,1,1]]})",
                           R"({"type":"press","entry":1,"key":"1"})", R"({"type":"plug","plugged":true})",
                           R"({"type":"faults","rates":"drop=1"})"}) {
    EXPECT_TRUE(ReadPageRequest(text)) << text;
    const auto right = nlohmann::json::parse(text);
    for (const auto& [name, value] : right.items()) {
      for (const char* other : {"null", "-1", "1.5", "1e300", "\"\u00e9\"", "[]", "[[1,1,1,1e9]]", "[[[]]]",
                                R"({"a":{"b":null}})", "[\"1\"]"}) {
        nlohmann::json changed = right;
        changed[name] = nlohmann::json::parse(other);
        // A screen or an entry that is none counts as no. 0, which nothing waits for; so does a key
        // without a name.
        const bool harmless = name == "screen" || name == "entry" || name == "text";
        EXPECT_EQ(ReadPageRequest(changed.dump()).has_value(), harmless) << changed;
      }
    }
  }
}

TEST(PageMessages, AnyBytesAreRead) {
  std::mt19937 random(7);
  const std::string good =
      R"({"type":"act","screen":7,"kind":"sign","strokes":[[0,0,1,0],[479,159,1023,8]]})";
  int taken = 0;
  for (int i = 0; i < 20'000; ++i) {
    std::string message = good;
    for (unsigned change = 0; change < 1 + random() % 4; ++change)
      message[random() % message.size()] = static_cast<char>(random());
    if (i % 4 == 0) message.resize(random() % message.size());
    const auto request = ReadPageRequest(message);
    if (!request) continue;
    ++taken;
    const auto* act = std::get_if<ActRequest>(&*request);
    ASSERT_NE(act, nullptr) << message;
    for (const PenPoint& point : act->action.strokes)
      ASSERT_TRUE(point.x >= 0 && point.x < 480 && point.y >= 0 && point.y < 160) << message;
  }
  EXPECT_GT(taken, 0);
  EXPECT_LT(taken, 10'000);
}

TEST(PageMessages, APinIsOnlyCounted) {
  EntryState entry;
  entry.number = 3;
  entry.request = PinRequest{4, 6, 30s};
  entry.ends_at = 30s;
  entry.keyed = 2;
  const std::string message = EntryMessage(entry, 10s);
  EXPECT_NE(message.find("\"keyed\":2"), std::string::npos);
  EXPECT_NE(message.find("\"time_left_ms\":20000"), std::string::npos);
  EXPECT_NE(message.find("\"shown\":\"\""), std::string::npos);
}

TEST(PageMessages, AHiddenNumberIsNotEvenCounted) {
  EntryState entry;
  NumberRequest request;
  request.display = NumberRequest::Display::kNothing;
  entry.request = request;
  entry.keyed = 5;
  EXPECT_NE(EntryMessage(entry, 0s).find("\"keyed\":0"), std::string::npos);
}

TEST(PageMessages, AScreenDoesNotTellWhatTheHostIsToldForAKey) {
  ShownScreen shown;
  shown.screen.keys = {{ScreenKey::Role::kConfirm, "3", "Good", "B3F"}};
  shown.screen.text = "damaged \xFF text";
  const std::string message = ScreenMessage(shown);
  EXPECT_EQ(message.find("B3F"), std::string::npos);
  EXPECT_NE(message.find("\"label\":\"Good\""), std::string::npos);
}

TEST(PageTrace, KeepsTheLatestEventsUntilTheyAreTaken) {
  int woken = 0;
  PageTrace trace([&woken] { ++woken; });
  for (int i = 0; i < 1200; ++i) trace.Sink()({Noted{std::to_string(i)}, 0ms});
  EXPECT_EQ(woken, 1200);
  const auto events = trace.Take();
  ASSERT_EQ(events.size(), 1000U);
  EXPECT_EQ(TextOf(events.back()), "1199");
  EXPECT_TRUE(trace.Take().empty());
}

}  // namespace
}  // namespace gwq::terminal::test
