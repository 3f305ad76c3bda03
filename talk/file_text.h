// The text of a small file, read under its lock.
#pragma once

#include <cerrno>

#include "base/owned.h"

namespace fairlead {

// Empty owner with errno of the failing step; EINVAL for an empty file.
OwnedText read_file_text(const char* path);

// Asked right after a file or its text gave no document: whether it is still unknown what the file
// holds, because it could not be read or memory ran out. Known is a file that is missing (ENOENT)
// or damaged (EINVAL). A change that took all others for absent would wipe them.
inline bool content_unknown() { return errno != ENOENT && errno != EINVAL; }

}  // namespace fairlead
