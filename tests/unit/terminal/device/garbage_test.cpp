// SPDX-License-Identifier: MIT
// Hosts gone mad: whatever arrives, the terminal goes on, in bounded memory, and
// still knows its commands afterwards.
#include <gtest/gtest.h>

#include <random>

#include "unit/terminal/device/pad/pad_rig.h"

namespace gwq::terminal::test {

using namespace device;
namespace {

constexpr int kRounds = 150;

// Acts on every request, in one way or another.
class RandomCustomer : public Customer {
 public:
  explicit RandomCustomer(std::mt19937& random) : random_(random) {}

  PinAction KeyPin(const PinRequest&) override { return Key(); }
  NumberAction KeyNumber(const NumberRequest&) override { return Key(); }
  ScreenAction Respond(const Screen&) override {
    ScreenAction action;
    action.kind = static_cast<ScreenAction::Kind>(random_() % 7);
    action.text = std::to_string(random_() % 5);
    action.after = Time(random_() % 50000);
    return action;
  }

 private:
  PinAction Key() {
    const auto kind = static_cast<PinAction::Kind>(random_() % 3);
    std::string keys(random_() % 20, '\0');
    for (char& key : keys) key = static_cast<char>('0' + random_() % 12);
    return {kind, keys, Time(random_() % 50000)};
  }

  std::mt19937& random_;
};

// A good frame around a framed command with random arguments.
std::string RandomFrame(std::mt19937& random) {
  static const ByteList codes{0x02, 0x03, 0x04, 0x05, 0x10, 0x11, 0x12, 0x13, 0x14,
                              0x15, 0x16, 0x18, 0x19, 0x32, 0x33, 0x35, 0x39, 0x3A};
  static const ByteList lengths{0x01, 0x10, 0x18, 0x20, 0x70, 0x80};
  ByteList body{0x30, codes[random() % codes.size()], lengths[random() % lengths.size()]};
  const std::size_t size = random() % 300;
  for (std::size_t i = 0; i < size; ++i) body.push_back(static_cast<std::uint8_t>(random()));
  return PadFrame(body);
}

// Pieces of real commands make garbage that gets further than noise does.
std::string RandomPiece(std::mt19937& random) {
  static const std::vector<std::string> pieces{std::string(wire::kGetVersion),
                                               "\033[1;",
                                               "\033M",
                                               "\033S",
                                               "\033A",
                                               std::string(wire::kResetKeys),
                                               "\033F00\r\n",
                                               "\033I00",
                                               "\x02",
                                               "\x03",
                                               "\r\n",
                                               "\x81",
                                               "\x82",
                                               "\x83",
                                               "0002301828",
                                               "0",
                                               "31",
                                               "9999999",
                                               "L",
                                               "T",
                                               "X",
                                               "\033",
                                               "\033[4H\x02",
                                               "a|b|3|",
                                               std::string(wire::kStartCounterRating),
                                               "\033[4;",
                                               std::string(wire::kCloseInformation),
                                               "\033[2A\x02",
                                               "\033[2AUTF8\x02",
                                               "\033[2YCSTARTINFOHTMLEXUTF8\x02",
                                               "\033[2YCNEWSTARTSIGN\x02",
                                               "30|30|0|2|/tmp/a|",
                                               "\033[2YCSETVOICECONTENT\x02",
                                               "\033[2YCCHECKOUTALLUTF8\x02",
                                               "20#41#42",
                                               std::string(wire::kKeypadMode0),
                                               std::string(wire::kKeypadMode1),
                                               std::string(wire::kCloseProgram),
                                               std::string(5, '\0'),
                                               MasterKeyCommand(1, kFactoryHex, kMasterHex),
                                               WorkingKeyCommand(1, 1, kMasterHex),
                                               ActivateCommand(1, 1),
                                               "\033[5GETINNO\0029|0|0|3132\003",
                                               "\033[1GETENCDATA\0021|2|41\003",
                                               "\033[0BJPOSTSETSN\x02",
                                               PadFrame({0x30, 0x05, 30}),
                                               PadFrame({0x40, 0x30, 30, 0xFF, 0xFF})};
  if (random() % 3 != 0) return pieces[random() % pieces.size()];
  if (random() % 4 == 0) return RandomFrame(random);
  std::string bytes(random() % 40, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

std::string RandomBytes(std::mt19937& random) {
  std::string bytes;
  const std::size_t size = random() % 1500;
  while (bytes.size() < size) bytes += RandomPiece(random);
  return bytes;
}

// A deadline that stays behind the clock would keep a transport spinning.
void ExpectNoDeadlineInThePast(const Device& device, Time now) {
  const auto deadline = device.NextDeadline();
  ASSERT_GT(deadline.value_or(Time::max()), now);
}

void ExpectBoundedAnswers(Device& device) {
  int answers = 0;
  for (auto answer = device.TakeAnswer(); answer; answer = device.TakeAnswer()) {
    ASSERT_FALSE(answer->empty());
    ASSERT_LE(answer->size(), 530U);
    ++answers;
  }
  ASSERT_LE(answers, 256);
}

void Torment(Line line, unsigned seed) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  RandomCustomer customer(random);
  std::size_t longest_line = 0;
  Device device(line, customer, {}, [&](const TraceEvent& event) {
    const std::string text = TextOf(event);
    longest_line = std::max(longest_line, text.size());
    ASSERT_EQ(text.find('\n'), std::string::npos);
  });
  Time now{0};
  for (int i = 0; i < kRounds; ++i) {
    now += Time(random() % 4 == 0 ? random() % 5000 : random() % 30);
    device.Receive(ToBytes(RandomBytes(random)), now);
    ExpectNoDeadlineInThePast(device, now);
    if (random() % 4 == 0) ExpectBoundedAnswers(device);
  }
  EXPECT_LE(longest_line, 120U);
  device.Advance(now += 2000s);
  EXPECT_EQ(device.NextDeadline(), std::nullopt);
  ExpectBoundedAnswers(device);
  device.Receive(ToBytes(wire::kResetKeys), now);
  EXPECT_EQ(device.TakeAnswer(), ToBytes("\xAA"));
}

TEST(Garbage, OverUsbIsSurvived) {
  const unsigned seed = std::random_device{}();
  std::cout << "seeds from " << seed << "\n";
  for (unsigned i = 0; i < 10; ++i) Torment(Line::kUsb, seed + i);
}

TEST(Garbage, OverSerialIsSurvived) {
  const unsigned seed = std::random_device{}();
  std::cout << "seeds from " << seed << "\n";
  for (unsigned i = 0; i < 10; ++i) Torment(Line::kSerial, seed + i);
}

TEST(Garbage, OfFixedSeedsIsSurvived) {
  for (unsigned seed = 0; seed < 10; ++seed) {
    Torment(Line::kUsb, seed);
    Torment(Line::kSerial, seed);
  }
}

TEST(Garbage, OfEverySingleByteIsSurvived) {
  for (const Line line : {Line::kUsb, Line::kSerial}) {
    for (int byte = 0; byte < 256; ++byte) {
      Rig rig(line);
      rig.customer.actions = {WalksAway()};
      rig.Feed(std::string(1, static_cast<char>(byte)));
      rig.Wait(60s);
      while (rig.Answer() != "(none)") continue;
      EXPECT_EQ(rig.Ask(wire::kGetVersion), "\x02V1.0.0|20240615\x03") << byte;
    }
  }
}

}  // namespace
}  // namespace gwq::terminal::test
