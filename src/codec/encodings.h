/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Text encodings and Base64.
 *
 * The terminal works in GBK (GB 18030, two-byte part); callers pass UTF-8.
 *
 * @remark Any thread; pure functions.
 */
#ifndef GWQ_CODEC_ENCODINGS_H
#define GWQ_CODEC_ENCODINGS_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * The first GBK code of `unicodeTables`, 0x8140.
 *
 * @since 1.0.0
 */
GWQ_API extern const unsigned short gbk_first_code;

/**
 * The last GBK code of `unicodeTables`, 0xFE9F.
 *
 * @since 1.0.0
 */
GWQ_API extern const unsigned short gbk_last_code;

/**
 * The number of elements of `unicodeTables`.
 *
 * @since 1.0.0
 */
GWQ_API extern const unsigned short unicode_buf_size;

/**
 * GBK code minus `gbk_first_code` to UCS-2 code point; 0 where no character is assigned.
 *
 * Where GBK assigns none, the table has the character of GB 18030, a private-use one in the
 * user-defined areas.
 *
 * @since 1.0.0
 */
GWQ_API extern const unsigned short unicodeTables[32096];

/**
 * The first code point of `gbkTables`, U+4E00.
 *
 * @since 1.0.0
 */
GWQ_API extern const unsigned short unicode_first_code;

/**
 * The last code point of `gbkTables`, U+9FA5.
 *
 * @since 1.0.0
 */
GWQ_API extern const unsigned short unicode_last_code;

/**
 * The number of elements of `gbkTables`.
 *
 * @since 1.0.0
 */
GWQ_API extern const unsigned short gbk_buf_size;

/**
 * UCS-2 code point minus `unicode_first_code` to GBK code, for the ideographs U+4E00 to U+9FA5.
 *
 * @since 1.0.0
 */
GWQ_API extern const unsigned short gbkTables[20902];

/**
 * Converts GBK text to UCS-2.
 *
 * Bytes below 0x81 are copied as they are; a pair outside the table is dropped, and so is a first
 * byte without a second.
 *
 * @param[in] in    text that ends at a zero byte; must not be NULL
 * @param[out] out  `cap` characters, without a terminator; must not be NULL
 * @param cap       size of `out` in characters; nothing is written when it is below 1
 * @return the characters written; -1 for NULL
 * @since 1.0.0
 */
GWQ_API int GbkToUnicode(const unsigned char* in, unsigned short* out, int cap);

/**
 * Converts UCS-2 text to GBK.
 *
 * Characters above 0x7F other than the ideographs are dropped.
 *
 * @param[in] in    text that ends at a zero character; must not be NULL
 * @param[out] out  `cap` rounded up to even, plus one byte for each character up to 0x7F, which is
 *                  neither counted nor limited; without a terminator; must not be NULL
 * @param cap       size of `out` in bytes; nothing is written when it is below 1
 * @return the bytes written for ideographs; -1 for NULL
 * @since 1.0.0
 */
GWQ_API int UnicodeToGbk(const unsigned short* in, unsigned char* out, int cap);

/**
 * Converts text with iconv.
 *
 * @param[in] from  iconv's name of the encoding of `in`; must not be NULL
 * @param[in] to    iconv's name of the encoding of `out`; must not be NULL
 * @param[in] in    `inLen` bytes; NULL means empty
 * @param inLen     length of `in` in bytes
 * @param[out] out  `outSize` bytes, zeroed first; the text ends with a zero byte where there is
 *                  room for one; NULL has no room; must not overlap `in`, which can end the process
 * @param outSize   size of `out` in bytes
 * @return 0; -1 if the conversion is unknown, fails, or a name is NULL, with what was converted
 *         before in `out`
 * @since 1.0.0
 */
GWQ_API int code_convert(const char* from, const char* to, const char* in, int inLen, char* out, int outSize);

/**
 * Converts UTF-8 to GB 18030.
 *
 * @param[in] in    `inLen` bytes; NULL means empty
 * @param inLen     length of `in` in bytes
 * @param[out] out  `outSize` bytes, zeroed first; the text ends with a zero byte where there is
 *                  room for one; NULL has no room; must not overlap `in`, which can end the process
 * @param outSize   size of `out` in bytes
 * @return 0; -1 if the conversion fails, with what was converted before in `out`
 * @since 1.0.0
 */
GWQ_API int u2g(const char* in, int inLen, char* out, int outSize);

/**
 * Converts GB 18030 to UTF-8.
 *
 * @param[in] in    `inLen` bytes; NULL means empty
 * @param inLen     length of `in` in bytes
 * @param[out] out  `outSize` bytes, zeroed first; the text ends with a zero byte where there is
 *                  room for one; NULL has no room; must not overlap `in`, which can end the process
 * @param outSize   size of `out` in bytes
 * @return 0; -1 if the conversion fails, with what was converted before in `out`
 * @since 1.0.0
 */
GWQ_API int g2u(const char* in, int inLen, char* out, int outSize);

/**
 * Does nothing; kept for its callers.
 *
 * @param[in] in    ignored
 * @param inLen     ignored
 * @param[out] out  ignored
 * @return 0 always
 * @since 1.0.0
 */
GWQ_API int ANSIToUTF8(const char* in, int inLen, char* out);

/**
 * Encodes bytes as Base64 (RFC 4648), with padding, without line breaks and without a terminator.
 *
 * It is an encoding, no encryption.
 *
 * @param[in] in    `len` bytes; must not be NULL
 * @param len       number of bytes
 * @param[out] out  `cap` bytes; must not be NULL
 * @param cap       size of `out`
 * @return the characters written; -1 if `cap` is below 4 x ceil(`len` / 3), or for NULL
 * @since 1.0.0
 */
GWQ_API int EncryptBase64(const unsigned char* in, int len, char* out, int cap);

/**
 * Decodes Base64 text.
 *
 * Groups of fewer than four characters at the end are ignored; characters outside the alphabet are
 * not rejected, their bytes have an unspecified value.
 *
 * @param[in] in    `len` characters; NULL means empty
 * @param len       number of characters
 * @param[out] out  `cap` bytes
 * @param cap       size of `out`; one byte more than it is counted but not stored
 * @return the bytes decoded; -1 when they exceed `cap` by more than one
 * @since 1.0.0
 */
GWQ_API int DecryptBase64(const char* in, int len, unsigned char* out, int cap);

/**
 * Returns the value of a Base64 character.
 *
 * @param c  the character
 * @return 0 to 63; 0 for `=`, -1 for any other character
 * @since 1.0.0
 */
GWQ_API int GetIndexFromBase64Table(char c);

GWQ_C_END

#endif
