// What the tests of this folder share: an operation in a process of its own, judged afterwards.
#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "fairlead/fairlead.h"
#include "faults/operations.h"
#include "support/census.h"
#include "support/child.h"
#include "support/device_test.h"
#include "support/traced.h"

namespace fairlead_test {

// Whether the long form was asked for: every errno, every signal and every order at every place.
inline bool long_form() { return getenv("FAIRLEAD_LONG") != nullptr; }

// How many places to go on by in the short form; a sanitizer's processes take ten times as long.
inline int stride(int plain) {
#ifdef FAIRLEAD_ADDRESS_SANITIZED
  plain *= 6;
#endif
  return long_form() ? 1 : plain;
}

class FaultsTest : public DeviceTest {
 protected:
  static constexpr int kDone = 10;
  static constexpr int kRefused = 11;
  static constexpr const char* kLeft = "left: ";

  void SetUp() override {
    // A child call leaves an empty handler where there was none; with one of our own the census can
    // compare.
    signal(SIGCHLD, [](int) {});
    ASSERT_EQ(1, GlogOpen("test", LOG_MODE_CONSOLE, 0));
    DeviceTest::SetUp();
  }

  void TearDown() override {
    DeviceTest::TearDown();
    GlogClose();
    signal(SIGCHLD, SIG_DFL);
  }

  // In a process of its own: a handle of a value store stays open for good.
  static std::string state_of(const Operation& operation) {
    return run_child([&] { printf("%s", operation.state().c_str()); }).out;
  }

  // What an operation makes of an untouched device.
  struct Expected {
    std::string before, after, files;
    int repeated = 0;  // how the same call ends when its work is done already

    explicit Expected(const Operation& operation) {
      empty_root();
      operation.arrange();
      before = state_of(operation);
      const auto ended = run_child([&] { return operation.act() == 1 ? kDone : kRefused; });
      EXPECT_EQ(kDone, ended.status) << ended.err;
      after = state_of(operation);
      files = listing();
      repeated = run_child([&] { return operation.act() == 1 ? kDone : kRefused; }).status;
    }
  };

  // Inside the process that made the call: prints what it has left behind. Handles of value stores
  // live as long as their process.
  static void print_what_is_left(const Census& before) {
    std::istringstream lines(difference(before, take_census()));
    for (std::string line; std::getline(lines, line);)
      if (line.find("/tmp/.var/gvalue/") == std::string::npos)
        printf("%s%s\n", kLeft, line.c_str());
    printf("%s", locked_files().c_str());
  }

  // What it printed there.
  static std::vector<std::string> left_in(const std::string& output) {
    std::vector<std::string> left;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);)
      if (line.rfind(kLeft, 0) == 0) left.push_back(line.substr(strlen(kLeft)));
    return left;
  }

  // After the call, in the test's process: whatever happened, a reader finds the old or the new, a
  // call that said so has done its work, and the next one does it and leaves nothing beside it.
  static void expect_old_or_new(const Operation& operation, const Expected& expected, bool done,
                                const std::string& what) {
    const std::string found = state_of(operation);
    EXPECT_TRUE(found == expected.after || (!done && found == expected.before))
        << what << (done ? ", done" : ", not done") << ": " << found;
    const auto again = run_child([&] { return operation.act() == 1 ? kDone : kRefused; });
    EXPECT_EQ(found == expected.after ? expected.repeated : kDone, again.status)
        << what << ", the next call: " << again.err;
    EXPECT_EQ(expected.after, state_of(operation)) << what << ", after the next call";
    EXPECT_EQ(expected.files, listing()) << what;
  }

 private:
  // Regular files that another process cannot lock.
  static std::string locked_files() {
    return run_child([] {
             for (const char* root : {"/etc/config", "/tmp"}) print_locked_files(root);
           })
        .out;
  }

  // What is mounted below is not the device's, such as the checkout, which other tests share.
  static void print_locked_files(const char* root) {
    namespace fs = std::filesystem;
    for (fs::recursive_directory_iterator entry(root), end; entry != end; ++entry)
      if (file_system_of(entry->path().c_str()) != file_system_of(root))
        entry.disable_recursion_pending();
      else if (entry->is_regular_file() && !lockable(entry->path().c_str()))
        printf("%s%s is locked\n", kLeft, entry->path().c_str());
  }

  static dev_t file_system_of(const char* path) {
    struct stat status = {};
    lstat(path, &status);
    return status.st_dev;
  }

  static bool lockable(const char* path) {
    const int fd = open(path, O_RDWR | O_CLOEXEC);
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    const bool free =
        fd < 0 || (fcntl(fd, F_SETLK, &whole) == 0 && flock(fd, LOCK_EX | LOCK_NB) == 0);
    if (fd >= 0) close(fd);
    return free;
  }
};

// "set a member" as part of a test's name.
inline std::string test_name(const Operation& operation) {
  std::string name = operation.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}

}  // namespace fairlead_test
