// Hostile names at the doors of requests, the log, modems, the network and the tools. Those of
// stores, projects and identifiers stand in tests/faults/names_test.cpp.
#include <fcntl.h>
#include <net/if.h>

#include "hostile/hostile_support.h"
#include "support/capture.h"
#include "support/hostile_names.h"
#include "support/namespaces.h"

namespace {

using namespace fairlead_test;

class HostileNamesTest : public DeviceTest {
 protected:
  // Each in a process of its own. Nothing outside of the call's own folder may change; that a value
  // store is made for the log's settings is no change.
  static void with_each_name(const std::vector<std::string>& own,
                             const std::function<void(const std::string&)>& action,
                             size_t stride = 1) {
    std::vector<std::string> may_change = own;
    may_change.push_back("/tmp/.var/gvalue");
    for (size_t i = 0; i < std::size(kHostileNames); i += stride) {
      const std::string& name = kHostileNames[i];
      arrange();
      const std::string before = picture(may_change);
      const auto ended = run_watched([&] {
        GlogOpen("test", LOG_MODE_CONSOLE, 3);
        action(name);
      });
      EXPECT_EQ(0, ended.status) << name << ", signal " << ended.signal << "\n" << ended.err;
      EXPECT_EQ(before, picture(may_change)) << name;
    }
  }

  static void arrange() {
    empty_root();
    put_file("/etc/config/bystander.cfg", "{\"a\":\"1\"}");
    put_file("/prj/net/port.adp", "");
    put_file("/prj/net/lamp.ash", "#!/bin/sh\nprintf '\\001' >&$pipeid\n", 0755);
    put_file("/tmp/.var/dadp.cache", "{\"bystander\":\"/prj/net/port.adp\"}");
    put_file("/tmp/.var/joint.cache", "{\"bystander\":{\"up\":{\"lan.refresh\":\"\"}}}");
  }

  // A file outside of the project tree that would run when it is taken for an adapter.
  static void put_foreign_script(const std::string& path) {
    put_file(path, "#!/bin/sh\ntouch /tmp/ran\nprintf '\\001' >&$pipeid\n", 0755);
  }

  static talk_t* request(const std::vector<std::pair<const char*, std::string>>& members) {
    vessel_t* document = VesselCreate();
    for (const auto& [member, text] : members) VesselSetS(document, member, text.c_str());
    return document;
  }
};

TEST_F(HostileNamesTest, in_request_documents_are_names_and_nothing_else) {
  with_each_name({}, [](const std::string& name) {
    talk_t* const requests[] = {
        request({{"adp", name}}), request({{"adp", name}, {"op", "call"}, {"1", name}}),
        request({{"adp", "wan"}, {"op", name}}), request({{"adp", "wan"}, {"ab", name}}),
        request({{"adp", "net/lamp"}, {"op", "call"}, {"1", name}})};
    for (talk_t* one : requests) {
      for (auto* serve : {TalkHe, SecureTalkHe}) {
        talk_t* answer = nullptr;
        const int32_t status = serve(one, &answer);
        const bool lamp = one == requests[4];
        EXPECT_EQ(lamp ? TALK_DONE : nullptr, answer) << name;
        EXPECT_TRUE(lamp ? status == 1 : status == 0 || status == -1) << name << status;
      }
      TalkFree(one);
    }
  });
}

TEST_F(HostileNamesTest, as_request_texts_are_identifiers_and_nothing_else) {
  with_each_name({}, [](const std::string& name) {
    talk_t* text = StringTalk(name.c_str());
    for (auto* serve : {TalkHe, SecureTalkHe}) {
      talk_t* answer = nullptr;
      if (text && serve(text, &answer) == 1) ADD_FAILURE() << name;
      if (answer && answer != TALK_DONE && answer != TALK_FAILED) TalkFree(answer);
    }
    TalkFree(text);
  });
}

TEST_F(HostileNamesTest, that_lead_out_of_the_project_tree_find_no_code_to_run) {
  put_foreign_script("/tmp/evil.ash");
  const auto ended = run_child([] {
    for (const char* object : {"../tmp/evil", "net/../../tmp/evil", "/..//tmp/evil"}) {
      char file[64] = "";
      EXPECT_EQ(ADP_PURE, AdpPath(nullptr, object, file, sizeof file)) << object;
      EXPECT_EQ(0, DynAdpCreate("lan", object)) << object;
      talk_t* call = request({{"adp", object}, {"op", "call"}});
      talk_t* answer = nullptr;
      EXPECT_EQ(0, SecureTalkHe(call, &answer)) << object;
      EXPECT_EQ(nullptr, answer);
      TalkFree(call);
      EXPECT_EQ(nullptr, AdpGet(nullptr, object, nullptr, nullptr)) << object;
    }
  });
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_FALSE(exists("/tmp/ran"));
  EXPECT_FALSE(exists("/tmp/.var/dadp.cache"));
}

TEST_F(HostileNamesTest, that_lead_out_of_the_project_tree_are_not_installed) {
  put_file("/tmp/evil.cfg", "{\"a\":\"1\"}");
  for (const char* project : {"../tmp", "net/../../tmp", ".."}) {
    errno = 0;
    EXPECT_EQ(0, ConfigInstall(project)) << project;
    EXPECT_EQ(EINVAL, errno) << project;
  }
  EXPECT_FALSE(exists("/etc/tmp"));
}

TEST_F(HostileNamesTest, that_lead_out_of_the_run_time_folder_remove_no_file) {
  put_file("/etc/config/bystander.cfg", "{\"a\":\"1\"}");
  make_directories("/tmp/.var/gvalue");
  errno = 0;
  EXPECT_EQ(nullptr, GvalueCreate("../../../etc/config/bystander.cfg"));
  EXPECT_EQ(EINVAL, errno);
  errno = 0;
  char path[256];
  EXPECT_EQ(nullptr, ProjectVarPath(path, sizeof path, "../../etc/config/bystander.cfg", nullptr));
  EXPECT_EQ(EINVAL, errno);
  EXPECT_EQ("{\"a\":\"1\"}", file_content("/etc/config/bystander.cfg"));
}

// A name that comes back as it went in is stored, any other one is refused.
TEST_F(HostileNamesTest, of_joints_come_back_or_are_refused) {
  with_each_name({"/tmp/.var/joint.cache"}, [](const std::string& name) {
    talk_t* document = StringVessel(("{\"" + name + "\":\"\"}").c_str());
    axp_t* member = document ? VesselEach(document, nullptr) : nullptr;
    const bool escaped = member && AxpGet(member) == name;
    TalkFree(document);
    const std::string before = file_content("/tmp/.var/joint.cache");
    errno = 0;
    EXPECT_EQ(escaped, JointCreate(name.c_str(), name.c_str(), "lan", "refresh")) << name;
    if (escaped) {
      EXPECT_EQ("{\"" + name + "\":{\"lan.refresh\":\"\"}}", spelled(JointList(name.c_str())));
      EXPECT_EQ(1, JointDelete(name.c_str(), name.c_str(), "lan", "refresh")) << name;
    } else {
      EXPECT_EQ(EINVAL, errno) << name;
      EXPECT_EQ(before, file_content("/tmp/.var/joint.cache"));
    }
    JointCreate("wan", "up", name.c_str(), name.c_str());
    JointCast("wan", "up", nullptr);
    EXPECT_EQ("{\"up\":{\"lan.refresh\":\"\"}}", spelled(JointList("bystander")));
  });
}

TEST_F(HostileNamesTest, of_log_channels_and_messages_are_written_as_they_are) {
  with_each_name({}, [](const std::string& name) {
    EXPECT_EQ(1, GlogOpen(name.c_str(), LOG_MODE_CONSOLE, 7));
    const auto printed = capture([&] { LogWrite(6, name.c_str(), 1, "%s", name.c_str()); });
    EXPECT_EQ("info: " + name.substr(0, 4094) + "\n", printed.out);
    const auto where =
        capture([&] { LogWrite(6 | LOG_MODE_CONSOLE | LOG_MODE_WHERE, name.c_str(), 1, "text"); });
    EXPECT_EQ("info: text{" + std::to_string(getpid()) + "/" + name.substr(0, 200) + "/1}\n",
              where.out);
    GlogClose();
  });
}

TEST_F(HostileNamesTest, of_modems_are_opened_as_paths_and_nothing_else) {
  with_each_name({}, [](const std::string& name) {
    const int fd = open(name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    const int expected = errno;
    EXPECT_EQ(-1, fd) << name;
    GlogOpen("test", LOG_MODE_CONSOLE, 1);
    errno = 0;
    EXPECT_EQ(nullptr,
              atcmd_open(name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK, 0, nullptr, nullptr, 0));
    EXPECT_EQ(expected, errno) << name;
  });
}

TEST_F(HostileNamesTest, of_interfaces_hosts_and_routes_name_none) {
  if (run_child([] { return enter_namespaces(CLONE_NEWNET) ? 0 : 1; }).status != 0)
    GTEST_SKIP() << "no network of one's own can be had here";
  with_each_name({}, [](const std::string& name) {
    ASSERT_TRUE(enter_namespaces(CLONE_NEWNET));  // no resolver is asked there
    const char* text = name.c_str();
    EXPECT_EQ(-1, netcard_isflags(text, 0)) << name;
    EXPECT_EQ(ENODEV, errno) << name;
    char address[20] = "";
    EXPECT_EQ(-1, netcard_info(text, address, 20, nullptr, 0, nullptr, 0, nullptr, 0)) << name;
    int64_t bytes = -1;
    EXPECT_EQ(-1, netcard_flew(text, &bytes, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr))
        << name;
    EXPECT_EQ(-1, bytes);
    EXPECT_EQ(nullptr, dns2ipstring(text, address, sizeof address, 2)) << name;
    EXPECT_EQ(0, route_exist(text, text, nullptr, nullptr)) << name;
    EXPECT_GT(0, tcp_socket_connect(text, 9, 1)) << name;
    mac_t mac = {};
    EXPECT_EQ(0, string2mac(text, &mac)) << name;
    EXPECT_EQ(0, proc_mtddevice(text, nullptr, nullptr)) << name;
  });
}

TEST_F(HostileNamesTest, of_commands_are_words_and_nothing_else) {
  with_each_name({}, [](const std::string& name) {
    // A word of blanks alone is none; what follows a blank is another word, and "." a folder.
    EXPECT_EQ(127, system_call(5, 1, "/tmp/none/%s", name.c_str())) << name;
    EXPECT_EQ(0, system_call(5, 1, "true %s", name.c_str())) << name;
    EXPECT_EQ(0, set_proc_name(name.c_str()));
    char shown[16];
    EXPECT_EQ(0, get_proc_name(shown));
    EXPECT_EQ(name.substr(0, 15), shown);
  });
}

TEST_F(HostileNamesTest, of_files_are_paths_and_nothing_else) {
  with_each_name({}, [](const std::string& name) {
    const std::string path = "/tmp/none/" + name;
    const char* text = path.c_str();
    const bool long_name = path.size() >= 4096 || name.size() > 255;
    char content[8];
    for (const int result :
         {read_int(text) - 1, read_string(text, content, 8) ? 0 : -1, write_int(text, 1),
          write_string(text, "%s", name.c_str()), append_string(text, "%s", name.c_str()),
          file_cmp(text, text), file_copy(text, text), dir_sum(text), sm_open(text, O_RDWR, 0),
          sm_unlink(text), lock_open(text, O_RDWR, 0, 0)}) {
      EXPECT_EQ(-1, result) << name;
      EXPECT_TRUE(errno == ENOENT || (long_name && errno == ENAMETOOLONG)) << name << errno;
    }
  });
}

class HostileArgumentsTest : public HostileNamesTest {
 protected:
  // A sanitizer's programs take ten times as long to start.
#ifdef FAIRLEAD_ADDRESS_SANITIZED
  static constexpr size_t kStride = 4;
#else
  static constexpr size_t kStride = 1;
#endif

  static Ended run(const char* program, std::vector<std::string> words) {
    return run_child([&] {
      std::vector<char*> argv{const_cast<char*>(program)};
      for (std::string& word : words) argv.push_back(word.data());
      argv.push_back(nullptr);
      execv(program, argv.data());
      return 126;
    });
  }
};

TEST_F(HostileArgumentsTest, of_the_request_tool_are_one_request_and_nothing_else) {
  with_each_name(
      {},
      [](const std::string& name) {
        for (const std::string& request :
             {name, "wan:" + name, "wan." + name, "net/lamp.call[" + name + "]"}) {
          for (const std::vector<std::string>& words :
               {std::vector<std::string>{request}, {"--", request}, {"-s", "--", request}}) {
            const auto ended = run(HE_PROGRAM, words);
            EXPECT_TRUE(ended.status >= 0 && ended.status <= 3) << request << ended.signal;
          }
        }
      },
      kStride);
}

TEST_F(HostileArgumentsTest, of_the_control_tool_are_names_and_nothing_else) {
  using Words = std::vector<std::string>;
  with_each_name(
      {"/tmp/.var/service"},
      [](const std::string& name) {
        for (const Words& words : {Words{"config", "get", name},
                                   {"config", "get", "wan", name},
                                   {"config", "delete", name},
                                   {"adapter", "show", name},
                                   {"adapter", "bind", "lan", name},
                                   {"adapter", "unbind", name},
                                   {"adapter", "call-list", name},
                                   {"project", "list", name},
                                   {"project", "install", name},
                                   {"project", "uninstall", name},
                                   {"service", "stop", name},
                                   {"service", "off", name},
                                   {"service", "info", name},
                                   {"service", "start", name, "lab/x", "run"},
                                   {"joint", "list", name},
                                   {"joint", "cast", name},
                                   {"value", "get", name},
                                   {"value", "list", "--store", name},
                                   {"log", "level", name},
                                   {"net", "info", name},
                                   {"net", "counters", name},
                                   {"net", "mac", name},
                                   {"at", name, "AT"}}) {
          Words all = words;
          all.insert(all.begin() + static_cast<long>(words.size()), "--json");
          const auto ended = run(FAIRLEAD_PROGRAM, all);
          // What no file serves is a configuration, an event without joints is cast all the same,
          // and
          // "." names a folder that can be listed.
          const bool done =
              ended.status == 0 && (words[1] == "show" || words[1] == "cast" || words[1] == "list");
          EXPECT_TRUE(done || (ended.status >= 1 && ended.status <= 3))
              << words[0] << ' ' << words[1] << ' ' << name << ": " << ended.status << ended.signal;
        }
      },
      kStride);
}

}  // namespace
