// A small file, open and locked until the end of the block.
#pragma once

#include <sys/types.h>

#include "base/errno_keeper.h"
#include "fairlead/misc/process.h"

namespace fairlead {

// How long every read or write of a small file waits for another process.
inline constexpr int kLockSeconds = 1;

class LockedFile {
 public:
  LockedFile(const char* path, int flags, mode_t mode = 0)
      : fd_(lock_open(path, flags, mode, kLockSeconds)) {}
  ~LockedFile() {
    ErrnoKeeper keep;
    if (fd_ >= 0) lock_close(fd_);
  }
  LockedFile(const LockedFile&) = delete;
  LockedFile& operator=(const LockedFile&) = delete;

  explicit operator bool() const { return fd_ >= 0; }
  int get() const { return fd_; }

 private:
  int fd_;
};

}  // namespace fairlead
