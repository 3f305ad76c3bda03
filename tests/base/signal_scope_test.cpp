// Handlers and masks that come back as they were.
#include "base/signal_scope.h"

#include "support/device_test.h"

namespace {

using fairlead::HandlerScope;
using fairlead::MaskScope;

class SignalScopeTest : public fairlead_test::DeviceTest {};

volatile sig_atomic_t last_signal = 0;
void remember(int number) { last_signal = number; }

bool blocked(int number) {
  sigset_t mask;
  sigprocmask(SIG_SETMASK, nullptr, &mask);
  return sigismember(&mask, number) == 1;
}

TEST_F(SignalScopeTest, handler_is_in_force_inside_the_block_only) {
  {
    HandlerScope handler(SIGUSR1, remember);
    raise(SIGUSR1);
    EXPECT_EQ(SIGUSR1, last_signal);
  }
  struct sigaction action;
  sigaction(SIGUSR1, nullptr, &action);
  EXPECT_EQ(SIG_DFL, action.sa_handler);
}

TEST_F(SignalScopeTest, handler_puts_the_former_action_back_whole) {
  struct sigaction former = {}, before, after;
  former.sa_sigaction = [](int, siginfo_t*, void*) {};
  former.sa_flags = SA_SIGINFO | SA_RESTART | SA_NODEFER;
  sigaddset(&former.sa_mask, SIGHUP);
  sigaction(SIGUSR1, &former, &before);
  {
    HandlerScope outer(SIGUSR1, remember);
    HandlerScope inner(SIGUSR1, SIG_IGN);
  }
  sigaction(SIGUSR1, &before, &after);
  EXPECT_EQ(former.sa_sigaction, after.sa_sigaction);
  EXPECT_EQ(former.sa_flags, after.sa_flags & ~0x04000000);  // SA_RESTORER of some C libraries
  EXPECT_EQ(1, sigismember(&after.sa_mask, SIGHUP));
  EXPECT_EQ(0, sigismember(&after.sa_mask, SIGUSR2));
}

TEST_F(SignalScopeTest, mask_comes_back_after_any_change) {
  MaskScope outer;
  outer.block_all();
  {
    MaskScope inner;
    inner.let_through({SIGUSR1, SIGALRM});
    EXPECT_FALSE(blocked(SIGUSR1));
    EXPECT_FALSE(blocked(SIGALRM));
    EXPECT_TRUE(blocked(SIGUSR2));
  }
  EXPECT_TRUE(blocked(SIGUSR1));
  outer.put_back();
  EXPECT_FALSE(blocked(SIGUSR1));
  EXPECT_EQ(0, sigismember(&outer.former(), SIGUSR1));
}

TEST_F(SignalScopeTest, let_through_blocks_what_was_blocked_before_and_no_more) {
  MaskScope mask;
  mask.block_all();
  mask.let_through({SIGUSR1});
  EXPECT_FALSE(blocked(SIGUSR2)) << "was not blocked when the scope began";
}

TEST_F(SignalScopeTest, both_keep_errno) {
  {
    HandlerScope handler(SIGUSR1, remember);
    MaskScope mask;
    errno = ENOTTY;
  }
  EXPECT_EQ(ENOTTY, errno);
}

}  // namespace
