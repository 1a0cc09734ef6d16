// SPDX-License-Identifier: MIT
#include "device/pad/pad_data.h"

#include <algorithm>

#include "base/hex.h"
#include "device/pad/ciphers.h"
#include "protocol/marks.h"

namespace gwq::terminal::device {

using protocol::Match;
using protocol::Row;
namespace {

constexpr std::size_t kMaxAnswered = 4000;
constexpr const char* kPath = "/tmp/encdata.txt";

}  // namespace

void PadData::AddTo(TextCommands& table) {
  table.Add(Row("GETENCDATA"), [this](const Match& match) { Encipher(match); });
}

void PadData::Encipher(const Match& match) {
  const auto number = static_cast<std::size_t>(match.numbers[0]);
  host_.Describe(", algorithm " + std::to_string(number) + " (" + std::to_string(match.text.size()) +
                 " characters, masked)");
  files_.Remove(kPath);
  const auto data = ReadHexText(match.text);
  const bool fits = number < kAlgorithms && static_cast<std::size_t>(match.numbers[1]) == match.text.size();
  if (!data || !fits) return AnswerFailure(host_);
  const auto algorithm = static_cast<Algorithm>(number);
  const SecretBytes* key = keys_.Working(algorithm);
  if (key == nullptr) return AnswerRefusal(host_);
  const auto enciphered = EncipherData(algorithm, *key, *data);
  if (!enciphered) return AnswerFailure(host_);
  const std::string text = ToHexText(*enciphered);
  if (!Keep(text)) return AnswerFailure(host_);
  Bytes answer{protocol::kStx, protocol::kAccepted};
  answer.insert(answer.end(), text.begin(),
                text.begin() + std::ptrdiff_t(std::min(text.size(), kMaxAnswered)));
  answer.push_back(protocol::kEtx);
  host_.Answer(std::move(answer), "enciphered data (" + std::to_string(text.size()) + " characters)");
}

bool PadData::Keep(const std::string& text) {
  const auto writer = files_.Create();
  return writer && writer->Append({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}) &&
         writer->StoreAs(kPath) == FileResult::kDone;
}

}  // namespace gwq::terminal::device
