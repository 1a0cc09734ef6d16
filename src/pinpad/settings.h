/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Settings of the PIN pad: encryption type, PIN length, end rule, fill type, entry mode, key sound,
 * account number, and the terminal's serial number.
 *
 * Each call is one exchange of a frame (`codec/packet.h`), whose body is given with it. The pad
 * decides what a value means: no value is checked here, and only its low byte is sent. A zero byte
 * ends the command, so a value of 0 is sent by leaving it out.
 *
 * @remark One thread at a time. Outputs are untouched on failure.
 */
#ifndef GWQ_PINPAD_SETTINGS_H
#define GWQ_PINPAD_SETTINGS_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Reads the encryption type.
 *
 * On the wire: the body 30 33; the host waits 2 s.
 *
 * @param iPortNo         0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param[in] szReserved  ignored; may be NULL
 * @param iBaudRate       bits per second on a serial port
 * @param[out] piEnType   the type; untouched if the answer has no data; must not be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) the output is NULL, or out of memory; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_BAD_FRAME     (-8) the answer is damaged
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @return any other value: the pad's own status word
 * @since 1.0.0
 */
GWQ_API int PN_GetEnType(int iPortNo, const char* szReserved, int iBaudRate, int* piEnType);

/**
 * Sets the encryption type.
 *
 * On the wire: the body 30 10 type; the host waits 2 s.
 *
 * @param iPortNo         0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param[in] szReserved  ignored; may be NULL
 * @param iBaudRate       bits per second on a serial port
 * @param iEnType         the pad's number of the type
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) out of memory; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_BAD_FRAME     (-8) the answer is damaged
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @return any other value: the pad's own status word
 * @since 1.0.0
 */
GWQ_API int PN_SetEnType(int iPortNo, const char* szReserved, int iBaudRate, int iEnType);

/**
 * Reads the length of the PIN.
 *
 * On the wire: the body 30 35; the host waits 2 s.
 *
 * @param iPortNo         0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param[in] szReserved  ignored; may be NULL
 * @param iBaudRate       bits per second on a serial port
 * @param[out] piPinLen   length in digits; must not be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) the output is NULL, or out of memory; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the pad refused, or its answer is damaged or has no data
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int PN_GetPinLen(int iPortNo, const char* szReserved, int iBaudRate, int* piPinLen);

/**
 * Sets the length of the PIN.
 *
 * On the wire: the body 30 12 length; the host waits 2 s.
 *
 * @param iPortNo         0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param[in] szReserved  ignored; may be NULL
 * @param iBaudRate       bits per second on a serial port
 * @param iPinLen         digits, of which the low four bits count
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) out of memory; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the pad refused, or its answer is damaged
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int PN_SetPinLen(int iPortNo, const char* szReserved, int iBaudRate, int iPinLen);

/**
 * Sets what ends a PIN entry.
 *
 * On the wire: the body 30 13 rule; the host waits 2 s.
 *
 * @param iPortNo         0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param[in] szReserved  ignored; may be NULL
 * @param iBaudRate       bits per second on a serial port
 * @param iEndRule        the pad's number of the rule
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) out of memory; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the pad refused, or its answer is damaged
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int PN_SetEndRule(int iPortNo, const char* szReserved, int iBaudRate, int iEndRule);

/**
 * Sets what a PIN block is filled with.
 *
 * On the wire: the body 30 11 FF, or 30 11; the host waits 2 s.
 *
 * @param iPortNo         0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param[in] szReserved  ignored; may be NULL
 * @param iBaudRate       bits per second on a serial port
 * @param[in] szFill      beginning with `F`: fill with 0xFF; anything else, or NULL: with 0
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) out of memory; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the pad refused, or its answer is damaged
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int PN_SetFillType(int iPortNo, const char* szReserved, int iBaudRate, const char* szFill);

/**
 * Sets the entry mode.
 *
 * On the wire: the body 30 32 mode; the host waits 2 s.
 *
 * @param iPortNo         0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param[in] szReserved  ignored; may be NULL
 * @param iBaudRate       bits per second on a serial port
 * @param iPinMode        the pad's number of the mode
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) out of memory; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the pad refused, or its answer is damaged
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int PN_SetPinMoe(int iPortNo, const char* szReserved, int iBaudRate, int iPinMode);

/**
 * Sets the sound of the keys.
 *
 * On the wire: the body 30 14 sound; the host waits 2 s.
 *
 * @param iPortNo         0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param[in] szReserved  ignored; may be NULL
 * @param iBaudRate       bits per second on a serial port
 * @param iSoundType      the pad's number of the sound
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) out of memory; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the pad refused, or its answer is damaged
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int PN_SetSoundType(int iPortNo, const char* szReserved, int iBaudRate, int iSoundType);

/**
 * Sets the account number that PIN blocks are bound to.
 *
 * On the wire: the body 30 16 length account; the host waits 2 s.
 *
 * @param iPortNo         0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param[in] szReserved  ignored; may be NULL
 * @param iBaudRate       bits per second on a serial port
 * @param[in] pAccount    `iAccountLen` bytes; sent up to the first zero byte, and at most 252 of
 *                        them; NULL only with a length of 0 or less
 * @param iAccountLen     its low byte is sent as the length
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `pAccount` is NULL with a length above 0, or out of memory;
 *                           nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the pad refused, or its answer is damaged
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int PN_SetAccount(int iPortNo, const char* szReserved, int iBaudRate, const unsigned char* pAccount,
                          int iAccountLen);

/**
 * Reads the terminal's serial number.
 *
 * On the wire: the body 30 18; the host waits 3 s.
 *
 * @param iPortNo          ignored; USB is used
 * @param[in] szReserved   ignored; may be NULL
 * @param iBaudRate        ignored; USB has none
 * @param[out] szDeviceId  the number and a terminator; at most 1021 bytes; must not be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) the output is NULL, or out of memory; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the pad refused, or its answer is damaged
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int PN_ReadDeviceId(int iPortNo, const char* szReserved, int iBaudRate, char* szDeviceId);

/**
 * Gives the terminal a serial number.
 *
 * On the wire, instead of a frame: ESC `[0BJPOSTSETSN`, STX, the number, ETX; the host waits 3 s.
 *
 * @param iPortNo         ignored; USB is used
 * @param[in] szReserved  ignored; may be NULL
 * @param iBaudRate       ignored; USB has none
 * @param[in] szDeviceId  1 to 20 characters; must not be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `szDeviceId` is NULL, empty or too long; nothing was sent
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_REFUSED       (-14) anything else
 * @since 1.0.0
 */
GWQ_API int PN_WriteDeviceId(int iPortNo, const char* szReserved, int iBaudRate, const char* szDeviceId);

/**
 * Sets encryption type, PIN length, end rule and fill type one after the other.
 *
 * The first that fails ends the call with its result; what was set before stays set.
 *
 * @param iPortNo         ignored; USB is used
 * @param[in] szReserved  ignored; may be NULL
 * @param iBaudRate       ignored; USB has none
 * @param iAlgoType       the pad's number of the encryption type
 * @param iPinLen         digits, of which the low four bits count
 * @param iPinRule        the pad's number of the end rule
 * @param[in] szFill      beginning with `F`: fill with 0xFF; anything else, or NULL: with 0
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) out of memory
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_BAD_FRAME     (-8) the pad's answer to the encryption type is damaged
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_REFUSED       (-14) the pad refused another setting, or its answer is damaged
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @return any other value: the pad's own status word for the encryption type
 * @since 1.0.0
 */
GWQ_API int PN_SetPinPadParameter(int iPortNo, const char* szReserved, int iBaudRate, int iAlgoType,
                                  int iPinLen, int iPinRule, const char* szFill);

GWQ_C_END

#endif
