// What the tests of disturbed starts and stops share.
#pragma once

#include <functional>
#include <set>

#include "service_support.h"
#include "support/eventually.h"
#include "support/traced.h"

namespace fairlead_test {

// Whether a process is about to end: its memory has gone already.
inline bool is_ending(pid_t process) {
  return file_content("/proc/" + std::to_string(process) + "/cmdline").empty();
}

// The daemons that run once everybody on the way to them has gone: they run the request tool.
inline std::set<pid_t> settled() {
  std::set<pid_t> daemons;
  const auto look = [&daemons] {
    bool on_the_way = false;
    daemons.clear();
    for (const auto& [child, description] : take_census().children) {
      const bool gone = description.ends_with("Z");
      if (gone) waitpid(child, nullptr, 0);
      // One that has gone may have left a child of its own that was not looked at yet.
      if (!gone && description.rfind("(he)", 0) == 0 && !is_ending(child))
        daemons.insert(child);
      else
        on_the_way = true;
    }
    return !on_the_way;
  };
  EXPECT_TRUE(eventually(look)) << "somebody is on the way for ever";
  return daemons;
}

class ServiceFaultsTest : public ServiceTest {
 protected:
  static constexpr int kErrors[] = {EIO, ENOSPC, EMFILE, EINTR, EAGAIN, ENOMEM, EACCES};
  static constexpr int kSignals[] = {SIGUSR1, SIGCHLD, SIGALRM, SIGTERM, SIGPIPE};
  static constexpr int kDone = 10, kRefused = 11;

  void SetUp() override {
    ServiceTest::SetUp();
    if (!can_trace()) GTEST_SKIP() << "processes can't be traced here";
  }

  static int error_of(int nth) { return kErrors[static_cast<size_t>(nth) % std::size(kErrors)]; }

  // One call with something done to it, which leaves its process as it was: children aside, which
  // are the daemons, or on their way. Its status is kDone or kRefused.
  static Traced disturbed(const TracePlan& plan, int (*call)(), const std::string& what) {
    Census before;
    int result = 1;
    const Traced seen = run_traced(
        plan, [&] { result = call(); },
        [&] {
          Census after = take_census();
          after.children = before.children;
          EXPECT_EQ("", difference(before, after)) << what;
          return result == 0 ? kDone : kRefused;
        },
        [&] { before = take_census(); });
    return seen;
  }

  // The same with each signal in turn, for which the program has a handler.
  static void with_each_signal(const std::function<void(int number)>& action) {
    for (const int number : kSignals) {
      struct sigaction handled = {}, former;
      handled.sa_handler = [](int) {};
      sigaction(number, &handled, &former);
      action(number);
      sigaction(number, &former, nullptr);
    }
  }

  // Whatever happened: one daemon runs or none, and the service can be ended and started again.
  static void expect_one_daemon_or_none(const std::string& what) {
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
  }
};

}  // namespace fairlead_test
