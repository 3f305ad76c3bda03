// The syslog daemon: real messages arrive with facility, priority and identity.
#include "support/syslog.h"

#include <syslog.h>

#include "support/device_test.h"

namespace {

using fairlead_test::Syslog;

class SyslogTest : public fairlead_test::DeviceTest {};

TEST_F(SyslogTest, messages_arrive) {
  Syslog daemon;
  openlog("tester", 0, LOG_DAEMON);
  syslog(LOG_WARNING, "something happened");
  const std::string line = daemon.wait_for("something happened");
  EXPECT_NE(std::string::npos, line.find(" daemon.warn tester: something happened")) << line;
}

TEST_F(SyslogTest, a_line_that_never_comes_is_empty) {
  Syslog daemon;
  EXPECT_EQ("", daemon.wait_for("never written", 10));
}

TEST_F(SyslogTest, lines_are_told_apart) {
  Syslog daemon;
  syslog(LOG_USER | LOG_INFO, "first");
  syslog(LOG_USER | LOG_INFO, "second");
  EXPECT_EQ(std::string::npos, daemon.wait_for("second").find("first"));
  EXPECT_NE(std::string::npos, daemon.text().find("user.info"));
}

TEST_F(SyslogTest, a_second_daemon_starts_empty) {
  {
    Syslog daemon;
    syslog(LOG_USER | LOG_INFO, "old message");
    EXPECT_NE("", daemon.wait_for("old message"));
  }
  Syslog daemon;
  syslog(LOG_USER | LOG_INFO, "new message");
  EXPECT_NE("", daemon.wait_for("new message"));
  EXPECT_EQ(std::string::npos, daemon.text().find("old message"));
}

}  // namespace
