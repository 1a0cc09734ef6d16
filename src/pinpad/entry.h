/* PIN entry: the customer keys a PIN and the host gets its PIN block (ISO 9564 or what the pad is set to), a
 * text enciphered by the terminal, or a number in clear.
 *
 * Common arguments
 *   iPortNo     USB is used whatever the port, but for PN_GetPin: 0 USB, n >= 1 serial port n
 *   szReserved  not read; may be NULL
 *   iBaudRate   bits per second on a serial port
 *
 * Common results, besides those named with each function
 *   0    success
 *   -1   an argument is out of range or an output NULL, or out of memory; nothing was sent
 *   -2, -3, -10, -11, -23  the exchange failed (frame/transaction.h)
 *
 * Outputs are untouched on failure unless stated. Settings sent before a failure stay set in the pad. One
 * thread at a time; CancelRead from another thread ends the customer's entry.
 */
#ifndef GWQ_PINPAD_ENTRY_H
#define GWQ_PINPAD_ENTRY_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Lets the customer key a PIN and returns its PIN block. Frame with body 30 05 seconds.
 *   iTimeout    seconds, of which the pad gets the low byte; waits 2 s longer
 *   piPinLen    out; the block's length in bytes
 *   szPinBlock  out; the block and a terminator; at most 1021 bytes
 * Also -18, -2, -22: the pad's own refusals 1, 2, 3 (the first byte of an answer that is not a good one; so
 * -2 for any refusal that comes in a frame); -14 any other; -8 for an answer that begins with a zero byte. */
GWQ_API int PN_GetPin(int iPortNo, const char* szReserved, int iBaudRate, int iTimeout, int* piPinLen,
                      char* szPinBlock);

/* As PN_GetPin, with a text on the pad's screen. Body 40 30 seconds text.
 *   nTimeout             seconds, as PN_GetPin
 *   pPinBlock, pnPinLen  out; as szPinBlock, piPinLen
 *   szShowString         in; sent as it is, at most 40956 bytes; NULL or empty: none */
GWQ_API int GetPinblockShowString(int iPortNo, const char* szReserved, int iBaudRate,
                                  unsigned char* pPinBlock, int* pnPinLen, int nTimeout,
                                  const char* szShowString);

/* Checks and sets the pad's entry parameters, reads its factor, then lets the customer key a PIN. In order:
 * encryption type, PIN length, entry mode, sound, account (type 1), factor, PN_GetPin.
 *   iTimeout        seconds, as PN_GetPin
 *   iAlgoType       the encryption type that the pad must be set to
 *   nModex          at most 2; the pad gets nModex + 1 as its sound
 *   iPinType        1 bound to an account, 5, or 6
 *   szAccountNo     in; digits, for type 1 only. Of more than 12 the 12 before the last are used; fewer than
 *                   12 reach the pad as an empty account
 *   szPinPadFactor  out; the pad's factor and a terminator; at most 1021 bytes; also written when a later
 *                   step fails
 *   pPinBlock       out; as PN_GetPin
 *   pnPinLen        in: the PIN's length, which must be the pad's: 6 for type 6, else 4 to 14; out: the
 *                   block's length in bytes
 * Also -1 if the pad is set to another type or length; -14 if a setting or the factor failed for any reason; -21 if
 * the account is NULL or holds anything but digits; and PN_GetPin's results. The account goes to the log when it is
 * on. */
GWQ_API int PN_GetPinBlock(int iPortNo, const char* szReserved, int iBaudRate, int iTimeout, int iAlgoType,
                           int nModex, int iPinType, const char* szAccountNo, char* szPinPadFactor,
                           void* pPinBlock, int* pnPinLen);

/* As PN_GetPinBlock, with a text on the pad's screen while the PIN is keyed.
 *   nTimeout      seconds, as PN_GetPin
 *   szShowString  in; as GetPinblockShowString
 * `nModex` is looked at only after the entry mode is set; an entry mode that fails gives -1 here, and a terminal that
 * cannot be opened -14, for USB is not drained first. The text goes to the log as well. */
GWQ_API int PN_GetPinBlockShowString(int iPortNo, const char* szReserved, int iBaudRate, int nTimeout,
                                     int iAlgoType, int nModex, int iPinType, const char* szAccountNo,
                                     char* szPinPadFactor, void* pPinBlock, int* pnPinLen,
                                     const char* szShowString);

/* Has the terminal encipher bytes and fetches the result, a file, by way of "/tmp/enctemp.data" on the host.
 *   nTimeout   seconds; waits 3 s longer
 *   iAlgoType  passed to the terminal
 *   szInfo     in; bytes, as many as `pnLen` says; at most 20480 are sent
 *   pFileData  in/out; call GWQ_SetOutputRoom (extra.h) before, or what the terminal sends decides how much is written:
 *              cleared as far as the text that it holds, then the whole file and a terminator
 *   pnLen      in: bytes in `szInfo`; out: the file's size, written before the file is read
 *   szEncData  out; the terminal's answer text and a terminator; at most 4096 bytes
 * Also -14 if any exchange but the opening failed, or the file could not be fetched; -24, with `pFileData` and `pnLen`
 * untouched, if the file is longer than the room told, or out of memory; -406 if the terminal holds no
 * encryption key. The bytes go to the log when it is on. */
GWQ_API int PN_GetStringBlock(int iPortNo, const char* szReserved, int iBaudRate, int nTimeout, int iAlgoType,
                              const char* szInfo, char* pFileData, int* pnLen, char* szEncData);

/* Asks the customer for a number.
 *   iTimeout            1 to 999 seconds; waits 2 s longer
 *   iInParam1, iInParam2  0 to 20 and 0 to 2, passed to the terminal
 *   szPrompt            in; UTF-8, not empty; sent as GBK in split form; a prompt of more than 512 bytes of
 *                       GBK is sent empty
 *   szResult            out; the answer without its first and last byte, and a terminator; at most 1024 bytes
 * Also -1 if the prompt is not UTF-8; -24 out of memory. */
GWQ_API int PN_GetInNo(int iPortNo, const char* szReserved, int iBaudRate, int iTimeout, int iInParam1,
                       int iInParam2, const char* szPrompt, char* szResult);

GWQ_C_END

#endif
