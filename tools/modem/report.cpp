// Lines on standard error.
#include "tools/modem/report.h"

#include <cstdarg>
#include <cstdio>

namespace modem {

void complain(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  fputs("modem-player: ", stderr);
  vfprintf(stderr, format, arguments);
  fputc('\n', stderr);
  va_end(arguments);
}

}  // namespace modem
