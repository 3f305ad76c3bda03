// Services stopped, reset, switched off and found, with daemons that obey and daemons that do not.
#include <sys/time.h>

#include <chrono>

#include "service/service_support.h"
#include "support/child.h"
#include "support/faults.h"

namespace {

using namespace fairlead_test;

class ControlTest : public ServiceTest {
 protected:
  // A daemon that nothing but SIGKILL ends.
  static pid_t start_stubborn(const std::string& service) {
    const signal_function_t former = signal_register(SIGTERM, SIG_IGN);
    const pid_t daemon = start(service);
    signal_register(SIGTERM, former);
    return daemon;
  }

  template <class Action>
  static double seconds(Action action) {
    const auto begin = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  }

  // Whether every child ends without being told to.
  static bool all_end() {
    for (int looks = 0; looks < 2000; ++looks) {
      const pid_t child = waitpid(-1, nullptr, WNOHANG);
      if (child < 0) return true;
      if (child == 0) usleep(5000);
    }
    return false;
  }

  static bool fails(int error, int result) {
    const bool as_expected = result == -1 && errno == error;
    errno = 0;
    return as_expected;
  }

  static void count(int) { counted_ = counted_ + 1; }
  static inline volatile sig_atomic_t counted_ = 0;
};

TEST_F(ControlTest, stop_ends_the_daemon_and_removes_the_record) {
  const pid_t daemon = start("wan");
  EXPECT_EQ(0, ServiceStop("%s", "wan"));
  EXPECT_EQ(-SIGTERM, end_of(daemon));
  EXPECT_FALSE(exists(record_path("wan")));
  EXPECT_EQ(-1, pid("wan"));
  EXPECT_EQ("null", info("wan"));
}

TEST_F(ControlTest, stop_waits_no_longer_than_the_daemon_lives) {
  const pid_t daemon = start("wan");
  EXPECT_LT(seconds([] { EXPECT_EQ(0, ServiceStop("wan")); }), 1.9);
  end_of(daemon);
}

TEST_F(ControlTest, stop_removes_the_record_of_a_dead_service) {
  kill_daemon(start("wan"));
  EXPECT_TRUE(fails(ESRCH, ServiceStop("wan")));
  EXPECT_FALSE(exists(record_path("wan")));
  EXPECT_TRUE(fails(ENOENT, ServiceStop("wan")));
}

TEST_F(ControlTest, stop_ends_a_daemon_that_is_off) {
  const pid_t daemon = start("wan");
  ServiceOff("wan");
  EXPECT_EQ(0, ServiceStop("wan"));
  EXPECT_EQ(-SIGTERM, end_of(daemon));
}

TEST_F(ControlTest, stop_kills_a_daemon_that_ignores_it_after_five_seconds) {
  const pid_t daemon = start_stubborn("wan");
  const double time = seconds([] { EXPECT_EQ(0, ServiceStop("wan")); });
  EXPECT_GE(time, 4.9);
  EXPECT_LT(time, 15);
  EXPECT_EQ(-SIGKILL, end_of(daemon));
  EXPECT_FALSE(exists(record_path("wan")));
}

TEST_F(ControlTest, the_second_signal_comes_after_two_seconds) {
  make_directories("/tmp/.var/service");
  Gate held;
  Child daemon([&] {
    signal_register(SIGTERM, count);
    DaemonRegister(record_path("wan").c_str(), "test", "wait", nullptr);
    held.open();
    while (counted_ < 2) pause();
    return 7;
  });
  ASSERT_TRUE(held.wait());
  const double time = seconds([] { EXPECT_EQ(0, ServiceStop("wan")); });
  EXPECT_EQ(7, daemon.wait().status);
  EXPECT_GE(time, 1.9);
  EXPECT_LT(time, 4.9);
}

// Reset meets a stubborn daemon while signals of the caller's interrupt every wait, and the
// caller's own alarm runs.
TEST_F(ControlTest, reset_replaces_a_stubborn_daemon_whatever_signals_the_caller_gets) {
  const pid_t daemon = start_stubborn("wan");
  signal_register(SIGUSR1, count);
  const pid_t test = getpid();
  Child disturber([test] {
    for (;;) {
      kill(test, SIGUSR1);
      usleep(20000);
    }
    return 0;
  });
  const itimerval minute = {{0, 0}, {60, 0}};
  setitimer(ITIMER_REAL, &minute, nullptr);

  const double time = seconds([] { EXPECT_EQ(0, ServiceReset("wan")); });
  disturber.send(SIGKILL);
  disturber.wait();
  signal_register(SIGUSR1, SIG_DFL);
  itimerval left;
  const itimerval none = {};
  setitimer(ITIMER_REAL, &none, &left);
  EXPECT_GT(left.it_value.tv_sec, 30);
  EXPECT_LT(left.it_value.tv_sec, 57);

  EXPECT_GE(time, 4.9);
  EXPECT_EQ(-SIGKILL, end_of(daemon));
  EXPECT_GT(pid("wan"), 0);
  EXPECT_NE(daemon, pid("wan"));
  stop("wan");
}

TEST_F(ControlTest, reset_starts_the_service_anew_from_its_record) {
  EXPECT_EQ(0, ServiceStart("wan", "test", "wait", "a,%s", "b"));
  const pid_t daemon = pid("wan");
  EXPECT_EQ(0, ServiceReset("%s%s", "w", "an"));
  EXPECT_EQ(-SIGTERM, end_of(daemon));
  EXPECT_GT(pid("wan"), 0);
  EXPECT_NE(daemon, pid("wan"));
  EXPECT_EQ(record_of("test", "wait", "a,b"), file_content(record_path("wan")));
  stop("wan");
}

TEST_F(ControlTest, reset_restarts_every_dead_service) {
  kill_daemon(start("lan"));
  start("wan");
  const pid_t daemon = pid("wan");
  EXPECT_EQ(0, ServiceReset("wan"));
  end_of(daemon);
  stop("wan");
  stop("lan");
}

TEST_F(ControlTest, reset_of_a_dead_service_restarts_it_and_says_that_it_was_dead) {
  kill_daemon(start("wan"));
  EXPECT_TRUE(fails(ESRCH, ServiceReset("wan")));
  stop("wan");
}

TEST_F(ControlTest, reset_without_a_record_checks_nothing) {
  put_record("lan", record_of("test", "wait"));
  EXPECT_TRUE(fails(ENOENT, ServiceReset("wan")));
  EXPECT_EQ(-1, pid("lan"));
}

TEST_F(ControlTest, off_forgets_the_service_and_lets_the_daemon_run) {
  const pid_t daemon = start("wan");
  EXPECT_EQ(0, ServiceOff("w%s", "an"));
  EXPECT_EQ("", file_content(record_path("wan")));
  EXPECT_EQ("null", info("wan"));
  EXPECT_EQ("{}", spelled(ServiceList()));
  EXPECT_EQ(0, DaemonCheck());
  EXPECT_EQ(daemon, pid("wan"));
  stop("wan");
}

TEST_F(ControlTest, off_without_a_record_fails) {
  EXPECT_TRUE(fails(ENOENT, ServiceOff("wan")));
  EXPECT_FALSE(exists(record_path("wan")));
}

TEST_F(ControlTest, pid_is_that_of_whoever_holds_the_record) {
  EXPECT_EQ(-1, ServicePid("wan"));
  put_record("wan", record_of("test", "wait"));
  EXPECT_EQ(-1, ServicePid("wan"));
  const pid_t daemon = start("wan");
  EXPECT_EQ(daemon, ServicePid("%c%s", 'w', "an"));
  stop("wan");
  EXPECT_EQ(-1, ServicePid("wan"));
}

// Such as one that waits for the daemon's end.
TEST_F(ControlTest, a_shared_lock_is_no_daemon) {
  put_record("wan", record_of("test", "wait"));
  Gate held;
  Child other([&] {
    lock_open(record_path("wan").c_str(), O_RDONLY, 0, 0);
    held.open();
    return pause();
  });
  ASSERT_TRUE(held.wait());
  EXPECT_EQ(-1, pid("wan"));
  EXPECT_TRUE(fails(ESRCH, ServiceStop("wan")));
}

TEST_F(ControlTest, a_daemon_that_may_not_be_signalled_stays_and_can_be_found) {
  const pid_t daemon = start("wan");
  Fault fault(Call::kKill, {.error = EPERM});
  EXPECT_TRUE(fails(EPERM, ServiceStop("wan")));
  EXPECT_EQ(daemon, pid("wan"));
  EXPECT_EQ("", file_content(record_path("wan")));
  stop("wan");
}

TEST_F(ControlTest, bad_names_are_refused_and_nothing_outside_is_touched) {
  const std::string outside = record_of("test", "wait");
  put_file("/tmp/.var/wan.spid", outside);
  put_file("/tmp/wan.spid", outside);
  make_directories("/tmp/.var/service/sub");
  put_file("/tmp/.var/service/sub/wan.spid", outside);
  for (const char* name : {"", "../wan", "../../wan", "sub/wan", "/tmp/wan"}) {
    EXPECT_TRUE(fails(EINVAL, ServiceStop("%s", name))) << name;
    EXPECT_TRUE(fails(EINVAL, ServiceReset("%s", name))) << name;
    EXPECT_TRUE(fails(EINVAL, ServiceOff("%s", name))) << name;
    EXPECT_TRUE(fails(EINVAL, ServicePid("%s", name))) << name;
    EXPECT_EQ(nullptr, ServiceInfo("%s", name)) << name;
  }
  for (const char* file : {"/tmp/.var/wan.spid", "/tmp/wan.spid", "/tmp/.var/service/sub/wan.spid"})
    EXPECT_EQ(outside, file_content(file)) << file;
}

TEST_F(ControlTest, names_that_would_be_cut_are_refused) {
  const std::string fits(232, 'n');
  put_record(fits, "");
  for (const size_t length : {233u, 255u, 256u, 300u, 5000u}) {
    const std::string name(length, 'n');
    EXPECT_TRUE(fails(ENAMETOOLONG, ServiceStop("%s", name.c_str()))) << length;
    EXPECT_TRUE(fails(ENAMETOOLONG, ServicePid("%s", name.c_str()))) << length;
  }
  EXPECT_EQ(0, ServiceOff("%s", fits.c_str()));
}

TEST_F(ControlTest, missing_formats_are_refused) {
  const char* const none = nullptr;
  EXPECT_TRUE(fails(EINVAL, ServiceStop(none)));
  EXPECT_TRUE(fails(EINVAL, ServiceReset(none)));
  EXPECT_TRUE(fails(EINVAL, ServiceOff(none)));
  EXPECT_TRUE(fails(EINVAL, ServicePid(none)));
  EXPECT_EQ(nullptr, ServiceInfo(none));
}

TEST_F(ControlTest, stop_leaves_a_record_alone_that_was_made_anew_meanwhile) {
  put_record("wan", record_of("test", "wait"));
  signal_register(SIGUSR1, [](int) {
    unlink("/tmp/.var/service/wan.spid");
    close(creat("/tmp/.var/service/wan.spid", 0600));
  });
  Fault fault(Call::kFcntl, {.signal = SIGUSR1});
  EXPECT_EQ(-1, ServiceStop("wan"));
  EXPECT_TRUE(fault.fired());
  EXPECT_TRUE(exists(record_path("wan")));
  signal_register(SIGUSR1, SIG_DFL);
}

// Whoever comes first: no daemon lives on that nobody finds.
TEST_F(ControlTest, a_start_and_a_stop_at_the_same_time_leave_no_daemon_without_a_record) {
  for (int round = 0; round < 150 && !HasFailure(); ++round) {
    if (round % 2) put_record("wan", record_of("test", "wait"));
    Gate gate;
    const auto race = [&gate](auto action, int delay) {
      const pid_t child = fork();
      if (child != 0) return child;
      gate.wait();
      usleep(static_cast<useconds_t>(delay));
      action();
      _exit(0);
    };
    const pid_t starter = race([] { ServiceStart("wan", "test", "wait", nullptr); }, 0);
    const pid_t stopper = race([] { ServiceStop("wan"); }, round * 20);
    gate.open();
    end_of(starter);
    end_of(stopper);
    if (pid("wan") > 0) stop("wan");
    EXPECT_TRUE(all_end()) << round;
  }
}

TEST_F(ControlTest, whatever_fails_a_stop_leaves_the_service_running_or_ended) {
  for (const Call call : {Call::kOpen, Call::kFcntl, Call::kKill, Call::kUnlink, Call::kStat,
                          Call::kOpendir, Call::kMkdir})
    for (EachCall each(call, {.error = EIO}); each.next();) {
      const pid_t daemon = start("wan");
      const int result = each.run([] { return ServiceStop("wan"); });
      const bool lives = result != 0 && pid("wan") == daemon;
      EXPECT_TRUE(!lives || ServiceStop("wan") == 0);
      const int end = end_of(daemon);
      EXPECT_TRUE(end == -SIGTERM || end == -SIGKILL) << end;
      unlink(record_path("wan").c_str());
    }
}

}  // namespace
