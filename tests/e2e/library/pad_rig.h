// SPDX-License-Identifier: MIT
// PIN-pad functions of the built library against the virtual terminal, with the bank's side of the
// cryptography.
#pragma once

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <optional>
#include <string>
#include <utility>

#include "bank_pad.h"
#include "e2e/library/library.h"

namespace gwq::test {

using example::Algorithm;

inline constexpr int kTripleDes = static_cast<int>(Algorithm::kTripleDes);
inline constexpr int kSm4 = static_cast<int>(Algorithm::kSm4);

inline constexpr int kBadArgumentStatus = 0x6A80;
inline constexpr int kNoSuchKeyStatus = 0x6A88;

std::string FromHex(const std::string& hex);
std::string ToHex(const std::string& bytes);

// `data` deciphered under a double-length key; the padding is taken off if there is a vector.
std::string Deciphered(const EVP_CIPHER* cipher, const example::Key& key, const std::string& data,
                       const std::string& vector = "");

// A new key whose form under the pad's first master key, as from the factory, holds no zero byte;
// and that form.
std::pair<example::Key, std::string> NewKeyUnderMaster(Algorithm algorithm);

class Pad : public testing::Test {
 protected:
  static constexpr int kBaud = 115200;
  static constexpr int kSerialPort = 78;

  explicit Pad(const std::string& ini = "") : lib(ini) {}

  // One of the pad's functions, all of which begin with the same arguments.
  template <auto function, typename... Args>
  int Call(Args... args) {
    return lib.Get<function>()(port, nullptr, kBaud, args...);
  }
  // ... that gives a text.
  template <auto function, typename... Args>
  int CallFor(std::string& text, Args... args) {
    text.assign(kRoom, '\0');
    const int status = Call<function>(args..., text.data());
    text.resize(text.find('\0'));
    return status;
  }

  int GetType(int& type) { return Call<PN_GetEnType>(&type); }
  int SetType(int type) { return Call<PN_SetEnType>(type); }
  int GetLength(int& length) { return Call<PN_GetPinLen>(&length); }
  int SetLength(int length) { return Call<PN_SetPinLen>(length); }
  int SetEndRule(int rule) { return Call<PN_SetEndRule>(rule); }
  int SetFill(const char* fill) { return Call<PN_SetFillType>(fill); }
  int SetMode(int mode) { return Call<PN_SetPinMoe>(mode); }
  int SetSound(int sound) { return Call<PN_SetSoundType>(sound); }
  int SetAccount(const std::string& account) {
    return Call<PN_SetAccount>(reinterpret_cast<const unsigned char*>(account.data()),
                               static_cast<int>(account.size()));
  }
  int SetParameters(int type, int length, int rule, const char* fill) {
    return Call<PN_SetPinPadParameter>(type, length, rule, fill);
  }
  int ReadDeviceId(std::string& id) { return CallFor<PN_ReadDeviceId>(id); }
  int WriteDeviceId(const char* id) { return Call<PN_WriteDeviceId>(id); }

  int ReadFactor(std::string& factor) { return CallFor<PN_GetPinPadFactor>(factor); }
  int CreateFactor(int type, std::string& factor) {
    return CallFor<PN_CreateAndGetPinPadFactor>(factor, type);
  }
  int ObtainFactor(const char* type, std::string& factor) { return CallFor<PN_ObtainFactor>(factor, type); }
  int PublicKey(int algorithm, int bits, std::string& hex) {
    return CallFor<PN_ObtainPublicKey>(hex, algorithm, bits);
  }
  int LoadKey(const std::string& factor, const char* type, const std::string& enciphered,
              const std::string& verify) {
    return Call<PN_DownloadPinPadWK>(factor.c_str(), type, enciphered.c_str(), verify.c_str());
  }

  // What a function that reads a PIN gives.
  struct Entry {
    int status;
    std::string factor;
    std::string block;
  };
  struct Request {
    Algorithm algorithm;
    int length;
    int type;
    const char* account = nullptr;
    int sound_mode = 0;
    const char* shown = nullptr;
  };
  static constexpr int kSeconds = 30;

  Entry GetPin(int seconds = kSeconds);
  Entry GetPinShowing(const char* shown, int seconds = kSeconds);
  Entry GetPinBlock(const Request& request);
  Entry GetPinBlockShowing(const Request& request);

  int StringBlock(int algorithm, const std::string& text, std::string& file, std::string& answer);
  int AskNumber(int digits, std::string& number, int seconds = kSeconds);

  // A frame by itself: the quick way, without a drain before it.
  struct Answer {
    int status;
    std::string data;
  };
  Answer Frame(const std::string& body);

  // Sets the pad to `algorithm` and `digits`, and loads a new working key: in the frames that the
  // library sends.
  void Prepare(Algorithm algorithm, int digits);
  // The block of a PIN of the present length, keyed now.
  std::string Block();

  std::optional<std::string> PinIn(const std::string& block, Algorithm algorithm,
                                   const std::string& account = "") const;

  Library lib;
  int port = 0;
  example::Key key{};

 private:
  static constexpr std::size_t kRoom = 1 << 14;
};

}  // namespace gwq::test
