/* HTML pages on the information screen, all on USB; arguments named ignored are ignored.
 *
 * Common arguments
 *   iBaudRate        accepted; USB has none
 *   iTimeout         seconds that the customer has
 *   nModex           0: show the page and return; else wait for an answer key, 2 s longer than the customer has
 *   szHtml           in; UTF-8, of any length; not NULL, not empty
 *   pnDisplayResult  out; 0 for the terminal's key 0 and for a page that is shown without waiting, 1 for key 1, 2 for
 *                    key 3, and 2 after -1 and -24 but for one case; otherwise untouched; NULL is passed over
 *
 * Common results
 *   0    success
 *   -1   an argument is missing or out of range; nothing was sent
 *   -3   the link could not be opened
 *   -14  any other answer than these keys
 *   -24  out of memory, with nothing of the page sent: `pnDisplayResult` is untouched when the first of three buffers,
 *        twice the text's size, was not to be had; also a text of more than 256 MiB
 *   -2, -10, -11, -23  the exchange failed (frame/transaction.h)
 *
 * Memory grows with the page: about six times its size. One thread at a time; CancelRead from another thread ends the
 * wait.
 */
#ifndef GWQ_SCREENS_HTML_H
#define GWQ_SCREENS_HTML_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Shows a page.
 *   iTimeout, nCountdownSec  any; the second is counted down on the answer button in the waiting mode
 * The settings sent before the page are not reported when they fail. */
GWQ_API int MP_StartInfoHtml(void* ignored1, void* ignored2, int iBaudRate, int iTimeout, int nModex,
                             const char* szHtml, int* pnDisplayResult, int nCountdownSec);

/* As MP_StartInfoHtml, without the count-down; after key 0 it fetches a picture of what the customer confirmed.
 *   szLink            in; its first character is passed to PullFile (files/pull.h); may be NULL
 *   szScreenshotPath  in; local file, written anew; not NULL, not empty
 * Also -14: the picture could not be fetched; `pnDisplayResult` is untouched. */
GWQ_API int MP_StartInfoHtmlScreenshot(void* ignored, const char* szLink, int iBaudRate, int iTimeout,
                                       int nModex, const char* szHtml, const char* szScreenshotPath,
                                       int* pnDisplayResult);

/* Shows a page by way of the file "/tmp/infoviewerex.html", on the host (left there, mode 0600; where another user holds
 * that name, a file of another name, removed afterwards) and on the terminal, and waits for the answer, 3 s longer than the customer has.
 *   iTimeout     1 to 999 seconds
 *   szExtraText  in; passed to the terminal; more than 128 bytes count as empty; not NULL
 *   szPage       in; HTML when it holds "<html" and "</html>", otherwise text that is shown as it is
 *   szResult     out; the answer without its first and last character, and a terminator, at most 2046 bytes; after the
 *                terminal's time-out (-2) the GBK word B3 AC CA B1 and a terminator
 * Also -1: the file on the host could not be written; -2: the customer's time ran out; the push's results
 * (files/push.h). */
GWQ_API int MP_StartInfoHtmlEx(void* ignored1, void* ignored2, int iBaudRate, int iTimeout,
                               const char* szExtraText, const char* szPage, char* szResult);

GWQ_C_END

#endif
