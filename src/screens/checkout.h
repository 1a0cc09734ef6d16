/* SPDX-License-Identifier: MIT */
/**
 * @file
 * The checkout screen, on USB.
 *
 * @remark One thread at a time.
 */
#ifndef GWQ_SCREENS_CHECKOUT_H
#define GWQ_SCREENS_CHECKOUT_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Shows two texts and returns what the customer answers.
 *
 * The host waits 3 s longer than the customer has. Memory grows with the texts: about six times
 * their size.
 *
 * @param[in] ignored1      ignored; may be NULL
 * @param[in] ignored2      ignored; may be NULL
 * @param iBaudRate         ignored; USB has none
 * @param iTimeout          1 to 999 seconds
 * @param[in] szFirstText   any length; must not be NULL or empty
 * @param[in] szSecondText  any length; must not be NULL
 * @param[out] szResult     the text of the answer and a terminator; at most 2046 bytes; untouched
 *                          on failure; must not be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an argument is out of range; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) the customer's time ran out; or nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the terminal refused
 * @retval GWQ_CANCELLED     (-23) the customer cancelled; or cancelled by another thread
 * @retval GWQ_TOO_SMALL     (-24) out of memory, or a text of more than 256 MiB
 * @since 1.0.0
 */
GWQ_API int MP_CheckOut_All(void* ignored1, void* ignored2, int iBaudRate, int iTimeout,
                            const char* szFirstText, const char* szSecondText, char* szResult);

GWQ_C_END

#endif
