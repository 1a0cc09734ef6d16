// SPDX-License-Identifier: MIT
#include "device/pad/pad_keys.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>

#include "base/hex.h"

namespace gwq::terminal::device {

using protocol::Row;
namespace {

constexpr std::size_t kFactorSize = 16;
constexpr std::size_t kMinVerifyKey = 6;
constexpr std::size_t kSm2Frame = 96;  // C1 and C3

struct Shape {
  std::uint8_t length_byte;
  std::size_t size;
  std::optional<PairKind> pair;
};
constexpr Shape kShapes[] = {
    {0x10, 16, std::nullopt},
    {0x18, 24, std::nullopt},
    {0x80, 128, PairKind::kRsa1024},
    {0x01, 256, PairKind::kRsa2048},
    {0x70, kSm2Frame + 16, PairKind::kSm2},
    {0x70, kSm2Frame + 24, PairKind::kSm2},
};

std::string_view AsText(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::optional<PairKind> PairFor(std::uint8_t algorithm, std::uint8_t length_byte) {
  if (algorithm == 1 && length_byte == 0x80) return PairKind::kRsa1024;
  if (algorithm == 1 && length_byte == 0x01) return PairKind::kRsa2048;
  if (algorithm == 2 && length_byte == 0x20) return PairKind::kSm2;
  return std::nullopt;
}

const EVP_MD* DigestFor(std::uint8_t number) {
  switch (number) {
    case 1:
      return EVP_sha1();
    case 2:
      return EVP_sha256();
    case 3:
      return EVP_sm3();
    default:
      return nullptr;
  }
}

bool Verifies(Algorithm algorithm, const SecretBytes& key, std::string_view verify_key) {
  const auto told = ReadHexText(verify_key);
  const auto block = EncipherBlocks(algorithm, key, SecretBytes(BlockSize(algorithm)));
  return told && block && verify_key.size() >= kMinVerifyKey && told->size() <= block->size() &&
         std::equal(told->begin(), told->end(), block->begin());
}

}  // namespace

void PadKeys::AddTo(FramedCommands& table) {
  table.Add(Row("read public key"), [this](Arguments arguments) { return TellPublicKey(arguments); });
  table.Add(Row("digest"), [this](Arguments arguments) { return TellDigest(arguments); });
  table.Add(Row("read factor"), [this](Arguments) { return factor_.empty() ? MakeFactor() : TellFactor(); });
  table.Add(Row("make factor"), [this](Arguments) {
    host_.Describe(", type 1");
    return FramedAnswer{MakeFactor().status, {}};
  });
  table.Add(Row("make factor", "type 2"), [this](Arguments) {
    host_.Describe(", type 2");
    return MakeFactor();
  });
  for (const protocol::CommandRow* row :
       {&Row("load working key", "framed"), &Row("load working key", "framed, type 2")})
    table.Add(*row, [this, row](Arguments arguments) { return Load(row->code, arguments); });
}

const SecretBytes* PadKeys::Working(Algorithm algorithm) const {
  const SecretBytes& key = working_.at(static_cast<std::size_t>(algorithm));
  return key.empty() ? nullptr : &key;
}

FramedAnswer PadKeys::TellPublicKey(Arguments arguments) {
  host_.Describe(", algorithm " + std::to_string(ArgumentAt(arguments, 0)));
  const auto kind = PairFor(ArgumentAt(arguments, 0), ArgumentAt(arguments, 1));
  auto key = kind ? pairs_.PublicKey(*kind) : std::nullopt;
  if (!key) return {kStatusNoSuchKey, {}};
  return {kStatusOk, std::move(*key)};
}

FramedAnswer PadKeys::TellDigest(Arguments arguments) {
  const EVP_MD* algorithm = DigestFor(ArgumentAt(arguments, 0));
  const Arguments data = arguments.subspan(std::min<std::size_t>(arguments.size(), 2));
  host_.Describe(" " + std::to_string(ArgumentAt(arguments, 0)) + " of " + std::to_string(data.size()) +
                 " bytes");
  if (algorithm == nullptr || data.size() != ArgumentAt(arguments, 1)) return {kStatusBadArgument, {}};
  Bytes digest(EVP_MAX_MD_SIZE);
  unsigned size = 0;
  if (EVP_Digest(data.data(), data.size(), digest.data(), &size, algorithm, nullptr) != 1)
    return {kStatusBadArgument, {}};
  digest.resize(size);
  return {kStatusOk, std::move(digest)};
}

FramedAnswer PadKeys::MakeFactor() {
  std::array<std::uint8_t, kFactorSize / 2> random{};
  if (RAND_bytes(random.data(), static_cast<int>(random.size())) != 1) return {kStatusNoSuchKey, {}};
  factor_ = ToHexText(random);
  return TellFactor();
}

FramedAnswer PadKeys::TellFactor() {
  return {kStatusOk, {factor_.begin(), factor_.end()}};
}

FramedAnswer PadKeys::Load(std::uint16_t code, Arguments arguments) {
  host_.Describe(" (" + std::to_string(arguments.size()) + " bytes, masked)");
  const KeyLoad result = Load(arguments);
  constexpr std::array<const char*, 4> kTexts{"the working key is loaded", "wrong factor",
                                              "the key cannot be deciphered", "wrong verify key"};
  host_.Note(kTexts.at(static_cast<std::size_t>(result)));
  return {code, {static_cast<std::uint8_t>(result)}};
}

PadKeys::KeyLoad PadKeys::Load(Arguments arguments) {
  const auto record = ReadRecord(arguments);
  if (!record) return KeyLoad::kUndecipherable;
  if (factor_.empty() || record->factor != factor_) return KeyLoad::kWrongFactor;
  auto key = Decipher(*record);
  const Algorithm algorithm = values_.CurrentAlgorithm();
  if (!key || !IsWorkingKeyLength(algorithm, key->size())) return KeyLoad::kUndecipherable;
  if (!Verifies(algorithm, *key, record->verify_key)) return KeyLoad::kWrongVerifyKey;
  working_.at(static_cast<std::size_t>(algorithm)) = std::move(*key);
  return KeyLoad::kLoaded;
}

// The record does not tell how long C2 is; where the factor stands does.
std::optional<PadKeys::Record> PadKeys::ReadRecord(Arguments arguments) const {
  std::optional<Record> first;
  for (const Shape& shape : kShapes) {
    if (ArgumentAt(arguments, 0) != shape.length_byte || arguments.size() < 1 + shape.size) continue;
    const std::string_view texts = AsText(arguments.subspan(1 + shape.size));
    const std::string_view factor = texts.substr(0, kFactorSize);
    const Record record{shape.pair, arguments.subspan(1, shape.size), factor, texts.substr(factor.size())};
    if (factor == factor_) return record;
    if (!first) first = record;
  }
  return first;
}

std::optional<SecretBytes> PadKeys::Decipher(const Record& record) {
  if (record.pair) return pairs_.Decipher(*record.pair, record.key);
  const SecretBytes* master = master_keys_.Master(0);
  const Algorithm algorithm = values_.CurrentAlgorithm();
  return DecipherBlocks(algorithm, *master, record.key);
}

}  // namespace gwq::terminal::device
