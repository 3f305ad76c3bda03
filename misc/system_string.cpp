// A command line for the shell.
#include <cerrno>
#include <cstdarg>
#include <cstdlib>

#include "base/bounded_text.h"
#include "base/fail.h"
#include "fairlead/misc/process.h"
#include "misc/command_scope.h"

namespace {

constexpr size_t kCommandSize = 4096;

}  // namespace

extern "C" int system_string(const char* format, ...) {
  if (!format || !*format) return fairlead::fail(EINVAL, -1);
  char command[kCommandSize];
  va_list arguments;
  va_start(arguments, format);
  const int length = vsnprintf(command, sizeof command, format, arguments);
  va_end(arguments);
  if (length < 0) return -1;

  const fairlead::CommandSignals signals({SIGQUIT, SIGINT, SIGCHLD});
  return system(command);
}
