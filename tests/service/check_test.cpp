// Checks: dead services come back, and only those.
#include <algorithm>
#include <map>

#include "service/service_support.h"
#include "support/syslog.h"

namespace {

using namespace fairlead_test;

class CheckTest : public ServiceTest {
 protected:
  // The identifier that a restart gives the program.
  static std::string restarted_with(const std::string& stored) {
    put_record("teller", record_of("test", "tell", stored));
    EXPECT_EQ(0, DaemonCheck());
    EXPECT_EQ(0, next_end());
    const std::string told = file_content("/tmp/told");
    const size_t at = told.find("argument test.tell");
    return told.substr(at + 9, told.find("\nleads") - at - 9);
  }

  static bool no_children() { return waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD; }
};

TEST_F(CheckTest, a_killed_daemon_is_seen_dead_and_brought_back) {
  Syslog syslog;
  const pid_t first = start("wan");
  kill_daemon(first);
  EXPECT_EQ(R"({"status":"die","adp":"test","func":"wait"})", info("wan"));
  EXPECT_EQ(-1, pid("wan"));
  EXPECT_EQ(0, DaemonCheck());
  EXPECT_GT(pid("wan"), 0);
  EXPECT_NE(first, pid("wan"));
  EXPECT_NE("", syslog.wait_for("daemon.debug test: server( wan ) abnormal terminate\n"));
  stop("wan");
}

TEST_F(CheckTest, a_living_daemon_is_left_alone) {
  const pid_t daemon = start("wan");
  EXPECT_EQ(0, DaemonCheck());
  EXPECT_EQ(daemon, pid("wan"));
  stop("wan");
  EXPECT_TRUE(no_children());
}

TEST_F(CheckTest, parameters_come_back_with_their_percent_signs_interpreted_again) {
  EXPECT_EQ("test.tell", restarted_with(""));
  EXPECT_EQ("test.tell[ppp0,30]", restarted_with("ppp0,30"));
  EXPECT_EQ("test.tell[50%]", restarted_with("50%%"));
  EXPECT_EQ("test.tell[50%]", restarted_with("50%"));
  EXPECT_EQ("test.tell[%s%n%d %p%%5c]", restarted_with("%s%n%d %p%%%5c"));
}

TEST_F(CheckTest, a_service_without_an_interface_is_not_started) {
  Syslog syslog;
  put_record("wan", record_of("test", ""));
  EXPECT_EQ(0, DaemonCheck());
  EXPECT_EQ(1u, take_census().children.size());  // nothing but the syslog daemon
  EXPECT_NE("", syslog.wait_for("server( wan ) abnormal terminate"));
  EXPECT_EQ(R"({"status":"die","adp":"test"})", info("wan"));
}

TEST_F(CheckTest, a_service_that_is_off_or_stopped_is_not_started) {
  const pid_t daemon = start("wan");
  EXPECT_EQ(0, ServiceOff("wan"));
  kill_daemon(daemon);
  start("lan");
  stop("lan");
  EXPECT_EQ(0, DaemonCheck());
  EXPECT_TRUE(no_children());
}

TEST_F(CheckTest, only_files_that_end_in_the_extension_are_records) {
  for (const char* file : {".wan.spid", "wan.spid.old", "wan.spid.spid", "wan.spi", "wanspid"})
    put_file(std::string("/tmp/.var/service/") + file, record_of("test", "end"));
  EXPECT_EQ(0, DaemonCheck());
  EXPECT_TRUE(no_children());
  put_record("wan", record_of("test", "end"));
  EXPECT_EQ(0, DaemonCheck());
  EXPECT_EQ(0, next_end());
  EXPECT_TRUE(no_children());
}

TEST_F(CheckTest, services_come_back_in_alphabetical_order) {
  Syslog syslog;
  for (const char* name : {"c", "a", "b", "B", "a-b"}) put_record(name, record_of("test", "end"));
  EXPECT_EQ(0, DaemonCheck());
  EXPECT_NE("", syslog.wait_for("server( c ) abnormal"));
  std::string order;
  const std::string log = syslog.text();
  for (size_t at = 0; (at = log.find("server( ", at)) != std::string::npos; at += 8)
    order += log.substr(at + 8, log.find(" )", at) - at - 8) + " ";
  EXPECT_EQ("B a-b a b c ", order);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(0, next_end());
}

TEST_F(CheckTest, a_failed_start_does_not_keep_the_others_from_theirs) {
  put_record("a", record_of("test", ""));
  put_record("b", record_of("test", "end"));
  EXPECT_EQ(0, DaemonCheck());
  EXPECT_EQ(0, next_end());
}

TEST_F(CheckTest, a_folder_that_cannot_be_read_fails_the_check) {
  remove_tree("/tmp/.var");
  EXPECT_EQ(-1, DaemonCheck());
  EXPECT_EQ(ENOENT, errno);
}

TEST_F(CheckTest, the_folder_is_made_when_it_is_missing) {
  put_file("/tmp/.var/service", "in the way");
  EXPECT_EQ(0, DaemonCheck());
  EXPECT_TRUE(exists("/tmp/.var/service/."));
}

TEST_F(CheckTest, of_a_hundred_services_those_that_were_killed_come_back) {
  std::map<std::string, pid_t> daemons;
  for (int i = 0; i < 100; ++i) {
    const std::string name = "service-" + std::to_string(i);
    EXPECT_EQ(0, ServiceStart(name.c_str(), "test", "wait", "%d", i));
    daemons[name] = pid(name);
  }
  std::set<pid_t> pids;
  for (const auto& [name, daemon] : daemons) pids.insert(daemon);
  EXPECT_EQ(100u, pids.size());
  EXPECT_GT(*pids.begin(), 0);

  int number = 0;
  for (auto& [name, daemon] : daemons)
    if (++number % 2 == 0) {
      kill_daemon(daemon);
      daemon = 0;
    }
  EXPECT_EQ(0, DaemonCheck());
  for (auto& [name, daemon] : daemons) {
    const pid_t now = pid(name);
    EXPECT_GT(now, 0) << name;
    EXPECT_TRUE(daemon ? now == daemon : pids.count(now) == 0) << name;
    daemon = now;
  }
  vessel_t* list = ServiceList();
  EXPECT_EQ(100, VesselCount(list));
  TalkFree(list);

  for (const auto& [name, daemon] : daemons) stop(name);
  EXPECT_TRUE(no_children());
  EXPECT_EQ("{}", spelled(ServiceList()));
  EXPECT_EQ(0, rmdir("/tmp/.var/service"));
}

}  // namespace
