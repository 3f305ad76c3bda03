// Owns a stdio stream and closes it on every way out, with errno kept.
#pragma once

#include <fcntl.h>

#include <cstdio>
#include <memory>

#include "base/descriptor.h"
#include "base/errno_keeper.h"

namespace fairlead {

struct StreamCloser {
  void operator()(FILE* stream) const {
    ErrnoKeeper keep;
    fclose(stream);
  }
};

using Stream = std::unique_ptr<FILE, StreamCloser>;

// A file to be read, close-on-exec; empty with errno when it cannot be opened. Not by the "e" of
// fopen: uClibc-ng ignores it unless that option was built in.
inline Stream open_stream(const char* path) {
  Descriptor file(open(path, O_RDONLY | O_CLOEXEC));
  Stream stream(file ? fdopen(file.get(), "r") : nullptr);
  if (stream) file.release();
  return stream;
}

}  // namespace fairlead
