/* SPDX-License-Identifier: MIT */
/**
 * @file
 * The customer's handwritten signature under documents, on USB.
 *
 * The documents go to the terminal, the customer signs, and the signature comes back as a picture
 * and as stroke data, both written to local files.
 *
 * @warning When the wait for the customer is cancelled by CancelRead(), or the terminal stays
 *   silent, the call may go on: the signature is fetched all the same, and what comes may be an OLD
 *   one, of the customer before, with GWQ_OK. After a cancel of yours, discard everything that the
 *   call has returned, with any status.
 *
 * @remark One thread at a time. CancelRead() from another thread ends the wait for the customer.
 */
#ifndef GWQ_SCREENS_SIGNING_H
#define GWQ_SCREENS_SIGNING_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Asks the customer to sign documents.
 *
 * The stroke data are written to `hw.data` in the directory of `szSignPath`; in `/` when it names
 * none.
 *
 * @param[in] ignored         ignored; may be NULL
 * @param[in] szLink          ignored; may be NULL
 * @param iBaudRate           ignored; USB has none
 * @param iTimeout            1 to 999 seconds
 * @param[in] szFilePath      local paths (UTF-8) separated by `|`, at most 1023 bytes; must not be
 *                            NULL or empty. The files are stored under their base names, sent as
 *                            they are, while the terminal's encoding is GBK: prefer ASCII names. On
 *                            the screen's list the names are GBK, at most 4096 bytes
 * @param[in] szLocation      where to sign, in the terminal's own form; sent as it is, the
 *                            terminal's encoding is GBK; must not be NULL or empty
 * @param[in] szSignPath      local file for the picture, overwritten; NULL or empty: no picture is
 *                            fetched
 * @param[in,out] szSignData  pass NULL and read the stroke data from their file, or call
 *                            GWQ_SetOutputRoom() of `extra.h` first: the whole file is copied here,
 *                            without a terminator, and the terminal decides how long it is. Cleared
 *                            first, up to the terminator of the text in it: pass it terminated
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an argument is missing or out of range, or the list is too long or
 *                           not UTF-8, and nothing was sent; or a local file cannot be opened or
 *                           read
 * @retval GWQ_NO_ANSWER     (-2) the customer did not sign in time; or the terminal reports a
 *                           failure, or its answer is empty
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) no answer came in time, or reading failed
 * @retval GWQ_REFUSED       (-14) the terminal failed, or the signature could not be fetched or its
 *                           data not be read; or the terminal refused the file, or its answer has
 *                           no frame
 * @retval GWQ_NO_FILE       (-15) a document does not exist
 * @retval GWQ_CANCELLED     (-23) the customer cancelled; or cancelled by another thread
 * @retval GWQ_TOO_SMALL     (-24) out of memory, or `szSignData` has no room for the stroke data,
 *                           which are in their file
 * @since 1.0.0
 */
GWQ_API int MP_SignPDF(void* ignored, const char* szLink, int iBaudRate, int iTimeout, const char* szFilePath,
                       const char* szLocation, const char* szSignPath, char* szSignData);

/**
 * Asks the customer to sign documents, with a spoken prompt.
 *
 * The stroke data are written to `hw.data` in the directory of `szSignPath`; in `/` when it names
 * none.
 *
 * @param[in] ignored         ignored; may be NULL
 * @param[in] szLink          ignored; may be NULL
 * @param iBaudRate           ignored; USB has none
 * @param iTimeout            1 to 999 seconds
 * @param[in] szFilePath      local paths (UTF-8) separated by `|`, at most 1023 bytes; must not be
 *                            NULL or empty. The files are stored under their base names, sent as
 *                            they are, while the terminal's encoding is GBK: prefer ASCII names. On
 *                            the screen's list the names are GBK, at most 4096 bytes
 * @param[in] szLocation      where to sign, in the terminal's own form; sent as it is, the
 *                            terminal's encoding is GBK; must not be NULL or empty
 * @param[in] szVoiceContent  what is spoken, UTF-8; may be empty; must not be NULL
 * @param[in] szSignPath      local file for the picture, overwritten; NULL or empty: no picture is
 *                            fetched
 * @param[out] szSignData     pass NULL and read the stroke data from their file, or call
 *                            GWQ_SetOutputRoom() of `extra.h` first: the whole file is copied here,
 *                            without a terminator, and the terminal decides how long it is
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an argument is missing or out of range, the list is too long or
 *                           not UTF-8, or `szVoiceContent` is not UTF-8, and nothing was sent; or a
 *                           local file cannot be opened or read
 * @retval GWQ_NO_ANSWER     (-2) the customer did not sign in time; or the terminal reports a
 *                           failure, or its answer is empty
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) no answer came in time, or reading failed
 * @retval GWQ_REFUSED       (-14) the terminal failed, or the signature could not be fetched or its
 *                           data not be read; or the terminal refused the file, or its answer has
 *                           no frame
 * @retval GWQ_NO_FILE       (-15) a document does not exist
 * @retval GWQ_CANCELLED     (-23) the customer cancelled; or cancelled by another thread
 * @retval GWQ_TOO_SMALL     (-24) out of memory, or `szSignData` has no room for the stroke data,
 *                           which are in their file
 * @since 1.0.0
 */
GWQ_API int MP_SignPDF_Voice(void* ignored, const char* szLink, int iBaudRate, int iTimeout,
                             const char* szFilePath, const char* szLocation, const char* szVoiceContent,
                             const char* szSignPath, char* szSignData);

/**
 * Asks the customer to sign documents in the terminal's TZG mode, with a spoken prompt.
 *
 * The mode is `nSignLen`, plus 1 when `nOperFlag` is 1. Unless it is 2, 3 or 4 (2 only without
 * `nOperFlag` 1), `iTimeout` is in range and the terminal supports it, the call is one to
 * MP_SignPDF_Voice().
 *
 * In TZG mode the stroke data are written to `/tmp/data.txt`, mode 0600; where that name belongs to
 * another user, to a file of another name, removed afterwards. A wait without any answer is
 * GWQ_REFUSED.
 *
 * @param[in] ignored         ignored; may be NULL
 * @param[in] szLink          ignored; may be NULL
 * @param iBaudRate           ignored; USB has none
 * @param iTimeout            1 to 999 seconds
 * @param[in] szFilePath      local paths (UTF-8) separated by `|`, at most 1023 bytes; must not be
 *                            NULL, nor, outside TZG mode, empty. The files are stored under their
 *                            base names, sent as they are, while the terminal's encoding is GBK:
 *                            prefer ASCII names. On the screen's list the names are GBK, at most
 *                            4096 bytes
 * @param[in] szLocation      where to sign, sent as it is, the terminal's encoding is GBK; must not
 *                            be NULL or empty; in TZG mode NULL means empty
 * @param[in] szVoiceContent  what is spoken; in TZG mode sent as it is, and NULL means empty; else
 *                            UTF-8, not NULL
 * @param[in] szSignPath      local file for the picture, overwritten; NULL or empty: no picture is
 *                            fetched
 * @param nOperFlag           passed to the terminal
 * @param nSignLen            passed to the terminal
 * @param[out] szSignData     pass NULL and read the stroke data from their file, or call
 *                            GWQ_SetOutputRoom() of `extra.h` first: the whole file is copied here,
 *                            without a terminator, and the terminal decides how long it is
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an argument is missing or out of range, or the list is too long or
 *                           not UTF-8, and nothing was sent; or a local file cannot be opened or
 *                           read
 * @retval GWQ_NO_ANSWER     (-2) the customer did not sign in time; or the terminal reports a
 *                           failure, or its answer is empty
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) no answer came in time, or reading failed
 * @retval GWQ_REFUSED       (-14) the terminal failed or did not answer, or the signature could not
 *                           be fetched or its data not be read; or the terminal refused the file,
 *                           or its answer has no frame
 * @retval GWQ_NO_FILE       (-15) a document does not exist
 * @retval GWQ_CANCELLED     (-23) the customer cancelled; or cancelled by another thread
 * @retval GWQ_TOO_SMALL     (-24) out of memory, or `szSignData` has no room for the stroke data,
 *                           which are in their file
 * @since 1.0.0
 */
GWQ_API int MP_Sign_With_TZG(void* ignored, const char* szLink, int iBaudRate, int iTimeout,
                             const char* szFilePath, const char* szLocation, const char* szVoiceContent,
                             const char* szSignPath, int nOperFlag, int nSignLen, char* szSignData);

/**
 * Asks the customer to sign one page by hand.
 *
 * @param iPortNo             ignored; USB is used
 * @param iBaudRate           ignored; USB has none
 * @param iTimeout            1 to 999 seconds
 * @param[in] szFilePath      local document; the first three characters after its last dot are
 *                            `pdf`, `jpg` or `htm`; must not be NULL or empty
 * @param[in] szSignPath      local file for the picture, overwritten; must not be NULL or empty
 * @param[in] szSignDataPath  local file for the stroke data, overwritten; not fetched when the
 *                            picture fails; must not be NULL or empty
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) a path is NULL or empty, the extension is another one, or
 *                           `iTimeout` is out of range; or a local file cannot be opened or read
 * @retval GWQ_NO_ANSWER     (-2) the terminal reports a failure, or its answer is empty
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) a file of the signature was not received whole or could not be
 *                           written; or no answer came in time, or reading failed
 * @retval GWQ_REFUSED       (-14) any answer but success, or a packet of a fetched file failed its
 *                           check; or the terminal refused the file, or its answer has no frame
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int GWQ_StartSign(int iPortNo, int iBaudRate, int iTimeout, const char* szFilePath,
                          const char* szSignPath, const char* szSignDataPath);

GWQ_C_END

#endif
