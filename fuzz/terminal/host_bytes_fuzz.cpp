// SPDX-License-Identifier: MIT
// A host that sends anything, at any time, to a unit with an agreeable
// customer; what the unit records of it is masked.
#include <chrono>

#include "customer/agreeable.h"
#include "device/device.h"
#include "input.h"
#include "require.h"

namespace gwq::fuzz {
namespace {

using terminal::Time;

// 256 answers wait at most, of which a pulled packet is the longest.
constexpr std::size_t kMaxAnswers = 256;
constexpr std::size_t kMaxAnswer = 70'000;

void TakeAnswers(terminal::device::Device& device) {
  static_cast<void>(device.TakeWithdrawal());
  std::size_t count = 0;
  while (const auto answer = device.TakeAnswer()) {
    Require(!answer->empty() && answer->size() <= kMaxAnswer, "an answer of an impossible length");
    Require(++count <= kMaxAnswers, "more answers than a unit keeps");
  }
}

void Talk(Input& input) {
  const auto line = input.Byte() % 2 == 0 ? terminal::Line::kUsb : terminal::Line::kSerial;
  terminal::customer::AgreeableCustomer customer;
  terminal::device::Device device(line, customer);
  Time now{0};
  while (!input.Empty()) {
    const unsigned step = input.Byte();
    if (step % 4 == 3) now += Time(step * 64);
    device.Receive(input.Take(step < 128 ? step : step * 8), now);
    if (step % 2 == 0) TakeAnswers(device);
  }
  device.Advance(now + std::chrono::hours(24));
  const auto next = device.NextDeadline();
  Require(!next || *next > now, "a deadline that has passed");
  TakeAnswers(device);
}

}  // namespace
}  // namespace gwq::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  gwq::fuzz::Input input(data, size);
  gwq::fuzz::Talk(input);
  return 0;
}
