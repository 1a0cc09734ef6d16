// SPDX-License-Identifier: MIT
// A terminal under test, with a clock that the test moves, a customer whose
// actions the test lists, and its trace kept.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <deque>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "device/device.h"
#include "wire/document_frames.h"

namespace gwq::terminal::test {

using namespace protocol;
using namespace device;

using namespace std::chrono_literals;

inline constexpr std::size_t kReport = 1024;

// Does what the test listed, in order, and remembers what it was asked.
class ListedCustomer : public Customer {
 public:
  PinAction KeyPin(const PinRequest& request) override;
  NumberAction KeyNumber(const NumberRequest& request) override;
  // Agrees when nothing is listed any more.
  ScreenAction Respond(const Screen& screen) override;

  std::deque<PinAction> actions;
  std::vector<PinRequest> requests;
  std::vector<NumberRequest> numbers;
  std::deque<ScreenAction> responses;
  std::vector<Screen> screens;

 private:
  PinAction Next();
};

PinAction Keys(std::string digits, Time after = 100ms);
PinAction Cancels(Time after = 100ms);
PinAction WalksAway();

class Rig {
 public:
  explicit Rig(Line line = Line::kUsb, Settings settings = {}, Storage storage = {},
               const Painter* painter = nullptr);

  // A command as the host's link sends it: in zero-padded reports over USB, as
  // it is over serial, followed there by the silence that ends it.
  void Send(std::string_view command);
  // Bytes as they are, at the present time.
  void Feed(std::string_view bytes);
  void Wait(Time time);

  // The oldest answer; "(none)" when there is none.
  std::string Answer();
  // Sends, and takes the answer; fails the test when there was more than one.
  std::string Ask(std::string_view command);

  // The trace as text, one event in a line.
  [[nodiscard]] std::string Trace() const;
  // Which commands the device has announced.
  [[nodiscard]] const std::set<const CommandRow*>& Heard() const { return heard_; }

  ListedCustomer customer;
  Time now{0};
  Device& device() { return device_; }

 private:
  void Keep(const TraceEvent& event);

  Line line_;
  std::vector<std::string> trace_;
  std::set<const CommandRow*> heard_;
  Device device_;
};

std::vector<std::uint8_t> ToBytes(std::string_view text);
std::string ToText(std::span<const std::uint8_t> bytes);
std::vector<std::uint8_t> FromHex(std::string_view hex);
std::string ToHex(std::span<const std::uint8_t> bytes);
// High nibble + 0x30, low nibble + 0x30, computed without the code under test.
std::string Split(std::span<const std::uint8_t> bytes);
std::vector<std::uint8_t> Unsplit(std::string_view text);

std::string PaddedReports(std::string_view command);

// One block by the single-block DES calls, which the terminal does not use.
// The key has 8, 16 or 24 bytes; more blocks are done one by one.
std::vector<std::uint8_t> PlainDes(std::span<const std::uint8_t> key, std::span<const std::uint8_t> data,
                                   bool encipher);

// Key commands as the host lays them out.
std::string MasterKeyCommand(int slot, std::string_view old_hex, std::string_view new_hex);
std::string WorkingKeyCommand(int master, int slot, std::string_view enciphered_hex);
std::string ActivateCommand(int master, int slot);

inline constexpr std::string_view kFactoryHex = wire::kOldMasterKeyHex;
inline constexpr std::string_view kMasterHex = wire::kNewMasterKeyHex;

// Loads kMasterHex into slot 3 and `working_hex` under it as key 7, and activates it.
void LoadKeys(Rig& rig, std::string_view working_hex);

}  // namespace gwq::terminal::test
