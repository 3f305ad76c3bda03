// One message: filtered, formatted, and written to syslog, the console, or both.
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/bounded_text.h"
#include "fairlead/log.h"
#include "log/channel.h"

namespace {

constexpr uint32_t kLevelBits = 0x07;
constexpr uint32_t kModeBits = ~0xFFu;
constexpr uint32_t kInfo = 6;
constexpr size_t kMessageSize = 4095;  // with the terminator

struct Level {
  const char* name;
  int priority;
};

// The library's own numbering: no critical level, and 0 counts as the least severe.
constexpr Level kLevels[] = {{"unknown", LOG_DEBUG}, {"emerg", LOG_EMERG},  {"alert", LOG_ALERT},
                             {"error", LOG_ERR},     {"warn", LOG_WARNING}, {"notice", LOG_NOTICE},
                             {"info", LOG_INFO},     {"debug", LOG_DEBUG}};

struct Message {
  uint32_t word;
  uint32_t mode;
  int error;  // errno as the caller left it
  const char* file;
  int line;
  char text[kMessageSize];

  uint32_t level() const { return word & kLevelBits; }
};

// errno and its text, and the place; each empty when it is not wanted.
struct Details {
  explicit Details(const Message& message) {
    if (message.word & LOG_ERRNO)
      error.format("(err:%d/%s)", message.error, strerror(message.error));
    if (message.mode & LOG_MODE_WHERE)
      place.format("{%d/%s/%d}", static_cast<int>(getpid()), message.file, message.line);
  }

  fairlead::FixedText<128> error;
  fairlead::FixedText<512> place;
};

void write_console(const Message& message, const Details& details) {
  const char* name = kLevels[message.level()].name;
  if (message.word & LOG_NOMEM)
    fprintf(stderr, "%s: out of memory%s\n", name, details.place.text());
  const bool to_error = (message.word & LOG_ERRNO) || message.level() < kInfo;
  FILE* stream = to_error ? stderr : stdout;
  fprintf(stream, "%s: %s%s%s\n", name, message.text, details.error.text(), details.place.text());
  if (!to_error) fflush(stdout);  // a child that ends by _exit must not lose it
}

void write_syslog(const Message& message, const Details& details) {
  if (message.word & LOG_NOMEM) syslog(LOG_ALERT, "out of memory%s", details.place.text());
  syslog(kLevels[message.level()].priority, "%s%s%s", message.text, details.error.text(),
         details.place.text());
}

}  // namespace

extern "C" void LogWrite(uint32_t word, const char* file, int line, const char* format, ...) {
  const int error = errno;
  Message message;
  message.mode = word & kModeBits ? word & kModeBits : fairlead::channel_mode();
  // A message that is filtered out does nothing at all; not even LOG_EXIT is acted upon.
  if ((word & kLevelBits) > fairlead::channel_threshold()) return;

  message.word = word;
  message.error = error;
  message.file = file ? file : "";
  message.line = line;
  va_list arguments;
  va_start(arguments, format);
  if (vsnprintf(message.text, sizeof message.text, format, arguments) < 0) message.text[0] = '\0';
  va_end(arguments);

  const Details details(message);
  if (message.mode & LOG_MODE_CONSOLE) write_console(message, details);
  if (message.mode & LOG_MODE_SYSLOG) write_syslog(message, details);
  if (word & LOG_EXIT) exit(-1);
  // Only the console report of a lack of memory leaves its mark.
  errno = (word & LOG_NOMEM) && (message.mode & LOG_MODE_CONSOLE) ? ENOMEM : error;
}
