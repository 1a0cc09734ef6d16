// SPDX-License-Identifier: MIT
// Scripts of customers, faults and scenarios; the first byte says which.
#include <stdexcept>
#include <string>

#include "customer/scripted.h"
#include "faults/fault_script.h"
#include "require.h"
#include "scenarios/scenario.h"

namespace gwq::fuzz {
namespace {

void Read(char kind, const std::string& text) {
  if (kind == 'c') {
    Require(terminal::Script(text).ReadBy(terminal::customer::ReadCustomer) != nullptr, "no customer");
  } else if (kind == 'f') {
    Require(terminal::faults::ParseFaults(text).faults.pull.empty_packets_first.size() <= 16,
            "more empty packets than allowed");
  } else {
    Require(!terminal::scenarios::ParseScenario(text, "/none").expectations.empty(),
            "a scenario that expects nothing");
  }
}

}  // namespace
}  // namespace gwq::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  // A scenario may name files of the host, which are none of the fuzzer's business.
  const bool names_files =
      input.find("from") != std::string::npos || input.find("\\u00") != std::string::npos;
  if (input.empty() || names_files) return 0;
  try {
    gwq::fuzz::Read(input.front(), input.substr(1));
  } catch (const std::runtime_error&) {
    // no script
  }
  return 0;
}
