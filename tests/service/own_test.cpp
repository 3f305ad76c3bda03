// A daemon that looks at itself, ends itself, or leaves children: its lock stays what it is.
#include "service/service_support.h"
#include "support/child.h"

namespace {

using namespace fairlead_test;

class OwnTest : public ServiceTest {
 protected:
  void SetUp() override {
    ServiceTest::SetUp();
    make_directories("/tmp/.var/service");
  }

  static int enter() { return DaemonRegister(record_path("wan").c_str(), "test", "wait", nullptr); }

  static void count(int) { counted_ = counted_ + 1; }
  static inline volatile sig_atomic_t counted_ = 0;
};

TEST_F(OwnTest, a_daemon_sees_itself_alive_and_keeps_its_lock) {
  Gate looked;
  Child daemon([&] {
    enter();
    const std::string self = std::to_string(getpid());
    EXPECT_EQ(getpid(), pid("wan"));
    EXPECT_EQ(R"({"status":"live","pid":")" + self + R"(","adp":"test","func":"wait"})",
              info("wan"));
    EXPECT_NE(std::string::npos, spelled(ServiceList()).find(self));
    EXPECT_EQ(0, DaemonCheck());
    looked.open();
    return pause();
  });
  ASSERT_TRUE(looked.wait());
  EXPECT_EQ(daemon.pid(), pid("wan"));
}

TEST_F(OwnTest, a_daemon_that_starts_itself_again_stays_the_only_one) {
  Gate started;
  Child daemon([&] {
    enter();
    EXPECT_EQ(0, ServiceStart("wan", "test", "wait", nullptr));
    started.open();
    return pause();
  });
  ASSERT_TRUE(started.wait());
  EXPECT_EQ(127, next_end());
  EXPECT_EQ(daemon.pid(), pid("wan"));
}

TEST_F(OwnTest, a_daemon_that_switches_itself_off_keeps_its_lock) {
  Gate off;
  Child daemon([&] {
    enter();
    EXPECT_EQ(0, ServiceOff("wan"));
    off.open();
    return pause();
  });
  ASSERT_TRUE(off.wait());
  EXPECT_EQ(daemon.pid(), pid("wan"));
}

TEST_F(OwnTest, a_daemon_that_stops_itself_gets_one_signal_and_its_record_is_gone) {
  const Ended ended = run_child([] {
    signal_register(SIGTERM, count);
    enter();
    EXPECT_EQ(0, ServiceStop("wan"));
    EXPECT_FALSE(exists(record_path("wan")));
    return int{counted_};
  });
  EXPECT_EQ(1, ended.status);
}

TEST_F(OwnTest, a_daemon_that_resets_itself_is_brought_back_by_the_next_check) {
  const Ended ended = run_child([] {
    enter();
    return ServiceReset("wan");
  });
  EXPECT_EQ(SIGTERM, ended.signal);
  EXPECT_EQ(0, DaemonCheck());
  stop("wan");
}

TEST_F(OwnTest, a_child_of_a_daemon_is_not_the_daemon) {
  Gate looked;
  Child daemon([&] {
    enter();
    run_child([] {
      EXPECT_EQ(getppid(), pid("wan"));
      EXPECT_NE("null", info("wan"));
    });
    looked.open();
    return pause();
  });
  ASSERT_TRUE(looked.wait());
  EXPECT_EQ(daemon.pid(), pid("wan"));
}

// It has inherited the record's descriptor, which the new daemon must not have: closed by the start
// of the program, it would release the lock.
TEST_F(OwnTest, a_child_that_outlives_its_daemon_can_bring_it_back) {
  Gate born, gone, checked;
  Child daemon([&] {
    enter();
    if (fork() != 0) return pause();
    born.open();
    gone.wait();
    DaemonCheck();
    checked.open();
    _exit(0);
  });
  ASSERT_TRUE(born.wait());
  EXPECT_EQ(daemon.pid(), pid("wan"));
  daemon.send(SIGKILL);
  daemon.wait();
  EXPECT_EQ(-1, pid("wan"));
  gone.open();
  ASSERT_TRUE(checked.wait());
  EXPECT_EQ(0, next_end());
  EXPECT_GT(pid("wan"), 0);
  stop("wan");
}

}  // namespace
