/* Documents on the customer's screen: showing them, and asking for agreement.
 *
 * Both work on USB; arguments named ignored are ignored. The documents go to the terminal before they are shown.
 *
 * Common arguments
 *   iBaudRate   accepted; USB has none
 *   iTimeout    1 to 999 seconds
 *   szFilePath  in; local paths (UTF-8) separated by "|"; as pushFileToZ11 takes them, at most 1023 bytes. The files are
 *               stored under their base names as handed in, while the terminal's encoding is GBK: prefer ASCII names.
 *               On the screen's list the names are GBK, at most 1024 bytes
 *
 * Common results
 *   0    success
 *   -1   iTimeout out of range, no szFilePath, or one that is too long or not UTF-8: nothing was sent; or a document
 *        cannot be read
 *   -3   the link could not be opened
 *   -15  a document does not exist
 *   others  of the push (files/push.h) or of the exchange (frame/transaction.h)
 *
 * One thread at a time; CancelRead from another thread ends a wait for the customer.
 */
#ifndef GWQ_SCREENS_DOCUMENTS_H
#define GWQ_SCREENS_DOCUMENTS_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Shows documents, without awaiting anything. */
GWQ_API int MP_ShowPDF(void* ignored1, void* ignored2, int iBaudRate, int iTimeout, const char* szFilePath);

/* Shows documents and asks the customer to agree.
 *   pnDisplayResult  out; 0 agreed, 1 refused, 2 no decision: the arguments, the push or the wait failed, iTimeout
 *                    passed, or the terminal failed. Untouched by -3 of the opening and by an answer that is none of
 *                    these. NULL is passed over.
 * Also -2: iTimeout passed; -14: the terminal failed. A refusal is 0 as well. */
GWQ_API int MP_ConfirmPDF(void* ignored1, void* ignored2, int iBaudRate, int iTimeout, const char* szFilePath,
                          int* pnDisplayResult);

GWQ_C_END

#endif
