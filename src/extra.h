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

/** What a transfer is, for GwqProgress. */
enum GwqTransfer {
  GWQ_TRANSFER_PUSH = 1,    /**< a document or page to the terminal */
  GWQ_TRANSFER_PULL = 2,    /**< a file from the terminal */
  GWQ_TRANSFER_MEDIA = 3,   /**< a picture, head photo or text that the terminal keeps */
  GWQ_TRANSFER_FIRMWARE = 4 /**< a firmware image */
};

/**
 * Told how far a transfer is.
 *
 * @param transfer  enum GwqTransfer
 * @param file      the file on the host; for DownVideoInfo() its name on the terminal; valid only
 *                  during the call
 * @param done      bytes that have passed; of a push those that the terminal has confirmed
 * @param total     bytes in all; 0 while unknown, as in a pull before its end
 * @param user      what was passed to GWQ_SetProgress()
 */
typedef void (*GwqProgress)(int transfer, const char* file, long long done, long long total, void* user);

/**
 * Has the calling thread's transfers tell how far they are.
 *
 * The callback is called on the thread that transfers: at the start, at most every 100 ms between two
 * packets (in a pull between two reports, and only if the file is a regular one), and at the end, also
 * after a failure; `done` is `total` after success. It may call CancelWrite(): the transfer ends before
 * its next packet, and the call returns GWQ_CANCELLED; the terminal then keeps nothing of a pushed
 * file. A call of CancelWrite() on another thread does the same. HIDDownLoad() and DownVideoFile() stop
 * as without a callback; a pull is ended by CancelRead(). The callback calls nothing else of the
 * library. One that leaves by an exception or a jump abandons the call: the file on the host is
 * closed, the next call closes the link and works; memory that the call had allocated is lost.
 *
 * Any thread, for its own calls; never blocks.
 *
 * @param callback  NULL is the default: nothing is told
 * @param user      passed to the callback as it is
 * @retval GWQ_OK  always
 * @since 1.0.0.36
 */
GWQ_API int GWQ_SetProgress(GwqProgress callback, void* user);

GWQ_C_END

#endif
