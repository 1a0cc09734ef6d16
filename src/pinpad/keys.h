/* Keys of the PIN pad: its factor and public key, digests, and working keys prepared by the host.
 *
 * Common arguments
 *   iPortNo     0 USB, n >= 1 serial port n; functions said to use USB do so whatever the port
 *   szReserved  not read; may be NULL
 *   iBaudRate   bits per second on a serial port
 *
 * Common results, besides those named with each function
 *   0    success
 *   -1   an argument is out of range or a pointer NULL, or out of memory; nothing was sent
 *   -2, -3, -10, -11, -23  the exchange failed (frame/transaction.h)
 *
 * Outputs are untouched on failure; their sizes are not known here, so each function says the most it
 * writes. Bodies other than the factors' end at their first zero byte, which holds for key bytes too: the
 * host prepares keys that have none. One thread at a time. Frames as in codec/packet.h.
 */
#ifndef GWQ_PINPAD_KEYS_H
#define GWQ_PINPAD_KEYS_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Reads the pad's factor. Body 30 19; 2 s.
 *   szPinPadFactor  out; the factor and a terminator; at most 1021 bytes
 * Also -14: the pad refused, or a damaged answer. */
GWQ_API int PN_GetPinPadFactor(int iPortNo, const char* szReserved, int iBaudRate, char* szPinPadFactor);

/* Has the pad make a new factor and reads it. Body 30 03 and then 30 19 for type 1, else 30 3A alone; 2 s each.
 *   iFactorType     1, or anything else
 *   szPinPadFactor  out; as PN_GetPinPadFactor
 * Also -14 as PN_GetPinPadFactor. */
GWQ_API int PN_CreateAndGetPinPadFactor(int iPortNo, const char* szReserved, int iBaudRate, int iFactorType,
                                        char* szPinPadFactor);

/* PN_CreateAndGetPinPadFactor on USB, with the working-key type as a text.
 *   szWKType  in; beginning with "2": type 2; anything else, or NULL: type 1 */
GWQ_API int PN_ObtainFactor(int iPortNo, const char* szReserved, int iBaudRate, const char* szWKType,
                            char* szPinPadFactor);

/* Reads the pad's public key, on USB. Body 30 02 algorithm length; 6 s.
 *   iAlgoType    1 or 2
 *   iKeyLen      bits
 *   szPublicKey  out; upper-case hexadecimal text and a terminator; at most 2041 bytes. For algorithm 1 the
 *                pad's last three bytes (the exponent) are left out.
 * Also the pad's own non-zero status word, or -8 for a damaged answer. */
GWQ_API int PN_ObtainPublicKey(int iPortNo, const char* szReserved, int iBaudRate, int iAlgoType, int iKeyLen,
                               char* szPublicKey);

/* Has the pad compute a digest, on USB. Body 30 15 algorithm length data; 3 s.
 *   iHashAlgo  the pad's number of the algorithm, of which the low byte is sent
 *   szData     in; text, at most 65530 bytes; the low byte of its length is sent before it
 *   pDigest    out; the digest's bytes and a terminator; at most 1021 bytes
 * Also as PN_ObtainPublicKey. */
GWQ_API int PN_ObtainDigest(int iPortNo, const char* szReserved, int iBaudRate, int iHashAlgo,
                            const char* szData, char* pDigest);

/* Loads a working key, on USB. Body 30 04 (type 1) or 30 39 (type 2), length, key, factor, verify key; 4 s.
 *   szPinPadFactor  in; the factor that the key was prepared for; NULL means empty
 *   szWKType        in; as PN_ObtainFactor
 *   encWKData       in; the enciphered key as hexadecimal text. Its length in bytes is sent as one byte, 256 as
 *                   1. 234 bytes are an SM2 record, of which C1, m bytes of C2, and C3 are sent with length 0x70:
 *                       offset  0          2     66     202
 *                               m, 16-bit  C1    C2     C3
 *                               little     64    136    32 bytes
 *                               endian
 *   szVerifyKey     in; text
 * Key bytes, factor and verify key are at most 65531 bytes together. When the log is on it receives all three texts.
 * Also -1 for the pad's result 1; -8 for its results 2 and 3 and for a damaged answer; 3 if the pad confirmed
 * without a result; otherwise the pad's own result or status word. */
GWQ_API int PN_DownloadPinPadWK(int iPortNo, const char* szReserved, int iBaudRate,
                                const char* szPinPadFactor, const char* szWKType, const char* encWKData,
                                const char* szVerifyKey);

GWQ_C_END

#endif
