// SPDX-License-Identifier: MIT
#include "recording/text_form.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <stdexcept>

#include "base/hex.h"

namespace gwq::terminal::recording {
namespace {

constexpr std::size_t kMinRun = 4;
constexpr std::size_t kMinQuoted = 2;
constexpr std::int64_t kMicroseconds = 1'000'000;
constexpr std::int64_t kMaxSeconds = 1'000'000'000'000;

[[noreturn]] void Fail(const std::string& why) {
  throw std::runtime_error(why);
}

bool IsQuotable(std::uint8_t byte) {
  return byte >= ' ' && byte <= '~' && byte != '"';
}

// How many of the bytes are the same as the first.
std::size_t RunOf(std::span<const std::uint8_t> bytes) {
  const auto other = std::find_if(bytes.begin(), bytes.end(), [&](auto byte) { return byte != bytes[0]; });
  return static_cast<std::size_t>(other - bytes.begin());
}

std::size_t QuotableOf(std::span<const std::uint8_t> bytes) {
  return static_cast<std::size_t>(std::find_if_not(bytes.begin(), bytes.end(), IsQuotable) - bytes.begin());
}

std::string HexOf(std::uint8_t byte) {
  char text[4];
  std::snprintf(text, sizeof text, "%02x", static_cast<unsigned>(byte));
  return text;
}

// Takes from the front of `bytes` what makes one word.
std::string TakeDataWord(std::span<const std::uint8_t>& bytes) {
  const std::size_t quotable = QuotableOf(bytes);
  std::string word;
  std::size_t taken = 1;
  if (quotable >= kMinQuoted) {
    taken = quotable;
    word += '"';
    word.append(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(taken));
    word += '"';
  } else {
    const std::size_t run = RunOf(bytes);
    word = HexOf(bytes[0]);
    if (run >= kMinRun) word += "*" + std::to_string(taken = run);
  }
  bytes = bytes.subspan(taken);
  return word;
}

void AppendClear(std::string& text, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    text += ' ';
    text += TakeDataWord(bytes);
  }
}

// The words of a line; a quoted one may have spaces in it.
class Words {
 public:
  explicit Words(std::string_view line) : rest_(line) { SkipSpace(); }

  [[nodiscard]] bool AtEnd() const { return rest_.empty(); }

  std::string_view Next(const char* what) {
    if (rest_.empty()) Fail(std::string("there is no ") + what);
    std::size_t size = std::min(rest_.find_first_of(" \t"), rest_.size());
    if (rest_.front() == '"') {
      const std::size_t end = rest_.find('"', 1);
      if (end == std::string_view::npos) Fail("a text has no quotation mark at its end");
      size = end + 1;
    }
    const std::string_view word = rest_.substr(0, size);
    rest_.remove_prefix(size);
    SkipSpace();
    return word;
  }

 private:
  void SkipSpace() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r"), rest_.size())); }

  std::string_view rest_;
};

template <typename T>
T Number(std::string_view text, const char* what, int base = 10) {
  T value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc{} || end != text.data() + text.size())
    Fail("'" + std::string(text.substr(0, 40)) + "' is no " + what);
  return value;
}

std::int64_t ParseTime(std::string_view text) {
  constexpr std::size_t kDecimals = 6;
  const std::size_t point = text.find('.');
  const bool good = point != std::string_view::npos && text.size() == point + 1 + kDecimals;
  if (!good) Fail("'" + std::string(text.substr(0, 40)) + "' is no time in seconds with six decimals");
  const auto seconds = Number<std::uint64_t>(text.substr(0, point), "time");
  const auto micros = Number<std::uint32_t>(text.substr(point + 1), "time");
  if (seconds > static_cast<std::uint64_t>(kMaxSeconds)) Fail("the time is too large");
  return static_cast<std::int64_t>(seconds) * kMicroseconds + micros;
}

void ParseWire(Words& words, WireTransfer& transfer) {
  const std::string_view wire = words.Next("line: usb or serial");
  if (wire != "usb" && wire != "serial") Fail("the line is neither usb nor serial");
  transfer.wire = wire == "usb" ? Wire::kUsb : Wire::kSerial;
  const std::string_view way = words.Next("direction: in, out or control");
  const std::string_view endpoint = words.Next("endpoint");
  if (way != "in" && way != "out" && way != "control") Fail("the direction is not in, out or control");
  if (transfer.wire == Wire::kUsb) transfer.endpoint = Number<std::uint8_t>(endpoint, "endpoint", 16);
  if (transfer.wire == Wire::kSerial) transfer.endpoint = way == "in" ? kInBit : 0;
  if (way == "control" && transfer.wire == Wire::kUsb) transfer.type = TransferType::kControl;
  if (way != "control" && transfer.ToHost() != (way == "in")) Fail("direction and endpoint do not agree");
}

void ParseSetup(std::string_view text, WireTransfer& transfer) {
  const auto setup = ReadHexText(text);
  if (!setup || setup->size() != transfer.setup.size()) Fail("the setup packet is not 16 hexadecimal digits");
  std::copy(setup->begin(), setup->end(), transfer.setup.begin());
}

void Grow(WireTransfer& transfer, std::size_t count, std::uint8_t byte, std::size_t limit) {
  if (count > limit - transfer.data.size()) Fail("there are more data than the length says");
  transfer.data.insert(transfer.data.end(), count, byte);
}

void ParseData(std::string_view word, WireTransfer& transfer, std::size_t length) {
  if (word.front() == '"') {
    const std::string_view text = word.substr(1, word.size() - 2);
    if (text.size() > length - transfer.data.size()) Fail("there are more data than the length says");
    transfer.data.insert(transfer.data.end(), text.begin(), text.end());
    return;
  }
  const std::size_t star = word.find('*');
  const std::string_view what = word.substr(0, star);
  const auto count =
      star == std::string_view::npos ? std::size_t{1} : Number<std::size_t>(word.substr(star + 1), "count");
  if (what == "?") {
    if (count > 0) transfer.masks.push_back({transfer.data.size(), count});
    return Grow(transfer, count, kMaskByte, length);
  }
  if (what.size() != 2) Fail("'" + std::string(word.substr(0, 40)) + "' is no byte");
  Grow(transfer, count, Number<std::uint8_t>(what, "byte", 16), length);
}

}  // namespace

std::string DataText(std::span<const std::uint8_t> data, const Masks& masks) {
  std::string text;
  std::size_t done = 0;
  for (const MaskedSpan& span : masks) {
    AppendClear(text, data.subspan(done, span.offset - done));
    text += " ?*" + std::to_string(span.size);
    done = span.offset + span.size;
  }
  AppendClear(text, data.subspan(done));
  return text.substr(text.empty() ? 0 : 1);
}

std::string LineOf(const WireTransfer& transfer) {
  const bool control = transfer.type == TransferType::kControl;
  char head[80];
  std::snprintf(head, sizeof head, "%lld.%06lld ", static_cast<long long>(transfer.time_us / kMicroseconds),
                static_cast<long long>(transfer.time_us % kMicroseconds));
  std::string line = head;
  line += transfer.wire == Wire::kUsb ? "usb " : "serial ";
  line += control && transfer.wire == Wire::kUsb ? "control " : transfer.ToHost() ? "in " : "out ";
  line += transfer.wire == Wire::kUsb ? HexOf(transfer.endpoint) : "-";
  line += ' ';
  line += std::to_string(transfer.data.size());
  if (transfer.status != 0) line += " status=" + std::to_string(transfer.status);
  if (control) line += " setup=" + ToHexText(transfer.setup);
  const std::string data = DataText(transfer.data, transfer.masks);
  if (!data.empty()) line += " ";
  return line + data;
}

WireTransfer ParseLine(std::string_view line) {
  Words words(line);
  WireTransfer transfer;
  transfer.time_us = ParseTime(words.Next("time"));
  ParseWire(words, transfer);
  const auto length = Number<std::size_t>(words.Next("length"), "length");
  if (length > kMaxTransferSize) Fail("the length is too large");
  while (!words.AtEnd()) {
    const std::string_view word = words.Next("data");
    if (word.starts_with("status=")) {
      transfer.status = Number<int>(word.substr(7), "status");
    } else if (word.starts_with("setup=")) {
      ParseSetup(word.substr(6), transfer);
    } else {
      ParseData(word, transfer, length);
    }
  }
  if (transfer.data.size() != length) Fail("there are fewer data than the length says");
  transfer.length = length;
  return transfer;
}

}  // namespace gwq::terminal::recording
