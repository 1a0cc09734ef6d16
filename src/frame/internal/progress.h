// SPDX-License-Identifier: MIT
// Tells the host how far a transfer is, if it has asked for that.
#pragma once

#include <cstddef>
#include <cstdint>

#include <gwq/extra.h>

namespace gwq {

class Progress {
 public:
  // Whether the calling thread has set a callback.
  static bool IsWanted();
  // Whether it has, and has cancelled the transfers of the running call.
  static bool Cancelled();

  // `total` is 0 if it is unknown. Tells of the start.
  Progress(GwqTransfer transfer, const char* file, long long total);

  void Add(std::size_t bytes) { done_ += static_cast<long long>(bytes); }
  // Whether it is time to tell.
  [[nodiscard]] bool IsDue() const;
  // Calls the host, which may not return. Returns false once the turn is lost.
  bool Tell();
  // Tells of the end. Returns `status`, the transfer's.
  int End(int status);

 private:
  GwqTransfer transfer_;
  const char* file_;
  long long done_ = 0;
  long long total_;
  std::int64_t told_ms_ = 0;
};

}  // namespace gwq
