/* Counter PIN-pad commands: PIN length, master and working keys, PIN entry in clear, as a DES and as an
 * ANSI PIN block; the terminal's build date.
 *
 * Common arguments
 *   iPortNo    0 USB, n >= 1 serial port n
 *   iBaudRate  bits per second on a serial port
 *
 * Common results, besides those named with each function
 *   0    success
 *   -1   an argument is out of range; nothing was sent
 *   -14  the terminal's answer was not the expected one
 *   -2, -3, -10, -11, -23  the exchange failed (frame/transaction.h)
 *
 * Outputs are untouched on failure unless stated. One thread at a time; CancelRead from another thread ends
 * a PIN entry.
 */
#ifndef GWQ_PINPAD_COUNTER_H
#define GWQ_PINPAD_COUNTER_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Sets the PIN's length; no answer is awaited.
 *   iPinLen  1 to 14 digits */
GWQ_API int GWQ_SetPinLen(int iPortNo, int iBaudRate, int iPinLen);

/* Replaces a master key.
 *   MKeyIndex         0 to 15
 *   NewMKey, OldMKey  in; hexadecimal text; a key ends before its first zero byte. A record of more than 512
 *                     bytes is sent empty. Both keys go to the log in clear when it is on. */
GWQ_API int GWQ_UpdateMKey(int iPortNo, int iBaudRate, int MKeyIndex, const char* NewMKey,
                           const char* OldMKey);

/* Sets all keys back to their defaults. */
GWQ_API int GWQ_ResetKey(int iPortNo, int iBaudRate);

/* Loads a working key, enciphered under a master key.
 *   MKeyIndex, WKeyIndex  0 to 15
 *   WKey                  in; hexadecimal text; as the keys of GWQ_UpdateMKey */
GWQ_API int GWQ_DownLoadWKey(int iPortNo, int iBaudRate, int MKeyIndex, int WKeyIndex, const char* WKey);

/* Makes a working key the one that PIN blocks are made with.
 *   MKeyIndex, WKeyIndex  0 to 15 */
GWQ_API int GWQ_ActiveWKey(int iPortNo, int iBaudRate, int MKeyIndex, int WKeyIndex);

/* Lets the customer key a PIN and returns it in clear.
 *   iMode       0 or 1, the terminal's entry mode
 *   iTimeout    1 to 999 seconds
 *   pPin        out; the digits, no terminator; `iPinBufLen` bytes
 *   iPinBufLen  0 to 2048
 * Also -24: the PIN is longer than the buffer. The terminal leaves PIN entry whatever the outcome. */
GWQ_API int GWQ_ReadPin(int iPortNo, int iBaudRate, int iMode, int iTimeout, char* pPin, int iPinBufLen);

/* Lets the customer key a PIN and returns its DES PIN block.
 *   iCmdDigit1  0 or 1, passed to the terminal
 *   iCmdDigit2  0 to 3, passed to the terminal
 *   iTimeout    1 to 999 seconds
 *   pPinBlock   out; upper-case hexadecimal text, no terminator: pass 1025 zeroed bytes. After an
 *               answer that is not the expected one (-14) it holds 1024 characters "0" */
GWQ_API int GWQ_ReadPinDES(int iPortNo, int iBaudRate, int iCmdDigit1, int iCmdDigit2, int iTimeout,
                           char* pPinBlock);

/* As GWQ_ReadPinDES, for a PIN block bound to an account number.
 *   szAccount  in; sent as it is; empty means "000000"; cut where the 1023-byte command ends */
GWQ_API int GWQ_ReadPinAnsi(int iPortNo, int iBaudRate, int iCmdDigit1, int iCmdDigit2, int iTimeout,
                            const char* szAccount, char* pPinBlock);

/* Reads the terminal's firmware build date, on USB whatever the port.
 *   iPort, cReserved  ignored
 *   szDate            out; at most 8 characters such as "20231114", no terminator: pass 9 zeroed bytes
 * Also -14 if the terminal does not know the command. */
GWQ_API int GWQ_GetVerBuildDate(int iPort, char cReserved, int iBaudRate, char* szDate);

/* Returns 1 if the terminal's build date is after 2023-11-13, so that it takes UTF-8 text; 0 if not, or unknown. */
GWQ_API int CheckUtf8version(void);

GWQ_C_END

#endif
