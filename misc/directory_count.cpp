// How many entries a directory has.
#include <cstring>

#include "base/directory.h"
#include "base/fail.h"
#include "fairlead/misc/files.h"

extern "C" int dir_sum(const char* directory) {
  if (!directory) return fairlead::fail(EINVAL, -1);
  fairlead::Directory stream(directory);
  if (!stream) return -1;
  int sum = 0;
  while (const char* name = stream.next())
    if (*name && strcmp(name, ".") != 0 && strcmp(name, "..") != 0) ++sum;
  return sum;
}
