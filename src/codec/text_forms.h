/* Conversions between bytes and the two text forms that the terminal speaks:
 *
 *   hexadecimal  "0"-"9", "A"-"F", two characters a byte, high nibble first (RFC 4648, base 16)
 *   split form   each nibble plus 0x30, high nibble first: "0"-"9", then ":" ";" "<" "=" ">" "?"
 *
 * Common arguments
 *   in          in; read for `inLen` or `len` bytes and no further
 *   inLen, len  how many; 0 or less converts nothing
 *   out         out; gets no terminator
 *   outCap      bytes that `out` has room for; 0 or less converts nothing
 *
 * Common results
 *   n    bytes written
 *
 * Pure functions, callable from any thread.
 */
#ifndef GWQ_CODEC_TEXT_FORMS_H
#define GWQ_CODEC_TEXT_FORMS_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Bytes to upper-case hexadecimal text, while room is left. The room is looked at before each pair
 * only, so an odd `outCap` is exceeded by one character: `out` must hold `outCap` rounded up to even. */
GWQ_API int GetHexString(const unsigned char* in, int inLen, char* out, int outCap);

/* Bytes to split form, with GetHexString's rule on `outCap`. */
GWQ_API int GetHexStr(const unsigned char* in, int inLen, char* out, int outCap);

/* Bytes to split form, all or nothing: 0 if `in` or `out` is NULL or `outCap` < 2 x `inLen`. */
GWQ_API int HexAsc1Split(const unsigned char* in, int inLen, char* out, int outCap);
GWQ_API int SplitChar(const unsigned char* in, int inLen, char* out, int outCap);

/* Split form to bytes, (c0 & 0x0F) x 16 + (c1 - 0x30) for each pair, while room is left. The last
 * character of an odd length is paired with a zero byte, as the end of a C text. */
GWQ_API int GetAsciStr(const char* in, int inLen, unsigned char* out, int outCap);

/* As GetAsciStr; 0 if `in` or `out` is NULL or `outCap` < (`inLen` + 1) / 2. */
GWQ_API int HexAsc1Merge(const char* in, int inLen, unsigned char* out, int outCap);

/* Split form to bytes, where only the low nibble of both characters counts; checks as HexAsc1Merge. */
GWQ_API int Merge(const char* in, int inLen, unsigned char* out, int outCap);

/* Hexadecimal text (either case) to bytes, while room is left; other characters give some value.
 * The last digit of an odd length gives (digit x 16 - 0x30) modulo 256. `in` and `out` may overlap; where `out` begins
 * within `in` it takes memory, without which the result is 0. */
GWQ_API int HexStrToAscii(const char* in, int inLen, unsigned char* out, int outCap);
GWQ_API int GetAsciString(const char* in, int inLen, unsigned char* out, int outCap);

/* Split form to upper-case hexadecimal text, with GetHexString's rule on `outCap`; 0 if out of memory. The
 * name is kept for its callers; no BCD is involved. */
GWQ_API int HexToBCD(const char* in, int inLen, char* out, int outCap);

/* Hexadecimal text to split form, as HexToBCD. */
GWQ_API int BCDToHex(const char* in, int inLen, char* out, int outCap);

/* Bytes to upper-case hexadecimal text with a terminator.
 *   out  out; 2 x `len` + 1 bytes
 * Returns 2 x `len`, the terminator not counted. */
GWQ_API int HexToAscii(const unsigned char* in, int len, char* out);

/* Hexadecimal text (either case) to bytes, up to the first character that is no hexadecimal digit.
 *   out  out; (`len`) / 2 bytes */
GWQ_API int AsciiToHex(const char* in, int len, unsigned char* out);

/* Folds bytes to one.
 *   seed  what the first byte is folded into
 *   data  in; `len` bytes
 * Returns seed XOR data[0] XOR ... XOR data[len - 1]. */
GWQ_API unsigned char GetXorValue(unsigned char seed, const unsigned char* data, int len);

/* Cuts a text at the first occurrence of `delim`.
 *   src    in; NULL gives NULL
 *   dst    out; gets the text before the delimiter, without a terminator: pass it zeroed, as large
 *          as `src`; may overlap `src`; may be NULL
 *   delim  in
 * Returns the position of the delimiter in `src` (not past it); without one, all of `src` is copied
 * with its terminator and `src` returned. */
GWQ_API char* SplitData(const char* src, char* dst, const char* delim);

GWQ_C_END

#ifdef __cplusplus
/* Bytes to hexadecimal text: upper case, as GetHexString, for mutable input; lower case for constant
 * input, where each pair is followed by a terminator, so that `out` must hold `outCap` rounded up to
 * even, plus 1. These two have C++ linkage. */
GWQ_API int AsciiToHexStr(char* in, int inLen, char* out, int outCap);
GWQ_API int AsciiToHexStr(const char* in, int inLen, char* out, int outCap);
#endif

#endif
