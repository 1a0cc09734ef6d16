// SPDX-License-Identifier: MIT
// Calls of several exchanges, which another thread may cancel as a whole.
//
// CancelRead reaches the exchange that runs; between two exchanges it would be lost. A cancel of a
// whole call therefore marks all calls that are running, and these start no further exchange that
// waits for an answer.
#pragma once

namespace gwq {

// A call, from construction to destruction. Only a thread's outermost one counts.
class Operation {
 public:
  Operation();
  ~Operation();
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

 private:
  bool outermost_;
};

// Cancels the calls of all threads that are running now.
void CancelOperations();

// Whether the calling thread's call has been cancelled.
bool OperationCancelled();

}  // namespace gwq
