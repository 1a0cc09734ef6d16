// SPDX-License-Identifier: MIT
#include "device/pad/ciphers.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <limits>
#include <memory>

namespace gwq::terminal::device {
namespace {

constexpr std::size_t kDesBlock = 8;
constexpr std::size_t kTripleKeySize = 24;
constexpr std::size_t kSm4KeySize = 16;

struct FreeContext {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_CIPHER_CTX, FreeContext>;

// One run of a cipher of libcrypto, whose key must have the length it wants.
struct CipherRun {
  const EVP_CIPHER* cipher = nullptr;
  std::span<const std::uint8_t> key;
  const std::uint8_t* vector = nullptr;
  bool encipher = true;
  bool padded = false;
};

std::optional<SecretBytes> RunCipher(const CipherRun& run, std::span<const std::uint8_t> data) {
  if (data.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) return std::nullopt;
  const Context context(EVP_CIPHER_CTX_new());
  SecretBytes out(data.size() + EVP_MAX_BLOCK_LENGTH);
  int size = 0;
  int last = 0;
  const bool done =
      context != nullptr &&
      EVP_CipherInit_ex(context.get(), run.cipher, nullptr, run.key.data(), run.vector,
                        run.encipher ? 1 : 0) == 1 &&
      EVP_CIPHER_CTX_set_padding(context.get(), run.padded ? 1 : 0) == 1 &&
      EVP_CipherUpdate(context.get(), out.data(), &size, data.data(), static_cast<int>(data.size())) == 1 &&
      EVP_CipherFinal_ex(context.get(), out.data() + size, &last) == 1;
  if (!done) return std::nullopt;
  out.resize(static_cast<std::size_t>(size) + static_cast<std::size_t>(last));
  return out;
}

// A key of any of its lengths as triple DES wants it. Single DES is triple DES with three equal
// keys; written so, it needs none of the ciphers that libcrypto keeps in its legacy provider.
SecretBytes AsTripleKey(std::span<const std::uint8_t> key) {
  SecretBytes triple = CopySecret(key);
  triple.reserve(kTripleKeySize);
  for (std::size_t i = 0; triple.size() < kTripleKeySize; ++i) triple.push_back(key[i % key.size()]);
  return triple;
}

std::optional<SecretBytes> RunDes(std::span<const std::uint8_t> key, std::span<const std::uint8_t> data,
                                  bool encipher) {
  if (!IsDesKeyLength(key.size()) || data.size() % kDesBlock != 0) return std::nullopt;
  const SecretBytes triple = AsTripleKey(key);
  return RunCipher({EVP_des_ede3_ecb(), triple, nullptr, encipher, false}, data);
}

SecretBytes KeyFor(Algorithm algorithm, std::span<const std::uint8_t> key) {
  return algorithm == Algorithm::kTripleDes ? AsTripleKey(key) : CopySecret(key);
}

std::optional<SecretBytes> RunBlocks(Algorithm algorithm, std::span<const std::uint8_t> key,
                                     std::span<const std::uint8_t> data, bool encipher) {
  if (!IsWorkingKeyLength(algorithm, key.size()) || data.size() % BlockSize(algorithm) != 0)
    return std::nullopt;
  const SecretBytes whole = KeyFor(algorithm, key);
  const EVP_CIPHER* cipher = algorithm == Algorithm::kTripleDes ? EVP_des_ede3_ecb() : EVP_sm4_ecb();
  return RunCipher({cipher, whole, nullptr, encipher, false}, data);
}

}  // namespace

bool IsDesKeyLength(std::size_t size) {
  return size == kDesBlock || size == 2 * kDesBlock || size == kTripleKeySize;
}

std::optional<SecretBytes> EncipherDes(std::span<const std::uint8_t> key,
                                       std::span<const std::uint8_t> data) {
  return RunDes(key, data, true);
}

std::optional<SecretBytes> DecipherDes(std::span<const std::uint8_t> key,
                                       std::span<const std::uint8_t> data) {
  return RunDes(key, data, false);
}

bool IsWorkingKeyLength(Algorithm algorithm, std::size_t size) {
  return size == kSm4KeySize || (algorithm == Algorithm::kTripleDes && size == kTripleKeySize);
}

std::size_t BlockSize(Algorithm algorithm) {
  return algorithm == Algorithm::kTripleDes ? kDesBlock : 16;
}

std::optional<SecretBytes> EncipherBlocks(Algorithm algorithm, std::span<const std::uint8_t> key,
                                          std::span<const std::uint8_t> data) {
  return RunBlocks(algorithm, key, data, true);
}

std::optional<SecretBytes> DecipherBlocks(Algorithm algorithm, std::span<const std::uint8_t> key,
                                          std::span<const std::uint8_t> data) {
  return RunBlocks(algorithm, key, data, false);
}

std::optional<SecretBytes> EncipherData(Algorithm algorithm, std::span<const std::uint8_t> key,
                                        std::span<const std::uint8_t> data) {
  SecretBytes out(BlockSize(algorithm));
  if (!IsWorkingKeyLength(algorithm, key.size()) || RAND_bytes(out.data(), static_cast<int>(out.size())) != 1)
    return std::nullopt;
  const SecretBytes whole = KeyFor(algorithm, key);
  const EVP_CIPHER* cipher = algorithm == Algorithm::kTripleDes ? EVP_des_ede3_cbc() : EVP_sm4_cbc();
  const auto enciphered = RunCipher({cipher, whole, out.data(), true, true}, data);
  if (!enciphered) return std::nullopt;
  out.insert(out.end(), enciphered->begin(), enciphered->end());
  return out;
}

}  // namespace gwq::terminal::device
