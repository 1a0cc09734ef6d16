// SPDX-License-Identifier: MIT
// Permissions mean nothing to root: for its lifetime the process is an ordinary user, if it was root.
#pragma once

#include <unistd.h>

#include <cstdlib>

namespace gwq::test {

class AsOrdinaryUser {
 public:
  AsOrdinaryUser() : user_(geteuid()), changed_(user_ == 0 && seteuid(kNobody) == 0) {}
  ~AsOrdinaryUser() {
    if (changed_ && seteuid(user_) != 0) std::abort();
  }
  AsOrdinaryUser(const AsOrdinaryUser&) = delete;
  AsOrdinaryUser& operator=(const AsOrdinaryUser&) = delete;

  [[nodiscard]] bool Holds() const { return geteuid() != 0; }

 private:
  static constexpr uid_t kNobody = 65534;

  uid_t user_;
  bool changed_;
};

}  // namespace gwq::test
