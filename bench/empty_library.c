/* SPDX-License-Identifier: MIT */
/* Loads what the library loads and initialises libusb as its hooks do; nothing else. */
#include <libusb-1.0/libusb.h>

__attribute__((constructor)) static void OnLoad(void) {
  libusb_init(NULL);
}

__attribute__((destructor)) static void OnUnload(void) {
  libusb_exit(NULL);
}
