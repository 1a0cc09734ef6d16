// SPDX-License-Identifier: MIT
#include <utility>

#include "device/host_channel.h"
#include "protocol/marks.h"

namespace gwq::terminal::device {

void AnswerRefusal(HostChannel& host) {
  host.Answer({protocol::kStx, protocol::kRefusalMark, protocol::kEtx}, "refusal");
}

void AnswerKeyCommand(HostChannel& host, bool accepted) {
  if (accepted) return host.Answer({protocol::kAccepted}, "accepted");
  host.Answer({protocol::kNotAccepted}, "not accepted");
}

void AnswerDone(HostChannel& host) {
  host.Answer({protocol::kStx, protocol::kAccepted, protocol::kEtx}, "done");
}

void AnswerFailure(HostChannel& host) {
  host.Answer({protocol::kStx, protocol::kAccepted, '1', protocol::kEtx}, "failure");
}

void AnswerText(HostChannel& host, std::string_view text, const std::string& what) {
  Bytes answer{protocol::kStx};
  answer.insert(answer.end(), text.begin(), text.end());
  answer.push_back(protocol::kEtx);
  host.Answer(std::move(answer), what);
}

}  // namespace gwq::terminal::device
