// The text of a small file, read under its lock.
#pragma once

#include "base/owned.h"

namespace fairlead {

// Empty owner with errno of the failing step; an empty file fails too and leaves errno alone.
OwnedText read_file_text(const char* path);

}  // namespace fairlead
