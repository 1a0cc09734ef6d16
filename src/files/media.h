/* Media stored on the terminal, and its firmware image.
 *
 * Common arguments
 *   port, baud  of the exchange; port 0 is USB
 *   channel     passed on, without meaning here
 *   name        in; a name on the terminal; NULL is an empty one. Its bytes go as they are handed in; the terminal's
 *               encoding is GBK, and a name out of its lists is GBK
 *   fileType    0 pictures, 2 head photos, 4 firmware image; others are the terminal's
 *
 * Common results: 0, and -2, -3, -10, -11, -23 of the exchange (frame/transaction.h). One thread at a time.
 */
#ifndef GWQ_FILES_MEDIA_H
#define GWQ_FILES_MEDIA_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Lists the terminal's files of a type.
 *   out       out; the terminal's list (GBK), without a terminator
 *   capacity  size of `out`
 * Also -24: the list is longer than `capacity`, or `out` is NULL. */
GWQ_API int GetVideoList(int port, char channel, int baud, int fileType, char* out, int capacity);

/* Sends a text as a file, in pieces of 1024 characters, on USB whatever the port. A piece that fails does not stop it.
 *   text  in; NULL is an empty one
 * Returns the status of the last piece (DownFile), 0 for an empty text, -3 if the link could not be opened. */
GWQ_API int DownVideoInfo(int port, char channel, int baud, int fileType, const char* text, const char* name);

/* Sends one piece on the link in use: a command of 1024 bytes, cut there.
 *   total, index  number of pieces, and this one's number from 1
 *   data          in; `count` bytes, at most 1024 are sent
 *   count         how many
 * Returns 0; -10 not written whole; -11 the read gave anything but 0, which an answer does as well; -14 the answer is
 * not the three bytes 0x02 0xAA 0x03. */
GWQ_API int DownFile(int fileType, int total, int index, const unsigned char* data, int count,
                     const char* name);

/* Builds a piece's record: total and remaining (32 bits, little-endian), the bytes, the XOR of all before it.
 *   total, remaining  as they go into the record
 *   data              in; `count` bytes
 *   count             how many
 *   out               out; `count` + 9 bytes
 * Returns `count` + 9. */
GWQ_API int GetDownParam3(int total, int remaining, const unsigned char* data, int count, unsigned char* out);

/* Deletes one file, or all of a type. A refusal is not told apart from success. */
GWQ_API int DelVideoFile(int port, char channel, int baud, int fileType, const char* name);
GWQ_API int DelAllVideoFile(int port, char channel, int baud, int fileType);

/* As DelVideoFile, without awaiting an answer. "*" deletes all. */
GWQ_API int DeleteMediaFile(int port, char channel, int baud, int fileType, const char* name);

/* Sends a file or firmware image on USB.
 *   path  in; as HIDDownLoad
 * Returns -1 unless `port` is 0, else what HIDDownLoad returns. */
GWQ_API int DownVideoFile(int port, char channel, int baud, int fileType, const char* path);

/* Sends a file or, with type 4, the firmware image "update.dat". Each packet is sent up to its first zero byte.
 *   path  in; local file; NULL gives -12. Its base name goes to the terminal as it is handed in; the terminal's
 *         encoding is GBK
 * Returns 0; -12 the file cannot be opened or read; -14 a wrong or missing answer, or any other failure of an exchange;
 * -23 stopped by CancelWrite; -24 out of memory, with nothing sent. */
GWQ_API int HIDDownLoad(const char* path, int fileType);

GWQ_C_END

#endif
