// Opening a device: locked, raw, and without a trace when it fails.
#include <sys/stat.h>

#include "atcmd_support.h"
#include "fairlead/state.h"

namespace {

using namespace atcmd_test;
using fairlead_test::run_child;
using misc_test::Stopwatch;
using std::string;

class OpenTest : public AtcmdTest {};

TEST_F(OpenTest, open_refuses_no_path) {
  for (const char* path : {static_cast<const char*>(nullptr), ""}) {
    errno = 0;
    const Logged log = logged([&] { EXPECT_EQ(nullptr, open_at_once(path)); });
    EXPECT_EQ(EINVAL, errno);
    EXPECT_EQ("584: cannot atcmd_open a null path\n", log.debug);
  }
}

TEST_F(OpenTest, open_makes_a_handle_with_the_defaults) {
  Line line;
  atcmd_t* atcmd = open_at_once(line.device());
  ASSERT_NE(nullptr, atcmd);
  EXPECT_GE(atcmd->fd, 0);
  EXPECT_EQ(0, atcmd->received_length);
  EXPECT_STREQ("", atcmd->receive_buffer);
  EXPECT_STREQ("", atcmd_lastack(atcmd));
  EXPECT_EQ(6u, atcmd->default_flags);
  EXPECT_NE(nullptr, atcmd->parser);
  EXPECT_NE(nullptr, atcmd->notify);
  EXPECT_EQ(FD_CLOEXEC, fcntl(atcmd->fd, F_GETFD));
  EXPECT_EQ(1, atcmd_close(atcmd));
}

TEST_F(OpenTest, open_keeps_what_the_opener_gives) {
  Line line;
  const atcmd_parser_t parser = [](atcmd_t*, const char*, const char*, uint32_t) { return 0; };
  const atcmd_notify_t notify = [](atcmd_t*, const char*) { return 0; };
  atcmd_t* atcmd = open_at_once(line.device(), 0, parser, notify, ATCMD_ECHO);
  ASSERT_NE(nullptr, atcmd);
  EXPECT_EQ(parser, atcmd->parser);
  EXPECT_EQ(notify, atcmd->notify);
  EXPECT_EQ(ATCMD_ECHO, atcmd->default_flags);
  EXPECT_EQ(1, atcmd_close(atcmd));
}

TEST_F(OpenTest, open_builds_the_masks) {
  Line line;
  atcmd_t* atcmd = open_at_once(line.device());
  ASSERT_NE(nullptr, atcmd);
  const std::set<int> open = {SIGHUP, SIGALRM, SIGTERM, SIGINT, SIGQUIT, SIGPIPE};
  const std::set<int> send = {SIGHUP, SIGALRM, SIGTERM};
  for (int number = 1; number < 32; ++number) {
    EXPECT_EQ(!open.count(number), sigismember(&atcmd->open_mask, number) == 1) << number;
    EXPECT_EQ(!send.count(number), sigismember(&atcmd->send_mask, number) == 1) << number;
  }
  EXPECT_EQ(1, atcmd_close(atcmd));
}

TEST_F(OpenTest, open_logs_the_attempt_and_the_success) {
  Line line;
  atcmd_t* atcmd = nullptr;
  const Logged log = logged([&] { atcmd = open_at_once(line.device()); });
  const string device = line.device();
  EXPECT_EQ(
      "654: try to open the device(" + device + ")\n699: open the device(" + device + ") succeed\n",
      log.debug);
  EXPECT_EQ("", log.errors);
  atcmd_close(atcmd);
}

TEST_F(OpenTest, open_takes_the_second_without_dtr) {
  Line line;
  const Stopwatch watch;
  atcmd_t* atcmd = atcmd_open(line.device(), kLineFlags, 0, nullptr, nullptr, 0);
  EXPECT_GE(watch.seconds(), 1.0);
  EXPECT_EQ(1, atcmd_close(atcmd));
}

TEST_F(OpenTest, open_asks_the_line_step_by_step_under_an_alarm) {
  if (!fairlead_test::can_trace()) GTEST_SKIP() << "no calls can be watched here";
  Line line;
  const string dtr = std::to_string(TIOCM_DTR);
  EXPECT_EQ((std::vector<string>{"alarm 5", "drop " + dtr, "set and flush", "raise " + dtr}),
            steps_of([&] { open_at_once(line.device()); }));
}

TEST_F(OpenTest, open_gives_a_file_it_makes_to_owner_and_group) {
  atcmd_t* atcmd = nullptr;
  const mode_t former = umask(0);
  {
    Fault no_sleep(Call::kSleep, {.error = EINTR});
    atcmd = atcmd_open("/tmp/device", O_RDWR | O_CREAT, 0, nullptr, nullptr, 0);
  }
  umask(former);
  ASSERT_NE(nullptr, atcmd);
  EXPECT_EQ(1, atcmd_close(atcmd));
  struct stat status;
  ASSERT_EQ(0, stat("/tmp/device", &status));
  EXPECT_EQ(0660u, status.st_mode & 0777);
}

TEST_F(OpenTest, open_passes_the_errno_of_open_on) {
  errno = 0;
  EXPECT_EQ(nullptr, open_at_once("/dev/none"));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_EQ(nullptr, open_at_once("/tmp"));
  EXPECT_EQ(EISDIR, errno);
}

// ---- Line settings ----

// Everything on that is to be off, and the other way round.
termios contrary(termios settings) {
  settings.c_iflag |= INLCR | IGNCR | ICRNL | IXON;
  settings.c_oflag |= OPOST | ONLCR | OCRNL | OFDEL;
  settings.c_cflag |= CSTOPB | PARODD;
  settings.c_cflag &= ~(HUPCL | CLOCAL | static_cast<tcflag_t>(CRTSCTS));
  settings.c_lflag |= ISIG | ICANON | ECHO | ECHOE | ECHOK;
  settings.c_cc[VMIN] = 7;
  settings.c_cc[VTIME] = 7;
  return settings;
}

TEST_F(OpenTest, open_makes_the_line_raw_and_touches_nothing_else) {
  Line line;
  line.set(contrary(line.settings()));
  const termios before = line.settings();
  atcmd_t* atcmd = open_at_once(line.device());
  const termios raw = line.settings();
  EXPECT_EQ(before.c_iflag & ~0x1C0u, raw.c_iflag);
  EXPECT_EQ(before.c_oflag & ~0x8Du, raw.c_oflag);
  EXPECT_EQ((before.c_cflag & 0x7FFFE88Fu) | 0x80000CB0u, raw.c_cflag);
  EXPECT_EQ(before.c_lflag & ~0x1Bu, raw.c_lflag);
  EXPECT_NE(0u, before.c_iflag & IXON & raw.c_iflag);
  EXPECT_NE(0u, before.c_lflag & ECHOK & raw.c_lflag);
  EXPECT_EQ(1, raw.c_cc[VMIN]);
  EXPECT_EQ(0, raw.c_cc[VTIME]);
  EXPECT_EQ(1, atcmd_close(atcmd));
  EXPECT_TRUE(before == line.settings());
}

TEST_F(OpenTest, open_drops_what_lay_in_the_line) {
  Line line;
  line.say("old\n");
  for (int round = 0; round < 5000 && line.waiting() == 0; ++round) usleep(1000);
  atcmd_t* atcmd = open_at_once(line.device());
  EXPECT_EQ(0, line.waiting());
  atcmd_close(atcmd);
}

TEST_F(OpenTest, open_sets_the_speed_and_close_puts_it_back) {
  Line line;
  const termios before = line.settings();
  for (auto [speed, code] : {std::pair<int, speed_t>{9600, B9600}, {300, B300}, {38400, B38400}}) {
    atcmd_t* atcmd = open_at_once(line.device(), speed);
    const termios raw = line.settings();
    EXPECT_EQ(code, cfgetospeed(&raw));
    EXPECT_EQ(code, cfgetispeed(&raw));
    EXPECT_EQ(1, atcmd_close(atcmd));
    EXPECT_TRUE(before == line.settings());
  }
}

// Kept: products in the field are set up for it.
TEST_F(OpenTest, open_lands_high_speeds_on_the_low_ones_that_share_their_bits) {
  Line line;
  for (auto [speed, code] : {std::pair<int, speed_t>{57600, B50},
                             {115200, B75},
                             {230400, B110},
                             {460800, B134},
                             {921600, B300}}) {
    atcmd_t* atcmd = open_at_once(line.device(), speed);
    const termios raw = line.settings();
    EXPECT_EQ(code, cfgetospeed(&raw)) << speed;
    EXPECT_EQ(1, atcmd_close(atcmd));
  }
}

TEST_F(OpenTest, open_keeps_the_speed_for_0_and_for_one_it_does_not_know) {
  Line line;
  termios before = line.settings();
  cfsetspeed(&before, B1200);
  line.set(before);
  for (int speed : {0, 14400}) {
    atcmd_t* atcmd = nullptr;
    const Logged log = logged([&] { atcmd = open_at_once(line.device(), speed); });
    const termios raw = line.settings();
    EXPECT_EQ(B1200, cfgetospeed(&raw));
    EXPECT_EQ(speed ? "115: speed 14400 not supported\n" : "", log.errors);
    EXPECT_EQ(1, atcmd_close(atcmd));
  }
}

TEST_F(OpenTest, open_lands_a_high_speed_it_found_as_well) {
  Line line;
  termios fast = line.settings();
  cfsetspeed(&fast, B115200);
  line.set(fast);
  atcmd_t* atcmd = open_at_once(line.device(), 0);
  const termios raw = line.settings();
  EXPECT_EQ(B75, cfgetospeed(&raw));
  EXPECT_EQ(1, atcmd_close(atcmd));
  EXPECT_TRUE(fast == line.settings());
}

TEST_F(OpenTest, open_uses_a_device_without_line_settings_as_it_is) {
  fairlead_test::put_file("/tmp/device", "");
  atcmd_t* atcmd = nullptr;
  const Logged log = logged([&] { atcmd = open_at_once("/tmp/device"); });
  ASSERT_NE(nullptr, atcmd);
  EXPECT_EQ("140: tcgetattr tty(" + std::to_string(atcmd->fd) +
                ") error(err:25/Inappropriate ioctl for device)\n",
            log.errors);
  EXPECT_EQ(1, atcmd_close(atcmd));
}

// ---- The lock ----

TEST_F(OpenTest, open_fails_after_a_second_when_another_process_has_the_device) {
  Line line;
  fairlead_test::Gate opened, leave;
  fairlead_test::Child holder([&] {
    atcmd_t* atcmd = open_at_once(line.device());
    opened.open();
    leave.wait();
    return atcmd_close(atcmd) == 1 ? 0 : 1;
  });
  ASSERT_TRUE(opened.wait());
  const termios raw = line.settings();
  const Stopwatch watch;
  EXPECT_EQ(nullptr, open_at_once(line.device()));
  EXPECT_EQ(EBUSY, errno);
  EXPECT_GE(watch.seconds(), 1.0);
  EXPECT_LT(watch.seconds(), 4.5) << "the lock was to end the wait, not the alarm";
  EXPECT_TRUE(raw == line.settings()) << "the line is the holder's";
  leave.open();
  EXPECT_EQ(0, holder.wait().status);
  atcmd_t* atcmd = open_at_once(line.device());
  EXPECT_NE(nullptr, atcmd) << "no lock is left behind";
  atcmd_close(atcmd);
}

// Record locks belong to the process: it does not lock itself out, and any close ends them.
TEST_F(OpenTest, the_same_process_may_open_twice_and_its_first_close_unlocks) {
  Line line;
  atcmd_t* one = open_at_once(line.device());
  atcmd_t* two = open_at_once(line.device());
  ASSERT_NE(nullptr, two);
  EXPECT_FALSE(misc_test::lockable_elsewhere(line.device()));
  EXPECT_EQ(1, atcmd_close(two));
  EXPECT_TRUE(misc_test::lockable_elsewhere(line.device()));
  EXPECT_EQ(1, atcmd_close(one));
}

TEST_F(OpenTest, a_holder_that_is_killed_leaves_no_lock) {
  Line line;
  fairlead_test::Gate opened;
  fairlead_test::Child holder([&] {
    open_at_once(line.device());
    opened.open();
    pause();
    return 0;
  });
  ASSERT_TRUE(opened.wait());
  holder.send(SIGKILL);
  EXPECT_EQ(SIGKILL, holder.wait().signal);
  atcmd_t* atcmd = open_at_once(line.device());
  EXPECT_NE(nullptr, atcmd);
  EXPECT_EQ(1, atcmd_close(atcmd));
}

// ---- Signals ----

string caught(int number) {
  return "233: atcmd receive the signal(" + std::to_string(number) + ")\n";
}

string gave_up(int number, const string& device) {
  return caught(number) + "687: receive " + std::to_string(number) + " signal at device(" + device +
         ") open\n";
}

TEST_F(OpenTest, a_signal_during_open_makes_it_fail_and_restores_everything) {
  Line line;
  CallersHandlers callers;
  const termios before = line.settings();
  for (int number : {SIGHUP, SIGALRM, SIGTERM, SIGINT, SIGQUIT, SIGPIPE}) {
    Fault during_sleep(Call::kSleep, {.error = EINTR, .signal = number});
    const Logged log = logged([&] {
      EXPECT_EQ(nullptr, atcmd_open(line.device(), kLineFlags, 9600, nullptr, nullptr, 0));
    });
    EXPECT_EQ(EINTR, errno);
    EXPECT_EQ(gave_up(number, line.device()), log.errors);
    EXPECT_TRUE(before == line.settings());
    EXPECT_TRUE(callers.in_force());
    EXPECT_TRUE(misc_test::lockable_elsewhere(line.device()));
  }
  EXPECT_EQ(0, callers.calls());
}

// Before the library's handlers are in force and after, a signal is the caller's.
TEST_F(OpenTest, a_signal_at_any_system_call_of_open_ends_it_or_reaches_the_caller) {
  Line line;
  CallersHandlers callers;
  const termios before = line.settings();
  for (int number : {SIGHUP, SIGALRM, SIGTERM}) {
    for (EachCall each(Call::kAny, {.signal = number}); each.next();) {
      const int calls = callers.calls();
      atcmd_t* atcmd = each.run([&] { return open_at_once(line.device(), 9600); });
      EXPECT_EQ(!each.fired() || callers.calls() > calls, atcmd != nullptr) << each.nth();
      EXPECT_TRUE(!atcmd || atcmd_close(atcmd) == 1);
      EXPECT_TRUE(before == line.settings()) << each.nth();
      EXPECT_TRUE(callers.in_force());
    }
  }
}

TEST_F(OpenTest, a_signal_ends_an_open_that_is_held_up) {
  ASSERT_EQ(0, mkfifo("/tmp/fifo", 0600));
  for (int number : {SIGHUP, SIGTERM, SIGINT}) {
    fairlead_test::Child opener([number] {
      const Logged held_up = logged(
          [] { EXPECT_EQ(nullptr, atcmd_open("/tmp/fifo", O_WRONLY, 0, nullptr, nullptr, 0)); });
      EXPECT_EQ(EINTR, errno);
      EXPECT_EQ(gave_up(number, "/tmp/fifo"), held_up.errors);
      return 0;
    });
    ASSERT_TRUE(wait_until_held_up(opener.pid()));
    opener.send(number);
    EXPECT_EQ(0, opener.wait().status);
  }
}

TEST_F(OpenTest, the_alarm_ends_an_open_after_five_seconds) {
  ASSERT_EQ(0, mkfifo("/tmp/fifo", 0600));
  const Stopwatch watch;
  const Logged log =
      logged([] { EXPECT_EQ(nullptr, atcmd_open("/tmp/fifo", O_WRONLY, 0, nullptr, nullptr, 0)); });
  EXPECT_GE(watch.seconds(), 5.0);
  EXPECT_LT(watch.seconds(), 30.0);
  EXPECT_EQ(gave_up(SIGALRM, "/tmp/fifo"), log.errors);
}

TEST_F(OpenTest, a_signal_ends_the_wait_for_the_lock) {
  Line line;
  misc_test::Holder holder(line.device());
  fairlead_test::Child opener([&] {
    EXPECT_EQ(nullptr, open_at_once(line.device()));
    EXPECT_EQ(EINTR, errno);
    return 0;
  });
  ASSERT_TRUE(misc_test::wait_until_blocked(opener.pid()));
  opener.send(SIGTERM);
  EXPECT_EQ(0, opener.wait().status);
}

TEST_F(OpenTest, the_callers_alarm_goes_on_after_open) {
  Line line;
  misc_test::CallersHandler handler(SIGALRM);
  misc_test::CallersAlarm alarm({{0, 0}, {100, 0}});
  atcmd_t* atcmd = open_at_once(line.device());
  EXPECT_GT(alarm.left().it_value.tv_sec, 30);
  EXPECT_LE(alarm.left().it_value.tv_sec, 100);
  EXPECT_EQ(1, atcmd_close(atcmd));
  EXPECT_GT(alarm.left().it_value.tv_sec, 30);
  EXPECT_EQ(0, handler.calls);
}

// ---- Failing calls ----

TEST_F(OpenTest, open_goes_on_without_a_mask) {
  Line line;
  const string device = line.device();
  for (auto [nth, number] : {std::pair{1, "647"}, {2, "673"}}) {
    atcmd_t* atcmd = nullptr;
    sigset_t mask;
    sigprocmask(SIG_SETMASK, nullptr, &mask);
    const Logged log = logged([&, nth = nth] {
      Fault fault(Call::kMask, {.nth = nth, .error = EPERM});
      atcmd = open_at_once(line.device());
    });
    sigprocmask(SIG_SETMASK, &mask, nullptr);
    EXPECT_EQ(string(number) + ": sigprocmask error(err:1/Operation not permitted)\n", log.errors);
    ASSERT_NE(nullptr, atcmd);
    EXPECT_EQ(1, atcmd_close(atcmd));
  }
}

TEST_F(OpenTest, a_mask_that_can_not_be_set_is_not_changed) {
  Line line;
  misc_test::Blocked blocked({SIGUSR1});
  Fault fault(Call::kMask, {.error = EPERM});
  atcmd_t* atcmd = open_at_once(line.device());
  EXPECT_EQ((std::vector<int>{SIGUSR1}), blocked_of({SIGHUP, SIGUSR1, SIGUSR2}));
  EXPECT_EQ(1, atcmd_close(atcmd));
}

// Only the open itself and the lock are needed; without the rest the line is used as it is.
TEST_F(OpenTest, each_failing_call_gives_a_handle_or_nothing) {
  Line line;
  const termios before = line.settings();
  for (Call call : {Call::kOpen, Call::kFcntl, Call::kIoctl}) {
    for (EachCall each(call, {.error = EIO}); each.next();) {
      atcmd_t* atcmd = each.run([&] { return open_at_once(line.device()); });
      const bool needed = call != Call::kIoctl;
      EXPECT_EQ(each.fired() && needed, atcmd == nullptr) << each.nth();
      EXPECT_TRUE(!atcmd || atcmd_close(atcmd) == 1);
      EXPECT_TRUE(before == line.settings());
      EXPECT_TRUE(misc_test::lockable_elsewhere(line.device()));
    }
  }
}

TEST_F(OpenTest, a_lack_of_memory_ends_the_process_with_a_message) {
  const auto ended = run_child([] {
    GlogOpen("tester", LOG_MODE_CONSOLE | LOG_MODE_WHERE, 3);
    Fault fault(Call::kMalloc, {.error = ENOMEM});
    open_at_once("/dev/none");
  });
  EXPECT_EQ(255, ended.status);
  EXPECT_NE(string::npos, ended.err.find("/atcmd/590}")) << ended.err;
}

TEST_F(OpenTest, a_lack_of_memory_that_is_not_logged_gives_null) {
  run_child([] {
    GlogClose();
    const uint32_t nothing = 0;
    GvalueSet(nullptr, "log_level", &nothing, sizeof nothing);
    Fault fault(Call::kMalloc, {.error = ENOMEM});
    EXPECT_EQ(nullptr, open_at_once("/dev/none"));
    EXPECT_EQ(ENOMEM, errno);
  });
}

}  // namespace
