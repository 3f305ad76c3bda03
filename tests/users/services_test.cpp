// Services of one user, at the hands of another.
#include "service/service_support.h"
#include "users/users_support.h"

namespace {

using namespace fairlead_test;

class ServicesTest : public UsersTest {
 protected:
  void SetUp() override {
    UsersTest::SetUp();
    // The tree of the build may be closed to other users.
    make_directories("/tmp/bin");
    std::filesystem::copy_file(STAND_IN_FOLDER "/he", "/tmp/bin/he");
    setenv("PATH", ("/tmp/bin:" + path_).c_str(), 1);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
  }

  void TearDown() override {
    if (!IsSkipped()) ServiceStop("net");
    for (const auto& [child, what] : take_census().children) {
      kill(child, SIGKILL);
      waitpid(child, nullptr, 0);
    }
    prctl(PR_SET_CHILD_SUBREAPER, 0);
    setenv("PATH", path_.c_str(), 1);
    UsersTest::TearDown();
  }

  // A daemon of root's, its record with these rights.
  static pid_t started(mode_t record) {
    EXPECT_EQ(0, ServiceStart("net", "test", "wait", nullptr));
    EXPECT_EQ(0, chmod(record_path("net").c_str(), record));
    chmod("/tmp/.var/service", 0755);
    return ServicePid("net");
  }

 private:
  std::string path_ = getenv("PATH");
};

TEST_F(ServicesTest, of_another_user_are_found_and_described) {
  const pid_t daemon = started(0644);
  ASSERT_GT(daemon, 0);
  const std::string told = spelled(ServiceInfo("net"));
  const auto ended = as_user([&] {
    EXPECT_EQ(daemon, ServicePid("net"));
    EXPECT_EQ(told, spelled(ServiceInfo("net")));
    EXPECT_EQ("{\"net\":" + told + "}", spelled(ServiceList()));
    return 0;
  });
  EXPECT_EQ(0, ended.status) << ended.err;
}

TEST_F(ServicesTest, whose_record_is_closed_to_the_user_stay_as_they_are) {
  const pid_t daemon = started(0644);
  const std::string record = file_content(record_path("net"));
  const auto ended = as_user([] {
    for (int (*call)(const char*, ...) : {ServiceStop, ServiceReset, ServiceOff}) {
      errno = 0;
      EXPECT_EQ(-1, call("net"));
      EXPECT_EQ(EACCES, errno);
    }
    EXPECT_EQ(0, DaemonCheck());
    return 0;
  });
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_EQ(daemon, ServicePid("net"));
  EXPECT_EQ(record, file_content(record_path("net")));
}

// The record may be emptied by whoever may write it; the daemon may not be signalled.
TEST_F(ServicesTest, that_may_not_be_signalled_live_on_and_are_found) {
  for (int (*call)(const char*, ...) : {ServiceReset, ServiceStop}) {
    const pid_t daemon = started(0666);
    const auto ended = as_user([call] {
      errno = 0;
      EXPECT_EQ(-1, call("net"));
      EXPECT_EQ(EPERM, errno);
      return 0;
    });
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(daemon, ServicePid("net"));
    EXPECT_EQ(0, ServiceStop("net"));
    EXPECT_EQ(-1, ServicePid("net"));
  }
}

// A daemon of the user's own has no record that it could hold, and runs without.
TEST_F(ServicesTest, of_the_users_own_leave_the_record_of_another_alone) {
  const pid_t daemon = started(0644);
  const std::string record = file_content(record_path("net"));
  const auto ended = as_user([] { return ServiceStart("net", "test", "end", nullptr); });
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ(daemon, ServicePid("net"));
  EXPECT_EQ(record, file_content(record_path("net")));
}

}  // namespace
