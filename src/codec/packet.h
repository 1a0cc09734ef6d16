/* The PIN pad's packets and the checks of short answers.
 *
 * Request frame for a body of n bytes; every byte between the marks travels in split form:
 *
 *     offset  0    1..2     3..4    5..4+2n  5+2n..6+2n        7+2n
 *             STX  n high   n low   body     XOR of the body   ETX
 *
 * An answer wraps, in the same way, a 16-bit status word (0 is success) and the data behind it.
 *
 * Common arguments
 *   in, data  in; `len` or `count` bytes
 *   buf       in; `count` bytes, what was received
 *   len       bytes in `in`
 *   count     bytes in `buf` or `data`
 *
 * Pure functions, callable from any thread.
 */
#ifndef GWQ_CODEC_PACKET_H
#define GWQ_CODEC_PACKET_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Builds a request frame.
 *   body  in; `n` bytes
 *   n     0 to 65535
 *   out   out; at least 2n + 8 bytes
 * Returns the frame's length, 2n + 8. */
GWQ_API int PackData(const unsigned char* body, int n, unsigned char* out);

/* Checks an answer frame and takes it apart. Anything before the STX is skipped.
 *   buf, count  in; what was received
 *   data        out; the data behind the status word; must have room for them (never more than
 *               (count - 2) / 2 bytes, and never more than 1020)
 *   dataLen     out; count of data bytes
 * Returns the status word (also when it is not 0: data are copied all the same), or -8 for a damaged
 * frame (no body, odd or below 2 characters or above 2048, or wrong XOR), with outputs untouched.
 * A declared length beyond what arrived is cut to what arrived. */
GWQ_API int UnPackData(const unsigned char* buf, int count, unsigned char* data, int* dataLen);

/* Copies what stands between the first `start` byte and the next `end` byte.
 *   start, end  the marks
 *   out         out; at least `count` bytes
 * Returns its length, or -1 if there is no such body or it is empty. */
GWQ_API int GetPacketBody(unsigned char start, unsigned char end, const unsigned char* buf, int count,
                          unsigned char* out);

/* Folds bytes to one.
 * Returns the XOR of `count` bytes, 0 to 255. */
GWQ_API int GetDataLRC(const unsigned char* data, int count);
GWQ_API unsigned char getLRC(const unsigned char* data, int count);

/* Writes a 32-bit value big-endian.
 *   value  the value
 *   out    out; 4 bytes
 * Returns a pointer to the last byte written. */
GWQ_API unsigned char* Endian_intToChar(int value, unsigned char* out);

/* Bytes to split form; nothing if an argument is NULL or `len` < 1.
 *   out  out; 2 x `len` bytes */
GWQ_API void PSBC_SplitData(const unsigned char* in, int len, unsigned char* out);

/* Split form to bytes, low nibbles only; nothing if an argument is NULL or `len` is odd.
 *   out  out; `len` / 2 bytes */
GWQ_API void PSBC_MergeData(const unsigned char* in, int len, unsigned char* out);

/* Judges a short framed answer whose second byte is a result mark.
 * Returns 0; -2 for NULL, an empty answer or the failure mark 0xAA "1"; -14 for a missing frame or the
 * refusal mark "U". */
GWQ_API int CheckAndGetResponse(const unsigned char* buf, int count);

/* Takes a PIN-block answer apart: `stx`, split form of a mark and data, `etx`. The mark 0x10 goes with
 * at most 8 data bytes, 0x20 with more.
 *   stx, etx  the marks
 *   out       out; the data; at most 1023 bytes
 *   outLen    out; count of data bytes
 * Returns 0, or -14 with outputs untouched. */
GWQ_API int CheckAndGetResponseForTY(unsigned char stx, unsigned char etx, const unsigned char* buf,
                                     int count, unsigned char* out, int* outLen);

/* Checks the form of a serial number.
 *   id  in; may be NULL
 * Returns 1 when the text is "st_" followed by exactly 8 decimal digits, else 0. */
GWQ_API int CheckDeviceId(const char* id);

GWQ_C_END

#endif
