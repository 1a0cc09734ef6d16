// SPDX-License-Identifier: MIT
#include <utility>

#include "device/outlet.h"
#include "protocol/marks.h"

namespace gwq::terminal {

void AnswerRefusal(Outlet& outlet) {
  outlet.Answer({kStx, kRefusalMark, kEtx}, "refusal");
}

void AnswerKeyCommand(Outlet& outlet, bool accepted) {
  if (accepted) return outlet.Answer({kAccepted}, "accepted");
  outlet.Answer({kNotAccepted}, "not accepted");
}

void AnswerDone(Outlet& outlet) {
  outlet.Answer({kStx, kAccepted, kEtx}, "done");
}

void AnswerFailure(Outlet& outlet) {
  outlet.Answer({kStx, kAccepted, '1', kEtx}, "failure");
}

void AnswerText(Outlet& outlet, std::string_view text, const std::string& what) {
  Bytes answer{kStx};
  answer.insert(answer.end(), text.begin(), text.end());
  answer.push_back(kEtx);
  outlet.Answer(std::move(answer), what);
}

}  // namespace gwq::terminal
