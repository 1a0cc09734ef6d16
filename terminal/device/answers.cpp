// SPDX-License-Identifier: MIT
#include <utility>

#include "device/host_channel.h"
#include "protocol/marks.h"

namespace gwq::terminal {

void AnswerRefusal(HostChannel& host) {
  host.Answer({kStx, kRefusalMark, kEtx}, "refusal");
}

void AnswerKeyCommand(HostChannel& host, bool accepted) {
  if (accepted) return host.Answer({kAccepted}, "accepted");
  host.Answer({kNotAccepted}, "not accepted");
}

void AnswerDone(HostChannel& host) {
  host.Answer({kStx, kAccepted, kEtx}, "done");
}

void AnswerFailure(HostChannel& host) {
  host.Answer({kStx, kAccepted, '1', kEtx}, "failure");
}

void AnswerText(HostChannel& host, std::string_view text, const std::string& what) {
  Bytes answer{kStx};
  answer.insert(answer.end(), text.begin(), text.end());
  answer.push_back(kEtx);
  host.Answer(std::move(answer), what);
}

}  // namespace gwq::terminal
