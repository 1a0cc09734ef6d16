// SPDX-License-Identifier: MIT
#include "device/pad/key_store.h"

#include <openssl/crypto.h>

#include "device/pad/ciphers.h"

namespace gwq::terminal::device {

bool KeyStore::ReplaceMaster(std::size_t slot, std::span<const std::uint8_t> old_then_new) {
  if (slot >= kKeySlots) return false;
  SecretBytes& current = masters_[slot];
  if (old_then_new.size() < current.size()) return false;
  const auto fresh = old_then_new.subspan(current.size());
  if (!IsDesKeyLength(fresh.size())) return false;
  if (CRYPTO_memcmp(current.data(), old_then_new.data(), current.size()) != 0) return false;
  current = CopySecret(fresh);
  ForgetWorkingKeysUnder(slot);
  return true;
}

bool KeyStore::LoadWorking(std::size_t master, std::size_t slot, std::span<const std::uint8_t> enciphered) {
  if (master >= kKeySlots || slot >= kKeySlots || !IsDesKeyLength(enciphered.size())) return false;
  auto key = DecipherDes(masters_[master], enciphered);
  if (!key) return false;
  working_[{master, slot}] = std::move(*key);
  return true;
}

bool KeyStore::Activate(std::size_t master, std::size_t slot) {
  if (!working_.contains({master, slot})) return false;
  active_ = Place{master, slot};
  return true;
}

void KeyStore::Reset() {
  for (SecretBytes& master : masters_) master = SecretBytes(kFactoryKeySize, kFactoryKeyByte);
  working_.clear();
  active_.reset();
}

const SecretBytes* KeyStore::Master(std::size_t slot) const {
  return slot < kKeySlots ? &masters_[slot] : nullptr;
}

std::size_t KeyStore::MasterSize(std::size_t slot) const {
  return slot < kKeySlots ? masters_[slot].size() : 0;
}

const SecretBytes* KeyStore::Active() const {
  return active_ ? &working_.at(*active_) : nullptr;
}

void KeyStore::ForgetWorkingKeysUnder(std::size_t master) {
  std::erase_if(working_, [master](const auto& entry) { return entry.first.first == master; });
  if (active_ && active_->first == master) active_.reset();
}

}  // namespace gwq::terminal::device
