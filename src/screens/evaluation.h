/* SPDX-License-Identifier: MIT */
/**
 * @file
 * The teller's card and the rating of the service.
 *
 * The `MP_` functions use USB. Names of photos are those of head photos on the terminal
 * (`files/media_functions.h`), where they are GBK.
 *
 * @remark One thread at a time, except MP_CancleEvaluate(). Outputs are untouched on failure.
 */
#ifndef GWQ_SCREENS_EVALUATION_H
#define GWQ_SCREENS_EVALUATION_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Shows the teller's card. The terminal sends no answer.
 *
 * @param[in] ignored1      ignored; may be NULL
 * @param[in] ignored2      ignored; may be NULL
 * @param iBaudRate         ignored; USB has none
 * @param iTimeout          any number of seconds, passed to the terminal
 * @param[in] szTellerName  sent as it is; the terminal's encoding is GBK, or UTF-8 where
 *                          CheckUtf8version() says so; must not be NULL
 * @param[in] szTellerNo    sent as it is, encoded as `szTellerName`; NULL means empty
 * @param iStarLevel        0 to 6
 * @param[in] szPhotoName   UTF-8, sent as GBK, at most 256 bytes of it: convert a name out of a GBK
 *                          list to UTF-8 first; NULL means `szTellerNo` and `.jpg`
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `szTellerName` is NULL, `iStarLevel` is out of range, or the card
 *                           does not fit into a command of 1023 bytes; nothing was sent
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) the time-out was not sent
 * @retval GWQ_REFUSED       (-14) the card was not sent
 * @since 1.0.0
 */
GWQ_API int MP_StartElectronicCard(void* ignored1, void* ignored2, int iBaudRate, int iTimeout,
                                   const char* szTellerName, const char* szTellerNo, int iStarLevel,
                                   const char* szPhotoName);

/**
 * Sets the card that the evaluation screen shows. The terminal sends no answer.
 *
 * @param[in] ignored1      ignored; may be NULL
 * @param[in] ignored2      ignored; may be NULL
 * @param iBaudRate         ignored; USB has none
 * @param[in] szTellerName  sent as it is; the terminal's encoding is GBK, or UTF-8 where
 *                          CheckUtf8version() says so; must not be NULL
 * @param[in] szTellerNo    sent as it is, encoded as `szTellerName`; NULL means empty
 * @param iStarLevel        0 to 6
 * @param[in] szPhotoName   UTF-8, sent as GBK, at most 256 bytes of it: convert a name out of a GBK
 *                          list to UTF-8 first; NULL means `szTellerNo` and `.jpg`
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `szTellerName` is NULL, `iStarLevel` is out of range, or the card
 *                           does not fit into a command of 1023 bytes; nothing was sent
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_REFUSED       (-14) the card was not sent
 * @since 1.0.0
 */
GWQ_API int MP_SetEvaluateInfo(void* ignored1, void* ignored2, int iBaudRate, const char* szTellerName,
                               const char* szTellerNo, int iStarLevel, const char* szPhotoName);

/**
 * Asks the customer for a rating and closes the screen after it, on success and on failure.
 *
 * The host waits 3 s longer than the customer has.
 *
 * @param[in] ignored1      ignored; may be NULL
 * @param[in] ignored2      ignored; may be NULL
 * @param iBaudRate         ignored; USB has none
 * @param iTimeout          any number of seconds that the customer has
 * @param[out] szEvalValue  one character, without a terminator: `1`, `2` or `3` as the terminal's
 *                          key, `4` for its key 0; untouched by any other answer, which is GWQ_OK
 *                          all the same; may be NULL
 * @retval GWQ_OK           success
 * @retval GWQ_NO_ANSWER    (-2) nothing was read
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED  (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED      (-14) the time-out was not sent
 * @retval GWQ_CANCELLED    (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int MP_StartEvaluate(void* ignored1, void* ignored2, int iBaudRate, int iTimeout, char* szEvalValue);

/**
 * Ends an MP_StartEvaluate() of another thread at any moment of it, and discards what is left on
 * the link once that thread has closed it.
 *
 * The rating returns GWQ_CANCELLED when it waits for the customer, and GWQ_SEND_FAILED, GWQ_REFUSED
 * or GWQ_CANCELLED when it is being set up. Any thread; returns within about 1.5 s.
 *
 * @param[in] ignored1  ignored; may be NULL
 * @param[in] ignored2  ignored; may be NULL
 * @param iBaudRate     ignored; USB has none
 * @retval GWQ_OK  always
 * @since 1.0.0
 */
GWQ_API int MP_CancleEvaluate(void* ignored1, void* ignored2, int iBaudRate);

/**
 * Shows a teller's card, asks the customer for a rating, and closes the screen after the wait, on
 * success and on failure.
 *
 * The host waits 3 s longer than the customer has. A card that was not sent is not reported.
 *
 * @param iPortNo           0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param iBaudRate         bits per second on a serial port
 * @param[in] szTellerName  sent as it is; the terminal's encoding is GBK, or UTF-8 where
 *                          CheckUtf8version() says so; NULL means empty
 * @param[in] szTellerNo    sent as it is, encoded as `szTellerName`; NULL means empty
 * @param iStarLevel        0 to 6
 * @param[in] szPhotoName   sent as it is; a name out of a list is GBK; NULL means `szTellerNo` and
 *                          `.jpg`
 * @param iTimeout          1 to 999 seconds
 * @param[out] pnRating     1, 2 or 3 as the terminal's key, 4 for its key 0; untouched by any other
 *                          answer, which is GWQ_OK all the same; may be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `iStarLevel` or `iTimeout` is out of range, or the card does not
 *                           fit into a command of 1023 bytes; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int GWQ_StartEvaluator(int iPortNo, int iBaudRate, const char* szTellerName, const char* szTellerNo,
                               int iStarLevel, const char* szPhotoName, int iTimeout, unsigned int* pnRating);

GWQ_C_END

#endif
