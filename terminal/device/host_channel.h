// SPDX-License-Identifier: MIT
// What every command handler needs: the time, the way back to the host, and
// the trace.
#pragma once

#include <string>
#include <string_view>

#include "base/types.h"
#include "device/trace.h"

namespace gwq::terminal::device {

class HostChannel {
 public:
  HostChannel() = default;
  HostChannel(const HostChannel&) = delete;
  HostChannel& operator=(const HostChannel&) = delete;
  virtual ~HostChannel() = default;

  [[nodiscard]] virtual Time Now() const = 0;
  // `what` describes the answer in the trace, without any secret in it.
  virtual void Answer(Bytes answer, const std::string& what) = 0;
  // Takes back every answer that the host has not taken yet.
  virtual void Withdraw() = 0;
  // The same, when the host sends its next command: for answers that some hosts
  // do not read.
  virtual void LetAnswersLapse() = 0;
  virtual void Trace(TraceEvent::What what) = 0;
  // Announces the command that is carried out, with what the trace says behind its name. A command
  // that is not described before anything else is traced, or shown to the customer, is announced by
  // its name alone.
  virtual void Describe(const std::string& detail) = 0;

  void Note(const std::string& text) { Trace(Noted{text}); }
};

// The answers that many commands have in common.
void AnswerRefusal(HostChannel& host);                                               // STX 'U' ETX
void AnswerKeyCommand(HostChannel& host, bool accepted);                             // 0xAA or 0x55
void AnswerDone(HostChannel& host);                                                  // STX 0xAA ETX
void AnswerFailure(HostChannel& host);                                               // STX 0xAA '1' ETX
void AnswerText(HostChannel& host, std::string_view text, const std::string& what);  // STX text ETX

}  // namespace gwq::terminal::device
