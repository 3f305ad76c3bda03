// Names: resolved, unknown, and given up in time, with everything as before.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include "fairlead/misc.h"
#include "network_support.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::Fault;
using misc_test::Blocked;
using misc_test::CallersAlarm;
using misc_test::CallersHandler;
using misc_test::Stopwatch;

// What the library gets for an answer; null: what the C library says.
hostent* (*stand_in)(const char* name) = nullptr;

class ResolveTest : public misc_test::NetworkTest {
 protected:
  void TearDown() override {
    stand_in = nullptr;
    NetworkTest::TearDown();
  }

  // A machine that knows two names by itself, and asks a name server that never answers for others
  // when `dns` is set.
  void with_names(bool dns, std::function<void()> checks) {
    with_network("", [dns, &checks] {
      ASSERT_TRUE(fairlead_test::hide("/etc"));
      fairlead_test::put_file("/etc/hosts",
                              "192.0.2.7 router.test router\n192.0.2.255 second.test\n");
      fairlead_test::put_file("/etc/nsswitch.conf", dns ? "hosts: files dns\n" : "hosts: files\n");
      fairlead_test::put_file("/etc/resolv.conf", "nameserver 127.0.0.1\noptions timeout:30\n");
      const int silent_server = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
      sockaddr_in address = {};
      address.sin_family = AF_INET;
      address.sin_port = htons(53);
      address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
      ASSERT_EQ(0, bind(silent_server, reinterpret_cast<sockaddr*>(&address), sizeof address));
      checks();
      close(silent_server);
    });
  }

  char buffer_[64] = "untouched";
};

hostent* wait_for_ever(const char*) {
  for (;;) pause();
}

hostent* answer_with(int family, int length, const void* address) {
  static char bytes[16];
  static char* list[2];
  static hostent host;
  memcpy(bytes, address, static_cast<size_t>(length));
  list[0] = length > 0 ? bytes : nullptr;
  host.h_addrtype = family;
  host.h_length = length;
  host.h_addr_list = list;
  return &host;
}

TEST_F(ResolveTest, a_dotted_address_is_its_own_answer) {
  stand_in = wait_for_ever;
  EXPECT_EQ(buffer_, dns2ipstring("192.0.2.1", buffer_, sizeof buffer_, 0));
  EXPECT_STREQ("192.0.2.1", buffer_);
}

TEST_F(ResolveTest, the_buffer_is_cleared_and_the_answer_cut) {
  memset(buffer_, 'x', sizeof buffer_);
  EXPECT_STREQ("192.0", dns2ipstring("192.0.2.1", buffer_, 6, 0));
  EXPECT_EQ('x', buffer_[6]);
  EXPECT_STREQ("192.0.2.1", dns2ipstring("192.0.2.1", buffer_, 20, 0));
  EXPECT_EQ(std::string(11, '\0') + "x", std::string(buffer_ + 9, 12));
  EXPECT_STREQ("", dns2ipstring("192.0.2.1", buffer_, 1, 0));
}

TEST_F(ResolveTest, without_a_buffer_the_answer_is_in_one_of_the_process) {
  char* first = dns2ipstring("255.255.255.255", nullptr, 3, 0);
  EXPECT_STREQ("255.255.255.255", first);
  EXPECT_EQ(first, dns2ipstring("10.0.0.1", nullptr, 0, 0));
  EXPECT_EQ(std::string("10.0.0.1").append(12, '\0'), std::string(first, 20));
  EXPECT_EQ(first, dns2ipstring("10.0.0.2", buffer_, 0, 0)) << "no room in the caller's";
}

TEST_F(ResolveTest, resolves_names) {
  with_names(false, [this] {
    EXPECT_EQ(buffer_, dns2ipstring("router.test", buffer_, sizeof buffer_, 0));
    EXPECT_STREQ("192.0.2.7", buffer_);
    EXPECT_STREQ("192.0.2.7", dns2ipstring("router", buffer_, sizeof buffer_, 5));
    EXPECT_STREQ("192.0.2.255", dns2ipstring("second.test", nullptr, 0, 5));
    EXPECT_STREQ("192.0", dns2ipstring("router", buffer_, 6, 5));
  });
}

TEST_F(ResolveTest, an_unknown_name_changes_nothing) {
  with_names(false, [this] {
    for (const int seconds : {0, 5}) {
      errno = 0;
      EXPECT_EQ(nullptr, dns2ipstring("nowhere.test", buffer_, sizeof buffer_, seconds));
      EXPECT_EQ(HOST_NOT_FOUND, h_errno);
      EXPECT_EQ(0, errno);
      EXPECT_STREQ("untouched", buffer_);
    }
  });
}

TEST_F(ResolveTest, a_silent_name_server_ends_the_call_after_its_seconds) {
  with_names(true, [this] {
    const Stopwatch watch;
    errno = 0;
    EXPECT_EQ(nullptr, dns2ipstring("nowhere.test", buffer_, sizeof buffer_, 1));
    EXPECT_EQ(TRY_AGAIN, h_errno);
    EXPECT_EQ(0, errno);
    EXPECT_GE(watch.seconds(), 0.99);
    EXPECT_LT(watch.seconds(), 20);
    EXPECT_STREQ("untouched", buffer_);
  });
}

TEST_F(ResolveTest, names_resolve_after_one_that_did_not) {
  with_names(true, [this] {
    EXPECT_EQ(nullptr, dns2ipstring("nowhere.test", buffer_, sizeof buffer_, 1));
    EXPECT_STREQ("192.0.2.7", dns2ipstring("router", buffer_, sizeof buffer_, 20));
    const hostent* host = gethostbyname("second.test");
    ASSERT_NE(nullptr, host) << "the resolver of this process works, too";
  });
}

TEST_F(ResolveTest, handler_mask_and_alarm_are_as_before) {
  stand_in = wait_for_ever;
  const CallersHandler handler(SIGALRM);
  const CallersAlarm alarm({{0, 0}, {100, 0}});
  const Blocked blocked({SIGALRM, SIGUSR1});
  EXPECT_EQ(nullptr, dns2ipstring("name", buffer_, sizeof buffer_, 1));
  EXPECT_TRUE(handler.in_force());
  EXPECT_TRUE(misc_test::blocked_now(SIGALRM));
  EXPECT_TRUE(misc_test::blocked_now(SIGUSR1));
  EXPECT_FALSE(misc_test::pending_now(SIGALRM));
  EXPECT_EQ(0, CallersHandler::calls);
  EXPECT_GT(CallersAlarm::left().it_value.tv_sec, 90);
  EXPECT_LT(CallersAlarm::left().it_value.tv_sec, 100);
}

TEST_F(ResolveTest, an_alarm_of_the_caller_that_runs_out_meanwhile_reaches_its_handler) {
  stand_in = wait_for_ever;
  const CallersHandler handler(SIGALRM);
  const CallersAlarm alarm({{0, 0}, {0, 300000}});
  const Stopwatch watch;
  EXPECT_EQ(nullptr, dns2ipstring("name", buffer_, sizeof buffer_, 1));
  EXPECT_GE(watch.seconds(), 0.99) << "it does not end the wait";
  EXPECT_TRUE(misc_test::becomes(CallersHandler::calls, 1));
}

TEST_F(ResolveTest, without_a_limit_the_callers_alarm_ends_the_wait) {
  stand_in = wait_for_ever;
  const CallersHandler handler(SIGALRM);
  const CallersAlarm alarm({{0, 0}, {0, 100000}});
  EXPECT_EQ(nullptr, dns2ipstring("name", buffer_, sizeof buffer_, 0));
  EXPECT_EQ(0, CallersHandler::calls);
  EXPECT_TRUE(handler.in_force());
}

TEST_F(ResolveTest, an_alarm_that_waits_at_the_mask_does_not_end_the_wait) {
  with_names(false, [this] {
    const CallersHandler handler(SIGALRM);
    const Blocked blocked({SIGALRM});
    raise(SIGALRM);
    EXPECT_STREQ("192.0.2.7", dns2ipstring("router", buffer_, sizeof buffer_, 20));
    EXPECT_TRUE(misc_test::pending_now(SIGALRM));
    struct sigaction ignore = {}, former;
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGALRM, &ignore, &former);  // drops it
    sigaction(SIGALRM, &former, nullptr);
  });
}

TEST_F(ResolveTest, other_handlers_of_the_caller_run_meanwhile) {
  stand_in = wait_for_ever;
  const CallersHandler handler(SIGUSR1);
  const pid_t caller = getpid();
  fairlead_test::Child sender([caller] {
    for (;;) {
      usleep(10000);
      kill(caller, SIGUSR1);
    }
    return 0;
  });
  EXPECT_EQ(nullptr, dns2ipstring("name", buffer_, sizeof buffer_, 1));
  EXPECT_GT(CallersHandler::calls, 0);
}

pid_t reaped = 0;

TEST_F(ResolveTest, a_handler_that_reaps_does_not_get_the_resolver) {
  reaped = 0;
  const misc_test::PlainHandler handler(SIGCHLD, [](int) {
    for (pid_t child; (child = waitpid(-1, nullptr, WNOHANG)) > 0;) reaped = child;
  });
  stand_in = [](const char*) { return answer_with(AF_INET, 4, "\x0a\x00\x00\x01"); };
  EXPECT_STREQ("10.0.0.1", dns2ipstring("name", buffer_, sizeof buffer_, 5));
  EXPECT_EQ(0, reaped);
}

TEST_F(ResolveTest, works_where_children_are_not_waited_for) {
  const misc_test::PlainHandler handler(SIGCHLD, SIG_IGN);
  stand_in = [](const char*) { return answer_with(AF_INET, 4, "\x0a\x00\x00\x01"); };
  Fault kills(Call::kKill, {.nth = 0});
  EXPECT_STREQ("10.0.0.1", dns2ipstring("name", buffer_, sizeof buffer_, 5));
  stand_in = [](const char*) -> hostent* { _exit(1); };
  EXPECT_EQ(nullptr, dns2ipstring("name", buffer_, sizeof buffer_, 5));
  EXPECT_EQ(0, kills.calls()) << "the resolver's number may be another one's by now";
}

TEST_F(ResolveTest, no_handler_of_the_caller_runs_in_the_resolver) {
  stand_in = [](const char*) -> hostent* {
    raise(SIGTERM);
    return answer_with(AF_INET, 4, "\x0a\x00\x00\x01");
  };
  const misc_test::PlainHandler handler(SIGTERM, [](int) { _exit(1); });
  EXPECT_STREQ("10.0.0.1", dns2ipstring("name", buffer_, sizeof buffer_, 5));
}

TEST_F(ResolveTest, the_answer_may_be_of_another_family) {
  stand_in = [](const char*) {
    return answer_with(AF_INET6, 16, "\x20\x01\x0d\xb8\0\0\0\0\0\0\0\0\0\0\0\x01");
  };
  EXPECT_STREQ("2001:db8::1", dns2ipstring("name", buffer_, sizeof buffer_, 5));
}

TEST_F(ResolveTest, an_answer_without_an_address_is_none) {
  stand_in = [](const char*) { return answer_with(AF_INET, 0, ""); };
  EXPECT_EQ(nullptr, dns2ipstring("name", buffer_, sizeof buffer_, 5));
  EXPECT_EQ(NO_DATA, h_errno);
  EXPECT_STREQ("untouched", buffer_);
}

TEST_F(ResolveTest, a_resolver_that_crashes_gives_no_answer) {
  stand_in = [](const char*) -> hostent* { _exit(9); };
  EXPECT_EQ(nullptr, dns2ipstring("name", buffer_, sizeof buffer_, 5));
  EXPECT_EQ(TRY_AGAIN, h_errno);
}

TEST_F(ResolveTest, the_resolver_does_not_outlive_its_caller) {
  int alive[2];
  ASSERT_EQ(0, pipe2(alive, O_CLOEXEC));
  {
    fairlead_test::Gate asked;
    static fairlead_test::Gate* gate;
    gate = &asked;
    stand_in = [](const char* name) {
      gate->open();
      return wait_for_ever(name);
    };
    fairlead_test::Child caller([] {
      dns2ipstring("name", nullptr, 0, 60);
      return 0;
    });
    ASSERT_TRUE(asked.wait());
    close(alive[1]);
  }  // the caller is killed
  char byte;
  EXPECT_EQ(0, read(alive[0], &byte, 1)) << "returns when nobody has the other end any more";
  close(alive[0]);
}

TEST_F(ResolveTest, names_that_nobody_has_are_asked_for_as_they_are) {
  with_names(false, [this] {
    for (const std::string& name :
         {std::string("%s%n"), std::string("a b"), std::string("$(reboot)"),
          std::string("router\n"), std::string(255, 'x'), std::string(4096, 'x'),
          std::string("1.2.3.4.5")})
      EXPECT_EQ(nullptr, dns2ipstring(name.c_str(), buffer_, sizeof buffer_, 20)) << name;
  });
}

TEST_F(ResolveTest, a_missing_name_is_refused) {
  for (const char* name : {static_cast<const char*>(nullptr), ""}) {
    errno = 0;
    EXPECT_EQ(nullptr, dns2ipstring(name, buffer_, sizeof buffer_, 1));
    EXPECT_EQ(EINVAL, errno);
  }
  EXPECT_STREQ("untouched", buffer_);
}

TEST_F(ResolveTest, a_resolver_that_can_not_be_started_is_told) {
  const CallersAlarm alarm({{0, 0}, {100, 0}});
  for (const auto& [call, error] :
       {std::pair(Call::kPipe, EMFILE), std::pair(Call::kFork, EAGAIN)}) {
    Fault fault(call, {.error = error});
    EXPECT_EQ(nullptr, dns2ipstring("name", buffer_, sizeof buffer_, 1));
    EXPECT_EQ(error, errno);
    EXPECT_GT(CallersAlarm::left().it_value.tv_sec, 90);
  }
}

}  // namespace

extern "C" hostent* gethostbyname(const char* name) {
  static const auto real =
      reinterpret_cast<hostent* (*)(const char*)>(dlsym(RTLD_NEXT, "gethostbyname"));
  return stand_in ? stand_in(name) : real(name);
}
