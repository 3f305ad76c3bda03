// The one way in which a broken precondition ends the process, alike on every C library.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fairlead {

[[noreturn]] __attribute__((cold, noinline)) inline void assertion_failed(const char* function,
                                                                          const char* text) {
  fprintf(stderr, "%s: Assertion `%s' failed.\n", function, text);
  abort();
}

}  // namespace fairlead

// The texts are part of the interface, in the form a C preprocessor gives NULL.
#define NODE_ASSERT_TEXT(condition, text) \
  ((condition) ? static_cast<void>(0) : fairlead::assertion_failed(__func__, text))
#define NODE_ASSERT(condition) NODE_ASSERT_TEXT(condition, #condition)
#define NODE_ASSERT_GIVEN(pointer) NODE_ASSERT_TEXT(pointer, #pointer " != ((void *)0)")
#define NODE_ASSERT_NULL(pointer) NODE_ASSERT_TEXT(!(pointer), #pointer " == ((void *)0)")
