// A command line for the shell.
#include <cerrno>
#include <cstdarg>
#include <cstdlib>

#include "base/fail.h"
#include "fairlead/misc/process.h"
#include "misc/command.h"

extern "C" int system_string(const char* format, ...) {
  if (!format || !*format) return fairlead::fail(EINVAL, -1);
  fairlead::CommandText command;
  va_list arguments;
  va_start(arguments, format);
  command.vformat(format, arguments);
  va_end(arguments);
  if (command.failed()) return -1;

  const fairlead::CommandSignals signals;
  signals.mask().let_through({SIGQUIT, SIGINT, SIGCHLD});
  return system(command.text());
}
