// Starts of a service with each system call failing, each process on the way killed, and a signal
// at each moment.
#include "faults_support.h"

namespace {

using fairlead_test::Traced;
using fairlead_test::TracePlan;

class StartFaultsTest : public fairlead_test::ServiceFaultsTest {
 protected:
  static int start_it() { return ServiceStart("net", "test", "wait", nullptr); }

  static Traced started(const TracePlan& plan, const std::string& what) {
    const Traced seen = disturbed(plan, start_it, what);
    expect_one_daemon_or_none(what);
    return seen;
  }
};

TEST_F(StartFaultsTest, every_failing_call_leaves_one_daemon_or_none) {
  int met = 0;
  for (int nth = 1;; ++nth) {
    const int error = error_of(nth);
    const std::string what =
        "call " + std::to_string(nth) + " fails with " + strerrorname_np(error);
    const Traced seen = started({.nth = nth, .error = error}, what);
    if (!seen.met && seen.stops < nth) break;
    EXPECT_EQ(0, seen.ended.signal) << what;
    met += seen.met;
  }
  EXPECT_GT(met, 10);
}

TEST_F(StartFaultsTest, every_process_that_dies_on_the_way_leaves_one_daemon_or_none) {
  int stop = 1;
  for (;; stop += 7) {
    const std::string what = "killed at stop " + std::to_string(stop);
    if (!started({.nth = stop, .signal = SIGKILL}, what).met) break;
  }
  EXPECT_GT(stop, 20);
}

// The caller's handler runs, and the start goes on.
TEST_F(StartFaultsTest, no_signal_keeps_a_service_from_its_start) {
  with_each_signal([](int number) {
    for (int stop = 1;; stop += 23) {
      const std::string what = "stop " + std::to_string(stop) + " brings " + sigabbrev_np(number);
      const Traced seen =
          disturbed({.nth = stop, .signal = number, .to_caller = true}, start_it, what);
      EXPECT_EQ(kDone, seen.ended.status) << what << seen.ended.err;
      EXPECT_EQ(1u, fairlead_test::settled().size()) << what;
      EXPECT_GT(pid("net"), 0) << what;
      expect_one_daemon_or_none(what);
      if (!seen.met) break;
    }
  });
}

}  // namespace
