// Files that belong to others, and file systems that take no change.
#include <linux/capability.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "faults/faults_fixture.h"
#include "support/namespaces.h"

namespace {

using namespace fairlead_test;
namespace fs = std::filesystem;

constexpr int kNotHere = 77;

class RightsTest : public FaultsTest {
 protected:
  // Rights of root that reach past the permissions of a file.
  static bool drop_capabilities() {
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    const __user_cap_data_struct none[2] = {};
    return syscall(SYS_capset, &header, none) == 0;
  }

  // Only root may take the other two away.
  static constexpr unsigned long kFrozen = MS_BIND | MS_REMOUNT | MS_RDONLY | MS_NOSUID | MS_NODEV;

  static bool freeze(const char* folder) {
    return mount(folder, folder, nullptr, MS_BIND | MS_REC, nullptr) == 0 &&
           mount(nullptr, folder, nullptr, kFrozen, nullptr) == 0;
  }

  static void close_to_all(mode_t files, mode_t folders) {
    std::vector<fs::directory_entry> inner;
    for (const char* root : kRoots) {
      inner.emplace_back(root);
      inner.insert(inner.end(), fs::recursive_directory_iterator(root), {});
    }
    for (size_t i = inner.size(); i-- > 0;) change_mode(inner[i], files, folders);
  }

  // For the next arrangement; from above, since whoever is not root cannot look into a closed
  // folder.
  static void open_to_all() {
    for (const char* root : kRoots) {
      chmod(root, 0755);
      for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root))
        change_mode(entry, 0644, 0755);
    }
  }

 private:
  static constexpr const char* kRoots[] = {"/etc/config", "/tmp/.var"};

  static void change_mode(const fs::directory_entry& entry, mode_t files, mode_t folders) {
    chmod(entry.path().c_str(), fs::is_directory(entry.path()) ? folders : files);
  }
};

// Whether an operation changes what these file systems hold, and tells whether it could. A cast
// tells nothing.
bool writes(const Operation& operation) {
  const std::string name = operation.name;
  return name != "isolated get" && name != "script get" && name != "cast an event" &&
         name.rfind("run ", 0) != 0;
}

TEST_F(RightsTest, on_a_read_only_file_system_what_was_there_is_read_and_changes_are_refused) {
  for (const Operation& operation : operations()) {
    const Expected expected(operation);
    empty_root();
    operation.arrange();
    const std::string files = listing();
    const auto ended = run_child([&] {
      if (!enter_namespaces(CLONE_NEWNS) || !freeze("/etc/config") || !freeze("/tmp"))
        return kNotHere;
      EXPECT_EQ(expected.before, operation.state());
      errno = 0;
      const bool done = operation.act() == 1;
      EXPECT_EQ(!writes(operation), done) << operation.name;
      // A child does not tell why its set failed.
      EXPECT_TRUE(done || errno == EROFS || operation.asks_child)
          << operation.name << ": " << strerror(errno);
      EXPECT_EQ(expected.before, operation.state());
      return 0;
    });
    if (ended.status == kNotHere) GTEST_SKIP() << "no file system can be frozen here";
    EXPECT_EQ(0, ended.status) << operation.name << ended.signal << ended.err;
    EXPECT_EQ(files, listing()) << operation.name;
  }
}

TEST_F(RightsTest, what_may_not_be_read_is_neither_read_nor_replaced) {
  for (const Operation& operation : operations()) {
    if (!writes(operation) || strcmp(operation.name, "write a small file") == 0) continue;
    empty_root();
    operation.arrange();
    const std::string files = listing(), before = state_of(operation);
    close_to_all(0, 0);
    const auto ended = run_child([&] {
      if (!drop_capabilities() || access("/etc/config", R_OK) == 0) return kNotHere;
      errno = 0;
      EXPECT_NE(1, operation.act()) << operation.name;
      EXPECT_TRUE(errno == EACCES || operation.asks_child)
          << operation.name << ": " << strerror(errno);
      return 0;
    });
    open_to_all();
    if (ended.status == kNotHere) GTEST_SKIP() << "rights can't be given up here";
    EXPECT_EQ(0, ended.status) << operation.name << ended.signal << ended.err;
    EXPECT_EQ(before, state_of(operation)) << operation.name;
    EXPECT_EQ(files, listing()) << operation.name;
  }
}

// Readable, in a folder that takes no new file: written in place where the file allows it.
TEST_F(RightsTest, in_a_folder_that_takes_no_file_the_old_or_the_new_is_there) {
  for (const Operation& operation : operations()) {
    const Expected expected(operation);
    for (const mode_t files : {mode_t{0444}, mode_t{0644}}) {
      empty_root();
      operation.arrange();
      close_to_all(files, 0555);
      const auto ended = run_child([&] {
        if (!drop_capabilities() || access("/etc/config", W_OK) == 0) return kNotHere;
        return operation.act() == 1 ? kDone : kRefused;
      });
      open_to_all();
      if (ended.status == kNotHere) GTEST_SKIP() << "rights can't be given up here";
      EXPECT_EQ(0, ended.signal) << operation.name;
      const std::string found = state_of(operation);
      EXPECT_EQ(ended.status == kDone ? expected.after : expected.before, found)
          << operation.name << std::oct << files;
    }
  }
}

}  // namespace
