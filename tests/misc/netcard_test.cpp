// Flags and addresses of interfaces that the test has made.
#include <net/if.h>

#include "fairlead/misc.h"
#include "network_support.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::Fault;

class NetcardTest : public misc_test::NetworkTest {};

constexpr const char* kPair =
    "link add wan0 address 00:1a:2b:3c:4d:5e type veth peer name wan1\n"
    "address add 192.0.2.7/25 dev wan0\n"
    "link set wan0 up\n";

struct Info {
  char address[16] = "untouched", peer[16] = "untouched", netmask[16] = "untouched";
  char mac[18] = "untouched";
  int result = 1;

  explicit Info(const char* name) {
    result = netcard_info(name, address, sizeof address, peer, sizeof peer, netmask, sizeof netmask,
                          mac, sizeof mac);
  }
};

TEST_F(NetcardTest, isflags_wants_every_given_flag) {
  with_network(kPair, [] {
    EXPECT_EQ(1, netcard_isflags("wan0", IFF_UP));
    EXPECT_EQ(1, netcard_isflags("wan0", IFF_UP | IFF_BROADCAST));
    EXPECT_EQ(0, netcard_isflags("wan0", IFF_UP | IFF_LOOPBACK));
    EXPECT_EQ(0, netcard_isflags("wan1", IFF_UP));
    EXPECT_EQ(1, netcard_isflags("lo", IFF_UP | IFF_LOOPBACK));
  });
}

TEST_F(NetcardTest, isflags_without_flags_asks_whether_the_interface_exists) {
  with_network(kPair, [] {
    EXPECT_EQ(1, netcard_isflags("wan1", 0));
    errno = 0;
    EXPECT_EQ(-1, netcard_isflags("wan2", 0));
    EXPECT_EQ(ENODEV, errno);
  });
}

TEST_F(NetcardTest, isflags_looks_at_16_bits) {
  with_network(kPair, [] {
    EXPECT_EQ(1, netcard_isflags("wan1", 0x10000));
    EXPECT_EQ(1, netcard_isflags("wan0", 0x70000 | IFF_UP));
    EXPECT_EQ(0, netcard_isflags("wan0", 0x8000));
  });
}

TEST_F(NetcardTest, a_name_is_cut_to_15_characters) {
  with_network("link add fifteen_letters type veth peer name other\n", [] {
    EXPECT_EQ(1, netcard_isflags("fifteen_letters", 0));
    EXPECT_EQ(1, netcard_isflags("fifteen_letters_and_more", 0));
    EXPECT_EQ(0, Info("fifteen_letters_and_more").result);
    EXPECT_EQ(-1, netcard_isflags("fifteen_letter", 0));
  });
}

TEST_F(NetcardTest, a_name_is_never_taken_for_a_pattern_or_a_command) {
  for (const std::string& name :
       {std::string("%s%n"), std::string("lo;reboot"), std::string("../lo"), std::string(4096, 'x'),
        std::string("lo\n")})
    EXPECT_EQ(-1, netcard_isflags(name.c_str(), 0)) << name;
}

TEST_F(NetcardTest, no_name_is_refused) {
  for (const char* name : {static_cast<const char*>(nullptr), ""}) {
    errno = 0;
    EXPECT_EQ(-1, netcard_isflags(name, 0));
    EXPECT_EQ(EINVAL, errno);
    errno = 0;
    EXPECT_EQ(-1, Info(name).result);
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(NetcardTest, a_failure_keeps_its_errno) {
  char mac[18];
  for (const Call call : {Call::kSocket, Call::kIoctl}) {
    Fault fault(call, {.error = EMFILE});
    EXPECT_EQ(-1, netcard_isflags("lo", 0));
    EXPECT_EQ(EMFILE, errno);
  }
  for (const Call call : {Call::kSocket, Call::kIoctl}) {
    Fault fault(call, {.error = ENFILE});
    EXPECT_EQ(-1, netcard_info("lo", nullptr, 0, nullptr, 0, nullptr, 0, mac, sizeof mac));
    EXPECT_EQ(ENFILE, errno);
  }
}

TEST_F(NetcardTest, info_fills_every_buffer) {
  with_network(kPair, [] {
    const Info info("wan0");
    EXPECT_EQ(0, info.result);
    EXPECT_STREQ("192.0.2.7", info.address);
    EXPECT_STREQ("192.0.2.7", info.peer) << "a network without a peer of its own";
    EXPECT_STREQ("255.255.255.128", info.netmask);
    EXPECT_STREQ("00:1A:2B:3C:4D:5E", info.mac);
  });
}

TEST_F(NetcardTest, info_tells_the_peer_of_a_point_to_point_address) {
  with_network(
      "link add ppp0 type veth peer name ppp1\n"
      "address add 10.1.2.3 peer 10.9.9.9/32 dev ppp0\n",
      [] {
        const Info info("ppp0");
        EXPECT_EQ(0, info.result);
        EXPECT_STREQ("10.1.2.3", info.address);
        EXPECT_STREQ("10.9.9.9", info.peer);
        EXPECT_STREQ("255.255.255.255", info.netmask);
      });
}

TEST_F(NetcardTest, info_fills_what_there_is) {
  with_network("link add wan0 address 02:00:00:00:00:fe type veth peer name wan1\n", [] {
    const Info info("wan0");
    EXPECT_EQ(0, info.result);
    EXPECT_STREQ("untouched", info.address);
    EXPECT_STREQ("untouched", info.peer);
    EXPECT_STREQ("untouched", info.netmask);
    EXPECT_STREQ("02:00:00:00:00:FE", info.mac);
  });
}

TEST_F(NetcardTest, info_fills_a_hardware_address_alone) {
  with_network(kPair, [] {
    char mac[18];
    EXPECT_EQ(0, netcard_info("wan0", nullptr, 0, nullptr, 0, nullptr, 0, mac, sizeof mac));
    EXPECT_STREQ("00:1A:2B:3C:4D:5E", mac);
  });
}

TEST_F(NetcardTest, info_cuts_what_does_not_fit) {
  with_network(kPair, [] {
    char address[5] = "....", peer[1] = {'.'}, netmask[2] = ".", mac[3] = "..";
    EXPECT_EQ(0, netcard_info("wan0", address, 5, peer, 1, netmask, 2, mac, 3));
    EXPECT_STREQ("192.", address);
    EXPECT_STREQ("", peer);
    EXPECT_STREQ("2", netmask);
    EXPECT_STREQ("00", mac);
  });
}

TEST_F(NetcardTest, info_leaves_buffers_without_room_alone) {
  with_network(kPair, [] {
    char text[] = "untouched";
    for (const int size : {0, -1}) {
      EXPECT_EQ(-1, netcard_info("wan0", text, size, text, size, text, size, text, size)) << size;
      EXPECT_STREQ("untouched", text);
    }
  });
}

TEST_F(NetcardTest, info_fails_when_nothing_was_filled) {
  with_network(kPair, [] {
    char address[16];
    errno = 0;
    EXPECT_EQ(-1, netcard_info("wan0", nullptr, 16, nullptr, 16, nullptr, 16, nullptr, 18));
    EXPECT_EQ(0, errno);
    EXPECT_EQ(-1, netcard_info("wan1", address, 16, nullptr, 0, nullptr, 0, nullptr, 0));
    EXPECT_EQ(EADDRNOTAVAIL, errno);
    EXPECT_EQ(-1, Info("wan9").result);
    EXPECT_EQ(ENODEV, errno);
  });
}

}  // namespace
