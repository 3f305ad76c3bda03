// Lines on standard error.
#include "tools/fairlead/report.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace control {

namespace {

__attribute__((format(printf, 1, 0))) void write_line(const char* format, va_list arguments,
                                                      int error = 0) {
  fputs("fairlead: ", stderr);
  vfprintf(stderr, format, arguments);
  if (error != 0) fprintf(stderr, ": %s", strerror(error));
  fputc('\n', stderr);
}

}  // namespace

void complain(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  write_line(format, arguments);
  va_end(arguments);
}

Exit refuse(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  write_line(format, arguments);
  va_end(arguments);
  fputs("try 'fairlead --help'\n", stderr);
  return kUsage;
}

Exit fail(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  write_line(format, arguments);
  va_end(arguments);
  return kFailed;
}

Exit nothing(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  write_line(format, arguments);
  va_end(arguments);
  return kNothing;
}

Exit fail_because(int error, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  write_line(format, arguments, error);
  va_end(arguments);
  return kFailed;
}

}  // namespace control
