// SPDX-License-Identifier: MIT
// The keys in the terminal: sixteen master keys, each with up to sixteen working
// keys under it, of which one at a time is active. All are wiped on release.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <utility>

#include "base/secret.h"

namespace gwq::terminal::device {

inline constexpr std::size_t kKeySlots = 16;

// Every master key as the terminal leaves the factory, and after a reset:
// sixteen times 0x31. No byte of it is zero, because the host ends a key at a
// zero byte and could then never name it as the old key.
inline constexpr std::size_t kFactoryKeySize = 16;
inline constexpr std::uint8_t kFactoryKeyByte = 0x31;

class KeyStore {
 public:
  KeyStore() { Reset(); }

  // `old_then_new` is the old key and the new one without a mark between them:
  // the old key's length is the length of the key in the slot. Its working keys
  // go with the old master key. False, and nothing changes, when the old key is
  // not the one in the slot, or the slot or the new key's length is impossible.
  [[nodiscard]] bool ReplaceMaster(std::size_t slot, std::span<const std::uint8_t> old_then_new);

  // `enciphered` is the working key under the master key, block by block.
  [[nodiscard]] bool LoadWorking(std::size_t master, std::size_t slot,
                                 std::span<const std::uint8_t> enciphered);

  // False when no working key was loaded there; the active key stays.
  [[nodiscard]] bool Activate(std::size_t master, std::size_t slot);

  // Factory master keys, no working key.
  void Reset();

  // Null for a slot that there is not. Valid until the next change.
  [[nodiscard]] const SecretBytes* Master(std::size_t slot) const;

  // 0 for a slot that there is not.
  [[nodiscard]] std::size_t MasterSize(std::size_t slot) const;

  // The active working key, null when there is none. Valid until the next change.
  [[nodiscard]] const SecretBytes* Active() const;

 private:
  using Place = std::pair<std::size_t, std::size_t>;  // master slot, working slot

  void ForgetWorkingKeysUnder(std::size_t master);

  std::array<SecretBytes, kKeySlots> masters_;
  std::map<Place, SecretBytes> working_;
  std::optional<Place> active_;
};

}  // namespace gwq::terminal::device
