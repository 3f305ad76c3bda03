// What the tests of services share: daemons that end up as children of the test, records as bytes,
// documents as text.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "fairlead/fairlead.h"
#include "support/device_test.h"
#include "support/spelled.h"

namespace fairlead_test {

inline std::string record_path(const std::string& service) {
  return "/tmp/.var/service/" + service + ".spid";
}

// The bytes of a record as DaemonRegister writes it.
inline std::string record_of(const std::string& object, const std::string& interface,
                             const std::string& parameters = "") {
  std::string record(8, '\0');
  record += object;
  record.resize(72);
  record += interface;
  record.resize(136);
  return record + parameters + '\0';
}

inline void put_record(const std::string& service, const std::string& content) {
  put_file(record_path(service), content);
}

class ServiceTest : public DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    use_program_in(STAND_IN_FOLDER);
    // A daemon whose parents have gone becomes a child of the test, which sees its end.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    ASSERT_EQ(1, GlogOpen("test", LOG_MODE_SYSLOG, 7));
  }

  void TearDown() override {
    if (HasFailure()) end_all_children();
    GlogClose();
    prctl(PR_SET_CHILD_SUBREAPER, 0);
    setenv("PATH", path_.c_str(), 1);
    DeviceTest::TearDown();
  }

  void use_program_in(const std::string& folder) {
    setenv("PATH", (folder + ":" + path_).c_str(), 1);
  }

  // Starts a service that waits for its end.
  static pid_t start(const std::string& service) {
    EXPECT_EQ(0, ServiceStart(service.c_str(), "test", "wait", nullptr));
    const pid_t daemon = pid(service);
    EXPECT_GT(daemon, 0) << service;
    return daemon;
  }

  static pid_t pid(const std::string& service) { return ServicePid("%s", service.c_str()); }
  static std::string info(const std::string& service) {
    return spelled(ServiceInfo("%s", service.c_str()));
  }

  // Waits for the end of a daemon: its exit status, or minus the signal that ended it.
  static int end_of(pid_t daemon) {
    int status = 0;
    while (waitpid(daemon, &status, 0) < 0)
      if (errno != EINTR) return -1000;
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
  }

  // The same for any one that ends next.
  static int next_end() { return end_of(-1); }

  // As somebody from outside would.
  static void kill_daemon(pid_t daemon) {
    ASSERT_GT(daemon, 0);
    kill(daemon, SIGKILL);
    EXPECT_EQ(-SIGKILL, end_of(daemon));
  }

  static void stop(const std::string& service) {
    const pid_t daemon = pid(service);
    EXPECT_EQ(0, ServiceStop("%s", service.c_str())) << service;
    if (daemon > 0) end_of(daemon);
  }

 private:
  static void end_all_children() {
    for (const auto& [child, what] : take_census().children) {
      kill(child, SIGKILL);
      waitpid(child, nullptr, 0);
    }
  }

  std::string path_ = getenv("PATH");
};

}  // namespace fairlead_test
