// Routes: of the kernel's own table, and of tables that the test has written.
#include "fairlead/misc.h"
#include "network_support.h"

namespace {

class RouteTest : public misc_test::NetworkTest {
 protected:
  // Checks against a table of the test's own.
  void with_lines(const std::string& lines, std::function<void()> checks) {
    with_table(
        "/proc/net/route",
        "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n" +
            lines,
        checks);
  }
};

struct Found {
  char gateway[16] = "untouched";
  char interface[16] = "untouched";
  int result;

  explicit Found(const char* destination, const char* netmask = nullptr)
      : result(route_exist(destination, netmask, gateway, interface)) {}
};

constexpr const char* kAny = "0.0.0.0";

// Words as the kernel prints them: the bytes of the address in memory, read as a number.
std::string word(std::initializer_list<uint8_t> bytes) {
  uint32_t number;
  memcpy(&number, bytes.begin(), sizeof number);
  char text[9];
  snprintf(text, sizeof text, "%08X", number);
  return text;
}

std::string line(const std::string& name, int metric, const char* flags = "0003") {
  return name + "\t" + word({0, 0, 0, 0}) + "\t" + word({10, 0, 0, 254}) + "\t" + flags +
         "\t0\t0\t" + std::to_string(metric) + "\t" + word({0, 0, 0, 0}) + "\t0\t0\t0\n";
}

constexpr const char* kTwoUplinks =
    "link add wan0 type veth peer name wan1\n"
    "link add lte0 type veth peer name lte1\n"
    "address add 10.0.0.1/24 dev wan0\n"
    "address add 10.8.0.1/16 dev lte0\n"
    "link set wan0 up\n"
    "link set lte0 up\n";

TEST_F(RouteTest, finds_the_default_route) {
  with_network(std::string(kTwoUplinks) + "route add default via 10.0.0.254 dev wan0\n", [] {
    const Found found(kAny);
    EXPECT_EQ(1, found.result);
    EXPECT_STREQ("10.0.0.254", found.gateway);
    EXPECT_STREQ("wan0", found.interface);
  });
}

TEST_F(RouteTest, finds_none_in_an_empty_table) {
  with_network("", [] {
    errno = 0;
    const Found found(kAny);
    EXPECT_EQ(0, found.result);
    EXPECT_EQ(0, errno);
    EXPECT_STREQ("untouched", found.gateway);
    EXPECT_STREQ("untouched", found.interface);
  });
}

TEST_F(RouteTest, among_several_takes_the_highest_metric) {
  with_network(std::string(kTwoUplinks) +
                   "route add default via 10.0.0.254 dev wan0 metric 5\n"
                   "route add default via 10.8.0.254 dev lte0 metric 50\n"
                   "route add default via 10.0.0.253 dev wan0 metric 20\n",
               [] {
                 const Found found(kAny);
                 EXPECT_EQ(1, found.result);
                 EXPECT_STREQ("10.8.0.254", found.gateway);
                 EXPECT_STREQ("lte0", found.interface);
               });
}

TEST_F(RouteTest, finds_a_network_with_its_mask) {
  with_network(std::string(kTwoUplinks) + "route add 10.0.0.0/16 dev lte0 metric 9\n", [] {
    EXPECT_STREQ("wan0", Found("10.0.0.0", "255.255.255.0").interface);
    EXPECT_STREQ("0.0.0.0", Found("10.0.0.0", "255.255.255.0").gateway);
    EXPECT_STREQ("lte0", Found("10.0.0.0", "255.255.0.0").interface);
    EXPECT_STREQ("lte0", Found("10.0.0.0").interface) << "the higher metric";
    EXPECT_EQ(0, Found("10.0.0.0", "255.0.0.0").result);
    EXPECT_EQ(0, Found("10.0.0.7").result) << "an address of the network is not its destination";
  });
}

TEST_F(RouteTest, wants_masks_and_destinations_as_the_kernel_would_write_them) {
  with_network(std::string(kTwoUplinks) + "route add default dev wan0\n", [] {
    EXPECT_EQ(1, Found(kAny, "0.0.0.0").result);
    for (const char* text : {"0", "default", "000.0.0.0", "", " 0.0.0.0", "%s"}) {
      EXPECT_EQ(0, Found(text).result) << text;
      EXPECT_EQ(0, Found(kAny, text).result) << text;
    }
  });
}

TEST_F(RouteTest, tells_only_what_is_wanted) {
  with_network(std::string(kTwoUplinks) + "route add default via 10.0.0.254 dev wan0\n", [] {
    EXPECT_EQ(1, route_exist(kAny, nullptr, nullptr, nullptr));
    char text[16];
    EXPECT_EQ(1, route_exist(kAny, nullptr, text, nullptr));
    EXPECT_STREQ("10.0.0.254", text);
    EXPECT_EQ(1, route_exist(kAny, nullptr, nullptr, text));
    EXPECT_STREQ("wan0", text);
  });
}

TEST_F(RouteTest, the_first_of_equal_metrics_stays) {
  with_lines(line("a", 3) + line("b", 7) + line("c", 7) + line("d", 6),
             [] { EXPECT_STREQ("b", Found(kAny).interface); });
}

TEST_F(RouteTest, routes_that_are_not_up_do_not_count) {
  with_lines(line("up", 0, "0001") + line("down", 9, "0002") + line("down", 9, "FFFE"),
             [] { EXPECT_STREQ("up", Found(kAny).interface); });
}

TEST_F(RouteTest, a_negative_metric_is_never_found) {
  with_lines(line("wan0", -1) + line("wan0", -2147483647),
             [] { EXPECT_EQ(0, Found(kAny).result); });
  with_lines(line("wan0", -1) + line("wan1", 2147483647),
             [] { EXPECT_STREQ("wan1", Found(kAny).interface); });
}

TEST_F(RouteTest, a_damaged_line_ends_the_search) {
  for (const char* damaged : {"wan9\n", "\n", "wan9\t00000000\t00000000\t0003\t0\t0\t9\n",
                              "wan9\t00000000\tgateway\t0003\t0\t0\t9\t00000000\n",
                              "sixteen_letters_\t00000000\t00000000\t0003\t0\t0\t9\t00000000\n",
                              "seventeen_letters\t00000000\t00000000\t0003\t0\t0\t9\t00000000\n",
                              "fifteen_letters0000\t0\t0\t3\t0\t0\t9\t0\t0\n"})
    with_lines(line("wan0", 1) + damaged + line("wan1", 2),
               [damaged] { EXPECT_STREQ("wan0", Found(kAny).interface) << damaged; });
}

TEST_F(RouteTest, the_longest_name_fits_an_output_of_16_bytes) {
  with_lines(line("fifteen_letters", 1),
             [] { EXPECT_STREQ("fifteen_letters", Found(kAny).interface); });
}

TEST_F(RouteTest, a_table_cut_anywhere_gives_what_is_whole) {
  const std::string first = line("wan0", 1), both = first + line("wan1", 2);
  const size_t eight_fields = both.rfind("\t0\t0\t0\n") - 7;  // one digit of the mask is enough
  for (size_t length = first.size(); length <= both.size(); length += 2)
    with_lines(both.substr(0, length), [&] {
      EXPECT_STREQ(length >= eight_fields ? "wan1" : "wan0", Found(kAny).interface) << length;
    });
}

TEST_F(RouteTest, a_line_of_more_than_1022_characters_ends_the_search) {
  const std::string full = line("wan0", 1), rest(1021 - (full.size() - 1), ' ');
  const std::string longest = full.substr(0, full.size() - 1) + rest;
  ASSERT_EQ(1021u, longest.size());
  with_lines(longest + "\n" + line("wan1", 2), [] { EXPECT_STREQ("wan1", Found(kAny).interface); });
  with_lines(longest + " \n" + line("wan1", 2), [] {
    EXPECT_STREQ("wan0", Found(kAny).interface) << "its end counts as a line of its own";
  });
}

TEST_F(RouteTest, finds_nothing_in_the_head_line) {
  with_table("/proc/net/route", line("wan0", 1), [] { EXPECT_EQ(0, Found(kAny).result); });
}

TEST_F(RouteTest, fails_without_a_table) {
  with_table("/proc/net/route", "", [] {
    EXPECT_EQ(0, Found(kAny).result);
    EXPECT_EQ(ENOENT, errno);
  });
}

TEST_F(RouteTest, refuses_no_destination) {
  errno = 0;
  EXPECT_EQ(0, Found(nullptr).result);
  EXPECT_EQ(EINVAL, errno);
}

}  // namespace
