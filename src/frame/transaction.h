/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Transactions: open the link of a port, send a command, read the answer, close the link.
 *
 * @remark A transaction waits until that of another thread has closed its link. CancelRead() and
 *   CancelWrite() may be called from any thread and never block.
 */
#ifndef GWQ_FRAME_TRANSACTION_H
#define GWQ_FRAME_TRANSACTION_H

#include <gwq/export.h>
#include <gwq/links/end_of_read.h>

GWQ_C_BEGIN

/**
 * Sends a command and reads until the answer ends with ETX (0x03).
 *
 * @param port               0 is USB, trying both identities; n of 1 or more the serial device
 *                           /dev/ttyS(n-1); a negative port opens USB but sends as on a serial
 *                           device: one write, not cut into 1024-byte reports
 * @param baud               bits per second on a serial port
 * @param[in] command        `commandLen` bytes; NULL on port 0 is GWQ_SEND_FAILED
 * @param commandLen         bytes of the command; on port 0, 0 means its length as text
 * @param[out] answer        pass it zeroed, with 1024 bytes of room beyond `*answerLen`: a USB read
 *                           keeps the report that reaches the maximum whole. May be NULL: nothing
 *                           is read. After a failed read it may contain what arrived
 * @param[in,out] answerLen  in: most bytes to read; out: length of the answer as text (up to its
 *                           first zero byte); untouched on failure. May be NULL: nothing is read
 * @param timeout_ms         cut down to whole seconds; below 1000 the read ends when the clock's
 *                           second changes
 * @retval GWQ_OK           success
 * @retval GWQ_NO_ANSWER    (-2) nothing was read
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED  (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED    (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int TransProc(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                      int timeout_ms);

/**
 * Sends a command and reads until a predicate accepts the answer.
 *
 * An exchange that the predicate begins on the same port goes on over the open link. One on another
 * port ends this exchange with GWQ_READ_FAILED, and so does a predicate that keeps its thread for
 * more than a second while another thread waits to exchange.
 *
 * @param port               0 is USB, trying both identities; n of 1 or more the serial device
 *                           /dev/ttyS(n-1); a negative port opens USB but sends as on a serial
 *                           device: one write, not cut into 1024-byte reports
 * @param baud               bits per second on a serial port
 * @param[in] command        `commandLen` bytes; NULL on port 0 is GWQ_SEND_FAILED
 * @param commandLen         bytes of the command; on port 0, 0 means its length as text
 * @param[out] answer        pass it zeroed, with 1024 bytes of room beyond `*answerLen`: a USB read
 *                           keeps the report that reaches the maximum whole. May be NULL: nothing
 *                           is read. After a failed read it may contain what arrived
 * @param[in,out] answerLen  in: most bytes to read; out: length of the answer as text (up to its
 *                           first zero byte); untouched on failure. May be NULL: nothing is read
 * @param end                the predicate; NULL reads until the time is over
 * @param timeout_ms         cut down to whole seconds; below 1000 the read ends when the clock's
 *                           second changes
 * @retval GWQ_OK           success
 * @retval GWQ_NO_ANSWER    (-2) nothing was read
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED  (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED    (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int TransProcByEnd(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                           GwqEndOfRead end, int timeout_ms);

/**
 * Sends a command and reads until the answer ends with `F`; a failed read has a status of its own.
 *
 * @param port               0 is USB, trying both identities; n of 1 or more the serial device
 *                           /dev/ttyS(n-1); a negative port opens USB but sends as on a serial
 *                           device: one write, not cut into 1024-byte reports
 * @param baud               bits per second on a serial port
 * @param[in] command        `commandLen` bytes; NULL on port 0 is GWQ_SEND_FAILED
 * @param commandLen         bytes of the command; on port 0, 0 means its length as text
 * @param[out] answer        pass it zeroed, with 1024 bytes of room beyond `*answerLen`: a USB read
 *                           keeps the report that reaches the maximum whole. May be NULL: nothing
 *                           is read. After a failed read it may contain what arrived
 * @param[in,out] answerLen  in: most bytes to read; out: length of the answer as text (up to its
 *                           first zero byte); untouched on failure. May be NULL: nothing is read
 * @param timeout_ms         cut down to whole seconds; below 1000 the read ends when the clock's
 *                           second changes
 * @retval GWQ_OK               success
 * @retval GWQ_NO_ANSWER        (-2) nothing was read
 * @retval GWQ_NOT_OPENED       (-3) the link could not be opened
 * @retval GWQ_EVALUATION_READ  (-9) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_SEND_FAILED      (-10) a command was not sent whole, or was cancelled while it was
 *                              sent
 * @retval GWQ_CANCELLED        (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int TransProcForEva(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                            int timeout_ms);

/**
 * Sends a command and reads until the answer ends with `F`.
 *
 * @param port               0 is USB, trying both identities; n of 1 or more the serial device
 *                           /dev/ttyS(n-1); a negative port opens USB but sends as on a serial
 *                           device: one write, not cut into 1024-byte reports
 * @param baud               bits per second on a serial port
 * @param[in] command        `commandLen` bytes; NULL on port 0 is GWQ_SEND_FAILED
 * @param commandLen         bytes of the command; on port 0, 0 means its length as text
 * @param[out] answer        pass it zeroed, with 1024 bytes of room beyond `*answerLen`: a USB read
 *                           keeps the report that reaches the maximum whole. May be NULL: nothing
 *                           is read. After a failed read it may contain what arrived
 * @param[in,out] answerLen  in: most bytes to read; out: length of the answer as text (up to its
 *                           first zero byte); untouched on failure. May be NULL: nothing is read
 * @param timeout_ms         cut down to whole seconds; below 1000 the read ends when the clock's
 *                           second changes
 * @retval GWQ_OK           success
 * @retval GWQ_NO_ANSWER    (-2) nothing was read
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED  (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED    (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int TransProcForInfo(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                             int timeout_ms);

/**
 * Sends a command and reads nothing.
 *
 * @param port           0 is USB, trying both identities; n of 1 or more the serial device
 *                       /dev/ttyS(n-1); a negative port opens USB but sends as on a serial device:
 *                       one write, not cut into 1024-byte reports
 * @param baud           bits per second on a serial port
 * @param[in] command    `commandLen` bytes; NULL on port 0 is GWQ_SEND_FAILED
 * @param commandLen     bytes of the command; on port 0, 0 means its length as text
 * @param[in] answer     ignored; may be NULL
 * @param[in] answerLen  ignored; may be NULL
 * @param timeout_ms     longest wait on a serial port until the next byte is taken, cut down to
 *                       whole seconds
 * @retval GWQ_OK           success
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) cancelled between two reports; or a command was not sent whole
 * @since 1.0.0
 */
GWQ_API int TransProcOnlyWrite(int port, int baud, char* command, int commandLen, char* answer,
                               int* answerLen, int timeout_ms);

/**
 * Sends a command and reads nothing.
 *
 * @param port         0 is USB, trying both identities; n of 1 or more the serial device
 *                     /dev/ttyS(n-1); a negative port opens USB but sends as on a serial device:
 *                     one write, not cut into 1024-byte reports
 * @param baud         bits per second on a serial port
 * @param[in] command  `commandLen` bytes; NULL on port 0 is GWQ_SEND_FAILED
 * @param commandLen   bytes of the command; on port 0, 0 means its length as text
 * @param timeout_ms   longest wait on a serial port until the next byte is taken, cut down to whole
 *                     seconds
 * @retval GWQ_OK           success
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) cancelled between two reports; or a command was not sent whole
 * @since 1.0.0
 */
GWQ_API int TransProcOnlySend(int port, int baud, char* command, int commandLen, int timeout_ms);

/**
 * Reads until the answer ends with `F`, without sending.
 *
 * @param port               0 is USB, trying both identities; n of 1 or more the serial device
 *                           /dev/ttyS(n-1); a negative port opens USB but sends as on a serial
 *                           device: one write, not cut into 1024-byte reports
 * @param baud               bits per second on a serial port
 * @param[out] answer        pass it zeroed, with 1024 bytes of room beyond `*answerLen`: a USB read
 *                           keeps the report that reaches the maximum whole. May be NULL: nothing
 *                           is read. After a failed read it may contain what arrived
 * @param[in,out] answerLen  in: most bytes to read; out: length of the answer as text (up to its
 *                           first zero byte); untouched on failure. May be NULL: nothing is read
 * @param timeout_ms         cut down to whole seconds; below 1000 the read ends when the clock's
 *                           second changes
 * @retval GWQ_OK           success
 * @retval GWQ_NO_ANSWER    (-2) nothing was read
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_READ_FAILED  (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED    (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int TransProcOnlyRead(int port, int baud, char* answer, int* answerLen, int timeout_ms);

/**
 * Makes the running transaction give up.
 *
 * A waiting read on USB ends with GWQ_CANCELLED, on a serial port as any failed read; a command
 * that is being sent in several reports ends with GWQ_SEND_FAILED. At any other moment the request
 * is lost: a transaction clears it when it starts, and so does its read. While a request is
 * pending, further calls do nothing. Any thread; never blocks.
 *
 * @retval GWQ_OK  always
 * @since 1.0.0
 */
GWQ_API int CancelRead(void);

/**
 * Asks a running file upload to stop: sets `g_CancelWrite`.
 *
 * Any thread; never blocks.
 *
 * @since 1.0.0
 */
GWQ_API void CancelWrite(void);

/**
 * The stop flag of file uploads; an upload clears it when it starts.
 *
 * @since 1.0.0
 */
GWQ_API extern int g_CancelWrite;

/**
 * Predicate: accepts an answer with its announced length.
 *
 * The answer has at least 7 bytes, and the big-endian 16-bit value in bytes 5 and 6 is at most
 * `count` - 7.
 *
 * @param[in] data  what was read so far, `count` bytes
 * @param count     number of bytes
 * @return 0 when the answer is complete, else 1
 * @since 1.0.0
 */
GWQ_API int EndOfRead(unsigned char* data, int count);

/**
 * Predicate: accepts an answer that, as text, ends with ETX (0x03).
 *
 * @param[in] data  what was read so far, `count` bytes and a zero byte after them; must not be NULL
 * @param count     number of bytes
 * @return 0 when the answer is complete, else 1
 * @since 1.0.0
 */
GWQ_API int EndOfRead2(unsigned char* data, int count);

/**
 * Predicate: accepts an answer that, as text, ends with `F`.
 *
 * @param[in] data  what was read so far, `count` bytes and a zero byte after them; must not be NULL
 * @param count     number of bytes
 * @return 0 when the answer is complete, else 1
 * @since 1.0.0
 */
GWQ_API int EndOfRead3(unsigned char* data, int count);

/**
 * Predicate: accepts any byte.
 *
 * @param[in] data  what was read so far, `count` bytes
 * @param count     number of bytes
 * @return 0 when the answer is complete, else 1
 * @since 1.0.0
 */
GWQ_API int EndOfCondition4(unsigned char* data, int count);

/**
 * Predicate: accepts an answer whose byte at `count` - 1 is CR.
 *
 * @param[in] data  what was read so far, `count` bytes
 * @param count     number of bytes
 * @return 0 when the answer is complete, else 1
 * @since 1.0.0
 */
GWQ_API int EndOfConditionD(unsigned char* data, int count);

GWQ_C_END

#ifdef __cplusplus
#pragma push_macro("min") /* of a host that has one */
#undef min

/**
 * Returns the smaller of two numbers. C++ linkage.
 *
 * @param a  any number
 * @param b  any number
 * @return the smaller one
 * @since 1.0.0
 */
GWQ_API int min(int a, int b);
#pragma pop_macro("min")
#endif

#endif
