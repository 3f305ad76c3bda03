// Command lines in the shell.
#include <sys/wait.h>

#include <cwchar>

#include "fairlead/misc.h"
#include "misc_support.h"
#include "support/capture.h"

namespace {

using fairlead_test::capture;
using misc_test::bit;
using misc_test::CallersHandler;

#ifdef SYS_vfork
constexpr std::initializer_list<unsigned> kWaysToFork = {SYS_clone, SYS_clone3, SYS_fork,
                                                         SYS_vfork};
#else
constexpr std::initializer_list<unsigned> kWaysToFork = {SYS_clone, SYS_clone3};
#endif

class SystemStringTest : public fairlead_test::DeviceTest {};

TEST_F(SystemStringTest, returns_the_wait_status) {
  EXPECT_EQ(0, system_string("true"));
  EXPECT_EQ(3, WEXITSTATUS(system_string("exit %d", 3)));
  EXPECT_EQ(127, WEXITSTATUS(system_string("/tmp/none 2>/dev/null")));
  const int status = system_string("kill -KILL $$");
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(SIGKILL, WTERMSIG(status));
}

TEST_F(SystemStringTest, hands_the_line_to_the_shell) {
  EXPECT_EQ(0, system_string("echo '%s  b' | tr a-z A-Z > /tmp/out; X=1; test $X = 1", "a"));
  EXPECT_EQ("A  B\n", fairlead_test::file_content("/tmp/out"));
}

TEST_F(SystemStringTest, refuses_no_format) {
  for (const char* format : {static_cast<const char*>(nullptr), ""}) {
    errno = 0;
    EXPECT_EQ(-1, system_string(format, 0));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(SystemStringTest, runs_a_text_that_comes_out_empty) {
  EXPECT_EQ(0, system_string("%s", ""));
}

TEST_F(SystemStringTest, refuses_a_text_that_cannot_be_formatted) {
  const wchar_t foreign[] = {0x20ac, 0};
  errno = 0;
  EXPECT_EQ(-1, system_string("touch /tmp/out; echo %ls", foreign));
  EXPECT_EQ(EILSEQ, errno);
  EXPECT_FALSE(fairlead_test::exists("/tmp/out"));
}

TEST_F(SystemStringTest, cuts_the_line_at_4095_characters) {
  const std::string begin = "echo ";
  const auto captured = capture(
      [&] { EXPECT_EQ(0, system_string("%s%s", begin.c_str(), std::string(5000, 'x').c_str())); });
  EXPECT_EQ(std::string(4095 - begin.size(), 'x') + "\n", captured.out);
}

TEST_F(SystemStringTest, ignores_interrupt_and_quit_meanwhile) {
  CallersHandler handler(SIGINT);
  EXPECT_EQ(5, WEXITSTATUS(system_string("kill -INT $PPID; kill -QUIT $PPID; exit 5")));
  EXPECT_EQ(0, CallersHandler::calls);
}

TEST_F(SystemStringTest, keeps_its_child_from_a_handler_that_reaps) {
  misc_test::PlainHandler reaper(SIGCHLD, [](int) { waitpid(-1, nullptr, WNOHANG); });
  for (int round = 0; round < 20; ++round) EXPECT_EQ(7, WEXITSTATUS(system_string("true; exit 7")));
}

TEST_F(SystemStringTest, gets_the_status_when_the_caller_ignores_sigchld) {
  misc_test::PlainHandler ignoring(SIGCHLD, SIG_IGN);
  EXPECT_EQ(6, WEXITSTATUS(system_string("exit 6")));
  EXPECT_EQ(SIG_IGN, ignoring.in_force());
}

TEST_F(SystemStringTest, puts_handlers_flags_and_mask_back) {
  CallersHandler quit(SIGQUIT), interrupt(SIGINT, SA_SIGINFO | SA_NODEFER);
  CallersHandler child(SIGCHLD, SA_SIGINFO | SA_NOCLDSTOP);
  misc_test::Blocked blocked({SIGINT, SIGCHLD, SIGUSR1});
  EXPECT_EQ(0, system_string("true"));
  EXPECT_TRUE(quit.in_force());
  EXPECT_TRUE(interrupt.in_force());
  EXPECT_TRUE(child.in_force());
  for (int number : {SIGINT, SIGCHLD, SIGUSR1}) EXPECT_TRUE(misc_test::blocked_now(number));
  EXPECT_FALSE(misc_test::blocked_now(SIGQUIT));
}

// The command looks at this process as it sleeps in its wait: the shell resets a mask it inherits.
TEST_F(SystemStringTest, opens_its_signals_and_keeps_the_others_blocked) {
  misc_test::Blocked blocked({SIGINT, SIGQUIT, SIGCHLD, SIGHUP, SIGALRM});
  EXPECT_EQ(0, system_string("until grep -q 'State:.S' /proc/$PPID/status; do :; done; "
                             "cat /proc/$PPID/status >/tmp/out"));
  const uint64_t keys = bit(SIGINT) | bit(SIGQUIT), others = bit(SIGHUP) | bit(SIGALRM);
  EXPECT_EQ(others, misc_test::signal_set("/tmp/out", "SigBlk") & (keys | others));
  EXPECT_EQ(keys, misc_test::signal_set("/tmp/out", "SigIgn") & keys);
}

TEST_F(SystemStringTest, hands_on_what_the_platform_says_when_there_is_no_child) {
  const auto ended = fairlead_test::run_child([] {
    if (!misc_test::forbid(kWaysToFork, EAGAIN)) return 77;
    const int plain = system("true");
    errno = 0;
    EXPECT_EQ(plain, system_string("true"));
    EXPECT_EQ(EAGAIN, errno);
    return 0;
  });
  if (ended.status == 77) GTEST_SKIP() << "no system call filter here";
  EXPECT_EQ(0, ended.status);
}

}  // namespace
