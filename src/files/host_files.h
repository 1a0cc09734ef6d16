/* Files on the host: names, whole-file reading and writing, Base64 of files.
 *
 * Common arguments
 *   path  in; a file on the host; not NULL unless stated
 *
 * One thread at a time. */
#ifndef GWQ_FILES_HOST_FILES_H
#define GWQ_FILES_HOST_FILES_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Copies the part of a path behind its last "/" (GetFileName) or its last "\" (GetFileNameEx), with its terminator;
 * without one, `out` is untouched.
 *   path  in; NULL has none
 *   out   out; as large as the path; may be the path itself; NULL changes nothing */
GWQ_API void GetFileName(const char* path, char* out);
GWQ_API void GetFileNameEx(const char* path, char* out);

/* Copies the text behind the last "." of a path, with its terminator; an empty text when there is none.
 *   path  in; NULL has none
 *   out   out; as large as the path; may be the path itself; NULL changes nothing */
GWQ_API void GetFileExtendName(const char* path, char* out);
GWQ_API void GetFileExtenName(const char* path, char* out);

/* Tells how large a file is.
 *   path  in; NULL gives -1
 * Returns its size in bytes; -1 if there is none. */
GWQ_API int get_file_size(const char* path);

/* Writes a file, over what it held before.
 *   data   in; `count` bytes; NULL with a count gives 0, and no file
 *   count  how many
 * Returns 1 if it was created and all bytes were written, else 0. */
GWQ_API int WriteFileData(const char* path, const unsigned char* data, int count);

/* Reads a whole file.
 *   buffer  out; as large as the file
 *   mode    in; of fopen, such as "rb"
 * Returns the bytes read; 0 for a NULL buffer, or a file that cannot be opened or is empty. */
GWQ_API int ReadFileData(unsigned char* buffer, const char* path, const char* mode);

/* Reads a file as Base64 text (RFC 4648), without a terminator.
 *   path  in; NULL gives -15
 *   out   out; *len bytes, zeroed first; NULL asks for the size
 *   len   in: capacity; out: length of the text, also when -2 says that it is needed; NULL gives -2
 * Returns 0; -2 when `out` is NULL or too small, or nothing could be read; -15 no such file; -24 out of memory, or a
 * text longer than an int can count. */
GWQ_API int GetBase46FromFile(const char* path, char* out, int* len);

/* Writes the bytes of a Base64 text to a file; no file when there are none. A file that cannot be written is not
 * reported.
 *   text  in; `len` characters
 *   len   length of the text
 * Returns 0; -1 a text that cannot be decoded; -2 NULL or a negative length; -24 out of memory. */
GWQ_API int WriteBase64ToFile(const char* path, const char* text, int len);

GWQ_C_END

#endif
