// A sanitized build reports what it is for, inside the private root and in forked children too.
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "support/child.h"
#include "support/device_test.h"

namespace {

using fairlead_test::Ended;
using fairlead_test::run_child;

class SanitizerTest : public fairlead_test::DeviceTest {};

// Hides from the compiler what a test does wrong on purpose.
template <class T>
T unknown(T value) {
  __asm__ volatile("" : "+r"(value));
  return value;
}

TEST_F(SanitizerTest, a_lost_block_fails_the_process_at_its_exit) {
  const Ended child = run_child([] {
    unknown(strdup("lost"));
    exit(0);
  });
  EXPECT_NE(0, child.status);
  EXPECT_NE(std::string::npos, child.err.find("LeakSanitizer")) << child.err;
}

TEST_F(SanitizerTest, a_write_behind_a_block_ends_the_process) {
  const Ended child = run_child([] {
    char* const block = unknown(static_cast<char*>(malloc(10)));
    block[unknown(10)] = 1;
    free(block);
  });
  EXPECT_NE(std::string::npos, child.err.find("heap-buffer-overflow")) << child.err;
}

TEST_F(SanitizerTest, undefined_behaviour_ends_the_process) {
  const Ended child = run_child([] { return unknown(0x7fffffff) + unknown(1); });
  EXPECT_NE(std::string::npos, child.err.find("signed integer overflow")) << child.err;
}

}  // namespace
