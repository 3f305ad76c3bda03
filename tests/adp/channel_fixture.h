// What the tests of child calls share: a SIGCHLD handler of the test's own, log lines, answers as
// text.
#pragma once

#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <string>

#include "fairlead/fairlead.h"
#include "support/capture.h"
#include "support/device_test.h"
#include "support/spelled.h"

namespace fairlead_test {

class ChannelTest : public DeviceTest {
 protected:
  void SetUp() override {
    // A child call leaves an empty handler where there was none; with one of our own the census can
    // compare.
    signal_register(SIGCHLD, count_signal);
    signals_ = 0;
    ASSERT_EQ(1, GlogOpen("test", LOG_MODE_CONSOLE, 7));
    DeviceTest::SetUp();
  }

  void TearDown() override {
    DeviceTest::TearDown();
    GlogClose();
    signal(SIGCHLD, SIG_DFL);
  }

  static void count_signal(int) { signals_ = signals_ + 1; }

  // What the action logs, its children included.
  template <class Action>
  std::string logged(Action action) {
    return capture(action).err;
  }

  static inline volatile int signals_ = 0;
};

// The memory of this process that is in use. What a sanitizer keeps of freed blocks counts as well.
inline size_t resident_bytes() {
#ifdef __GLIBC__
  malloc_trim(0);
#endif
  size_t total = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * static_cast<size_t>(getpagesize());
}

#ifdef FAIRLEAD_ADDRESS_SANITIZED
inline constexpr size_t kResidentSlack = 1 << 30;
#else
inline constexpr size_t kResidentSlack = 8 << 20;
#endif

}  // namespace fairlead_test
