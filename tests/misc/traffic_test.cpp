// Traffic counters: of a real interface, and of tables that the test has written.
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>

#include "fairlead/misc.h"
#include "network_support.h"

namespace {

class TrafficTest : public misc_test::NetworkTest {
 protected:
  // Checks against a table of the test's own.
  void with_lines(const std::string& lines, std::function<void()> checks) {
    with_table("/proc/net/dev", kHead + lines, checks);
  }

  static constexpr const char* kHead =
      "Inter-|   Receive                                                |  Transmit\n"
      " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs "
      "drop "
      "fifo colls carrier compressed\n";
};

using Counters = std::array<int64_t, 8>;
constexpr Counters kUntouched = {-7, -7, -7, -7, -7, -7, -7, -7};

struct Flew {
  Counters of = kUntouched;
  int result;

  explicit Flew(const char* name)
      : result(netcard_flew(name, &of[0], &of[1], &of[2], &of[3], &of[4], &of[5], &of[6], &of[7])) {
  }
};

// Numbers from `first` on, as a line of the table has them.
std::string line(const std::string& name, int first) {
  std::string text = name + ":";
  for (int i = 0; i < 16; ++i) text += " " + std::to_string(first + i);
  return text + "\n";
}

constexpr Counters numbers(int first) {
  return {first, first + 1, first + 2, first + 3, first + 8, first + 9, first + 10, first + 11};
}

// Datagrams to this process itself.
void send_to_self(int count, size_t size) {
  const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_in self = {};
  self.sin_family = AF_INET;
  self.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof self;
  ASSERT_EQ(0, bind(fd, reinterpret_cast<sockaddr*>(&self), sizeof self));
  ASSERT_EQ(0, getsockname(fd, reinterpret_cast<sockaddr*>(&self), &length));
  const std::string data(size, 'x');
  for (int i = 0; i < count; ++i)
    ASSERT_EQ(static_cast<ssize_t>(size),
              sendto(fd, data.data(), size, 0, reinterpret_cast<sockaddr*>(&self), sizeof self));
  close(fd);
}

TEST_F(TrafficTest, flew_counts_what_an_interface_carried) {
  with_network("", [] {
    const Flew before("lo");
    ASSERT_EQ(0, before.result);
    send_to_self(10, 1000);
    const Flew after("lo");
    constexpr int kHeaders = 20 + 8;  // packet, datagram
    for (const size_t bytes : {0u, 4u})
      EXPECT_EQ(before.of[bytes] + 10 * (1000 + kHeaders), after.of[bytes]);
    for (const size_t packets : {1u, 5u}) EXPECT_EQ(before.of[packets] + 10, after.of[packets]);
    for (const size_t errors : {2u, 3u, 6u, 7u}) EXPECT_EQ(0, after.of[errors]);
  });
}

TEST_F(TrafficTest, flew_tells_eight_of_the_numbers) {
  with_lines(line("    lo", 100) + line("  eth0", 200), [] {
    const Flew flew("eth0");
    EXPECT_EQ(0, flew.result);
    EXPECT_EQ(numbers(200), flew.of);
  });
}

TEST_F(TrafficTest, flew_skips_outputs_that_are_not_wanted) {
  with_lines(line("eth0", 1), [] {
    EXPECT_EQ(0, netcard_flew("eth0", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                              nullptr));
    int64_t sent = 0;
    EXPECT_EQ(0, netcard_flew("eth0", nullptr, nullptr, nullptr, nullptr, &sent, nullptr, nullptr,
                              nullptr));
    EXPECT_EQ(9, sent);
  });
}

TEST_F(TrafficTest, flew_takes_the_first_line_that_contains_the_name) {
  with_lines(line("eth10", 100) + line("eth1", 200) + line("eth1.5", 300), [] {
    EXPECT_EQ(numbers(100), Flew("eth1").of);
    EXPECT_EQ(numbers(200), Flew("eth1:").of);
    EXPECT_EQ(numbers(300), Flew("th1.").of);
    EXPECT_EQ(numbers(200), Flew(" 207 ").of) << "a number of the line";
  });
}

TEST_F(TrafficTest, flew_finds_nothing_in_the_head_lines) {
  with_lines(line("eth0", 1), [] {
    for (const char* name : {"face", "Inter", "bytes", "eth1", "ETH0"}) {
      const Flew flew(name);
      EXPECT_EQ(-1, flew.result) << name;
      EXPECT_EQ(kUntouched, flew.of) << name;
    }
  });
}

TEST_F(TrafficTest, flew_looks_behind_the_head_lines_for_a_word_that_stands_in_them) {
  with_lines(line("surface0", 1) + line("bytes0", 100), [] {
    EXPECT_EQ(numbers(1), Flew("face").of);
    EXPECT_EQ(numbers(100), Flew("bytes").of);
  });
}

TEST_F(TrafficTest, flew_takes_what_follows_the_first_colon) {
  with_lines("eth0: 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 : 21 22 23 24 25 26 27 28 29 30 31 32\n",
             [] { EXPECT_EQ(numbers(1), Flew("eth0").of); });
}

TEST_F(TrafficTest, flew_reads_numbers_of_64_bits) {
  with_lines(
      "eth0:9223372036854775807 4294967296 18446744073709551615 -5 0 0 0 0 "
      "-9223372036854775808 1 2 3 4 5 6 7\n",
      [] {
        const Counters expected = {INT64_MAX, 4294967296, INT64_MAX, -5, INT64_MIN, 1, 2, 3};
        EXPECT_EQ(expected, Flew("eth0").of);
      });
}

TEST_F(TrafficTest, flew_needs_twelve_numbers) {
  with_lines("eth0: 1 2 3 4 5 6 7 8 9 10 11 12\n", [] { EXPECT_EQ(0, Flew("eth0").result); });
  for (const char* damaged :
       {"eth0: 1 2 3 4 5 6 7 8 9 10 11\n", "eth0:\n", "eth0\n", "eth0",
        "eth0: 1 2 3 x 5 6 7 8 9 10 11 12\n", "eth0: 1 2 3 4 5 6 7 8 9 10 11 ", ": eth0 1 2 3\n"})
    with_lines(damaged, [damaged] {
      const Flew flew("eth0");
      EXPECT_EQ(-1, flew.result) << damaged;
      EXPECT_EQ(kUntouched, flew.of) << damaged;
    });
}

TEST_F(TrafficTest, flew_reads_a_table_cut_anywhere) {
  const std::string table = kHead + line("eth0", 1000);
  const size_t twelve = table.find(" 1012");
  for (size_t length = 1; length <= table.size(); length += 3)
    with_table("/proc/net/dev", table.substr(0, length),
               [&] { EXPECT_EQ(length > twelve - 4 ? 0 : -1, Flew("eth0").result) << length; });
}

TEST_F(TrafficTest, flew_reads_a_long_line_in_pieces_of_4094_characters) {
  const std::string padding(4094 - 8, ' ');
  with_lines("eth0:1 2" + padding + "3 4 5 6 7 8 9 10 11 12\n" + line("eth1", 1), [] {
    EXPECT_EQ(-1, Flew("eth0").result) << "the first piece holds two numbers";
    EXPECT_EQ(numbers(1), Flew("eth1").of);
  });
  with_lines(std::string(4094, ' ') + line("eth0", 1), [] {
    EXPECT_EQ(numbers(1), Flew("eth0").of) << "the second piece is a line of its own";
  });
  const std::string whole = "eth0: 1 2 3 4 5 6 7 8 9 10 11 12";
  with_lines(std::string(4094 - whole.size(), ' ') + whole + "99\n",
             [] { EXPECT_EQ(numbers(1), Flew("eth0").of) << "4094 characters are one piece"; });
  with_lines(std::string(4094 - 2, ' ') + line("eth0", 1),
             [] { EXPECT_EQ(-1, Flew("eth0").result) << "the name is cut in two"; });
}

TEST_F(TrafficTest, flew_counts_pieces_of_the_head_as_lines) {
  with_table("/proc/net/dev", std::string(9000, '-') + "\nhead\n" + line("eth0", 1), [] {
    EXPECT_EQ(-1, Flew("---").result);
    EXPECT_EQ(-1, Flew("head").result);
    EXPECT_EQ(0, Flew("eth0").result);
  });
}

TEST_F(TrafficTest, flew_fails_without_a_table) {
  with_table("/proc/net/dev", "", [] {
    EXPECT_EQ(-1, Flew("lo").result);
    EXPECT_EQ(ENOENT, errno);
  });
}

TEST_F(TrafficTest, flew_refuses_no_name) {
  for (const char* name : {static_cast<const char*>(nullptr), ""}) {
    errno = 0;
    const Flew flew(name);
    EXPECT_EQ(-1, flew.result);
    EXPECT_EQ(EINVAL, errno);
    EXPECT_EQ(kUntouched, flew.of);
  }
}

}  // namespace
