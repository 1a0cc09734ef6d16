// SPDX-License-Identifier: MIT
// The C++ half of the layout checks; host_in_c.c holds the C half. Both are made by the compiler.
#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

#include "abi/descriptor_layout.h"
#include "abi/extra_layout.h"

namespace gwq::test {
namespace {

TEST(Descriptor, IsPlainDataThatMayBeClearedAndCopiedAsBytes) {
  static_assert(std::is_trivial_v<TransMssionLinux_t> && std::is_standard_layout_v<TransMssionLinux_t>);
  TransMssionLinux_t port;
  std::memset(&port, 0, sizeof port);
  port.nTimeOut = 0x01020304;
  unsigned char bytes[sizeof port];
  std::memcpy(bytes, &port, sizeof port);
  EXPECT_EQ(bytes[168], 0x04);
  EXPECT_EQ(bytes[171], 0x01);
}

TEST(Descriptor, PredicateTakesBytesAndACount) {
  static_assert(std::is_same_v<decltype(TransMssionLinux_t::pfnEndOfRead), int (*)(unsigned char*, int)>);
  TransMssionLinux_t port{};
  EXPECT_EQ(port.pfnEndOfRead, nullptr);
}

}  // namespace
}  // namespace gwq::test
