// A small file, open and locked until the end of the block.
#pragma once

#include <sys/types.h>

#include "base/descriptor.h"
#include "fairlead/misc/process.h"

namespace fairlead {

// How long every read or write of a small file waits for another process.
inline constexpr int kLockSeconds = 1;

class LockedFile {
 public:
  LockedFile(const char* path, int flags, mode_t mode = 0)
      : file_(lock_open(path, flags, mode, kLockSeconds)) {}

  explicit operator bool() const { return static_cast<bool>(file_); }
  int get() const { return file_.get(); }

 private:
  Descriptor file_;  // the lock goes with it, by one system call
};

}  // namespace fairlead
