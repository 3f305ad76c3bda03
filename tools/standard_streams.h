// The standard descriptors of a tool.
#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace tools {

// A closed one would be taken by the next file that is opened, and the answer written into that.
// What stands in for it fails as a closed one does, and no child inherits it.
inline void occupy_closed_standard_descriptors() {
  for (int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(fd, F_GETFD) < 0)
      open("/dev/null", (fd == STDIN_FILENO ? O_WRONLY : O_RDONLY) | O_CLOEXEC);
}

}  // namespace tools
