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

GWQ_C_END

#endif
