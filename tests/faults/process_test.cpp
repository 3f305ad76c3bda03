// A process that is poor in descriptors, children, rights or room.
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include "faults/faults_fixture.h"
#include "misc/misc_support.h"

namespace {

using namespace fairlead_test;

constexpr int kNotHere = 77;

class ProcessTest : public FaultsTest {
 protected:
  // As with a full process table. Where root is not bound by the limit, the kernel's filter is.
  static bool forbid_children() {
    const rlimit none = {1, 1};
    if (setrlimit(RLIMIT_NPROC, &none) == 0 && refuses_children()) return true;
    constexpr unsigned kClone3 = 435;
    return misc_test::forbid({SYS_clone, SYS_fork, kVforkCall, kClone3}, EAGAIN) &&
           refuses_children();
  }

  static bool refuses_children() {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    if (child > 0) waitpid(child, nullptr, 0);
    return child < 0 && errno == EAGAIN;
  }

  // Rights of root that reach past the permissions of a file.
  static bool drop_capabilities() {
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    const __user_cap_data_struct none[2] = {};
    return syscall(SYS_capset, &header, none) == 0;
  }
};

TEST_F(ProcessTest, without_standard_descriptors_does_its_work) {
  for (const Operation& operation : operations()) {
    const Expected expected(operation);
    for (int closed = 1; closed < 8; ++closed) {
      empty_root();
      operation.arrange();
      const auto ended = run_child([&] {
        GlogOpen("test", LOG_MODE_CONSOLE, 7);
        for (int fd = 0; fd < 3; ++fd)
          if (closed & 1 << fd) close(fd);
        _exit(operation.act() == 1 ? kDone : kRefused);
      });
      const std::string what = std::string(operation.name) + " without " + std::to_string(closed);
      EXPECT_EQ(kDone, ended.status) << what << ", signal " << ended.signal;
      EXPECT_EQ(expected.after, state_of(operation)) << what;
      EXPECT_EQ(expected.files, listing()) << what;
    }
  }
}

// Without standard error the next descriptor has its number, and what is printed goes there.
TEST_F(ProcessTest, without_standard_descriptors_prints_into_no_file) {
  for (int closed = 1; closed < 8; ++closed) {
    empty_root();
    const auto ended = run_child([&] {
      for (int fd = 0; fd < 3; ++fd)
        if (closed & 1 << fd) close(fd);
      const int value = 7;
      gvalue_t* store = GvalueCreate("levels");
      if (!store || GvalueSet(store, "net", &value, sizeof value) != 1) _exit(1);
      for (int line = 0; line < 3; ++line) {
        dprintf(STDOUT_FILENO, "printed by the program\n");
        dprintf(STDERR_FILENO, "printed by the program\n");
      }
      _exit(0);
    });
    EXPECT_EQ(0, ended.status) << closed;
    const auto reader = run_child([] {
      gvalue_t* store = GvalueCreate("levels");
      return store && GvalueGet(store, "net") ? *static_cast<int*>(GvalueGet(store, "net")) : 0;
    });
    EXPECT_EQ(7, reader.status) << closed << ", signal " << reader.signal;
  }
}

TEST_F(ProcessTest, without_standard_descriptors_takes_no_log_line_for_an_answer) {
  put_file("/prj/net/bad.adp", "no module");
  for (int closed = 1; closed < 8; ++closed) {
    const auto ended = run_child([&] {
      GlogOpen("test", LOG_MODE_CONSOLE, 7);
      for (int fd = 0; fd < 3; ++fd)
        if (closed & 1 << fd) close(fd);
      talk_t* answer = AdpSecureGet(nullptr, "net/bad", nullptr, nullptr);
      const bool nothing = answer == nullptr;
      TalkFree(answer);
      _exit(nothing ? 0 : 1);
    });
    EXPECT_EQ(0, ended.status) << closed;
  }
}

TEST_F(ProcessTest, without_room_for_another_process_is_told_so) {
  for (const Operation& operation : operations()) {
    const Expected expected(operation);
    empty_root();
    operation.arrange();
    const auto ended = run_child([&] {
      if (!forbid_children()) return kNotHere;
      const Census before = take_census();
      const int result = operation.act();
      std::istringstream left(operation.asks_child ? "" : difference(before, take_census()));
      for (std::string line; std::getline(left, line);)
        EXPECT_NE(std::string::npos, line.find("/tmp/.var/gvalue/")) << line;
      return result == 1 ? kDone : kRefused;
    });
    if (ended.status == kNotHere) GTEST_SKIP() << "processes are not limited here";
    EXPECT_TRUE(ended.status == kDone || ended.status == kRefused) << operation.name;
    const std::string found = state_of(operation);
    EXPECT_TRUE(found == expected.after || (ended.status == kRefused && found == expected.before))
        << operation.name << ": " << found;
  }
}

TEST_F(ProcessTest, without_room_for_another_process_each_call_gives_its_errno) {
  put_file("/prj/net/lamp.ash", "#!/bin/sh\ntouch /tmp/ran\n", 0755);
  const auto ended = run_child([] {
    if (!forbid_children()) return kNotHere;
    const Census before = take_census();
    const auto refused = [](bool failed, const char* call) {
      EXPECT_TRUE(failed) << call;
      EXPECT_EQ(EAGAIN, errno) << call;
      errno = 0;
      // A refused fork leaves the signal as an isolated call sets it.
      sigset_t child_end;
      sigemptyset(&child_end);
      sigaddset(&child_end, SIGCHLD);
      sigprocmask(SIG_UNBLOCK, &child_end, nullptr);
    };
    char address[20];
    refused(AdpSecureGet(nullptr, "wan", nullptr, nullptr) == nullptr, "AdpSecureGet");
    refused(AdpSecureSet(nullptr, "wan", nullptr, "a", nullptr, "1") == 0, "AdpSecureSet");
    refused(AdpSecureCall(nullptr, "wan", "up", nullptr, nullptr) == nullptr, "AdpSecureCall");
    refused(AdpGet(nullptr, "net/lamp", nullptr, nullptr) == nullptr, "AdpGet");
    refused(AdpSet(nullptr, "net/lamp", nullptr, "a", nullptr, "1") == 0, "AdpSet");
    refused(AdpCallList(nullptr, "net/lamp") == nullptr, "AdpCallList");
    refused(AdpCall(nullptr, "net/lamp", "up", nullptr, nullptr) == nullptr, "AdpCall");
    refused(ServiceStart("wan", "net/lamp", "up", nullptr) == -1, "ServiceStart");
    refused(system_call(5, 1, "true") == -1, "system_call");
    refused(system_string("true") != 0,
            "system_string");  // -1, or as if the shell had ended by 127
    refused(dns2ipstring("host.invalid", address, sizeof address, 5) == nullptr, "dns2ipstring");
    signal(SIGCHLD, [](int) {});
    const std::string left = difference(before, take_census());
    EXPECT_TRUE(left.find("descriptor") == std::string::npos) << left;
    EXPECT_TRUE(left.find("child") == std::string::npos) << left;
    return 0;
  });
  if (ended.status == kNotHere) GTEST_SKIP() << "processes are not limited here";
  EXPECT_EQ(0, ended.status) << ended.signal << ended.err;
  EXPECT_FALSE(exists("/tmp/ran"));
  EXPECT_FALSE(exists("/tmp/.var/service/wan.spid"));
}

TEST_F(ProcessTest, without_another_descriptor_is_told_so) {
  for (const Operation& operation : operations()) {
    const Expected expected(operation);
    for (int room = 0; room < 4; ++room) {
      empty_root();
      operation.arrange();
      const auto ended = run_child([&] {
        const int next = dup(STDERR_FILENO);
        close(next);
        const auto limit = static_cast<rlim_t>(next + room);
        const rlimit few = {limit, limit};
        if (setrlimit(RLIMIT_NOFILE, &few) != 0) return kNotHere;
        return operation.act() == 1 ? kDone : kRefused;
      });
      EXPECT_EQ(0, ended.signal) << operation.name << room;
      expect_old_or_new(operation, expected, ended.status == kDone,
                        operation.name + (" with room for " + std::to_string(room)));
    }
  }
}

TEST_F(ProcessTest, may_not_write_what_it_has_no_right_to) {
  put_file("/etc/config/wan.cfg", "{\"a\":\"1\"}", 0444);
  put_file("/tmp/.var/dadp.cache", "{\"lan\":\"/prj/net/port.adp\"}", 0444);
  put_file("/prj/net/port.adp", "");
  chmod("/etc/config", 0555);
  const auto ended = run_child([] {
    if (!drop_capabilities() || access("/etc/config/wan.cfg", W_OK) == 0) return kNotHere;
    EXPECT_EQ(0, ConfigSetS("wan", nullptr, "a", "2"));
    EXPECT_EQ(EACCES, errno);
    EXPECT_EQ(0, ConfigSet("wan", nullptr, nullptr, nullptr));
    EXPECT_EQ(EACCES, errno);
    EXPECT_EQ(0, ConfigSetS("new", nullptr, "a", "2"));
    EXPECT_EQ(0, DynAdpCreate("wan", "net/port"));
    char text[16];
    EXPECT_STREQ("1", ConfigGetS("wan", nullptr, "a", text, sizeof text));
    return 0;
  });
  chmod("/etc/config", 0755);
  if (ended.status == kNotHere) GTEST_SKIP() << "rights can't be given up here";
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ("{\"a\":\"1\"}", file_content("/etc/config/wan.cfg"));
}

}  // namespace
