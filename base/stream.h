// Owns a stdio stream and closes it on every way out, with errno kept.
#pragma once

#include <cstdio>
#include <memory>

#include "base/errno_keeper.h"

namespace fairlead {

struct StreamCloser {
  void operator()(FILE* stream) const {
    ErrnoKeeper keep;
    fclose(stream);
  }
};

using Stream = std::unique_ptr<FILE, StreamCloser>;

}  // namespace fairlead
