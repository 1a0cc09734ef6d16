// SPDX-License-Identifier: MIT
#include "unit/terminal/device/pad/pad_rig.h"

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>
#include <openssl/rsa.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <numeric>

namespace gwq::terminal::test {
namespace {

template <auto Function>
struct Freer {
  template <typename T>
  void operator()(T* thing) const {
    Function(thing);
  }
};
using Key = std::unique_ptr<EVP_PKEY, Freer<EVP_PKEY_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Freer<EVP_PKEY_CTX_free>>;
using Params = std::unique_ptr<OSSL_PARAM, Freer<OSSL_PARAM_free>>;
using ParamBuild = std::unique_ptr<OSSL_PARAM_BLD, Freer<OSSL_PARAM_BLD_free>>;
using Number = std::unique_ptr<BIGNUM, Freer<BN_free>>;
using Context = std::unique_ptr<EVP_CIPHER_CTX, Freer<EVP_CIPHER_CTX_free>>;

std::uint8_t Xor(std::span<const std::uint8_t> bytes) {
  return std::accumulate(bytes.begin(), bytes.end(), std::uint8_t{0}, std::bit_xor<>());
}

bool HasZero(const ByteList& bytes) {
  return std::find(bytes.begin(), bytes.end(), 0) != bytes.end();
}

Number ToNumber(std::span<const std::uint8_t> bytes) {
  return Number(BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), nullptr));
}

Key KeyOf(const char* type, OSSL_PARAM_BLD* build) {
  const Params params(OSSL_PARAM_BLD_to_param(build));
  const KeyContext context(EVP_PKEY_CTX_new_from_name(nullptr, type, nullptr));
  EVP_PKEY* key = nullptr;
  EVP_PKEY_fromdata_init(context.get());
  EXPECT_EQ(EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_PUBLIC_KEY, params.get()), 1);
  return Key(key);
}

Key RsaKey(std::span<const std::uint8_t> modulus_and_exponent) {
  const std::size_t size = modulus_and_exponent.size() - 3;
  const Number modulus = ToNumber(modulus_and_exponent.first(size));
  const Number exponent = ToNumber(modulus_and_exponent.subspan(size));
  const ParamBuild build(OSSL_PARAM_BLD_new());
  OSSL_PARAM_BLD_push_BN(build.get(), OSSL_PKEY_PARAM_RSA_N, modulus.get());
  OSSL_PARAM_BLD_push_BN(build.get(), OSSL_PKEY_PARAM_RSA_E, exponent.get());
  return KeyOf("RSA", build.get());
}

Key Sm2Key(const ByteList& x_and_y) {
  ByteList point{0x04};
  point.insert(point.end(), x_and_y.begin(), x_and_y.end());
  const ParamBuild build(OSSL_PARAM_BLD_new());
  OSSL_PARAM_BLD_push_utf8_string(build.get(), OSSL_PKEY_PARAM_GROUP_NAME, "SM2", 0);
  OSSL_PARAM_BLD_push_octet_string(build.get(), OSSL_PKEY_PARAM_PUB_KEY, point.data(), point.size());
  return KeyOf("SM2", build.get());
}

ByteList EncipherUnder(EVP_PKEY* key, bool oaep, const ByteList& data) {
  const KeyContext context(EVP_PKEY_CTX_new_from_pkey(nullptr, key, nullptr));
  EVP_PKEY_encrypt_init(context.get());
  if (oaep) {
    EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING);
    EVP_PKEY_CTX_set_rsa_oaep_md(context.get(), EVP_sha256());
  }
  ByteList out(512);
  std::size_t size = out.size();
  EXPECT_EQ(EVP_PKEY_encrypt(context.get(), out.data(), &size, data.data(), data.size()), 1);
  out.resize(size);
  return out;
}

// The content of the DER element at `at`, which moves behind it.
ByteList TakeElement(const ByteList& der, std::size_t& at) {
  std::size_t size = der.at(at + 1);
  at += 2;
  if (size == 0x81) size = der.at(at++);
  const auto begin = der.begin() + static_cast<std::ptrdiff_t>(at);
  at += size;
  return {begin, begin + static_cast<std::ptrdiff_t>(size)};
}

ByteList InBytes(ByteList number, std::size_t size) {
  while (number.size() > size) number.erase(number.begin());
  number.insert(number.begin(), size - number.size(), 0);
  return number;
}

// SEQUENCE { X, Y, C3, C2 } as C1, C2, C3.
ByteList FromDer(const ByteList& der) {
  std::size_t at = 0;
  const ByteList content = TakeElement(der, at);
  at = 0;
  ByteList out = InBytes(TakeElement(content, at), 32);
  const ByteList y = InBytes(TakeElement(content, at), 32);
  const ByteList c3 = TakeElement(content, at);
  const ByteList c2 = TakeElement(content, at);
  for (const ByteList& part : {y, c2, c3}) out.insert(out.end(), part.begin(), part.end());
  return out;
}

}  // namespace

std::string PadFrame(const ByteList& body) {
  const ByteList length{static_cast<std::uint8_t>(body.size() >> 8),
                        static_cast<std::uint8_t>(body.size() & 0xFF)};
  return std::string("\x02").append(Split(length) + Split(body) + Split(ByteList{Xor(body)})).append("\x03");
}

PadAnswer ReadPadAnswer(const std::string& frame) {
  if (frame.size() < 12 || frame.front() != '\x02' || frame.back() != '\x03') return {};
  const ByteList bytes = Unsplit(std::string_view(frame).substr(1, frame.size() - 2));
  const std::size_t length = bytes[0] * std::size_t{256} + bytes[1];
  const std::span<const std::uint8_t> checked = std::span(bytes).subspan(2);
  if (bytes.size() != length + 3 || Xor(checked) != 0) return {};
  const auto data = checked.subspan(2, length - 2);
  return {bytes[2] * 256 + bytes[3], ByteList(data.begin(), data.end())};
}

PadAnswer AskPad(Rig& rig, const ByteList& body) {
  return ReadPadAnswer(rig.Ask(PadFrame({body.begin(), std::find(body.begin(), body.end(), 0)})));
}

ByteList Body(std::initializer_list<int> bytes, std::string_view text) {
  ByteList body;
  for (const int byte : bytes) body.push_back(static_cast<std::uint8_t>(byte));
  body.insert(body.end(), text.begin(), text.end());
  return body;
}

std::string Factor(Rig& rig) {
  return ToText(AskPad(rig, {0x30, 0x19}).data);
}

ByteList Sm4(std::string_view key_hex, const ByteList& data, bool encipher, bool padded) {
  const Context context(EVP_CIPHER_CTX_new());
  const ByteList key = FromHex(key_hex);
  ByteList out(data.size() + 16);
  int size = 0;
  int last = 0;
  EVP_CipherInit_ex(context.get(), EVP_sm4_ecb(), nullptr, key.data(), nullptr, encipher ? 1 : 0);
  EVP_CIPHER_CTX_set_padding(context.get(), padded ? 1 : 0);
  EVP_CipherUpdate(context.get(), out.data(), &size, data.data(), static_cast<int>(data.size()));
  EXPECT_EQ(EVP_CipherFinal_ex(context.get(), out.data() + size, &last), 1);
  out.resize(static_cast<std::size_t>(size) + static_cast<std::size_t>(last));
  return out;
}

std::string VerifyKey(int type, std::string_view key_hex) {
  const ByteList block =
      type == kSm4Type ? Sm4(key_hex, ByteList(16), true) : PlainDes(FromHex(key_hex), ByteList(8), true);
  return ToHex(block).substr(0, 6);
}

ByteList UnderRsa(const ByteList& modulus_and_exponent, const ByteList& key) {
  const Key pad = RsaKey(modulus_and_exponent);
  ByteList out = EncipherUnder(pad.get(), true, key);
  while (HasZero(out)) out = EncipherUnder(pad.get(), true, key);
  return out;
}

ByteList UnderSm2(const ByteList& x_and_y, const ByteList& key) {
  const Key pad = Sm2Key(x_and_y);
  ByteList out = FromDer(EncipherUnder(pad.get(), false, key));
  while (HasZero(out)) out = FromDer(EncipherUnder(pad.get(), false, key));
  return out;
}

ByteList LoadBody(int code, int length_byte, const ByteList& key, std::string_view factor,
                  std::string_view verify_key) {
  ByteList body = Body({0x30, code, length_byte});
  body.insert(body.end(), key.begin(), key.end());
  for (const std::string_view text : {factor, verify_key}) body.insert(body.end(), text.begin(), text.end());
  return body;
}

void LoadPadKey(Rig& rig, int type, std::string_view key_hex) {
  ASSERT_EQ(AskPad(rig, Body({0x30, 0x10, type})).status, 0);
  const ByteList key = FromHex(key_hex);
  const ByteList under =
      type == kSm4Type ? Sm4(kFactoryHex, key, true) : PlainDes(FromHex(kFactoryHex), key, true);
  ASSERT_FALSE(HasZero(under)) << "choose another key";
  const PadAnswer answer =
      AskPad(rig, LoadBody(0x04, static_cast<int>(key.size()), under, Factor(rig), VerifyKey(type, key_hex)));
  ASSERT_EQ(answer.status, 0x3004);
  ASSERT_EQ(answer.data, ByteList{0});
}

}  // namespace gwq::terminal::test
