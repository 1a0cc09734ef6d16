/* SPDX-License-Identifier: MIT */
/**
 * @file
 * The firmware version of the terminal, and an end to what it is doing. On USB.
 */
#ifndef GWQ_SCREENS_TERMINAL_CONTROL_H
#define GWQ_SCREENS_TERMINAL_CONTROL_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Reads the version of the firmware: a common and a private part.
 *
 * One thread at a time.
 *
 * @param[in] ignored1           ignored; may be NULL
 * @param[in] ignored2           ignored; may be NULL
 * @param ignored3               ignored
 * @param ignored4               ignored
 * @param[out] szCommonVersion   text and a terminator; 2046 bytes are enough for any answer;
 *                               untouched on failure; may be NULL
 * @param[out] szPrivateVersion  text and a terminator; 2046 bytes are enough for any answer;
 *                               untouched on failure; may be NULL
 * @retval GWQ_OK                 success
 * @retval GWQ_NOT_OPENED         (-3) the link could not be opened
 * @retval GWQ_REFUSED            (-14) the exchange failed in another way, or the answer does not
 *                                have two parts
 * @retval GWQ_NO_VERSION_ANSWER  (-401) no answer came within a second
 * @since 1.0.0
 */
GWQ_API int MP_GetFirmwareVersion(void* ignored1, void* ignored2, int ignored3, int ignored4,
                                  char* szCommonVersion, char* szPrivateVersion);

/**
 * Ends a call of another thread that waits for the customer or moves files, at any moment of it,
 * and has the terminal close what it shows once that call has closed its link.
 *
 * Any thread. Takes 0.6 seconds and what the terminal needs, for whose answer the host waits 2 to 3
 * s: a terminal that was cut off in the middle of a file's packet may not answer.
 *
 * @param[in] ignored1  ignored; may be NULL
 * @param[in] ignored2  ignored; may be NULL
 * @param iBaudRate     ignored; USB has none
 * @param ignored3      ignored
 * @retval GWQ_OK           the terminal has answered, with success or not; or success
 * @retval GWQ_NO_ANSWER    (-2) nothing was read
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED  (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED    (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int MP_CancelCurrentOperation(void* ignored1, void* ignored2, int iBaudRate, int ignored3);

GWQ_C_END

#endif
