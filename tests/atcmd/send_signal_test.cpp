// Signals, alarms and hang-ups in the middle of an exchange.
#include <sys/wait.h>

#include "atcmd_support.h"
#include "support/syslog.h"

namespace {

using namespace atcmd_test;
using misc_test::Stopwatch;
using std::string;

class SendSignalTest : public OpenDeviceTest {
 protected:
  string told(int number) const {
    const string text = std::to_string(number);
    return "233: atcmd receive the signal(" + text + ")\n556: receive " + text + " signal at fd(" +
           std::to_string(atcmd_->fd) + ") send\n";
  }

  // Lines of the log without those of the wait that a signal ended.
  static string without_wait(const string& errors) {
    return std::regex_replace(errors, std::regex("477: [^\n]*\n"), "");
  }

  // Sends a signal to this process once it waits inside an exchange.
  fairlead_test::Child sender(int number) {
    const pid_t parent = getpid();
    return fairlead_test::Child([parent, number] {
      EXPECT_TRUE(wait_until_held_up(parent));
      kill(parent, number);
      return 0;
    });
  }
};

TEST_F(SendSignalTest, a_signal_ends_the_wait_for_a_reply) {
  CallersHandlers callers;
  for (int number : {SIGHUP, SIGALRM, SIGTERM}) {
    auto child = sender(number);
    const Stopwatch watch;
    const Logged log =
        logged([&] { EXPECT_EQ(-1, atcmd_send(atcmd_, "AT", 60, nullptr, ATCMD_ECHO)); });
    EXPECT_EQ(EINTR, errno);
    EXPECT_LT(watch.seconds(), 30);
    EXPECT_EQ(told(number), without_wait(log.errors));
    EXPECT_NE(string::npos, log.errors.find("477: select( ")) << log.errors;
    EXPECT_TRUE(callers.in_force());
    EXPECT_EQ(0, child.wait().status);
  }
  EXPECT_EQ(0, callers.calls());
}

// A signal outside the time in which the library's handlers are in force is the caller's.
TEST_F(SendSignalTest, a_signal_at_any_system_call_ends_the_exchange_or_reaches_the_caller) {
  CallersHandlers callers;
  misc_test::CallersHandler other(SIGUSR1);
  for (int number : {SIGHUP, SIGALRM, SIGTERM}) {
    for (EachCall each(Call::kAny, {.signal = number}); each.next();) {
      line_->say("AT\r\r\nOK\r\n");
      const int calls = callers.calls();
      const int result =
          each.run([&] { return atcmd_send(atcmd_, "AT", 60, nullptr, ATCMD_ECHO); });
      EXPECT_EQ(!each.fired() || callers.calls() > calls ? 0 : -1, result) << each.nth();
      EXPECT_TRUE(callers.in_force());
      EXPECT_NE(0, fcntl(atcmd_->fd, F_GETFL) & O_NONBLOCK);
      tcflush(atcmd_->fd, TCIFLUSH);
      line_->heard();
    }
  }
}

// It came before the wait began, and still the wait does not begin.
TEST_F(SendSignalTest, a_signal_just_before_the_wait_ends_it_at_once) {
  CallersHandlers callers;
  const Stopwatch watch;
  Fault fault(Call::kSelect, {.signal = SIGTERM});
  EXPECT_EQ(-1, atcmd_send(atcmd_, "AT", 60, nullptr, ATCMD_ECHO));
  EXPECT_LT(watch.seconds(), 30);
}

TEST_F(SendSignalTest, a_signal_in_a_callback_overrides_a_good_result) {
  CallersHandlers callers;
  atcmd_->parser = [](atcmd_t*, const char*, const char*, uint32_t) {
    raise(SIGHUP);
    return 0;
  };
  line_->say("x");
  const Logged log =
      logged([&] { EXPECT_EQ(-1, atcmd_send(atcmd_, "AT", 5, nullptr, ATCMD_ECHO)); });
  EXPECT_EQ(told(SIGHUP), log.errors);
}

TEST_F(SendSignalTest, the_last_of_several_signals_is_named_and_each_is_logged) {
  CallersHandlers callers;
  atcmd_->parser = [](atcmd_t*, const char*, const char*, uint32_t) {
    raise(SIGTERM);
    raise(SIGHUP);
    return 5;
  };
  line_->say("x");
  const Logged log =
      logged([&] { EXPECT_EQ(-1, atcmd_send(atcmd_, "AT", 5, nullptr, ATCMD_ECHO)); });
  EXPECT_EQ(
      "233: atcmd receive the signal(1)\n233: atcmd receive the signal(15)\n556: receive 1 "
      "signal at fd(" +
          std::to_string(atcmd_->fd) + ") send\n",
      log.errors);
}

TEST_F(SendSignalTest, a_signal_is_not_remembered_into_the_next_exchange) {
  CallersHandlers callers;
  Fault fault(Call::kSelect, {.signal = SIGHUP});
  EXPECT_EQ(-1, atcmd_send(atcmd_, "AT", 5, nullptr, 0));
  line_->say("AT\r\r\nOK\r\n");
  EXPECT_EQ(0, atcmd_send(atcmd_, "AT", 5, nullptr, 0));
}

TEST_F(SendSignalTest, other_signals_wait_until_the_exchange_is_over) {
  misc_test::CallersHandler interrupt(SIGINT);
  static int calls_inside;
  atcmd_->parser = [](atcmd_t*, const char*, const char*, uint32_t) {
    raise(SIGINT);
    calls_inside = misc_test::CallersHandler::calls;
    return 0;
  };
  line_->say("x");
  EXPECT_EQ(0, atcmd_send(atcmd_, "AT", 5, nullptr, 0));
  EXPECT_EQ(0, calls_inside);
  EXPECT_EQ(1, interrupt.calls);
}

// ---- The caller's mask and alarm ----

TEST_F(SendSignalTest, the_callers_mask_comes_back) {
  misc_test::Blocked blocked({SIGTERM, SIGUSR2});
  line_->say("AT\r\r\nOK\r\n");
  EXPECT_EQ(0, atcmd_send(atcmd_, "AT", 5, nullptr, 0));
  EXPECT_EQ((std::vector<int>{SIGTERM, SIGUSR2}),
            blocked_of({SIGHUP, SIGALRM, SIGTERM, SIGINT, SIGUSR1, SIGUSR2}));
}

TEST_F(SendSignalTest, the_callers_alarm_goes_on_after_an_exchange) {
  misc_test::CallersHandler handler(SIGALRM);
  misc_test::CallersAlarm alarm({{7, 0}, {100, 0}});
  line_->say("AT\r\r\nOK\r\n");
  EXPECT_EQ(0, atcmd_send(atcmd_, "AT", 5, nullptr, 0));
  EXPECT_GT(alarm.left().it_value.tv_sec, 30);
  EXPECT_EQ(7, alarm.left().it_interval.tv_sec);
  EXPECT_EQ(0, handler.calls);
}

TEST_F(SendSignalTest, a_callers_alarm_that_runs_out_ends_the_exchange) {
  misc_test::CallersHandler handler(SIGALRM);
  misc_test::CallersAlarm alarm({{0, 0}, {0, 200000}});
  const Logged log =
      logged([&] { EXPECT_EQ(-1, atcmd_send(atcmd_, "AT", 60, nullptr, ATCMD_ECHO)); });
  EXPECT_EQ(told(SIGALRM), without_wait(log.errors));
  EXPECT_EQ(0, handler.calls);
}

// ---- A line that takes nothing ----

class HeldUpTest : public SendSignalTest {
 protected:
  // Fills the line until it takes nothing more, also after the kernel has moved on what it has.
  void SetUp() override {
    SendSignalTest::SetUp();
    for (int refused = 0; refused < 20;) {
      if (write(atcmd_->fd, "x", 1) == 1) {
        refused = 0;
        continue;
      }
      ASSERT_EQ(EAGAIN, errno);
      ++refused;
      usleep(5000);
    }
  }
};

TEST_F(HeldUpTest, the_alarm_ends_a_write_after_ten_seconds) {
  const Stopwatch watch;
  const Logged log =
      logged([&] { EXPECT_EQ(-1, atcmd_send(atcmd_, "AT", 1, nullptr, ATCMD_ECHO)); });
  EXPECT_GE(watch.seconds(), 10.0);
  EXPECT_LT(watch.seconds(), 40.0);
  EXPECT_NE(string::npos, log.errors.find("/atcmd/440}")) << log.errors;
  EXPECT_NE(string::npos, log.errors.find("receive 14 signal at fd(")) << log.errors;
  EXPECT_NE(0, fcntl(atcmd_->fd, F_GETFL) & O_NONBLOCK);
}

TEST_F(HeldUpTest, a_signal_ends_a_write) {
  CallersHandlers callers;
  auto child = sender(SIGTERM);
  const Stopwatch watch;
  EXPECT_EQ(-1, atcmd_send(atcmd_, "AT", 1, nullptr, ATCMD_ECHO));
  EXPECT_EQ(EINTR, errno);
  EXPECT_LT(watch.seconds(), 9);
  EXPECT_EQ(0, child.wait().status);
}

// ---- Hang-up ----

// A session of its own waits for a reply while the line is hung up. What it logs is checked there.
void hang_up_during_send(int flags, int result, const string& message) {
  Line line;
  fairlead_test::Child session([&] {
    EXPECT_GT(setsid(), 0);
    close(line.modem());
    Fault no_sleep(Call::kSleep, {.error = EINTR});
    atcmd_t* atcmd = atcmd_open(line.device(), flags, 0, nullptr, nullptr, ATCMD_ECHO);
    EXPECT_NE(nullptr, atcmd);
    const Logged log = logged([&] { EXPECT_EQ(result, atcmd_send(atcmd, "AT", 60, "OK", 0)); });
    EXPECT_NE(string::npos, log.errors.find(message)) << log.errors;
    signal(SIGHUP, SIG_IGN);
    EXPECT_EQ(1, atcmd_close(atcmd));
    return 0;
  });
  string command;
  for (int round = 0; round < 20000 && command != "AT\r\n"; ++round) {
    command += line.heard();
    usleep(1000);
  }
  ASSERT_EQ("AT\r\n", command);
  ASSERT_TRUE(wait_until_held_up(session.pid()));
  line.hang_up();
  EXPECT_EQ(0, session.wait().status);
}

TEST_F(AtcmdTest, a_hang_up_during_the_wait_gives_1) { hang_up_during_send(kLineFlags, 1, ""); }

TEST_F(AtcmdTest, a_hang_up_of_the_controlling_terminal_comes_as_a_signal) {
  hang_up_during_send(O_RDWR, -1, "556: receive 1 signal at fd(");
}

// ---- Storm ----

// Syslog is not safe inside a handler: one that logged would sooner or later wait for itself.
TEST_F(AtcmdTest, a_storm_of_signals_never_blocks_the_log) {
  fairlead_test::Syslog syslog;
  Line line;
  CallersHandlers callers;
  fairlead_test::Child storm([parent = getpid()] {
    for (;;) {
      kill(parent, SIGHUP);
      usleep(50);
    }
    return 0;
  });
  GlogOpen("tester", LOG_MODE_SYSLOG, 7);
  int caught = 0;
  for (int round = 0; round < 300 || (caught == 0 && round < 30000); ++round) {
    atcmd_t* atcmd = open_at_once(line.device());
    if (!atcmd) {
      ++caught;
      continue;
    }
    if (atcmd_send(atcmd, nullptr, 1, nullptr, 0) == -1) ++caught;
    if (atcmd_close(atcmd) == 0) ++caught;
  }
  storm.send(SIGKILL);
  storm.wait();
  EXPECT_GT(caught, 0);
  EXPECT_TRUE(callers.in_force());
}

}  // namespace
