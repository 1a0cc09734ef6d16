/* SPDX-License-Identifier: MIT */
/**
 * @file
 * The serial link: one open port per process, raw 8N1, no flow control.
 *
 * The transaction functions (`frame/transaction.h`) open and close this link themselves.
 *
 * @remark One thread at a time; ICC_CancelLinuxComRead() may come from another.
 */
#ifndef GWQ_LINKS_SERIAL_H
#define GWQ_LINKS_SERIAL_H

#include <gwq/export.h>
#include <gwq/links/end_of_read.h>

GWQ_C_BEGIN

/**
 * Opens a serial device and saves its settings.
 *
 * A port that is still open is closed first, its settings left as they are.
 *
 * @param[in] path  such as `/dev/ttyS0`; must not be NULL
 * @param baud      300, 1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200; any other value
 *                  means 9600
 * @retval GWQ_OK             success
 * @retval GWQ_LINK_UNUSABLE  (-1) its settings cannot be read or applied
 * @retval GWQ_NOT_OPENED     (-3) the device cannot be opened
 * @since 1.0.0
 */
GWQ_API int ICC_OpenLinuxCom(const char* path, int baud);

/**
 * Restores the device's settings and closes it.
 *
 * @retval GWQ_OK  always
 * @since 1.0.0
 */
GWQ_API int ICC_CloseLinuxCom(void);

/**
 * Writes all bytes.
 *
 * A peer that takes no more bytes ends it after 5 seconds; a signal does not.
 *
 * @param[in] data  `length` bytes; must not be NULL
 * @param length    number of bytes, at least 1
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) `data` is NULL or `length` is below 1
 * @retval GWQ_LINK_WRITE         (-5) no port is open
 * @return the bytes written, fewer than `length` after an error or those 5 seconds
 * @since 1.0.0
 */
GWQ_API int ICC_WriteLinuxCom(unsigned char* data, int length);

/**
 * Reads until `maximum` bytes are there, the predicate accepts, or the time is over.
 *
 * Bytes received before a failure stay in the buffer.
 *
 * @param[out] buffer  `maximum` bytes, without a terminator: pass it zeroed if the predicate reads
 *                     text; must not be NULL
 * @param maximum      most bytes to read
 * @param timeout_s    whole seconds; 0 waits until the clock's second changes
 * @param end          predicate, called after every read, also one that read nothing; NULL reads on
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) no port is open, or `buffer` is NULL
 * @retval GWQ_LINK_TIMEOUT       (-4) the time is over
 * @retval GWQ_LINK_READ          (-6) reading failed
 * @retval GWQ_CANCELLED          (-23) cancelled by ICC_CancelLinuxComRead()
 * @return the bytes received
 * @since 1.0.0
 */
GWQ_API int ICC_ReadLinuxCom(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);

/**
 * Makes a read that is waiting in another thread give up; without one it has no effect.
 *
 * Any thread; never blocks.
 *
 * @retval GWQ_OK              success
 * @retval GWQ_LINK_NO_DEVICE  (-7) no port is open
 * @since 1.0.0
 */
GWQ_API int ICC_CancelLinuxComRead(void);

/**
 * Writes until all bytes are out, an error comes, or no byte has gone out for 5 seconds.
 *
 * @param[in] data  `length` bytes; must not be NULL
 * @param length    number of bytes, at least 1
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) no port is open, `data` is NULL or `length` is below 1
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int SendDataToTransPort(unsigned char* data, int length);

/**
 * Makes an open descriptor the link's own, its settings untouched.
 *
 * @param fd  the descriptor; -1 means none
 * @since 1.0.0
 */
GWQ_API void SetComFd(int fd);

/**
 * Saves a terminal line's settings and applies the link's own.
 *
 * @param fd    the line's descriptor
 * @param baud  300, 1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200; any other value means
 *              9600
 * @retval GWQ_OK                 success
 * @retval GWQ_LINK_UNUSABLE      (-1) the settings cannot be read or applied
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) `fd` is -1
 * @since 1.0.0
 */
GWQ_API int SetComAttr(int fd, int baud);

/**
 * Applies the saved settings to a terminal line.
 *
 * @param fd  the line's descriptor
 * @retval GWQ_OK                 success
 * @retval GWQ_LINK_UNUSABLE      (-1) the settings cannot be applied
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) `fd` is -1
 * @since 1.0.0
 */
GWQ_API int RestoreComAttr(int fd);

GWQ_C_END

#endif
