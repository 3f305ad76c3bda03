// Closing a device: unlocked, and its line as it was.
#include "atcmd_support.h"

namespace {

using namespace atcmd_test;
using std::string;

class CloseTest : public AtcmdTest {};

TEST_F(CloseTest, close_refuses_null) {
  errno = 0;
  EXPECT_EQ(0, atcmd_close(nullptr));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(CloseTest, close_of_a_handle_that_is_not_open_frees_it) {
  atcmd_t* atcmd = static_cast<atcmd_t*>(calloc(1, sizeof(atcmd_t)));
  atcmd->fd = -1;
  const Logged log = logged([&] { EXPECT_EQ(1, atcmd_close(atcmd)); });
  EXPECT_EQ("", log.errors + log.debug);
}

TEST_F(CloseTest, close_unlocks_the_device_and_logs) {
  Line line;
  atcmd_t* atcmd = open_at_once(line.device());
  const string fd = std::to_string(atcmd->fd);
  EXPECT_FALSE(misc_test::lockable_elsewhere(line.device()));
  const Logged log = logged([&] { EXPECT_EQ(1, atcmd_close(atcmd)); });
  EXPECT_EQ("777: close the fd(" + fd + ") succeed\n", log.debug);
  EXPECT_EQ("", log.errors);
  EXPECT_TRUE(misc_test::lockable_elsewhere(line.device()));
}

TEST_F(CloseTest, close_drops_what_lay_in_the_line) {
  Line line;
  atcmd_t* atcmd = open_at_once(line.device());
  line.say("late\r\n");
  for (int round = 0; round < 5000 && line.waiting() == 0; ++round) usleep(1000);
  EXPECT_EQ(1, atcmd_close(atcmd));
  EXPECT_EQ(0, line.waiting());
}

TEST_F(CloseTest, close_puts_the_settings_back_under_an_alarm) {
  if (!fairlead_test::can_trace()) GTEST_SKIP() << "no calls can be watched here";
  Line line;
  atcmd_t* atcmd = open_at_once(line.device());
  EXPECT_EQ((std::vector<string>{"alarm 5", "set and flush"}),
            steps_of([&] { atcmd_close(atcmd); }));
  EXPECT_EQ(1, atcmd_close(atcmd));
}

// Kept: one copy of settings for the process.
TEST_F(CloseTest, close_of_either_of_two_devices_puts_back_what_the_second_had) {
  Line first, second;
  termios slow = second.settings();
  cfsetspeed(&slow, B300);
  second.set(slow);
  atcmd_t* one = open_at_once(first.device());
  atcmd_t* two = open_at_once(second.device());
  EXPECT_EQ(1, atcmd_close(one));
  EXPECT_TRUE(slow == first.settings());
  EXPECT_EQ(1, atcmd_close(two));
  EXPECT_TRUE(slow == second.settings());
}

TEST_F(CloseTest, close_of_a_line_that_was_hung_up_succeeds) {
  Line line;
  atcmd_t* atcmd = open_at_once(line.device());
  line.hang_up();
  EXPECT_EQ(1, atcmd_close(atcmd));
}

TEST_F(CloseTest, a_signal_during_close_is_told_and_the_device_closed_all_the_same) {
  Line line;
  CallersHandlers callers;
  const termios before = line.settings();
  for (int number : {SIGHUP, SIGALRM, SIGTERM, SIGINT, SIGQUIT, SIGPIPE}) {
    atcmd_t* atcmd = open_at_once(line.device());
    const string fd = std::to_string(atcmd->fd), text = std::to_string(number);
    const Logged log = logged([&] {
      Fault fault(Call::kIoctl, {.signal = number});
      EXPECT_EQ(0, atcmd_close(atcmd));
      EXPECT_EQ(EINTR, errno);
    });
    EXPECT_EQ("233: atcmd receive the signal(" + text + ")\n770: receive " + text +
                  " signal at fd(" + fd + ") close\n",
              log.errors);
    EXPECT_TRUE(before == line.settings());
    EXPECT_TRUE(callers.in_force());
    EXPECT_TRUE(misc_test::lockable_elsewhere(line.device()));
  }
  EXPECT_EQ(0, callers.calls());
}

TEST_F(CloseTest, a_signal_at_any_system_call_of_close_is_told_or_reaches_the_caller) {
  Line line;
  CallersHandlers callers;
  const termios before = line.settings();
  for (int number : {SIGHUP, SIGALRM, SIGTERM}) {
    for (EachCall each(Call::kAny, {.signal = number}); each.next();) {
      atcmd_t* atcmd = open_at_once(line.device(), 9600);
      ASSERT_NE(nullptr, atcmd);
      const int calls = callers.calls();
      const int result = each.run([&] { return atcmd_close(atcmd); });
      EXPECT_EQ(!each.fired() || callers.calls() > calls ? 1 : 0, result) << each.nth();
      EXPECT_TRUE(before == line.settings()) << each.nth();
      EXPECT_TRUE(callers.in_force());
      EXPECT_TRUE(misc_test::lockable_elsewhere(line.device()));
    }
  }
}

TEST_F(CloseTest, close_goes_on_without_a_mask) {
  Line line;
  for (auto [nth, number] : {std::pair{1, "740"}, {2, "756"}}) {
    atcmd_t* atcmd = open_at_once(line.device());
    sigset_t mask;
    sigprocmask(SIG_SETMASK, nullptr, &mask);
    const Logged log = logged([&, nth = nth] {
      Fault fault(Call::kMask, {.nth = nth, .error = EPERM});
      EXPECT_EQ(1, atcmd_close(atcmd));
    });
    sigprocmask(SIG_SETMASK, &mask, nullptr);
    EXPECT_EQ(string(number) + ": sigprocmask error(err:1/Operation not permitted)\n", log.errors);
  }
}

TEST_F(CloseTest, each_failing_call_of_close_leaves_the_device_closed_and_unlocked) {
  Line line;
  for (Call call : {Call::kIoctl, Call::kFcntl}) {
    for (EachCall each(call, {.error = EIO}); each.next();) {
      atcmd_t* atcmd = open_at_once(line.device());
      EXPECT_EQ(1, each.run([&] { return atcmd_close(atcmd); }));
      EXPECT_TRUE(misc_test::lockable_elsewhere(line.device()));
    }
  }
}

}  // namespace
