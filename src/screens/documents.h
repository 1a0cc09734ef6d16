/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Documents on the customer's screen: showing them, and asking for agreement. On USB.
 *
 * The documents go to the terminal before they are shown.
 *
 * @remark One thread at a time. CancelRead() from another thread ends a wait for the customer.
 */
#ifndef GWQ_SCREENS_DOCUMENTS_H
#define GWQ_SCREENS_DOCUMENTS_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Shows documents and returns without an answer of the customer.
 *
 * @param[in] ignored1    ignored; may be NULL
 * @param[in] ignored2    ignored; may be NULL
 * @param iBaudRate       ignored; USB has none
 * @param iTimeout        1 to 999 seconds
 * @param[in] szFilePath  local paths (UTF-8) separated by `|`, at most 1023 bytes; must not be NULL
 *                        or empty. The files are stored under their base names, sent as they are,
 *                        while the terminal's encoding is GBK: prefer ASCII names. On the screen's
 *                        list the names are GBK, at most 1024 bytes
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `iTimeout` is out of range, or `szFilePath` is missing, too long
 *                           or not UTF-8, and nothing was sent; or a local file cannot be opened or
 *                           read
 * @retval GWQ_NO_ANSWER     (-2) the terminal reports a failure, or its answer is empty
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) no answer came in time, or reading failed
 * @retval GWQ_REFUSED       (-14) the terminal refused the file, or its answer has no frame
 * @retval GWQ_NO_FILE       (-15) a document does not exist
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int MP_ShowPDF(void* ignored1, void* ignored2, int iBaudRate, int iTimeout, const char* szFilePath);

/**
 * Shows documents and asks the customer to agree.
 *
 * A refusal is GWQ_OK as well: read `pnDisplayResult`.
 *
 * @param[in] ignored1          ignored; may be NULL
 * @param[in] ignored2          ignored; may be NULL
 * @param iBaudRate             ignored; USB has none
 * @param iTimeout              1 to 999 seconds
 * @param[in] szFilePath        local paths (UTF-8) separated by `|`, at most 1023 bytes; must not
 *                              be NULL or empty. The files are stored under their base names, sent
 *                              as they are, while the terminal's encoding is GBK: prefer ASCII
 *                              names. On the screen's list the names are GBK, at most 1024 bytes
 * @param[out] pnDisplayResult  0 agreed, 1 refused, 2 no decision: the arguments, the push or the
 *                              wait failed, `iTimeout` passed, or the terminal failed. Untouched
 *                              when the link could not be opened at the start, and by an answer
 *                              that is none of these, which is GWQ_OK all the same. May be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `iTimeout` is out of range, or `szFilePath` is missing, too long
 *                           or not UTF-8, and nothing was sent; or a local file cannot be opened or
 *                           read
 * @retval GWQ_NO_ANSWER     (-2) `iTimeout` passed; or the terminal reports a failure, or its
 *                           answer is empty
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) no answer came in time, or reading failed
 * @retval GWQ_REFUSED       (-14) the terminal failed; or the terminal refused the file, or its
 *                           answer has no frame
 * @retval GWQ_NO_FILE       (-15) a document does not exist
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int MP_ConfirmPDF(void* ignored1, void* ignored2, int iBaudRate, int iTimeout, const char* szFilePath,
                          int* pnDisplayResult);

GWQ_C_END

#endif
