// What comes about in other processes, and is told by nobody.
#pragma once

#include <unistd.h>

namespace fairlead_test {

// Looks until the condition holds; false when it does not for a minute or more.
template <class Condition>
bool eventually(Condition condition) {
  for (int looks = 0; looks < 60000; ++looks) {
    if (condition()) return true;
    usleep(1000);
  }
  return false;
}

}  // namespace fairlead_test
