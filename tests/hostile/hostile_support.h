// What the tests of this folder share: everything on the device as one text, and actions that must
// leave it as it was.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef FAIRLEAD_ADDRESS_SANITIZED
#include <sanitizer/lsan_interface.h>
#endif

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "fairlead/fairlead.h"
#include "support/child.h"
#include "support/device_test.h"
#include "support/spelled.h"

namespace fairlead_test {

// What the library waits for: "/tmp/held", which another process has locked, and the script of
// "net/lamp", which takes a second.
class WaitedFor {
 public:
  WaitedFor() {
    put_file("/tmp/held", "");
    put_file("/prj/net/lamp.ash", "#!/bin/sh\nsleep 1\nprintf on >&$pipeid\n", 0755);
    holder_.emplace([this] {
      const int fd = lock_open("/tmp/held", O_RDWR, 0, 0);
      held_.open();
      done_.wait(60000);
      return lock_close(fd);
    });
    EXPECT_TRUE(held_.wait());
  }
  void finish() {
    done_.open();
    EXPECT_EQ(0, holder_->wait().status);
  }

 private:
  Gate held_, done_;
  std::optional<Child> holder_;
};

// Every file with its kind, rights and content, but for those below the given paths.
inline std::string picture(const std::vector<std::string>& but_for = {}) {
  namespace fs = std::filesystem;
  std::set<std::string> lines;
  for (const char* root : {"/etc", "/prj", "/tmp"}) {
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
      const std::string path = entry.path().string();
      bool own = false;
      for (const std::string& folder : but_for) own |= path.rfind(folder, 0) == 0;
      struct stat status;
      if (own || lstat(path.c_str(), &status) != 0) continue;
      const bool read = S_ISREG(status.st_mode);
      lines.insert(path + " " + std::to_string(status.st_mode) + " " +
                   (read ? file_content(path) : ""));
    }
  }
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

// What an action has lost, where a sanitizer can tell. A child ends without the usual report.
inline bool leaks() {
#ifdef FAIRLEAD_ADDRESS_SANITIZED
  return __lsan_do_recoverable_leak_check() != 0;
#else
  return false;
#endif
}

// A child that ends by itself long before the watch over it does: a call that waits fails its test,
// and does not hold up the others.
inline Ended run_watched(const std::function<void()>& action) {
  return run_child([&action] {
    const pid_t parent = getpid();
    const pid_t watch = fork();
    if (watch == 0) {
      for (int tenths = 0; tenths < 1000 && getppid() == parent; ++tenths) usleep(100000);
      if (getppid() == parent) kill(parent, SIGKILL);
      _exit(0);
    }
    action();
    EXPECT_FALSE(leaks());
    kill(watch, SIGKILL);
    waitpid(watch, nullptr, 0);
    return 0;
  });
}

}  // namespace fairlead_test
