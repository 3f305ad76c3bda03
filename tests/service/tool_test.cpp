// The request tool itself as the program of a service, with a real adapter.
#include "service/service_support.h"
#include "support/syslog.h"

namespace {

using namespace fairlead_test;

class ToolTest : public ServiceTest {
 protected:
  void SetUp() override {
    ServiceTest::SetUp();
    use_program_in(TOOL_FOLDER);
    put_file("/prj/lab/waiter.adp", file_content(WAITER_ADAPTER), 0755);
  }

  // Starts the adapter and waits until it runs.
  static pid_t start_waiter(const char* text) {
    unlink("/tmp/running");
    EXPECT_EQ(0, ServiceStart("waiter", "lab/waiter", "run", "%s,", text));
    wait_until_it_runs();
    return pid("waiter");
  }

  static void wait_until_it_runs() {
    for (int looks = 0; looks < 2000 && !exists("/tmp/running"); ++looks) usleep(10000);
    EXPECT_TRUE(exists("/tmp/running"));
  }
};

TEST_F(ToolTest, the_tool_serves_the_call_and_holds_the_record) {
  const pid_t daemon = start_waiter("hello");
  EXPECT_EQ("hello\n", file_content("/tmp/running"));
  EXPECT_EQ(std::string("waiter\0lab/waiter.run[hello,]\0", 30),
            file_content("/proc/" + std::to_string(daemon) + "/cmdline"));
  EXPECT_EQ(R"({"status":"live","pid":")" + std::to_string(daemon) +
                R"(","adp":"lab/waiter","func":"run","parameter1":"hello"})",
            info("waiter"));
  stop("waiter");
}

TEST_F(ToolTest, a_killed_tool_is_brought_back_with_the_same_call) {
  kill_daemon(start_waiter("again"));
  unlink("/tmp/running");
  EXPECT_EQ(0, DaemonCheck());
  wait_until_it_runs();
  EXPECT_EQ("again\n", file_content("/tmp/running"));
  stop("waiter");
}

TEST_F(ToolTest, a_call_that_is_over_leaves_a_dead_service) {
  put_file("/etc/config/net/wan.cfg", "{}");
  EXPECT_EQ(0, ServiceStart("once", "net/wan", "nothing", nullptr));
  EXPECT_NE(0, next_end());
  EXPECT_EQ(R"({"status":"die","adp":"net/wan","func":"nothing"})", info("once"));
}

}  // namespace
