// Run-time folders, one per name, and the paths of files in them.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>

#include "adp/fixed_paths.h"
#include "base/bounded_text.h"
#include "base/fail.h"
#include "base/leads_up.h"
#include "base/result_buffer.h"
#include "fairlead/adp/project.h"

namespace {

constexpr mode_t kFolderMode = 0770;

// Only the last level is made; what stands there and is no folder goes.
bool ensure_folder(const char* path) {
  struct stat status;
  if (stat(path, &status) == 0) {
    if (S_ISDIR(status.st_mode)) return true;
    unlink(path);
  }
  return mkdir(path, kFolderMode) == 0 ||
         (errno == EEXIST && stat(path, &status) == 0 && S_ISDIR(status.st_mode));
}

}  // namespace

extern "C" char* ProjectVarPath(char* buffer, int size, const char* name, const char* format, ...) {
  static char fallback[fairlead::kPathSize];
  if (!name) return nullptr;
  if (fairlead::leads_up(name)) return fairlead::fail<char*>(EINVAL);
  const fairlead::ResultBuffer result = fairlead::choose_buffer(buffer, size, fallback);
  fairlead::BoundedText path(result.text, result.size);
  path.add(fairlead::kRuntimeRoot).add('/').add(name);
  if (path.cut() || !ensure_folder(path.text())) return nullptr;
  if (!format) return result.text;

  path.add('/');
  va_list arguments;
  va_start(arguments, format);
  path.vformat(format, arguments);
  va_end(arguments);
  return result.text;
}
