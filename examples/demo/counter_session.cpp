// SPDX-License-Identifier: MIT
// A teller's session at the counter, from the terminal's version to an encrypted PIN.
//
//   counter_session [PORT [ACCOUNT]]     PORT 0 is USB (the default), n is /dev/ttyS(n-1)
//
// Exit status 0 when every step went as it should and the PIN came back out of both blocks.
#include <cstring>
#include <string>
#include <string_view>

#include "bank_keys.h"
#include "steps.h"

namespace {

using example::Check;
using example::Say;

constexpr int kBaud = 115200;
constexpr int kPinDigits = 6;
constexpr int kEntrySeconds = 30;
constexpr int kMaster = 3;
constexpr int kWorking = 7;

// Master keys as the terminal leaves the factory.
constexpr std::string_view kFactoryKey = "31313131313131313131313131313131";

struct Counter {
  int port;
  std::string account;
  example::Key working{};
};

void ShowTerminal(const Counter& session) {
  char command[] = "\x1B[0GETVERSION";
  std::string answer(4096 + 1024, '\0');
  int length = 4096;
  const int command_length = static_cast<int>(std::strlen(command));
  Check("TransProc", TransProc(session.port, kBaud, command, command_length, answer.data(), &length, 2000),
        "asking for the version");
  const std::string version = length < 2 ? "" : answer.substr(1, static_cast<std::size_t>(length) - 2);
  Say("terminal version | build date", version);
}

// The build-date query is one of those that always use USB.
void ShowBuildDate(const Counter& session) {
  if (session.port != 0) return;
  char date[9] = "";
  Check("GWQ_GetVerBuildDate", GWQ_GetVerBuildDate(0, 0, kBaud, date), "asking for the build date");
  Say("build date", std::string(date) + (CheckUtf8version() == 1 ? ", takes UTF-8 text" : ", GBK text only"));
}

void LoadKeys(Counter& session) {
  Check("GWQ_ResetKey", GWQ_ResetKey(session.port, kBaud), "resetting the keys");
  const example::Key master = example::NewKey();
  std::string new_key = example::Hex(master);
  std::string old_key(kFactoryKey);
  Check("GWQ_UpdateMKey", GWQ_UpdateMKey(session.port, kBaud, kMaster, new_key.data(), old_key.data()),
        "loading the master key");
  Say("new master key", "accepted in place 3");
  session.working = example::NewWorkingKey(master);
  std::string sent = example::Hex(example::Encipher(session.working, master));
  Check("GWQ_DownLoadWKey", GWQ_DownLoadWKey(session.port, kBaud, kMaster, kWorking, sent.data()),
        "loading the working key");
  Check("GWQ_ActiveWKey", GWQ_ActiveWKey(session.port, kBaud, kMaster, kWorking),
        "activating the working key");
  Say("working key, enciphered under it", "accepted in place 3/7 and active");
}

std::string ReadClearPin(const Counter& session) {
  Check("GWQ_SetPinLen", GWQ_SetPinLen(session.port, kBaud, kPinDigits), "setting the PIN length");
  Say("PIN length", std::to_string(kPinDigits) + " digits");
  char pin[15] = "";
  Check("GWQ_ReadPin", GWQ_ReadPin(session.port, kBaud, 0, kEntrySeconds, pin, sizeof pin - 1),
        "reading a PIN in clear");
  Say("PIN in clear", pin);
  return pin;
}

void ShowRecovered(const Counter& session, const char* what, const char* block, const std::string& account,
                   const std::string& expected) {
  const auto clear = example::Decipher(block, session.working);
  const auto pin = clear ? example::PinIn(*clear, account) : std::nullopt;
  Say(what, std::string(block) + "  holds PIN " + pin.value_or("(unreadable)"));
  if (pin != expected) throw std::runtime_error(std::string(what) + ": not the PIN that was keyed");
}

void ReadPinBlocks(const Counter& session, const std::string& expected) {
  std::string block(1025, '\0');
  Check("GWQ_ReadPinDES", GWQ_ReadPinDES(session.port, kBaud, 1, 0, kEntrySeconds, block.data()),
        "reading a DES PIN block");
  ShowRecovered(session, "DES PIN block", block.c_str(), "", expected);
  block.assign(1025, '\0');
  std::string account = session.account;
  Check("GWQ_ReadPinAnsi",
        GWQ_ReadPinAnsi(session.port, kBaud, 1, 0, kEntrySeconds, account.data(), block.data()),
        "reading an ANSI PIN block");
  ShowRecovered(session, "ANSI PIN block", block.c_str(), session.account, expected);
}

void Session(Counter session) {
  std::printf("Teller session on %s, account %s\n",
              session.port == 0 ? "USB" : ("serial port " + std::to_string(session.port)).c_str(),
              session.account.c_str());
  ShowTerminal(session);
  ShowBuildDate(session);
  LoadKeys(session);
  const std::string pin = ReadClearPin(session);
  ReadPinBlocks(session, pin);
}

}  // namespace

int main(int argc, char** argv) {
  return example::Run("counter_session", [&] {
    Session({argc > 1 ? example::Number("PORT", argv[1]) : 0, argc > 2 ? argv[2] : "6225880123456789"});
  });
}
