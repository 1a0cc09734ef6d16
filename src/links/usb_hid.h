/* SPDX-License-Identifier: MIT */
/**
 * @file
 * The USB HID link through libusb: interface 0, 1024-byte transfers, endpoint 0x02 out, 0x81 in.
 * One open device per process.
 *
 * The transaction functions (`frame/transaction.h`) open and close this link themselves.
 *
 * @remark One thread at a time; ICC_CancelLinuxHidRead() may come from another.
 */
#ifndef GWQ_LINKS_USB_HID_H
#define GWQ_LINKS_USB_HID_H

#include <gwq/export.h>
#include <gwq/links/end_of_read.h>

GWQ_C_BEGIN

/**
 * Opens the first device with these ids, takes it from the kernel's driver and claims interface 0.
 *
 * A device that is open already is kept, with any ids, and the call succeeds.
 *
 * @param vid  vendor id
 * @param pid  product id
 * @retval GWQ_OK              success
 * @retval GWQ_NOT_OPENED      (-3) the device cannot be opened or claimed
 * @retval GWQ_LINK_NO_DEVICE  (-7) there is no such device
 * @since 1.0.0
 */
GWQ_API int ICC_OpenLinuxHid(int vid, int pid);

/**
 * Closes the device. The kernel's driver stays detached.
 *
 * @retval GWQ_OK  always
 * @since 1.0.0
 */
GWQ_API int ICC_CloseLinuxHid(void);

/**
 * Writes in at most 5 transfers of 1000 ms.
 *
 * @param[in] data  `length` bytes
 * @param length    number of bytes
 * @retval GWQ_LINK_WRITE      (-5) not all bytes went out
 * @retval GWQ_LINK_NO_DEVICE  (-7) no device is open
 * @return `length` when all bytes went out
 * @since 1.0.0
 */
GWQ_API int ICC_WriteLinuxHid(unsigned char* data, int length);

/**
 * Reads reports until `maximum` bytes are there, the predicate accepts, or the time is over.
 *
 * Bytes received before a failure stay in the buffer.
 *
 * @param[out] buffer  `maximum` + 1023 bytes, and 1024 at least: the report that reaches the
 *                     maximum is kept whole; must not be NULL
 * @param maximum      count that ends the read
 * @param timeout_s    whole seconds; 0 waits until the clock's second changes
 * @param end          predicate, called after every transfer, also an empty one; NULL reads on
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) `buffer` is NULL
 * @retval GWQ_LINK_TIMEOUT       (-4) the time is over, also when no device is open
 * @retval GWQ_LINK_CANCELLED     (-27) cancelled by ICC_CancelLinuxHidRead()
 * @return the bytes received, at most `maximum`
 * @since 1.0.0
 */
GWQ_API int ICC_ReadLinuxHid(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);

/**
 * Makes a read that is waiting in another thread give up within one transfer of 200 ms; without one
 * it has no effect.
 *
 * Any thread; never blocks.
 *
 * @retval GWQ_OK              success
 * @retval GWQ_LINK_NO_DEVICE  (-7) no device is open
 * @since 1.0.0
 */
GWQ_API int ICC_CancelLinuxHidRead(void);

GWQ_C_END

#endif
