// SPDX-License-Identifier: MIT
#include "device/trace.h"

namespace gwq::terminal::device {
namespace {

std::string Text(const CommandReceived& received) {
  return std::string(received.command->name) + received.detail;
}

std::string Text(const Answered& answered) {
  return "answer: " + answered.what;
}

std::string Text(const CustomerActed& acted) {
  switch (acted.kind) {
    case CustomerActed::Kind::kKeysPin:
      return "keys a PIN" + acted.detail;
    case CustomerActed::Kind::kKeysNumber:
      return "keys a number" + acted.detail;
    case CustomerActed::Kind::kCancelsEntry:
      return "cancels";
    case CustomerActed::Kind::kAtScreen:
      break;
  }
  return acted.detail;
}

std::string Text(const Noted& noted) {
  return noted.text;
}

}  // namespace

std::string TextOf(const TraceEvent& event) {
  return std::visit([](const auto& what) { return Text(what); }, event.what);
}

}  // namespace gwq::terminal::device
