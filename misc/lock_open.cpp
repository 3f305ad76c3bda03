// A file opened and locked in one step.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "base/descriptor.h"
#include "base/fail.h"
#include "fairlead/misc/process.h"

namespace {

using fairlead::Descriptor;
using fairlead::fail;

constexpr int kWriteLock = 1;
constexpr int kReadLock = 0;

}  // namespace

extern "C" int lock_open(const char* path, int flags, mode_t mode, int seconds) {
  if (!path || !*path) return fail(EINVAL, -1);
  Descriptor file(open(path, flags | O_CLOEXEC, mode));
  if (!file) return -1;
  const int type = (flags & O_ACCMODE) == O_RDONLY ? kReadLock : kWriteLock;
  return lockfd_set(file.get(), type, 0, SEEK_SET, 0, seconds) ? file.release() : -1;
}

extern "C" int lock_close(int fd) {
  if (fd < 0) return fail(EINVAL, -1);
  const bool freed = lockfd_free(fd, kWriteLock, 0, SEEK_SET, 0) == 1;
  const int free_error = errno;
  close(fd);
  if (!freed) errno = free_error;
  return 0;
}
