/* SPDX-License-Identifier: MIT */
/**
 * @file
 * The daily diagnostic log.
 *
 * Off until the library is loaded beside a `GWQ_LOG.ini` whose section `Gwq` has `Log=1`, or until
 * SetDebugFlag(1). Each call appends one line to `Log/Gwq_Volkarn/VK_YYYYMMDD.log` in the library's
 * own directory:
 *
 * @code{.unparsed}
 *     09:41:07(052)  message CR LF
 * @endcode
 *
 * Texts in the log are GBK. The log may contain PINs, keys and account numbers in clear: only the
 * owner may read its files (mode 0600); one that another user made, or a symbolic link in its
 * place, is not written to.
 *
 * @remark Any thread, except pGetLogPath().
 */
#ifndef GWQ_DIAG_LOG_H
#define GWQ_DIAG_LOG_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Switches the log on or off.
 *
 * @param flag  0 off, anything else on
 * @since 1.0.0
 */
GWQ_API void SetDebugFlag(unsigned int flag);

/**
 * Writes one line if the log is on, printf-style.
 *
 * A message ends at its first zero byte, after 4095 bytes, and where a value cannot be converted. A
 * line that cannot be written (no directory, full disk) is dropped.
 *
 * @param[in] format  printf's format; must not be NULL; the values that it names follow
 * @return 0 always
 * @since 1.0.0
 */
GWQ_API int ICC_DPrintLogToFile(const char* format, ...) __attribute__((format(printf, 1, 2)));

/**
 * Writes one line with bytes in upper-case hexadecimal if the log is on: `label  LEN=3   HEX:
 * 1B5B30`.
 *
 * @param[in] label  NULL leaves out the label and its two blanks
 * @param[in] data   `len` bytes; NULL writes no bytes
 * @param len        number of bytes; printed as it is, none are written when it is below 1
 * @since 1.0.0
 */
GWQ_API void ICC_DPrintDataHexToFile(const char* label, const unsigned char* data, int len);

/**
 * Writes the directory of the library's file, with its trailing `/`.
 *
 * @param[out] path  at least 256 bytes; empty when the directory does not fit; NULL changes nothing
 * @since 1.0.0
 */
GWQ_API void GetModuleCurPath(char* path);

/**
 * Writes the full path of a file in the library's directory.
 *
 * @param[in] name   relative name; may be NULL
 * @param[out] path  at least 256 bytes and the length of the name, terminated; empty when the
 *                   directory alone does not fit into 256; may be NULL
 * @param size       ignored
 * @return the length of the path; 0 for NULL
 * @since 1.0.0
 */
GWQ_API int GetFullPath(const char* name, char* path, int size);

/**
 * Returns the path of today's log file, and makes the log's directories if they are missing.
 *
 * One thread at a time.
 *
 * @return the path, in a buffer of the library that every call overwrites
 * @since 1.0.0
 */
GWQ_API char* pGetLogPath(void);

/**
 * Counts days in the Gregorian calendar.
 *
 * Nothing is range-checked: month 0 counts like month 1, day 0 is the day before day 1.
 *
 * @param year   year of the date
 * @param month  month of the date
 * @param day    day of the date
 * @return the days from 1 January of year 1, which is day 0
 * @since 1.0.0
 */
GWQ_API int GetAbsDays(int year, int month, int day);

/**
 * Prints `DelOutTimeLogFile` to standard output and removes the log files older than 15 days.
 *
 * Keep nothing else in the log's directory: a regular file of another name is judged by the date of
 * the file read before it, and removed if there was none.
 *
 * @since 1.0.0
 */
GWQ_API void DelOutTimeLogFile(void);

/**
 * Writes the directory for temporary files, `/tmp`.
 *
 * @param size       ignored
 * @param[out] path  at least 5 bytes; NULL changes nothing
 * @since 1.0.0
 */
GWQ_API void GetTempPath(int size, char* path);

GWQ_C_END

#endif
