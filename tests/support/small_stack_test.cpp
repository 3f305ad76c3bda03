// The small stack: an action runs on it, and recursion that does not fit ends the process.
#include "support/small_stack.h"

#include <csignal>
#include <cstring>

#include "support/child.h"
#include "support/device_test.h"

namespace {

using fairlead_test::Ended;
using fairlead_test::run_child;
using fairlead_test::run_on_small_stack;

class SmallStackTest : public fairlead_test::DeviceTest {};

// Uses about `kib` KiB of stack.
__attribute__((noinline)) size_t recurse(size_t kib) {
  volatile char frame[1024];
  frame[0] = 1;
  return kib == 0 ? 0 : recurse(kib - 1) + static_cast<size_t>(frame[0]);
}

TEST_F(SmallStackTest, what_fits_runs) {
  size_t depth = 0;
  run_on_small_stack(256, [&] { depth = recurse(16); });
  EXPECT_EQ(16u, depth);
}

TEST_F(SmallStackTest, what_does_not_fit_ends_the_process) {
  const Ended child = run_child([] {
    signal(SIGSEGV, SIG_DFL);
    run_on_small_stack(64, [] { recurse(4096); });
  });
  EXPECT_EQ(SIGSEGV, child.signal);
}

}  // namespace
