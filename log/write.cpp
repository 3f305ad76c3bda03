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

struct Call {
  uint32_t word;
  uint32_t mode;
  int error;  // errno as the caller left it
  const char* file;
  int line;

  bool wants(uint32_t flag) const { return (word & flag) != 0; }
  bool goes_to(uint32_t output) const { return (mode & output) != 0; }
  uint32_t number() const { return word & kLevelBits; }
  const Level& level() const { return kLevels[number()]; }
};

// strerror_r gives the text on some systems, and a status with the text in the buffer on others.
[[maybe_unused]] const char* text_of(const char* text, const char*) { return text; }
[[maybe_unused]] const char* text_of(int, const char* buffer) { return buffer; }

// What follows the message, in all outputs alike: errno and the place, each empty unless wanted.
class Details {
 public:
  explicit Details(const Call& call) {
    if (call.wants(LOG_ERRNO)) {
      char buffer[128] = "";
      const char* text = text_of(strerror_r(call.error, buffer, sizeof buffer), buffer);
      error_.format("(err:%d/%s)", call.error, text);
    }
    if (call.goes_to(LOG_MODE_WHERE))
      place_.format("{%d/%.200s/%d}", static_cast<int>(getpid()), call.file, call.line);
  }

  const char* error() const { return error_.text(); }
  const char* place() const { return place_.text(); }

 private:
  fairlead::FixedText<256> error_;
  fairlead::FixedText<256> place_;
};

void write_console(const Call& call, const char* message, const Details& details) {
  const char* name = call.level().name;
  if (call.wants(LOG_NOMEM)) fprintf(stderr, "%s: out of memory%s\n", name, details.place());

  const bool to_error = call.wants(LOG_ERRNO) || call.number() < kInfo;
  FILE* stream = to_error ? stderr : stdout;
  fprintf(stream, "%s: %s%s%s\n", name, message, details.error(), details.place());
  // Left in the buffer, a forked child would lose the line by _exit or write it once more by exit.
  if (!to_error) fflush(stdout);
}

void write_syslog(const Call& call, const char* message, const Details& details) {
  if (call.wants(LOG_NOMEM)) syslog(LOG_ALERT, "out of memory%s", details.place());
  syslog(call.level().priority, "%s%s%s", message, details.error(), details.place());
}

// Apart from the filter, so that a message that is filtered out does not touch a page of the stack
// for it.
[[gnu::noinline, gnu::format(printf, 4, 0)]] void write_message(uint32_t word, const char* file,
                                                                int line, const char* format,
                                                                va_list arguments) {
  const int error = errno;
  const uint32_t own_mode = word & kModeBits;
  const uint32_t mode = own_mode ? own_mode : fairlead::channel_mode();
  const Call call = {word, mode, error, file ? file : "", line};

  char message[kMessageSize];
  if (!format || vsnprintf(message, sizeof message, format, arguments) < 0) message[0] = '\0';
  const Details details(call);
  if (call.goes_to(LOG_MODE_CONSOLE)) write_console(call, message, details);
  if (call.goes_to(LOG_MODE_SYSLOG)) write_syslog(call, message, details);
  if (call.wants(LOG_EXIT)) exit(-1);
  // Only the console's report of a lack of memory leaves its mark.
  errno = call.wants(LOG_NOMEM) && call.goes_to(LOG_MODE_CONSOLE) ? ENOMEM : error;
}

}  // namespace

extern "C" void LogWrite(uint32_t word, const char* file, int line, const char* format, ...) {
  // A message that is filtered out does nothing at all; not even LOG_EXIT is acted upon.
  if ((word & kLevelBits) > fairlead::channel_threshold()) return;
  va_list arguments;
  va_start(arguments, format);
  write_message(word, file, line, format, arguments);
  va_end(arguments);
}
