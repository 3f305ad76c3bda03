// Many processes on one service.
#include "support/stress.h"
#include "faults_support.h"

namespace {

using fairlead_test::Crowd;
using fairlead_test::settled;

class ServiceStressTest : public fairlead_test::ServiceFaultsTest {};

TEST_F(ServiceStressTest, whoever_starts_and_stops_a_service_leaves_one_daemon_or_none) {
  Crowd crowd;
  crowd.add(4, [](int, int) { EXPECT_EQ(0, ServiceStart("net", "test", "wait", nullptr)); });
  crowd.add(2, [](int, int) {
    EXPECT_TRUE(ServiceStop("net") == 0 || errno == ENOENT || errno == ESRCH) << errno;
  });
  crowd.add(1, [](int, int) {
    EXPECT_TRUE(ServiceReset("net") == 0 || errno == ENOENT || errno == ESRCH) << errno;
  });
  crowd.add(1, [](int, int) {
    // Before the first record there is no folder of them.
    EXPECT_TRUE(DaemonCheck() == 0 || errno == ENOENT) << errno;
  });
  crowd.add(1, [](int, int) { TalkFree(ServiceInfo("net")); });
  crowd.wait();
  EXPECT_LE(settled().size(), 1u);
  const bool known = pid("net") > 0;
  EXPECT_EQ(settled().size(), known ? 1u : 0u) << "a daemon that nobody finds";
  expect_one_daemon_or_none("after all");
}

// Each of them is started by one process only, and none is lost.
TEST_F(ServiceStressTest, services_of_many_processes_do_not_meet) {
  Crowd crowd;
  crowd.add(6, [](int who, int) {
    const std::string service = "net" + std::to_string(who);
    ASSERT_EQ(0, ServiceStart(service.c_str(), "test", "wait", nullptr));
    EXPECT_GT(pid(service), 0);
    EXPECT_EQ(0, ServiceStop("%s", service.c_str()));
    EXPECT_EQ(-1, pid(service));
  });
  crowd.add(1, [](int, int) { DaemonCheck(); });
  crowd.wait();
  // A check may have seen a service between its daemon's end and its record's.
  for (int who = 0; who < 6; ++who) ServiceStop("net%d", who);
  EXPECT_TRUE(settled().empty());
}

}  // namespace
