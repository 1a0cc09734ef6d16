/* Receiving files from the terminal. */
#ifndef GWQ_FILES_PULL_H
#define GWQ_FILES_PULL_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Sends a pull command on the USB link and stores the file that the terminal streams back.
 *   commandLen  0 means the command's length as text
 *   command     in; NULL gives -10
 *   timeout_ms  longest wait for each report, cut down to whole seconds
 *   path        in; local file, written anew; NULL gives -11, once the command is sent
 * Returns 0; -3 the link could not be opened; -10 the command was not sent; -11 a report did
 * not come, more than 256 MiB came, or the file could not be created or written whole (what was received stays in it); -14 a packet
 * failed its check (the file is removed, if it is a regular one). Cancelled by CancelRead it gives -10 while sending and
 * -11 while receiving. */
GWQ_API int TransProcHW(int commandLen, char* command, int timeout_ms, char* path);

/* As TransProcHW. The command is "\e[0PULLFILE", STX, the path on the terminal, ETX. The path goes as it is
 * handed in; the terminal's encoding is GBK, and a name out of its lists is GBK.
 *   port, channel, baud  without meaning here */
GWQ_API int PullFile(int port, char channel, int baud, int timeout_ms, int commandLen, char* command,
                     char* path);

GWQ_C_END

#endif
