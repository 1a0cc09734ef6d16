/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Sending files to the terminal.
 *
 * Memory does not grow with the file.
 *
 * @remark One thread at a time: pushes share `m_szBuf` and `m_szCMD`.
 */
#ifndef GWQ_FILES_PUSH_H
#define GWQ_FILES_PUSH_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * The piece of the file that was read last.
 *
 * @since 1.0.0
 */
GWQ_API extern unsigned char m_szBuf[200000];

/**
 * The data packet that the piece in `m_szBuf` is sent in.
 *
 * @since 1.0.0
 */
GWQ_API extern unsigned char m_szCMD[204800];

/**
 * Sends a file.
 *
 * @param port           0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param channel        ignored
 * @param baud           bits per second on a serial port
 * @param type           255: stored as `name`; else a media type, stored under the base name of the
 *                       local file
 * @param[in] localPath  must not be NULL: GWQ_BAD_ARGUMENT once the terminal is ready for it. Its
 *                       base name, where it is used, is sent as it is
 * @param[in] name       name on the terminal, sent as it is; the terminal's encoding is GBK, and a
 *                       name out of its lists is GBK; may be NULL where it is not used
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) a name of more than 1022 bytes, and nothing was sent; or a local
 *                           file cannot be opened or read
 * @retval GWQ_NO_ANSWER     (-2) the terminal reports a failure, or its answer is empty
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) no answer came in time, or reading failed
 * @retval GWQ_REFUSED       (-14) the terminal refused the file, or its answer has no frame
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int Z11DownLoadFile(int port, char channel, int baud, int type, const char* localPath,
                            const char* name);

/**
 * Sends a file and stores it as `name`, with any type.
 *
 * @param port           0 is USB, n of 1 or more the serial device /dev/ttyS(n-1)
 * @param channel        ignored
 * @param baud           bits per second on a serial port
 * @param type           media type, passed to the terminal
 * @param[in] localPath  must not be NULL: GWQ_BAD_ARGUMENT once the terminal is ready for it
 * @param[in] name       name on the terminal, sent as it is; the terminal's encoding is GBK, and a
 *                       name out of its lists is GBK; NULL means empty
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) a name of more than 1022 bytes, and nothing was sent; or a local
 *                           file cannot be opened or read
 * @retval GWQ_NO_ANSWER     (-2) the terminal reports a failure, or its answer is empty
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) no answer came in time, or reading failed
 * @retval GWQ_REFUSED       (-14) the terminal refused the file, or its answer has no frame
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int Z11DownLoadHead(int port, char channel, int baud, int type, const char* localPath,
                            const char* name);

/**
 * Sends files on USB, each to `/tmp/` and its base name.
 *
 * @param[in] pathList  local paths separated by `|`; cut after 1023 bytes; must not be NULL. Base
 *                      names are sent as they are; the terminal's encoding is GBK
 * @param[out] outList  the terminal's paths separated by `|`, without a terminator: pass 4096
 *                      zeroed bytes; must not be NULL
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) an argument is NULL, and nothing was sent; or a local file cannot
 *                           be opened or read
 * @retval GWQ_NO_ANSWER     (-2) the terminal reports a failure, or its answer is empty
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) no answer came in time, or reading failed
 * @retval GWQ_REFUSED       (-14) the terminal refused the file, or its answer has no frame
 * @retval GWQ_NO_FILE       (-15) a listed file does not exist; those before it were sent
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int pushFileToZ11(const char* pathList, char* outList);

GWQ_C_END

#endif
