// Calls that exchange more than once while the customer or another thread may cancel them.
//
// A cancel reaches the exchange that runs; one that falls between two exchanges would be lost. So the functions that
// cancel whole calls note which are running, and from then on these begin no exchange any more that awaits an answer.
#pragma once

#include <cstdint>

namespace gwq {

// The outermost one of a thread counts.
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
