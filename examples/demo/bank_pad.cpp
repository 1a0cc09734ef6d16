// SPDX-License-Identifier: MIT
#include "bank_pad.h"

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>
#include <openssl/rsa.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

namespace example {
namespace {

using Bytes = std::vector<std::uint8_t>;

template <auto Function>
struct Freer {
  template <typename T>
  void operator()(T* thing) const {
    Function(thing);
  }
};
using PublicKey = std::unique_ptr<EVP_PKEY, Freer<EVP_PKEY_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Freer<EVP_PKEY_CTX_free>>;
using Cipher = std::unique_ptr<EVP_CIPHER_CTX, Freer<EVP_CIPHER_CTX_free>>;
using Params = std::unique_ptr<OSSL_PARAM, Freer<OSSL_PARAM_free>>;
using ParamBuild = std::unique_ptr<OSSL_PARAM_BLD, Freer<OSSL_PARAM_BLD_free>>;
using Number = std::unique_ptr<BIGNUM, Freer<BN_free>>;

void Must(bool done, const char* what) {
  if (!done) throw std::runtime_error(what);
}

Bytes FromHex(const std::string& text) {
  Bytes bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

PublicKey KeyFrom(const char* type, OSSL_PARAM_BLD* build) {
  const Params params(OSSL_PARAM_BLD_to_param(build));
  const KeyContext context(EVP_PKEY_CTX_new_from_name(nullptr, type, nullptr));
  EVP_PKEY* key = nullptr;
  Must(context && EVP_PKEY_fromdata_init(context.get()) == 1 &&
           EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_PUBLIC_KEY, params.get()) == 1,
       "not a public key");
  return PublicKey(key);
}

PublicKey RsaKey(const std::string& modulus) {
  constexpr unsigned kExponent = 65537;
  const Bytes bytes = FromHex(modulus);
  const Number n(BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), nullptr));
  const ParamBuild build(OSSL_PARAM_BLD_new());
  Must(OSSL_PARAM_BLD_push_BN(build.get(), OSSL_PKEY_PARAM_RSA_N, n.get()) == 1 &&
           OSSL_PARAM_BLD_push_uint(build.get(), OSSL_PKEY_PARAM_RSA_E, kExponent) == 1,
       "not an RSA modulus");
  return KeyFrom("RSA", build.get());
}

PublicKey Sm2Key(const std::string& point) {
  const Bytes bytes = FromHex("04" + point);
  const ParamBuild build(OSSL_PARAM_BLD_new());
  Must(OSSL_PARAM_BLD_push_utf8_string(build.get(), OSSL_PKEY_PARAM_GROUP_NAME, "SM2", 0) == 1 &&
           OSSL_PARAM_BLD_push_octet_string(build.get(), OSSL_PKEY_PARAM_PUB_KEY, bytes.data(),
                                            bytes.size()) == 1,
       "not an SM2 point");
  return KeyFrom("SM2", build.get());
}

Bytes EncipherUnder(EVP_PKEY* pad, const Key& key) {
  const KeyContext context(EVP_PKEY_CTX_new_from_pkey(nullptr, pad, nullptr));
  Must(context && EVP_PKEY_encrypt_init(context.get()) == 1, "the key cannot encipher");
  if (EVP_PKEY_is_a(pad, "RSA") == 1) {
    Must(EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING) == 1 &&
             EVP_PKEY_CTX_set_rsa_oaep_md(context.get(), EVP_sha256()) == 1,
         "no OAEP");
  }
  Bytes out(512);
  std::size_t size = out.size();
  Must(EVP_PKEY_encrypt(context.get(), out.data(), &size, key.data(), key.size()) == 1, "enciphering failed");
  out.resize(size);
  return out;
}

// The content of the DER element at the front, which is cut off.
std::span<const std::uint8_t> TakeElement(std::span<const std::uint8_t>& der) {
  const bool long_form = der[1] == 0x81;
  const std::size_t size = long_form ? der[2] : der[1];
  const std::size_t header = long_form ? 3 : 2;
  const auto content = der.subspan(header, size);
  der = der.subspan(header + size);
  return content;
}

// Appends a number's last `size` bytes, padded in front with zeros.
void AppendNumber(std::span<const std::uint8_t> number, std::size_t size, Bytes& out) {
  if (number.size() > size) number = number.last(size);
  out.insert(out.end(), size - number.size(), 0);
  out.insert(out.end(), number.begin(), number.end());
}

// m, C1, C2 in its field of 136 bytes, C3, out of the DER sequence of X, Y, C3 and C2.
Bytes Sm2Record(const Bytes& der) {
  constexpr std::size_t kC2Field = 136;
  std::span<const std::uint8_t> rest(der);
  std::span<const std::uint8_t> content = TakeElement(rest);
  const auto x = TakeElement(content);
  const auto y = TakeElement(content);
  const auto c3 = TakeElement(content);
  const auto c2 = TakeElement(content);
  Bytes record;
  record.reserve(2 + 64 + kC2Field + 32);
  record.push_back(static_cast<std::uint8_t>(c2.size()));
  record.push_back(0);
  AppendNumber(x, 32, record);
  AppendNumber(y, 32, record);
  record.insert(record.end(), c2.begin(), c2.end());
  record.insert(record.end(), kC2Field - c2.size(), 0);
  record.insert(record.end(), c3.begin(), c3.end());
  return record;
}

// What is sent ends at its first zero byte, so there must be none in C1, C2 and C3.
bool HasZeroToSend(const Bytes& record) {
  const auto field = [&record](std::ptrdiff_t from, std::ptrdiff_t size) {
    const auto begin = record.begin() + from;
    return std::find(begin, begin + size, 0) != begin + size;
  };
  return field(2, 64) || field(66, record[0]) || field(202, 32);
}

Bytes Crypt(const Bytes& in, const Key& key, Algorithm algorithm, bool encipher) {
  const Cipher cipher(EVP_CIPHER_CTX_new());
  const EVP_CIPHER* kind = algorithm == Algorithm::kSm4 ? EVP_sm4_ecb() : EVP_des_ede_ecb();
  Bytes out(in.size() + 16);
  int size = 0;
  Must(cipher && EVP_CipherInit_ex(cipher.get(), kind, nullptr, key.data(), nullptr, encipher ? 1 : 0) == 1 &&
           EVP_CIPHER_CTX_set_padding(cipher.get(), 0) == 1 &&
           EVP_CipherUpdate(cipher.get(), out.data(), &size, in.data(), static_cast<int>(in.size())) == 1,
       "no such cipher");
  out.resize(static_cast<std::size_t>(size));
  return out;
}

}  // namespace

std::string EncipherForRsa(const Key& key, const std::string& modulus) {
  const PublicKey pad = RsaKey(modulus);
  Bytes out = EncipherUnder(pad.get(), key);
  while (std::find(out.begin(), out.end(), 0) != out.end()) out = EncipherUnder(pad.get(), key);
  return Hex(out);
}

std::string EncipherForSm2(const Key& key, const std::string& point) {
  const PublicKey pad = Sm2Key(point);
  Bytes record = Sm2Record(EncipherUnder(pad.get(), key));
  while (HasZeroToSend(record)) record = Sm2Record(EncipherUnder(pad.get(), key));
  return Hex(record);
}

std::string VerifyKey(const Key& key, Algorithm algorithm) {
  constexpr std::size_t kDigits = 6;
  const Bytes zeros(algorithm == Algorithm::kSm4 ? 16 : 8);
  return Hex(Crypt(zeros, key, algorithm, true)).substr(0, kDigits);
}

std::optional<std::string> PinInPadBlock(std::span<const unsigned char> block, const Key& key,
                                         Algorithm algorithm, const std::string& account) {
  const std::size_t size = algorithm == Algorithm::kSm4 ? 16 : 8;
  if (block.size() != size) return std::nullopt;
  const Bytes clear = Crypt({block.begin(), block.end()}, key, algorithm, false);
  Block iso{};
  std::copy_n(clear.begin(), iso.size(), iso.begin());
  return PinIn(iso, account.empty() ? "0" : account);
}

}  // namespace example
