// SPDX-License-Identifier: MIT
#include "links/internal/lifetime.h"

#include <libusb-1.0/libusb.h>

namespace gwq {
namespace {

bool g_forked = false;
libusb_context* g_own_context = nullptr;

}  // namespace

void ResetLinksAfterFork(bool with_open_links) {
  g_forked = true;
  g_own_context = nullptr;
  if (!with_open_links) return;
  ResetSerialLink();
  ResetUsbHidLink();
  ResetUsbInterruptLink();
}

bool HasForked() {
  return g_forked;
}

bool UsbIsReading() {
  return UsbHidIsReading() || UsbInterruptIsReading();
}

libusb_context* UsbContext() {
  if (g_forked && g_own_context == nullptr) libusb_init(&g_own_context);
  return g_own_context;
}

}  // namespace gwq
