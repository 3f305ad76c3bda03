// Making folders, by the shell only where a name cannot be mistaken for more than a name.
#include "config/folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/bounded_text.h"
#include "base/sync_folder.h"
#include "config/paths.h"
#include "fairlead/misc/process.h"

namespace fairlead {
namespace {

constexpr mode_t kFolderMode = 0770;
constexpr mode_t kShellFolderMode = 0777;

bool is_plain(const char* path) {
  constexpr char kPlain[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-./";
  return path[strspn(path, kPlain)] == '\0';
}

bool is_folder(const char* path) {
  struct stat status;
  return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

bool make_level(const char* path) {
  return mkdir(path, kShellFolderMode) == 0 || (errno == EEXIST && is_folder(path));
}

// What the shell's "mkdir -p" does, without a shell that would read more than a name.
bool make_levels(const char* path) {
  PathText level;
  level.add(path);
  for (char* slash = strchr(level.text() + 1, '/'); slash; slash = strchr(slash + 1, '/')) {
    *slash = '\0';
    if (!make_level(level.text())) return false;
    *slash = '/';
  }
  return make_level(level.text());
}

bool make(const char* folder) {
  if (mkdir(folder, kFolderMode) == 0 || (errno == EEXIST && is_folder(folder))) return true;
  if (is_plain(folder) && system_string("mkdir -p %s", folder) == 0) return true;
  return make_levels(folder);  // which also tells why the shell could not
}

// Every level below the store's root may be new, and a file in it is not on disk before its folder.
bool sync_levels_above(const char* folder) {
  PathText level;
  level.add(folder);
  while (strlen(level.text()) > strlen(kConfigRoot)) {
    *strrchr(level.text(), '/') = '\0';
    if (!sync_folder(level.text())) return false;
  }
  return true;
}

}  // namespace

bool ensure_config_folder(const char* folder) {
  return access(folder, R_OK) == 0 || (make(folder) && sync_levels_above(folder));
}

}  // namespace fairlead
