// SPDX-License-Identifier: MIT
// How the links survive fork and exit.
//
// After a fork, libusb's locks, its thread and the open devices remain the parent's. At exit,
// libusb aborts the process if it is released while a transfer runs.
#pragma once

struct libusb_context;

namespace gwq {

// In the child: the next USB exchange uses a libusb context of its own. `with_open_links` also
// gives up the links that are open, because they are the parent's.
void ResetLinksAfterFork(bool with_open_links);

// Whether this process has forked from the one that loaded the library.
bool HasForked();

// The libusb context of this process: NULL (the default context) or, after a fork, the child's own.
libusb_context* UsbContext();

// Whether a read runs on either USB link; a host that drives links itself may have started it.
bool UsbIsReading();

// Each link's part of the functions above.
void ResetSerialLink();
void ResetUsbHidLink();
void ResetUsbInterruptLink();
bool UsbHidIsReading();
bool UsbInterruptIsReading();

}  // namespace gwq
