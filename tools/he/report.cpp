// Lines on standard error.
#include "tools/he/report.h"

#include <cstdarg>
#include <cstdio>

namespace he {
namespace {

__attribute__((format(printf, 1, 0))) void write_line(const char* format, va_list arguments) {
  fputs("he: ", stderr);
  vfprintf(stderr, format, arguments);
  fputc('\n', stderr);
}

}  // namespace

void complain(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  write_line(format, arguments);
  va_end(arguments);
}

bool usage_error(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  write_line(format, arguments);
  va_end(arguments);
  fputs("try 'he --help'\n", stderr);
  return false;
}

}  // namespace he
