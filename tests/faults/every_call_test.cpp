// Every system call and every allocation of every operation fails in turn; the process is killed at
// every one; every signal comes at every one.
#include <sys/syscall.h>

#include <cerrno>
#include <csignal>

#include "faults/faults_fixture.h"
#include "support/faults.h"

namespace {

using namespace fairlead_test;

constexpr int kErrors[] = {EIO, ENOSPC, EMFILE, EINTR, EAGAIN, ENOMEM, EACCES};
constexpr int kErrorCount = sizeof kErrors / sizeof *kErrors;

volatile sig_atomic_t caught = 0;  // signals, by a handler of the caller's

class EveryCallTest : public FaultsTest, public testing::WithParamInterface<size_t> {
 protected:
  void SetUp() override {
    FaultsTest::SetUp();
    if (!can_trace()) GTEST_SKIP() << "processes can't be traced here";
  }

  const Operation& operation() const { return operations()[GetParam()]; }

  // One run with something done to it, and what came of it.
  Traced disturbed(const TracePlan& plan, const Expected& expected, const std::string& what) {
    empty_root();
    operation().arrange();
    Census before;
    int result = -1;
    const Traced seen = run_traced(
        plan, [&] { result = operation().act(); },
        [&] {
          print_what_is_left(before);
          printf("%s%d\n", kCaught, static_cast<int>(caught));
          return result == 1 ? kDone : kRefused;
        },
        [&] {
          before = take_census();
          caught = 0;  // the test's own process has met the end of its children
        });
    EXPECT_EQ("", unexpected(seen, plan)) << what << ", call " << seen.number;
    if (seen.met)
      expect_old_or_new(operation(), expected, seen.ended.status == kDone,
                        what + ", call " + std::to_string(seen.number));
    return seen;
  }

  static constexpr const char* kCaught = "caught: ";

  static bool was_caught_once(const Traced& seen) {
    return seen.ended.out.find(kCaught + std::string("1\n")) != std::string::npos;
  }

  // Those for which the library has a handler of its own while it waits may go to that one.
  static bool is_always_the_callers(int signal) { return signal != SIGCHLD && signal != SIGALRM; }

  // What a call left that it should not have. Two things are known of calls that ask a child: after
  // a refused fork SIGCHLD stays as it was set for the wait, and a child that was not there yet
  // when a wait was interrupted is left to the program.
  std::string unexpected(const Traced& seen, const TracePlan& plan) const {
    const std::string sigchld = "signal " + std::to_string(SIGCHLD) + " ";
    const bool no_fork = plan.error && is_fork(seen.number);
    const bool interrupted = plan.signal || seen.number == SYS_ppoll;
    std::string text;
    for (const std::string& line : left_in(seen.ended.out)) {
      if (operation().asks_child && no_fork && line.find(sigchld) != std::string::npos) continue;
      if (operation().asks_child && interrupted && line.rfind("child ", 0) == 0) continue;
      text += line + "\n";
    }
    return text;
  }

  static bool is_fork(long number) { return number == SYS_clone || number == SYS_fork; }
};

TEST_P(EveryCallTest, that_fails_leaves_the_old_or_the_new_and_nothing_else) {
  const Expected expected(operation());
  int met = 0;
  for (int round = 0; round < (long_form() ? kErrorCount : 1); ++round) {
    for (int nth = 1;; nth += stride(1)) {
      const int error = kErrors[(nth + round) % kErrorCount];
      const std::string what = std::to_string(nth) + " fails with " + strerrorname_np(error);
      const Traced seen = disturbed({.nth = nth, .error = error}, expected, what);
      if (!seen.met && seen.stops < nth) break;
      EXPECT_EQ(0, seen.ended.signal) << what << ", call " << seen.number;
      met += seen.met;
    }
  }
  EXPECT_GT(met, 0);
}

TEST_P(EveryCallTest, at_which_the_process_dies_leaves_the_old_or_the_new) {
  const Expected expected(operation());
  int stop = 1;
  for (;; stop += stride(5)) {
    const Traced seen = disturbed({.nth = stop, .signal = SIGKILL}, expected,
                                  "killed at stop " + std::to_string(stop));
    if (!seen.met) break;
  }
  EXPECT_GT(stop, 4);
}

TEST_P(EveryCallTest, that_finds_no_memory_leaves_the_old_or_the_new_and_nothing_else) {
  const Expected expected(operation());
  for (int nth = 1;; ++nth) {
    empty_root();
    operation().arrange();
    bool fired = false;
    const auto ended = run_child([&] {
      const Census before = take_census();
      Fault fault(Call::kMalloc, {.nth = nth, .error = ENOMEM});
      const int result = operation().act();
      fault.disarm();
      fired = fault.fired();
      print_what_is_left(before);
      return result == 1 ? (fired ? kDone : kDone + 10) : kRefused;
    });
    if (ended.status == kDone + 10) break;
    EXPECT_EQ(0, ended.signal) << "allocation " << nth;
    EXPECT_EQ(std::vector<std::string>(), left_in(ended.out)) << "allocation " << nth;
    expect_old_or_new(operation(), expected, ended.status == kDone,
                      "allocation " + std::to_string(nth));
  }
}

// A signal with a handler harms no call: the caller's handler runs, once, and the call does its
// work, or tells that it did not.
TEST_P(EveryCallTest, at_which_a_signal_comes_leaves_the_old_or_the_new_and_nothing_else) {
  const Expected expected(operation());
  for (const int number : {SIGUSR1, SIGCHLD, SIGALRM, SIGTERM, SIGPIPE}) {
    struct sigaction action = {}, former;
    action.sa_handler = [](int) { caught = caught + 1; };
    sigaction(number, &action, &former);
    for (int stop = 1;; stop += stride(31)) {
      const Traced seen =
          disturbed({.nth = stop, .signal = number, .to_caller = true}, expected,
                    "stop " + std::to_string(stop) + " brings " + sigabbrev_np(number));
      if (!seen.met) break;
      EXPECT_EQ(0, seen.ended.signal);
      EXPECT_TRUE(was_caught_once(seen) || !is_always_the_callers(number))
          << stop << seen.ended.out;
    }
    sigaction(number, &former, nullptr);
  }
}

INSTANTIATE_TEST_SUITE_P(Every, EveryCallTest, testing::Range(size_t{0}, operations().size()),
                         [](const testing::TestParamInfo<size_t>& parameter) {
                           return test_name(operations()[parameter.param]);
                         });

}  // namespace
