/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Additions to the interface, which every host may ignore: one that uses none of them sees no
 * difference.
 *
 * `gwq/gwq.h` does not include this header.
 */
#ifndef GWQ_EXTRA_H
#define GWQ_EXTRA_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Sets the room of the calling thread's outputs whose size is not passed with the call.
 *
 * These are `szSignData` of MP_SignPDF(), MP_SignPDF_Voice() and MP_Sign_With_TZG(), and
 * `pFileData` of PN_GetStringBlock() (its terminator included). A longer result leaves the output
 * untouched, and the call returns GWQ_TOO_SMALL; the file on the host has all of it. Without a
 * limit the terminal, or a device in its place, decides how much is written to these buffers.
 *
 * Any thread, for its own calls; never blocks.
 *
 * @param bytes  size of each output; 0 is the default, without a limit
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `bytes` is below 0; the size stays as it was
 * @since 1.0.0.36
 */
GWQ_API int GWQ_SetOutputRoom(int bytes);

/**
 * Sets how long the library listens before most calls to throw away what an earlier screen has left.
 *
 * Without it a drain ends when the clock's second changes, after up to a second of silence. With it a
 * drain ends after `ms` without a byte, by the monotonic clock; bytes that keep coming end it after a
 * second. An answer of an earlier screen that comes later is taken for that of the call: the page on
 * time-outs says how to find a safe value. `DrainMs` in section `Gwq` of `GWQ_LOG.ini`, 1 to 1000,
 * sets the same when the library is loaded.
 *
 * For all threads; takes effect at the next drain. Any thread; never blocks.
 *
 * @param ms  1 to 1000; 0 is the default, until the clock's second changes
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `ms` is out of range; nothing changes
 * @since 1.0.0.36
 */
GWQ_API int GWQ_SetDrainMs(int ms);

GWQ_C_END

#endif
