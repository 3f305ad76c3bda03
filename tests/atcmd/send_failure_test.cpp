// Exchanges whose system calls fail.
#include "atcmd_support.h"

namespace {

using namespace atcmd_test;
using std::string;

class SendFailureTest : public OpenDeviceTest {
 protected:
  string fd() const { return std::to_string(atcmd_->fd); }

  bool waits() const { return !(fcntl(atcmd_->fd, F_GETFL) & O_NONBLOCK); }

  // What an exchange logs while one kind of call fails; without trace.
  string errors_of(Call call, fairlead_test::FaultPlan plan, int result) {
    return logged([&] {
             Fault fault(call, plan);
             EXPECT_EQ(result, atcmd_send(atcmd_, "AT", 2, nullptr, ATCMD_ECHO));
           })
        .errors;
  }
};

TEST_F(SendFailureTest, a_write_that_fails_gives_minus_1) {
  EXPECT_EQ("error: write( " + fd() + ", AT\r\n, 4 ) return error(-1)(err:5/Input/output error){" +
                std::to_string(getpid()) + "/atcmd/440}\n",
            errors_of(Call::kWrite, {.error = EIO}, -1));
  EXPECT_EQ(EIO, errno);
  EXPECT_FALSE(waits());
}

TEST_F(SendFailureTest, a_short_write_gives_5_and_drops_what_lay_in_the_line) {
  line_->say("AT\r");
  for (int round = 0; round < 5000 && line_->waiting() == 0; ++round) usleep(1000);
  EXPECT_EQ("error: write( " + fd() + ", AT\r\n, 4 ) return failed(3)(err:0/Success){" +
                std::to_string(getpid()) + "/atcmd/450}\n",
            errors_of(Call::kWrite, {.at_most = 3}, 5));
  EXPECT_EQ(0, line_->waiting());
  EXPECT_FALSE(waits());
}

TEST_F(SendFailureTest, a_wait_that_fails_gives_minus_1) {
  const string errors = errors_of(Call::kSelect, {.error = ENOMEM}, -1);
  EXPECT_EQ(ENOMEM, errno);
  const std::regex form("477: select\\( " + std::to_string(atcmd_->fd + 1) +
                        ", 0x[0-9a-f]+, NULL, NULL, 0x[0-9a-f]+ \\) "
                        "error\\(err:12/Cannot allocate memory\\)\n");
  EXPECT_TRUE(std::regex_match(errors, form)) << errors;
}

TEST_F(SendFailureTest, a_negative_time_is_refused) {
  const Logged log = logged([&] { EXPECT_EQ(-1, atcmd_send(atcmd_, nullptr, -1, nullptr, 0)); });
  EXPECT_EQ(EINVAL, errno);
  EXPECT_EQ(0u, log.errors.rfind("477: select( ", 0)) << log.errors;
}

TEST_F(SendFailureTest, a_descriptor_that_the_caller_closed_gives_minus_1) {
  close(atcmd_->fd);
  EXPECT_EQ(-1, atcmd_send(atcmd_, nullptr, 1, nullptr, 0));
  EXPECT_EQ(EBADF, errno);
}

TEST_F(SendFailureTest, a_read_that_fails_gives_minus_1) {
  line_->say("AT\r");
  EXPECT_EQ("492: read( " + fd() + ", , 1023 ) error(err:5/Input/output error)\n",
            errors_of(Call::kRead, {.error = EIO}, -1));
  EXPECT_EQ(EIO, errno);
}

TEST_F(SendFailureTest, a_read_that_finds_nothing_waits_again) {
  for (int error : {EAGAIN, EINPROGRESS}) {
    line_->say("AT\r\r\nOK\r\n");
    EXPECT_EQ("", errors_of(Call::kRead, {.error = error, .times = 3}, 0));
    EXPECT_EQ("OK\r", last());
  }
}

TEST_F(SendFailureTest, a_reply_read_byte_by_byte_is_taken) {
  line_->say("AT\r\r\nOK\r\n");
  EXPECT_EQ("", errors_of(Call::kRead, {.times = fairlead_test::kForever, .at_most = 1}, 0));
  EXPECT_EQ("OK\r", last());
}

TEST_F(SendFailureTest, send_goes_on_without_a_mask) {
  for (auto [nth, number] : {std::pair{1, "420"}, {4, "545"}}) {
    line_->say("AT\r\r\nOK\r\n");
    for (int round = 0; round < 5000 && line_->waiting() < 9; ++round) usleep(1000);
    sigset_t mask;
    sigprocmask(SIG_SETMASK, nullptr, &mask);
    const string errors = errors_of(Call::kMask, {.nth = nth, .error = EPERM}, 0);
    sigprocmask(SIG_SETMASK, &mask, nullptr);
    EXPECT_EQ(string(number) + ": sigprocmask error(err:1/Operation not permitted)\n", errors);
  }
}

// One that can not be blocked during a wait is let through all the time.
TEST_F(SendFailureTest, a_mask_that_fails_around_a_wait_does_no_harm) {
  for (int nth : {2, 3}) {
    line_->say("AT\r\r\nOK\r\n");
    for (int round = 0; round < 5000 && line_->waiting() < 9; ++round) usleep(1000);
    EXPECT_EQ("", errors_of(Call::kMask, {.nth = nth, .error = EPERM}, 0));
    EXPECT_EQ((std::vector<int>{}), blocked_of({SIGHUP, SIGTERM, SIGINT, SIGUSR1}));
  }
}

// Whatever fails: one of the results that are stated, and a state in which the next exchange works.
TEST_F(SendFailureTest, each_failing_call_gives_a_stated_result_and_the_next_exchange_works) {
  for (Call call : {Call::kWrite, Call::kRead, Call::kSelect, Call::kFcntl, Call::kIoctl}) {
    for (EachCall each(call, {.error = EIO}); each.next();) {
      line_->say("AT\r\r\nOK\r\n");
      const int result = each.run([&] { return atcmd_send(atcmd_, "AT", 2, nullptr, ATCMD_ECHO); });
      const bool needed = call == Call::kWrite || call == Call::kRead || call == Call::kSelect;
      EXPECT_EQ(each.fired() && needed ? -1 : 0, result) << each.nth();
      tcflush(atcmd_->fd, TCIFLUSH);
      line_->say("AT\r\r\nOK\r\n");
      EXPECT_EQ(0, atcmd_send(atcmd_, "AT", 2, nullptr, ATCMD_ECHO));
      EXPECT_FALSE(waits());
      line_->heard();
    }
  }
}

}  // namespace
