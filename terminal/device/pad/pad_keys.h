// SPDX-License-Identifier: MIT
// The PIN pad's working keys and what a host needs to send one: the public key
// and the factor. There is one working key for each encryption type; a load is
// for the type that is set.
//
//   3019        read the factor: sixteen hexadecimal digits
//   3003, 303A  make a new factor; 303A answers it
//   3002 a n    read a public key: a 1 RSA (n 80: 1024 bits, 01: 2048), 2 SM2 (n 20)
//   3015 h n d  digest of n bytes d: h 1 SHA-1, 2 SHA-256, 3 SM3
//   3004, 3039  load a working key, either way the same:
//
//   n   key bytes                           what they hold
//   10  16, 18  24                          the key under master key 0, block by block
//   80  128, 01  256                        the key under the RSA pair of that size
//   70  C1 (64), C2 (16 or 24), C3 (32)     the key under the SM2 pair
//
// Behind the key bytes stand the factor and the verify key: the first 6 or more
// hexadecimal digits of a block of zeros under the new key. A load is answered by
// a status like its code, and one byte: 0 loaded, else a KeyLoad.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "device/framed_commands.h"
#include "device/host_channel.h"
#include "device/pad/ciphers.h"
#include "device/pad/key_pairs.h"
#include "device/pad/key_store.h"
#include "device/pad/pad_settings.h"

namespace gwq::terminal::device {

class PadKeys {
 public:
  // `key_files` may be null. All must outlive this object.
  PadKeys(HostChannel& host, const PadValues& values, const KeyStore& master_keys, FileSystem* key_files)
      : host_(host), values_(values), master_keys_(master_keys), pairs_(key_files) {}

  // This object must outlive the table.
  void AddTo(FramedCommands& table);

  // Null when none is loaded. Valid until the next load.
  [[nodiscard]] const SecretBytes* Working(Algorithm algorithm) const;

 private:
  enum class KeyLoad : std::uint8_t {
    kLoaded = 0,
    kWrongFactor = 1,
    kUndecipherable = 2,
    kWrongVerifyKey = 3
  };

  struct Record {
    std::optional<PairKind> pair;  // nothing: under the master key
    std::span<const std::uint8_t> key;
    std::string_view factor;
    std::string_view verify_key;
  };

  [[nodiscard]] FramedAnswer TellPublicKey(Arguments arguments);
  [[nodiscard]] FramedAnswer TellDigest(Arguments arguments);
  [[nodiscard]] FramedAnswer MakeFactor();
  [[nodiscard]] FramedAnswer TellFactor();
  [[nodiscard]] FramedAnswer Load(std::uint16_t code, Arguments arguments);
  [[nodiscard]] KeyLoad Load(Arguments arguments);
  [[nodiscard]] std::optional<Record> ReadRecord(Arguments arguments) const;
  [[nodiscard]] std::optional<SecretBytes> Decipher(const Record& record);

  HostChannel& host_;
  const PadValues& values_;
  const KeyStore& master_keys_;
  KeyPairs pairs_;
  std::string factor_;  // empty until it is first asked for
  std::array<SecretBytes, kAlgorithms> working_;
};

}  // namespace gwq::terminal::device
