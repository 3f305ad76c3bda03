// What this process has open.
#pragma once

#include <fcntl.h>

#include <cstdlib>

#include "base/directory.h"
#include "base/errno_keeper.h"

namespace fairlead {

// Shows each open descriptor to `visit` until that returns true.
template <class Visit>
void visit_descriptors(Visit visit) {
  constexpr int kUsualLimit = 1024;
  const ErrnoKeeper keep;
  Directory open_ones("/proc/self/fd");
  if (open_ones) {
    while (const char* number = open_ones.next_visible())
      if (visit(atoi(number))) return;
    return;
  }
  // Nothing mounted there, or no descriptor left to look with.
  for (int fd = 0; fd < kUsualLimit; ++fd)
    if (fcntl(fd, F_GETFD) >= 0 && visit(fd)) return;
}

}  // namespace fairlead
