// SPDX-License-Identifier: MIT
#include "e2e/library/pad_rig.h"

#include <array>
#include <memory>
#include <stdexcept>

#include "support/host_file_turn.h"

namespace gwq::test {
namespace {

constexpr char kHostFile[] = "/tmp/enctemp.data";

struct Run {
  const EVP_CIPHER* cipher;
  bool encipher;
  std::string vector;
};

const unsigned char* Bytes(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

std::string Crypt(const Run& run, const example::Key& key, const std::string& data) {
  const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(EVP_CIPHER_CTX_new(),
                                                                                &EVP_CIPHER_CTX_free);
  std::string out(data.size() + EVP_MAX_BLOCK_LENGTH, '\0');
  auto* const to = reinterpret_cast<unsigned char*>(out.data());
  int size = 0;
  int last = 0;
  const bool done =
      EVP_CipherInit_ex(context.get(), run.cipher, nullptr, key.data(), Bytes(run.vector),
                        run.encipher ? 1 : 0) == 1 &&
      EVP_CIPHER_CTX_set_padding(context.get(), run.vector.empty() ? 0 : 1) == 1 &&
      EVP_CipherUpdate(context.get(), to, &size, Bytes(data), static_cast<int>(data.size())) == 1 &&
      EVP_CipherFinal_ex(context.get(), to + size, &last) == 1;
  if (!done) throw std::runtime_error("the cipher failed");
  out.resize(static_cast<std::size_t>(size) + static_cast<std::size_t>(last));
  return out;
}

std::string UnderMaster(const example::Key& key, Algorithm algorithm) {
  example::Key master{};
  master.fill(0x31);
  const EVP_CIPHER* cipher = algorithm == Algorithm::kSm4 ? EVP_sm4_ecb() : EVP_des_ede_ecb();
  return Crypt({cipher, true, ""}, master, std::string(key.begin(), key.end()));
}

// The block of a read that went well; of one that failed whatever it left.
template <std::size_t N>
std::string Taken(int status, const std::array<char, N>& block, int length) {
  return status == 0 ? std::string(block.data(), static_cast<std::size_t>(length)) : block.data();
}

}  // namespace

std::string FromHex(const std::string& hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoul(hex.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

std::string ToHex(const std::string& bytes) {
  std::string hex;
  for (const char byte : bytes) {
    std::array<char, 3> digits{};
    std::snprintf(digits.data(), digits.size(), "%02X", static_cast<unsigned>(byte) & 0xFFU);
    hex += digits.data();
  }
  return hex;
}

std::string Deciphered(const EVP_CIPHER* cipher, const example::Key& key, const std::string& data,
                       const std::string& vector) {
  return Crypt({cipher, false, vector}, key, data);
}

std::pair<example::Key, std::string> NewKeyUnderMaster(Algorithm algorithm) {
  while (true) {
    const example::Key key = example::NewKey();
    const std::string form = UnderMaster(key, algorithm);
    if (form.find('\0') == std::string::npos) return {key, form};
  }
}

Pad::Entry Pad::GetPin(int seconds) {
  std::array<char, 1024> block{};
  int length = 0;
  const int status = Call<PN_GetPin>(seconds, &length, block.data());
  return {status, "", Taken(status, block, length)};
}

Pad::Entry Pad::GetPinShowing(const char* shown, int seconds) {
  std::array<char, 1024> block{};
  int length = 0;
  const int status =
      Call<GetPinblockShowString>(reinterpret_cast<unsigned char*>(block.data()), &length, seconds, shown);
  return {status, "", Taken(status, block, length)};
}

Pad::Entry Pad::GetPinBlock(const Request& request) {
  std::array<char, 1024> factor{};
  std::array<char, 1024> block{};
  int length = request.length;
  const int status =
      Call<PN_GetPinBlock>(kSeconds, static_cast<int>(request.algorithm), request.sound_mode, request.type,
                           request.account, factor.data(), static_cast<void*>(block.data()), &length);
  return {status, factor.data(), Taken(status, block, length)};
}

Pad::Entry Pad::GetPinBlockShowing(const Request& request) {
  std::array<char, 1024> factor{};
  std::array<char, 1024> block{};
  int length = request.length;
  const int status = Call<PN_GetPinBlockShowString>(
      kSeconds, static_cast<int>(request.algorithm), request.sound_mode, request.type, request.account,
      factor.data(), static_cast<void*>(block.data()), &length, request.shown);
  return {status, factor.data(), Taken(status, block, length)};
}

int Pad::StringBlock(int algorithm, const std::string& text, std::string& file, std::string& answer) {
  const HostFileTurn turn(kHostFile);
  file.assign(kRoom, '\0');
  int length = static_cast<int>(text.size());
  const int status =
      CallFor<PN_GetStringBlock>(answer, kSeconds, algorithm, text.data(), file.data(), &length);
  file.resize(status == 0 ? static_cast<std::size_t>(length) : file.find('\0'));
  return status;
}

int Pad::AskNumber(int digits, std::string& number, int seconds) {
  constexpr int kShown = 0;
  return CallFor<PN_GetInNo>(number, seconds, digits, kShown, "请输入手机号码");
}

Pad::Answer Pad::Frame(const std::string& body) {
  constexpr int kTimeoutMs = 5000;
  std::string frame(2 * body.size() + 8, '\0');
  std::array<char, 2048> answer{};
  std::array<unsigned char, 1024> data{};
  int length = 1024;
  const int size = lib.Get<PackData>()(Bytes(body), static_cast<int>(body.size()),
                                       reinterpret_cast<unsigned char*>(frame.data()));
  const int status = lib.trans_proc_by_end(port, kBaud, frame.data(), size, answer.data(), &length,
                                           lib.end_of_read2, kTimeoutMs);
  if (status != 0) return {status, ""};
  int count = 0;
  const int word =
      lib.Get<UnPackData>()(reinterpret_cast<unsigned char*>(answer.data()), length, data.data(), &count);
  return {word, {data.begin(), data.begin() + count}};
}

void Pad::Prepare(Algorithm algorithm, int digits) {
  constexpr char kLoaded = '\0';
  ASSERT_EQ(0, Frame({0x30, 0x10, static_cast<char>(algorithm)}).status);
  ASSERT_EQ(0, Frame({0x30, 0x12, static_cast<char>(digits)}).status);
  std::string factor;
  ASSERT_EQ(0, ReadFactor(factor));
  const auto [new_key, form] = NewKeyUnderMaster(algorithm);
  key = new_key;
  const Answer loaded = Frame(
      std::string("\x30\x04\x10").append(form).append(factor).append(example::VerifyKey(key, algorithm)));
  ASSERT_EQ(0x3004, loaded.status);
  ASSERT_EQ(std::string(1, kLoaded), loaded.data);
}

std::string Pad::Block() {
  return Frame("\x30\x05\x05").data;
}

std::optional<std::string> Pad::PinIn(const std::string& block, Algorithm algorithm,
                                      const std::string& account) const {
  return example::PinInPadBlock({Bytes(block), block.size()}, key, algorithm, account);
}

}  // namespace gwq::test
