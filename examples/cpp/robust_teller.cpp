// SPDX-License-Identifier: MIT
// A teller application that copes with what happens at a counter: customers who cancel, mistype or
// walk away, a cable that is pulled, a terminal that is full, old, without keys or without TZG
// mode. docs/scenarios.md puts it to the test.
//
//   robust_teller [--tzg | --pin] DOCUMENT PICTURE SECONDS
//
//   --tzg     sign in TZG mode where the terminal knows it
//   --pin     have the customer key a PIN too
//   DOCUMENT  to be signed; absolute path
//   PICTURE   where the signature's picture goes; absolute path
//   SECONDS   that the customer has for each step
//
// Exit status 0 when the customer has done it; 1, with the reason on standard error, when not.
#include <array>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "demo/bank_keys.h"
#include "demo/steps.h"

namespace {

namespace fs = std::filesystem;
using example::Check;
using example::Say;

constexpr int kBaud = 115200;
constexpr int kAttempts = 3;
constexpr int kPinDigits = 6;
constexpr int kMaster = 3;
constexpr int kWorking = 7;
constexpr char kAccount[] = "6225880123456789";
constexpr char kFactoryKey[] = "31313131313131313131313131313131";
constexpr char kOldestFirmware[] = "20240101";
constexpr char kFirmware[] = "V2.0.0|20260101\n";

struct Visit {
  std::string document;
  std::string picture;
  int seconds = 0;
  bool tzg = false;
  bool pin = false;
};

std::string BuildDate() {
  std::array<char, 9> date{};
  Check("GWQ_GetVerBuildDate", GWQ_GetVerBuildDate(0, 0, kBaud, date.data()), "asking for the build date");
  return date.data();
}

// Tells a terminal that is gone from one that does not want.
[[noreturn]] void Stop(const std::string& reason) {
  std::array<char, 9> date{};
  const bool gone = GWQ_GetVerBuildDate(0, 0, kBaud, date.data()) == GWQ_NOT_OPENED;
  throw std::runtime_error(gone ? "the terminal is unplugged: look after its cable, and begin again"
                                : reason);
}

// ---- Firmware

void UpdateFirmware(const fs::path& directory) {
  if (BuildDate() >= kOldestFirmware) return;
  std::string package = (directory / "firmware.dat").string();
  std::ofstream(package) << kFirmware << std::string(1000, 'f');
  const int status = MP_DownloadFile(nullptr, nullptr, kBaud, nullptr, 1, package.data(), 0);
  fs::remove(directory / "firmware.dat");
  if (status != GWQ_OK) Stop("the new firmware does not reach the terminal");
  const std::string date = BuildDate();
  if (date < kOldestFirmware) throw std::runtime_error("the terminal keeps its old firmware");
  Say("firmware, updated", date);
}

// ---- Signature

int AskToSign(const Visit& visit) {
  const char* document = visit.document.c_str();
  const char* picture = visit.picture.c_str();
  if (visit.tzg)
    return MP_Sign_With_TZG(nullptr, "9", kBaud, visit.seconds, document, "1,300,100", "请签名", picture, 0,
                            3, nullptr);
  return MP_SignPDF_Voice(nullptr, "9", kBaud, visit.seconds, document, "1,300,100", "请签名", picture,
                          nullptr);
}

void Send(const std::string& document) {
  std::array<char, 4096> stored{};
  if (pushFileToZ11(document.c_str(), stored.data()) != GWQ_OK)
    Stop("the terminal takes no document: its storage may be full");
}

void Sign(const Visit& visit) {
  example::CheckWritable(visit.picture);
  example::CheckWritable(fs::path(visit.picture).parent_path() / "hw.data");
  Send(visit.document);
  for (int attempt = 1; attempt <= kAttempts; ++attempt) {
    const int status = AskToSign(visit);
    if (status == GWQ_OK) return Say("signature", visit.picture);
    if (status == GWQ_NO_ANSWER) Stop("the customer does not sign; have they left?");
    if (status != GWQ_CANCELLED)
      Stop("signing failed. " + example::Reason(visit.tzg ? "MP_Sign_With_TZG" : "MP_SignPDF_Voice", status));
    Say("signing, cancelled", "attempt " + std::to_string(attempt));
  }
  throw std::runtime_error("the customer does not want to sign");
}

// ---- PIN

example::Key LoadKeys() {
  Check("GWQ_ResetKey", GWQ_ResetKey(0, kBaud), "resetting the keys");
  const example::Key master = example::NewKey();
  Check("GWQ_UpdateMKey", GWQ_UpdateMKey(0, kBaud, kMaster, example::Hex(master).c_str(), kFactoryKey),
        "loading the master key");
  const example::Key working = example::NewWorkingKey(master);
  const std::string sent = example::Hex(example::Encipher(working, master));
  Check("GWQ_DownLoadWKey", GWQ_DownLoadWKey(0, kBaud, kMaster, kWorking, sent.c_str()),
        "loading the working key");
  Check("GWQ_ActiveWKey", GWQ_ActiveWKey(0, kBaud, kMaster, kWorking), "activating the working key");
  Say("keys", "loaded");
  return working;
}

int AskForPin(int seconds, std::string& block) {
  block.assign(1025, '\0');
  Check("GWQ_SetPinLen", GWQ_SetPinLen(0, kBaud, kPinDigits), "setting the PIN length");
  const int status = GWQ_ReadPinAnsi(0, kBaud, 1, 0, seconds, kAccount, block.data());
  block.resize(block.find('\0'));
  return status;
}

// Only the bank can tell how many digits were keyed.
bool IsWholePin(const std::string& block, const example::Key& key) {
  const auto clear = example::Decipher(block, key);
  const auto pin = clear ? example::PinIn(*clear, kAccount) : std::nullopt;
  return pin && pin->size() == kPinDigits;
}

// A terminal without keys refuses to ask, and one whose customer cancels answers the same: the keys
// are loaded once.
void ReadPin(const Visit& visit) {
  std::optional<example::Key> key;
  for (int attempt = 0; attempt <= kAttempts; ++attempt) {
    std::string block;
    const int status = AskForPin(visit.seconds, block);
    if (status == GWQ_OK && key && IsWholePin(block, *key)) return Say("PIN", "complete");
    if (status == GWQ_OK && key) Say("PIN", "not 6 digits, please again");
    if (status != GWQ_OK && status != GWQ_REFUSED) Stop("the customer keys no PIN");
    if (!key) key = LoadKeys();
  }
  throw std::runtime_error("the customer does not key the PIN");
}

void Serve(const Visit& visit) {
  UpdateFirmware(fs::path(visit.picture).parent_path());
  Sign(visit);
  if (visit.pin) ReadPin(visit);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view option = argc > 1 ? argv[1] : "";
  const bool tzg = option == "--tzg";
  const bool pin = option == "--pin";
  const int first = tzg || pin ? 2 : 1;
  if (argc != first + 3) {
    std::fprintf(stderr, "usage: robust_teller [--tzg | --pin] DOCUMENT PICTURE SECONDS\n");
    return 2;
  }
  return example::Run("robust_teller", [&] {
    Serve({fs::absolute(argv[first]), fs::absolute(argv[first + 1]),
           example::Number("SECONDS", argv[first + 2]), tzg, pin});
  });
}
