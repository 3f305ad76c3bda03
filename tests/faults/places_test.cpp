// Files of every kind in every fixed place: no call waits, crashes, or writes through them.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "faults/faults_fixture.h"

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

void make_socket(const char* path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  strncpy(address.sun_path, path, sizeof address.sun_path - 1);
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) abort();
  close(fd);
}

struct Kind {
  const char* name;
  void (*make)(const char* path);
};

const Kind kKinds[] = {
    {"fifo", [](const char* path) { mkfifo(path, 0777); }},
    {"folder", [](const char* path) { mkdir(path, 0777); }},
    {"full folder", [](const char* path) { put_file(std::string(path) + "/file", "content"); }},
    {"socket", make_socket},
    {"endless file", [](const char* path) { (void)!symlink("/dev/zero", path); }},
    {"nothing", [](const char* path) { (void)!symlink("/dev/null", path); }},
    {"full device", [](const char* path) { (void)!symlink("/dev/full", path); }},
    {"terminal", [](const char* path) { (void)!symlink("/dev/tty", path); }},
    {"dangling link", [](const char* path) { (void)!symlink("/tmp/no/such/file", path); }},
    {"link to itself", [](const char* path) { (void)!symlink(path, path); }},
    {"link to a precious file", [](const char* path) { (void)!symlink("/tmp/precious", path); }},
    {"empty file", [](const char* path) { put_file(path, "", 0777); }},
    {"zeros", [](const char* path) { put_file(path, std::string(1 << 20, '\0'), 0777); }},
    {"noise",
     [](const char* path) { put_file(path, std::string(5000, '\xfe') + "{\"a\":", 0777); }},
};

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

  static void arrange(const char* place, const Kind& kind) {
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
  for (size_t i = first; i < std::size(kKinds); i += static_cast<size_t>(stride(1))) {
    const Kind& kind = kKinds[i];
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
