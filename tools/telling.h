// Which errno says why the store could not read or write.
#pragma once

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace tools {

// Any other may be left from a look-up on the way, or says that nothing is there.
inline bool telling(int error) {
  constexpr int kErrors[] = {EACCES, EPERM, EROFS,  ENOSPC, EDQUOT, EBUSY,
                             EIO,    EFBIG, EMFILE, ENFILE, ENOMEM};
  return std::find(std::begin(kErrors), std::end(kErrors), error) != std::end(kErrors);
}

}  // namespace tools
