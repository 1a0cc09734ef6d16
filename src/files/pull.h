/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Receiving files from the terminal.
 *
 * @remark One thread at a time. CancelRead() from another thread ends a pull.
 */
#ifndef GWQ_FILES_PULL_H
#define GWQ_FILES_PULL_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Sends a pull command on the USB link and stores the file that the terminal streams back.
 *
 * @param commandLen   length of `command`; 0 means its length as text
 * @param[in] command  must not be NULL
 * @param timeout_ms   longest wait for each report, cut down to whole seconds
 * @param[in] path     local file, overwritten; must not be NULL
 * @retval GWQ_OK           success
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) the command was not sent, is NULL, or was cancelled while it was
 *                          sent
 * @retval GWQ_READ_FAILED  (-11) a report did not come, more than 256 MiB came, or the file could
 *                          not be created or written whole (what was received stays in it); `path`
 *                          is NULL, once the command is sent; or cancelled while receiving
 * @retval GWQ_REFUSED      (-14) a packet failed its check; the file is removed, if it is a regular
 *                          one
 * @since 1.0.0
 */
GWQ_API int TransProcHW(int commandLen, char* command, int timeout_ms, char* path);

/**
 * Sends a pull command on the USB link and stores the file that the terminal streams back.
 *
 * The command is ESC `[0PULLFILE`, STX, the path on the terminal, ETX. The path goes as it is; the
 * terminal's encoding is GBK, and a name out of its lists is GBK.
 *
 * @param port         ignored; USB is used
 * @param channel      ignored
 * @param baud         ignored; USB has none
 * @param timeout_ms   longest wait for each report, cut down to whole seconds
 * @param commandLen   length of `command`; 0 means its length as text
 * @param[in] command  must not be NULL
 * @param[in] path     local file, overwritten; must not be NULL
 * @retval GWQ_OK           success
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) the command was not sent, is NULL, or was cancelled while it was
 *                          sent
 * @retval GWQ_READ_FAILED  (-11) a report did not come, more than 256 MiB came, or the file could
 *                          not be created or written whole (what was received stays in it); `path`
 *                          is NULL, once the command is sent; or cancelled while receiving
 * @retval GWQ_REFUSED      (-14) a packet failed its check; the file is removed, if it is a regular
 *                          one
 * @since 1.0.0
 */
GWQ_API int PullFile(int port, char channel, int baud, int timeout_ms, int commandLen, char* command,
                     char* path);

GWQ_C_END

#endif
