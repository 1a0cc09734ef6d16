#include "device/bytes.h"
#include "device/outlet.h"

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

}  // namespace gwq::terminal
