// SPDX-License-Identifier: MIT
// The host's side of the PIN pad: frames, and working keys made ready for it. It
// is written without the code under test.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "unit/terminal/device/rig.h"

namespace gwq::terminal::test {

using ByteList = std::vector<std::uint8_t>;

// A frame around this body.
std::string PadFrame(const ByteList& body);

struct PadAnswer {
  int status = -1;  // -1: no good frame
  ByteList data;
};
PadAnswer ReadPadAnswer(const std::string& frame);

// Sends a command the way hosts do, which end its body at the first zero byte.
PadAnswer AskPad(Rig& rig, const ByteList& body);

// PIN-pad bodies put together.
ByteList Body(std::initializer_list<int> bytes, std::string_view text = {});
std::string Factor(Rig& rig);

inline constexpr int kTripleDesType = 0;
inline constexpr int kSm4Type = 1;
inline constexpr std::string_view kSm4Hex = "0123456789ABCDEFFEDCBA9876543211";
inline constexpr std::string_view kDesHex = "A1B2C3D4E5F60718293A4B5C6D7E8F90";
inline constexpr std::string_view kDes24Hex = "A1B2C3D4E5F60718293A4B5C6D7E8F900F1E2D3C4B5A6978";

// SM4 in electronic-code-book mode; `padded` as PKCS#7 tells.
ByteList Sm4(std::string_view key_hex, const ByteList& data, bool encipher, bool padded = false);

// The first six digits of a block of zeros under the key.
std::string VerifyKey(int type, std::string_view key_hex);

// A key under a public key as the pad answered it, without a zero byte in it.
ByteList UnderRsa(const ByteList& modulus_and_exponent, const ByteList& key);
ByteList UnderSm2(const ByteList& x_and_y, const ByteList& key);  // C1, C2, C3

// The body of a load: code 0x04 or 0x39.
ByteList LoadBody(int code, int length_byte, const ByteList& key, std::string_view factor,
                  std::string_view verify_key);

// Sets the encryption type and loads the key for it, under the factory key.
void LoadPadKey(Rig& rig, int type, std::string_view key_hex);

}  // namespace gwq::terminal::test
