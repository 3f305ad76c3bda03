// The census notices each kind of leftover, and taking it leaves none.
#include "support/census.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "support/child.h"
#include "support/device_test.h"

namespace {

using fairlead_test::Census;
using fairlead_test::difference;
using fairlead_test::take_census;

class CensusTest : public fairlead_test::DeviceTest {
 protected:
  // What the census says about an action.
  template <class Action>
  std::string after(Action action) {
    const Census before = take_census();
    action();
    return difference(before, take_census());
  }

  // Alone in a child where the leftover would stay.
  template <class Action>
  void expect_noticed(const std::string& piece, Action action) {
    fairlead_test::run_child([&] {
      const std::string told = after(action);
      EXPECT_NE(std::string::npos, told.find(piece)) << "told: " << told;
    });
  }
};

TEST_F(CensusTest, nothing_done_is_no_difference) {
  EXPECT_EQ("", after([] {}));
}

TEST_F(CensusTest, taking_it_disturbs_nothing) {
  EXPECT_EQ("", after([] {
              for (int round = 0; round < 10; ++round) take_census();
            }));
}

TEST_F(CensusTest, an_open_descriptor_is_noticed) {
  expect_noticed("(/dev/null) is new", [] { open("/dev/null", O_RDONLY); });
}

TEST_F(CensusTest, a_closed_descriptor_is_noticed) {
  expect_noticed("descriptor 0", [] { close(0); });
}

TEST_F(CensusTest, a_replaced_descriptor_is_noticed) {
  expect_noticed("descriptor 0 was", [] { dup2(open("/etc", O_RDONLY), 0); });
}

TEST_F(CensusTest, a_descriptor_that_lost_close_on_exec_is_noticed) {
  const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
  expect_noticed("descriptor", [&] { fcntl(fd, F_SETFD, 0); });
  close(fd);
}

TEST_F(CensusTest, a_running_child_is_noticed) {
  fairlead_test::Gate never;
  expect_noticed("child", [&] {
    if (fork() == 0) _exit(never.wait() ? 0 : 1);
  });
  never.open();
}

TEST_F(CensusTest, a_child_nobody_reaped_is_noticed) {
  expect_noticed("child", [] {
    const pid_t pid = fork();
    if (pid == 0) _exit(0);
    siginfo_t info;
    waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT);
  });
}

TEST_F(CensusTest, a_reaped_child_is_none) {
  EXPECT_EQ("", after([] { fairlead_test::run_child([] {}); }));
}

TEST_F(CensusTest, a_blocked_signal_is_noticed) {
  expect_noticed("signal " + std::to_string(SIGUSR1) + " is blocked", [] {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGUSR1);
    sigprocmask(SIG_BLOCK, &set, nullptr);
  });
}

TEST_F(CensusTest, an_ignored_signal_is_noticed) {
  expect_noticed("handler of signal " + std::to_string(SIGUSR2), [] { signal(SIGUSR2, SIG_IGN); });
}

TEST_F(CensusTest, another_handler_flag_or_mask_is_noticed) {
  expect_noticed("flags", [] {
    struct sigaction action = {};
    action.sa_flags = SA_NODEFER;
    sigaction(SIGUSR1, &action, nullptr);
  });
  expect_noticed("mask 1 2 3", [] {
    struct sigaction action = {};
    sigfillset(&action.sa_mask);
    sigaction(SIGUSR1, &action, nullptr);
  });
}

TEST_F(CensusTest, an_armed_alarm_is_noticed) {
  expect_noticed("alarm left armed", [] { alarm(1000); });
}

TEST_F(CensusTest, a_cancelled_alarm_is_noticed) {
  alarm(1000);
  EXPECT_EQ("alarm cancelled\n", after([] { alarm(0); }));
}

TEST_F(CensusTest, another_folder_is_noticed) {
  expect_noticed("working directory is /tmp", [] { EXPECT_EQ(0, chdir("/tmp")); });
}

TEST_F(CensusTest, another_file_mode_mask_is_noticed) {
  expect_noticed("file mode mask", [] { umask(0123); });
}

}  // namespace
