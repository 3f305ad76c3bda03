// Services with hostile names, and what stands in the place of their records.
#include <sys/prctl.h>
#include <sys/wait.h>

#include "hostile/hostile_support.h"
#include "support/hostile_names.h"
#include "support/odd_files.h"

namespace {

using namespace fairlead_test;

constexpr char kRecord[] = "/tmp/.var/service/wan.spid";

class HostileServicesTest : public DeviceTest {
 protected:
  static void arrange() {
    empty_root();
    put_file("/tmp/bin/he", "#!/bin/sh\nprintf '%s' \"$1\" >/tmp/told\n", 0755);
    setenv("PATH", "/tmp/bin:/usr/bin:/bin", 1);
    make_directories("/tmp/.var/service");
    put_file("/tmp/precious", "precious");
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    GlogOpen("test", LOG_MODE_CONSOLE, 1);
  }

  // Until every daemon has ended: they are children of this process by now.
  static void wait_for_daemons() {
    while (waitpid(-1, nullptr, 0) > 0 || errno == EINTR) continue;
    EXPECT_FALSE(leaks());
  }

  static std::string overlaid(std::string record, size_t offset, const std::string& text) {
    if (record.size() < offset + text.size() + 1) record.resize(offset + text.size() + 1);
    return record.replace(offset, text.size() + 1, text.c_str(), text.size() + 1);
  }

  // Longer names run into the next field.
  static std::string record_of(const std::string& object, const std::string& interface,
                               const std::string& parameters) {
    std::string record = overlaid("", 8, object);
    record = overlaid(record, 72, interface);
    record = overlaid(record, 136, parameters);
    return overlaid(record, 8, object).substr(0, 9) + record.substr(9);
  }
};

TEST_F(HostileServicesTest, of_any_name_touch_their_own_record_only) {
  for (const std::string& name : kHostileNames) {
    const auto ended = run_child([&] {
      arrange();
      const std::string own = "/tmp/.var/service/" + name + ".spid";
      const bool good = name.find('/') == std::string::npos && name.size() <= 232;
      const std::string before = picture({own, "/tmp/told", "/tmp/.var/gvalue"});
      EXPECT_EQ(good ? 0 : -1, ServiceStart(name.c_str(), "lab/x", "run", nullptr));
      wait_for_daemons();
      EXPECT_EQ(good ? "lab/x.run" : "<missing>", file_content("/tmp/told"));
      for (auto* act : {ServiceOff, ServiceReset, ServicePid, ServiceStop}) {
        errno = 0;
        const int result = act("%s", name.c_str());
        EXPECT_EQ(good && act == ServiceOff ? 0 : -1, result) << name;
        EXPECT_TRUE(good || errno == (name.find('/') < name.size() ? EINVAL : ENAMETOOLONG));
      }
      EXPECT_EQ(before, picture({own, "/tmp/told", "/tmp/.var/gvalue"})) << name;
      EXPECT_FALSE(exists(own)) << name;
    });
    EXPECT_EQ(0, ended.status) << name << ended.signal << ended.err;
  }
}

TEST_F(HostileServicesTest, hand_any_text_on_as_it_is) {
  for (const std::string& name : kHostileNames) {
    const auto ended = run_child([&] {
      arrange();
      const char* text = name.c_str();
      EXPECT_EQ(0, ServiceStart("wan", text, text, "%s", text));
      wait_for_daemons();
      // Of an interface 63 characters count.
      EXPECT_EQ(name + "." + name.substr(0, 63) + "[" + name + "]", file_content("/tmp/told"));
      EXPECT_EQ(record_of(name, name, name), file_content(kRecord)) << name;
      TalkFree(ServiceInfo("wan"));
      EXPECT_EQ(0, DaemonCheck());
      wait_for_daemons();
      TalkFree(ServiceList());
      EXPECT_EQ(-1, ServiceStop("wan"));
      EXPECT_EQ(ESRCH, errno);
      EXPECT_FALSE(exists("/tmp/ran")) << name;
    });
    EXPECT_EQ(0, ended.status) << name << ended.signal << ended.err;
  }
}

TEST_F(HostileServicesTest, meet_any_file_in_the_place_of_a_record) {
  for (const OddFile& kind : kOddFiles) {
    const auto ended = run_child([&] {
      arrange();
      kind.make(kRecord);
      // The noise is text where a record has its object's name.
      const bool names_object = strcmp(kind.name, "noise") == 0;
      EXPECT_EQ(-1, ServicePid("wan")) << kind.name;
      EXPECT_EQ(names_object, spelled(ServiceInfo("wan")) != "null") << kind.name;
      EXPECT_EQ(names_object, spelled(ServiceList()) != "{}") << kind.name;
      EXPECT_EQ(0, DaemonCheck()) << kind.name;
      wait_for_daemons();
      EXPECT_EQ(-1, ServiceReset("wan")) << kind.name;
      wait_for_daemons();
      EXPECT_EQ(names_object, exists("/tmp/told")) << kind.name;
      ServiceOff("wan");
      EXPECT_EQ(0, ServiceStart("wan", "lab/x", "run", nullptr)) << kind.name;
      wait_for_daemons();
      EXPECT_EQ("lab/x.run", file_content("/tmp/told")) << kind.name;
      EXPECT_EQ(-1, ServiceStop("wan")) << kind.name;
      EXPECT_EQ("precious", file_content("/tmp/precious")) << kind.name;
    });
    EXPECT_EQ(0, ended.status) << kind.name << ended.signal << ended.err;
  }
}

TEST_F(HostileServicesTest, follow_no_link_to_a_record_elsewhere) {
  const auto ended = run_child([] {
    arrange();
    put_file("/tmp/elsewhere", record_of("lab/x", "run", ""));
    ASSERT_EQ(0, symlink("/tmp/elsewhere", kRecord));
    for (auto* act : {ServiceOff, ServiceReset, ServiceStop}) {
      errno = 0;
      EXPECT_EQ(-1, act("wan"));
      EXPECT_EQ(ELOOP, errno);
    }
    EXPECT_EQ(nullptr, ServiceInfo("wan"));
    EXPECT_EQ(ELOOP, errno);
    EXPECT_EQ(0, DaemonCheck());
    EXPECT_FALSE(exists("/tmp/told"));
    EXPECT_EQ(record_of("lab/x", "run", ""), file_content("/tmp/elsewhere"));
  });
  EXPECT_EQ(0, ended.status) << ended.err;
}

TEST_F(HostileServicesTest, meet_any_file_in_the_place_of_their_folder) {
  for (const OddFile& kind : kOddFiles) {
    const auto ended = run_child([&] {
      arrange();
      remove_tree("/tmp/.var/service");
      kind.make("/tmp/.var/service");
      TalkFree(ServiceList());
      EXPECT_EQ(-1, ServicePid("wan")) << kind.name;
      EXPECT_EQ(0, ServiceStart("wan", "lab/x", "run", nullptr)) << kind.name;
      wait_for_daemons();
      EXPECT_EQ("lab/x.run", file_content("/tmp/told")) << kind.name;
      ServiceStop("wan");
      EXPECT_EQ("precious", file_content("/tmp/precious")) << kind.name;
    });
    EXPECT_EQ(0, ended.status) << kind.name << ended.signal << ended.err;
  }
}

}  // namespace
