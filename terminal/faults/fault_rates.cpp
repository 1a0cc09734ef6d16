// SPDX-License-Identifier: MIT
#include "faults/fault_rates.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <random>
#include <stdexcept>
#include <string_view>

namespace gwq::terminal::faults {
namespace {

struct Kind {
  std::string_view name;
  double usual_percent;
};

constexpr std::array<Kind, kFaultKinds> kKinds = {{{"drop", 1},
                                                   {"delay", 2},
                                                   {"cut", 1},
                                                   {"repeat", 1},
                                                   {"flip", 1},
                                                   {"length", 1},
                                                   {"checksum", 1},
                                                   {"garbage", 1},
                                                   {"silence", 1},
                                                   {"stall", 1},
                                                   {"unplug", 0.1}}};

template <typename Number>
Number Parse(std::string_view text, Number most) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !(number >= Number{} && number <= most))
    throw std::runtime_error("'" + std::string(text) + "' is no number from 0 to " + std::to_string(most));
  return number;
}

std::size_t KindNamed(std::string_view name) {
  const auto* const found =
      std::find_if(kKinds.begin(), kKinds.end(), [name](const Kind& kind) { return kind.name == name; });
  if (found == kKinds.end()) throw std::runtime_error("no such fault: '" + std::string(name) + "'");
  return static_cast<std::size_t>(found - kKinds.begin());
}

std::uint64_t FreshSeed() {
  return std::random_device{}();
}

}  // namespace

FaultRates ParseRates(const std::string& text) {
  FaultRates rates;
  std::optional<std::uint64_t> seed;
  bool kinds_named = false;
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::string_view item = rest.substr(0, rest.find(','));
    rest.remove_prefix(std::min(item.size() + 1, rest.size()));
    const std::size_t equals = item.find('=');
    if (equals == std::string_view::npos)
      throw std::runtime_error("'" + std::string(item) + "' is not NAME=NUMBER");
    const std::string_view value = item.substr(equals + 1);
    if (item.substr(0, equals) == "seed") {
      seed = Parse<std::uint64_t>(value, UINT64_MAX);
      continue;
    }
    rates.percent[KindNamed(item.substr(0, equals))] = Parse<double>(value, 100);
    kinds_named = true;
  }
  rates.seed = seed ? *seed : FreshSeed();
  for (std::size_t i = 0; i < kFaultKinds && !kinds_named; ++i) rates.percent[i] = kKinds[i].usual_percent;
  return rates;
}

std::string RatesText(const FaultRates& rates) {
  std::string text("seed=");
  text += std::to_string(rates.seed);
  for (std::size_t i = 0; i < kFaultKinds; ++i) {
    std::array<char, 32> number{};
    char* const end = std::to_chars(number.data(), number.data() + number.size(), rates.percent[i]).ptr;
    text.append(",").append(kKinds[i].name).append("=").append(number.data(), end);
  }
  return text;
}

}  // namespace gwq::terminal::faults
