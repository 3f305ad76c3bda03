// Starting a service: what its daemon is given, what is logged, and what a failure leaves.
#include <sys/syscall.h>

#include <sstream>

#include "service/service_support.h"
#include "support/child.h"
#include "support/faults.h"
#include "support/syslog.h"

namespace {

bool setsid_fails = false;

}  // namespace

// Stands before the C library's, so that it can fail: after two forks the real one never does.
extern "C" pid_t setsid() {
  if (setsid_fails) {
    errno = EPERM;
    return -1;
  }
  return static_cast<pid_t>(syscall(SYS_setsid));
}

namespace {

using namespace fairlead_test;

class StartTest : public ServiceTest {
 protected:
  // Starts a service that tells what it was given, and waits for its end.
  template <class Start>
  static std::string told_after(Start start) {
    unlink("/tmp/told");
    EXPECT_EQ(0, start());
    EXPECT_EQ(0, next_end());
    return file_content("/tmp/told");
  }

  static std::string told() {
    return told_after([] { return ServiceStart("teller", "test", "tell", nullptr); });
  }

  static std::string told(const char* parameters) {
    return told_after([=] { return ServiceStart("teller", "test", "tell", "%s", parameters); });
  }

  static bool tells(const std::string& told, const std::string& line) {
    return ("\n" + told).find("\n" + line + "\n") != std::string::npos;
  }

  static std::string descriptors(const std::string& told) {
    std::istringstream lines(told);
    std::string found;
    for (std::string line; std::getline(lines, line);)
      if (line.rfind("descriptor ", 0) == 0) found += line.substr(11) + "\n";
    return found;
  }

  static constexpr const char* kOwnDescriptors =
      "/dev/null\n/dev/null\n/dev/null\n/tmp/.var/service/teller.spid\n";

  static std::string parameters_of(const std::string& service) {
    return file_content(record_path(service)).substr(136);
  }

  static bool refused(int error, const char* service, const char* object, const char* interface) {
    errno = 0;
    return ServiceStart(service, object, interface, nullptr) == -1 && errno == error;
  }
};

TEST_F(StartTest, the_program_gets_the_name_and_the_identifier) {
  EXPECT_EQ(0u, told().find("argument teller\nargument test.tell\nleads"));
  EXPECT_TRUE(tells(told("ppp0"), "argument test.tell[ppp0]"));
  EXPECT_TRUE(tells(told(""), "argument test.tell[]"));
}

TEST_F(StartTest, parameters_are_formatted_once) {
  const std::string all = told_after(
      [] { return ServiceStart("teller", "test", "tell", "%s,%d%%,%s", "ppp0", 30, "%s"); });
  EXPECT_TRUE(tells(all, "argument test.tell[ppp0,30%,%s]"));
  EXPECT_EQ(record_of("test", "tell", "ppp0,30%,%s"), file_content(record_path("teller")));
}

TEST_F(StartTest, without_parameters_the_record_holds_none) {
  told();
  EXPECT_EQ(record_of("test", "tell"), file_content(record_path("teller")));
}

TEST_F(StartTest, parameters_of_any_length_arrive_whole) {
  for (const size_t length : {1000u, 5000u, 100000u}) {
    const std::string text(length, 'p');
    EXPECT_TRUE(tells(told(text.c_str()), "argument test.tell[" + text + "]")) << length;
    EXPECT_EQ(text + '\0', parameters_of("teller"));
  }
}

TEST_F(StartTest, long_names_arrive_whole) {
  const std::string object(1500, 'o');
  EXPECT_EQ(0, ServiceStart("long", object.c_str(), "tell", nullptr));
  EXPECT_EQ(0, next_end());
  EXPECT_TRUE(tells(file_content("/tmp/told"), "argument " + object + ".tell"));
}

TEST_F(StartTest, the_daemon_lives_when_the_call_returns) {
  const pid_t daemon = start("wan");
  EXPECT_EQ(daemon, getsid(daemon));
  EXPECT_EQ("he\n", file_content("/proc/" + std::to_string(daemon) + "/comm"));
  EXPECT_EQ(std::string("wan\0test.wait\0", 14),
            file_content("/proc/" + std::to_string(daemon) + "/cmdline"));
  stop("wan");
}

TEST_F(StartTest, the_daemon_has_null_streams_and_its_record_and_nothing_else) {
  EXPECT_EQ(kOwnDescriptors, descriptors(told()));
  // Inheritable ones of the caller's, among them one of the record itself.
  const int file = open("/etc/passwd", O_RDONLY);
  const int record = open(record_path("teller").c_str(), O_RDWR);
  const int high = dup2(file, 500);
  EXPECT_EQ(kOwnDescriptors, descriptors(told()));
  for (int fd : {file, record, high}) close(fd);
}

// A closed descriptor of a record takes the process' lock on it along.
TEST_F(StartTest, a_record_that_the_caller_has_open_costs_the_daemon_no_lock) {
  put_record("wan", "");
  const int inherited = open(record_path("wan").c_str(), O_RDONLY);
  const int kept = open(record_path("wan").c_str(), O_RDONLY | O_CLOEXEC);
  const pid_t daemon = start("wan");
  EXPECT_GT(daemon, 0);
  close(inherited);
  close(kept);
  EXPECT_EQ(daemon, pid("wan"));
  stop("wan");
}

TEST_F(StartTest, the_daemon_inherits_folder_mask_and_ignored_signals) {
  sigset_t blocked, former;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGUSR1);
  sigprocmask(SIG_BLOCK, &blocked, &former);
  signal_register(SIGUSR2, SIG_IGN);
  const std::string all = told();
  signal_register(SIGUSR2, SIG_DFL);
  sigprocmask(SIG_SETMASK, &former, nullptr);
  char folder[512];
  EXPECT_TRUE(tells(all, std::string("folder ") + getcwd(folder, sizeof folder)));
  EXPECT_TRUE(tells(all, "leads its session: yes"));
  EXPECT_TRUE(tells(all, "blocked " + std::to_string(SIGUSR1)));
  EXPECT_TRUE(tells(all, "ignored " + std::to_string(SIGUSR2)));
  EXPECT_FALSE(tells(all, "blocked " + std::to_string(SIGCHLD)));
}

TEST_F(StartTest, closed_standard_streams_of_the_caller_are_null_in_the_daemon) {
  const Ended caller = run_child([] {
    for (int fd : {0, 1, 2}) close(fd);
    return ServiceStart("teller", "test", "tell", nullptr);
  });
  EXPECT_EQ(0, caller.status);
  EXPECT_EQ(0, next_end());
  EXPECT_EQ(kOwnDescriptors, descriptors(file_content("/tmp/told")));
}

TEST_F(StartTest, start_refuses_missing_arguments) {
  EXPECT_TRUE(refused(EINVAL, "wan", nullptr, "wait"));
  EXPECT_TRUE(refused(EINVAL, "wan", "test", nullptr));
  EXPECT_TRUE(refused(EINVAL, nullptr, "test", "wait"));
}

TEST_F(StartTest, start_refuses_names_that_lead_out_of_the_folder) {
  for (const char* name : {"", "/", "a/b", "../wan", "/tmp/wan"})
    EXPECT_TRUE(refused(EINVAL, name, "test", "wait")) << name;
  EXPECT_TRUE(refused(ENAMETOOLONG, std::string(300, 'n').c_str(), "test", "wait"));
  EXPECT_TRUE(refused(ENAMETOOLONG, std::string(233, 'n').c_str(), "test", "wait"));
  EXPECT_FALSE(exists("/tmp/.var/service"));
}

TEST_F(StartTest, a_name_may_be_as_long_as_its_path_has_room_and_hold_dots) {
  for (const std::string& name : {std::string(232, 'n'), std::string(".."), std::string("a b%s")}) {
    start(name);
    EXPECT_TRUE(exists(record_path(name)));
    stop(name);
  }
}

TEST_F(StartTest, a_start_is_logged) {
  Syslog syslog;
  start("wan");
  EXPECT_NE("", syslog.wait_for("daemon.debug test: start the serice( wan:test.wait )"));
  stop("wan");
}

TEST_F(StartTest, a_second_start_leaves_the_running_daemon_alone) {
  Syslog syslog;
  const pid_t daemon = start("wan");
  EXPECT_EQ(0, ServiceStart("wan", "test", "end", "other"));
  EXPECT_EQ(127, next_end());
  EXPECT_NE("", syslog.wait_for("daemon.warn test: DaemonRegister(wan:test.end) failed, may the "
                                "server already start\n"));
  EXPECT_EQ(daemon, pid("wan"));
  EXPECT_EQ(record_of("test", "wait"), file_content(record_path("wan")));
  stop("wan");
}

TEST_F(StartTest, a_missing_program_is_logged_and_leaves_a_dead_service) {
  Syslog syslog;
  setenv("PATH", "/tmp/none", 1);
  EXPECT_EQ(0, ServiceStart("wan", "test", "wait", "x"));
  EXPECT_EQ(127, next_end());
  EXPECT_NE("", syslog.wait_for("daemon.err test: server( wan:test.wait ) start failed(err:2/"));
  EXPECT_EQ(R"({"status":"die","adp":"test","func":"wait","parameter1":"x"})", info("wan"));
}

TEST_F(StartTest, without_a_record_the_daemon_runs_all_the_same) {
  Syslog syslog;
  make_directories(record_path("teller"));
  EXPECT_TRUE(tells(told(), "argument test.tell"));
  EXPECT_NE("", syslog.wait_for("daemon.warn test: DaemonRegister(teller:test.tell) file handler "
                                "operation failed(err:21/"));
}

TEST_F(StartTest, a_failed_fork_is_logged_and_starts_nothing) {
  Syslog syslog;
  Fault fault(Call::kFork, {.error = EAGAIN});
  EXPECT_EQ(-1, ServiceStart("wan", "test", "wait", nullptr));
  EXPECT_EQ(EAGAIN, errno);
  fault.disarm();
  EXPECT_NE("", syslog.wait_for("daemon.err test: fork error for ServiceStart( wan )(err:11/"));
  EXPECT_FALSE(exists(record_path("wan")));
}

TEST_F(StartTest, the_first_child_becomes_the_daemon_when_it_cannot_fork) {
  Syslog syslog;
  Fault fault(Call::kFork, {.nth = 2, .error = EAGAIN});
  const pid_t daemon = start("wan");  // does not wait for its end
  fault.disarm();
  EXPECT_NE("", syslog.wait_for("daemon.warn test: daemon error for ServiceStart( wan:test.wait )"
                                "(err:11/"));
  EXPECT_EQ(daemon, getsid(daemon));
  stop("wan");
}

TEST_F(StartTest, a_daemon_without_a_session_of_its_own_is_logged) {
  Syslog syslog;
  setsid_fails = true;
  const std::string all = told();
  setsid_fails = false;
  EXPECT_TRUE(tells(all, "leads its session: no"));
  EXPECT_NE("", syslog.wait_for("daemon.warn test: setsid error for ServiceStart( teller:test.tell "
                                ")(err:1/"));
}

TEST_F(StartTest, lost_memory_is_logged_and_ends_the_daemon_alone) {
  Syslog syslog;
  int failures = 0;
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next(); failures += each.fired()) {
    EXPECT_EQ(0, each.run([] { return ServiceStart("wan", "test", "end", "%s", "x"); }));
    const int end = next_end();
    EXPECT_TRUE(end == 0 || (each.fired() && end == 127)) << end;
    const std::string record = file_content(record_path("wan"));
    EXPECT_TRUE(record == "<missing>" || record == record_of("test", "end", "x"));
    unlink(record_path("wan").c_str());
  }
  EXPECT_GE(failures, 2);  // the parameters, the identifier
  EXPECT_NE("", syslog.wait_for("daemon.emerg test: out of memory(err:12/"));
}

TEST_F(StartTest, whatever_fails_nothing_is_left) {
  const Call calls[] = {Call::kOpen, Call::kRead,    Call::kWrite,  Call::kTruncate, Call::kMkdir,
                        Call::kStat, Call::kDup,     Call::kFcntl,  Call::kOpendir,  Call::kFork,
                        Call::kPipe, Call::kWaitpid, Call::kMalloc, Call::kUnlink};
  for (const Call call : calls)
    for (EachCall each(call, {.error = EIO}); each.next();) {
      const int result =
          each.run([] { return ServiceStart("wan", "test", "end", "%s", "parameter"); });
      EXPECT_TRUE(result == 0 || (call == Call::kFork && each.nth() == 1 && each.fired()));
      for (int end = 0; end != -1000; end = next_end()) EXPECT_TRUE(end == 0 || end == 127) << end;
      EXPECT_EQ(-1, pid("wan"));
      remove_tree("/tmp/.var/service");
    }
}

TEST_F(StartTest, callers_that_ignore_or_collect_all_children_can_start) {
  const auto collect = [](int) {
    const int saved = errno;
    while (waitpid(-1, nullptr, WNOHANG) > 0) continue;
    errno = saved;
  };
  for (signal_function_t handler : {SIG_IGN, static_cast<signal_function_t>(collect)}) {
    signal_register(SIGCHLD, handler);
    const pid_t daemon = start("wan");
    signal_register(SIGCHLD, SIG_DFL);
    EXPECT_GT(daemon, 0);
    stop("wan");
  }
}

// FAIRLEAD_MANY_STARTS=2000 is the long form.
TEST_F(StartTest, of_two_starts_at_the_same_time_one_daemon_lives) {
  const char* text = getenv("FAIRLEAD_MANY_STARTS");
  const int many = text ? atoi(text) : 200;
  Syslog syslog;
  for (int round = 0; round < many && !HasFailure(); ++round) {
    Gate gate;
    pid_t callers[2];
    for (pid_t& caller : callers)
      if ((caller = fork()) == 0) {
        gate.wait();
        _exit(ServiceStart("wan", "test", "wait", nullptr));
      }
    gate.open();
    for (const pid_t caller : callers) EXPECT_EQ(0, end_of(caller));
    EXPECT_EQ(127, next_end()) << round;
    EXPECT_GT(pid("wan"), 0) << round;
    stop("wan");
  }
  EXPECT_NE("", syslog.wait_for("may the server already start"));
  const std::string log = syslog.text();
  int refusals = 0;
  const std::string line = "DaemonRegister(wan:test.wait) failed, may the server already start";
  for (size_t at = 0; (at = log.find(line, at)) != std::string::npos; ++at) ++refusals;
  EXPECT_EQ(many, refusals);
}

}  // namespace
