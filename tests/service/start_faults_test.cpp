// Starts of a service with each system call failing, and each process on the way killed, in turn.
#include <set>

#include "service_support.h"
#include "support/traced.h"

namespace {

using fairlead_test::can_trace;
using fairlead_test::run_traced;
using fairlead_test::Traced;
using fairlead_test::TracePlan;

constexpr int kErrors[] = {EIO, ENOSPC, EMFILE, EINTR, EAGAIN, ENOMEM, EACCES};

class StartFaultsTest : public fairlead_test::ServiceTest {
 protected:
  void SetUp() override {
    ServiceTest::SetUp();
    if (!can_trace()) GTEST_SKIP() << "processes can't be traced here";
  }

  // One start with something done to it. Afterwards at most one daemon runs, and the service can be
  // ended and started as if nothing had happened.
  Traced disturbed(const TracePlan& plan, const std::string& what) {
    const Traced seen = run_traced(
        plan, [] { ServiceStart("net", "test", "wait", nullptr); }, [] { return 0; });
    const std::set<pid_t> daemons = settled();
    EXPECT_LE(daemons.size(), 1u) << what;
    const pid_t known = pid("net");
    EXPECT_TRUE(known <= 0 || daemons.count(known)) << what;
    EXPECT_EQ(known > 0 ? 0 : -1, ServiceStop("net")) << what;
    EXPECT_EQ(-SIGTERM, known > 0 ? end_of(known) : -SIGTERM) << what;
    for (const pid_t left : settled()) {
      kill(left, SIGKILL);  // it runs without a record, as it has logged
      end_of(left);
    }
    EXPECT_EQ("null", info("net")) << what;
    const pid_t daemon = start("net");
    EXPECT_EQ(0, ServiceStop("net")) << what;
    EXPECT_EQ(-SIGTERM, end_of(daemon)) << what;
    return seen;
  }

  // The daemons that run once everybody on the way to them has gone: they run the request tool.
  static std::set<pid_t> settled() {
    for (;;) {
      std::set<pid_t> daemons;
      bool on_the_way = false;
      for (const auto& [child, description] : fairlead_test::take_census().children) {
        if (description.ends_with("Z"))
          waitpid(child, nullptr, 0);
        else if (description.rfind("(he)", 0) == 0)
          daemons.insert(child);
        else
          on_the_way = true;
      }
      if (!on_the_way) return daemons;
      usleep(1000);
    }
  }
};

TEST_F(StartFaultsTest, every_failing_call_leaves_one_daemon_or_none) {
  int met = 0;
  for (int nth = 1;; ++nth) {
    const int error = kErrors[static_cast<size_t>(nth) % std::size(kErrors)];
    const std::string what =
        "call " + std::to_string(nth) + " fails with " + strerrorname_np(error);
    const Traced seen = disturbed({.nth = nth, .error = error}, what);
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
    if (!disturbed({.nth = stop, .signal = SIGKILL}, what).met) break;
  }
  EXPECT_GT(stop, 20);
}

}  // namespace
