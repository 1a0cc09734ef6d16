/* The daily diagnostic log.
 *
 * Off until the library is loaded beside a GWQ_LOG.ini whose section [Gwq] holds Log=1, or until
 * SetDebugFlag(1). Each call appends one line to Log/Gwq_Volkarn/VK_YYYYMMDD.log under the
 * library's own directory:
 *
 *     09:41:07(052)  message CR LF
 *
 * Texts in the log are GBK. The log may hold PINs, keys and account numbers in clear: its files are their owner's alone
 * (mode 0600); one that another user made, or a symbolic link in its place, is not written to.
 * All functions here but pGetLogPath may be called from any thread.
 */
#ifndef GWQ_DIAG_LOG_H
#define GWQ_DIAG_LOG_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Switches the log.
 *   flag  0 off, anything else on */
GWQ_API void SetDebugFlag(unsigned int flag);

/* Writes one line if the log is on, printf-style; a message ends at its first zero byte and after 4095 bytes, and where
 * a value cannot be converted. A line that
 * cannot be written (no directory, full disk) is dropped. Returns 0 always.
 *   format  in; not NULL; the values that it names follow */
GWQ_API int ICC_DPrintLogToFile(const char* format, ...) __attribute__((format(printf, 1, 2)));

/* Writes one line with the bytes in upper-case hexadecimal if the log is on:
 * "label  LEN=3   HEX: 1B5B30".
 *   label  in; NULL leaves out the label and its two blanks
 *   data   in; `len` bytes; NULL writes no bytes
 *   len    count of bytes; printed as it is, none are written when it is below 1 */
GWQ_API void ICC_DPrintDataHexToFile(const char* label, const unsigned char* data, int len);

/* The directory of the library's file, with its trailing "/".
 *   path  out; at least 256 bytes; empty when the directory does not fit; NULL changes nothing */
GWQ_API void GetModuleCurPath(char* path);

/* The full path of a file in the library's directory.
 *   name  in; relative name; NULL gives 0
 *   path  out; at least 256 bytes and the length of the name, terminated; empty when the directory alone does not fit
 *         into 256; NULL gives 0
 *   size  not read
 * Returns the length of the path. */
GWQ_API int GetFullPath(const char* name, char* path, int size);

/* Makes the log's directories if they are missing and returns the path of today's log file, in a
 * buffer of the library that every call writes anew. One thread at a time. */
GWQ_API char* pGetLogPath(void);

/* Counts days in the Gregorian calendar. Nothing is range-checked: month 0 counts like month 1, day 0 is the
 * day before day 1.
 *   year, month, day  a date
 * Returns the days from 1 January of year 1 (day 0). */
GWQ_API int GetAbsDays(int year, int month, int day);

/* Prints "DelOutTimeLogFile" to standard output and removes the log files older than 15 days. Keep nothing
 * else in the log's directory: a regular file of another name is judged by the date of the file read before
 * it, and removed if there was none. */
GWQ_API void DelOutTimeLogFile(void);

/* The directory for temporary files, "/tmp".
 *   size  not read
 *   path  out; at least 5 bytes; NULL changes nothing */
GWQ_API void GetTempPath(int size, char* path);

GWQ_C_END

#endif
