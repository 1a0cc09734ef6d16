// SPDX-License-Identifier: MIT
// The calls deprecated in OpenSSL 3 are what makes the deciphering independent
// of the way the terminal enciphers.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "unit/terminal/device/rig.h"

#include <openssl/des.h>

#include <algorithm>
#include <utility>

namespace gwq::terminal::test {

using namespace device;
namespace {

// In the order of TraceEvent::What.
constexpr std::array kSpeakers{"host: ", "terminal: ", "customer: ", "note: "};

DES_key_schedule Schedule(std::span<const std::uint8_t> key, std::size_t part) {
  DES_cblock block;
  std::copy_n(key.subspan(part * 8 % key.size()).begin(), 8, block);
  DES_key_schedule schedule;
  DES_set_key_unchecked(&block, &schedule);
  return schedule;
}

}  // namespace

PinAction ListedCustomer::KeyPin(const PinRequest& request) {
  requests.push_back(request);
  return Next();
}

NumberAction ListedCustomer::KeyNumber(const NumberRequest& request) {
  numbers.push_back(request);
  return Next();
}

PinAction ListedCustomer::Next() {
  if (actions.empty()) {
    ADD_FAILURE() << "the customer was asked once more than the test listed";
    return WalksAway();
  }
  PinAction action = actions.front();
  actions.pop_front();
  return action;
}

ScreenAction ListedCustomer::Respond(const Screen& screen) {
  screens.push_back(screen);
  if (responses.empty()) return Customer::Respond(screen);
  ScreenAction action = std::move(responses.front());
  responses.pop_front();
  return action;
}

PinAction Keys(std::string digits, Time after) {
  return {PinAction::Kind::kEnter, std::move(digits), after};
}
PinAction Cancels(Time after) {
  return {PinAction::Kind::kCancel, {}, after};
}
PinAction WalksAway() {
  return {PinAction::Kind::kWalkAway, {}, {}};
}

Rig::Rig(Line line, Settings settings, Storage storage, const Painter* painter)
    : line_(line),
      device_(
          line, customer, std::move(settings), [this](const TraceEvent& event) { Keep(event); },
          std::move(storage), painter) {}

void Rig::Keep(const TraceEvent& event) {
  trace_.push_back(kSpeakers.at(event.what.index()) + TextOf(event));
  if (const auto* received = std::get_if<CommandReceived>(&event.what)) heard_.insert(received->command);
}

void Rig::Send(std::string_view command) {
  if (line_ == Line::kSerial) {
    Feed(command);
    return Wait(20ms);
  }
  const std::string reports = PaddedReports(command);
  for (std::size_t i = 0; i < reports.size(); i += kReport) Feed(reports.substr(i, kReport));
}

void Rig::Feed(std::string_view bytes) {
  device_.Receive(ToBytes(bytes), now);
}

void Rig::Wait(Time time) {
  now += time;
  device_.Advance(now);
}

std::string Rig::Answer() {
  const auto answer = device_.TakeAnswer();
  return answer ? ToText(*answer) : "(none)";
}

std::string Rig::Ask(std::string_view command) {
  Send(command);
  std::string answer = Answer();
  EXPECT_EQ(Answer(), "(none)") << "a second answer to one command";
  return answer;
}

std::string Rig::Trace() const {
  std::string text;
  for (const std::string& line : trace_) text += line + "\n";
  return text;
}

std::vector<std::uint8_t> ToBytes(std::string_view text) {
  return {text.begin(), text.end()};
}
std::string ToText(std::span<const std::uint8_t> bytes) {
  return {bytes.begin(), bytes.end()};
}

std::vector<std::uint8_t> FromHex(std::string_view hex) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
  }
  return bytes;
}

std::string ToHex(std::span<const std::uint8_t> bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string hex;
  for (const std::uint8_t byte : bytes) (hex += kDigits[byte / 16]) += kDigits[byte % 16];
  return hex;
}

std::string Split(std::span<const std::uint8_t> bytes) {
  constexpr std::string_view kNibbles = "0123456789:;<=>?";
  std::string text;
  for (const std::uint8_t byte : bytes) (text += kNibbles[byte / 16]) += kNibbles[byte % 16];
  return text;
}

std::vector<std::uint8_t> Unsplit(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>((text[i] - '0') * 16 + (text[i + 1] - '0')));
  }
  return bytes;
}

std::string PaddedReports(std::string_view command) {
  std::string reports(command);
  reports.resize((command.size() + kReport - 1) / kReport * kReport, '\0');
  return reports;
}

std::vector<std::uint8_t> PlainDes(std::span<const std::uint8_t> key, std::span<const std::uint8_t> data,
                                   bool encipher) {
  std::array<DES_key_schedule, 3> keys{Schedule(key, 0), Schedule(key, 1), Schedule(key, 2)};
  std::vector<std::uint8_t> out;
  for (std::size_t i = 0; i + 8 <= data.size(); i += 8) {
    DES_cblock in;
    DES_cblock result;
    std::copy_n(data.subspan(i).begin(), 8, in);
    const int mode = encipher ? DES_ENCRYPT : DES_DECRYPT;
    if (key.size() == 8) {
      DES_ecb_encrypt(&in, &result, keys.data(), mode);
    } else {
      DES_ecb3_encrypt(&in, &result, keys.data(), &keys[1], &keys[2], mode);
    }
    out.insert(out.end(), std::begin(result), std::end(result));
  }
  return out;
}

std::string MasterKeyCommand(int slot, std::string_view old_hex, std::string_view new_hex) {
  std::vector<std::uint8_t> record{static_cast<std::uint8_t>(slot)};
  for (const std::uint8_t byte : FromHex(old_hex)) record.push_back(byte);
  for (const std::uint8_t byte : FromHex(new_hex)) record.push_back(byte);
  return "\033M" + Split(record) + "\r\n";
}

std::string WorkingKeyCommand(int master, int slot, std::string_view enciphered_hex) {
  std::vector<std::uint8_t> record{static_cast<std::uint8_t>(master), static_cast<std::uint8_t>(slot)};
  for (const std::uint8_t byte : FromHex(enciphered_hex)) record.push_back(byte);
  return "\033S" + Split(record) + "\r\n";
}

std::string ActivateCommand(int master, int slot) {
  const std::array<std::uint8_t, 2> record{static_cast<std::uint8_t>(master),
                                           static_cast<std::uint8_t>(slot)};
  return "\033A" + Split(record) + "\r\n";
}

void LoadKeys(Rig& rig, std::string_view working_hex) {
  const auto enciphered = PlainDes(FromHex(kMasterHex), FromHex(working_hex), true);
  ASSERT_EQ(rig.Ask(MasterKeyCommand(3, kFactoryHex, kMasterHex)), wire::kKeyAccepted);
  ASSERT_EQ(rig.Ask(WorkingKeyCommand(3, 7, ToHex(enciphered))), wire::kKeyAccepted);
  ASSERT_EQ(rig.Ask(ActivateCommand(3, 7)), wire::kKeyAccepted);
}

}  // namespace gwq::terminal::test
