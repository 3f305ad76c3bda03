// Handlers: installed so that they interrupt, and handed back.
#include <cerrno>

#include "fairlead/misc.h"
#include "misc_support.h"

namespace {

class SignalTest : public fairlead_test::DeviceTest {};

volatile sig_atomic_t last_signal = 0;
void remember(int number) { last_signal = number; }

TEST_F(SignalTest, register_installs_the_handler_and_returns_the_one_before) {
  misc_test::PlainHandler kept(SIGUSR1, SIG_DFL);
  EXPECT_EQ(SIG_DFL, signal_register(SIGUSR1, remember));
  raise(SIGUSR1);
  EXPECT_EQ(SIGUSR1, last_signal);
  EXPECT_EQ(remember, signal_register(SIGUSR1, SIG_IGN));
  raise(SIGUSR1);
  EXPECT_EQ(SIG_IGN, signal_register(SIGUSR1, SIG_DFL));
}

TEST_F(SignalTest, register_asks_for_no_restart_and_blocks_nothing_else) {
  misc_test::CallersHandler former(SIGUSR1);
  signal_register(SIGUSR1, remember);
  struct sigaction action;
  sigaction(SIGUSR1, nullptr, &action);
  constexpr int kUnwanted = static_cast<int>(SA_RESTART | SA_SIGINFO | SA_NODEFER | SA_RESETHAND);
  EXPECT_EQ(0, action.sa_flags & kUnwanted);
  EXPECT_EQ(0, sigismember(&action.sa_mask, SIGUSR2));
}

TEST_F(SignalTest, register_makes_a_slow_call_fail_with_eintr) {
  int ends[2];
  ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
  {
    misc_test::CallersHandler former(SIGALRM);
    signal_register(SIGALRM, signal_handler);
    misc_test::CallersAlarm alarm({{0, 10000}, {0, 10000}});
    char byte;
    EXPECT_EQ(-1, read(ends[0], &byte, 1));
    EXPECT_EQ(EINTR, errno);
  }
  close(ends[0]);
  close(ends[1]);
}

TEST_F(SignalTest, register_refuses_what_cannot_be_caught) {
  for (int number : {0, -1, SIGKILL, SIGSTOP, 1000}) {
    errno = 0;
    EXPECT_EQ(SIG_ERR, signal_register(number, signal_handler)) << number;
    EXPECT_EQ(EINVAL, errno) << number;
  }
}

TEST_F(SignalTest, handler_does_nothing) {
  errno = ENOTTY;
  signal_handler(SIGALRM);
  EXPECT_EQ(ENOTTY, errno);
}

}  // namespace
