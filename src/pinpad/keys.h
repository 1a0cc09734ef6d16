/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Keys of the PIN pad: its factor and public key, digests, and working keys prepared by the host.
 *
 * Frames are those of `codec/packet.h`. A body other than a factor's ends at its first zero byte,
 * which applies to key bytes too: the host prepares keys that have none.
 *
 * @remark One thread at a time.
 *
 * @remark Outputs are untouched on failure. Their sizes are not passed: each function says the most
 *   it writes.
 */
#ifndef GWQ_PINPAD_KEYS_H
#define GWQ_PINPAD_KEYS_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Reads the pad's factor.
 *
 * On the wire: a frame with the body 30 19; the host waits 2 s.
 *
 * @param iPortNo              0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param[in] szReserved       ignored; may be NULL
 * @param iBaudRate            bits per second on a serial port
 * @param[out] szPinPadFactor  the factor and a terminator; at most 1021 bytes; must not be NULL
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
GWQ_API int PN_GetPinPadFactor(int iPortNo, const char* szReserved, int iBaudRate, char* szPinPadFactor);

/**
 * Makes the pad create a new factor and reads it.
 *
 * On the wire: frames with the bodies 30 03 and then 30 19 for type 1, else 30 3A alone; the host
 * waits 2 s for each.
 *
 * @param iPortNo              0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param[in] szReserved       ignored; may be NULL
 * @param iBaudRate            bits per second on a serial port
 * @param iFactorType          1, or anything else
 * @param[out] szPinPadFactor  the factor and a terminator; at most 1021 bytes; must not be NULL
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
GWQ_API int PN_CreateAndGetPinPadFactor(int iPortNo, const char* szReserved, int iBaudRate, int iFactorType,
                                        char* szPinPadFactor);

/**
 * Makes the pad create a new factor for a type of working key and reads it.
 *
 * It is PN_CreateAndGetPinPadFactor() on USB, with the type as a text.
 *
 * @param iPortNo              ignored; USB is used
 * @param[in] szReserved       ignored; may be NULL
 * @param iBaudRate            ignored; USB has none
 * @param[in] szWKType         beginning with `2`: type 2; anything else, or NULL: type 1
 * @param[out] szPinPadFactor  the factor and a terminator; at most 1021 bytes; must not be NULL
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
GWQ_API int PN_ObtainFactor(int iPortNo, const char* szReserved, int iBaudRate, const char* szWKType,
                            char* szPinPadFactor);

/**
 * Reads the pad's public key.
 *
 * On the wire: a frame with the body 30 02 algorithm length; the host waits 6 s.
 *
 * @param iPortNo           ignored; USB is used
 * @param[in] szReserved    ignored; may be NULL
 * @param iBaudRate         ignored; USB has none
 * @param iAlgoType         1 or 2
 * @param iKeyLen           length of the key in bits
 * @param[out] szPublicKey  upper-case hexadecimal text and a terminator; at most 2041 bytes; for
 *                          algorithm 1 without the pad's last three bytes (the exponent); must not
 *                          be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `iAlgoType` is out of range, the output is NULL, or out of memory;
 *                           nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_BAD_FRAME     (-8) the answer is damaged
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @return any other value: the pad's own status word
 * @since 1.0.0
 */
GWQ_API int PN_ObtainPublicKey(int iPortNo, const char* szReserved, int iBaudRate, int iAlgoType, int iKeyLen,
                               char* szPublicKey);

/**
 * Has the pad compute a digest.
 *
 * On the wire: a frame with the body 30 15 algorithm length data; the host waits 3 s.
 *
 * @param iPortNo         ignored; USB is used
 * @param[in] szReserved  ignored; may be NULL
 * @param iBaudRate       ignored; USB has none
 * @param iHashAlgo       the pad's number of the algorithm; the low byte is sent
 * @param[in] szData      text of at most 65530 bytes; the low byte of its length is sent before it;
 *                        must not be NULL
 * @param[out] pDigest    the bytes of the digest and a terminator; at most 1021 bytes; must not be
 *                        NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) a pointer is NULL, the text is too long, or out of memory; nothing
 *                           was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_BAD_FRAME     (-8) the answer is damaged
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @return any other value: the pad's own status word
 * @since 1.0.0
 */
GWQ_API int PN_ObtainDigest(int iPortNo, const char* szReserved, int iBaudRate, int iHashAlgo,
                            const char* szData, char* pDigest);

/**
 * Loads a working key.
 *
 * On the wire: a frame with the body 30 04 (type 1) or 30 39 (type 2), then length, key, factor and
 * verify key; the host waits 4 s. The length of the key in bytes is sent as one byte, 256 as 1. A
 * key of 234 bytes is an SM2 record, of which C1, m bytes of C2, and C3 are sent with the length
 * 0x70:
 *
 * @code{.unparsed}
 *     offset  0          2     66     202
 *             m, 16-bit  C1    C2     C3
 *             little     64    136    32 bytes
 *             endian
 * @endcode
 *
 * Key bytes, factor and verify key are at most 65531 bytes together. With the log on, all three
 * texts are logged.
 *
 * @param iPortNo             ignored; USB is used
 * @param[in] szReserved      ignored; may be NULL
 * @param iBaudRate           ignored; USB has none
 * @param[in] szPinPadFactor  the factor that the key was prepared for; NULL means empty
 * @param[in] szWKType        beginning with `2`: type 2; anything else, or NULL: type 1
 * @param[in] encWKData       the encrypted key as hexadecimal text; must not be NULL
 * @param[in] szVerifyKey     text; must not be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `encWKData` or `szVerifyKey` is NULL, the texts are too long, or
 *                           out of memory, and nothing was sent; or the pad's result 1
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_BAD_FRAME     (-8) the pad's results 2 and 3, or the answer is damaged
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @return 3 if the pad confirmed without a result; any other value: the pad's own result or status
 *         word
 * @since 1.0.0
 */
GWQ_API int PN_DownloadPinPadWK(int iPortNo, const char* szReserved, int iBaudRate,
                                const char* szPinPadFactor, const char* szWKType, const char* encWKData,
                                const char* szVerifyKey);

GWQ_C_END

#endif
