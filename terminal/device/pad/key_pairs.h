// SPDX-License-Identifier: MIT
// The PIN pad's key pairs, under which a host sends working keys. A pair is made
// when its public key is first asked for, and kept as a PEM file if there is
// a place for it, so that it is the same one the next time:
//
//   /rsa1024.pem   RSA of 1024 bits, exponent 65537
//   /rsa2048.pem   RSA of 2048 bits, exponent 65537
//   /sm2.pem       SM2
#pragma once

#include <openssl/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "base/secret.h"
#include "base/types.h"
#include "device/files/file_system.h"

namespace gwq::terminal::device {

enum class PairKind : std::uint8_t { kRsa1024, kRsa2048, kSm2 };
inline constexpr std::size_t kPairKinds = 3;

class KeyPairs {
 public:
  // Without `files` the pairs are gone with this object.
  explicit KeyPairs(FileSystem* files) : files_(files) {}

  // RSA: the modulus and three bytes of exponent. SM2: X and Y. Nothing when the
  // pair can be neither read nor made.
  [[nodiscard]] std::optional<Bytes> PublicKey(PairKind kind);

  // RSA: OAEP with SHA-256. SM2: C1 (X and Y), C2, C3 one behind the other. Nothing
  // when this is not enciphered under the public key.
  [[nodiscard]] std::optional<SecretBytes> Decipher(PairKind kind, std::span<const std::uint8_t> data);

  // The name of a file that is there and holds no such pair; nothing when all are good.
  [[nodiscard]] std::optional<std::string> BadFile() const;

 private:
  struct Free {
    void operator()(EVP_PKEY* pair) const;
  };
  using Pair = std::unique_ptr<EVP_PKEY, Free>;

  [[nodiscard]] EVP_PKEY* Find(PairKind kind);
  [[nodiscard]] EVP_PKEY* FindOrMake(PairKind kind);
  [[nodiscard]] static Pair Make(PairKind kind);
  [[nodiscard]] static Pair Read(PairKind kind, std::span<const std::uint8_t> pem);
  void Save(PairKind kind, EVP_PKEY* pair);
  [[nodiscard]] static std::optional<Bytes> ExportPublic(PairKind kind, EVP_PKEY* pair);

  FileSystem* files_;
  std::array<Pair, kPairKinds> pairs_;
};

}  // namespace gwq::terminal::device
