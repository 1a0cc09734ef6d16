/* SPDX-License-Identifier: MIT */
/**
 * @file
 * A message with answer keys, and a number entered by the customer.
 *
 * Both functions close their screen after the wait, on success and on failure.
 *
 * @remark One thread at a time. CancelRead() from another thread ends the wait. Outputs are
 *   untouched on failure.
 */
#ifndef GWQ_SCREENS_INFORMATION_H
#define GWQ_SCREENS_INFORMATION_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Shows a message and waits for a key.
 *
 * The host waits 3 s longer than the customer has.
 *
 * @param iPortNo            0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param iBaudRate          bits per second on a serial port
 * @param iTimeout           1 to 999 seconds that the customer has
 * @param[in] szMessage      must not be NULL or empty; more than 30720 bytes are shown as an empty
 *                           message
 * @param[out] pnKeyPressed  0, 1 or 3 as the terminal's key, 4 for every other answer, key 2 among
 *                           them; may be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an argument is missing or out of range; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @retval GWQ_TOO_SMALL     (-24) out of memory; nothing was sent
 * @since 1.0.0
 */
GWQ_API int GWQ_StartInfo(int iPortNo, int iBaudRate, int iTimeout, const char* szMessage,
                          unsigned int* pnKeyPressed);

/**
 * Prompts the customer for a number.
 *
 * The host waits exactly as long as the customer has, without the usual 3 s more.
 *
 * @param iPortNo       0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param iBaudRate     bits per second on a serial port
 * @param iTimeout      1 to 999 seconds that the customer has
 * @param iMode         0 or 1, the terminal's entry mode
 * @param[out] pOutput  what the customer entered, without a terminator: pass 2046 zeroed bytes;
 *                      must not be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an argument is out of range or NULL; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int GWQ_StartKeyboard(int iPortNo, int iBaudRate, int iTimeout, int iMode, char* pOutput);

GWQ_C_END

#endif
