// SPDX-License-Identifier: MIT
#include "device/pad/key_pairs.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <algorithm>

namespace gwq::terminal::device {
namespace {

constexpr std::size_t kMaxPem = 16384;
constexpr std::size_t kExponentBytes = 3;
constexpr std::size_t kPointBytes = 64;
constexpr std::size_t kCoordinateBytes = 32;
constexpr std::size_t kSm3Bytes = 32;
constexpr std::uint8_t kUncompressed = 0x04;

template <auto Function>
struct Freer {
  template <typename T>
  void operator()(T* thing) const {
    Function(thing);
  }
};
using Bio = std::unique_ptr<BIO, Freer<BIO_free>>;
using Number = std::unique_ptr<BIGNUM, Freer<BN_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Freer<EVP_PKEY_CTX_free>>;

constexpr std::size_t IndexOf(PairKind kind) {
  return static_cast<std::size_t>(kind);
}

std::string PathOf(PairKind kind) {
  constexpr std::array<const char*, kPairKinds> kPaths{"/rsa1024.pem", "/rsa2048.pem", "/sm2.pem"};
  return kPaths.at(IndexOf(kind));
}

std::size_t RsaBits(PairKind kind) {
  return kind == PairKind::kRsa1024 ? 1024 : 2048;
}

std::optional<SecretBytes> ReadAll(FileSystem& files, const std::string& path) {
  const auto reader = files.Open(path);
  if (!reader) return std::nullopt;
  SecretBytes content(kMaxPem);
  content.resize(reader->Read(content).value_or(0));
  return content;
}

// Appends a number of the pair, in exactly `size` bytes.
bool AppendNumber(Bytes& out, EVP_PKEY* pair, const char* name, std::size_t size) {
  BIGNUM* read = nullptr;
  if (EVP_PKEY_get_bn_param(pair, name, &read) != 1) return false;
  const Number number(read);
  out.resize(out.size() + size);
  const int count = static_cast<int>(size);
  return BN_bn2binpad(number.get(), out.data() + (out.size() - size), count) == count;
}

void AppendDer(SecretBytes& out, std::uint8_t tag, std::span<const std::uint8_t> content) {
  constexpr std::size_t kMaxShortLength = 127;
  out.push_back(tag);
  if (content.size() > kMaxShortLength) out.push_back(0x81);
  out.push_back(static_cast<std::uint8_t>(content.size()));
  out.insert(out.end(), content.begin(), content.end());
}

// A positive number has no superfluous zeros in front, and its first bit is 0.
void AppendInteger(SecretBytes& out, std::span<const std::uint8_t> number) {
  while (number.size() > 1 && number.front() == 0) number = number.subspan(1);
  SecretBytes content;
  if ((number.front() & 0x80) != 0) content.push_back(0);
  content.insert(content.end(), number.begin(), number.end());
  AppendDer(out, 0x02, content);
}

// SEQUENCE { INTEGER X, INTEGER Y, OCTET STRING C3, OCTET STRING C2 }. C2 is at most
// a few dozen bytes, so that the length of the whole has one byte.
std::optional<SecretBytes> AsSm2Cipher(std::span<const std::uint8_t> data) {
  constexpr std::size_t kMaxC2 = 64;
  if (data.size() <= kPointBytes + kSm3Bytes || data.size() > kPointBytes + kSm3Bytes + kMaxC2)
    return std::nullopt;
  const std::size_t c2_size = data.size() - kPointBytes - kSm3Bytes;
  SecretBytes content;
  AppendInteger(content, data.first(kCoordinateBytes));
  AppendInteger(content, data.subspan(kCoordinateBytes, kCoordinateBytes));
  AppendDer(content, 0x04, data.last(kSm3Bytes));
  AppendDer(content, 0x04, data.subspan(kPointBytes, c2_size));
  SecretBytes sequence;
  AppendDer(sequence, 0x30, content);
  return sequence;
}

bool SetOaep(EVP_PKEY_CTX* context) {
  return EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_OAEP_PADDING) > 0 &&
         EVP_PKEY_CTX_set_rsa_oaep_md(context, EVP_sha256()) > 0;
}

}  // namespace

void KeyPairs::Free::operator()(EVP_PKEY* pair) const {
  EVP_PKEY_free(pair);
}

std::optional<Bytes> KeyPairs::PublicKey(PairKind kind) {
  EVP_PKEY* pair = FindOrMake(kind);
  return pair != nullptr ? ExportPublic(kind, pair) : std::nullopt;
}

std::optional<SecretBytes> KeyPairs::Decipher(PairKind kind, std::span<const std::uint8_t> data) {
  EVP_PKEY* pair = Find(kind);
  const auto in = kind == PairKind::kSm2 ? AsSm2Cipher(data) : CopySecret(data);
  if (pair == nullptr || !in) return std::nullopt;
  const KeyContext context(EVP_PKEY_CTX_new_from_pkey(nullptr, pair, nullptr));
  if (context == nullptr || EVP_PKEY_decrypt_init(context.get()) <= 0) return std::nullopt;
  if (kind != PairKind::kSm2 && !SetOaep(context.get())) return std::nullopt;
  SecretBytes out(std::max(in->size(), static_cast<std::size_t>(EVP_PKEY_get_size(pair))));
  std::size_t size = out.size();
  if (EVP_PKEY_decrypt(context.get(), out.data(), &size, in->data(), in->size()) <= 0) return std::nullopt;
  out.resize(size);
  return out;
}

std::optional<std::string> KeyPairs::BadFile() const {
  for (const PairKind kind : {PairKind::kRsa1024, PairKind::kRsa2048, PairKind::kSm2}) {
    const auto pem = files_ != nullptr ? ReadAll(*files_, PathOf(kind)) : std::nullopt;
    if (pem && !Read(kind, *pem)) return PathOf(kind).substr(1);
  }
  return std::nullopt;
}

EVP_PKEY* KeyPairs::Find(PairKind kind) {
  Pair& pair = pairs_.at(IndexOf(kind));
  if (pair || files_ == nullptr) return pair.get();
  if (const auto pem = ReadAll(*files_, PathOf(kind))) pair = Read(kind, *pem);
  return pair.get();
}

EVP_PKEY* KeyPairs::FindOrMake(PairKind kind) {
  if (EVP_PKEY* found = Find(kind)) return found;
  Pair& pair = pairs_.at(IndexOf(kind));
  pair = Make(kind);
  if (pair && files_ != nullptr) Save(kind, pair.get());
  return pair.get();
}

KeyPairs::Pair KeyPairs::Make(PairKind kind) {
  if (kind == PairKind::kSm2) return Pair(EVP_PKEY_Q_keygen(nullptr, nullptr, "SM2"));
  return Pair(EVP_PKEY_Q_keygen(nullptr, nullptr, "RSA", RsaBits(kind)));
}

// The empty pass phrase keeps libcrypto from asking for one.
KeyPairs::Pair KeyPairs::Read(PairKind kind, std::span<const std::uint8_t> pem) {
  const Bio bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
  std::array<char, 1> no_pass_phrase{};
  Pair pair(PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, no_pass_phrase.data()));
  return pair && ExportPublic(kind, pair.get()) ? std::move(pair) : nullptr;
}

void KeyPairs::Save(PairKind kind, EVP_PKEY* pair) {
  const Bio bio(BIO_new(BIO_s_secmem()));
  if (PEM_write_bio_PrivateKey(bio.get(), pair, nullptr, nullptr, 0, nullptr, nullptr) != 1) return;
  char* text = nullptr;
  const long size = BIO_get_mem_data(bio.get(), &text);
  const auto writer = files_->Create();
  const std::span<const std::uint8_t> pem(reinterpret_cast<const std::uint8_t*>(text),
                                          static_cast<std::size_t>(std::max(size, 0L)));
  if (writer && writer->Append(pem)) (void)writer->StoreAs(PathOf(kind));
}

// Nothing when the pair is of another kind.
std::optional<Bytes> KeyPairs::ExportPublic(PairKind kind, EVP_PKEY* pair) {
  Bytes key;
  if (kind != PairKind::kSm2) {
    const std::size_t bits = RsaBits(kind);
    const bool fits = EVP_PKEY_is_a(pair, "RSA") == 1 && EVP_PKEY_get_bits(pair) == static_cast<int>(bits) &&
                      AppendNumber(key, pair, OSSL_PKEY_PARAM_RSA_N, bits / 8) &&
                      AppendNumber(key, pair, OSSL_PKEY_PARAM_RSA_E, kExponentBytes);
    return fits ? std::optional(std::move(key)) : std::nullopt;
  }
  key.resize(1 + kPointBytes);
  std::size_t size = 0;
  const bool fits =
      EVP_PKEY_is_a(pair, "SM2") == 1 &&
      EVP_PKEY_get_octet_string_param(pair, OSSL_PKEY_PARAM_PUB_KEY, key.data(), key.size(), &size) == 1 &&
      size == key.size() && key.front() == kUncompressed;
  if (!fits) return std::nullopt;
  key.erase(key.begin());
  return key;
}

}  // namespace gwq::terminal::device
