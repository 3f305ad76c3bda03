// Enters namespaces by unshare(2).
#include "support/namespaces.h"

#include <sys/mount.h>
#include <unistd.h>

#include "support/device_test.h"

namespace fairlead_test {
namespace {

bool become_root_of(int flags) {
  const uid_t user = getuid();
  const gid_t group = getgid();
  if (unshare(CLONE_NEWUSER | flags) != 0) return false;
  put_file("/proc/self/setgroups", "deny");
  put_file("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
  put_file("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
  return true;
}

}  // namespace

bool enter_namespaces(int flags) {
  if (unshare(flags) != 0 && !become_root_of(flags)) return false;
  return !(flags & CLONE_NEWNS) || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

bool hide(const std::string& folder) {
  return mount("none", folder.c_str(), "tmpfs", 0, nullptr) == 0;
}

}  // namespace fairlead_test
