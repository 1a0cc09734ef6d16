/* Sending files to the terminal.
 *
 * Common results of a push
 *   0    the file is on the terminal
 *   -1   the local file cannot be opened or read
 *   -2   the terminal reports a failure, or its answer is empty
 *   -14  the terminal refuses, or its answer has no frame
 *   -3, -10, -11, -23  an exchange failed, -11 also when no answer came in time (frame/transaction.h)
 *
 * One thread at a time: pushes share m_szBuf and m_szCMD. Memory does not grow with the file.
 */
#ifndef GWQ_FILES_PUSH_H
#define GWQ_FILES_PUSH_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* The piece of the file that was read last, and the data packet it is sent in. */
GWQ_API extern unsigned char m_szBuf[200000];
GWQ_API extern unsigned char m_szCMD[204800];

/* Sends a file.
 *   port, baud  of the exchanges
 *   channel     passed on, without meaning here
 *   type        255: stored as `name`; else a media type, stored under the local file's base name
 *   localPath   in; NULL gives -1 once the terminal is ready for it. Its base name, where it is used, goes as it is
 *   name        in; name on the terminal; more than 1022 bytes give -1 and nothing is sent; may be NULL where it is not
 *               used. Its bytes go as they are handed in; the terminal's encoding is GBK, and a name out of its lists
 *               is GBK */
GWQ_API int Z11DownLoadFile(int port, char channel, int baud, int type, const char* localPath,
                            const char* name);

/* As Z11DownLoadFile, but stored as `name` whatever the type. */
GWQ_API int Z11DownLoadHead(int port, char channel, int baud, int type, const char* localPath,
                            const char* name);

/* Sends files on USB, each to "/tmp/" and its base name.
 *   pathList  in; NULL gives -1, as NULL outList does; local paths separated by "|"; cut after 1023 bytes.
 *             Base names go to the terminal as they are handed in; its encoding is GBK
 *   outList   out; the terminal's paths separated by "|", no terminator: pass 4096 zeroed bytes
 * Also -15: a listed file does not exist; those before it were sent. */
GWQ_API int pushFileToZ11(const char* pathList, char* outList);

GWQ_C_END

#endif
