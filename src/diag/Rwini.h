/* Reads one value from an INI file, and trims text. White space is blank, tab, CR, LF, vertical
 * tab and form feed. */
#ifndef GWQ_DIAG_RWINI_H
#define GWQ_DIAG_RWINI_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Looks up `key` in `[section]` of an INI file.
 *   file     in; path; on failure to open it, a line goes to standard output
 *   section  in; at most 29 characters, case-sensitive
 *   key      in; at most 31 characters, case-sensitive
 *   value    out; at least 100 bytes; the value without white space around it (a value of blanks only as
 *            it is), untouched if the key is not found or nothing follows its "="
 * Returns 0 when the key was found, else -1 (also for a NULL argument).
 *
 * A key ends at "=", "|", "^", blank or tab; "#" begins a comment line inside the section. Lines
 * are read in pieces of 99 bytes. */
GWQ_API int GetProfileString(const char* file, const char* section, const char* key, char* value);

/* Copies `szInput` to `szOutput` without leading (l_), trailing (r_) or any outer (a_) white space.
 *   szOutput  out; at least the input's length plus 1; not `szInput`
 *   szInput   in
 * Returns szOutput. A NULL argument, or the same pointer twice, ends the process with an assertion
 * message, in every build. */
GWQ_API char* l_trim(char* szOutput, const char* szInput);
GWQ_API char* r_trim(char* szOutput, const char* szInput);
GWQ_API char* a_trim(char* szOutput, const char* szInput);

GWQ_C_END

#endif
