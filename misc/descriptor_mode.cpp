// Whether reads and writes of a descriptor wait.
#include <fcntl.h>

#include <cerrno>

#include "base/fail.h"
#include "fairlead/misc/process.h"

namespace {

int change_status_flags(int fd, int set, int cleared) {
  if (fd < 0) return fairlead::fail<int>(EINVAL);
  const int flags = fcntl(fd, F_GETFL);
  if (flags < 0) return 0;
  return fcntl(fd, F_SETFL, (flags | set) & ~cleared) == 0 ? 1 : 0;
}

}  // namespace

extern "C" int fd_nonblock(int fd) { return change_status_flags(fd, O_NONBLOCK, 0); }

extern "C" int fd_block(int fd) { return change_status_flags(fd, 0, O_NONBLOCK); }
