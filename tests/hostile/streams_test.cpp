// Tools that are started without standard streams: what they open gets the free numbers, and what
// they print must not go there.
#include <fcntl.h>
#include <sys/prctl.h>

#include "hostile/hostile_support.h"

namespace {

using namespace fairlead_test;
using Words = std::vector<std::string>;

class HostileStreamsTest : public DeviceTest {
 protected:
  static void arrange() {
    empty_root();
    put_file("/etc/config/wan.cfg", "{\"a\":\"1\"}");
    put_file("/prj/net/lamp.ash",
             "#!/bin/sh\necho printed\necho printed >&2\nprintf '\\001' >&$pipeid\n", 0755);
    put_file("/tmp/bin/he", "#!/bin/sh\necho printed\necho printed >&2\nexec sleep 5\n", 0755);
    put_file("/tmp/.var/joint.cache", "{\"wan\":{\"up\":{\"net/lamp.run\":\"\"}}}");
    setenv("PATH", "/tmp/bin:/usr/bin:/bin", 1);
  }

  static int run(const char* program, const Words& words, int closed) {
    return run_watched([&] {
             std::vector<char*> argv{const_cast<char*>(program)};
             for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
             argv.push_back(nullptr);
             const pid_t tool = fork();
             if (tool == 0) {
               for (int fd = 0; fd < 3; ++fd)
                 if (closed & 1 << fd) close(fd);
               execv(program, argv.data());
               _exit(126);
             }
             int status = 0;
             waitpid(tool, &status, 0);
             _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 125);
           })
        .status;
  }

  // A tool that cannot print its answer says so by its status; what it has done is the same.
  static void expect_the_same_without_streams(const char* program, const Words& words) {
    arrange();
    const int expected = run(program, words, 0);
    EXPECT_TRUE(expected >= 0 && expected <= 3) << words[0] << ' ' << words[1] << expected;
    const std::string after = picture();
    for (int closed = 1; closed < 8; ++closed) {
      arrange();
      const int status = run(program, words, closed);
      EXPECT_TRUE(status == expected || (status == 1 && closed & 2))
          << words[0] << ' ' << words[1] << " without " << closed << ": " << status;
      EXPECT_EQ(after, picture()) << words[0] << ' ' << words[1] << " without " << closed;
    }
  }
};

TEST_F(HostileStreamsTest, that_are_closed_change_nothing_that_the_control_tool_does) {
  for (const Words& words : {Words{"config", "set", "wan", "b", "2"},
                             {"config", "get", "wan"},
                             {"config", "set", "net/lte/apn", "b", "2"},
                             {"config", "list"},
                             {"joint", "create", "lan", "up", "dns", "restart"},
                             {"joint", "cast", "wan"},
                             {"joint", "list", "--json"},
                             {"value", "set", "a", "b", "--store", "levels", "--json"},
                             {"adapter", "bind", "lan", "net/lamp"},
                             {"adapter", "show", "net/lamp"},
                             {"service", "start", "wan", "net/lamp", "run"},
                             {"service", "list"},
                             {"log", "level", "debug"},
                             {"log", "write", "error", "text"},
                             {"net", "info", "none0"},
                             {"encode", "md5", "text"},
                             {"no", "such"}})
    expect_the_same_without_streams(FAIRLEAD_PROGRAM, words);
}

TEST_F(HostileStreamsTest, that_are_closed_change_nothing_that_the_request_tool_does) {
  for (const Words& words : {Words{"--", "wan:b=2"},
                             {"--", "wan:a"},
                             {"-s", "wan:b=2"},
                             {"--", "net/lamp.run"},
                             {"-s", "net/lamp.run"},
                             {"--", "net/lamp"},
                             {"--", "no such.call"}})
    expect_the_same_without_streams(HE_PROGRAM, words);
}

}  // namespace
