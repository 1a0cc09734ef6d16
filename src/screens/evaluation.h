/* The teller's card and the rating of the service.
 *
 * The MP_ functions talk on USB whatever they are given; arguments named ignored are ignored.
 *
 * Common arguments
 *   iPortNo       0 USB, n >= 1 serial port n
 *   iBaudRate     bits per second on a serial port
 *   iTimeout      seconds that the customer has; the host waits 3 s longer for the answer
 *   szTellerName  in; its bytes go as they are handed in; the terminal's encoding is GBK, UTF-8 where CheckUtf8version
 *                 (pinpad/counter.h) says so
 *   szTellerNo    in; as szTellerName; NULL is an empty number
 *   iStarLevel    0 to 6
 *   szPhotoName   in; a head photo on the terminal (files/media_functions.h), where names are GBK; NULL means the number
 *                 and ".jpg"
 * A card that does not fit into a command of 1023 bytes gives -1.
 *
 * Common results
 *   0    success
 *   -1   an argument is out of range; nothing was sent
 *   -3   the link could not be opened
 *   -2, -10, -11, -23  the exchange failed (frame/transaction.h)
 *
 * Outputs are untouched on failure. One thread at a time, but for MP_CancleEvaluate.
 */
#ifndef GWQ_SCREENS_EVALUATION_H
#define GWQ_SCREENS_EVALUATION_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Shows the teller's card; no answer is awaited.
 *   iTimeout      any; the terminal's business
 *   szTellerName  NULL gives -1
 *   szPhotoName   UTF-8, sent as GBK, at most 256 bytes of it; a name out of a list of GBK has to be UTF-8 first
 * Also -14: the card was not sent. */
GWQ_API int MP_StartElectronicCard(void* ignored1, void* ignored2, int iBaudRate, int iTimeout,
                                   const char* szTellerName, const char* szTellerNo, int iStarLevel,
                                   const char* szPhotoName);

/* Sets the card that the evaluation screen shows; no answer is awaited. Arguments and results as
 * MP_StartElectronicCard. */
GWQ_API int MP_SetEvaluateInfo(void* ignored1, void* ignored2, int iBaudRate, const char* szTellerName,
                               const char* szTellerNo, int iStarLevel, const char* szPhotoName);

/* Asks the customer for a rating and closes the screen, whatever the outcome.
 *   iTimeout     any
 *   szEvalValue  out; one character, no terminator: '1', '2' or '3' as the terminal's key, '4' for its key 0;
 *                untouched by any other answer, which is success all the same; NULL is passed over
 * Also -14: the time-out was not sent. */
GWQ_API int MP_StartEvaluate(void* ignored1, void* ignored2, int iBaudRate, int iTimeout, char* szEvalValue);

/* Ends an MP_StartEvaluate of another thread, at whatever moment of it, and discards what is left on the link once that
 * thread has closed it. A rating that waits gives -23, one that is being set up -10, -14 or -23. Returns within about
 * 1.5 s. Any thread. Returns 0 always. */
GWQ_API int MP_CancleEvaluate(void* ignored1, void* ignored2, int iBaudRate);

/* Shows a teller's card and asks the customer for a rating; closes the screen, whatever the outcome of waiting.
 *   szTellerName  NULL is an empty name
 *   szPhotoName   its bytes go as they are handed in; a name out of a list is GBK
 *   iTimeout      1 to 999 seconds
 *   pnRating      out; 1, 2 or 3 as the terminal's key, 4 for its key 0; untouched by any other answer, which is
 *                 success all the same; NULL is passed over
 * A card that was not sent is not reported. */
GWQ_API int GWQ_StartEvaluator(int iPortNo, int iBaudRate, const char* szTellerName, const char* szTellerNo,
                               int iStarLevel, const char* szPhotoName, int iTimeout, unsigned int* pnRating);

GWQ_C_END

#endif
