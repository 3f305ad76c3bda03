// What a handle leads to, and the lock of its file.
#pragma once

#include <sys/file.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>

#include "base/errno_keeper.h"
#include "fairlead/state/gvalue.h"

namespace fairlead {

// Callers see the first part only.
struct OpenStore : gvalue_t {
  size_t mapped_size;
  bool writable;
  OpenStore* opened_before;
};

// Where the default store counts its values, which only ever become more; null while it is not
// open.
const int32_t* default_store_count();

// An exclusive lock of the whole file until the end of the block.
class FileLock {
 public:
  enum class Interrupted { kFails, kTriesAgain };

  FileLock(int fd, Interrupted interrupted) : fd_(fd) {
    do {
      held_ = flock(fd, LOCK_EX) == 0;
    } while (!held_ && errno == EINTR && interrupted == Interrupted::kTriesAgain);
  }
  ~FileLock() {
    ErrnoKeeper keep;
    if (held_) flock(fd_, LOCK_UN);
  }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  explicit operator bool() const { return held_; }

 private:
  int fd_;
  bool held_ = false;
};

}  // namespace fairlead
