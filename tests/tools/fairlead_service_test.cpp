// The control tool's verbs for services, with a stand-in for the request tool that waits.
#include <csignal>
#include <sstream>

#include "service/service_support.h"
#include "support/eventually.h"
#include "tools/fairlead_program.h"

namespace {

using fairlead_test::Child;
using fairlead_test::Ended;
using fairlead_test::ServiceTest;

class ControlServiceTest : public fairlead_test::WithControlTool<ServiceTest> {};

TEST_F(ControlServiceTest, starts_shows_and_stops_a_service) {
  expect({"service", "list"}, 3, "", "there are no services");
  expect({"service", "start", "one", "test", "wait", "a,b"}, 0, "");
  const pid_t daemon = pid("one");
  const std::string number = std::to_string(daemon);
  expect({"service", "pid", "one"}, 0, number + "\n");
  expect({"service", "list"}, 0, "one\tlive\t" + number + "\ttest\twait\n");
  expect(
      {"service", "info", "one"}, 0,
      "status\tlive\npid\t" + number + "\nadp\ttest\nfunc\twait\nparameter1\ta\nparameter2\tb\n");
  expect({"service", "stop", "one"}, 0, "");
  EXPECT_EQ(-SIGTERM, end_of(daemon));
  expect({"service", "stop", "one"}, 3, "", "there is no service 'one'");
  expect({"service", "pid", "one"}, 3, "", "'one' is not running");
}

TEST_F(ControlServiceTest, shows_a_dead_service_and_brings_it_back) {
  const pid_t daemon = start("one");
  kill_daemon(daemon);
  expect({"service", "list"}, 0, "one\tdie\t-\ttest\twait\n");
  expect({"service", "check"}, 0, "");
  EXPECT_GT(pid("one"), 0);
  stop("one");
}

TEST_F(ControlServiceTest, resets_and_switches_off) {
  const pid_t first = start("one");
  expect({"service", "reset", "one"}, 0, "");
  EXPECT_EQ(-SIGTERM, end_of(first));
  const pid_t second = pid("one");
  EXPECT_GT(second, 0);
  expect({"service", "off", "one"}, 0, "");
  expect({"service", "info", "one"}, 3, "", "there is no service 'one', or it is off");
  EXPECT_EQ(second, pid("one"));
  expect({"service", "off", "two"}, 3, "", "there is no service 'two'");
  stop("one");
}

TEST_F(ControlServiceTest, starts_nothing_twice) {
  const pid_t daemon = start("one");
  expect({"service", "start", "one", "test", "wait"}, 1, "",
         "'one' runs already, as process " + std::to_string(daemon));
  EXPECT_EQ(daemon, pid("one"));
  stop("one");
}

TEST_F(ControlServiceTest, tells_of_a_service_that_cannot_start) {
  for (const char* interface : {"wait", "wa[it"})
    expect({"service", "start", "one", "te:st", interface}, 2, "",
           "'te:st." + std::string(interface) +
               "' does not name an object and its interface\ntry 'fairlead --help'");
  setenv("PATH", "/nowhere", 1);
  expect({"service", "start", "one", "test", "wait"}, 1, "",
         "there is no program 'he' in PATH to run it");
  EXPECT_FALSE(fairlead_test::exists(fairlead_test::record_path("one")));
}

TEST_F(ControlServiceTest, names_what_cannot_be_a_service) {
  expect({"service", "start", "a/b", "test", "wait"}, 1, "",
         "service 'a/b' cannot be started: Invalid argument");
}

// Reads what the watch has told until a text is there.
void wait_for_text(const std::string& path, const std::string& text, size_t times = 1) {
  EXPECT_TRUE(fairlead_test::eventually([&] {
    const std::string content = fairlead_test::file_content(path);
    size_t found = 0;
    for (size_t at = 0; (at = content.find(text, at)) != std::string::npos; ++at) ++found;
    return found >= times;
  })) << text;
}

class WatchTest : public ControlServiceTest {
 protected:
  static int watch() {
    close(1);
    if (open("/tmp/watch.out", O_WRONLY | O_CREAT | O_TRUNC, 0600) != 1) return 126;
    return exec({"service", "watch", "--interval", "1"});
  }
};

TEST_F(WatchTest, restarts_a_dead_service_and_says_so) {
  kill_daemon(start("one"));
  Child watch([] { return WatchTest::watch(); });
  wait_for_text("/tmp/watch.out", "one: was dead and is restarted");
  watch.send(SIGTERM);
  const Ended ended = watch.wait();
  EXPECT_EQ(0, ended.status);
  EXPECT_GT(pid("one"), 0);
  stop("one");
}

TEST_F(WatchTest, pauses_longer_and_longer_for_a_service_that_keeps_dying) {
  fairlead_test::put_record("bad", fairlead_test::record_of("test", "end"));
  Child watch([] { return WatchTest::watch(); });
  wait_for_text("/tmp/watch.out", "bad: was dead and is restarted", 3);
  watch.send(SIGINT);
  EXPECT_EQ(0, watch.wait().status);
  const std::string told = fairlead_test::file_content("/tmp/watch.out");
  EXPECT_EQ(0u, told.find("bad: was dead and is restarted, the next restart not before 1 s\n"
                          "bad: was dead and is restarted, the next restart not before 2 s\n"
                          "bad: was dead and is restarted, the next restart not before 4 s\n"))
      << told;
  while (next_end() == 0) continue;
  EXPECT_EQ(-1, ServiceStop("bad"));
}

// Nobody reads what it tells of the first restart, which holds it up until the signal has come.
TEST_F(WatchTest, ends_on_a_signal_that_comes_while_it_checks) {
  kill_daemon(start("one"));
  int ends[2];
  ASSERT_EQ(0, pipe2(ends, O_CLOEXEC | O_NONBLOCK));
  const std::string filling(4096, 'x');
  while (write(ends[1], filling.data(), filling.size()) > 0) continue;
  ASSERT_EQ(0, fcntl(ends[1], F_SETFL, 0));
  Child watch([&] {
    dup2(ends[1], 1);
    return exec({"service", "watch", "--interval", "3600"});
  });
  ASSERT_TRUE(fairlead_test::eventually([] { return pid("one") > 0; }));
  watch.send(SIGTERM);
  std::string told(filling);
  EXPECT_TRUE(fairlead_test::eventually([&] {
    while (read(ends[0], told.data(), told.size()) > 0) continue;
    siginfo_t end = {};
    return waitid(P_PID, static_cast<id_t>(watch.pid()), &end, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           end.si_pid == watch.pid();
  }));
  close(ends[0]);
  close(ends[1]);
  stop("one");
}

TEST_F(WatchTest, hands_the_parameters_on_as_a_check_does) {
  fairlead_test::put_record("told",
                            fairlead_test::record_of("test", "tell", "a,{\"b\":\"c\"},100%%"));
  Child watch([] { return WatchTest::watch(); });
  wait_for_text("/tmp/told", "leads its session");
  watch.send(SIGTERM);
  watch.wait();
  EXPECT_NE(
      std::string::npos,
      fairlead_test::file_content("/tmp/told").find(R"(argument test.tell[a,{"b":"c"},100%])"))
      << fairlead_test::file_content("/tmp/told");
  while (next_end() == 0) continue;
  EXPECT_EQ(-1, ServiceStop("told"));
}

}  // namespace
