// A directory stream and its names.
#pragma once

#include <dirent.h>

#include "base/errno_keeper.h"

namespace fairlead {

class Directory {
 public:
  explicit Directory(const char* path) : stream_(opendir(path)) {}
  ~Directory() {
    ErrnoKeeper keep;
    if (stream_) closedir(stream_);
  }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  explicit operator bool() const { return stream_ != nullptr; }

  // The next name in the order the file system yields, or null at the end.
  const char* next() {
    const dirent* entry = readdir(stream_);
    return entry ? entry->d_name : nullptr;
  }

  // The same without empty names and those that begin with ".".
  const char* next_visible() {
    const char* name = next();
    while (name && (name[0] == '\0' || name[0] == '.')) name = next();
    return name;
  }

 private:
  DIR* stream_;
};

}  // namespace fairlead
