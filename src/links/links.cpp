// SPDX-License-Identifier: MIT
#include <array>
#include <cstddef>
#include <cstdint>

#include <gwq/diag/log.h>
#include <gwq/links/end_of_read.h>
#include "links/internal/link.h"
#include "links/internal/link_entries.h"

namespace gwq {
namespace {

int OpenUsbHid(const LinkAddress& address) {
  return ICC_OpenLinuxHid(address.vid, address.pid);
}

int OpenSerial(const LinkAddress& address) {
  return ICC_OpenLinuxCom(address.path, address.baud);
}

// Contract: every result is logged, a negative status too, as the count of the dump.
int ReadSerial(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end) {
  const int result = ICC_ReadLinuxCom(buffer, maximum, timeout_s, end);
  ICC_DPrintDataHexToFile("COM PACKGET READ", buffer, result);
  return result;
}

// Logged as a read that has brought nothing.
int DrainSerialLogged(int silence_ms) {
  unsigned char nothing = 0;
  const int result = DrainSerial(silence_ms);
  ICC_DPrintDataHexToFile("COM PACKGET READ", &nothing, result);
  return result;
}

// By GwqLinkType.
constexpr std::array kLinks{
    Link{.open = &OpenUsbHid,
         .write = &WriteUsbHid,
         .read = &ICC_ReadLinuxHid,
         .drain = &DrainUsbHid,
         .close = &ICC_CloseLinuxHid,
         .cancel = &ICC_CancelLinuxHidRead},
    Link{.open = &OpenSerial,
         .write = &WriteSerial,
         .read = &ReadSerial,
         .drain = &DrainSerialLogged,
         .close = &ICC_CloseLinuxCom,
         .cancel = &ICC_CancelLinuxComRead},
};

}  // namespace

const Link* LinkOfType(std::int32_t type) {
  const auto index = static_cast<std::size_t>(type);
  return type >= 0 && index < kLinks.size() ? &kLinks[index] : nullptr;
}

}  // namespace gwq
