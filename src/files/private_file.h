// Files under names that everyone knows, in a directory that everyone may write to.
#pragma once

#include "files/file.h"

namespace gwq {

// Removes what stands at `path`, follows no symbolic link, and creates an empty file that only this user can read and
// write. Null when that is not possible, such as for a name that another user has taken.
File CreatePrivateFile(const char* path);

// The same for a file that is opened by its name afterwards, as PullFile does. Where only the owner of a file may
// remove it, as in /tmp, nobody can put another in its place.
bool PreparePrivateFile(const char* path);

}  // namespace gwq
