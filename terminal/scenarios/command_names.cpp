// SPDX-License-Identifier: MIT
#include "scenarios/command_names.h"

#include <algorithm>
#include <array>

namespace gwq::terminal {
namespace {

constexpr std::array<std::string_view, 73> kNames{
    // the counter command set
    "GETVERSION", "GETFIRMVERSION", "PIN length", "PIN display style", "PIN entry time-out",
    "load master key", "load working key", "activate working key", "reset keys", "PIN entry", "DES PIN block",
    "ANSI PIN block", "end of PIN entry",
    // the PIN pad
    "PIN-pad frame", "set encryption type", "set PIN length", "set end rule", "set fill type", "set PIN mode",
    "set sound type", "set account", "get encryption type", "get PIN length", "get device id", "JPOSTSETSN",
    "read factor", "make factor", "read public key", "digest", "GETENCDATA", "GETINNO",
    // files
    "push: mode change", "push: start packet", "push: data packet", "push: end packet",
    "push: packet of type", "PULLFILE", "RESPONSE", "GETFILELIST", "DELETE", "DOWNLOAD", "SPECQUERYFILE",
    "QRCODEDELETE", "UPDATE",
    // screens
    "OPINFODPUTF8", "SETEVALINFOUTF8", "teller card", "start evaluation", "evaluation time-out",
    "close evaluation", "information", "information time-out", "close information", "SETHTMLBTNTIME", "HTML",
    "SHOWHTMLUTF8", "STARTSCREENSHOTUTF8", "YCSTARTINFOHTMLEXUTF8", "keypad", "keypad time-out",
    "close keypad", "YCNEWSHOWFILE", "YCNEWSTARTFILE", "YCNEWSTARTSIGN", "YCNEWSTARTZGTSIGN",
    "YCISSUPPORTTZG", "YCSETVOICECONTENT", "HANDSIGN", "YCCHECKOUTALLUTF8",
    // anything else
    "CLOSECURPROGRAM", "GETGLOBALCONFIG", "noise", "unknown command"};

// "information" does not begin "informations".
bool BeginsWith(std::string_view heard, std::string_view name) {
  if (!heard.starts_with(name)) return false;
  return heard.size() == name.size() || heard[name.size()] == ' ' || heard[name.size()] == ',';
}

}  // namespace

std::span<const std::string_view> CommandNames() {
  return kNames;
}

bool IsCommandName(std::string_view name) {
  return std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

std::string CommandNameOf(std::string_view heard) {
  std::string_view longest;
  for (const std::string_view name : kNames) {
    if (name.size() > longest.size() && BeginsWith(heard, name)) longest = name;
  }
  return std::string(longest.empty() ? heard : longest);
}

}  // namespace gwq::terminal
