// What the tests of this folder share: a device with several users, and actions as one of them.
#pragma once

#include <grp.h>
#include <sys/prctl.h>

#include <initializer_list>

#include "faults/faults_fixture.h"

namespace fairlead_test {

// Numbers that belong to nobody on the machine: a limit counts all processes of a user.
inline constexpr uid_t kUser = 47111;
inline constexpr gid_t kTeam = 47112;

// Makes the process one of a user without root's rights, in this group only. False where this root
// has no other users.
inline bool become(uid_t user, gid_t group = kUser) {
  if (setgroups(0, nullptr) != 0 || setresgid(group, group, group) != 0 ||
      setresuid(user, user, user) != 0)
    return false;
  return prctl(PR_SET_DUMPABLE, 1) == 0;  // "/proc/self" is the user's own again
}

class UsersTest : public FaultsTest {
 protected:
  void SetUp() override {
    FaultsTest::SetUp();
    // As on a device. What tests make has the rights they say.
    former_mask_ = umask(022);
    for (const char* folder : {"/", "/etc", "/prj", "/etc/config"}) chmod(folder, 0755);
    chmod("/tmp", 01777);
    if (run_child([] { return become(kUser) ? 0 : 1; }).status != 0)
      GTEST_SKIP() << "there is one user only here: other users' numbers need root and no user "
                      "namespace around it";
  }

  void TearDown() override {
    umask(former_mask_);
    FaultsTest::TearDown();
  }

  // An action of the user's, in a process of its own. The value is its exit status.
  template <class Action>
  static Ended as_user(Action action, gid_t group = kUser) {
    return run_child([&] {
      if (!become(kUser, group)) return 1;
      return static_cast<int>(action());
    });
  }

  // The same for an operation that tells whether it has done its work.
  static Ended user_does(const Operation& operation, gid_t group = kUser) {
    return as_user([&] { return operation.act() == 1 ? kDone : kRefused; }, group);
  }

  // Gives everything on the device these rights, and this owner.
  static void change_all(mode_t files, mode_t folders, uid_t user = 0, gid_t group = 0) {
    namespace fs = std::filesystem;
    for (const char* root : {"/etc/config", "/tmp/.var", "/tmp/small"}) {
      if (!exists(root)) continue;
      change(root, files, folders, user, group);
      if (!fs::is_directory(root)) continue;
      for (const auto& entry : fs::recursive_directory_iterator(root))
        change(entry.path().string(), files, folders, user, group);
    }
  }

  static struct stat status_of(const std::string& path) {
    struct stat status = {};
    lstat(path.c_str(), &status);
    return status;
  }

 private:
  static void change(const std::string& path, mode_t files, mode_t folders, uid_t user,
                     gid_t group) {
    EXPECT_EQ(0, lchown(path.c_str(), user, group)) << path;
    EXPECT_EQ(0, chmod(path.c_str(), std::filesystem::is_directory(path) ? folders : files))
        << path;
  }

  mode_t former_mask_ = 0;
};

// Whether an operation changes a file, and tells whether it could. A cast tells nothing.
inline bool writes(const Operation& operation) {
  const std::string name = operation.name;
  return name != "isolated get" && name != "script get" && name != "cast an event" &&
         name.rfind("run ", 0) != 0;
}

}  // namespace fairlead_test
