// Files of every kind where joints, modems and the system's log are looked for. The places of the
// stores stand in tests/faults/places_test.cpp, those of services in services_test.cpp.
#include <fcntl.h>

#include <memory>

#include "hostile/hostile_support.h"
#include "support/odd_files.h"

namespace {

using namespace fairlead_test;

constexpr char kJoints[] = "/tmp/.var/joint.cache";
constexpr char kModem[] = "/tmp/modem";

class HostilePlacesTest : public DeviceTest {
 protected:
  static void with_each(const std::string& place, const std::function<void(const OddFile&)>& act) {
    for (const OddFile& kind : kOddFiles) {
      empty_root();
      put_file("/tmp/precious", "precious");
      remove_tree(place);
      kind.make(place.c_str());
      const auto ended = run_watched([&] {
        GlogOpen("test", LOG_MODE_CONSOLE, 1);
        act(kind);
      });
      EXPECT_EQ(0, ended.status) << kind.name << ", signal " << ended.signal << "\n" << ended.err;
      remove_tree(place);
    }
  }
};

TEST_F(HostilePlacesTest, of_joints_hold_none_and_are_replaced_or_refused) {
  with_each(kJoints, [](const OddFile& kind) {
    EXPECT_EQ(nullptr, JointList(nullptr)) << kind.name;
    JointCast("wan", nullptr, nullptr);
    EXPECT_EQ(0, JointDelete("wan", "up", "lan", "refresh")) << kind.name;
    const int created = JointCreate("wan", "up", "lan", "refresh");
    EXPECT_EQ(created ? R"({"up":{"lan.refresh":""}})" : "null", spelled(JointList("wan")))
        << kind.name;
  });
}

// All of them at once: an open takes a second.
TEST_F(HostilePlacesTest, of_modems_are_used_as_they_are_or_refused) {
  std::vector<std::unique_ptr<Child>> children;
  for (const OddFile& kind : kOddFiles) {
    const std::string place = std::string(kModem) + std::to_string(children.size());
    kind.make(place.c_str());
    children.push_back(std::make_unique<Child>([place, &kind] {
      GlogOpen("test", LOG_MODE_CONSOLE, 1);
      atcmd_t* modem =
          atcmd_open(place.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK, 0, nullptr, nullptr, 0);
      if (!modem) return 0;
      EXPECT_NE(0, atcmd_send(modem, "AT", 1, nullptr, 0)) << kind.name;
      EXPECT_EQ(1, atcmd_close(modem)) << kind.name;
      return 0;
    }));
  }
  for (const auto& child : children) {
    const auto ended = child->wait();
    EXPECT_EQ(0, ended.status) << ended.signal << ended.err;
  }
}

TEST_F(HostilePlacesTest, of_the_time_are_never_written_through) {
  with_each("/tmp/.now", [](const OddFile& kind) {
    char text[32];
    const bool told = time_getting(text, sizeof text) != nullptr;
    EXPECT_EQ(strstr(kind.name, "folder") == nullptr, told) << kind.name;
    EXPECT_EQ("precious", file_content("/tmp/precious")) << kind.name;
  });
}

TEST_F(HostilePlacesTest, of_the_systems_log_harm_nobody) {
  with_each("/dev/log", [](const OddFile& kind) {
    EXPECT_EQ(1, GlogOpen("test", LOG_MODE_SYSLOG, 7));
    errno = 0;
    LogWrite(3, "test", 1, "%s", kind.name);
    EXPECT_EQ(0, errno) << kind.name;
    GlogClose();
    EXPECT_EQ("precious", file_content("/tmp/precious"));
  });
}

}  // namespace
