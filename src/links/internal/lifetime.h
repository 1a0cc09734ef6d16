// What fork and exit mean to the links.
//
// libusb's locks and its thread stay behind with the parent when a process forks, and so does a device that is open
// there. At exit, libusb aborts the process when it is released under a running transfer.
#pragma once

struct libusb_context;

namespace gwq {

// In the child: its next USB exchange uses a libusb context of its own. `links_too`: what is open is the parent's.
void ForgetLinksAfterFork(bool links_too);

// Whether this process has forked from the one that loaded the library.
bool HasForked();

// The libusb context of this process: null for the default one, or a child's own.
libusb_context* UsbContext();

// Whether a read of either USB link runs, which a host that drives links itself may have begun.
bool UsbIsReading();

// Each link's part of these.
void ForgetSerialLink();
void ForgetUsbHidLink();
void ForgetUsbInterruptLink();
bool UsbHidIsReading();
bool UsbInterruptIsReading();

}  // namespace gwq
