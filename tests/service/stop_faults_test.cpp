// Stops and resets of a service with each system call failing, the process killed at each, and a
// signal at each moment.
#include <sys/syscall.h>

#include "faults_support.h"

namespace {

using fairlead_test::run_traced;
using fairlead_test::settled;
using fairlead_test::Traced;
using fairlead_test::TracePlan;

int stop_it() { return ServiceStop("net"); }
int reset_it() { return ServiceReset("net"); }

class StopTest : public fairlead_test::ServiceFaultsTest {};

class StopFaultsTest : public StopTest, public testing::WithParamInterface<bool> {
 protected:
  bool resets() const { return GetParam(); }

  // Its end may have been seen by whoever traced the call.
  static bool is_gone(pid_t daemon) {
    for (int round = 0; round < 5000; ++round) {
      waitpid(daemon, nullptr, WNOHANG);
      if (kill(daemon, 0) != 0) return true;
      usleep(1000);
    }
    return false;
  }

  Traced ended(const TracePlan& plan, const std::string& what) {
    const pid_t daemon = start("net");
    const Traced seen = disturbed(plan, resets() ? reset_it : stop_it, what);
    const bool done = seen.ended.status == kDone;
    EXPECT_TRUE(!done || is_gone(daemon)) << what;
    EXPECT_EQ("null", done && !resets() ? info("net") : "null") << what;
    expect_one_daemon_or_none(what);
    return seen;
  }
};

TEST_P(StopFaultsTest, every_failing_call_leaves_one_daemon_or_none) {
  int met = 0;
  for (int nth = 1;; ++nth) {
    const int error = error_of(nth);
    const std::string what =
        "call " + std::to_string(nth) + " fails with " + strerrorname_np(error);
    const Traced seen = ended({.nth = nth, .error = error}, what);
    if (!seen.met && seen.stops < nth) break;
    EXPECT_EQ(0, seen.ended.signal) << what;
    met += seen.met;
  }
  EXPECT_GT(met, 4);
}

TEST_P(StopFaultsTest, at_which_the_process_dies_leaves_one_daemon_or_none) {
  int stop = 1;
  while (ended({.nth = stop, .signal = SIGKILL}, "killed at stop " + std::to_string(stop)).met)
    stop += resets() ? 5 : 1;
  EXPECT_GT(stop, 10);
}

TEST_P(StopFaultsTest, no_signal_keeps_a_service_from_its_end) {
  with_each_signal([this](int number) {
    for (int stop = 1;; stop += resets() ? 23 : 5) {
      const std::string what = "stop " + std::to_string(stop) + " brings " + sigabbrev_np(number);
      const Traced seen = ended({.nth = stop, .signal = number, .to_caller = true}, what);
      EXPECT_EQ(kDone, seen.ended.status) << what << seen.ended.err;
      if (!seen.met) break;
    }
  });
}

// Between any two calls of one process another one ends the service and starts it anew. A daemon
// whose record was removed would run on, and nobody would find it.
TEST_P(StopFaultsTest, at_the_same_time_as_others_leaves_no_daemon_without_a_record) {
  int nth = 1;
  for (int made = nth; made >= nth; nth += resets() ? 7 : 1) {
    start("net");
    made = 0;
    const auto others_meanwhile = [&](const fairlead_test::CallMade&) {
      if (++made != nth) return;
      stop_it();
      ServiceStart("net", "test", "wait", nullptr);
    };
    run_traced({.watch = others_meanwhile}, resets() ? reset_it : stop_it, [] { return 0; });
    const bool found = pid("net") > 0;
    EXPECT_EQ(found ? 1u : 0u, settled().size()) << "after call " << nth;
    expect_one_daemon_or_none("after call " + std::to_string(nth));
  }
  EXPECT_GT(nth, 10);
}

// Whenever a daemon is ended another one is started in time, until the stop gives up.
TEST_F(StopTest, that_always_meets_a_new_daemon_leaves_it_its_record) {
  start("net");
  const auto start_another = [](const fairlead_test::CallMade& call) {
    if (call.number != SYS_kill) return;
    const auto ended = static_cast<pid_t>(call.arguments[0]);
    EXPECT_TRUE(fairlead_test::eventually([&] { return pid("net") != ended; }));
    start("net");
  };
  const Traced seen = run_traced(
      {.watch = start_another}, [] { stop_it(); }, [] { return 0; });
  EXPECT_EQ(0, seen.ended.status);
  EXPECT_GT(pid("net"), 0);
  EXPECT_EQ(1u, settled().size());
  expect_one_daemon_or_none("after all");
}

INSTANTIATE_TEST_SUITE_P(Every, StopFaultsTest, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& resets) {
                           return resets.param ? "reset" : "stop";
                         });

}  // namespace
