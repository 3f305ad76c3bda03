// Isolated calls: a bad adapter costs one call, and the caller stays whole.
#include "fairlead/adp/isolated.h"

#include <sys/time.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <sstream>

#include "adp/adp_support.h"
#include "support/child.h"
#include "support/faults.h"
#include "support/syslog.h"
#include "support/traced.h"
#include "talk/owned_talk.h"

namespace {

using fairlead_test::Call;
using fairlead_test::Fault;
using fairlead_test::put_file;
using fairlead_test::run_child;
using fairlead_test::spelled;

class IsolatedTest : public fairlead_test::AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    install("probe", "net/probe");
  }

  static std::string call(const char* name, const char* parameter = nullptr) {
    return spelled(
        AdpSecureCall(nullptr, "net/probe", name, nullptr, parameter ? "%s" : nullptr, parameter));
  }

  // What a child of the action writes on the channel.
  static std::string wire(const std::function<void()>& action) {
    std::string bytes;
    const auto note = [&bytes](const fairlead_test::CallMade& made) {
      if (made.number != SYS_write || made.result <= 0) return;
      const auto link = "/proc/" + std::to_string(made.pid) + "/fd/" +
                        std::to_string(static_cast<int>(made.arguments[0]));
      char target[64] = "";
      if (readlink(link.c_str(), target, sizeof target - 1) < 0) return;
      if (strncmp(target, "socket:", 7) != 0) return;
      std::string piece(static_cast<size_t>(made.result), '?');
      const iovec here = {piece.data(), piece.size()};
      const auto address = static_cast<uintptr_t>(made.arguments[1]);
      const iovec there = {reinterpret_cast<void*>(address), piece.size()};
      process_vm_readv(made.pid, &here, 1, &there, 1, 0);
      bytes += piece;
    };
    fairlead_test::run_traced({.watch = note}, action, [] { return 0; });
    return bytes;
  }
};

TEST_F(IsolatedTest, the_adapter_answers_as_in_process) {
  answer_with("{\"a\":\"1\"}");
  EXPECT_EQ("{\"a\":\"1\"}", spelled(AdpSecureGet(nullptr, "net/probe", nullptr, "x")));
  EXPECT_EQ(1, AdpSecureSet(nullptr, "net/probe", nullptr, "x", nullptr, "1"));
  EXPECT_EQ(0, AdpSecureSet(nullptr, "net/probe", nullptr, "x", nullptr, "refuse"));
  EXPECT_EQ("net/probe|x|1\nnet/probe|x|refuse\n", sets());
  EXPECT_EQ("done", call("done"));
  EXPECT_EQ("failed", call("failed"));
  EXPECT_EQ("null", call("nothing"));
  EXPECT_EQ("just so", call("string"));
  EXPECT_EQ("{\"object\":\"net/probe\",\"count\":\"1\",\"list\":\"x\"}", call("echo", "x"));
}

TEST_F(IsolatedTest, a_childs_answers_are_byte_for_byte_as_stated) {
  using namespace std::string_literals;
  if (!fairlead_test::can_trace()) GTEST_SKIP() << "no process can be traced here";
  const auto set = [](const char* value) {
    return wire([=] { AdpSecureSet(nullptr, "net/probe", nullptr, nullptr, nullptr, value); });
  };
  const auto get = [](const char* answer) {
    answer_with(answer);
    return wire([] { spelled(AdpSecureGet(nullptr, "net/probe", nullptr, nullptr)); });
  };
  const auto called = [](const char* name) { return wire([=] { call(name); }); };
  EXPECT_EQ("\1"s, set("1"));
  EXPECT_EQ("\2"s, set("refuse"));
  EXPECT_EQ("\2"s, set("odd"));
  EXPECT_EQ("{\"a\":\"1\"}"s, get("{\"a\":\"1\"}"));
  EXPECT_EQ("\0"s, get(""));
  EXPECT_EQ("\0"s, get("array"));  // has no text
  EXPECT_EQ("\1\0"s, called("done"));
  EXPECT_EQ("\2\0"s, called("failed"));
  EXPECT_EQ("\0"s, called("nothing"));
  EXPECT_EQ("just so\0"s, called("string"));
  EXPECT_EQ("\0"s, called("array"));
}

TEST_F(IsolatedTest, a_crash_gives_nothing_and_one_message) {
  answer_with("crash");
  std::string log =
      logged([] { EXPECT_EQ(nullptr, AdpSecureGet(nullptr, "net/probe", nullptr, nullptr)); });
  EXPECT_TRUE(log == "error: net/probe terminate by signal 11\n" ||
              log == "error: AdpSecureGet( net/probe ) terminate by signal 11\n")
      << log;
  log = logged([] { EXPECT_EQ("null", call("misbehave", "segv")); });
  EXPECT_EQ("error: net/probe.misbehave terminate by signal 11\n", log);
  log = logged([] { EXPECT_EQ("null", call("misbehave", "abort")); });
  EXPECT_EQ("error: net/probe.misbehave terminate by signal 6\n", log);
  EXPECT_EQ("just so", call("string"));
}

TEST_F(IsolatedTest, errno_tells_a_crash_from_no_answer) {
  logged([] {
    errno = 0;
    EXPECT_EQ("null", call("misbehave", "segv"));
    EXPECT_EQ(ECHILD, errno);
    for (const char* how : {"exit", "close", "wrong"}) {
      EXPECT_EQ("null", call("misbehave", how));
      EXPECT_EQ(EINVAL, errno) << how;
    }
    answer_with("crash");
    EXPECT_EQ(nullptr, AdpSecureGet(nullptr, "net/probe", nullptr, nullptr));
    EXPECT_EQ(ECHILD, errno);
  });
}

TEST_F(IsolatedTest, other_misbehaviour_gives_nothing) {
  EXPECT_EQ("", logged([] { EXPECT_EQ("null", call("misbehave", "exit")); }));
  EXPECT_EQ("", logged([] { EXPECT_EQ("null", call("misbehave", "close")); }));
  EXPECT_EQ("survived", call("misbehave", "nothing"));
}

TEST_F(IsolatedTest, what_has_no_text_is_logged) {
  answer_with("array");
  EXPECT_EQ("warn: AdpSecureGet( net/probe ) return wrong format data\n", logged([] {
              EXPECT_EQ(nullptr, AdpSecureGet(nullptr, "net/probe", nullptr, nullptr));
            }));
  EXPECT_EQ("warn: net/probe.array return wrong format data\n",
            logged([] { EXPECT_EQ("null", call("array")); }));
}

TEST_F(IsolatedTest, a_wrong_answer_gives_nothing) {
  EXPECT_EQ("", logged([] { EXPECT_EQ("null", call("misbehave", "wrong")); }));
}

TEST_F(IsolatedTest, answers_of_any_size_arrive_whole) {
  for (const char* size : {"1", "4094", "4095", "4096", "4097", "8192", "10000000"})
    EXPECT_EQ(static_cast<size_t>(atoi(size)), call("lengthy", size).size()) << size;
  EXPECT_EQ("null", call("lengthy", "0"));  // an empty string cannot be told from nothing
}

TEST_F(IsolatedTest, null_names_are_refused_before_anything_is_made) {
  Fault fault(Call::kSocketpair, {.nth = 0});
  EXPECT_EQ(nullptr, AdpSecureCall(nullptr, "net/probe", nullptr, nullptr, nullptr));
  EXPECT_EQ(0, AdpSecureSet(nullptr, nullptr, nullptr, nullptr, nullptr, "1"));
  EXPECT_EQ(nullptr, AdpSecureGet(nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(0, fault.calls());
}

TEST_F(IsolatedTest, a_missing_object_is_logged) {
  slash_t nowhere = {};
  EXPECT_EQ("error: argument error\n", logged([] {
              EXPECT_EQ(0, AdpSecureSet(nullptr, nullptr, nullptr, nullptr, nullptr, "1"));
            }));
  EXPECT_EQ("error: argument error\n", logged([&] {
              EXPECT_EQ(nullptr, AdpSecureGet(&nowhere, "net/probe", nullptr, nullptr));
            }));
  EXPECT_EQ("error: argument error\n", logged([] {
              EXPECT_EQ(nullptr, AdpSecureCall(nullptr, nullptr, "x", nullptr, nullptr));
            }));
  EXPECT_EQ("", logged([] {
              EXPECT_EQ(nullptr, AdpSecureCall(nullptr, nullptr, nullptr, nullptr, nullptr));
            }));
}

TEST_F(IsolatedTest, the_child_has_the_call_for_its_name) {
  const fairlead::OwnedTalk answer(
      AdpSecureCall(nullptr, "net/probe", "describe", nullptr, nullptr));
  ASSERT_NE(nullptr, answer);
  EXPECT_STREQ("net/probe.descr", VesselGetS(answer.get(), "name"));  // 15 characters
}

TEST_F(IsolatedTest, the_child_has_its_end_of_the_channel_and_nothing_else_more) {
  const fairlead::OwnedTalk own(AdpCall(nullptr, "net/probe", "describe", nullptr, nullptr));
  const fairlead::OwnedTalk childs(
      AdpSecureCall(nullptr, "net/probe", "describe", nullptr, nullptr));
  ASSERT_NE(nullptr, own);
  ASSERT_NE(nullptr, childs);
  std::string more = VesselGetS(childs.get(), "descriptors");
  std::istringstream mine(VesselGetS(own.get(), "descriptors"));
  for (std::string entry; mine >> entry;) {
    const size_t at = more.find(entry + " ");
    ASSERT_NE(std::string::npos, at) << entry << " is missing in " << more;
    more.erase(at, entry.size() + 1);
  }
  EXPECT_NE(std::string::npos, more.find("=socket:")) << more;
  EXPECT_NE(std::string::npos, more.find("], closed by exec ")) << more;
  EXPECT_EQ(1, std::count(more.begin(), more.end(), '=')) << more;
}

TEST_F(IsolatedTest, the_childs_syslog_name_is_the_object) {
  const fairlead_test::Syslog daemon;
  GlogOpen("test", LOG_MODE_SYSLOG, 7);
  answer_with("array");
  EXPECT_EQ(nullptr, AdpSecureGet(nullptr, "net/probe", nullptr, nullptr));
  const std::string line = const_cast<fairlead_test::Syslog&>(daemon).wait_for("wrong format data");
  EXPECT_NE(std::string::npos,
            line.find("daemon.warn net/probe: AdpSecureGet( net/probe ) return wrong"))
      << line;
  GlogClose();
}

TEST_F(IsolatedTest, each_childs_syslog_name_is_its_request) {
  put_file("/prj/net/bad.adp", "text");
  fairlead_test::Syslog daemon;
  GlogOpen("test", LOG_MODE_SYSLOG, 7);
  const auto told_by = [&](const std::string& name) {
    return daemon.wait_for("daemon.err " + name + ": cannot load the file(/prj/net/bad.adp)") != "";
  };
  EXPECT_EQ(0, AdpSecureSet(nullptr, "net/bad", nullptr, nullptr, nullptr, "1"));
  EXPECT_TRUE(told_by("net/bad"));
  EXPECT_EQ(nullptr, AdpSecureCall(nullptr, "net/bad", "dial", nullptr, nullptr));
  EXPECT_TRUE(told_by("net/bad.dial"));
  GlogClose();
}

TEST_F(IsolatedTest, a_record_names_the_object_in_messages) {
  answer_with("crash");
  char text[] = "//net//probe/";
  slash_t object;
  ASSERT_EQ(1, SlashAnalysis(&object, text));
  const std::string log =
      logged([&] { EXPECT_EQ(nullptr, AdpSecureGet(&object, "other", nullptr, nullptr)); });
  EXPECT_NE(std::string::npos, log.find("net/probe")) << log;
  EXPECT_EQ(std::string::npos, log.find("other")) << log;
  SlashClear(&object);
}

// Its parent never asks for the status, a SIGCHLD handler or a tracer may.
TEST_F(IsolatedTest, the_child_ends_with_0_or_127_when_its_answer_could_not_be_written) {
  const auto end_of_child = [](int lost_writes) {
    return run_child([lost_writes] {
             Fault nobody_waits(Call::kWaitpid,
                                {.error = ECHILD, .times = fairlead_test::kForever});
             Fault write(Call::kWrite, {.nth = lost_writes, .error = EIO});
             call("string");
             write.disarm();
             nobody_waits.disarm();
             int status = 0;
             EXPECT_GT(waitpid(-1, &status, 0), 0);
             return WIFEXITED(status) ? WEXITSTATUS(status) : 255;
           })
        .status;
  };
  EXPECT_EQ(0, end_of_child(0));
  EXPECT_EQ(127, end_of_child(1));
}

// They are the caller's, as what its streams still hold: a child that ends by exit, for lack of
// memory or because its adapter does, must not remove the caller's files.
TEST_F(IsolatedTest, the_child_runs_no_exit_handlers_of_the_callers) {
  install("tables", "net/table");
  const auto after = [](const std::function<void()>& action) {
    return run_child([&] {
      atexit([] { put_file("/tmp/handled", ""); });
      printf("once");
      action();
      fflush(stdout);
    });
  };
  const auto left = after([] { EXPECT_EQ("null", call("misbehave", "leave")); });
  EXPECT_EQ("once", left.out);
  int told = 0;
  for (int nth = 1; nth <= 8; ++nth) {
    const auto lost = after([nth] {
      Fault memory(Call::kMalloc, {.nth = nth, .error = ENOMEM});
      AdpSecureGet(nullptr, "net/table", nullptr, nullptr);
    });
    EXPECT_EQ("once", lost.out) << nth;
    told += lost.err.find("out of memory") != std::string::npos;
  }
  EXPECT_GT(told, 0);
  EXPECT_EQ("<missing>", fairlead_test::file_content("/tmp/handled"));
}

// A message on the console writes out what standard output holds.
TEST_F(IsolatedTest, the_child_writes_nothing_that_the_caller_has_still_to_write) {
  const auto ended = run_child([] {
    printf("once ");
    EXPECT_EQ("survived", call("misbehave", "log"));
    printf("again");
    fflush(stdout);
  });
  EXPECT_EQ("info: told\nonce again", ended.out);
}

TEST_F(IsolatedTest, a_failed_fork_leaves_a_pending_sigchld_pending) {
  const auto ended = run_child([] {
    sigset_t blocked, pending;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGCHLD);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    raise(SIGCHLD);
    Fault fault(Call::kFork, {.error = EAGAIN});
    EXPECT_EQ("null", call("done"));
    sigpending(&pending);
    EXPECT_EQ(1, sigismember(&pending, SIGCHLD));
  });
  EXPECT_EQ(0, ended.status);
}

TEST_F(IsolatedTest, failed_preparations_are_logged) {
  const std::pair<const char*, std::function<void()>> calls[] = {
      {"AdpSecureSet( net/probe )",
       [] { EXPECT_EQ(0, AdpSecureSet(nullptr, "net/probe", nullptr, nullptr, nullptr, "1")); }},
      {"AdpSecureGet( net/probe )",
       [] { EXPECT_EQ(nullptr, AdpSecureGet(nullptr, "net/probe", nullptr, nullptr)); }},
      {"AdpSecureCall( net/probe.x )", [] { EXPECT_EQ("null", call("x")); }},
  };
  for (const auto& [name, action] : calls) {
    {
      Fault fault(Call::kSocketpair, {.error = EMFILE});
      EXPECT_EQ(
          std::string("error: socketpair error for ") + name + "(err:24/Too many open files)\n",
          logged(action));
    }
    const auto ended = run_child([&action = action] {
      Fault fault(Call::kFork, {.error = EAGAIN});
      action();
      sigset_t mask;
      sigprocmask(SIG_SETMASK, nullptr, &mask);
      EXPECT_EQ(1, sigismember(&mask, SIGCHLD));  // left as it is on this way out
      EXPECT_EQ(signal_handler, signal_register(SIGCHLD, SIG_DFL));
    });
    EXPECT_EQ(std::string("error: vfork error for ") + name +
                  "(err:11/Resource temporarily unavailable)\n",
              ended.err);
  }
}

TEST_F(IsolatedTest, a_default_handler_is_replaced_by_the_empty_one) {
  signal(SIGCHLD, SIG_DFL);
  call("done");
  EXPECT_EQ(signal_handler, signal_register(SIGCHLD, count_signal));
}

TEST_F(IsolatedTest, the_empty_handler_stays_and_one_like_it_comes_back) {
  signal_register(SIGCHLD, signal_handler);
  EXPECT_EQ("done", call("done"));
  EXPECT_EQ("null", call("misbehave", "exit"));
  EXPECT_EQ(signal_handler, signal_register(SIGCHLD, SIG_DFL));

  struct sigaction alike = {}, after;
  alike.sa_handler = signal_handler;
  alike.sa_flags = SA_NOCLDWAIT;  // the kernel would take the child's end away
  sigaction(SIGCHLD, &alike, nullptr);
  EXPECT_EQ("done", call("done"));
  sigaction(SIGCHLD, nullptr, &after);
  EXPECT_EQ(SA_NOCLDWAIT, after.sa_flags & SA_NOCLDWAIT);
  signal_register(SIGCHLD, count_signal);
}

TEST_F(IsolatedTest, only_a_handler_of_the_callers_hears_of_the_childs_end) {
  EXPECT_EQ("just so", call("string"));
  EXPECT_EQ(1, signals_);
  signal_register(SIGCHLD, signal_handler);
  EXPECT_EQ("just so", call("string"));

  sigset_t blocked, former, pending;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGCHLD);
  sigprocmask(SIG_BLOCK, &blocked, &former);
  EXPECT_EQ("just so", call("string"));
  sigpending(&pending);
  EXPECT_EQ(1, sigismember(&pending, SIGCHLD)) << "a caller that blocks it may ask for it";
  sigprocmask(SIG_SETMASK, &former, nullptr);
  signal_register(SIGCHLD, count_signal);
}

TEST_F(IsolatedTest, handler_flags_mask_and_alarm_come_back) {
  struct sigaction mine = {}, after;
  mine.sa_handler = count_signal;
  mine.sa_flags = SA_RESTART | SA_NOCLDSTOP;
  sigaction(SIGCHLD, &mine, nullptr);
  sigset_t blocked, former, now;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGUSR1);
  sigprocmask(SIG_BLOCK, &blocked, &former);
  const itimerval timer = {{0, 0}, {500, 0}};
  setitimer(ITIMER_REAL, &timer, nullptr);

  EXPECT_EQ("done", call("done"));

  itimerval left, none = {};
  setitimer(ITIMER_REAL, &none, &left);
  EXPECT_GT(left.it_value.tv_sec, 400);
  sigprocmask(SIG_SETMASK, &former, &now);
  EXPECT_EQ(1, sigismember(&now, SIGUSR1));
  EXPECT_EQ(0, sigismember(&now, SIGCHLD));
  sigaction(SIGCHLD, nullptr, &after);
  EXPECT_EQ(mine.sa_handler, after.sa_handler);
  EXPECT_EQ(mine.sa_flags & (SA_RESTART | SA_NOCLDSTOP),
            after.sa_flags & (SA_RESTART | SA_NOCLDSTOP));
  signal_register(SIGCHLD, count_signal);
}

// As a program has it that reads its children's ends from a signalfd.
TEST_F(IsolatedTest, a_caller_that_blocks_sigchld_keeps_it_pending_and_gets_every_answer) {
  sigset_t blocked, former, now;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGCHLD);
  sigprocmask(SIG_BLOCK, &blocked, &former);
  raise(SIGCHLD);
  for (int round = 0; round < 20; ++round) {
    EXPECT_EQ("just so", call("string"));
    EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG)) << "a child is left in round " << round;
    sigpending(&now);
    EXPECT_EQ(1, sigismember(&now, SIGCHLD));
  }
  EXPECT_EQ(0, signals_);
  sigprocmask(SIG_SETMASK, &former, &now);
  EXPECT_EQ(1, signals_);
  EXPECT_EQ(1, sigismember(&now, SIGCHLD));
}

TEST_F(IsolatedTest, callers_that_ignore_or_collect_all_children_get_every_answer) {
  const auto collect = [](int) {
    while (waitpid(-1, nullptr, WNOHANG) > 0) continue;
  };
  for (signal_function_t handler : {SIG_IGN, static_cast<signal_function_t>(collect)}) {
    signal_register(SIGCHLD, handler);
    for (int round = 0; round < 10; ++round) EXPECT_EQ("just so", call("string"));
    EXPECT_EQ("null", call("misbehave", "exit"));
    EXPECT_EQ(handler, signal_register(SIGCHLD, count_signal));
  }
}

// A third of the calls go wrong in every way there is; the fixture's census finds what they leave
// behind. FAIRLEAD_MANY_CALLS=10000 is the long form.
TEST_F(IsolatedTest, many_bad_calls_leave_nothing_behind) {
  const char* text = getenv("FAIRLEAD_MANY_CALLS");
  const int many = text ? atoi(text) : 300;
  constexpr int kFloods = 3;
  constexpr size_t kFloodSize = 50 << 20;
  const char* how[] = {"segv", "abort", "exit", "close", "wrong"};
  const size_t before = fairlead_test::resident_bytes();
  logged([&] {
    for (int round = 0; round < many; ++round) {
      if (round % (many / kFloods) == 0)
        EXPECT_EQ(kFloodSize, call("lengthy", std::to_string(kFloodSize).c_str()).size());
      else if (round % 3 == 0)
        EXPECT_EQ("null", call("misbehave", how[round / 3 % 5]));
      else
        EXPECT_EQ("just so", call("string"));
    }
  });
  EXPECT_LT(fairlead_test::resident_bytes(), before + fairlead_test::kResidentSlack);
}

// The third change of the mask is the child's, the fourth the one after the answer.
TEST_F(IsolatedTest, a_mask_that_cannot_be_had_or_set_is_logged_and_the_call_made) {
  const std::pair<int, const char*> failures[] = {
      {1, "warn: sigprocmask( get the original signal mask ) failed\n"},
      {2, "warn: sigprocmask( set a new signal mask ) failed\n"},
      {3, "warn: sigprocmask( reset SIGCHLD ) failed\n"},
      {4, "warn: sigprocmask( reset SIGCHLD ) failed\n"},
  };
  for (const auto& [nth, message] : failures) {
    const auto ended = run_child([nth = nth] {
      Fault fault(Call::kMask, {.nth = nth, .error = EINVAL});
      EXPECT_EQ("done", call("done"));
    });
    EXPECT_EQ(message, ended.err) << nth;
  }
}

TEST_F(IsolatedTest, an_interrupted_write_of_the_answer_is_repeated) {
  const std::string big(100000, 'x');
  Fault fault(Call::kWrite, {.error = EINTR, .times = 3, .at_most = 1000});
  EXPECT_EQ(big.size(), call("lengthy", "100000").size());
}

TEST_F(IsolatedTest, an_answer_that_cannot_be_written_gives_nothing) {
  Fault fault(Call::kWrite, {.error = EIO});
  EXPECT_EQ("null", call("string"));
}

TEST_F(IsolatedTest, the_wait_for_the_child_is_repeated_when_interrupted_and_given_up_otherwise) {
  {
    Fault fault(Call::kWaitpid, {.error = EINTR, .times = 3});
    EXPECT_EQ("just so", call("string"));
  }
  EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG));
  const auto ended = run_child([] {
    Fault fault(Call::kWaitpid, {.error = ECHILD, .times = fairlead_test::kForever});
    EXPECT_EQ("just so", call("string"));
  });
  EXPECT_EQ("", ended.err);
}

TEST_F(IsolatedTest, a_get_whose_path_is_lost_asks_for_nothing_else) {
  answer_with("whole");
  adp_t* adp = AdpFileOpen(nullptr, "net/probe");
  {
    Fault fault(Call::kMalloc, {.error = ENOMEM});
    EXPECT_EQ(nullptr, AdpAbGet(adp, nullptr, "a/b"));
  }
  EXPECT_EQ("whole", spelled(AdpAbGet(adp, nullptr, "a/b")));
  AdpFileClose(adp);
}

}  // namespace
