// Connections: made, refused, and given up in time.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include "fairlead/misc.h"
#include "network_support.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::Fault;
using misc_test::Stopwatch;

// A network with a host 10.0.0.2 that never answers, and one that nobody knows, 10.0.0.3.
constexpr const char* kSilentHost =
    "link add wan0 type veth peer name wan1\n"
    "address add 10.0.0.1/24 dev wan0\n"
    "link set wan0 up\n"
    "link set wan1 up\n"
    "neighbour add 10.0.0.2 lladdr 02:00:00:00:00:02 dev wan0\n";

class ConnectTest : public misc_test::NetworkTest {
 protected:
  void TearDown() override {
    if (listener_ >= 0) close(listener_);
    NetworkTest::TearDown();
  }

  // A port of this machine that is listened to, or that was closed again.
  int listening_port() {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(0, bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address));
    EXPECT_EQ(0, listen(listener_, 8));
    EXPECT_EQ(0, getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length));
    return ntohs(address.sin_port);
  }
  int closed_port() {
    const int port = listening_port();
    close(listener_);
    listener_ = -1;
    return port;
  }

  int listener_ = -1;
};

TEST_F(ConnectTest, gives_a_connected_socket_that_does_not_wait) {
  const int fd = tcp_socket_connect("127.0.0.1", listening_port(), 10);
  ASSERT_GE(fd, 0);
  EXPECT_TRUE(fcntl(fd, F_GETFL) & O_NONBLOCK);
  EXPECT_TRUE(fcntl(fd, F_GETFD) & FD_CLOEXEC);
  char byte;
  EXPECT_EQ(-1, read(fd, &byte, 1));
  EXPECT_EQ(EAGAIN, errno);
  const int other_end = accept(listener_, nullptr, nullptr);
  EXPECT_EQ(1, write(other_end, "x", 1));
  EXPECT_EQ(1, fd_block(fd));
  EXPECT_EQ(1, read(fd, &byte, 1));
  close(other_end);
  close(fd);
}

TEST_F(ConnectTest, takes_the_low_16_bits_for_the_port) {
  const int fd = tcp_socket_connect("127.0.0.1", 0x30000 | listening_port(), 10);
  EXPECT_GE(fd, 0);
  close(fd);
}

TEST_F(ConnectTest, takes_text_that_is_no_address_for_this_machine) {
  const int port = listening_port();
  for (const char* text : {"nowhere", "", "127.1", "%s", "300.0.0.1"}) {
    const int fd = tcp_socket_connect(text, port, 10);
    EXPECT_GE(fd, 0) << text;
    close(fd);
  }
}

TEST_F(ConnectTest, tells_a_closed_port) {
  const int result = tcp_socket_connect("127.0.0.1", closed_port(), 10);
  EXPECT_EQ(ECONNREFUSED, errno);
  EXPECT_TRUE(result == -5 || result == -2) << result;
}

TEST_F(ConnectTest, tells_a_failure_at_once) {
  with_network("", [] {
    EXPECT_EQ(-2, tcp_socket_connect("10.0.0.2", 80, 10));
    EXPECT_EQ(ENETUNREACH, errno);
  });
  Fault fault(Call::kConnect, {.error = EACCES});
  EXPECT_EQ(-2, tcp_socket_connect("127.0.0.1", 80, 10));
  EXPECT_EQ(EACCES, errno);
}

TEST_F(ConnectTest, gives_up_after_its_seconds) {
  with_network(kSilentHost, [] {
    const Stopwatch watch;
    EXPECT_EQ(-4, tcp_socket_connect("10.0.0.2", 80, 1));
    EXPECT_EQ(ETIMEDOUT, errno);
    EXPECT_GE(watch.seconds(), 0.99);
    EXPECT_LT(watch.seconds(), 20);
  });
}

TEST_F(ConnectTest, with_0_seconds_does_not_wait) {
  with_network(kSilentHost, [] {
    EXPECT_EQ(-4, tcp_socket_connect("10.0.0.2", 80, 0));
    EXPECT_EQ(ETIMEDOUT, errno);
  });
}

TEST_F(ConnectTest, refuses_to_wait_less_than_0_seconds) {
  with_network(kSilentHost, [] {
    EXPECT_EQ(-3, tcp_socket_connect("10.0.0.2", 80, -1));
    EXPECT_EQ(EINVAL, errno);
  });
}

TEST_F(ConnectTest, tells_a_failure_that_came_later) {
  with_network(kSilentHost, [] {
    fairlead_test::put_file("/proc/sys/net/ipv4/neigh/wan0/mcast_solicit", "1");
    fairlead_test::put_file("/proc/sys/net/ipv4/neigh/wan0/retrans_time_ms", "50");
    EXPECT_EQ(-5, tcp_socket_connect("10.0.0.3", 80, 60));
    EXPECT_EQ(EHOSTUNREACH, errno);
  });
}

TEST_F(ConnectTest, waits_anew_after_a_signal) {
  with_network(kSilentHost, [] {
    const misc_test::PlainHandler handler(SIGALRM, [](int) {});
    const misc_test::CallersAlarm half_time({{0, 0}, {0, 500000}});
    const Stopwatch watch;
    EXPECT_EQ(-4, tcp_socket_connect("10.0.0.2", 80, 1));
    EXPECT_GE(watch.seconds(), 1.49);
  });
}

TEST_F(ConnectTest, takes_descriptors_above_1023) {
  const int port = listening_port();
  const auto ended = fairlead_test::run_child([port] {
    rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = 1100;
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0) return 77;
    while (dup(STDERR_FILENO) < 1050) continue;
    EXPECT_GT(tcp_socket_connect("127.0.0.1", port, 10), 1023);
    return 0;
  });
  if (ended.status == 77) GTEST_SKIP() << "no more than 1024 descriptors are allowed here";
}

TEST_F(ConnectTest, tells_that_there_is_no_socket) {
  Fault fault(Call::kSocket, {.error = EMFILE});
  EXPECT_EQ(-1, tcp_socket_connect("127.0.0.1", 80, 10));
  EXPECT_EQ(EMFILE, errno);
}

// Such a socket has nothing to wait for, and nothing to complain about.
TEST_F(ConnectTest, a_connection_that_has_to_come_later_is_waited_for) {
  Fault fault(Call::kConnect, {.error = EAGAIN});
  const int fd = tcp_socket_connect("127.0.0.1", 80, 10);
  EXPECT_GE(fd, 0);
  close(fd);
}

TEST_F(ConnectTest, refuses_a_null_address) {
  errno = 0;
  EXPECT_EQ(-1, tcp_socket_connect(nullptr, 80, 10));
  EXPECT_EQ(EINVAL, errno);
}

}  // namespace
