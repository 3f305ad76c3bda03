// A user who may have no more processes.
#include <sys/resource.h>
#include <sys/wait.h>

#include "users/users_support.h"

namespace {

using namespace fairlead_test;

constexpr int kNotHere = 77;

class ProcessLimitTest : public UsersTest {
 protected:
  // Where the kernel binds this user by the limit.
  static bool forbid_children() {
    const rlimit none = {1, 1};
    if (setrlimit(RLIMIT_NPROC, &none) != 0) return false;
    const pid_t child = fork();
    if (child == 0) _exit(0);
    if (child > 0) waitpid(child, nullptr, 0);
    return child < 0 && errno == EAGAIN;
  }
};

TEST_F(ProcessLimitTest, each_change_is_made_or_refused_and_each_answer_whole_or_none) {
  for (const Operation& operation : operations()) {
    const Expected expected(operation);
    empty_root();
    operation.arrange();
    change_all(0644, 0755, kUser, kUser);
    const auto ended = as_user([&] {
      if (!forbid_children()) return kNotHere;
      const Census before = take_census();
      const bool done = operation.act() == 1;
      EXPECT_TRUE(done || errno == EAGAIN) << operation.name << ": " << strerror(errno);
      std::istringstream left(operation.asks_child ? "" : difference(before, take_census()));
      for (std::string line; std::getline(left, line);)
        EXPECT_NE(std::string::npos, line.find("/tmp/.var/gvalue/")) << line;
      return done ? kDone : kRefused;
    });
    if (ended.status == kNotHere) GTEST_SKIP() << "processes are not limited here";
    EXPECT_TRUE(ended.status == kDone || ended.status == kRefused) << operation.name << ended.err;
    const std::string found = state_of(operation);
    EXPECT_EQ(ended.status == kDone ? expected.after : expected.before, found) << operation.name;
  }
}

TEST_F(ProcessLimitTest, a_service_is_not_started_and_the_caller_told) {
  change_all(0644, 0755, kUser, kUser);
  const auto ended = as_user([] {
    if (!forbid_children()) return kNotHere;
    errno = 0;
    EXPECT_EQ(-1, ServiceStart("net", "test", "wait", nullptr));
    EXPECT_EQ(EAGAIN, errno);
    return 0;
  });
  if (ended.status == kNotHere) GTEST_SKIP() << "processes are not limited here";
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_FALSE(exists("/tmp/.var/service/net.spid"));
}

}  // namespace
