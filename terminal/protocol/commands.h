// SPDX-License-Identifier: MIT
// Every command that the unit knows: one row each, with what the parts
// of the terminal need to know of it. Handlers register for rows; the trace, the names in scenarios
// and the masks of recordings come from them. A new command is a row and a handler.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace gwq::terminal::protocol {

enum class CommandForm : std::uint8_t {
  kText,    // ESC and letters, or a control byte
  kFrame,   // a PIN-pad frame
  kPacket,  // a packet of a pushed file
  kNone,    // whatever else comes
};

// What of a command's data no recording may tell.
enum class Carried : std::uint8_t {
  kOpen,
  kSecret,
  kSecretText,  // all but the numbers before its text
};

// What the answer may be, which is then masked.
enum class AnswerKind : std::uint8_t { kOpen, kPin, kNumber };

struct CommandRow {
  std::string_view group = {};    // in the documentation
  std::string_view name = {};     // in the trace and in scenarios
  std::string_view variant = {};  // which of several commands with one name
  CommandForm form = CommandForm::kNone;
  std::string_view pattern = {};  // of a text: see pattern.h
  std::uint16_t code = 0;         // of a frame: its first two bytes
  Carried carried = Carried::kOpen;
  AnswerKind answer = AnswerKind::kOpen;
  bool keeps_pull = false;  // a file that the host fetches goes on; any other command ends it

  [[nodiscard]] constexpr CommandRow Of(std::string_view which) const {
    CommandRow row = *this;
    row.variant = which;
    return row;
  }
  [[nodiscard]] constexpr CommandRow Carries(Carried what) const {
    CommandRow row = *this;
    row.carried = what;
    return row;
  }
  [[nodiscard]] constexpr CommandRow Answers(AnswerKind what) const {
    CommandRow row = *this;
    row.answer = what;
    return row;
  }
  [[nodiscard]] constexpr CommandRow KeepsPull() const {
    CommandRow row = *this;
    row.keeps_pull = true;
    return row;
  }
};

struct CommandGroup {
  std::string_view name;

  [[nodiscard]] constexpr CommandRow Text(std::string_view command, std::string_view pattern) const {
    return {name, command, {}, CommandForm::kText, pattern};
  }
  [[nodiscard]] constexpr CommandRow Frame(std::string_view command, std::uint16_t code) const {
    return {name, command, {}, CommandForm::kFrame, {}, code};
  }
  [[nodiscard]] constexpr CommandRow Other(std::string_view command, CommandForm form) const {
    return {name, command, {}, form};
  }
};

inline constexpr CommandGroup kCounterGroup{"the counter command set"};
inline constexpr CommandGroup kPadGroup{"the PIN pad"};
inline constexpr CommandGroup kFileGroup{"files"};
inline constexpr CommandGroup kScreenGroup{"screens"};
inline constexpr CommandGroup kOtherGroup{"anything else"};

inline constexpr std::array kCommands{
    kCounterGroup.Text("GETVERSION", "\033[0GETVERSION"),
    kCounterGroup.Text("GETFIRMVERSION", "\033[1GETFIRMVERSION"),
    kCounterGroup.Text("PIN length", "\033[1;%dL"),
    kCounterGroup.Text("PIN display style", "\033[1;%dX"),
    kCounterGroup.Text("PIN entry time-out", "\033[1;%dT"),
    kCounterGroup.Text("load master key", "\033M%s\r\n").Carries(Carried::kSecret),
    kCounterGroup.Text("load working key", "\033S%s\r\n").Carries(Carried::kSecret),
    kCounterGroup.Text("activate working key", "\033A%s\r\n"),
    kCounterGroup.Text("reset keys", "\033R\r\n"),
    kCounterGroup.Text("PIN entry", "\x82").Answers(AnswerKind::kPin),
    kCounterGroup.Text("PIN entry", "\x81").Of("again").Answers(AnswerKind::kPin),
    kCounterGroup.Text("DES PIN block", "\033F%1%1\r\n").Answers(AnswerKind::kPin),
    kCounterGroup.Text("ANSI PIN block", "\033I%1%1%s\r\n")
        .Carries(Carried::kSecretText)
        .Answers(AnswerKind::kPin),
    kCounterGroup.Text("end of PIN entry", "\x83"),

    kPadGroup.Other("PIN-pad frame", CommandForm::kFrame),
    kPadGroup.Frame("PIN entry", 0x3005).Of("framed").Answers(AnswerKind::kPin),
    kPadGroup.Frame("PIN entry", 0x4030).Of("framed, with a text").Answers(AnswerKind::kPin),
    kPadGroup.Frame("load working key", 0x3004).Of("framed").Carries(Carried::kSecret),
    kPadGroup.Frame("load working key", 0x3039).Of("framed, type 2").Carries(Carried::kSecret),
    kPadGroup.Frame("set encryption type", 0x3010),
    kPadGroup.Frame("set PIN length", 0x3012),
    kPadGroup.Frame("set end rule", 0x3013),
    kPadGroup.Frame("set fill type", 0x3011),
    kPadGroup.Frame("set PIN mode", 0x3032),
    kPadGroup.Frame("set sound type", 0x3014),
    kPadGroup.Frame("set account", 0x3016).Carries(Carried::kSecret),
    kPadGroup.Frame("get encryption type", 0x3033),
    kPadGroup.Frame("get PIN length", 0x3035),
    kPadGroup.Frame("get device id", 0x3018),
    kPadGroup.Text("JPOSTSETSN", "\033[0BJPOSTSETSN\x02%s\x03"),
    kPadGroup.Frame("read factor", 0x3019),
    kPadGroup.Frame("make factor", 0x3003),
    kPadGroup.Frame("make factor", 0x303A).Of("type 2"),
    kPadGroup.Frame("read public key", 0x3002),
    kPadGroup.Frame("digest", 0x3015).Carries(Carried::kSecret),
    kPadGroup.Text("GETENCDATA", "\033[1GETENCDATA\x02%d|%d|%s\x03").Carries(Carried::kSecret),
    kPadGroup.Text("GETINNO", "\033[5GETINNO\x02%d|%d|%d|%s\x03").Answers(AnswerKind::kNumber),

    kFileGroup.Text("push: mode change", "\033[0HIDCHANGE"),
    kFileGroup.Other("push: start packet", CommandForm::kPacket),
    kFileGroup.Other("push: data packet", CommandForm::kPacket),
    kFileGroup.Other("push: end packet", CommandForm::kPacket),
    kFileGroup.Other("push: packet of type", CommandForm::kPacket),
    kFileGroup.Text("PULLFILE", "\033[0PULLFILE\x02%s\x03"),
    kFileGroup.Text("RESPONSE", "\033[0RESPONSE\x02%s\x03").KeepsPull(),
    kFileGroup.Text("GETFILELIST", "\033[0GETFILELIST\x02%d\x03"),
    kFileGroup.Text("DELETE", "\033[0DELETE\x02%d|%s\x03"),
    kFileGroup.Text("DOWNLOAD", "\033[0DOWNLOAD\x02%d|%s\x03"),
    kFileGroup.Text("SPECQUERYFILE", "\033[0SPECQUERYFILE\x02%s\x03"),
    kFileGroup.Text("QRCODEDELETE", "\033[4QRCODEDELETE"),
    kFileGroup.Text("UPDATE", "\033[0UPDATE\x02%s\x03"),

    kScreenGroup.Text("OPINFODPUTF8", "\033[4OPINFODPUTF8\x02%s\x03"),
    kScreenGroup.Text("SETEVALINFOUTF8", "\033[4SETEVALINFOUTF8\x02%s\x03"),
    kScreenGroup.Text("teller card", "\033[4H\x02%s\x03"),
    kScreenGroup.Text("start evaluation", "\033[4STARTEVALUTF8"),
    kScreenGroup.Text("start evaluation", "\033[4R").Of("short"),
    kScreenGroup.Text("evaluation time-out", "\033[4;%dT"),
    kScreenGroup.Text("close evaluation", "\033[4C"),
    kScreenGroup.Text("information", "\033[2A\x02%s\x03"),
    kScreenGroup.Text("information time-out", "\033[2;%dT"),
    kScreenGroup.Text("close information", "\033[2C"),
    kScreenGroup.Text("SETHTMLBTNTIME", "\033[2SETHTMLBTNTIME\x02%d\x03"),
    kScreenGroup.Text("HTML", "\033[2AUTF8\x02%s\x03"),
    kScreenGroup.Text("SHOWHTMLUTF8", "\033[2SHOWHTMLUTF8\x02%s\x03"),
    kScreenGroup.Text("STARTSCREENSHOTUTF8", "\033[2STARTSCREENSHOTUTF8\x02%s\x03"),
    kScreenGroup.Text("YCSTARTINFOHTMLEXUTF8", "\033[2YCSTARTINFOHTMLEXUTF8\x02%d#%s\x03"),
    kScreenGroup.Text("keypad", "\033GM\r\n"),
    kScreenGroup.Text("keypad", "\033FA\r\n").Of("hidden"),
    kScreenGroup.Text("keypad time-out", "\033[5;%dT"),
    kScreenGroup.Text("close keypad", "\033[5C"),
    kScreenGroup.Text("YCNEWSHOWFILE", "\033[2YCNEWSHOWFILE\x02%d|%d|%s\x03"),
    kScreenGroup.Text("YCNEWSTARTFILE", "\033[2YCNEWSTARTFILE\x02%d|%d|%s\x03"),
    kScreenGroup.Text("YCNEWSTARTSIGN", "\033[2YCNEWSTARTSIGN\x02%d|%d|%s\x03"),
    kScreenGroup.Text("YCNEWSTARTZGTSIGN", "\033[2YCNEWSTARTZGTSIGN\x02%d|%d|%d|%d|%s\x03"),
    kScreenGroup.Text("YCISSUPPORTTZG", "\033[2YCISSUPPORTTZG"),
    kScreenGroup.Text("YCSETVOICECONTENT", "\033[2YCSETVOICECONTENT\x02%s\x03"),
    kScreenGroup.Text("HANDSIGN", "\033[2HANDSIGN\x02%d|%d\x03"),
    kScreenGroup.Text("YCCHECKOUTALLUTF8", "\033[2YCCHECKOUTALLUTF8\x02%d#%s\x03"),

    kOtherGroup.Text("CLOSECURPROGRAM", "\033[0CLOSECURPROGRAM"),
    kOtherGroup.Text("GETGLOBALCONFIG", "\033[0GETGLOBALCONFIG\x02%d\x03"),
    kOtherGroup.Text("GETVERSION", "\033[0GETVERSION\x02%d\x03").Of("of an item"),
    kOtherGroup.Other("noise", CommandForm::kNone),
    kOtherGroup.Other("unknown command", CommandForm::kNone),
};

// The row with a name, found while the program is compiled.
consteval const CommandRow& Row(std::string_view name, std::string_view variant = {}) {
  for (const CommandRow& row : kCommands) {
    if (row.name == name && row.variant == variant) return row;
  }
  throw "there is no such command";
}

// Null for a code that no frame has.
[[nodiscard]] const CommandRow* FrameRow(unsigned code);

// The texts behind whose ESC comes `letter`, which is no "[".
[[nodiscard]] std::vector<const CommandRow*> LetterRows(char letter);

// The texts ESC [ WORD of which `start` is the beginning, up to their STX or their end.
struct WordFit {
  bool known = false;                     // a word may begin so
  bool whole = false;                     // a command without data ends here
  const CommandRow* with_data = nullptr;  // STX begins the data of this one
};
[[nodiscard]] WordFit FitWord(std::string_view start);

// Whether a text, good or damaged, is one with which a file that the host fetches goes on.
[[nodiscard]] bool KeepsPull(std::string_view text);

// Each name once, in the table's order.
[[nodiscard]] std::span<const std::string_view> CommandNames();
[[nodiscard]] bool IsCommandName(std::string_view name);

}  // namespace gwq::terminal::protocol
