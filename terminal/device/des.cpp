#include "device/des.h"

#include <openssl/evp.h>

#include <limits>
#include <memory>

namespace gwq::terminal {
namespace {

constexpr std::size_t kBlock = 8;
constexpr std::size_t kTriple = 3 * kBlock;

struct FreeContext {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_CIPHER_CTX, FreeContext>;

// Single DES is triple DES with three equal keys. Written so, it needs none of
// the ciphers that libcrypto keeps in its legacy provider.
SecretBytes AsTripleKey(std::span<const std::uint8_t> key) {
  SecretBytes triple = CopySecret(key);
  triple.reserve(kTriple);
  for (std::size_t i = 0; triple.size() < kTriple; ++i) triple.push_back(key[i % key.size()]);
  return triple;
}

bool AreLengthsValid(std::span<const std::uint8_t> key, std::span<const std::uint8_t> data) {
  return IsKeyLength(key.size()) && data.size() % kBlock == 0 &&
         data.size() <= static_cast<std::size_t>(std::numeric_limits<int>::max());
}

std::optional<SecretBytes> Run(std::span<const std::uint8_t> key, std::span<const std::uint8_t> data,
                               bool encipher) {
  if (!AreLengthsValid(key, data)) return std::nullopt;
  const Context context(EVP_CIPHER_CTX_new());
  const SecretBytes triple = AsTripleKey(key);
  SecretBytes out(data.size() + kBlock);
  int written = 0;
  const bool done =
      context != nullptr &&
      EVP_CipherInit_ex(context.get(), EVP_des_ede3_ecb(), nullptr, triple.data(), nullptr,
                        encipher ? 1 : 0) == 1 &&
      EVP_CIPHER_CTX_set_padding(context.get(), 0) == 1 &&
      EVP_CipherUpdate(context.get(), out.data(), &written, data.data(), static_cast<int>(data.size())) == 1;
  if (!done || static_cast<std::size_t>(written) != data.size()) return std::nullopt;
  out.resize(data.size());
  return out;
}

}  // namespace

bool IsKeyLength(std::size_t size) {
  return size == kBlock || size == 2 * kBlock || size == kTriple;
}

std::optional<SecretBytes> Encipher(std::span<const std::uint8_t> key, std::span<const std::uint8_t> data) {
  return Run(key, data, true);
}

std::optional<SecretBytes> Decipher(std::span<const std::uint8_t> key, std::span<const std::uint8_t> data) {
  return Run(key, data, false);
}

}  // namespace gwq::terminal
