// The standard descriptors and streams of a tool.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace tools {

// A closed one would be taken by the next file that is opened, and the answer written into that.
// What stands in for it fails as a closed one does, and no child inherits it.
inline void occupy_closed_standard_descriptors() {
  for (int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(fd, F_GETFD) < 0)
      open("/dev/null", (fd == STDIN_FILENO ? O_WRONLY : O_RDONLY) | O_CLOEXEC);
}

// Writes out what is still buffered: 0, or the error that kept what was printed from being written.
// When an earlier write met it, as musl does at the end of a line, one more byte meets it again.
inline int flush_output() {
  errno = 0;
  const bool flushed = fflush(stdout) == 0;
  if (flushed && !ferror(stdout)) return 0;
  if (flushed && write(STDOUT_FILENO, "\n", 1) == 1) return EIO;
  return errno ? errno : EIO;
}

}  // namespace tools
