// The alarm of a timed wait, and the caller's own one.
#include "base/alarm_scope.h"

#include <unistd.h>

#include <chrono>
#include <optional>

#include "base/signal_scope.h"
#include "support/device_test.h"

namespace {

using fairlead::AlarmPause;
using fairlead::AlarmScope;
using fairlead::HandlerScope;
using fairlead::MaskScope;

volatile sig_atomic_t alarms = 0;
void count_alarm(int) { alarms = alarms + 1; }

bool alarms_reach(int wanted) {
  for (int round = 0; round < 20000 && alarms < wanted; ++round) usleep(1000);
  return alarms >= wanted;
}

void arm(itimerval timer) { setitimer(ITIMER_REAL, &timer, nullptr); }

itimerval armed() {
  itimerval timer;
  getitimer(ITIMER_REAL, &timer);
  return timer;
}

class AlarmScopeTest : public fairlead_test::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    alarms = 0;
    handler_.emplace(SIGALRM, count_alarm);
  }
  void TearDown() override {
    arm({});
    handler_.reset();
    DeviceTest::TearDown();
  }
  std::optional<HandlerScope> handler_;
};

TEST_F(AlarmScopeTest, alarm_comes_after_its_seconds_and_then_again_and_again) {
  const auto begin = std::chrono::steady_clock::now();
  AlarmScope alarm(1);
  EXPECT_TRUE(alarms_reach(1));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(990));
  EXPECT_TRUE(alarms_reach(4));
}

TEST_F(AlarmScopeTest, alarm_ends_with_its_block) {
  { AlarmScope alarm(1000); }
  EXPECT_EQ(0, armed().it_value.tv_sec);
  EXPECT_EQ(0, armed().it_value.tv_usec);
  EXPECT_EQ(0, armed().it_interval.tv_usec);
}

TEST_F(AlarmScopeTest, pause_of_no_alarm_leaves_none) {
  { AlarmPause pause; }
  EXPECT_EQ(0, armed().it_value.tv_sec);
  EXPECT_EQ(0, armed().it_value.tv_usec);
}

TEST_F(AlarmScopeTest, pause_takes_the_callers_alarm_off_and_puts_the_rest_back) {
  arm({{7, 5}, {100, 0}});
  {
    AlarmPause pause;
    EXPECT_EQ(0, armed().it_value.tv_sec);
    usleep(50000);
  }
  const itimerval rest = armed();
  EXPECT_LE(rest.it_value.tv_sec, 99);
  EXPECT_GE(rest.it_value.tv_sec, 60);
  EXPECT_EQ(7, rest.it_interval.tv_sec);
}

TEST_F(AlarmScopeTest, pause_counts_only_the_time_that_passed) {
  arm({{0, 0}, {0, 400000}});
  { AlarmPause pause; }
  EXPECT_EQ(0, alarms);
  EXPECT_TRUE(alarms_reach(1));
}

TEST_F(AlarmScopeTest, pause_fires_an_alarm_that_ran_out_meanwhile_once_and_late) {
  arm({{0, 0}, {0, 10000}});
  {
    AlarmPause pause;
    usleep(30000);
    EXPECT_EQ(0, alarms);
  }
  EXPECT_TRUE(alarms_reach(1));
  EXPECT_EQ(0, armed().it_value.tv_usec);
}

// As in a timed wait: the wait's own handler takes what was pending when the mask opened.
TEST_F(AlarmScopeTest, pause_keeps_a_blocked_alarm_pending_though_the_mask_opened) {
  MaskScope mask;
  mask.block_all();
  kill(getpid(), SIGALRM);
  {
    AlarmPause pause;
    HandlerScope own(SIGALRM, signal_handler);
    MaskScope inner;
    inner.let_through({SIGALRM});
  }
  sigset_t pending;
  sigpending(&pending);
  EXPECT_EQ(1, sigismember(&pending, SIGALRM));
  EXPECT_EQ(0, alarms);
  mask.put_back();
  EXPECT_EQ(1, alarms);
}

TEST_F(AlarmScopeTest, pause_sends_a_pending_alarm_once) {
  MaskScope mask;
  mask.block_all();
  kill(getpid(), SIGALRM);
  { AlarmPause pause; }
  mask.put_back();
  EXPECT_EQ(1, alarms);
}

TEST_F(AlarmScopeTest, both_keep_errno) {
  arm({{0, 0}, {100, 0}});
  {
    AlarmPause pause;
    AlarmScope alarm(1000);
    errno = ENOTTY;
  }
  EXPECT_EQ(ENOTTY, errno);
}

}  // namespace
