/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Media stored on the terminal, and its firmware image.
 *
 * Types of file: 0 pictures, 2 head photos, 4 firmware image; others are the terminal's.
 *
 * @remark One thread at a time.
 */
#ifndef GWQ_FILES_MEDIA_H
#define GWQ_FILES_MEDIA_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Lists the terminal's files of a type.
 *
 * @param port      0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param channel   ignored
 * @param baud      bits per second on a serial port
 * @param fileType  0 pictures, 2 head photos, 4 firmware image, or another of the terminal's
 * @param[out] out  the terminal's list (GBK), without a terminator; must not be NULL
 * @param capacity  size of `out`
 * @retval GWQ_OK           success
 * @retval GWQ_NO_ANSWER    (-2) nothing was read
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED  (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED    (-23) cancelled by another thread
 * @retval GWQ_TOO_SMALL    (-24) the list is longer than `capacity`, or `out` is NULL
 * @since 1.0.0
 */
GWQ_API int GetVideoList(int port, char channel, int baud, int fileType, char* out, int capacity);

/**
 * Sends a text as a file, in pieces of 1024 characters. A piece that fails does not stop it.
 *
 * @param port      ignored; USB is used
 * @param channel   ignored
 * @param baud      bits per second on a serial port
 * @param fileType  0 pictures, 2 head photos, 4 firmware image, or another of the terminal's
 * @param[in] text  NULL means empty
 * @param[in] name  name on the terminal, sent as it is; the terminal's encoding is GBK, and a name
 *                  out of its lists is GBK; NULL means empty
 * @retval GWQ_OK            success of the last piece, or an empty text
 * @retval GWQ_BAD_ARGUMENT  (-1) last piece: the name does not fit into the command
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) last piece: not written whole
 * @retval GWQ_READ_FAILED   (-11) last piece: the read returned anything but 0, which an answer
 *                           does as well
 * @retval GWQ_REFUSED       (-14) last piece: the answer is not the three bytes 0x02 0xAA 0x03
 * @since 1.0.0
 */
GWQ_API int DownVideoInfo(int port, char channel, int baud, int fileType, const char* text, const char* name);

/**
 * Sends one piece on the link in use: a command of 1024 bytes, cut there.
 *
 * @param fileType  0 pictures, 2 head photos, 4 firmware image, or another of the terminal's
 * @param total     number of pieces
 * @param index     number of this piece, from 1
 * @param[in] data  `count` bytes, of which at most 1024 are sent
 * @param count     number of bytes
 * @param[in] name  name on the terminal, sent as it is; the terminal's encoding is GBK, and a name
 *                  out of its lists is GBK; NULL means empty
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) the name does not fit into the command; nothing was sent
 * @retval GWQ_SEND_FAILED   (-10) not written whole
 * @retval GWQ_READ_FAILED   (-11) the read returned anything but 0, which an answer does as well
 * @retval GWQ_REFUSED       (-14) the answer is not the three bytes 0x02 0xAA 0x03
 * @since 1.0.0
 */
GWQ_API int DownFile(int fileType, int total, int index, const unsigned char* data, int count,
                     const char* name);

/**
 * Builds the record of a piece: total and remaining (32 bits, little-endian), the bytes, and the
 * XOR of all before it.
 *
 * @param total      as it goes into the record
 * @param remaining  as it goes into the record
 * @param[in] data   `count` bytes
 * @param count      number of bytes
 * @param[out] out   `count` + 9 bytes
 * @return `count` + 9, the length of the record; 0 if `out` is NULL
 * @since 1.0.0
 */
GWQ_API int GetDownParam3(int total, int remaining, const unsigned char* data, int count, unsigned char* out);

/**
 * Deletes one file. A refusal of the terminal cannot be distinguished from success.
 *
 * @param port      0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param channel   ignored
 * @param baud      bits per second on a serial port
 * @param fileType  0 pictures, 2 head photos, 4 firmware image, or another of the terminal's
 * @param[in] name  name on the terminal, sent as it is; the terminal's encoding is GBK, and a name
 *                  out of its lists is GBK; NULL means empty
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) the name does not fit into the command; nothing was sent
 * @retval GWQ_NO_ANSWER     (-2) nothing was read
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int DelVideoFile(int port, char channel, int baud, int fileType, const char* name);

/**
 * Deletes all files of a type. A refusal of the terminal cannot be distinguished from success.
 *
 * @param port      0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param channel   ignored
 * @param baud      bits per second on a serial port
 * @param fileType  0 pictures, 2 head photos, 4 firmware image, or another of the terminal's
 * @retval GWQ_OK           success
 * @retval GWQ_NO_ANSWER    (-2) nothing was read
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED  (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED    (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int DelAllVideoFile(int port, char channel, int baud, int fileType);

/**
 * Deletes one file, or all of a type, without waiting for an answer.
 *
 * @param port      0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param channel   ignored
 * @param baud      bits per second on a serial port
 * @param fileType  0 pictures, 2 head photos, 4 firmware image, or another of the terminal's
 * @param[in] name  name on the terminal, sent as it is; the terminal's encoding is GBK, and a name
 *                  out of its lists is GBK; `*` deletes all of the type; NULL means empty
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) the name does not fit into the command; nothing was sent
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole
 * @since 1.0.0
 */
GWQ_API int DeleteMediaFile(int port, char channel, int baud, int fileType, const char* name);

/**
 * Sends a file, or with type 4 the firmware image `update.dat`, on USB.
 *
 * It is HIDDownLoad() for port 0.
 *
 * @param port      must be 0
 * @param channel   ignored
 * @param baud      ignored; USB has none
 * @param fileType  0 pictures, 2 head photos, 4 firmware image, or another of the terminal's
 * @param[in] path  local file; NULL is GWQ_NO_LOCAL_FILE. Its base name is sent as it is; the
 *                  terminal's encoding is GBK
 * @retval GWQ_OK             success
 * @retval GWQ_BAD_ARGUMENT   (-1) `port` is not 0; nothing was sent
 * @retval GWQ_NO_LOCAL_FILE  (-12) the file cannot be opened or read
 * @retval GWQ_REFUSED        (-14) a wrong or missing answer, or any other failure of an exchange
 * @retval GWQ_CANCELLED      (-23) stopped by CancelWrite()
 * @retval GWQ_TOO_SMALL      (-24) out of memory; nothing was sent
 * @since 1.0.0
 */
GWQ_API int DownVideoFile(int port, char channel, int baud, int fileType, const char* path);

/**
 * Sends a file, or with type 4 the firmware image `update.dat`, on USB.
 *
 * Each packet is sent up to its first zero byte.
 *
 * @param[in] path  local file; NULL is GWQ_NO_LOCAL_FILE. Its base name is sent as it is; the
 *                  terminal's encoding is GBK
 * @param fileType  0 pictures, 2 head photos, 4 firmware image, or another of the terminal's
 * @retval GWQ_OK             success
 * @retval GWQ_NO_LOCAL_FILE  (-12) the file cannot be opened or read
 * @retval GWQ_REFUSED        (-14) a wrong or missing answer, or any other failure of an exchange
 * @retval GWQ_CANCELLED      (-23) stopped by CancelWrite()
 * @retval GWQ_TOO_SMALL      (-24) out of memory; nothing was sent
 * @since 1.0.0
 */
GWQ_API int HIDDownLoad(const char* path, int fileType);

GWQ_C_END

#endif
