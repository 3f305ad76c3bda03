// Files of every kind in every fixed place: no call waits, crashes, or writes through them.
#include "faults/faults_fixture.h"
#include "support/odd_files.h"

namespace {

using namespace fairlead_test;

const char* const kPlaces[] = {"/etc/config/wan.cfg",
                               "/etc/config/.wan.cfg.saving",
                               "/etc/config/version",
                               "/etc/config/net",
                               "/tmp/.var/dadp.cache",
                               "/tmp/.var/.dadp.cache.saving",
                               "/tmp/.var/gvalue",
                               "/tmp/.var/gvalue/default",
                               "/tmp/.var/gvalue/levels",
                               "/tmp/.var",
                               "/prj/net/port.adp",
                               "/prj/net/lamp.ash",
                               "/prj/net/wan.cfg",
                               "/prj/net",
                               "/tmp/small"};

class PlacesTest : public FaultsTest, public testing::WithParamInterface<const char*> {
 protected:
  // Ends by itself long before the watch over it does.
  static Ended run_watched(const std::function<void()>& action) {
    Child child([&action] {
      action();
      return 0;
    });
    const pid_t pid = child.pid();
    const Child watch([pid] {
      sleep(long_form() ? 60 : 20);
      kill(pid, SIGKILL);
      return 0;
    });
    return child.wait();
  }

  static void arrange(const char* place, const OddFile& kind) {
    empty_root();
    put_file("/tmp/precious", "precious");
    put_file("/prj/net/port.adp", "");
    put_file("/prj/net/lamp.ash", "#!/bin/sh\nprintf on >&$pipeid\n", 0755);
    put_file("/prj/net/wan.cfg", "{\"a\":\"1\"}");
    make_directories("/tmp/.var/gvalue");
    remove_tree(place);
    kind.make(place);
  }

  static void use_everything() {
    for (const Operation& operation : operations()) {
      operation.act();
      operation.state();
    }
    for (const char* object : {"wan", "net/port", "net/lamp", "uplink", "net/wan"}) {
      AdpPath(nullptr, object, nullptr, 0);
      for (talk_t* answer :
           {AdpGet(nullptr, object, nullptr, nullptr), AdpCallList(nullptr, object)})
        if (answer && answer != TALK_DONE && answer != TALK_FAILED) TalkFree(answer);
    }
    for (talk_t* list : {ConfigList(nullptr), ProjectList(), ProjectAdpList(nullptr),
                         ProjectCfgList(nullptr), DynAdpList(nullptr), GvalueList(nullptr)})
      TalkFree(list);
    ConfigUninstall("net");
    LogWrite(6, "test", 1, "a line");
  }
};

TEST_P(PlacesTest, may_hold_anything) {
  // Where not all of them are tried, other places have the others.
  const size_t first = strlen(GetParam()) % static_cast<size_t>(stride(1));
  for (size_t i = first; i < std::size(kOddFiles); i += static_cast<size_t>(stride(1))) {
    const OddFile& kind = kOddFiles[i];
    arrange(GetParam(), kind);
    const auto ended = run_watched(use_everything);
    EXPECT_EQ(0, ended.status) << kind.name << ", signal " << ended.signal << "\n" << ended.err;
    // A link to a file of the store is followed on purpose, the place of a temporary never is.
    const bool temporary = std::string(GetParam()).ends_with(".saving");
    EXPECT_TRUE(!temporary || file_content("/tmp/precious") == "precious") << kind.name;
  }
}

INSTANTIATE_TEST_SUITE_P(Every, PlacesTest, testing::ValuesIn(kPlaces),
                         [](const testing::TestParamInfo<const char*>& parameter) {
                           std::string name = parameter.param;
                           std::replace_if(
                               name.begin(), name.end(), [](char c) { return !isalnum(c); }, '_');
                           return name;
                         });

}  // namespace
