// Children: how they ended, what they wrote, which expectations failed in them.
#include "support/child.h"

#include <gtest/gtest-spi.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "support/device_test.h"

namespace {

using fairlead_test::Child;
using fairlead_test::Ended;
using fairlead_test::Gate;
using fairlead_test::run_child;

class ChildTest : public fairlead_test::DeviceTest {};

TEST_F(ChildTest, status_is_the_value_returned) {
  EXPECT_EQ(7, run_child([] { return 7; }).status);
  EXPECT_EQ(0, run_child([] {}).status);
}

TEST_F(ChildTest, status_is_the_value_given_to_exit) {
  const Ended child = run_child([] { exit(-1); });
  EXPECT_EQ(255, child.status);
  EXPECT_EQ(0, child.signal);
}

TEST_F(ChildTest, signal_is_the_one_that_ended_it) {
  const Ended child = run_child([] { abort(); });
  EXPECT_EQ(SIGABRT, child.signal);
  EXPECT_EQ(-1, child.status);
}

TEST_F(ChildTest, output_is_kept_apart) {
  const Ended child = run_child([] {
    printf("out");
    fprintf(stderr, "err");
  });
  EXPECT_EQ("out", child.out);
  EXPECT_EQ("err", child.err);
}

TEST_F(ChildTest, an_expectation_that_fails_in_the_child_fails_the_test) {
  Child returning([] {
    EXPECT_EQ(1, 2) << "in the first";
    return 0;
  });
  EXPECT_NONFATAL_FAILURE(returning.wait(), "in the first");

  Child leaving([]() -> int {
    EXPECT_EQ(1, 2) << "in the second";
    exit(0);
  });
  EXPECT_NONFATAL_FAILURE(leaving.wait(), "in the second");
}

TEST_F(ChildTest, an_expectation_that_failed_before_the_child_is_ended_fails_the_test) {
  Gate failed;
  auto waiting = std::make_unique<Child>([&]() -> int {
    EXPECT_EQ(1, 2) << "in the last";
    failed.open();
    return pause();
  });
  EXPECT_TRUE(failed.wait());
  EXPECT_NONFATAL_FAILURE(waiting.reset(), "in the last");
}

TEST_F(ChildTest, a_gate_tells_when_the_child_is_there) {
  Gate ready, leave;
  Child child([&] {
    ready.open();
    return leave.wait() ? 3 : 4;
  });
  EXPECT_TRUE(ready.wait());
  leave.open();
  EXPECT_EQ(3, child.wait().status);
}

TEST_F(ChildTest, a_gate_that_stays_shut_times_out) { EXPECT_FALSE(Gate().wait(1)); }

TEST_F(ChildTest, a_running_child_takes_signals) {
  Gate never;
  Child child([&] { return never.wait() ? 0 : 1; });
  child.send(SIGTERM);
  EXPECT_EQ(SIGTERM, child.wait().signal);
}

TEST_F(ChildTest, a_child_nobody_waits_for_is_ended) {
  pid_t pid = 0;
  {
    Gate never;
    Child child([&] { return never.wait() ? 0 : 1; });
    pid = child.pid();
  }
  EXPECT_EQ(-1, kill(pid, 0));
}

}  // namespace
