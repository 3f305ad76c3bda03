// The one way in which a broken precondition ends the process, alike on every C library.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fairlead {

[[noreturn]] __attribute__((cold, noinline)) inline void assertion_failed(const char* place,
                                                                          const char* text) {
  fprintf(stderr, "%s: Assertion `%s' failed.\n", place, text);
  abort();
}

}  // namespace fairlead
