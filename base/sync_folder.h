// Names in a folder, put on disk.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "base/descriptor.h"

namespace fairlead {

// Before it returns, what was made, renamed or removed in the folder can be undone by a power cut.
inline bool sync_folder(const char* path) {
  Descriptor folder(open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) return false;
  return fsync(folder.get()) == 0 ||
         errno == EINVAL;  // EINVAL: a file system that has nothing to sync there
}

}  // namespace fairlead
