/* Settings of the PIN pad: encryption type, PIN length, end rule, fill type, entry mode, key sound, account
 * number, and the terminal's serial number.
 *
 * Common arguments
 *   iPortNo     0 USB, n >= 1 serial port n
 *   szReserved  not read; may be NULL
 *   iBaudRate   bits per second on a serial port
 *
 * Common results, besides those named with each function
 *   0    success
 *   -1   a NULL output, or out of memory; nothing was sent
 *   -14  the pad refused the command, or its answer was damaged
 *   -2, -3, -10, -11, -23  the exchange failed (frame/transaction.h)
 *
 * What a value means is the pad's affair: none is checked here, and of each only the low byte is sent. Outputs
 * are untouched on failure. A zero byte ends the command, so a value of 0 is sent by leaving it out. One
 * thread at a time. Each call is one exchange of a frame (codec/packet.h) whose body is named with it.
 */
#ifndef GWQ_PINPAD_SETTINGS_H
#define GWQ_PINPAD_SETTINGS_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Reads the encryption type. Body 30 33; 2 s.
 *   piEnType  out; untouched if the answer holds no data
 * Returns, in place of -14, the pad's own non-zero status word, or -8 for a damaged answer. */
GWQ_API int PN_GetEnType(int iPortNo, const char* szReserved, int iBaudRate, int* piEnType);

/* Sets the encryption type. Body 30 10 type; 2 s.
 *   iEnType  the type
 * Returns, in place of -14, the pad's own non-zero status word, or -8 for a damaged answer. */
GWQ_API int PN_SetEnType(int iPortNo, const char* szReserved, int iBaudRate, int iEnType);

/* Reads the PIN's length. Body 30 35; 2 s.
 *   piPinLen  out
 * Also -14: the answer holds no data. */
GWQ_API int PN_GetPinLen(int iPortNo, const char* szReserved, int iBaudRate, int* piPinLen);

/* Sets the PIN's length. Body 30 12 length; 2 s.
 *   iPinLen  digits, of which the low four bits count */
GWQ_API int PN_SetPinLen(int iPortNo, const char* szReserved, int iBaudRate, int iPinLen);

/* Sets what ends a PIN entry. Body 30 13 rule; 2 s.
 *   iEndRule  the pad's number of the rule */
GWQ_API int PN_SetEndRule(int iPortNo, const char* szReserved, int iBaudRate, int iEndRule);

/* Sets what a PIN block is filled with. Body 30 11 FF, or 30 11; 2 s.
 *   szFill  in; beginning with "F": fill with 0xFF; anything else, or NULL: with 0 */
GWQ_API int PN_SetFillType(int iPortNo, const char* szReserved, int iBaudRate, const char* szFill);

/* Sets the entry mode. Body 30 32 mode; 2 s.
 *   iPinMode  the pad's number of the mode */
GWQ_API int PN_SetPinMoe(int iPortNo, const char* szReserved, int iBaudRate, int iPinMode);

/* Sets the sound of the keys. Body 30 14 sound; 2 s.
 *   iSoundType  the pad's number of the sound */
GWQ_API int PN_SetSoundType(int iPortNo, const char* szReserved, int iBaudRate, int iSoundType);

/* Sets the account number that PIN blocks are bound to. Body 30 16 length account; 2 s.
 *   pAccount     in; `iAccountLen` bytes; sent up to the first zero byte, and at most 252 of them
 *   iAccountLen  its low byte is sent as the length
 * Also -1: `pAccount` is NULL with a length above 0. */
GWQ_API int PN_SetAccount(int iPortNo, const char* szReserved, int iBaudRate, const unsigned char* pAccount,
                          int iAccountLen);

/* Reads the terminal's serial number, on USB whatever the port. Body 30 18; 3 s.
 *   szDeviceId  out; the number and a terminator; at most 1021 bytes */
GWQ_API int PN_ReadDeviceId(int iPortNo, const char* szReserved, int iBaudRate, char* szDeviceId);

/* Gives the terminal a serial number, on USB whatever the port.
 *   szDeviceId  in; 1 to 20 characters, else -1
 * Sends "\e[0BJPOSTSETSN", STX, the number, ETX; 3 s. Returns 0; -1; -3 not opened; -14 for anything else. */
GWQ_API int PN_WriteDeviceId(int iPortNo, const char* szReserved, int iBaudRate, const char* szDeviceId);

/* Sets encryption type, PIN length, end rule and fill type one after the other, on USB whatever the port.
 *   iAlgoType  as iEnType of PN_SetEnType
 *   iPinLen    as PN_SetPinLen
 *   iPinRule   as iEndRule of PN_SetEndRule
 *   szFill     in; as PN_SetFillType
 * The first that fails ends the call with its result; what was set before stays set. */
GWQ_API int PN_SetPinPadParameter(int iPortNo, const char* szReserved, int iBaudRate, int iAlgoType,
                                  int iPinLen, int iPinRule, const char* szFill);

GWQ_C_END

#endif
