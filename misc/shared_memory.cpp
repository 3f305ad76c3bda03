// The files behind shared memory.
#include <fcntl.h>
#include <unistd.h>

#include "base/fail.h"
#include "fairlead/misc/files.h"

extern "C" int sm_open(const char* path, int flags, mode_t mode) {
  if (!path) return fairlead::fail(EINVAL, -1);
  return open(path, flags | O_CLOEXEC, mode);
}

extern "C" int sm_unlink(const char* path) {
  if (!path) return fairlead::fail(EINVAL, -1);
  return unlink(path);
}
