// Whether two looks at files have seen the same one.
#pragma once

#include <sys/stat.h>

namespace fairlead {

inline bool same_file(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace fairlead
