// Traced actions: calls watched, failing and interrupted at the border of the kernel.
#include "support/traced.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <vector>

#include "support/device_test.h"

namespace {

using fairlead_test::CallMade;
using fairlead_test::run_traced;
using fairlead_test::Traced;

class TracedTest : public fairlead_test::DeviceTest {
 protected:
  void SetUp() override {
    if (!fairlead_test::can_trace()) GTEST_SKIP() << "processes can't be traced here";
    DeviceTest::SetUp();
  }
};

TEST_F(TracedTest, calls_are_told_with_arguments_and_result) {
  std::vector<CallMade> calls;
  run_traced(
      {.watch = [&](const CallMade& call) { calls.push_back(call); }},
      [] { syscall(SYS_lseek, -7, 5, 0); }, [] { return 0; });
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(SYS_lseek, calls[0].number);
  EXPECT_EQ(-7, static_cast<int>(calls[0].arguments[0]));
  EXPECT_EQ(5u, calls[0].arguments[1]);
  EXPECT_EQ(-EBADF, calls[0].result);
}

TEST_F(TracedTest, the_nth_call_fails_and_no_other) {
  int results[3], error = 0;
  const Traced seen = run_traced(
      {.nth = 2, .error = ENOSPC},
      [&] {
        for (int& result : results) {
          result = dup(STDERR_FILENO);
          if (result < 0) error = errno;
        }
      },
      [&] { return results[0] >= 0 && results[1] < 0 && results[2] >= 0 && error == ENOSPC; });
  EXPECT_TRUE(seen.met);
  EXPECT_EQ(SYS_dup, seen.number);
  EXPECT_EQ(1, seen.ended.status);
}

TEST_F(TracedTest, a_close_that_fails_has_closed) {
  const int fd = dup(STDERR_FILENO);
  const Traced seen = run_traced(
      {.nth = 1, .error = EIO}, [&] { close(fd); }, [&] { return fcntl(fd, F_GETFD) < 0; });
  EXPECT_EQ(SYS_close, seen.number);
  EXPECT_EQ(1, seen.ended.status);
  close(fd);
}

TEST_F(TracedTest, children_count_until_they_run_a_program) {
  int status = 0;
  const auto in_a_child = [&] {
    const pid_t child = fork();
    if (child == 0) _exit(dup(-1) < 0 && errno == EPROTO ? 5 : 6);
    waitpid(child, &status, 0);
  };
  bool met_in_child = false;
  for (int nth = 1; nth < 20 && !met_in_child; ++nth) {
    const Traced seen =
        run_traced({.nth = nth, .error = EPROTO}, in_a_child, [&] { return WEXITSTATUS(status); });
    met_in_child = seen.number == SYS_dup && seen.ended.status == 5;
  }
  EXPECT_TRUE(met_in_child);

  const Traced program = run_traced(
      {}, [] { EXPECT_EQ(0, system("true")); }, [] { return 7; });
  EXPECT_EQ(7, program.ended.status);
}

TEST_F(TracedTest, a_process_can_be_killed_at_any_stop) {
  const auto action = [] { unlink("/tmp/gone"); };
  fairlead_test::put_file("/tmp/gone", "");
  const Traced before = run_traced({.nth = 1, .signal = SIGKILL}, action, [] { return 0; });
  EXPECT_EQ(SIGKILL, before.ended.signal);
  EXPECT_TRUE(fairlead_test::exists("/tmp/gone"));
  const Traced after = run_traced({.nth = 2, .signal = SIGKILL}, action, [] { return 0; });
  EXPECT_EQ(SIGKILL, after.ended.signal);
  EXPECT_FALSE(fairlead_test::exists("/tmp/gone"));
}

volatile sig_atomic_t caught = 0;

TEST_F(TracedTest, a_signal_interrupts_the_call_it_meets) {
  int ends[2], error = 0;
  ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
  const Traced seen = run_traced(
      {.nth = 1, .signal = SIGUSR1},
      [&] {
        char byte;
        error = read(ends[0], &byte, 1) < 0 ? errno : 0;
      },
      [&] { return error == EINTR && caught == 1; });
  EXPECT_NE(1, seen.ended.status) << "without a handler it ends the process";
  EXPECT_EQ(SIGUSR1, seen.ended.signal);

  struct sigaction action = {}, former;
  action.sa_handler = [](int) { caught = caught + 1; };
  sigaction(SIGUSR1, &action, &former);
  EXPECT_EQ(1, run_traced(
                   {.nth = 1, .signal = SIGUSR1},
                   [&] {
                     char byte;
                     error = read(ends[0], &byte, 1) < 0 ? errno : 0;
                   },
                   [&] { return error == EINTR && caught == 1; })
                   .ended.status);
  sigaction(SIGUSR1, &former, nullptr);
  close(ends[0]);
  close(ends[1]);
}

TEST_F(TracedTest, an_action_that_ends_its_process_is_told) {
  const Traced seen = run_traced(
      {}, [] { _exit(9); }, [] { return 1; });
  EXPECT_EQ(9, seen.ended.status);
}

}  // namespace
