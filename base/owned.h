// Owners of blocks from malloc, the only allocator that crosses the C interface.
#pragma once

#include <cstdlib>
#include <memory>

#include "base/errno_keeper.h"

namespace fairlead {

struct Freer {
  void operator()(void* block) const {
    ErrnoKeeper keep;
    free(block);
  }
};

template <class T>
using Owned = std::unique_ptr<T, Freer>;

using OwnedText = Owned<char>;

// A record with every byte 0, or an empty owner with errno ENOMEM.
template <class T>
Owned<T> zeroed() {
  return Owned<T>(static_cast<T*>(calloc(1, sizeof(T))));
}

}  // namespace fairlead
