/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Files on the host: names, whole-file reading and writing, Base64 of files.
 *
 * @remark One thread at a time.
 */
#ifndef GWQ_FILES_HOST_FILES_H
#define GWQ_FILES_HOST_FILES_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Copies the part of a path after its last `/`, with its terminator.
 *
 * @param[in] path  may be NULL; without a `/`, or with NULL, `out` is untouched
 * @param[out] out  as large as the path; may be the path itself; may be NULL: nothing is written
 * @since 1.0.0
 */
GWQ_API void GetFileName(const char* path, char* out);

/**
 * Copies the part of a path after its last backslash, with its terminator.
 *
 * @param[in] path  may be NULL; without a backslash, or with NULL, `out` is untouched
 * @param[out] out  as large as the path; may be the path itself; may be NULL: nothing is written
 * @since 1.0.0
 */
GWQ_API void GetFileNameEx(const char* path, char* out);

/**
 * Copies the text after the last dot of a path, with its terminator; an empty text when there is
 * none.
 *
 * @param[in] path  may be NULL: an empty text
 * @param[out] out  as large as the path; may be the path itself; may be NULL: nothing is written
 * @since 1.0.0
 */
GWQ_API void GetFileExtendName(const char* path, char* out);

/**
 * Copies the text after the last dot of a path, with its terminator; an empty text when there is
 * none.
 *
 * The same as GetFileExtendName().
 *
 * @param[in] path  may be NULL: an empty text
 * @param[out] out  as large as the path; may be the path itself; may be NULL: nothing is written
 * @since 1.0.0
 */
GWQ_API void GetFileExtenName(const char* path, char* out);

/**
 * Returns the size of a file.
 *
 * @param[in] path  may be NULL
 * @return the size in bytes; -1 if there is no such file, or for NULL
 * @since 1.0.0
 */
GWQ_API int get_file_size(const char* path);

/**
 * Writes a file; what it held before is overwritten.
 *
 * @param[in] path  must not be NULL
 * @param[in] data  `count` bytes; NULL with a count is a failure, and no file is made
 * @param count     number of bytes
 * @return 1 if the file was created and all bytes were written, else 0
 * @since 1.0.0
 */
GWQ_API int WriteFileData(const char* path, const unsigned char* data, int count);

/**
 * Reads a whole file.
 *
 * @param[out] buffer  as large as the file; may be NULL: nothing is read
 * @param[in] path     must not be NULL
 * @param[in] mode     mode of fopen, such as `rb`
 * @return bytes read; 0 for a NULL buffer, or a file that cannot be opened or is empty
 * @since 1.0.0
 */
GWQ_API int ReadFileData(unsigned char* buffer, const char* path, const char* mode);

/**
 * Reads a file as Base64 text (RFC 4648), without a terminator.
 *
 * @param[in] path     may be NULL: there is no such file
 * @param[out] out     `*len` bytes, zeroed first; NULL asks for the size
 * @param[in,out] len  in: size of `out`; out: length of the text, also when it tells with
 *                     GWQ_FILE_BAD_ARGUMENT how much is needed; must not be NULL
 * @retval GWQ_OK                 success
 * @retval GWQ_FILE_BAD_ARGUMENT  (-2) `out` is NULL or too small, `len` is NULL, or nothing could
 *                                be read
 * @retval GWQ_NO_FILE            (-15) there is no such file
 * @retval GWQ_TOO_SMALL          (-24) out of memory, or a text longer than an int can count
 * @since 1.0.0
 */
GWQ_API int GetBase46FromFile(const char* path, char* out, int* len);

/**
 * Writes the bytes of a Base64 text to a file; no file is made when there are none.
 *
 * A file that cannot be written is not reported.
 *
 * @param[in] path  must not be NULL
 * @param[in] text  `len` characters; must not be NULL
 * @param len       length of the text
 * @retval GWQ_OK                 success
 * @retval GWQ_BAD_ARGUMENT       (-1) the text cannot be decoded
 * @retval GWQ_FILE_BAD_ARGUMENT  (-2) an argument is NULL, or the length is negative
 * @retval GWQ_TOO_SMALL          (-24) out of memory
 * @since 1.0.0
 */
GWQ_API int WriteBase64ToFile(const char* path, const char* text, int len);

GWQ_C_END

#endif
