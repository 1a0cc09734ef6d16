// SPDX-License-Identifier: MIT
#include "hostile/soak.h"

#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <stdexcept>
#include <system_error>

#include <gwq/gwq.h>
#include "hostile/calls.h"

namespace gwq::test {
namespace {

struct Tally {
  std::int64_t calls = 0;
  std::int64_t successes = 0;
  std::int64_t most_over_ms = INT64_MIN;  // beyond the limit; negative: below it
};

// Every function whose name is that of a device function is called.
int CountForgotten() {
  const std::regex device(
      "(GWQ_|MP_|PN_|DEV_|TransProc|Pull|push|Z11|DownFile|DownVideo|Del(All)?Video|DeleteMedia|HIDDown|"
      "GetVideoList|GetPinblock|CheckUtf8).*");
  std::ifstream exports(GWQ_EXPORTS);
  int known = 0;
  int forgotten = 0;
  for (std::string name; std::getline(exports, name);) {
    if (!std::regex_match(name, device)) continue;
    ++known;
    const auto calls = DeviceCalls();
    if (std::any_of(calls.begin(), calls.end(), [&](const Call& call) { return name == call.name; }))
      continue;
    std::printf("never called: %s\n", name.c_str());
    ++forgotten;
  }
  return known > 0 ? forgotten : 1;
}

void CloseLinks(void* library) {
  for (const char* name : {"ICC_CloseLinuxHid", "ICC_CloseLinuxSdt", "ICC_CloseLinuxCom"})
    reinterpret_cast<int (*)()>(Find(library, name))();
}

class Run {
 public:
  Run(void* library, const SoakPlan& plan) : library_(library), plan_(plan), caller_(plan.scene, plan.seed) {}

  void One(std::int64_t number) {
    const auto calls = DeviceCalls();
    const Call& call = calls[caller_.Below(calls.size())];
    caller_.Take(Find(library_, call.name));
    plan_.before_call(caller_);
    plan_.take_traffic();
    const Limit limit = Make(call, caller_);
    const Traffic traffic = plan_.take_traffic();
    const std::int64_t most = limit.ms + limit.ms_per_report * traffic.reports + traffic.stalled_ms;
    const std::int64_t over = caller_.TookMs() - most;
    Note(tallies_[call.name], over);
    if (over > 0) {
      ++violations_;
      std::printf("seed %" PRIu64 " call %" PRId64 ": %s took %" PRId64 " ms, at most %" PRId64 "\n",
                  plan_.seed, number, call.name, caller_.TookMs(), most);
    }
    caller_.Forget();
  }

  [[nodiscard]] int Violations() const { return violations_; }

  void Report() const {
    for (const auto& [name, tally] : tallies_)
      std::printf("  %-28s %8" PRId64 " calls %8" PRId64 " succeeded, nearest to its limit %" PRId64 " ms\n",
                  name.c_str(), tally.calls, tally.successes, -tally.most_over_ms);
  }

 private:
  void Note(Tally& tally, std::int64_t over) {
    ++tally.calls;
    tally.successes += caller_.Result() == 0 ? 1 : 0;
    tally.most_over_ms = std::max(tally.most_over_ms, over);
  }

  void* library_;
  const SoakPlan& plan_;
  Caller caller_;
  std::map<std::string, Tally> tallies_;
  int violations_ = 0;
};

}  // namespace

void* LoadLibrary() {
  void* library = dlopen(GWQ_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw std::runtime_error(dlerror());  // NOLINT(concurrency-mt-unsafe)
  return library;
}

void* Find(void* library, const char* name) {
  void* symbol = dlsym(library, name);
  if (symbol == nullptr) throw std::runtime_error(std::string("not exported: ").append(name));
  return symbol;
}

std::multiset<std::string> OpenDescriptors() {
  std::multiset<std::string> open;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;  // as the iterator's own is
    const std::string target = std::filesystem::read_symlink(entry, gone).string();
    // The unit, which may be in this process, keeps what it receives open until the push's time is over.
    if (target.find("/.incoming") != std::string::npos) continue;
    if (!target.starts_with("socket:")) open.insert(target.substr(0, target.find('[')));
  }
  return open;
}

std::int64_t ResidentKilobytes() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word && word != "VmRSS:") {
  }
  std::int64_t kilobytes = 0;
  status >> kilobytes;
  return kilobytes;
}

int Soak(void* library, const SoakPlan& plan) {
  std::printf("seed %" PRIu64 ", %" PRId64 " calls of %zu functions\n", plan.seed, plan.calls,
              DeviceCalls().size());
  std::fflush(stdout);
  CloseLinks(library);
  const std::multiset<std::string> descriptors = OpenDescriptors();
  const auto start = std::chrono::steady_clock::now();
  Run run(library, plan);
  std::int64_t made = 0;
  for (; made < plan.calls; ++made) {
    if (plan.seconds > 0 && std::chrono::steady_clock::now() - start > std::chrono::seconds(plan.seconds))
      break;
    run.One(made);
  }
  CloseLinks(library);
  run.Report();
  int violations = run.Violations() + CountForgotten();
  if (const auto open = OpenDescriptors(); open != descriptors) {
    for (const std::string& target : descriptors) std::printf("open at the start: %s\n", target.c_str());
    for (const std::string& target : open) std::printf("open at the end: %s\n", target.c_str());
    ++violations;
  }
  std::printf("%" PRId64 " calls made, %d violations\n", made, violations);
  return violations;
}

}  // namespace gwq::test
