/* SPDX-License-Identifier: MIT */
/**
 * @file
 * The PIN pad's packets and the checks of short answers.
 *
 * Request frame for a body of n bytes; every byte between the marks travels in split form
 * (`codec/text_forms.h`):
 *
 * @code{.unparsed}
 *     offset  0    1..2     3..4    5..4+2n  5+2n..6+2n        7+2n
 *             STX  n high   n low   body     XOR of the body   ETX
 * @endcode
 *
 * An answer wraps, in the same way, a 16-bit status word (0 is success) and the data after it.
 *
 * @remark Any thread; pure functions.
 */
#ifndef GWQ_CODEC_PACKET_H
#define GWQ_CODEC_PACKET_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Builds a request frame.
 *
 * @param[in] body  `n` bytes
 * @param n         0 to 65535
 * @param[out] out  at least 2 x `n` + 8 bytes
 * @return the length of the frame, 2 x `n` + 8
 * @since 1.0.0
 */
GWQ_API int PackData(const unsigned char* body, int n, unsigned char* out);

/**
 * Checks an answer frame and takes it apart.
 *
 * What comes before the STX is skipped. A declared length beyond what arrived is cut to what
 * arrived. The data are copied also when the status word is not 0.
 *
 * @param[in] buf       `count` bytes, what was received
 * @param count         number of bytes
 * @param[out] data     the data after the status word; must have room for them: never more than
 *                      (`count` - 2) / 2 bytes, and never more than 1020
 * @param[out] dataLen  number of bytes in `data`
 * @retval GWQ_OK         the status word is 0
 * @retval GWQ_BAD_FRAME  (-8) the frame is damaged (no body, odd or below 2 characters or above
 *                        2048, or wrong XOR); outputs are untouched
 * @return any other value: the status word
 * @since 1.0.0
 */
GWQ_API int UnPackData(const unsigned char* buf, int count, unsigned char* data, int* dataLen);

/**
 * Copies what is between the first `start` byte and the next `end` byte.
 *
 * @param start     the mark before the body
 * @param end       the mark after the body
 * @param[in] buf   `count` bytes, what was received
 * @param count     number of bytes
 * @param[out] out  at least `count` bytes
 * @return the length of the body; -1 if there is none or it is empty
 * @since 1.0.0
 */
GWQ_API int GetPacketBody(unsigned char start, unsigned char end, const unsigned char* buf, int count,
                          unsigned char* out);

/**
 * Returns the XOR of bytes.
 *
 * @param[in] data  `count` bytes
 * @param count     number of bytes
 * @return the XOR, 0 to 255
 * @since 1.0.0
 */
GWQ_API int GetDataLRC(const unsigned char* data, int count);

/**
 * Returns the XOR of bytes.
 *
 * The same as GetDataLRC().
 *
 * @param[in] data  `count` bytes
 * @param count     number of bytes
 * @return the XOR, 0 to 255
 * @since 1.0.0
 */
GWQ_API unsigned char getLRC(const unsigned char* data, int count);

/**
 * Writes a 32-bit value big-endian.
 *
 * @param value     the value
 * @param[out] out  4 bytes
 * @return a pointer to the last byte written
 * @since 1.0.0
 */
GWQ_API unsigned char* Endian_intToChar(int value, unsigned char* out);

/**
 * Converts bytes to split form.
 *
 * @param[in] in    `len` bytes; NULL converts nothing
 * @param len       number of bytes; below 1 converts nothing
 * @param[out] out  2 x `len` bytes; NULL converts nothing
 * @since 1.0.0
 */
GWQ_API void PSBC_SplitData(const unsigned char* in, int len, unsigned char* out);

/**
 * Converts split form to bytes; of each character only the low nibble counts.
 *
 * @param[in] in    `len` characters; NULL converts nothing
 * @param len       number of characters; an odd number converts nothing
 * @param[out] out  `len` / 2 bytes; NULL converts nothing
 * @since 1.0.0
 */
GWQ_API void PSBC_MergeData(const unsigned char* in, int len, unsigned char* out);

/**
 * Checks a short framed answer whose second byte is a result mark.
 *
 * @param[in] buf  `count` bytes, what was received; may be NULL
 * @param count    number of bytes
 * @retval GWQ_OK         success
 * @retval GWQ_NO_ANSWER  (-2) `buf` is NULL, the answer is empty, or it has the failure mark 0xAA
 *                        `1`
 * @retval GWQ_REFUSED    (-14) the frame is missing, or the answer has the refusal mark `U`
 * @since 1.0.0
 */
GWQ_API int CheckAndGetResponse(const unsigned char* buf, int count);

/**
 * Takes a PIN-block answer apart: `stx`, split form of a mark and data, `etx`.
 *
 * The mark 0x10 goes with at most 8 data bytes, 0x20 with more.
 *
 * @param stx          the mark before the body
 * @param etx          the mark after the body
 * @param[in] buf      `count` bytes, what was received
 * @param count        number of bytes
 * @param[out] out     the data; at most 1023 bytes
 * @param[out] outLen  number of bytes in `out`
 * @retval GWQ_OK       success
 * @retval GWQ_REFUSED  (-14) no such answer; outputs are untouched
 * @since 1.0.0
 */
GWQ_API int CheckAndGetResponseForTY(unsigned char stx, unsigned char etx, const unsigned char* buf,
                                     int count, unsigned char* out, int* outLen);

/**
 * Checks the form of a serial number: `st_` followed by exactly 8 decimal digits.
 *
 * @param[in] id  text; may be NULL
 * @return 1 when it has this form, else 0
 * @since 1.0.0
 */
GWQ_API int CheckDeviceId(const char* id);

GWQ_C_END

#endif
