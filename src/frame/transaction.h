/* Transactions: open the link of a port, send a command, read the answer, close the link.
 *
 * Common arguments
 *   port        0 USB, trying both identities; n >= 1 serial device /dev/ttyS(n-1) at `baud`; a negative port
 *               opens USB but sends as on a serial device: one write, not cut into 1024-byte reports
 *   baud        bits per second on a serial port
 *   command     in
 *   commandLen  bytes of the command; on port 0, 0 means its length as text
 *   answer      out; pass it zeroed, with 1024 bytes of room beyond *answerLen: a USB read keeps the report that
 *               reaches the maximum whole. NULL (or NULL answerLen) skips the read. After a failed read it may
 *               hold what had arrived.
 *   answerLen   in: most bytes to read; out: length of the answer as text (up to its first zero byte);
 *               untouched on failure
 *   timeout_ms  cut down to whole seconds; below 1000 the read ends when the clock's second changes
 *
 * Common results
 *   0    the answer is there
 *   -2   the read brought nothing
 *   -3   the link could not be opened
 *   -10  the command was not sent; NULL command on port 0; cancelled between two reports
 *   -11  the read failed: time-out, error, or a cancelled serial read
 *   -23  a USB read was cancelled
 *
 * Threads: a transaction waits until that of another thread has closed its link. CancelRead and
 * CancelWrite may be called from any thread and never wait.
 */
#ifndef GWQ_FRAME_TRANSACTION_H
#define GWQ_FRAME_TRANSACTION_H

#include <gwq/export.h>
#include <gwq/links/end_of_read.h>

GWQ_C_BEGIN

/* Sends and reads until the answer ends with ETX (0x03). */
GWQ_API int TransProc(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                      int timeout_ms);

/* Sends and reads until a predicate accepts the answer.
 *   end  the predicate; NULL reads until the time is over. An exchange that it begins on the same port goes on over
 *        the open link; one on another port ends this exchange, and so does a predicate that keeps its thread for more
 *        than a second while another thread waits to exchange: -11 */
GWQ_API int TransProcByEnd(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                           GwqEndOfRead end, int timeout_ms);

/* Sends and reads until the answer ends with "F"; a failed read gives -9 in place of -11. */
GWQ_API int TransProcForEva(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                            int timeout_ms);

/* Sends and reads until the answer ends with "F". */
GWQ_API int TransProcForInfo(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                             int timeout_ms);

/* Sends only.
 *   answer, answerLen  not read; may be NULL */
GWQ_API int TransProcOnlyWrite(int port, int baud, char* command, int commandLen, char* answer,
                               int* answerLen, int timeout_ms);

/* Sends only. */
GWQ_API int TransProcOnlySend(int port, int baud, char* command, int commandLen, int timeout_ms);

/* Reads only, until the answer ends with "F". */
GWQ_API int TransProcOnlyRead(int port, int baud, char* answer, int* answerLen, int timeout_ms);

/* Makes the running transaction give up: a waiting read ends with -23 (USB) or as any failed read (serial), a
 * command being sent in several reports with -10. At any other moment it is lost: a transaction clears the
 * request when it starts, and so does its read. A request that is still standing makes further calls do
 * nothing. Returns 0 always. */
GWQ_API int CancelRead(void);

/* Asks a running file upload to stop: sets g_CancelWrite. */
GWQ_API void CancelWrite(void);

/* The stop flag of file uploads; an upload clears it when it starts. */
GWQ_API extern int g_CancelWrite;

/* End-of-answer predicates.
 *   data             in; what was read so far; where it is looked at as text, with a zero byte behind
 *   count            how many bytes
 *   EndOfRead        at least 7 bytes, and the big-endian 16-bit value in bytes 5 and 6 is at most count - 7
 *   EndOfRead2       the text ends with ETX (0x03); data must not be NULL
 *   EndOfRead3       the text ends with "F"; data must not be NULL
 *   EndOfCondition4  any byte
 *   EndOfConditionD  the byte at count - 1 is CR
 * Returns 0 when the answer is complete so, else 1. */
GWQ_API int EndOfRead(unsigned char* data, int count);
GWQ_API int EndOfRead2(unsigned char* data, int count);
GWQ_API int EndOfRead3(unsigned char* data, int count);
GWQ_API int EndOfCondition4(unsigned char* data, int count);
GWQ_API int EndOfConditionD(unsigned char* data, int count);

GWQ_C_END

#ifdef __cplusplus
#pragma push_macro("min") /* of a host that has one */
#undef min
/* Returns the smaller argument. C++ linkage.
 *   a, b  any */
GWQ_API int min(int a, int b);
#pragma pop_macro("min")
#endif

#endif
