// A number or a text as the whole content of a file.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdlib>

#include "base/bounded_text.h"
#include "base/descriptor.h"
#include "base/fail.h"
#include "base/formatted_text.h"
#include "base/result_buffer.h"
#include "fairlead/misc/files.h"
#include "misc/locked_file.h"

namespace {

using fairlead::Descriptor;
using fairlead::fail;
using fairlead::LockedFile;

constexpr size_t kNumberSize = 40;
constexpr size_t kTextSize = 10240;
constexpr mode_t kMode = 0644;

bool missing(const char* path) { return !path || !*path; }

// One read, ended by a NUL. Not waiting: the writer of a FIFO may never come.
bool read_locked(const char* path, char* buffer, size_t size) {
  LockedFile file(path, O_RDONLY | O_NONBLOCK);
  if (!file) return false;
  const ssize_t length = read(file.get(), buffer, size - 1);
  if (length < 0) return false;
  if (length == 0) return fail(ENODATA, false);
  buffer[length] = '\0';
  return true;
}

__attribute__((format(printf, 3, 0))) int write_text(const char* path, int flags,
                                                     const char* format, va_list arguments) {
  if (missing(path) || !format) return fail(EINVAL, -1);
  // Before the file is opened, so that a text that can't be made empties nothing.
  size_t length = 0;
  const fairlead::OwnedText text = fairlead::format_text(format, arguments, &length);
  if (!text) return -1;
  LockedFile file(path, O_RDWR | O_CREAT | O_NONBLOCK | flags, kMode);
  if (!file) return -1;
  return static_cast<int>(write(file.get(), text.get(), length));
}

}  // namespace

extern "C" int read_int(const char* path) {
  if (missing(path)) return fail<int>(EINVAL);
  char text[kNumberSize];
  if (!read_locked(path, text, sizeof text)) return 0;
  const long long value = strtoll(text, nullptr, 10);
  errno = 0;
  return static_cast<int>(std::clamp<long long>(value, INT_MIN, INT_MAX));
}

extern "C" int write_int(const char* path, uint32_t value) {
  if (missing(path)) return fail(EINVAL, -1);
  const Descriptor file(open(path, O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, kMode));
  if (!file) return -1;
  fairlead::FixedText<16> text;
  text.format("%u", value);
  return static_cast<int>(write(file.get(), text.text(), text.length()));
}

extern "C" char* read_string(const char* path, char* buffer, int size) {
  if (missing(path)) return fail<char*>(EINVAL);
  if (buffer && size < 1) return fail<char*>(EINVAL);
  // Process-wide: the text lives until the next call without a buffer.
  static char fallback[kTextSize];
  const fairlead::ResultBuffer result = fairlead::choose_buffer(buffer, size, fallback);
  return read_locked(path, result.text, result.size) ? result.text : nullptr;
}

extern "C" int write_string(const char* path, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int written = write_text(path, O_TRUNC, format, arguments);
  va_end(arguments);
  return written;
}

extern "C" int append_string(const char* path, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int written = write_text(path, O_APPEND, format, arguments);
  va_end(arguments);
  return written;
}
