/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Memory grows with the page: about six times its size.
 *
 * @remark One thread at a time. CancelRead() from another thread ends the wait.
 */
#ifndef GWQ_SCREENS_HTML_H
#define GWQ_SCREENS_HTML_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Shows a page and, unless `nModex` is 0, waits for an answer key.
 *
 * The settings sent before the page are not reported when they fail.
 *
 * @param[in] ignored1          ignored; may be NULL
 * @param[in] ignored2          ignored; may be NULL
 * @param iBaudRate             ignored; USB has none
 * @param iTimeout              any number of seconds that the customer has
 * @param nModex                0: show the page and return; else wait for an answer key, 2 s longer
 *                              than the customer has
 * @param[in] szHtml            UTF-8, of any length; must not be NULL or empty
 * @param[out] pnDisplayResult  0 for the terminal's key 0 and for a page shown without waiting, 1
 *                              for key 1, 2 for key 3, and 2 after GWQ_BAD_ARGUMENT and
 *                              GWQ_TOO_SMALL (except in one case, see there); otherwise untouched;
 *                              may be NULL
 * @param nCountdownSec         any number of seconds, counted down on the answer button in the
 *                              waiting mode
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `szHtml` is NULL or empty; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) any other answer than these keys
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @retval GWQ_TOO_SMALL     (-24) out of memory, with nothing of the page sent: `pnDisplayResult`
 *                           is untouched when the first of three buffers, twice the size of the
 *                           text, could not be allocated; or a text of more than 256 MiB
 * @since 1.0.0
 */
GWQ_API int MP_StartInfoHtml(void* ignored1, void* ignored2, int iBaudRate, int iTimeout, int nModex,
                             const char* szHtml, int* pnDisplayResult, int nCountdownSec);

/**
 * Shows a page, waits for an answer key unless `nModex` is 0, and after key 0 fetches a picture of
 * what the customer confirmed.
 *
 * The settings sent before the page are not reported when they fail.
 *
 * @param[in] ignored           ignored; may be NULL
 * @param[in] szLink            ignored; may be NULL
 * @param iBaudRate             ignored; USB has none
 * @param iTimeout              any number of seconds that the customer has
 * @param nModex                0: show the page and return; else wait for an answer key, 2 s longer
 *                              than the customer has
 * @param[in] szHtml            UTF-8, of any length; must not be NULL or empty
 * @param[in] szScreenshotPath  local file for the picture, overwritten; must not be NULL or empty
 * @param[out] pnDisplayResult  0 for the terminal's key 0 and for a page shown without waiting, 1
 *                              for key 1, 2 for key 3, and 2 after GWQ_BAD_ARGUMENT and
 *                              GWQ_TOO_SMALL (except in one case, see there); otherwise untouched,
 *                              also when the picture could not be fetched; may be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `szHtml` or `szScreenshotPath` is NULL or empty; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) any other answer than these keys, or the picture could not be
 *                           fetched
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @retval GWQ_TOO_SMALL     (-24) out of memory, with nothing of the page sent: `pnDisplayResult`
 *                           is untouched when the first of three buffers, twice the size of the
 *                           text, could not be allocated; or a text of more than 256 MiB
 * @since 1.0.0
 */
GWQ_API int MP_StartInfoHtmlScreenshot(void* ignored, const char* szLink, int iBaudRate, int iTimeout,
                                       int nModex, const char* szHtml, const char* szScreenshotPath,
                                       int* pnDisplayResult);

/**
 * Shows a page by way of a file on the host and on the terminal, and waits for the answer.
 *
 * The file is `/tmp/infoviewerex.html`; on the host it is left there, with mode 0600. Where that
 * name belongs to another user, a file of another name is used and removed afterwards. The host
 * waits 3 s longer than the customer has.
 *
 * @param[in] ignored1     ignored; may be NULL
 * @param[in] ignored2     ignored; may be NULL
 * @param iBaudRate        ignored; USB has none
 * @param iTimeout         1 to 999 seconds
 * @param[in] szExtraText  passed to the terminal; more than 128 bytes count as empty; must not be
 *                         NULL
 * @param[in] szPage       HTML when it contains `<html` and `</html>`, otherwise text that is shown
 *                         as it is; must not be NULL or empty
 * @param[out] szResult    the answer without its first and last character, and a terminator; at
 *                         most 2046 bytes; after the terminal's time-out (GWQ_NO_ANSWER) the GBK
 *                         word B3 AC CA B1 and a terminator; must not be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an argument is missing or out of range, and nothing was sent; or
 *                           the file on the host could not be written; or a local file cannot be
 *                           opened or read
 * @retval GWQ_NO_ANSWER     (-2) the customer's time ran out; or the terminal reports a failure, or
 *                           its answer is empty
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) no answer came in time, or reading failed
 * @retval GWQ_REFUSED       (-14) the terminal refused the file, or its answer has no frame
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int MP_StartInfoHtmlEx(void* ignored1, void* ignored2, int iBaudRate, int iTimeout,
                               const char* szExtraText, const char* szPage, char* szResult);

GWQ_C_END

#endif
