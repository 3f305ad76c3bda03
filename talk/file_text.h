// The text of a small file, read under its lock.
#pragma once

#include <cerrno>

#include "base/owned.h"

namespace fairlead {

// Empty owner with errno of the failing step; EINVAL for an empty file.
OwnedText read_file_text(const char* path);

// Asked right after a file or its text gave no document: whether what was lacking is lacking for
// the moment only. Nothing is known about the file then, and a change that took it for absent would
// wipe it.
inline bool failed_for_the_moment() {
  return errno == ENOMEM || errno == EBUSY || errno == EMFILE || errno == ENFILE;
}

}  // namespace fairlead
