// Options of sockets, read back from the kernel.
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "fairlead/misc.h"
#include "misc_support.h"

namespace {

class SocketOptionTest : public fairlead_test::DeviceTest {
 protected:
  void TearDown() override {
    close(tcp_);
    close(local_);
    DeviceTest::TearDown();
  }

  static int value(int fd, int level, int option) {
    int value = -1;
    socklen_t size = sizeof value;
    EXPECT_EQ(0, getsockopt(fd, level, option, &value, &size));
    return value;
  }

  void SetUp() override {
    DeviceTest::SetUp();
    tcp_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    local_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  }

  int tcp_ = -1, local_ = -1;
};

TEST_F(SocketOptionTest, reuse_sets_the_option) {
  ASSERT_EQ(0, value(tcp_, SOL_SOCKET, SO_REUSEADDR));
  EXPECT_EQ(1, socket_reuse(tcp_));
  EXPECT_EQ(1, value(tcp_, SOL_SOCKET, SO_REUSEADDR));
  EXPECT_EQ(1, socket_reuse(tcp_));
  EXPECT_EQ(1, value(tcp_, SOL_SOCKET, SO_REUSEADDR));
}

TEST_F(SocketOptionTest, keepalive_sets_all_four_options) {
  EXPECT_EQ(1, socket_keepalive(tcp_, 45));
  EXPECT_EQ(1, value(tcp_, SOL_SOCKET, SO_KEEPALIVE));
  EXPECT_EQ(300, value(tcp_, IPPROTO_TCP, TCP_KEEPIDLE));
  EXPECT_EQ(45, value(tcp_, IPPROTO_TCP, TCP_KEEPINTVL));
  EXPECT_EQ(8, value(tcp_, IPPROTO_TCP, TCP_KEEPCNT));
}

TEST_F(SocketOptionTest, keepalive_with_0_or_below_switches_it_off) {
  for (const int seconds : {0, -1}) {
    ASSERT_EQ(1, socket_keepalive(tcp_, 45));
    EXPECT_EQ(1, socket_keepalive(tcp_, seconds));
    EXPECT_EQ(0, value(tcp_, SOL_SOCKET, SO_KEEPALIVE));
    EXPECT_EQ(45, value(tcp_, IPPROTO_TCP, TCP_KEEPINTVL)) << "stays";
  }
}

TEST_F(SocketOptionTest, keepalive_with_a_refused_interval_is_not_switched_on) {
  EXPECT_EQ(0, socket_keepalive(tcp_, 32768));
  EXPECT_EQ(EINVAL, errno);
  EXPECT_EQ(0, value(tcp_, SOL_SOCKET, SO_KEEPALIVE));
  EXPECT_EQ(1, socket_keepalive(tcp_, 32767));
}

TEST_F(SocketOptionTest, keepalive_needs_a_tcp_socket_to_be_switched_on) {
  EXPECT_EQ(0, socket_keepalive(local_, 45));
  EXPECT_EQ(EOPNOTSUPP, errno);
  EXPECT_EQ(1, socket_keepalive(local_, 0));
}

TEST_F(SocketOptionTest, what_is_no_socket_is_refused) {
  EXPECT_EQ(0, socket_reuse(-1));
  EXPECT_EQ(EBADF, errno);
  EXPECT_EQ(0, socket_keepalive(-1, 45));
  EXPECT_EQ(EBADF, errno);
  EXPECT_EQ(0, socket_keepalive(-1, 0));
  EXPECT_EQ(EBADF, errno);
  EXPECT_EQ(0, socket_reuse(STDOUT_FILENO));
  EXPECT_EQ(ENOTSOCK, errno);
}

}  // namespace
