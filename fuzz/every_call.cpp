// SPDX-License-Identifier: MIT
// Runs every call of the table on a thread with little stack, each with some answers and failures
// at random, with the log off and on: every_call STACK SEED. Tells which calls took the most.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "calls.h"
#include "session.h"
#include "support/small_stack.h"

namespace gwq::fuzz {
namespace {

constexpr int kSessionsPerCall = 20;

class Sessions {
 public:
  explicit Sessions(unsigned seed) : random_(seed) {}

  // Everything is plugged in; the terminal says what lets calls get far, or anything.
  std::vector<Record> Next(std::size_t call) {
    std::vector<Record> session{{RecordType::kSettings, {0, static_cast<std::uint8_t>(Below(2))}}};
    for (std::size_t i = Below(6); i > 0; --i) session.push_back({RecordType::kAnswer, {1, 5}});
    for (std::size_t i = Below(8); i > 0; --i) session.push_back({RecordType::kAnswer, Answer()});
    if (Below(4) == 0) session.push_back({RecordType::kFault, Some(3)});
    session.push_back({RecordType::kCall, {static_cast<std::uint8_t>(call)}});
    const Bytes arguments = Some(Below(200));
    Bytes& content = session.back().content;
    content.insert(content.end(), arguments.begin(), arguments.end());
    return session;
  }

 private:
  std::size_t Below(std::size_t bound) { return random_() % bound; }

  Bytes Some(std::size_t count) {
    Bytes bytes(count);
    std::generate(bytes.begin(), bytes.end(), [this] { return static_cast<std::uint8_t>(random_()); });
    return bytes;
  }

  Bytes Answer() {
    static constexpr std::uint8_t kKinds[] = {0, 2, 5, 0x43, 0x82};
    Bytes answer{1, kKinds[Below(std::size(kKinds))], static_cast<std::uint8_t>(Below(4))};
    const Bytes rest = Some(Below(64));
    answer.insert(answer.end(), rest.begin(), rest.end());
    return answer;
  }

  std::mt19937 random_;
};

struct Need {
  const char* name;
  std::size_t bytes;
};

// Sorted, the deepest first. Ends the process when the stack does not hold.
std::vector<Need> Measure(std::size_t stack_size, unsigned seed) {
  Sessions sessions(seed);
  std::vector<Need> needs;
  for (std::size_t call = 0; call < Calls().size(); ++call) {
    std::vector<std::vector<Record>> scripts(kSessionsPerCall);
    for (auto& script : scripts) script = sessions.Next(call);
    test::SmallStack stack(stack_size);
    std::fprintf(stderr, "%s\n", Calls()[call].name);
    const bool made = stack.Run([&scripts] {
      for (const auto& script : scripts) RunSession(script);
    });
    if (!made) Fail("no thread with so little stack");
    if (!stack.CanaryIsWhole()) Fail("written to below the guard page of the stack");
    needs.push_back({Calls()[call].name, stack.Used()});
  }
  std::sort(needs.begin(), needs.end(), [](const Need& a, const Need& b) { return a.bytes > b.bytes; });
  return needs;
}

// A check that cannot fail would be none.
bool CanaryWatches() {
  test::SmallStack stack(std::size_t{1} << 16U);
  const bool whole = stack.Run([] {}) && stack.CanaryIsWhole();
  stack.Canary().back() = 0;
  return whole && !stack.CanaryIsWhole();
}

}  // namespace
}  // namespace gwq::fuzz

int main(int argc, char** argv) {
  using namespace gwq::fuzz;
  if (argc != 3 || !CanaryWatches()) return 2;
  const auto needs =
      Measure(std::strtoul(argv[1], nullptr, 10), static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)));
  std::printf("%zu functions on %s bytes of stack; the most, with the C library's own and this program's:\n",
              needs.size(), argv[1]);
  for (std::size_t i = 0; i < 12 && i < needs.size(); ++i)
    std::printf("%8zu  %s\n", needs[i].bytes, needs[i].name);
  return 0;
}
