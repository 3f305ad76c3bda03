// Commands without a shell, with a limit on their time.
#include <sys/stat.h>
#include <sys/wait.h>

#include <cwchar>

#include "fairlead/misc.h"
#include "misc_support.h"
#include "support/capture.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::Fault;
using misc_test::bit;
using misc_test::CallersAlarm;
using misc_test::CallersHandler;
using misc_test::signal_set;
using misc_test::Stopwatch;

class SystemCallTest : public fairlead_test::DeviceTest {
 protected:
  // What a command without a time limit prints.
  static std::string output(const std::string& command, int quiet = 0) {
    const auto captured = fairlead_test::capture(
        [&] { EXPECT_EQ(0, system_call(0, quiet, "%s", command.c_str())) << command; });
    return captured.out + captured.err;
  }
};

TEST_F(SystemCallTest, returns_the_exit_code_with_errno_0) {
  fairlead_test::put_file("/tmp/leave", "exit $1");
  for (int code : {0, 1, 126, 255})
    for (int seconds : {-1, 0, 60}) {
      errno = ENOTTY;
      EXPECT_EQ(code, system_call(seconds, 0, "sh /tmp/leave %d", code));
      EXPECT_EQ(0, errno);
    }
  EXPECT_EQ(1, system_call(0, 0, "false"));
}

TEST_F(SystemCallTest, refuses_no_format) {
  for (const char* format : {static_cast<const char*>(nullptr), ""}) {
    errno = 0;
    EXPECT_EQ(-1, system_call(1, 0, format, 0));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(SystemCallTest, refuses_a_text_that_cannot_be_formatted) {
  const wchar_t foreign[] = {0x20ac, 0};
  errno = 0;
  EXPECT_EQ(-1, system_call(1, 0, "echo %ls", foreign));
  EXPECT_EQ(EILSEQ, errno);
}

TEST_F(SystemCallTest, gives_127_when_nothing_can_be_started) {
  fairlead_test::put_file("/tmp/plain", "text", 0644);
  for (const char* command : {"no-such-program-anywhere", "/tmp/plain", "/tmp", "   ", " \t "}) {
    errno = ENOTTY;
    EXPECT_EQ(127, system_call(0, 0, "%s", command)) << command;
    EXPECT_EQ(0, errno);
  }
  EXPECT_EQ(127, system_call(60, 1, "%s", ""));
}

TEST_F(SystemCallTest, splits_at_runs_of_blanks) {
  EXPECT_EQ("[a][b][c]", output("  printf   [%s] a  b \t c  "));
  EXPECT_EQ("[a\nb]", output("printf [%s] a\nb")) << "a line end is none";
}

TEST_F(SystemCallTest, passes_quotes_and_shell_characters_as_they_stand) {
  EXPECT_EQ("[\"a][b\"]['c'][$HOME][*][>][/tmp/out][|]",
            output("printf [%s] \"a b\" 'c' $HOME * > /tmp/out |"));
  EXPECT_FALSE(fairlead_test::exists("/tmp/out"));
}

TEST_F(SystemCallTest, passes_20_words_and_drops_the_others) {
  std::string command = "printf %s,", passed;
  for (int word = 3; word <= 30; ++word) {
    command += " " + std::to_string(word);
    if (word <= 20) passed += std::to_string(word) + ",";
  }
  EXPECT_EQ(passed, output(command));
}

TEST_F(SystemCallTest, cuts_the_command_at_4095_characters) {
  const std::string begin = "echo ";
  EXPECT_EQ(std::string(4095 - begin.size(), 'x') + "\n", output(begin + std::string(5000, 'x')));
}

TEST_F(SystemCallTest, cuts_the_program_at_255_characters_but_not_its_argument_zero) {
  const std::string folder = "/tmp/" + std::string(200, 'd') + "/";
  const std::string program = folder + std::string(255 - folder.size(), 'p');
  fairlead_test::make_directories(folder);
  ASSERT_EQ(0, symlink("/bin/cat", program.c_str()));
  const std::string word = program + "tail";
  EXPECT_EQ(word + '\0' + "/proc/self/cmdline" + '\0', output(word + " /proc/self/cmdline"));
}

TEST_F(SystemCallTest, quiet_leads_all_standard_streams_to_null) {
  fairlead_test::put_file("/tmp/streams",
                          "all=$(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2)\n"
                          "echo \"$all\" >/tmp/out");
  fairlead_test::put_file("/tmp/talk", "echo out; echo err >&2");
  EXPECT_EQ("", output("sh /tmp/talk", 1));
  EXPECT_EQ("out\nerr\n", output("sh /tmp/talk", 0));
  EXPECT_EQ("", output("cat", 1)) << "standard input ends at once";
  EXPECT_EQ("", output("sh /tmp/streams", -1));
  EXPECT_EQ("/dev/null\n/dev/null\n/dev/null\n", fairlead_test::file_content("/tmp/out"));
}

TEST_F(SystemCallTest, quiet_leaves_no_descriptor_behind) {
  fairlead_test::put_file("/tmp/list", "ls /proc/$$/fd >/tmp/out; exit 0");
  const auto listed = [](int quiet) {
    EXPECT_EQ(0, system_call(0, quiet, "sh /tmp/list"));
    return fairlead_test::file_content("/tmp/out");
  };
  const std::string loud = listed(0);
  EXPECT_EQ(loud, listed(1));
  fairlead_test::run_child([&] {
    close(STDIN_FILENO);  // so that /dev/null gets its number
    EXPECT_EQ(loud, listed(1));
  });
}

TEST_F(SystemCallTest, quiet_is_skipped_when_null_cannot_be_opened) {
  Fault fault(Call::kOpen, {.error = ENOENT});
  EXPECT_EQ("aloud\n", output("echo aloud", 1));
}

TEST_F(SystemCallTest, gives_minus_1_with_errno_0_when_a_signal_ended_the_command) {
  fairlead_test::put_file("/tmp/die", "kill -$1 $$");
  for (const char* name : {"TERM", "KILL", "SEGV"}) {
    errno = ENOTTY;
    EXPECT_EQ(-1, system_call(60, 0, "sh /tmp/die %s", name));
    EXPECT_EQ(0, errno);
  }
}

TEST_F(SystemCallTest, kills_a_command_that_runs_too_long) {
  fairlead_test::put_file("/tmp/stay", "trap '' TERM ALRM INT QUIT\nexec sleep 60");
  Stopwatch watch;
  EXPECT_EQ(-1, system_call(2, 0, "sh /tmp/stay"));
  EXPECT_EQ(ETIMEDOUT, errno);
  EXPECT_GE(watch.seconds(), 1.99);
  EXPECT_LT(watch.seconds(), 40);
}

TEST_F(SystemCallTest, kills_in_time_though_the_caller_blocks_and_ignores_alarms) {
  misc_test::Blocked blocked({SIGALRM});
  misc_test::PlainHandler ignoring(SIGALRM, SIG_IGN);
  EXPECT_EQ(-1, system_call(1, 0, "sleep 60"));
  EXPECT_EQ(ETIMEDOUT, errno);
  EXPECT_TRUE(misc_test::blocked_now(SIGALRM));
  EXPECT_EQ(SIG_IGN, ignoring.in_force());
}

TEST_F(SystemCallTest, does_not_miss_an_alarm_that_comes_just_before_the_wait) {
  misc_test::PlainHandler slow(SIGUSR1, [](int) {
    Stopwatch watch;
    while (watch.seconds() < 1.2) usleep(1000);
  });
  Fault late(Call::kWaitpid, {.nth = 1, .signal = SIGUSR1});
  EXPECT_EQ(-1, system_call(1, 0, "sleep 60"));
  EXPECT_EQ(ETIMEDOUT, errno);
  EXPECT_TRUE(late.fired());
}

TEST_F(SystemCallTest, takes_no_former_alarm_for_its_own_time_limit) {
  CallersHandler handler(SIGALRM);
  {
    misc_test::Blocked blocked({SIGALRM});
    kill(getpid(), SIGALRM);
    EXPECT_EQ(0, system_call(60, 0, "sleep 0.2"));
    EXPECT_EQ(0, errno);
    EXPECT_TRUE(misc_test::pending_now(SIGALRM));
    EXPECT_EQ(0, CallersHandler::calls);
  }
  EXPECT_EQ(1, CallersHandler::calls);
}

TEST_F(SystemCallTest, a_time_limit_leaves_nothing_to_the_next_call) {
  EXPECT_EQ(-1, system_call(1, 0, "sleep 60"));
  EXPECT_EQ(0, system_call(60, 0, "true"));
  EXPECT_EQ(0, errno);
}

TEST_F(SystemCallTest, arms_the_callers_alarm_again_with_what_remains) {
  CallersAlarm alarm({{7, 0}, {100, 0}});
  EXPECT_EQ(0, system_call(60, 0, "sleep 1"));
  const itimerval left = CallersAlarm::left();
  EXPECT_LE(left.it_value.tv_sec, 99);
  EXPECT_GE(left.it_value.tv_sec, 50);
  EXPECT_EQ(7, left.it_interval.tv_sec);
}

TEST_F(SystemCallTest, delivers_a_callers_alarm_that_ran_out_meanwhile) {
  CallersHandler handler(SIGALRM);
  CallersAlarm alarm({{0, 0}, {0, 100000}});
  EXPECT_EQ(0, system_call(60, 0, "sleep 0.5"));
  EXPECT_TRUE(misc_test::becomes(CallersHandler::calls, 1));
}

TEST_F(SystemCallTest, goes_on_waiting_when_another_signal_interrupts) {
  CallersHandler handler(SIGUSR1, SA_SIGINFO);
  fairlead_test::put_file("/tmp/disturb", "kill -USR1 $PPID; sleep 0.1; kill -USR1 $PPID; exit 4");
  for (int seconds : {0, 60}) {
    CallersHandler::calls = 0;
    EXPECT_EQ(4, system_call(seconds, 0, "sh /tmp/disturb"));
    EXPECT_EQ(0, errno);
    EXPECT_EQ(2, CallersHandler::calls);
  }
}

TEST_F(SystemCallTest, ignores_interrupt_and_quit_meanwhile) {
  fairlead_test::put_file("/tmp/keys", "kill -INT $PPID; kill -QUIT $PPID; exit 5");
  EXPECT_EQ(5, system_call(0, 0, "sh /tmp/keys"));
}

TEST_F(SystemCallTest, keeps_its_child_from_a_handler_that_reaps) {
  misc_test::PlainHandler reaper(SIGCHLD, [](int) { waitpid(-1, nullptr, WNOHANG); });
  for (int round = 0; round < 20; ++round) EXPECT_EQ(1, system_call(60, 0, "false"));
}

TEST_F(SystemCallTest, gives_the_command_the_callers_mask_and_ignored_signals) {
  CallersHandler handler(SIGTERM), interrupt(SIGINT);
  misc_test::PlainHandler ignoring(SIGPIPE, SIG_IGN);
  misc_test::Blocked blocked({SIGHUP, SIGALRM});
  const uint64_t ignored = signal_set("/proc/self/status", "SigIgn");
  fairlead_test::put_file("/tmp/status", output("cat /proc/self/status"));
  EXPECT_EQ(bit(SIGHUP) | bit(SIGALRM), signal_set("/tmp/status", "SigBlk"));
  EXPECT_EQ(ignored, signal_set("/tmp/status", "SigIgn"));
  EXPECT_EQ(bit(SIGPIPE), ignored & bit(SIGPIPE));
  EXPECT_EQ(0u, signal_set("/tmp/status", "SigCgt"));
}

TEST_F(SystemCallTest, opens_its_signals_and_keeps_the_others_blocked) {
  misc_test::Blocked blocked({SIGINT, SIGQUIT, SIGCHLD, SIGALRM, SIGHUP});
  fairlead_test::put_file("/tmp/look",
                          "until grep -q 'State:.S' /proc/$PPID/status; do :; done\n"
                          "cat /proc/$PPID/status >/tmp/out");
  for (int seconds : {0, 60}) {
    EXPECT_EQ(0, system_call(seconds, 0, "sh /tmp/look"));
    const uint64_t keys = bit(SIGINT) | bit(SIGQUIT);
    const uint64_t opened = keys | bit(SIGCHLD) | bit(SIGALRM);
    EXPECT_EQ(bit(SIGHUP), signal_set("/tmp/out", "SigBlk") & (opened | bit(SIGHUP)));
    EXPECT_EQ(keys, signal_set("/tmp/out", "SigIgn") & opened);
  }
}

// Before it becomes the command, the child shares this process' memory.
TEST_F(SystemCallTest, no_handler_of_the_caller_runs_in_the_child) {
  CallersHandler handler(SIGUSR1);
  Fault fault(Call::kOpen, {.signal = SIGUSR1});  // on its way to /dev/null
  EXPECT_EQ(-1, system_call(60, 1, "true"));
  EXPECT_EQ(0, errno);
  EXPECT_EQ(0, CallersHandler::calls);
}

TEST_F(SystemCallTest, puts_handlers_flags_and_mask_back) {
  CallersHandler quit(SIGQUIT), interrupt(SIGINT, SA_SIGINFO | SA_NODEFER), alarm(SIGALRM);
  CallersHandler child(SIGCHLD, SA_SIGINFO | SA_NOCLDSTOP);
  misc_test::Blocked blocked({SIGINT, SIGCHLD, SIGALRM, SIGUSR1});
  for (int seconds : {0, 60}) {
    EXPECT_EQ(0, system_call(seconds, 0, "true"));
    for (const CallersHandler* handler : {&quit, &interrupt, &alarm, &child})
      EXPECT_TRUE(handler->in_force());
    for (int number : {SIGINT, SIGCHLD, SIGALRM, SIGUSR1})
      EXPECT_TRUE(misc_test::blocked_now(number));
    EXPECT_FALSE(misc_test::blocked_now(SIGQUIT));
  }
}

#if defined(__x86_64__) || defined(__i386__)  // where vfork has a stand-in that fails
TEST_F(SystemCallTest, fails_with_the_errno_of_a_refused_child) {
  CallersHandler child(SIGCHLD);
  CallersAlarm alarm({{0, 0}, {100, 0}});
  Fault fault(Call::kFork, {.error = EAGAIN});
  EXPECT_EQ(-1, system_call(60, 0, "true"));
  EXPECT_EQ(EAGAIN, errno);
  EXPECT_TRUE(child.in_force());
  EXPECT_FALSE(misc_test::blocked_now(SIGTERM));
  EXPECT_GE(CallersAlarm::left().it_value.tv_sec, 90);
}
#endif

TEST_F(SystemCallTest, ends_the_child_and_gives_0_with_errno_when_the_wait_fails) {
  {
    Fault fault(Call::kWaitpid, {.error = ECHILD});
    EXPECT_EQ(0, system_call(60, 0, "sleep 60"));
    EXPECT_EQ(ECHILD, errno);
  }
  int status = 0;
  EXPECT_GT(waitpid(-1, &status, 0), 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(SIGTERM, WTERMSIG(status));
}

}  // namespace
