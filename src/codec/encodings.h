/* Text encodings and Base64.
 *
 * The terminal works in GBK (GB 18030, two-byte part); callers hand over UTF-8.
 *
 * Common arguments
 *   in            in; `inLen` or `len` bytes where there is one of them
 *   inLen, len    how many
 *   cap, outSize  room in `out`, in bytes or, where it is of UCS-2, in characters
 *
 * Pure functions, callable from any thread. */
#ifndef GWQ_CODEC_ENCODINGS_H
#define GWQ_CODEC_ENCODINGS_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* GBK code minus gbk_first_code -> UCS-2 code point, for the whole span 0x8140 to 0xFE9F; 0 where no character is
 * assigned. Where GBK assigns none, GB 18030's character stands, a private-use one in the user-defined areas. */
GWQ_API extern const unsigned short gbk_first_code;
GWQ_API extern const unsigned short gbk_last_code;
GWQ_API extern const unsigned short unicode_buf_size;
GWQ_API extern const unsigned short unicodeTables[32096];

/* UCS-2 code point minus unicode_first_code -> GBK code, for the ideographs U+4E00 to U+9FA5. */
GWQ_API extern const unsigned short unicode_first_code;
GWQ_API extern const unsigned short unicode_last_code;
GWQ_API extern const unsigned short gbk_buf_size;
GWQ_API extern const unsigned short gbkTables[20902];

/* GBK text to UCS-2. Bytes below 0x81 are copied as they are; a pair outside the table is dropped, and so is a first
 * byte without a second.
 *   in   in; ends at a zero byte
 *   out  out; `cap` characters, no terminator; nothing when `cap` is below 1
 * Returns the characters written; -1 for NULL. */
GWQ_API int GbkToUnicode(const unsigned char* in, unsigned short* out, int cap);

/* UCS-2 text to GBK. Characters above 0x7F other than the ideographs are dropped.
 *   in   in; ends at a zero character
 *   out  out; `cap` rounded up to even, plus one byte for each character up to 0x7F, which is neither counted nor
 *        limited; no terminator
 *        Nothing is written when `cap` is below 1.
 * Returns the bytes written for ideographs; -1 for NULL. */
GWQ_API int UnicodeToGbk(const unsigned short* in, unsigned char* out, int cap);

/* Converts with iconv.
 *   from, to  in; iconv's names; NULL gives -1
 *   in        in; `inLen` bytes; NULL is an empty text
 *   out       out; `outSize` bytes, zeroed first; the text ends with a zero byte where there is room for one;
 *             NULL has no room; must not overlap `in`, which can end the process
 * Returns 0; -1 if the conversion is unknown or fails, with what was converted before in `out`. */
GWQ_API int code_convert(const char* from, const char* to, const char* in, int inLen, char* out, int outSize);

/* UTF-8 to GB 18030, and back; as code_convert. */
GWQ_API int u2g(const char* in, int inLen, char* out, int outSize);
GWQ_API int g2u(const char* in, int inLen, char* out, int outSize);

/* Does nothing; kept for its callers.
 *   in, inLen, out  not used
 * Returns 0. */
GWQ_API int ANSIToUTF8(const char* in, int inLen, char* out);

/* Base64 of RFC 4648, with padding, without line breaks and without a terminator. An encoding, whatever the names say.
 *   out  out; `cap` bytes
 * Returns the characters written; -1 if `cap` is below 4 x ceil(len / 3), or for NULL. */
GWQ_API int EncryptBase64(const unsigned char* in, int len, char* out, int cap);

/* Base64 to bytes. Groups of fewer than four characters at the end are ignored; characters outside the alphabet are
 * not rejected, their bytes have some value.
 *   in   in; `len` characters; NULL is an empty text
 *   out  out; `cap` bytes
 * Returns the bytes decoded; -1 when they pass the capacity by more than one. One byte more than `cap` is counted
 * but not stored. */
GWQ_API int DecryptBase64(const char* in, int len, unsigned char* out, int cap);

/* Looks up a Base64 character.
 *   c  the character
 * Returns its value, 0 to 63; 0 for "=", -1 for any other. */
GWQ_API int GetIndexFromBase64Table(char c);

GWQ_C_END

#endif
