/* A second USB link of its own beside the HID link, for host programs that drive a device directly: interrupt
 * transfers on interface 0, endpoint 0x02 out, 0x81 in. One open device per process; it may be open beside
 * the HID link's.
 *
 * One thread at a time; ICC_CancelLinuxSdtRead may come from another. With the log on, every byte that passes
 * is logged. */
#ifndef GWQ_LINKS_USB_INTERRUPT_H
#define GWQ_LINKS_USB_INTERRUPT_H

#include <gwq/export.h>
#include <gwq/links/end_of_read.h>

GWQ_C_BEGIN

struct libusb_device;

/* The device list that the open device stands in, ended by NULL; NULL while none is open. Read only. */
GWQ_API extern struct libusb_device** m_devsSdt;

/* Opens the first device with these ids, takes it from the kernel's driver and claims interface 0. Holds a
 * reference to libusb's default context until the close.
 *   vid, pid  vendor and product id
 * Returns 0, also when a device is open already, which is then kept whatever its ids; -7 if there is no
 * such device; -3 if it cannot be opened or claimed. */
GWQ_API int ICC_OpenLinuxSdt(int vid, int pid);

/* Closes the device. The kernel's driver stays detached. Returns 0 always. */
GWQ_API int ICC_CloseLinuxSdt(void);

/* Writes in at most 5 transfers of 1000 ms.
 *   data    in; `length` bytes
 *   length  how many
 * Returns `length` when all bytes went out, else -5; -7 if no device is open. */
GWQ_API int ICC_WriteLinuxSdt(unsigned char* data, int length);

/* Reads reports until `maximum` bytes are there, the predicate accepts, or the time is over.
 *   buffer     out; `maximum` + 1023 bytes and 1024 at least: the last report is kept whole
 *   maximum    count that ends the read
 *   timeout_s  whole seconds; 0 waits until the clock's second changes
 *   end        predicate, called after every transfer that does not reach the maximum, also an empty one;
 *              NULL reads on
 * Returns the bytes received, at most `maximum`; -2 for a NULL buffer; -4 time-out, also when no device is
 * open; -27 cancelled, but only after a sleep of 100000 seconds.
 * Bytes received before a failure stand in the buffer. */
GWQ_API int ICC_ReadLinuxSdt(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);

/* Makes a read that is waiting in another thread stop within one transfer of 200 ms and go into its sleep;
 * without one it has no effect. Returns 0, or -7 if no device is open. Any thread; never waits. */
GWQ_API int ICC_CancelLinuxSdtRead(void);

GWQ_C_END

#endif
