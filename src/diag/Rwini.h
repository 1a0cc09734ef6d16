/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Reads one value from an INI file, and trims text. White space is blank, tab, CR, LF, vertical tab
 * and form feed.
 */
#ifndef GWQ_DIAG_RWINI_H
#define GWQ_DIAG_RWINI_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Reads the value of `key` in the section `section` of an INI file.
 *
 * A key ends at `=`, `|`, `^`, blank or tab; `#` begins a comment line inside the section. Lines
 * are read in pieces of 99 bytes.
 *
 * @param[in] file     path; when it cannot be opened, a line goes to standard output
 * @param[in] section  at most 29 characters, case-sensitive
 * @param[in] key      at most 31 characters, case-sensitive
 * @param[out] value   at least 100 bytes; the value without white space around it (a value of
 *                     blanks only as it is); untouched if the key is not found or nothing follows
 *                     its `=`
 * @return 0 when the key was found; -1 if not, or for a NULL argument
 * @since 1.0.0
 */
GWQ_API int GetProfileString(const char* file, const char* section, const char* key, char* value);

/**
 * Copies a text without its leading white space.
 *
 * A NULL argument, or the same pointer twice, ends the process with an assertion message, in every
 * build.
 *
 * @param[out] szOutput  at least the length of the input plus 1; not `szInput`
 * @param[in] szInput    the text
 * @return `szOutput`
 * @since 1.0.0
 */
GWQ_API char* l_trim(char* szOutput, const char* szInput);

/**
 * Copies a text without its trailing white space.
 *
 * A NULL argument, or the same pointer twice, ends the process with an assertion message, in every
 * build.
 *
 * @param[out] szOutput  at least the length of the input plus 1; not `szInput`
 * @param[in] szInput    the text
 * @return `szOutput`
 * @since 1.0.0
 */
GWQ_API char* r_trim(char* szOutput, const char* szInput);

/**
 * Copies a text without its leading and trailing white space.
 *
 * A NULL argument, or the same pointer twice, ends the process with an assertion message, in every
 * build.
 *
 * @param[out] szOutput  at least the length of the input plus 1; not `szInput`
 * @param[in] szInput    the text
 * @return `szOutput`
 * @since 1.0.0
 */
GWQ_API char* a_trim(char* szOutput, const char* szInput);

GWQ_C_END

#endif
