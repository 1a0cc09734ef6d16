/* SPDX-License-Identifier: MIT */
// The bank's side of the PIN pad's key management: working keys prepared for one pad's public key,
// and the way back from its PIN blocks to the PIN. How keys and blocks are laid out is the pad's
// affair; this is the virtual terminal's way (docs/terminal-behaviour.md). An example only: real keys
// never stand in a program.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "bank_keys.h"

namespace example {

// As the pad's encryption types.
enum class Algorithm { kTripleDes = 0, kSm4 = 1 };

// `key` for the pad with this RSA modulus (hexadecimal, as PN_ObtainPublicKey gives it; the
// exponent is 65537), as hexadecimal text without a zero byte in it.
std::string EncipherForRsa(const Key& key, const std::string& modulus);

// `key` for the pad with this SM2 point (X and Y in hexadecimal): the record that PN_DownloadPinPadWK takes.
std::string EncipherForSm2(const Key& key, const std::string& point);

// What the pad checks a new key by: the first digits of zeros enciphered under it.
std::string VerifyKey(const Key& key, Algorithm algorithm);

// The PIN in a block of the pad, bound to the twelve digits before the account's check digit; to
// zeros if it is empty.
std::optional<std::string> PinInPadBlock(std::span<const unsigned char> block, const Key& key,
                                         Algorithm algorithm, const std::string& account);

}  // namespace example
