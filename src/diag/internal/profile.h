// SPDX-License-Identifier: MIT
// The INI reader without a line on standard output.
#pragma once

namespace gwq {

// As GetProfileString, of arguments that are not NULL, but silent when the file cannot be opened.
int ReadProfileQuietly(const char* file, const char* section, const char* key, char* value);

}  // namespace gwq
