// Runs an action on a small stack, where recursion over a deep document would end the process.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <climits>
#include <cstddef>

namespace fairlead_test {

// The stack has `kib` KiB, of which the C library takes a few for the thread's own data; never less
// than the system's minimum. A sanitizer's frames are several times as large as plain ones.
template <class Action>
void run_on_small_stack(size_t kib, Action action) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  const size_t size = std::max(kib * 1024, static_cast<size_t>(PTHREAD_STACK_MIN));
  ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, size));
  pthread_t thread;
  const auto start = [](void* argument) -> void* {
    (*static_cast<Action*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(0, pthread_create(&thread, &attributes, start, &action));
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

}  // namespace fairlead_test
