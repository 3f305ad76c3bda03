// Record locks: taken at once, waited for, refused, and kept until the descriptor is closed.
#include "fairlead/misc.h"
#include "misc_support.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::Fault;
using misc_test::CallersAlarm;
using misc_test::CallersHandler;
using misc_test::Holder;
using misc_test::Stopwatch;

constexpr const char* kPath = "/tmp/lock";

class LockTest : public fairlead_test::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    fairlead_test::put_file(kPath, "0123456789");
    fd_ = open(kPath, O_RDWR | O_CLOEXEC);
    ASSERT_GE(fd_, 0);
  }
  void TearDown() override {
    close(fd_);
    DeviceTest::TearDown();
  }

  // The whole file, as all callers in the library ask for it.
  int set(int type, int seconds) { return lockfd_set(fd_, type, 0, 0, 0, seconds); }
  pid_t get(int type) { return lockfd_get(fd_, type, 0, 0, 0); }

  int fd_ = -1;
};

TEST_F(LockTest, get_finds_no_holder_of_an_unlocked_file) { EXPECT_EQ(-1, get(1)); }

TEST_F(LockTest, get_names_the_holder) {
  Holder holder(kPath);
  EXPECT_EQ(holder.pid(), get(1));
  EXPECT_EQ(holder.pid(), get(0));
}

TEST_F(LockTest, get_sees_no_conflict_between_readers) {
  Holder holder(kPath, F_RDLCK);
  EXPECT_EQ(-1, get(0));
  EXPECT_EQ(holder.pid(), get(1));
}

TEST_F(LockTest, get_does_not_name_the_caller_itself) {
  ASSERT_EQ(1, set(1, 0));
  EXPECT_EQ(-1, get(1));
}

TEST_F(LockTest, get_of_a_closed_descriptor_fails) {
  errno = 0;
  EXPECT_EQ(-1, lockfd_get(-1, 1, 0, 0, 0));
  EXPECT_EQ(EBADF, errno);
}

TEST_F(LockTest, set_without_wait_takes_a_free_lock) {
  EXPECT_EQ(1, set(1, 0));
  EXPECT_FALSE(misc_test::lockable_elsewhere(kPath, F_RDLCK));
}

TEST_F(LockTest, set_takes_every_type_but_1_for_a_read_lock) {
  for (int type : {0, 2, -1, F_WRLCK == 1 ? F_RDLCK : 2}) {
    EXPECT_EQ(1, set(type, 0)) << type;
    EXPECT_TRUE(misc_test::lockable_elsewhere(kPath, F_RDLCK)) << type;
    EXPECT_FALSE(misc_test::lockable_elsewhere(kPath, F_WRLCK)) << type;
  }
}

TEST_F(LockTest, set_locks_the_range_that_start_whence_and_length_name) {
  ASSERT_EQ(4, lseek(fd_, 4, SEEK_SET));
  ASSERT_EQ(1, lockfd_set(fd_, 1, 1, 1, 2, 0));   // bytes 5 and 6
  ASSERT_EQ(1, lockfd_set(fd_, 1, -1, 2, 1, 0));  // byte 9
  fairlead_test::run_child([] {
    const int fd = open(kPath, O_RDWR | O_CLOEXEC);
    EXPECT_EQ(-1, lockfd_get(fd, 1, 0, 0, 5));
    EXPECT_EQ(getppid(), lockfd_get(fd, 1, 5, 0, 1));
    EXPECT_EQ(getppid(), lockfd_get(fd, 1, 6, 0, 1));
    EXPECT_EQ(-1, lockfd_get(fd, 1, 7, 0, 2));
    EXPECT_EQ(getppid(), lockfd_get(fd, 1, 9, 0, 0));
  });
}

TEST_F(LockTest, set_without_wait_fails_at_once_with_the_system_errno) {
  Holder holder(kPath);
  EXPECT_EQ(0, set(1, 0));
  EXPECT_TRUE(errno == EAGAIN || errno == EACCES) << errno;
}

TEST_F(LockTest, set_without_wait_keeps_every_errno_of_the_system) {
  EXPECT_EQ(0, lockfd_set(-1, 1, 0, 0, 0, 0));
  EXPECT_EQ(EBADF, errno);
  EXPECT_EQ(0, lockfd_set(fd_, 1, 0, 9, 0, 0));
  EXPECT_EQ(EINVAL, errno);
}

// What a lock held elsewhere is told by depends on the file system.
TEST_F(LockTest, set_waits_whichever_errno_says_that_the_lock_is_held) {
  for (int error : {EAGAIN, EACCES}) {
    Fault held(Call::kFcntl, {.error = error});
    EXPECT_EQ(1, lockfd_set(fd_, 1, 0, 0, 0, 1));
    EXPECT_TRUE(held.fired());
  }
}

TEST_F(LockTest, set_tells_every_failure_of_a_wait_as_ebusy) {
  for (int seconds : {-1, 1}) {
    errno = 0;
    EXPECT_EQ(0, lockfd_set(-1, 1, 0, 0, 0, seconds));
    EXPECT_EQ(EBUSY, errno);
  }
}

TEST_F(LockTest, set_gives_up_after_its_seconds_with_ebusy) {
  Holder holder(kPath);
  Stopwatch watch;
  EXPECT_EQ(0, set(1, 1));
  EXPECT_EQ(EBUSY, errno);
  EXPECT_GE(watch.seconds(), 0.99);
  EXPECT_LT(watch.seconds(), 20);
}

TEST_F(LockTest, set_takes_the_lock_as_soon_as_its_holder_leaves) {
  for (int seconds : {60, -1}) {
    Holder holder(kPath);
    fairlead_test::Child watcher([&holder, self = getpid()] {
      EXPECT_TRUE(misc_test::wait_until_blocked(self));
      holder.leave();
      return 0;
    });
    Stopwatch watch;
    EXPECT_EQ(1, set(1, seconds));
    EXPECT_LT(watch.seconds(), 50);
    watcher.wait();
    EXPECT_FALSE(misc_test::lockable_elsewhere(kPath));
    close(fd_);  // ends the lock, for the next round
    fd_ = open(kPath, O_RDWR | O_CLOEXEC);
  }
}

TEST_F(LockTest, set_refuses_a_wait_that_would_never_end) {
  fairlead_test::put_file("/tmp/other", "");
  ASSERT_EQ(1, set(1, 0));
  fairlead_test::Gate held;
  fairlead_test::Child other([&] {  // has the other file and waits for ours
    const int mine = open("/tmp/other", O_RDWR | O_CLOEXEC);
    const int wanted = open(kPath, O_RDWR | O_CLOEXEC);
    EXPECT_TRUE(misc_test::take_lock(mine, F_WRLCK));
    held.open();
    return lockfd_set(wanted, 1, 0, 0, 0, -1) ? 0 : 1;
  });
  ASSERT_TRUE(held.wait());
  ASSERT_TRUE(misc_test::wait_until_blocked(other.pid()));

  const int wanted = open("/tmp/other", O_RDWR | O_CLOEXEC);
  Stopwatch watch;
  EXPECT_EQ(0, lockfd_set(wanted, 1, 0, 0, 0, 60));
  EXPECT_EQ(EBUSY, errno);
  EXPECT_LT(watch.seconds(), 50);
  close(wanted);
  close(fd_);  // lets the other one go on
  EXPECT_EQ(0, other.wait().status);
  fd_ = open(kPath, O_RDWR | O_CLOEXEC);
}

TEST_F(LockTest, set_fails_with_ebusy_when_another_handler_interrupts_the_wait) {
  for (int seconds : {60, -1}) {
    Holder holder(kPath);
    CallersHandler handler(SIGUSR1, SA_SIGINFO);
    fairlead_test::Child sender([self = getpid()] {
      EXPECT_TRUE(misc_test::wait_until_blocked(self));
      kill(self, SIGUSR1);
      return 0;
    });
    EXPECT_EQ(0, set(1, seconds));
    EXPECT_EQ(EBUSY, errno);
    EXPECT_EQ(1, CallersHandler::calls);
    sender.wait();
  }
}

TEST_F(LockTest, set_goes_on_waiting_when_the_handler_restarts_calls) {
  Holder holder(kPath);
  CallersHandler handler(SIGUSR1, SA_SIGINFO | SA_RESTART);
  fairlead_test::Child sender([&holder, self = getpid()] {
    EXPECT_TRUE(misc_test::wait_until_blocked(self));
    kill(self, SIGUSR1);
    holder.leave();
    return 0;
  });
  EXPECT_EQ(1, set(1, 60));
  EXPECT_EQ(1, CallersHandler::calls);
  sender.wait();
}

TEST_F(LockTest, set_does_not_miss_an_alarm_that_comes_just_before_the_wait) {
  Holder holder(kPath);
  // Runs between the arming of the alarm and the blocking call, until the second is over.
  misc_test::PlainHandler slow(SIGUSR1, [](int) {
    Stopwatch watch;
    while (watch.seconds() < 1.2) usleep(1000);
  });
  Fault late(Call::kFcntl, {.nth = 2, .signal = SIGUSR1});
  EXPECT_EQ(0, set(1, 1));
  EXPECT_EQ(EBUSY, errno);
  EXPECT_TRUE(late.fired());
}

TEST_F(LockTest, set_leaves_the_signal_state_alone_when_the_lock_is_free) {
  const auto ended = fairlead_test::run_child([this] {
    if (!misc_test::forbid({SYS_rt_sigaction, SYS_rt_sigprocmask, SYS_setitimer})) return 77;
    return lockfd_set(fd_, 1, 0, 0, 0, 1) == 1 ? 0 : 1;
  });
  if (ended.status == 77) GTEST_SKIP() << "no system call filter here";
  EXPECT_EQ(0, ended.status) << "ended by signal " << ended.signal;
}

TEST_F(LockTest, set_puts_handler_flags_and_mask_back_after_a_wait) {
  Holder holder(kPath);
  CallersHandler handler(SIGALRM);
  misc_test::Blocked blocked({SIGALRM, SIGUSR1});
  EXPECT_EQ(0, set(1, 1));
  EXPECT_EQ(EBUSY, errno);
  EXPECT_TRUE(handler.in_force());
  EXPECT_TRUE(misc_test::blocked_now(SIGALRM));
  EXPECT_TRUE(misc_test::blocked_now(SIGUSR1));
  EXPECT_FALSE(misc_test::blocked_now(SIGUSR2));
  EXPECT_EQ(0, CallersHandler::calls);
  EXPECT_FALSE(misc_test::pending_now(SIGALRM));
}

TEST_F(LockTest, set_arms_the_callers_alarm_again_with_what_remains) {
  Holder holder(kPath);
  CallersAlarm alarm({{7, 0}, {100, 0}});
  EXPECT_EQ(0, set(1, 1));
  const itimerval left = CallersAlarm::left();
  EXPECT_LE(left.it_value.tv_sec, 99);
  EXPECT_GE(left.it_value.tv_sec, 60);
  EXPECT_EQ(7, left.it_interval.tv_sec);
}

TEST_F(LockTest, set_delivers_a_callers_alarm_that_ran_out_during_the_wait) {
  Holder holder(kPath);
  CallersHandler handler(SIGALRM);
  CallersAlarm alarm({{0, 0}, {0, 300000}});
  EXPECT_EQ(0, set(1, 1));
  EXPECT_TRUE(misc_test::becomes(CallersHandler::calls, 1));
}

TEST_F(LockTest, set_keeps_a_blocked_alarm_of_the_caller_pending) {
  Holder holder(kPath);
  CallersHandler handler(SIGALRM);
  {
    misc_test::Blocked blocked({SIGALRM});
    kill(getpid(), SIGALRM);
    EXPECT_EQ(0, set(1, 1));
    EXPECT_TRUE(misc_test::pending_now(SIGALRM));
    EXPECT_EQ(0, CallersHandler::calls);
  }
  EXPECT_EQ(1, CallersHandler::calls);
}

TEST_F(LockTest, free_releases_no_lock_until_the_descriptor_is_closed) {
  ASSERT_EQ(1, set(1, 0));
  EXPECT_EQ(1, lockfd_free(fd_, 1, 0, 0, 0));
  EXPECT_FALSE(misc_test::lockable_elsewhere(kPath));
  close(fd_);
  EXPECT_TRUE(misc_test::lockable_elsewhere(kPath));
  fd_ = open(kPath, O_RDWR | O_CLOEXEC);
}

TEST_F(LockTest, free_clears_close_on_exec) {
  ASSERT_EQ(FD_CLOEXEC, fcntl(fd_, F_GETFD));
  EXPECT_EQ(1, lockfd_free(fd_, 0, 3, 1, 4));
  EXPECT_EQ(0, fcntl(fd_, F_GETFD));
}

TEST_F(LockTest, free_of_a_closed_descriptor_fails) {
  errno = 0;
  EXPECT_EQ(0, lockfd_free(-1, 1, 0, 0, 0));
  EXPECT_EQ(EBADF, errno);
}

}  // namespace
