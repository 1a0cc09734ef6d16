/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Counter PIN-pad commands: PIN length, master and working keys, PIN entry in clear, as a DES and
 * as an ANSI PIN block; the terminal's build date.
 *
 * @remark One thread at a time. CancelRead() from another thread ends a PIN entry.
 *
 * @remark Outputs are untouched on failure unless stated.
 */
#ifndef GWQ_PINPAD_COUNTER_H
#define GWQ_PINPAD_COUNTER_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Sets the length of the PIN. The terminal sends no answer.
 *
 * @param iPortNo    0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param iBaudRate  bits per second on a serial port
 * @param iPinLen    1 to 14 digits
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `iPinLen` is out of range; nothing was sent
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole
 * @since 1.0.0
 */
GWQ_API int GWQ_SetPinLen(int iPortNo, int iBaudRate, int iPinLen);

/**
 * Replaces a master key.
 *
 * A key ends before its first zero byte. A record of more than 512 bytes is sent empty. With the
 * log on, both keys are logged in clear.
 *
 * @param iPortNo      0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param iBaudRate    bits per second on a serial port
 * @param MKeyIndex    index of the master key, 0 to 15
 * @param[in] NewMKey  hexadecimal text; must not be NULL
 * @param[in] OldMKey  hexadecimal text; must not be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) the index is out of range or a key is NULL; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the terminal's answer was not the expected one
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int GWQ_UpdateMKey(int iPortNo, int iBaudRate, int MKeyIndex, const char* NewMKey,
                           const char* OldMKey);

/**
 * Resets all keys to their defaults.
 *
 * @param iPortNo    0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param iBaudRate  bits per second on a serial port
 * @retval GWQ_OK           success
 * @retval GWQ_NO_ANSWER    (-2) nothing was read
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED  (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED      (-14) the terminal's answer was not the expected one
 * @retval GWQ_CANCELLED    (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int GWQ_ResetKey(int iPortNo, int iBaudRate);

/**
 * Loads a working key, encrypted under a master key.
 *
 * The key ends before its first zero byte. A record of more than 512 bytes is sent empty.
 *
 * @param iPortNo    0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param iBaudRate  bits per second on a serial port
 * @param MKeyIndex  index of the master key, 0 to 15
 * @param WKeyIndex  index of the working key, 0 to 15
 * @param[in] WKey   hexadecimal text; must not be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an index is out of range or the key is NULL; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the terminal's answer was not the expected one
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int GWQ_DownLoadWKey(int iPortNo, int iBaudRate, int MKeyIndex, int WKeyIndex, const char* WKey);

/**
 * Selects the working key that PIN blocks are made with.
 *
 * @param iPortNo    0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param iBaudRate  bits per second on a serial port
 * @param MKeyIndex  index of the master key, 0 to 15
 * @param WKeyIndex  index of the working key, 0 to 15
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an index is out of range; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the terminal's answer was not the expected one
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int GWQ_ActiveWKey(int iPortNo, int iBaudRate, int MKeyIndex, int WKeyIndex);

/**
 * Prompts the customer for a PIN and returns it in clear.
 *
 * The terminal leaves PIN entry on success and on failure. With the log on, the PIN is logged in
 * clear.
 *
 * @param iPortNo     0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param iBaudRate   bits per second on a serial port
 * @param iMode       0 or 1, the terminal's entry mode
 * @param iTimeout    1 to 999 seconds
 * @param[out] pPin   the digits, without a terminator; `iPinBufLen` bytes; must not be NULL
 * @param iPinBufLen  size of `pPin`, 0 to 2048
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an argument is out of range or NULL; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @retval GWQ_TOO_SMALL     (-24) the PIN is longer than `iPinBufLen`
 * @since 1.0.0
 */
GWQ_API int GWQ_ReadPin(int iPortNo, int iBaudRate, int iMode, int iTimeout, char* pPin, int iPinBufLen);

/**
 * Prompts the customer for a PIN and returns its DES PIN block.
 *
 * The terminal leaves PIN entry on success and on failure.
 *
 * @param iPortNo         0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param iBaudRate       bits per second on a serial port
 * @param iCmdDigit1      0 or 1, passed to the terminal
 * @param iCmdDigit2      0 to 3, passed to the terminal
 * @param iTimeout        1 to 999 seconds
 * @param[out] pPinBlock  upper-case hexadecimal text, without a terminator: pass 1025 zeroed bytes;
 *                        must not be NULL; contains 1024 characters `0` after GWQ_REFUSED
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an argument is out of range or NULL; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the terminal's answer was not the expected one
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int GWQ_ReadPinDES(int iPortNo, int iBaudRate, int iCmdDigit1, int iCmdDigit2, int iTimeout,
                           char* pPinBlock);

/**
 * Prompts the customer for a PIN and returns its ANSI PIN block, bound to an account number.
 *
 * The terminal leaves PIN entry on success and on failure.
 *
 * @param iPortNo         0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param iBaudRate       bits per second on a serial port
 * @param iCmdDigit1      0 or 1, passed to the terminal
 * @param iCmdDigit2      0 to 3, passed to the terminal
 * @param iTimeout        1 to 999 seconds
 * @param[in] szAccount   sent as it is; empty means `000000`; cut where the command of 1023 bytes
 *                        ends; must not be NULL
 * @param[out] pPinBlock  upper-case hexadecimal text, without a terminator: pass 1025 zeroed bytes;
 *                        must not be NULL; contains 1024 characters `0` after GWQ_REFUSED
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an argument is out of range or NULL; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the terminal's answer was not the expected one
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int GWQ_ReadPinAnsi(int iPortNo, int iBaudRate, int iCmdDigit1, int iCmdDigit2, int iTimeout,
                            const char* szAccount, char* pPinBlock);

/**
 * Reads the build date of the terminal's firmware.
 *
 * @param iPort        ignored; USB is used
 * @param cReserved    ignored
 * @param iBaudRate    ignored; USB has none
 * @param[out] szDate  at most 8 characters such as `20231114`, without a terminator: pass 9 zeroed
 *                     bytes; must not be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `szDate` is NULL; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the terminal does not know the command
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int GWQ_GetVerBuildDate(int iPort, char cReserved, int iBaudRate, char* szDate);

/**
 * Tells whether the terminal takes UTF-8 text: whether its build date, read on USB, is after
 * 2023-11-13.
 *
 * @return 1 if it does; 0 if not, or if the date is unknown
 * @since 1.0.0
 */
GWQ_API int CheckUtf8version(void);

GWQ_C_END

#endif
