// Keeps errno over whatever happens inside a block.
#pragma once

#include <cerrno>

namespace fairlead {

class ErrnoKeeper {
 public:
  ErrnoKeeper() : saved_(errno) {}
  // Not written when it is the same: its page may be shared with a child just forked.
  ~ErrnoKeeper() {
    if (errno != saved_) errno = saved_;
  }
  ErrnoKeeper(const ErrnoKeeper&) = delete;
  ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

 private:
  int saved_;
};

}  // namespace fairlead
