// Script adapters: what a script is told, what its answers mean, and what is left behind.
#include "fairlead/adp/shell.h"

#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "adp/channel_fixture.h"
#include "fairlead/adp/request.h"
#include "support/child.h"
#include "support/faults.h"
#include "support/syslog.h"
#include "uii/owned_uii.h"

namespace {

using fairlead_test::Call;
using fairlead_test::Fault;
using fairlead_test::file_content;
using fairlead_test::put_file;
using fairlead_test::spelled;

constexpr char kScript[] = "/prj/board/led.ash";

class ShellTest : public fairlead_test::ChannelTest,
                  public testing::WithParamInterface<const char*> {
 protected:
  void script(const std::string& body, int mode = 0755) {
    put_file(kScript, std::string("#!") + GetParam() + "\n" + body, mode);
    adp_.type = ADP_SHELL;
    snprintf(adp_.name, sizeof adp_.name, "board/led");
    snprintf(adp_.file, sizeof adp_.file, "%s", kScript);
  }

  // A script that answers with the named variables of its environment, "-" for one that is not set.
  void telling_script(const std::string& names) {
    std::string body = "{ ";
    for (size_t at = 0; at < names.size();) {
      const size_t end = std::min(names.find(' ', at), names.size());
      const std::string name = names.substr(at, end - at);
      body += "printf '%s;' \"${" + name + "--}\"; ";
      at = end + 1;
    }
    script(body + "} >&$pipeid\n");
  }

  param_t* parameters(const char* list) {
    snprintf(list_, sizeof list_, "%s", list);
    param_ = {};
    EXPECT_EQ(1, ParamAnalysis(&param_, list_));
    return &param_;
  }

  slash_t* path(const char* text) {
    snprintf(path_text_, sizeof path_text_, "%s", text);
    SlashClear(&slash_);
    SlashAnalysis(&slash_, path_text_);
    return &slash_;
  }

  void TearDown() override {
    ParamClear(&param_);
    SlashClear(&slash_);
    ChannelTest::TearDown();
  }

  adp_t adp_{};
  param_t param_{};
  slash_t slash_{};
  char list_[256];
  char path_text_[256];
};

TEST_P(ShellTest, a_set_tells_object_path_and_value) {
  telling_script("adp interface config value paramter_count");
  talk_t* value = StringTalk("{\"a\":\"1\"}");
  EXPECT_EQ(0, ShellAbSet(&adp_, path("lan//ip"), value));  // an answer in words is no success
  TalkFree(value);
  script(
      "printf '%s;' \"$adp\" \"$interface\" \"$config\" \"$value\" >/tmp/told; printf '\\001' "
      ">&$pipeid\n");
  value = StringTalk("{\"a\":\"1\"}");
  EXPECT_EQ(1, ShellAbSet(&adp_, path("lan//ip"), value));
  EXPECT_EQ("board/led;=;lan/ip;{\"a\":\"1\"};", file_content("/tmp/told"));
  TalkFree(value);
}

TEST_P(ShellTest, a_set_without_path_and_value_removes_the_variables) {
  setenv("config", "inherited", 1);
  setenv("value", "inherited", 1);
  script("printf '%s;' \"${config--}\" \"${value--}\" >/tmp/told; printf '\\001' >&$pipeid\n");
  EXPECT_EQ(1, ShellAbSet(&adp_, nullptr, nullptr));
  EXPECT_EQ("-;-;", file_content("/tmp/told"));
  unsetenv("config");
  unsetenv("value");
}

TEST_P(ShellTest, a_set_with_a_value_without_text_removes_the_variable) {
  script("printf '%s;' \"${value--}\" >/tmp/told; printf '\\001' >&$pipeid\n");
  talk_t* number = json_new_number("7");
  EXPECT_EQ(1, ShellAbSet(&adp_, nullptr, number));
  EXPECT_EQ("-;", file_content("/tmp/told"));
  TalkFree(number);
}

TEST_P(ShellTest, only_the_byte_one_makes_a_set_succeed) {
  script("printf 1 >&$pipeid\n");
  EXPECT_EQ(0, ShellAbSet(&adp_, nullptr, nullptr));
  script("printf '\\002' >&$pipeid\n");
  EXPECT_EQ(0, ShellAbSet(&adp_, nullptr, nullptr));
  script("exit 0\n");
  EXPECT_EQ(0, ShellAbSet(&adp_, nullptr, nullptr));
  script("printf ' \\001 \\n' >&$pipeid; exit 9\n");
  EXPECT_EQ(1, ShellAbSet(&adp_, nullptr, nullptr));
}

TEST_P(ShellTest, a_get_leaves_the_variable_value_as_inherited) {
  setenv("value", "inherited", 1);
  telling_script("adp interface config value");
  EXPECT_EQ("board/led;:;ssid;inherited;", spelled(ShellAbGet(&adp_, path("ssid"))));
  EXPECT_EQ("board/led;:;-;inherited;", spelled(ShellAbGet(&adp_, nullptr)));
  unsetenv("value");
}

TEST_P(ShellTest, answers_become_documents_strings_codes_or_null) {
  const std::pair<const char*, const char*> answers[] = {
      {"printf '{\"a\":\"1\"}\\n'", "{\"a\":\"1\"}"},
      {"printf '\\n  two words  \\n\\n'", "two words"},
      {"printf '\\001'", "done"},
      {"printf '\\002\\n'", "failed"},
      {"printf '\\000'", "null"},
      {"printf '  \\n\\r '", "null"},
      {"printf '{broken'", "null"},
      {"printf '[1,2]'", "[1,2]"},
      {":", "null"},
  };
  for (const auto& [command, meaning] : answers) {
    script(std::string(command) + " >&$pipeid\n");
    EXPECT_EQ(meaning, spelled(ShellAbGet(&adp_, nullptr))) << command;
  }
}

TEST_P(ShellTest, a_list_touches_only_two_variables) {
  setenv("adp", "inherited", 1);
  telling_script("adp interface config");
  EXPECT_EQ("inherited;.;-;", spelled(ShellIfList(kScript)));
  unsetenv("adp");
}

TEST_P(ShellTest, a_call_hands_over_all_parameters_but_the_last) {
  telling_script("adp interface paramter_count paramter0 paramter1 paramter2 paramter3");
  EXPECT_EQ("board/led;blink;3;;red;green;-;",
            spelled(ShellIfCall(&adp_, "blink", parameters("red,green,blue"))));
}

TEST_P(ShellTest, an_empty_parameter_is_an_empty_variable) {
  setenv("paramter1", "inherited", 1);
  telling_script("paramter_count paramter1 paramter2");
  EXPECT_EQ("3;;x;", spelled(ShellIfCall(&adp_, "blink", parameters(",x,y"))));
  unsetenv("paramter1");
}

TEST_P(ShellTest, a_call_without_a_list_says_minus_one) {
  telling_script("paramter_count paramter0");
  EXPECT_EQ("-1;-;", spelled(ShellIfCall(&adp_, "blink", nullptr)));
}

TEST_P(ShellTest, a_call_with_a_list_of_no_parameters_says_0) {
  telling_script("paramter_count paramter0");
  param_t none = {};
  EXPECT_EQ("0;-;", spelled(ShellIfCall(&adp_, "blink", &none)));
}

TEST_P(ShellTest, an_identifier_without_parameters_hands_over_a_list_of_none) {
  telling_script("paramter_count paramter0");
  const fairlead::OwnedUii identifier(UiiCreate("board/led.blink"));
  talk_t* answer = nullptr;
  EXPECT_EQ(0, He(identifier.get(), &answer));
  EXPECT_EQ("0;-;", spelled(answer));
}

TEST_P(ShellTest, a_call_without_an_interface_name_runs_nothing) {
  script("touch /tmp/was-run\n");
  EXPECT_EQ(nullptr, ShellIfCall(&adp_, nullptr, nullptr));
  EXPECT_FALSE(fairlead_test::exists("/tmp/was-run"));
}

TEST_P(ShellTest, null_arguments_are_refused) {
  const auto refused = [](auto call) {
    errno = 0;
    return !call() && errno == EINVAL;
  };
  EXPECT_TRUE(refused([] { return ShellAbSet(nullptr, nullptr, nullptr); }));
  EXPECT_TRUE(refused([] { return ShellAbGet(nullptr, nullptr); }));
  EXPECT_TRUE(refused([] { return ShellIfList(nullptr); }));
  EXPECT_TRUE(refused([] { return ShellIfCall(nullptr, "x", nullptr); }));
  EXPECT_TRUE(refused([&] { return ShellIfCall(&adp_, nullptr, nullptr); }));
}

TEST_P(ShellTest, a_script_gets_its_own_path_as_only_argument) {
  script("printf '%s %s' \"$0\" $# >&$pipeid\n");
  EXPECT_EQ(std::string(kScript) + " 0", spelled(ShellAbGet(&adp_, nullptr)));
}

TEST_P(ShellTest, a_script_that_cannot_be_executed_is_logged) {
  script("echo never\n", 0644);
  const std::string log = logged([&] { EXPECT_EQ(nullptr, ShellAbGet(&adp_, nullptr)); });
  EXPECT_EQ("error: execl the /prj/board/led.ash error(err:13/Permission denied)\n", log);
}

TEST_P(ShellTest, a_missing_script_is_logged) {
  const std::string log = logged([&] { EXPECT_EQ(nullptr, ShellIfList("/prj/none.ash")); });
  EXPECT_EQ("error: execl the /prj/none.ash error(err:2/No such file or directory)\n", log);
}

TEST_P(ShellTest, the_childs_syslog_name_is_its_request) {
  script("echo never\n", 0644);
  fairlead_test::Syslog daemon;
  GlogOpen("test", LOG_MODE_SYSLOG, 7);
  const std::pair<const char*, std::function<void()>> calls[] = {
      {"board/led", [&] { EXPECT_EQ(nullptr, ShellAbGet(&adp_, nullptr)); }},
      {"board/led.blink", [&] { EXPECT_EQ(nullptr, ShellIfCall(&adp_, "blink", nullptr)); }},
      {kScript, [] { EXPECT_EQ(nullptr, ShellIfList(kScript)); }},
  };
  for (const auto& [name, call] : calls) {
    call();
    const std::string line = std::string("daemon.err ") + name + ": execl the " + kScript;
    EXPECT_NE("", daemon.wait_for(line)) << line;
  }
  EXPECT_EQ(0, ShellAbSet(&adp_, nullptr, nullptr));
  GlogClose();
}

TEST_P(ShellTest, a_script_killed_by_a_signal_is_logged_once) {
  script("printf '{\"a\":\"1\"}' >&$pipeid; kill -9 $$\n");
  const std::string log = logged([&] { ShellAbSet(&adp_, nullptr, nullptr); });
  EXPECT_TRUE(log == "error: board/led terminate by signal 9\n" ||
              log == "error: ShellAbSet( board/led ) terminate by signal 9\n")
      << log;
}

// The channel ends before the script does, so its death is seen by the wait that follows.
TEST_P(ShellTest, a_death_after_the_answer_names_the_function) {
  script("eval \"exec $pipeid>&-\"; sleep 0.2; kill -9 $$\n");
  const std::string set = logged([&] { ShellAbSet(&adp_, nullptr, nullptr); });
  EXPECT_EQ("error: ShellAbSet( board/led ) terminate by signal 9\n", set);
  const std::string get = logged([&] { ShellAbGet(&adp_, nullptr); });
  EXPECT_EQ("error: ShellAbGet( board/led ) terminate by signal 9\n", get);
  const std::string list = logged([&] { ShellIfList(kScript); });
  EXPECT_EQ("error: ShellIfList( /prj/board/led.ash ) terminate by signal 9\n", list);
  const std::string call = logged([&] { ShellIfCall(&adp_, "blink", nullptr); });
  EXPECT_EQ("error: ShellIfCall( board/led.blink ) terminate by signal 9\n", call);
}

TEST_P(ShellTest, a_background_process_with_the_channel_holds_the_caller_three_seconds_at_most) {
  script("printf early >&$pipeid; sleep 60 & echo $! >/tmp/background\n");
  const time_t begin = time(nullptr);
  EXPECT_EQ("early", spelled(ShellAbGet(&adp_, nullptr)));
  EXPECT_GE(time(nullptr) - begin, 2);
  EXPECT_LT(time(nullptr) - begin, 30);
  kill(atoi(file_content("/tmp/background").c_str()), SIGKILL);
}

// The interpreter here is the program that lists: a shell would add its script and the folder it
// reads. What this process itself would hand down is closed before.
TEST_P(ShellTest, a_script_inherits_standard_streams_and_its_channel_alone) {
  script("");
  put_file("/prj/board/led.ash", "#!/bin/ls /proc/self/fd\n", 0755);
  const auto ended = fairlead_test::run_child([&] {
    for (int fd = 3; fd < 1024; ++fd)
      if (fcntl(fd, F_GETFD) >= 0) fcntl(fd, F_SETFD, FD_CLOEXEC);
    GvalueGet(nullptr, "log_mode");  // the default store stays open in this process
    const int mine = open("/dev/null", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(nullptr, ShellAbGet(&adp_, nullptr));
    close(mine);
  });
  EXPECT_EQ("/prj/board/led.ash\n\n/proc/self/fd:\n0\n1\n2\n3\n4\n",
            ended.out);  // 4 is the listing's
}

// The channel takes the number of a descriptor that the start of the script would close; when it
// does not start, the report must not need that one.
TEST_P(ShellTest, a_failed_start_is_logged_though_the_channel_took_the_place_of_the_log_settings) {
  script("", 0644);
  const auto ended = fairlead_test::run_child([&] {
    GlogClose();
    for (int fd = 3; fd < 1024; ++fd) close(fd);
    const uint32_t console = LOG_MODE_CONSOLE;
    EXPECT_EQ(1, GvalueSet(nullptr, "log_mode", &console, sizeof console));
    EXPECT_EQ(0, fcntl(3, F_GETFD) & ~FD_CLOEXEC) << "the store is the first descriptor";
    EXPECT_EQ(nullptr, ShellAbGet(&adp_, nullptr));
  });
  EXPECT_EQ("error: execl the /prj/board/led.ash error(err:13/Permission denied)\n", ended.err);
}

TEST_P(ShellTest, the_channel_has_one_digit_among_many_open_descriptors) {
  int held[20];
  for (int& fd : held) fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
  script("printf '%s' \"$pipeid\" >&$pipeid\n");
  EXPECT_EQ(1U, spelled(ShellAbGet(&adp_, nullptr)).size());
  for (int fd : held) close(fd);
}

TEST_P(ShellTest, a_failed_socket_pair_is_logged_and_changes_nothing) {
  script("");
  const std::pair<const char*, std::function<void()>> calls[] = {
      {"socketpair error for ShellAbSet( board/led )",
       [&] { EXPECT_EQ(0, ShellAbSet(&adp_, nullptr, nullptr)); }},
      {"socketpair error for ShellAbGet( board/led )",
       [&] { EXPECT_EQ(nullptr, ShellAbGet(&adp_, nullptr)); }},
      {"socketpair error for ShellIfList( /prj/board/led.ash )",
       [&] { EXPECT_EQ(nullptr, ShellIfList(kScript)); }},
      {"socketpair error for ShellIfCall( board/led.x )",
       [&] { EXPECT_EQ(nullptr, ShellIfCall(&adp_, "x", nullptr)); }},
  };
  for (const auto& [text, call] : calls) {
    Fault fault(Call::kSocketpair, {.error = EMFILE});
    EXPECT_EQ(std::string("error: ") + text + "(err:24/Too many open files)\n", logged(call));
  }
}

// An interface name counts with 63 characters in an identifier; the other messages name it whole.
TEST_P(ShellTest, messages_name_a_call_by_its_identifier_or_by_object_and_interface) {
  script("");
  const std::string name(100, 'n');
  const auto call = [&] { EXPECT_EQ(nullptr, ShellIfCall(&adp_, name.c_str(), nullptr)); };
  {
    Fault fault(Call::kSocketpair, {.error = EMFILE});
    EXPECT_EQ("error: socketpair error for ShellIfCall( board/led." + name.substr(0, 63) +
                  " )(err:24/Too many open files)\n",
              logged(call));
  }
  const auto ended = fairlead_test::run_child([&] {
    Fault fault(Call::kFork, {.error = EAGAIN});
    call();
  });
  EXPECT_EQ("error: vfork error for ShellIfCall( board/led." + name +
                " )(err:11/Resource temporarily unavailable)\n",
            ended.err);
}

// A failed fork leaves SIGCHLD blocked and the empty handler installed: kept as it always was.
TEST_P(ShellTest, a_failed_fork_is_logged_and_leaves_mask_and_handler_changed) {
  script("");
  const auto ended = fairlead_test::run_child([&] {
    Fault fault(Call::kFork, {.error = EAGAIN});
    EXPECT_EQ(nullptr, ShellIfCall(&adp_, "x", nullptr));
    sigset_t mask;
    sigprocmask(SIG_SETMASK, nullptr, &mask);
    EXPECT_EQ(1, sigismember(&mask, SIGCHLD));
    EXPECT_EQ(signal_handler, signal_register(SIGCHLD, SIG_DFL));
  });
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ(
      "error: vfork error for ShellIfCall( board/led.x )(err:11/Resource temporarily "
      "unavailable)\n",
      ended.err);
}

TEST_P(ShellTest, a_default_handler_is_replaced_by_the_empty_one) {
  script("");
  signal(SIGCHLD, SIG_DFL);
  ShellAbGet(&adp_, nullptr);
  EXPECT_EQ(signal_handler, signal_register(SIGCHLD, count_signal));
}

TEST_P(ShellTest, handler_flags_mask_and_alarm_come_back) {
  struct sigaction mine = {}, after;
  mine.sa_sigaction = [](int, siginfo_t*, void*) {};
  mine.sa_flags = SA_SIGINFO | SA_RESTART;
  sigaddset(&mine.sa_mask, SIGUSR2);
  sigaction(SIGCHLD, &mine, nullptr);
  sigset_t blocked, former, now;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGUSR1);
  sigprocmask(SIG_BLOCK, &blocked, &former);
  const itimerval timer = {{7, 0}, {500, 0}};
  setitimer(ITIMER_REAL, &timer, nullptr);

  script("printf x >&$pipeid\n");
  EXPECT_EQ("x", spelled(ShellAbGet(&adp_, nullptr)));

  itimerval left, none = {};
  setitimer(ITIMER_REAL, &none, &left);
  EXPECT_GT(left.it_value.tv_sec, 400);
  EXPECT_EQ(7, left.it_interval.tv_sec);
  sigprocmask(SIG_SETMASK, &former, &now);
  EXPECT_EQ(1, sigismember(&now, SIGUSR1));
  EXPECT_EQ(0, sigismember(&now, SIGCHLD));
  sigaction(SIGCHLD, nullptr, &after);
  EXPECT_EQ(mine.sa_sigaction, after.sa_sigaction);
  EXPECT_EQ(mine.sa_flags, after.sa_flags & (SA_SIGINFO | SA_RESTART | SA_NOCLDSTOP));
  EXPECT_EQ(1, sigismember(&after.sa_mask, SIGUSR2));
  signal_register(SIGCHLD, count_signal);
}

// dash would clear its mask at the start.
TEST_P(ShellTest, a_scripts_signal_mask_is_the_callers) {
  sigset_t blocked, former;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGUSR1);
  sigprocmask(SIG_BLOCK, &blocked, &former);
  script("");
  put_file(kScript, "#!/usr/bin/busybox ash\ngrep SigBlk /proc/$$/status >&$pipeid\n", 0755);
  char expected[40];
  snprintf(expected, sizeof expected, "SigBlk:\t%016llx", 1ULL << (SIGUSR1 - 1));
  EXPECT_EQ(expected, spelled(ShellAbGet(&adp_, nullptr)));
  sigprocmask(SIG_SETMASK, &former, nullptr);
}

// A handler of the caller's is none for a program; that SIGCHLD is ignored stays so.
TEST_P(ShellTest, a_script_ignores_what_its_caller_ignores) {
  script("");
  put_file(kScript, "#!/bin/cat /proc/self/status\n", 0755);
  const auto ignored = [&](signal_function_t handler) {
    const auto ended = fairlead_test::run_child([&] {
      signal_register(SIGCHLD, handler);
      ShellAbGet(&adp_, nullptr);
    });
    const size_t at = ended.out.find("SigIgn:");
    const unsigned long long mask = strtoull(ended.out.c_str() + at + 7, nullptr, 16);
    return at != std::string::npos && (mask >> (SIGCHLD - 1) & 1) != 0;
  };
  EXPECT_TRUE(ignored(SIG_IGN));
  EXPECT_FALSE(ignored(count_signal));
}

TEST_P(ShellTest, answers_of_any_size_arrive_whole) {
  for (const char* size : {"1", "4095", "4096", "4097", "10000000"}) {
    script("head -c " + std::string(size) + " /dev/zero | tr '\\0' x >&$pipeid\n");
    EXPECT_EQ(std::string(static_cast<size_t>(atoi(size)), 'x'),
              spelled(ShellAbGet(&adp_, nullptr)))
        << size;
  }
}

// FAIRLEAD_MANY_SCRIPTS=2000 is the long form.
TEST_P(ShellTest, many_bad_scripts_leave_nothing_behind) {
  const char* text = getenv("FAIRLEAD_MANY_SCRIPTS");
  const int many = text ? atoi(text) : 60;
  const std::pair<const char*, const char*> ways[] = {
      {"kill -SEGV $$", "null"},
      {"kill -ABRT $$", "null"},
      {"exit 3", "null"},
      {"eval \"exec $pipeid>&-\"", "null"},
      {"printf '{\"half\":' >&$pipeid", "null"},
      {"printf '\\001 and more' >&$pipeid", "done"},
  };
  constexpr size_t kFloodSize = 50 << 20;
  const size_t before = fairlead_test::resident_bytes();
  logged([&] {
    for (int round = 0; round < many; ++round) {
      if (round == 0 || round == many / 2) {
        script("head -c 52428800 /dev/zero | tr '\\0' x >&$pipeid\n");
        EXPECT_EQ(kFloodSize, spelled(ShellAbGet(&adp_, nullptr)).size());
      } else if (round % 3 == 0) {
        const auto& [way, meaning] = ways[static_cast<size_t>(round) / 3 % std::size(ways)];
        script(std::string(way) + "\n");
        EXPECT_EQ(meaning, spelled(ShellAbGet(&adp_, nullptr))) << way;
      } else {
        script("printf well >&$pipeid\n");
        EXPECT_EQ("well", spelled(ShellAbGet(&adp_, nullptr)));
      }
    }
  });
  EXPECT_LT(fairlead_test::resident_bytes(), before + fairlead_test::kResidentSlack);
}

TEST_P(ShellTest, a_mask_that_cannot_be_set_is_logged_under_the_source_of_scripts) {
  script("printf x >&$pipeid\n");
  const auto ended = fairlead_test::run_child([&] {
    GlogOpen("test", LOG_MODE_CONSOLE | LOG_MODE_WHERE, 7);
    Fault fault(Call::kMask, {.nth = 2, .error = EINVAL});
    EXPECT_EQ("x", spelled(ShellAbGet(&adp_, nullptr)));
  });
  EXPECT_EQ(0U, ended.err.find("warn: sigprocmask( set a new signal mask ) failed")) << ended.err;
  EXPECT_NE(std::string::npos, ended.err.find("/shell/")) << ended.err;
}

TEST_P(ShellTest, a_path_record_without_segments_is_no_path) {
  setenv("config", "inherited", 1);
  telling_script("config");
  EXPECT_EQ("-;", spelled(ShellAbGet(&adp_, path("/"))));
  unsetenv("config");
}

TEST_P(ShellTest, a_get_that_loses_its_path_runs_no_script) {
  script("touch /tmp/was-run\n");
  slash_t* where = path("a/b");
  {
    Fault fault(Call::kMalloc, {.error = ENOMEM});
    EXPECT_EQ(nullptr, ShellAbGet(&adp_, where));
    EXPECT_TRUE(fault.fired());
  }
  EXPECT_FALSE(fairlead_test::exists("/tmp/was-run"));
}

// The interpreter is busybox's: dash cannot redirect to such a number.
TEST_P(ShellTest, without_a_free_digit_the_channel_keeps_its_number) {
  script("");
  put_file(kScript, "#!/usr/bin/busybox ash\nprintf $pipeid >&$pipeid\n", 0755);
  const auto ended = fairlead_test::run_child([&] {
    for (int fd = 3; fd <= 9; ++fd) dup2(STDERR_FILENO, fd);
    const std::string pipeid = spelled(ShellAbGet(&adp_, nullptr));
    EXPECT_GT(atoi(pipeid.c_str()), 9) << pipeid;
  });
  EXPECT_EQ(0, ended.status);
}

TEST_P(ShellTest, a_caller_without_standard_input_is_served) {
  script("printf %s $pipeid >&$pipeid\n");
  const auto ended = fairlead_test::run_child([&] {
    close(STDIN_FILENO);
    for (int fd = 3; fd < 64; ++fd) close(fd);
    EXPECT_EQ("3", spelled(ShellAbGet(&adp_, nullptr)));
  });
  EXPECT_EQ("", ended.err);
}

INSTANTIATE_TEST_SUITE_P(Interpreters, ShellTest,
                         testing::Values("/bin/dash", "/usr/bin/busybox ash"),
                         [](const auto& instance) {
                           return std::string(instance.param[5] == 'd' ? "dash" : "busybox_ash");
                         });

}  // namespace
