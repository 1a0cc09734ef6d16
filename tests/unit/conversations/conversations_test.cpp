// SPDX-License-Identifier: MIT
// The library holds every conversation of tests/wire as it is written there, and understands its answers. The
// terminal's half is tests/unit/terminal/device/conversations_test.cpp.
#include "wire/conversations.h"

#include <set>

#include "unit/conversations/calls.h"
#include "unit/screens/failing_system.h"

namespace gwq::test {
namespace {

const Calls& AllCalls() {
  static const Calls all = [] {
    Calls joined;
    for (Calls (*const area)() : {&CounterCalls, &PadCalls, &FileCalls, &ScreenCalls}) {
      Calls some = area();
      joined.merge(some);
    }
    return joined;
  }();
  return all;
}

class Conversations : public Host, public testing::WithParamInterface<wire::Conversation> {
 protected:
  Conversations() { std::filesystem::create_directory(directory_ / "tmp"); }

  // On USB the terminal answers in whole reports, too.
  void Script(const wire::Exchange& exchange) {
    usb_.ExpectCommand(exchange.host);
    if (!exchange.is_read) return;
    for (const Bytes& report : CutIntoReports(BytesOf(exchange.answer))) usb_.Answer(report);
  }

 private:
  FilesElsewhere elsewhere_{directory_.Path(), {"/tmp/data.txt", "/tmp/infoviewerex.html"}};
};

TEST_P(Conversations, AreHeldByTheLibrary) {
  const auto call = AllCalls().find(GetParam().name);
  ASSERT_NE(call, AllCalls().end()) << "no call of the library is written for it";
  for (const wire::Exchange& exchange : GetParam().exchanges) Script(exchange);
  call->second(*this);
  EXPECT_TRUE(usb_.Finished()) << "the library left something unsaid or unheard";
}

INSTANTIATE_TEST_SUITE_P(All, Conversations, testing::ValuesIn(wire::Conversations()), kByName);

TEST(ConversationNames, AreThoseOfTheCalls) {
  std::set<std::string> names;
  for (const wire::Conversation& each : wire::Conversations())
    EXPECT_TRUE(names.insert(each.name).second) << each.name << " is there twice";
  for (const auto& [name, call] : AllCalls()) EXPECT_TRUE(names.contains(std::string(name))) << name;
}

}  // namespace
}  // namespace gwq::test
