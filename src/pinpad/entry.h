/* SPDX-License-Identifier: MIT */
/**
 * @file
 * PIN entry: the customer enters a PIN and the host gets its PIN block (ISO 9564, or what the pad
 * is set to), a text encrypted by the terminal, or a number in clear.
 *
 * @remark One thread at a time. CancelRead() from another thread ends the customer's entry.
 *
 * @remark Outputs are untouched on failure unless stated. Settings sent before a failure stay set
 *   in the pad.
 */
#ifndef GWQ_PINPAD_ENTRY_H
#define GWQ_PINPAD_ENTRY_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Prompts the customer for a PIN and returns its PIN block.
 *
 * On the wire: a frame with the body 30 05 seconds. The host waits 2 s longer than the customer
 * has. The pad's own refusal is the first byte of an answer that is not a good one; a refusal in a
 * frame, which begins with 2, is therefore GWQ_NO_ANSWER.
 *
 * @param iPortNo          0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param[in] szReserved   ignored; may be NULL
 * @param iBaudRate        bits per second on a serial port
 * @param iTimeout         seconds; the pad gets the low byte
 * @param[out] piPinLen    length of the block in bytes; must not be NULL
 * @param[out] szPinBlock  the block and a terminator; at most 1021 bytes; must not be NULL
 * @retval GWQ_OK             success
 * @retval GWQ_BAD_ARGUMENT   (-1) an output is NULL, or out of memory; nothing was sent
 * @retval GWQ_NO_ANSWER      (-2) the pad's refusal 2; or nothing was read
 * @retval GWQ_NOT_OPENED     (-3) the link could not be opened
 * @retval GWQ_BAD_FRAME      (-8) the answer begins with a zero byte
 * @retval GWQ_SEND_FAILED    (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED    (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED        (-14) any other refusal
 * @retval GWQ_PIN_REFUSAL_1  (-18) the pad's refusal 1
 * @retval GWQ_PIN_REFUSAL_3  (-22) the pad's refusal 3
 * @retval GWQ_CANCELLED      (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int PN_GetPin(int iPortNo, const char* szReserved, int iBaudRate, int iTimeout, int* piPinLen,
                      char* szPinBlock);

/**
 * Prompts the customer for a PIN with a text on the pad's screen and returns the PIN block.
 *
 * On the wire: a frame with the body 40 30 seconds text. The host waits 2 s longer than the
 * customer has. The pad's own refusal is the first byte of an answer that is not a good one; a
 * refusal in a frame, which begins with 2, is therefore GWQ_NO_ANSWER.
 *
 * @param iPortNo           ignored; USB is used
 * @param[in] szReserved    ignored; may be NULL
 * @param iBaudRate         ignored; USB has none
 * @param[out] pPinBlock    the block and a terminator; at most 1021 bytes; must not be NULL
 * @param[out] pnPinLen     length of the block in bytes; must not be NULL
 * @param nTimeout          seconds; the pad gets the low byte
 * @param[in] szShowString  sent as it is, at most 40956 bytes; may be NULL or empty: no text
 * @retval GWQ_OK             success
 * @retval GWQ_BAD_ARGUMENT   (-1) an output is NULL, or out of memory; nothing was sent
 * @retval GWQ_NO_ANSWER      (-2) the pad's refusal 2; or nothing was read
 * @retval GWQ_NOT_OPENED     (-3) the link could not be opened
 * @retval GWQ_BAD_FRAME      (-8) the answer begins with a zero byte
 * @retval GWQ_SEND_FAILED    (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED    (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED        (-14) any other refusal
 * @retval GWQ_PIN_REFUSAL_1  (-18) the pad's refusal 1
 * @retval GWQ_PIN_REFUSAL_3  (-22) the pad's refusal 3
 * @retval GWQ_CANCELLED      (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int GetPinblockShowString(int iPortNo, const char* szReserved, int iBaudRate,
                                  unsigned char* pPinBlock, int* pnPinLen, int nTimeout,
                                  const char* szShowString);

/**
 * Checks and sets the pad's entry parameters, reads its factor, then prompts the customer for a PIN
 * and returns its PIN block.
 *
 * In order: compare the encryption type, compare the PIN length, set the entry mode, set the sound,
 * set the account (`iPinType` 1), read the factor, PN_GetPin(). With the log on, the account number
 * is logged.
 *
 * @param iPortNo              ignored; USB is used
 * @param[in] szReserved       ignored; may be NULL
 * @param iBaudRate            ignored; USB has none
 * @param iTimeout             seconds; the pad gets the low byte; the host waits 2 s longer
 * @param iAlgoType            the encryption type that the pad must be set to
 * @param nModex               at most 2; the pad gets `nModex` + 1 as its sound
 * @param iPinType             1 bound to an account, 5, or 6
 * @param[in] szAccountNo      digits, used for `iPinType` 1 only. Of more than 12 the 12 before the
 *                             last are used; fewer than 12 reach the pad as an empty account
 * @param[out] szPinPadFactor  the pad's factor and a terminator; at most 1021 bytes; also written
 *                             when a later step fails; must not be NULL
 * @param[out] pPinBlock       the block and a terminator; at most 1021 bytes; must not be NULL
 * @param[in,out] pnPinLen     in: length of the PIN, which must be the pad's: 6 for `iPinType` 6,
 *                             else 4 to 14; out: length of the block in bytes; must not be NULL
 * @retval GWQ_OK             success
 * @retval GWQ_BAD_ARGUMENT   (-1) an argument is out of range or an output NULL, or the pad is set
 *                            to another type or length; or out of memory
 * @retval GWQ_NO_ANSWER      (-2) the pad's refusal 2; or nothing was read
 * @retval GWQ_NOT_OPENED     (-3) the link could not be opened
 * @retval GWQ_BAD_FRAME      (-8) the answer begins with a zero byte
 * @retval GWQ_SEND_FAILED    (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED    (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED        (-14) a setting or the factor failed for any reason; or any other
 *                            refusal of the PIN
 * @retval GWQ_PIN_REFUSAL_1  (-18) the pad's refusal 1
 * @retval GWQ_BAD_ACCOUNT    (-21) `szAccountNo` is NULL or contains anything but digits
 * @retval GWQ_PIN_REFUSAL_3  (-22) the pad's refusal 3
 * @retval GWQ_CANCELLED      (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int PN_GetPinBlock(int iPortNo, const char* szReserved, int iBaudRate, int iTimeout, int iAlgoType,
                           int nModex, int iPinType, const char* szAccountNo, char* szPinPadFactor,
                           void* pPinBlock, int* pnPinLen);

/**
 * Does what PN_GetPinBlock() does, with a text on the pad's screen while the customer enters the
 * PIN.
 *
 * `nModex` is checked only after the entry mode is set. What an earlier screen left on the link is
 * not discarded first. With the log on, the account number and the text are logged.
 *
 * @param iPortNo              ignored; USB is used
 * @param[in] szReserved       ignored; may be NULL
 * @param iBaudRate            ignored; USB has none
 * @param nTimeout             seconds; the pad gets the low byte; the host waits 2 s longer
 * @param iAlgoType            the encryption type that the pad must be set to
 * @param nModex               at most 2; the pad gets `nModex` + 1 as its sound
 * @param iPinType             1 bound to an account, 5, or 6
 * @param[in] szAccountNo      digits, used for `iPinType` 1 only. Of more than 12 the 12 before the
 *                             last are used; fewer than 12 reach the pad as an empty account
 * @param[out] szPinPadFactor  the pad's factor and a terminator; at most 1021 bytes; also written
 *                             when a later step fails; must not be NULL
 * @param[out] pPinBlock       the block and a terminator; at most 1021 bytes; must not be NULL
 * @param[in,out] pnPinLen     in: length of the PIN, which must be the pad's: 6 for `iPinType` 6,
 *                             else 4 to 14; out: length of the block in bytes; must not be NULL
 * @param[in] szShowString     sent as it is, at most 40956 bytes; may be NULL or empty: no text
 * @retval GWQ_OK             success
 * @retval GWQ_BAD_ARGUMENT   (-1) an argument is out of range or an output NULL, the pad is set to
 *                            another type or length, or the entry mode failed; or out of memory
 * @retval GWQ_NO_ANSWER      (-2) the pad's refusal 2; or nothing was read
 * @retval GWQ_NOT_OPENED     (-3) the link could not be opened
 * @retval GWQ_BAD_FRAME      (-8) the answer begins with a zero byte
 * @retval GWQ_SEND_FAILED    (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED    (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED        (-14) the terminal cannot be opened; a setting other than the entry
 *                            mode, or the factor, failed for any reason; or any other refusal of
 *                            the PIN
 * @retval GWQ_PIN_REFUSAL_1  (-18) the pad's refusal 1
 * @retval GWQ_BAD_ACCOUNT    (-21) `szAccountNo` is NULL or contains anything but digits
 * @retval GWQ_PIN_REFUSAL_3  (-22) the pad's refusal 3
 * @retval GWQ_CANCELLED      (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int PN_GetPinBlockShowString(int iPortNo, const char* szReserved, int iBaudRate, int nTimeout,
                                     int iAlgoType, int nModex, int iPinType, const char* szAccountNo,
                                     char* szPinPadFactor, void* pPinBlock, int* pnPinLen,
                                     const char* szShowString);

/**
 * Makes the terminal encrypt bytes and fetches the result, a file, by way of `/tmp/enctemp.data` on
 * the host.
 *
 * With the log on, the bytes are logged. Call GWQ_SetOutputRoom() of `extra.h` first; without it
 * the terminal decides how much is written to `pFileData`.
 *
 * @param iPortNo            ignored; USB is used
 * @param[in] szReserved     ignored; may be NULL
 * @param iBaudRate          ignored; USB has none
 * @param nTimeout           seconds; the host waits 3 s longer
 * @param iAlgoType          passed to the terminal
 * @param[in] szInfo         the bytes, as many as `pnLen` says; at most 20480 are sent; must not be
 *                           NULL
 * @param[in,out] pFileData  cleared up to the terminator of the text in it, so pass it terminated;
 *                           then the whole file and a terminator; must not be NULL
 * @param[in,out] pnLen      in: bytes in `szInfo`; out: size of the file, written before the file
 *                           is read; must not be NULL
 * @param[out] szEncData     the terminal's answer text and a terminator; at most 4096 bytes; must
 *                           not be NULL
 * @retval GWQ_OK                 success
 * @retval GWQ_BAD_ARGUMENT       (-1) a pointer is NULL; nothing was sent
 * @retval GWQ_NOT_OPENED         (-3) the link could not be opened
 * @retval GWQ_REFUSED            (-14) any exchange failed, or the file could not be fetched
 * @retval GWQ_TOO_SMALL          (-24) the file is longer than the room set with
 *                                GWQ_SetOutputRoom(), or out of memory; `pFileData` and `pnLen` are
 *                                untouched
 * @retval GWQ_NO_ENCRYPTION_KEY  (-406) the terminal has no encryption key
 * @since 1.0.0
 */
GWQ_API int PN_GetStringBlock(int iPortNo, const char* szReserved, int iBaudRate, int nTimeout, int iAlgoType,
                              const char* szInfo, char* pFileData, int* pnLen, char* szEncData);

/**
 * Prompts the customer for a number.
 *
 * @param iPortNo         ignored; USB is used
 * @param[in] szReserved  ignored; may be NULL
 * @param iBaudRate       ignored; USB has none
 * @param iTimeout        1 to 999 seconds; the host waits 2 s longer
 * @param iInParam1       0 to 20, passed to the terminal
 * @param iInParam2       0 to 2, passed to the terminal
 * @param[in] szPrompt    UTF-8; must not be NULL or empty; sent as GBK in split form; a prompt of
 *                        more than 512 bytes of GBK is sent empty
 * @param[out] szResult   the answer without its first and last byte, and a terminator; at most 1024
 *                        bytes; must not be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an argument is out of range or NULL, or the prompt is not UTF-8;
 *                           no prompt was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @retval GWQ_TOO_SMALL     (-24) out of memory
 * @since 1.0.0
 */
GWQ_API int PN_GetInNo(int iPortNo, const char* szReserved, int iBaudRate, int iTimeout, int iInParam1,
                       int iInParam2, const char* szPrompt, char* szResult);

GWQ_C_END

#endif
