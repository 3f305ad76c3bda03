// Exchanges: what goes out, what comes in, what the callbacks see and decide.
#include "atcmd_support.h"

namespace {

using namespace atcmd_test;
using std::string;

class SendTest : public OpenDeviceTest {
 protected:
  // The reply waits in the line already when the command is sent.
  int send(const char* command, const string& reply, const char* expect = nullptr,
           uint32_t flags = 0) {
    line_->say(reply);
    return atcmd_send(atcmd_, command, 5, expect, flags);
  }
};

TEST_F(SendTest, send_refuses_a_handle_that_is_null_or_not_open) {
  errno = 0;
  EXPECT_EQ(-2, atcmd_send(nullptr, "AT", 1, nullptr, 0));
  EXPECT_EQ(EINVAL, errno);
  atcmd_t closed = {};
  closed.fd = -1;
  EXPECT_EQ(-2, atcmd_send(&closed, "AT", 1, nullptr, 0));
}

TEST_F(SendTest, lastack_refuses_null) {
  errno = 0;
  EXPECT_EQ(nullptr, atcmd_lastack(nullptr));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(SendTest, send_ends_the_command_with_cr_lf_and_takes_the_reply) {
  EXPECT_EQ(0, send("AT", "AT\r\r\nOK\r\n", nullptr, 6));
  EXPECT_EQ("OK\r", last());
  EXPECT_EQ("AT\r\n", line_->heard());
}

TEST_F(SendTest, send_tells_an_error_and_keeps_its_text) {
  EXPECT_EQ(5, send("AT+X", "AT+X\r\r\nERROR\r\n"));
  EXPECT_EQ("ERROR\r", last());
  EXPECT_EQ(5, send("AT+CPIN?", "AT+CPIN?\r\r\n+CME ERROR: 10\r\n"));
  EXPECT_EQ("+CME ERROR: 10\r", last());
}

TEST_F(SendTest, send_of_a_dial_command_is_done_with_its_echo) {
  EXPECT_EQ(0, send("ATD*99#", "ATD*99#\r"));
  EXPECT_EQ("OK", last());
}

TEST_F(SendTest, send_cuts_a_long_command_together_with_its_end) {
  const string command(1022, 'x');
  EXPECT_EQ(0, send(command.c_str(), "\r\nOK\r\n", nullptr, ATCMD_TRACE));
  EXPECT_EQ(command + "\r", line_->heard());
  EXPECT_EQ(0, send(string(3000, 'y').c_str(), "\r\nOK\r\n", nullptr, ATCMD_TRACE));
  EXPECT_EQ(string(1023, 'y'), line_->heard());
}

TEST_F(SendTest, without_a_command_nothing_is_sent_and_an_unasked_line_is_taken) {
  for (const char* command : {static_cast<const char*>(nullptr), ""}) {
    EXPECT_EQ(0, send(command, "\r\n+CMTI: \"SM\",3\r\n", "+CMTI"));
    EXPECT_EQ("+CMTI: \"SM\",3\r", last());
    EXPECT_EQ("", line_->heard());
  }
}

TEST_F(SendTest, an_unfinished_line_is_finished_by_a_later_read_without_command) {
  line_->say("\r\n+CMTI: \"S");
  EXPECT_EQ(4, atcmd_send(atcmd_, nullptr, 1, "+CMTI", 0));
  EXPECT_EQ(0, send(nullptr, "M\",3\r\n", "+CMTI"));
  EXPECT_EQ("+CMTI: \"SM\",3\r", last());
}

TEST_F(SendTest, flags_0_means_those_of_the_handle) {
  atcmd_->default_flags = ATCMD_TRACE;
  EXPECT_EQ(0, send("AT", "\r\nOK\r\n"));
  atcmd_->default_flags = ATCMD_ECHO;
  EXPECT_EQ(0, send("AT", "AT\r\r\nOK\r\n"));
  EXPECT_EQ("OK\r", last());
}

TEST_F(SendTest, the_descriptor_does_not_wait_between_exchanges) {
  fcntl(atcmd_->fd, F_SETFL, 0);
  EXPECT_EQ(0, send("AT", "AT\r\r\nOK\r\n"));
  EXPECT_NE(0, fcntl(atcmd_->fd, F_GETFL) & O_NONBLOCK);
}

// ---- Ends without a reply ----

TEST_F(SendTest, nothing_in_time_gives_4) {
  const misc_test::Stopwatch watch;
  EXPECT_EQ(4, atcmd_send(atcmd_, "AT", 1, nullptr, 0));
  EXPECT_GE(watch.seconds(), 1.0);
  EXPECT_EQ(4, atcmd_send(atcmd_, nullptr, 0, nullptr, 0));
}

// What is on its way to the device goes too.
TEST_F(SendTest, every_end_without_a_verdict_flushes_the_line_in_both_directions) {
  if (!fairlead_test::can_trace()) GTEST_SKIP() << "no calls can be watched here";
  const string flush = "flush " + std::to_string(TCIOFLUSH);
  const auto steps = [&](const char* command, int seconds) {
    return steps_of([&] { atcmd_send(atcmd_, command, seconds, "OK", 0); });
  };
  EXPECT_EQ((std::vector<string>{"alarm 10", flush}), steps("AT", 0)) << "nothing in time";
  line_->say("AT\r" + string(1020, 'x'));
  EXPECT_EQ((std::vector<string>{"alarm 10", flush}), steps("AT", 20)) << "a full buffer";
  {
    Fault short_write(Call::kWrite, {.at_most = 3});
    EXPECT_EQ((std::vector<string>{"alarm 10", flush}), steps("AT", 20)) << "a part was sent";
  }
  line_->say("AT\r\r\nOK\r\n");
  EXPECT_EQ((std::vector<string>{"alarm 10"}), steps("AT", 20)) << "a verdict";
  line_->hang_up();
  EXPECT_EQ((std::vector<string>{flush}), steps(nullptr, 20)) << "end of file";
}

TEST_F(SendTest, each_wait_has_the_whole_time) {
  fairlead_test::Child modem([&] {
    for (const char* piece : {"AT\r", "\r\n", "OK", "\r\n"}) {
      usleep(400000);
      line_->say(piece);
    }
    return 0;
  });
  const misc_test::Stopwatch watch;
  EXPECT_EQ(0, atcmd_send(atcmd_, "AT", 1, nullptr, 0));
  EXPECT_GT(watch.seconds(), 1.5);
  EXPECT_EQ(0, modem.wait().status);
}

TEST_F(SendTest, an_incomplete_reply_gives_4_and_the_next_command_starts_afresh) {
  line_->say("AT\r\r\n+CSQ: 1");
  EXPECT_EQ(4, atcmd_send(atcmd_, "AT", 1, nullptr, 0));
  EXPECT_EQ("AT\r\r\n+CSQ: 1", buffer());
  EXPECT_EQ(0, send("AT", "AT\r\r\nOK\r\n"));
  EXPECT_EQ("OK\r", last());
}

TEST_F(SendTest, end_of_file_gives_1_and_empties_the_buffer) {
  line_->say("AT\r");
  EXPECT_EQ(4, atcmd_send(atcmd_, nullptr, 1, "OK", 0));
  EXPECT_EQ("AT\r", buffer());
  line_->hang_up();
  EXPECT_EQ(1, atcmd_send(atcmd_, nullptr, 5, "OK", 0));
  EXPECT_EQ(0, atcmd_->received_length);
  EXPECT_EQ("", buffer());
}

TEST_F(SendTest, a_buffer_that_fills_up_gives_5_and_is_emptied) {
  EXPECT_EQ(5, send("AT", "AT\r" + string(1500, 'x')));
  EXPECT_EQ(0, atcmd_->received_length);
  EXPECT_EQ("", buffer());
  EXPECT_EQ(0, send("AT", "AT\r\r\nOK\r\n"));
}

TEST_F(SendTest, a_reply_of_1023_bytes_fits) {
  const string body(1023 - 10, 'x');
  EXPECT_EQ(0, send("AT", "AT\r\r\n" + body + "\nOK\r\n"));
  EXPECT_EQ(body + "\nOK\r", last());
}

// ---- Callbacks ----

struct Seen {
  std::vector<string> calls;
  std::vector<int> verdicts;
  size_t next = 0;
  const Line* line = nullptr;
};
Seen seen;

string shown(const char* text) { return text ? text : "null"; }

int note_notify(atcmd_t* atcmd, const char* command) {
  seen.calls.push_back("notify " + shown(command));
  if (!command) atcmd->received_length = 0;
  return 7;
}

int note_parse(atcmd_t* atcmd, const char* command, const char* expect, uint32_t flags) {
  seen.calls.push_back("parse " + shown(command) + " " + shown(expect) + " " +
                       std::to_string(flags) + " " + atcmd->receive_buffer);
  if (seen.line) seen.line->say("y");
  return seen.next < seen.verdicts.size() ? seen.verdicts[seen.next++] : 0;
}

class CallbackTest : public SendTest {
 protected:
  void SetUp() override {
    SendTest::SetUp();
    seen = {};
    atcmd_->notify = note_notify;
    atcmd_->parser = note_parse;
  }
};

TEST_F(CallbackTest, callbacks_are_called_in_order_with_the_arguments_of_send) {
  EXPECT_EQ(0, send("AT", "x", "Y", 2));
  EXPECT_EQ((std::vector<string>{"notify null", "notify AT", "parse AT Y 2 x", "notify null"}),
            seen.calls);
}

TEST_F(CallbackTest, without_a_command_notify_is_called_at_the_end_only) {
  EXPECT_EQ(0, send(nullptr, "x"));
  EXPECT_EQ((std::vector<string>{"parse null null 6 x", "notify null"}), seen.calls);
  seen = {};
  EXPECT_EQ(0, send("", "x"));
  EXPECT_EQ((std::vector<string>{"parse  null 6 x", "notify null"}), seen.calls);
}

TEST_F(CallbackTest, a_final_verdict_is_the_result) {
  for (int verdict : {0, 5, -1, -2}) {
    seen = {{}, {verdict}, 0, nullptr};
    EXPECT_EQ(verdict, send("AT", "x"));
    EXPECT_EQ(verdict == 0 || verdict == 5 ? "notify null" : "parse AT null 6 x",
              seen.calls.back());
  }
}

TEST_F(CallbackTest, any_other_verdict_reads_on) {
  for (int verdict : {1, 2, 3, 4, 6, 1000, -3, -1000}) {
    seen = {{}, {verdict, 0}, 0, line_.get()};
    EXPECT_EQ(0, send("AT", "x"));
    tcflush(atcmd_->fd, TCIFLUSH);
    EXPECT_EQ((std::vector<string>{"notify null", "notify AT", "parse AT null 6 x", "notify AT",
                                   "parse AT null 6 xy", "notify null"}),
              seen.calls);
  }
}

TEST_F(CallbackTest, callbacks_run_with_all_blocked_but_three_signals) {
  static std::vector<int> blocked;
  static bool waits;
  atcmd_->parser = [](atcmd_t* atcmd, const char*, const char*, uint32_t) {
    blocked = blocked_of({SIGHUP, SIGALRM, SIGTERM, SIGINT, SIGQUIT, SIGPIPE, SIGUSR1});
    waits = !(fcntl(atcmd->fd, F_GETFL) & O_NONBLOCK);
    return 0;
  };
  EXPECT_EQ(0, send("AT", "x"));
  EXPECT_EQ((std::vector<int>{SIGINT, SIGQUIT, SIGPIPE, SIGUSR1}), blocked);
  EXPECT_FALSE(waits);
}

TEST_F(CallbackTest, a_length_that_a_callback_spoiled_ends_the_exchange) {
  for (int length : {-1, 1023, 5000}) {
    static int spoiled;
    spoiled = length;
    atcmd_->parser = [](atcmd_t* atcmd, const char*, const char*, uint32_t) {
      atcmd->received_length = spoiled;
      return 2;
    };
    EXPECT_EQ(5, send("AT", "x"));
    EXPECT_EQ(0, atcmd_->received_length);
  }
}

// A parser for the prompt of a message text, which ends without a line feed.
TEST_F(SendTest, a_parser_of_the_callers_can_wait_for_a_prompt) {
  atcmd_->parser = [](atcmd_t* atcmd, const char*, const char*, uint32_t) {
    return strstr(atcmd->receive_buffer, "\r\n> ") ? 0 : 2;
  };
  EXPECT_EQ(0, send("AT+CMGS=\"+491701234567\"", "AT+CMGS=\"+491701234567\"\r\r\n> "));
}

// ---- Trace ----

TEST_F(SendTest, trace_logs_the_command_and_every_piece) {
  const string fd = std::to_string(atcmd_->fd);
  GlogOpen("tester", LOG_MODE_CONSOLE | LOG_MODE_WHERE, 7);
  line_->say("AT\r\r\nOK\r\n");
  const string out = fairlead_test::capture([&] {
                       atcmd_send(atcmd_, "AT", 5, nullptr, ATCMD_TRACE | ATCMD_ECHO);
                     }).out;
  GlogOpen("tester", LOG_MODE_CONSOLE, 1);
  const string place = "{" + std::to_string(getpid()) + "/atcmd/";
  EXPECT_NE(string::npos, out.find("debug: " + fd + " <<< (AT\r\n)" + place + "434}\n")) << out;
  EXPECT_NE(string::npos, out.find("debug: " + fd + " >>9>> (AT\r\r\nOK\r\n)" + place + "510}\n"))
      << out;
}

TEST_F(SendTest, without_trace_an_exchange_logs_nothing) {
  const Logged log = logged([&] { EXPECT_EQ(0, send("AT", "AT\r\r\nOK\r\n", nullptr, 4)); });
  EXPECT_EQ("", log.errors + log.debug);
}

}  // namespace
