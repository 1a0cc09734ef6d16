/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Conversions between bytes and the two text forms of the terminal:
 *
 * @code{.unparsed}
 *     hexadecimal  "0"-"9", "A"-"F", two characters a byte, high nibble first (RFC 4648, base 16)
 *     split form   each nibble plus 0x30, high nibble first: "0"-"9", then ":" ";" "<" "=" ">" "?"
 * @endcode
 *
 * @remark Any thread; pure functions.
 */
#ifndef GWQ_CODEC_TEXT_FORMS_H
#define GWQ_CODEC_TEXT_FORMS_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Converts bytes to upper-case hexadecimal text, while room is left.
 *
 * The room is checked before each pair only, so an odd `outCap` is exceeded by one character.
 *
 * @param[in] in    `inLen` bytes
 * @param inLen     length of `in`; 0 or less converts nothing
 * @param[out] out  `outCap` bytes rounded up to even; gets no terminator
 * @param outCap    size of `out` in bytes; 0 or less converts nothing
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int GetHexString(const unsigned char* in, int inLen, char* out, int outCap);

/**
 * Converts bytes to split form, while room is left.
 *
 * The room is checked before each pair only, so an odd `outCap` is exceeded by one character.
 *
 * @param[in] in    `inLen` bytes
 * @param inLen     length of `in`; 0 or less converts nothing
 * @param[out] out  `outCap` bytes rounded up to even; gets no terminator
 * @param outCap    size of `out` in bytes; 0 or less converts nothing
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int GetHexStr(const unsigned char* in, int inLen, char* out, int outCap);

/**
 * Converts bytes to split form, all or nothing.
 *
 * @param[in] in    `inLen` bytes; NULL converts nothing
 * @param inLen     length of `in`; 0 or less converts nothing
 * @param[out] out  2 x `inLen` bytes; gets no terminator; NULL converts nothing
 * @param outCap    size of `out` in bytes; less than 2 x `inLen` converts nothing
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int HexAsc1Split(const unsigned char* in, int inLen, char* out, int outCap);

/**
 * Converts bytes to split form, all or nothing.
 *
 * The same as HexAsc1Split().
 *
 * @param[in] in    `inLen` bytes; NULL converts nothing
 * @param inLen     length of `in`; 0 or less converts nothing
 * @param[out] out  2 x `inLen` bytes; gets no terminator; NULL converts nothing
 * @param outCap    size of `out` in bytes; less than 2 x `inLen` converts nothing
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int SplitChar(const unsigned char* in, int inLen, char* out, int outCap);

/**
 * Converts split form to bytes, (c0 & 0x0F) x 16 + (c1 - 0x30) for each pair, while room is left.
 *
 * The last character of an odd length is paired with a zero byte, as the end of a C text.
 *
 * @param[in] in    `inLen` characters
 * @param inLen     length of `in`; 0 or less converts nothing
 * @param[out] out  `outCap` bytes
 * @param outCap    size of `out` in bytes; 0 or less converts nothing
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int GetAsciStr(const char* in, int inLen, unsigned char* out, int outCap);

/**
 * Converts split form to bytes, (c0 & 0x0F) x 16 + (c1 - 0x30) for each pair, all or nothing.
 *
 * The last character of an odd length is paired with a zero byte, as the end of a C text.
 *
 * @param[in] in    `inLen` characters; NULL converts nothing
 * @param inLen     length of `in`; 0 or less converts nothing
 * @param[out] out  (`inLen` + 1) / 2 bytes; NULL converts nothing
 * @param outCap    size of `out` in bytes; less than (`inLen` + 1) / 2 converts nothing
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int HexAsc1Merge(const char* in, int inLen, unsigned char* out, int outCap);

/**
 * Converts split form to bytes, of which only the low nibbles of both characters count, all or
 * nothing.
 *
 * @param[in] in    `inLen` characters; NULL converts nothing
 * @param inLen     length of `in`; 0 or less converts nothing
 * @param[out] out  (`inLen` + 1) / 2 bytes; NULL converts nothing
 * @param outCap    size of `out` in bytes; less than (`inLen` + 1) / 2 converts nothing
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int Merge(const char* in, int inLen, unsigned char* out, int outCap);

/**
 * Converts hexadecimal text (either case) to bytes, while room is left.
 *
 * Other characters have an unspecified value. The last digit of an odd length gives (digit x 16 -
 * 0x30) modulo 256. `in` and `out` may overlap; where `out` begins within `in` it takes memory,
 * without which the result is 0.
 *
 * @param[in] in    `inLen` characters
 * @param inLen     length of `in`; 0 or less converts nothing
 * @param[out] out  `outCap` bytes
 * @param outCap    size of `out` in bytes; 0 or less converts nothing
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int HexStrToAscii(const char* in, int inLen, unsigned char* out, int outCap);

/**
 * Converts hexadecimal text (either case) to bytes, while room is left.
 *
 * Other characters have an unspecified value. The last digit of an odd length gives (digit x 16 -
 * 0x30) modulo 256. `in` and `out` may overlap; where `out` begins within `in` it takes memory,
 * without which the result is 0.
 *
 * The same as HexStrToAscii().
 *
 * @param[in] in    `inLen` characters
 * @param inLen     length of `in`; 0 or less converts nothing
 * @param[out] out  `outCap` bytes
 * @param outCap    size of `out` in bytes; 0 or less converts nothing
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int GetAsciString(const char* in, int inLen, unsigned char* out, int outCap);

/**
 * Converts split form to upper-case hexadecimal text, while room is left.
 *
 * The room is checked before each pair only, so an odd `outCap` is exceeded by one character. The
 * name is kept for its callers; no BCD is involved.
 *
 * @param[in] in    `inLen` characters
 * @param inLen     length of `in`; 0 or less converts nothing
 * @param[out] out  `outCap` bytes rounded up to even; gets no terminator
 * @param outCap    size of `out` in bytes; 0 or less converts nothing
 * @return the bytes written; 0 if out of memory
 * @since 1.0.0
 */
GWQ_API int HexToBCD(const char* in, int inLen, char* out, int outCap);

/**
 * Converts hexadecimal text to split form, while room is left.
 *
 * The room is checked before each pair only, so an odd `outCap` is exceeded by one character. The
 * name is kept for its callers; no BCD is involved.
 *
 * @param[in] in    `inLen` characters
 * @param inLen     length of `in`; 0 or less converts nothing
 * @param[out] out  `outCap` bytes rounded up to even; gets no terminator
 * @param outCap    size of `out` in bytes; 0 or less converts nothing
 * @return the bytes written; 0 if out of memory
 * @since 1.0.0
 */
GWQ_API int BCDToHex(const char* in, int inLen, char* out, int outCap);

/**
 * Converts bytes to upper-case hexadecimal text with a terminator.
 *
 * @param[in] in    `len` bytes
 * @param len       length of `in`; 0 or less converts nothing
 * @param[out] out  2 x `len` + 1 bytes
 * @return 2 x `len`, the terminator not counted
 * @since 1.0.0
 */
GWQ_API int HexToAscii(const unsigned char* in, int len, char* out);

/**
 * Converts hexadecimal text (either case) to bytes, up to the first character that is no
 * hexadecimal digit.
 *
 * @param[in] in    `len` characters
 * @param len       length of `in`; 0 or less converts nothing
 * @param[out] out  `len` / 2 bytes
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int AsciiToHex(const char* in, int len, unsigned char* out);

/**
 * Returns the XOR of a seed and bytes.
 *
 * @param seed      what the first byte is combined with
 * @param[in] data  `len` bytes
 * @param len       number of bytes
 * @return seed XOR data[0] XOR ... XOR data[len - 1]
 * @since 1.0.0
 */
GWQ_API unsigned char GetXorValue(unsigned char seed, const unsigned char* data, int len);

/**
 * Cuts a text at the first occurrence of a delimiter.
 *
 * Without a delimiter all of `src` is copied, with its terminator.
 *
 * @param[in] src    the text; may be NULL
 * @param[out] dst   the text before the delimiter, without a terminator: pass it zeroed, as large
 *                   as `src`; may overlap `src`; may be NULL: nothing is written
 * @param[in] delim  the delimiter; must not be NULL
 * @return the position of the delimiter in `src` (not after it); `src` without one; NULL for a NULL
 *         `src`
 * @since 1.0.0
 */
GWQ_API char* SplitData(const char* src, char* dst, const char* delim);

GWQ_C_END

#ifdef __cplusplus

/**
 * Converts bytes to upper-case hexadecimal text, while room is left; mutable input. C++ linkage.
 *
 * The room is checked before each pair only, so an odd `outCap` is exceeded by one character.
 *
 * @param[in] in    `inLen` bytes
 * @param inLen     length of `in`; 0 or less converts nothing
 * @param[out] out  `outCap` bytes rounded up to even; gets no terminator
 * @param outCap    size of `out` in bytes; 0 or less converts nothing
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int AsciiToHexStr(char* in, int inLen, char* out, int outCap);

/**
 * Converts bytes to lower-case hexadecimal text, while room is left; constant input. C++ linkage.
 *
 * The room is checked before each pair only, so an odd `outCap` is exceeded by one character. Each
 * pair is followed by a terminator.
 *
 * The same as AsciiToHexStr2().
 *
 * @param[in] in    `inLen` bytes
 * @param inLen     length of `in`; 0 or less converts nothing
 * @param[out] out  `outCap` bytes rounded up to even, plus 1
 * @param outCap    size of `out` in bytes; 0 or less converts nothing
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int AsciiToHexStr(const char* in, int inLen, char* out, int outCap);
#endif

#endif
